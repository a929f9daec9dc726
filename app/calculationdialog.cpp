#include "app/calculationdialog.h"

#include "app/graphtools.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/common.h"
#include "data/expdata.h"
#include "data/storedexperiment.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace {
constexpr int msBetweenAnswers = 500;
constexpr int longestName = 40;
constexpr int longestUnit = 12;
constexpr int newChannel = -1;
} // namespace

CalculationDialog::CalculationDialog(GraphTools* tools, multiConnectionsManager* manager, int index,
                                     QWidget* parent)
    : QDialog(parent)
    , tools(tools)
    , manager(manager)
    , index(index)
{
    setObjectName(QStringLiteral("calculationDialog"));
    setWindowTitle(tr("Channel by a formula"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    createFields();
    createButtons();
    fillExisting();
    // Samples come and go meanwhile.
    connect(&again, &QTimer::timeout, this, &CalculationDialog::look);
    again.start(msBetweenAnswers);
    formula->setFocus();
}

void CalculationDialog::ask(GraphTools* tools, multiConnectionsManager* manager, int index, QWidget* parent)
{
    const QPointer<CalculationDialog> dialog = new CalculationDialog(tools, manager, index, parent);
    dialog->exec();
    if (dialog)
        dialog->deleteLater();
}

const ExpData& CalculationDialog::set() const
{
    return index < 0 ? *manager->dataC() : *manager->dataAt(index);
}

QLineEdit* CalculationDialog::addLine(const char* objectName, const QString& label, const QString& example)
{
    auto* const line = new QLineEdit;
    line->setObjectName(QLatin1String(objectName));
    line->setAccessibleName(label);
    line->setPlaceholderText(example);
    form->addRow(label, line);
    connect(line, &QLineEdit::textChanged, this, &CalculationDialog::look);
    return line;
}

void CalculationDialog::createFields()
{
    auto* const layout = new QVBoxLayout(this);
    form = new QFormLayout;
    existing = new QComboBox;
    existing->setObjectName(QStringLiteral("existing"));
    existing->setAccessibleName(tr("Channel"));
    form->addRow(tr("Channel"), existing);
    channels = new QLabel;
    channels->setObjectName(QStringLiteral("channels"));
    channels->setTextFormat(Qt::PlainText);
    form->addRow(tr("Letters"), channels);
    answer = new QLabel; // the fields speak to it as soon as they have something
    digits = new QSpinBox;
    formula = addLine("formula", tr("Formula"), tr("For example: 0.5*m*A^2"));
    formula->setMaxLength(Calculation::longestFormula);
    constants = new QFormLayout;
    form->addRow(tr("Constants"), constants);
    name = addLine("name", tr("Name"), tr("For example: Kinetic energy"));
    name->setMaxLength(longestName);
    unit = addLine("unit", tr("Unit"), tr("For example: J"));
    unit->setMaxLength(longestUnit);
    digits->setObjectName(QStringLiteral("digits"));
    digits->setAccessibleName(tr("Digits"));
    digits->setRange(-1, Calculation::mostDigits);
    digits->setValue(-1);
    digits->setSpecialValueText(tr("automatic"));
    form->addRow(tr("Digits"), digits);
    connect(digits, qOverload<int>(&QSpinBox::valueChanged), this, &CalculationDialog::look);
    answer->setObjectName(QStringLiteral("answer"));
    answer->setWordWrap(true);
    QFont bold = answer->font();
    bold.setBold(true);
    answer->setFont(bold);
    forAll = new QCheckBox(tr("For all groups that have these channels"));
    forAll->setObjectName(QStringLiteral("forAll"));
    forAll->setVisible(index >= 0 && manager->nDefTembrins() > 1);
    layout->addLayout(form);
    layout->addWidget(answer);
    layout->addWidget(forAll);
}

void CalculationDialog::createButtons()
{
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    add = buttons->addButton(tr("Add"), QDialogButtonBox::ActionRole);
    add->setObjectName(QStringLiteral("add"));
    add->setDefault(true);
    remove = buttons->addButton(tr("Remove"), QDialogButtonBox::ActionRole);
    remove->setObjectName(QStringLiteral("remove"));
    remove->setAutoDefault(false);
    layout()->addWidget(buttons);
    connect(add, &QPushButton::clicked, this, &CalculationDialog::take);
    connect(remove, &QPushButton::clicked, this, &CalculationDialog::removeShown);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(existing, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &CalculationDialog::showExisting);
}

void CalculationDialog::fillExisting()
{
    existing->addItem(tr("A new one"), newChannel);
    for (int i = 0; i < set().getNSens(); ++i) {
        const SensorPtr& sensor = set().getSens(i);
        if (sensor && sensor->calculation)
            existing->addItem(sensor->name, i);
    }
}

void CalculationDialog::showExisting()
{
    const SensorPtr& sensor = set().getSens(existing->currentData().toInt());
    if (sensor && sensor->calculation) {
        const Calculation::Recipe recipe = sensor->calculation->recipe();
        for (const Calculation::Constant& constant : recipe.constants)
            typed[constant.name] = QString::number(constant.value, 'g', 12);
        showConstants({}); // to be made anew with these
        name->setText(recipe.name);
        unit->setText(recipe.unit);
        digits->setValue(recipe.digits);
        formula->setText(recipe.formula);
    }
    look();
}

/// What can stand in the formula: not the channel that is changed, nor those behind it.
QString CalculationDialog::channelsText() const
{
    const int shown = existing->currentData().toInt();
    const int end = std::min(shown == newChannel ? set().getNSens() : shown, Calculation::mostOrigins);
    QStringList lines;
    for (int i = 0; i < end; ++i) {
        const SensorPtr& sensor = set().getSens(i);
        if (!sensor)
            continue;
        const QString unitName = BaseUnit::nameOf(*sensor);
        const QString line =
            QStringLiteral("%1  %2").arg(Calculation::letterOf(i)).arg(sensor->nameForLegend(index < 0));
        lines << (unitName.isEmpty() ? line : QStringLiteral("%1 [%2]").arg(line, unitName));
    }
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n') + tr("t  time [s]");
}

Calculation::Recipe CalculationDialog::recipe(QString* problem) const
{
    Calculation::Recipe asked;
    const int shown = existing->currentData().toInt();
    const SensorList before = shown == newChannel ? set().getSensors() : set().getSensors().mid(0, shown);
    *problem = Calculation::read(formula->text(), before, &asked);
    asked.name = name->text().trimmed();
    asked.unit = unit->text().trimmed();
    asked.digits = digits->value();
    if (!problem->isEmpty())
        return asked;
    for (const QString& constant : Calculation::constantsOf(asked)) {
        bool isNumber = false;
        const QLineEdit* const line = numbers.value(constant);
        const double value = Common::typedNumber(line ? line->text() : QString(), &isNumber);
        if (!isNumber && problem->isEmpty())
            *problem = tr("How much is %1?").arg(constant);
        asked.constants.append({constant, value});
    }
    return asked;
}

/// Beside the formula.
QString CalculationDialog::problemIn(const Calculation::Recipe& recipe) const
{
    const int shown = existing->currentData().toInt();
    if (shown != newChannel && !isLast(shown))
        return tr("Other curves were derived after it; remove these first.");
    if (index < 0 && set().getXSize() == 0)
        return tr("The class has no samples yet.");
    if (recipe.name.isEmpty())
        return tr("The channel needs a name.");
    for (int i = 0; i < set().getNSens(); ++i) {
        const SensorPtr& sensor = set().getSens(i);
        if (i != shown && sensor && sensor->name == recipe.name)
            return tr("There is a channel of this name already.");
    }
    return {};
}

/// The newest value that there is.
QString CalculationDialog::told(const Calculation::Recipe& recipe) const
{
    const Calculation calculation(recipe, set().getNSens());
    double largest = 0;
    double newest = qQNaN();
    for (int row = 0; row < set().getXSize(); ++row) {
        const double value = calculation.at(set().getX(), set().getData(), row);
        if (std::isnan(value))
            continue;
        newest = value;
        largest = std::max(largest, std::abs(value));
    }
    if (std::isnan(newest))
        return set().getXSize() > 0 ? tr("It has no value for any sample.") : tr("It begins with the run.");
    const QString text = QString::number(newest, 'f', calculation.decimals(largest));
    return tr("At present: %1 %2").arg(text, recipe.unit);
}

void CalculationDialog::showConstants(const QStringList& names)
{
    if (names == QStringList(numbers.keys()))
        return;
    while (constants->rowCount() > 0)
        constants->removeRow(0);
    numbers.clear();
    QWidget* before = formula;
    for (const QString& constant : names) {
        auto* const line = new QLineEdit(typed.value(constant, QStringLiteral("1")));
        line->setObjectName(QStringLiteral("constant_%1").arg(constant));
        line->setAccessibleName(tr("Constant %1").arg(constant));
        numbers.insert(constant, line);
        constants->addRow(QStringLiteral("%1 =").arg(constant), line);
        setTabOrder(before, line);
        before = line;
        connect(line, &QLineEdit::textChanged, this, [this, constant](const QString& text) {
            typed[constant] = text;
            look();
        });
    }
    form->labelForField(constants)->setVisible(!names.isEmpty());
}

void CalculationDialog::look()
{
    if (!add) // is only being made
        return;
    channels->setText(channelsText());
    QString problem;
    Calculation::Recipe asked = recipe(&problem);
    if (!asked.origins.isEmpty()) {
        QStringList names = Calculation::constantsOf(asked);
        std::sort(names.begin(), names.end());
        showConstants(names);
        asked = recipe(&problem);
    }
    const bool isValid = problem.isEmpty();
    const QString value = isValid ? told(asked) : QString();
    if (isValid)
        problem = problemIn(asked);
    answer->setText(isValid && !problem.isEmpty() ? value + QLatin1Char('\n') + problem
                    : isValid                     ? value
                                                  : problem);
    const int shown = existing->currentData().toInt();
    add->setText(shown == newChannel ? tr("Add") : tr("Change"));
    add->setEnabled(problem.isEmpty());
    remove->setVisible(shown != newChannel);
    remove->setEnabled(isLast(shown));
}

bool CalculationDialog::isLast(int channel) const
{
    return channel >= 0 && channel == set().getNSens() - 1;
}

/// False where a channel is missing.
bool CalculationDialog::takeFor(int slot, const Calculation::Recipe& recipe, const QString& before)
{
    const ExpData* const data = slot < 0 ? manager->dataC() : manager->dataAt(slot);
    const SensorPtr last = data->getSens(data->getNSens() - 1);
    if (!before.isEmpty() && last && last->calculation && last->name == before)
        tools->removeCalculated(slot);
    const SensorList& others = data->getSensors();
    const bool isThere = std::any_of(others.cbegin(), others.cend(), [&](const SensorPtr& sensor) {
        return sensor && sensor->calculation && sensor->name == recipe.name;
    });
    return !isThere && tools->addCalculated(slot, recipe);
}

void CalculationDialog::take()
{
    QString problem;
    const Calculation::Recipe asked = recipe(&problem);
    if (!problem.isEmpty() || !problemIn(asked).isEmpty()) {
        look(); // something changed since
        return;
    }
    const SensorPtr changed = set().getSens(existing->currentData().toInt());
    const QString before = changed ? changed->name : QString();
    QStringList without;
    for (int slot = 0; forAll->isChecked() && slot < manager->nDefTembrins(); ++slot) {
        if (slot != index && !takeFor(slot, asked, before) && !manager->groupName(slot).isEmpty())
            without << manager->groupName(slot);
    }
    takeFor(index, asked, before);
    if (!without.isEmpty())
        Q_EMIT tools->told(tr("%1: not for %2.").arg(asked.name, without.join(QStringLiteral(", "))));
    accept();
}

void CalculationDialog::removeShown()
{
    const SensorPtr shown = set().getSens(existing->currentData().toInt());
    for (int slot = 0; shown && forAll->isChecked() && slot < manager->nDefTembrins(); ++slot) {
        const ExpData* const data = manager->dataAt(slot);
        const SensorPtr last = data->getSens(data->getNSens() - 1);
        if (slot != index && last && last->calculation && last->name == shown->name)
            tools->removeCalculated(slot);
    }
    if (isLast(existing->currentData().toInt()))
        tools->removeCalculated(index);
    accept();
}

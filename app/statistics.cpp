#include "app/statistics.h"

#include "app/subjects.h"
#include "common/common.h"
#include "data/fittexts.h"
#include "data/rangestatistics.h"

#include <QCheckBox>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <cmath>

namespace {

constexpr int areaDigits = 6;

QString areaText(const RangeStatistics& of)
{
    return std::isfinite(of.area)
               ? FitTexts::withUnit(Common::myToString(of.area, 'g', areaDigits), of.areaUnit)
               : QStringLiteral("–");
}

/// A small one would be rounded away.
QString oneDecimal(double value)
{
    return value == 0 || std::fabs(value) >= 1 ? QStringLiteral("%L1").arg(value, 0, 'f', 1)
                                               : Common::toSignificant(value);
}

QString slopeText(const RangeStatistics& of)
{
    return std::isfinite(of.slope) ? FitTexts::withUnit(Common::toSignificant(of.slope), of.slopeUnit)
                                   : QStringLiteral("–");
}

} // namespace

statistics::statistics(UserPrompt* prompt, QWidget* parent)
    : QDialog(parent)
    , prompt(prompt)
    , title(new QLabel)
    , rangeText(new QLabel)
    , one(new QWidget)
    , forAll(new QCheckBox(tr("For all groups")))
    , table(new QTableWidget)
{
    setObjectName(QStringLiteral("statistics"));
    setWindowTitle(tr("Statistics"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    title->setObjectName(QStringLiteral("title"));
    rangeText->setObjectName(QStringLiteral("range"));
    forAll->setObjectName(QStringLiteral("forAll"));
    table->setObjectName(QStringLiteral("results"));
    table->setAccessibleName(tr("Statistics of all groups"));
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->verticalHeader()->hide();
    auto* const grid = new QGridLayout(one);
    grid->setContentsMargins(0, 0, 0, 0);
    addField(grid, tr("Minimum"), "minimum");
    addField(grid, tr("Maximum"), "maximum");
    addField(grid, tr("Average"), "average");
    addField(grid, tr("Standard Deviation"), "deviation");
    addField(grid, tr("Number of samples"), "samples");
    addField(grid, tr("Sampling rate"), "rate");
    addField(grid, tr("Area"), "area");
    addField(grid, tr("Slope"), "slope");
    auto* const layout = new QVBoxLayout(this);
    for (QWidget* widget : QVector<QWidget*>{title, rangeText, one, table, forAll})
        layout->addWidget(widget);
    createButtons(this);
    connect(forAll, &QCheckBox::toggled, this, &statistics::showForAll);
    showForAll(false);
}

void statistics::createButtons(QWidget* parent)
{
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    auto* const copyButton = buttons->addButton(tr("Copy"), QDialogButtonBox::ActionRole);
    copyButton->setObjectName(QStringLiteral("copy"));
    connect(copyButton, &QPushButton::clicked, this, &statistics::copy);
    auto* const saveButton = buttons->addButton(tr("Export..."), QDialogButtonBox::ActionRole);
    saveButton->setObjectName(QStringLiteral("export"));
    connect(saveButton, &QPushButton::clicked, this, &statistics::save);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    parent->layout()->addWidget(buttons);
}

void statistics::addField(QGridLayout* grid, const QString& label, const char* name)
{
    auto* const value = new QLabel;
    value->setObjectName(QLatin1String(name));
    value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    labels.append(new QLabel(label));
    values.append(value);
    grid->addWidget(labels.last(), labels.size() - 1, 0);
    grid->addWidget(value, labels.size() - 1, 1);
}

void statistics::update(const QString& sensName, const RangeStatistics& of, const QString& rate,
                        const QString& range)
{
    title->setText(tr("%1 sensor statistics").arg(sensName));
    rangeText->setText(range);
    rangeText->setVisible(!range.isEmpty());
    const QString texts[] = {QStringLiteral("%L1").arg(of.min),
                             QStringLiteral("%L1").arg(of.max),
                             oneDecimal(of.mean),
                             oneDecimal(of.deviation),
                             QString::number(of.n),
                             rate,
                             areaText(of),
                             slopeText(of)};
    for (int i = 0; i < values.size(); ++i)
        values[i]->setText(texts[i]);
    Subject subject;
    subject.channel = sensName;
    ofOne = numbers({subject}, {of});
}

void statistics::setGroups(const ResultTable& told, const ResultTable& numbers)
{
    told.show(table);
    ofGroups = numbers;
}

ResultTable statistics::told(const QVector<Subject>& subjects, const QVector<RangeStatistics>& values)
{
    ResultTable result{{tr("Group"), tr("Sensor"), tr("n"), tr("Average"), tr("Standard Deviation"),
                        tr("Minimum"), tr("Maximum"), tr("Area"), tr("Slope")},
                       {}};
    for (int i = 0; i < subjects.size(); ++i) {
        const RangeStatistics& of = values[i];
        const auto text = [&of](double value) {
            return FitTexts::withUnit(Common::toSignificant(value), of.unit);
        };
        QStringList row{subjects[i].group, subjects[i].channel};
        if (of.n == 0)
            row << tr("No samples in the range.");
        else
            row << QString::number(of.n) << text(of.mean) << text(of.deviation) << text(of.min)
                << text(of.max) << areaText(of) << slopeText(of);
        result.rows.append(row);
    }
    return result;
}

ResultTable statistics::numbers(const QVector<Subject>& subjects, const QVector<RangeStatistics>& values)
{
    ResultTable result{{tr("Group"), tr("Sensor"), tr("n"), tr("Unit"), tr("Average"),
                        tr("Standard Deviation"), tr("Minimum"), tr("Maximum"), tr("Area"),
                        tr("Unit of the area"), tr("Slope"), tr("Unit of the slope")},
                       {}};
    const auto text = &ResultTable::number;
    for (int i = 0; i < subjects.size(); ++i) {
        const RangeStatistics& of = values[i];
        result.rows.append({subjects[i].group, subjects[i].channel, QString::number(of.n), of.unit,
                            text(of.mean), text(of.deviation), text(of.min), text(of.max), text(of.area),
                            of.areaUnit, text(of.slope), of.slopeUnit});
    }
    return result;
}

void statistics::showForAll(bool tf)
{
    constexpr QSize forTable(900, 420);
    one->setVisible(!tf);
    title->setVisible(!tf);
    table->setVisible(tf);
    if (tf)
        resize(forTable);
    else
        adjustSize();
    if (const QWidget* const behind = parentWidget())
        move(behind->frameGeometry().center() - rect().center());
}

void statistics::copy() const
{
    if (forAll->isChecked()) {
        ofGroups.copy();
        return;
    }
    QString text = title->text() + QLatin1Char('\n');
    for (int i = 0; i < values.size(); ++i)
        text += QStringLiteral("%1=%2\n").arg(labels[i]->text(), values[i]->text());
    QGuiApplication::clipboard()->setText(text);
}

void statistics::save()
{
    (forAll->isChecked() ? ofGroups : ofOne).save(this, prompt, tr("Statistics.csv"));
}

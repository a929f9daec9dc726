#include "app/fitdialog.h"

#include "app/graphtools.h"
#include "app/residualplot.h"
#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"
#include "data/fittexts.h"
#include "graph/plot.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int lookEvery = 250;    // ms
constexpr int patienceTime = 100; // ms

} // namespace

FitDialog::FitDialog(const GraphTools* tools, multiConnectionsManager* manager, UserPrompt* prompt,
                     QWidget* parent)
    : QDialog(parent)
    , tools(tools)
    , subjects(tools, manager)
    , manager(manager)
    , prompt(prompt)
{
    setObjectName(QStringLiteral("fitDialog"));
    setWindowTitle(tr("Fit a curve"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    auto* const layout = new QVBoxLayout(this);
    createChoice(layout);
    createResult(layout);
    createButtons(layout);
    connect(&runner, &FitRunner::done, this, &FitDialog::take);
    connect(&lookTimer, &QTimer::timeout, this, &FitDialog::look);
    patience.setSingleShot(true);
    connect(&patience, &QTimer::timeout, this, [this] {
        tellProblem(tr("Working..."));
        for (QPushButton* button : qAsConst(needsResult)) // of what is no longer asked
            button->setEnabled(false);
    });
    lookTimer.setInterval(lookEvery);
}

FitDialog::~FitDialog() = default;

void FitDialog::createChoice(QVBoxLayout* layout)
{
    models = new QComboBox;
    models->setObjectName(QStringLiteral("model"));
    models->setAccessibleName(tr("Kind of curve"));
    for (int i = 0; i < CurveFit::nModels; ++i) {
        const auto model = CurveFit::Model(i);
        const QString form = CurveFit::modelFormula(model);
        models->addItem(form.isEmpty() ? tr("A formula of your own")
                                       : QStringLiteral("%1:  %2").arg(CurveFit::modelName(model), form),
                        i);
    }
    formula = new QLineEdit;
    formula->setObjectName(QStringLiteral("formula"));
    formula->setMaxLength(FittedCurve::longestFormula);
    formula->setAccessibleName(tr("Formula"));
    formula->setPlaceholderText(tr("For example: a*exp(-x/tau) + b"));
    formula->hide();
    forAll = new QCheckBox(tr("For all groups"));
    forAll->setObjectName(QStringLiteral("forAll"));
    range = new QLabel;
    range->setObjectName(QStringLiteral("range"));
    range->setWordWrap(true);
    problem = new QLabel;
    problem->setObjectName(QStringLiteral("problem"));
    problem->setWordWrap(true);
    problem->hide();
    for (QWidget* widget : QVector<QWidget*>{models, formula, problem, forAll, range})
        layout->addWidget(widget);
    connect(models, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] {
        formula->setVisible(model() == CurveFit::Model::Formula);
        if (formula->isVisible())
            formula->setFocus();
        ask();
    });
    connect(formula, &QLineEdit::textChanged, this, &FitDialog::ask);
    connect(forAll, &QCheckBox::toggled, this, [this] {
        fitWidth();
        ask();
    });
}

void FitDialog::createResult(QVBoxLayout* layout)
{
    told = new QLabel;
    told->setObjectName(QStringLiteral("told"));
    told->setTextInteractionFlags(Qt::TextSelectableByMouse);
    told->setWordWrap(true);
    QFont bold = told->font();
    bold.setBold(true);
    told->setFont(bold);
    table = new QTableWidget;
    table->setObjectName(QStringLiteral("results"));
    table->setAccessibleName(tr("Results of the fit"));
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->verticalHeader()->hide();
    residualPlace = new QVBoxLayout;
    layout->addWidget(told);
    layout->addWidget(table, 1);
    layout->addLayout(residualPlace);
}

QPushButton* FitDialog::addButton(const char* name, const QString& text, void (FitDialog::*slot)())
{
    auto* const button = new QPushButton(text);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false); // Return in the formula does nothing
    connect(button, &QPushButton::clicked, this, slot);
    return button;
}

void FitDialog::createButtons(QVBoxLayout* layout)
{
    auto* const put = addButton("put", tr("Put on graph"), &FitDialog::putOnGraphs);
    residualButton = addButton("residuals", tr("Residuals"), &FitDialog::toggleResiduals);
    residualButton->setCheckable(true);
    auto* const copyButton = addButton("copy", tr("Copy"), &FitDialog::copy);
    auto* const saveButton = addButton("export", tr("Export..."), &FitDialog::save);
    auto* const close = new QPushButton(tr("Close"));
    close->setObjectName(QStringLiteral("close"));
    close->setAutoDefault(false);
    connect(close, &QPushButton::clicked, this, &QDialog::close);
    needsResult = {put, copyButton, saveButton};
    for (const auto& list : {QVector<QPushButton*>{put, residualButton}, {copyButton, saveButton, close}}) {
        auto* const row = new QHBoxLayout;
        for (QPushButton* button : list)
            row->addWidget(button);
        layout->addLayout(row);
    }
}

/// The right edge stays; a table of all groups is wide.
void FitDialog::fitWidth()
{
    constexpr QSize small(400, 540);
    constexpr int wide = 1040;
    constexpr int margin = 12;
    const QRect room = parentWidget() ? parentWidget()->frameGeometry() : QRect();
    const int right =
        isVisible() && geometry().right() < room.right() ? geometry().right() : room.right() - margin;
    const int width = isForAll() ? std::max(small.width(), std::min(wide, right - room.left() - margin))
                                 : std::max(small.width(), minimumSizeHint().width());
    resize(width, std::max({small.height(), isVisible() ? height() : 0, minimumSizeHint().height()}));
    if (room.isValid())
        move(right - width, isVisible() ? y() : room.top() + room.height() / 8);
}

void FitDialog::showBeside()
{
    if (!isVisible())
        fitWidth();
    show();
    raise();
    activateWindow();
}

void FitDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    lookTimer.start();
    ask();
}

void FitDialog::hideEvent(QHideEvent* event)
{
    QDialog::hideEvent(event);
    lookTimer.stop();
    patience.stop();
    runner.drop();
    endPreviews();
}

CurveFit::Model FitDialog::model() const
{
    return CurveFit::Model(models->currentData().toInt());
}

bool FitDialog::isForAll() const
{
    return forAll->isChecked();
}

bool FitDialog::isTime() const
{
    return asked.isEmpty() || asked.constFirst().stretch.isTime;
}

// --- What is fitted ---

QVector<Subject> FitDialog::present() const
{
    return isForAll() ? subjects.groups() : subjects.meant();
}

/// What has changed since, whoever changed it. A run that goes on waits for what is under way.
void FitDialog::look()
{
    const bool isOther = graph != tools->seen();
    if (runner.isBusy() && !isOther)
        return;
    if ((isOther && !isForAll()) || !(asked == present()))
        ask();
}

void FitDialog::ask()
{
    if (!isVisible())
        return;
    graph = tools->seen();
    asked = present();
    const QString part = subjects.range();
    range->setText(part.isEmpty() ? tr("All samples. Two markers choose a part.") : part);
    FitRunner::Task task;
    task.model = model();
    for (const Subject& subject : qAsConst(asked))
        task.stretches.append(subject.stretch);
    task.expression = FitTexts::typed(formula->text(), isTime());
    if (asked.isEmpty() || (!isForAll() && asked.constFirst().stretch.iSens < 0)) {
        runner.drop();
        patience.stop();
        shown.clear();
        endPreviews();
        showResults();
        tellProblem(asked.isEmpty() ? tr("Click in the graph that is meant first.")
                                    : tr("A fit needs curves: choose the graph view for this group."));
        return;
    }
    runner.ask(task);
    patience.start(patienceTime);
}

void FitDialog::take(const QVector<CurveFit::Fit>& fits)
{
    patience.stop();
    shown.clear();
    for (int i = 0; i < fits.size(); ++i)
        shown.append(FitResult{asked.value(i), fits[i]});
    const auto good =
        std::find_if(shown.cbegin(), shown.cend(), [](const FitResult& one) { return one.isGood(); });
    const bool isNone = good == shown.cend();
    tellProblem(isNone && !shown.isEmpty() ? shown.constFirst().fit.problem : QString());
    showPreviews();
    showResults();
}

// --- What is shown ---

void FitDialog::tellProblem(const QString& text)
{
    problem->setText(text);
    problem->setVisible(!text.isEmpty());
}

QString FitDialog::formulaText() const
{
    const auto good =
        std::find_if(shown.cbegin(), shown.cend(), [](const FitResult& one) { return one.isGood(); });
    if (good == shown.cend())
        return {};
    const QString form = FitTexts::formula(good->curve(), good->stretch.isTime);
    return isForAll() ? form : QStringLiteral("%1 = %2").arg(good->channel, form);
}

void FitDialog::showResults()
{
    const bool isGood = !formulaText().isEmpty();
    told->setText(formulaText());
    if (isForAll())
        FitTables::told(shown).show(table);
    else
        FitTables::told(shown.value(0)).show(table);
    for (QPushButton* button : qAsConst(needsResult))
        button->setEnabled(isGood);
    residualButton->setEnabled(isGood && !isForAll());
    if (residuals) {
        residuals->setVisible(residualButton->isChecked() && !isForAll());
        if (residuals->isVisible())
            residuals->setResiduals(shown.value(0).stretch,
                                    isGood ? shown.value(0).residuals() : QVector<double>());
    }
}

void FitDialog::endPreviews()
{
    for (const QPointer<Plot>& plot : qAsConst(previewed)) {
        if (plot)
            plot->previewFit({}, -1, 0, 0);
    }
    previewed.clear();
}

void FitDialog::showPreviews()
{
    endPreviews();
    for (const FitResult& result : qAsConst(shown)) {
        if (!result.isGood())
            continue;
        const QVector<Plot*> plots = isForAll() ? manager->viewsOf(result.slot) : QVector<Plot*>{graph};
        for (Plot* plot : plots) {
            if (!plot || !plot->isVisibleTo(plot->window()))
                continue;
            plot->previewFit(result.curve(), result.stretch.iSens, result.stretch.from, result.stretch.to);
            previewed.append(plot);
        }
    }
}

// --- What is done with it ---

void FitDialog::putOnGraphs()
{
    endPreviews(); // the same curve stands there now
    for (const FitResult& result : qAsConst(shown)) {
        Plot* const plot = isForAll() ? manager->plotAt(result.slot) : graph.data();
        if (plot && result.isGood())
            plot->addFit(result.curve(), result.stretch.iSens, result.stretch.from, result.stretch.to);
    }
}

void FitDialog::toggleResiduals()
{
    if (!residuals) {
        residuals = new ResidualPlot(this);
        residualPlace->addWidget(residuals);
    }
    residuals->setVisible(residualButton->isChecked());
    showResults();
}

ResultTable FitDialog::numbers() const
{
    return isForAll() ? FitTables::numbers(shown) : FitTables::numbers(shown.value(0));
}

void FitDialog::copy()
{
    numbers().copy();
}

void FitDialog::save()
{
    numbers().save(this, prompt, tr("Fit.csv"));
}

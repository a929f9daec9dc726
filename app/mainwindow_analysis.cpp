// The tools of the graph toolbar: what the buttons say to them, and how they answer.

#include "app/mainwindow.h"

#include "app/calculationdialog.h"
#include "app/curvereader.h"
#include "app/fitdialog.h"
#include "app/graphtools.h"
#include "app/groupranking.h"
#include "app/iconlists.h"
#include "app/predictionkeeper.h"
#include "app/sideviews.h"
#include "app/statistics.h"
#include "app/subjects.h"
#include "app/undosteps.h"
#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"
#include "data/rangestatistics.h"
#include "graph/plot.h"
#include "instruments/statusline.h"
#include "protocol/tembrindata.h"

#include <QAction>
#include <QMenu>
#include <QPointer>
#include <QStyle>
#include <QToolBar>
#include <QToolButton>

#include <algorithm>

void MainWindow::createTools()
{
    tools = new GraphTools(mTembrin, this);
    connect(tools, &GraphTools::modeChanged, this, &MainWindow::showMode);
    connect(tools, &GraphTools::told, statusLine, &StatusLine::setAdvice);
    connect(tools, &GraphTools::distanceTold, statusLine, &StatusLine::setMeasured);
    connect(tools, &GraphTools::distanceTold, statusLine, &StatusLine::endAdvice);
    connect(tools, &GraphTools::edited, statusLine, &StatusLine::endAdvice);
    connect(tools, &GraphTools::edited, this, qOverload<int>(&MainWindow::updateAll));
    connect(tools, &GraphTools::pressed, this, &MainWindow::choosePlot);
    reader = new CurveReader(
        tools, [this](int slot) { return titleName(slot); }, this);
    addActions(reader->actions());
    steps = new UndoSteps(mTembrin, this);
    connect(steps, &UndoSteps::told, statusLine, &StatusLine::setAdvice);
    connect(steps, &UndoSteps::edited, this, &MainWindow::showEdited);
    connect(steps, &UndoSteps::changed, this, &MainWindow::showUndo);
    predictions = new PredictionKeeper(mTembrin, groupNames(), this);
    connect(tools, &GraphTools::predictionDrawn, predictions, &PredictionKeeper::take);
    connect(predictions, &PredictionKeeper::told, statusLine, &StatusLine::setAdvice);
    connect(predictions, &PredictionKeeper::resultTold, statusLine, &StatusLine::setOutcome);
    connect(predictions, &PredictionKeeper::doing, steps, &UndoSteps::prepare);
    connect(predictions, &PredictionKeeper::done, steps, &UndoSteps::note);
    sideViews = new SideViews(mTembrin, this);
    connect(sideViews, &SideViews::told, statusLine, &StatusLine::setAdvice);
    connect(sideViews, &SideViews::edited, this, &MainWindow::showEdited);
    connect(sideViews, &SideViews::sensorChosen, this, &MainWindow::updateSens);
    connect(sideViews, &SideViews::titleClicked, this, &MainWindow::tableTitleClicked);
    connect(sideViews, &SideViews::graphMade, this, [this](Plot* plot) {
        plot->setUserPrompt(prompt);
        connect(plot, &Plot::enlargeAsked, this, &MainWindow::enlarge);
        tools->watch(plot);
        connect(plot, &Plot::changing, this, &MainWindow::endReplay);
        steps->watch(plot);
    });
    if (!isPanel)
        addUndoMenu();
    showUndo();
}

/// Slope and prediction have no buttons of their own: they show on the list that they are chosen from.
void MainWindow::showMode()
{
    const GraphTools::Mode mode = tools->mode();
    zoomAct->setChecked(mode == GraphTools::Mode::Zoom);
    markerAct->setChecked(mode == GraphTools::Mode::Marker);
    annotateAct->setChecked(mode == GraphTools::Mode::Annotate);
    readAct->setChecked(mode == GraphTools::Mode::Read);
    shareEscape();
    if (!regression)
        return;
    const int code = mode == GraphTools::Mode::Slope     ? REG_SLOPE
                     : mode == GraphTools::Mode::Predict ? REG_PREDICT
                                                         : 0;
    if (code != 0)
        regression->setCurrentIndex(regression->findData(code));
    regression->setProperty("isOn", code != 0);
    regression->style()->unpolish(regression); // for the style sheet to look again
    regression->style()->polish(regression);
}

void MainWindow::doZoom()
{
    tools->setMode(GraphTools::Mode::Zoom, zoomAct->isChecked());
}

void MainWindow::doMarker()
{
    tools->setMode(GraphTools::Mode::Marker, markerAct->isChecked());
}

void MainWindow::doAnnotate()
{
    tools->setMode(GraphTools::Mode::Annotate, annotateAct->isChecked());
}

void MainWindow::doReadCurves()
{
    tools->setMode(GraphTools::Mode::Read, readAct->isChecked());
}

void MainWindow::doCrop()
{
    tools->crop();
}

void MainWindow::doSlope()
{
    tools->setMode(GraphTools::Mode::Slope, tools->mode() != GraphTools::Mode::Slope);
}

// --- Taking back ---

void MainWindow::doUndo()
{
    steps->undo();
}

void MainWindow::doRedo()
{
    steps->redo();
}

/// A curve that went may have been the one in use, and that of its group in the class.
void MainWindow::showEdited(int index)
{
    const ExpData* const set = index < 0 ? mTembrin->dataC() : mTembrin->dataAt(index);
    const QVector<Plot*> views = mTembrin->viewsOf(index);
    const bool isGone = std::any_of(views.cbegin(), views.cend(), [set](const Plot* plot) {
        return plot->getActiveSens() >= set->getNSens();
    });
    updateAll(index);
    if (isGone)
        updateSens(index, set->getSelectedSensor());
}

void MainWindow::addUndoMenu()
{
    auto* button = qobject_cast<QToolButton*>(graphToolBar->widgetForAction(undoAct));
    auto* menu = new QMenu(button);
    menu->setObjectName(QStringLiteral("undoMenu"));
    connect(menu, &QMenu::aboutToShow, this, [this, menu] { fillUndoMenu(menu); });
    button->setObjectName(QStringLiteral("undoButton"));
    button->setMenu(menu);
    button->setPopupMode(QToolButton::MenuButtonPopup);
}

/// The next step stands on top, and each takes those above it along.
void MainWindow::fillUndoMenu(QMenu* menu)
{
    menu->clear();
    int count = 0;
    for (const QString& name : steps->doneNames()) {
        ++count;
        menu->addAction(tr("Undo %1").arg(name), steps, [this, count] {
            endReplay();
            steps->undo(count);
        });
    }
    menu->addSeparator();
    count = 0;
    for (const QString& name : steps->undoneNames()) {
        ++count;
        menu->addAction(tr("Redo %1").arg(name), steps, [this, count] {
            endReplay();
            steps->redo(count);
        });
    }
}

void MainWindow::showUndo()
{
    const QStringList done = steps->doneNames();
    const QStringList undone = steps->undoneNames();
    undoAct->setText(done.isEmpty() ? tr("Undo") : tr("Undo %1").arg(done.first()));
    redoAct->setText(undone.isEmpty() ? tr("Redo") : tr("Redo %1").arg(undone.first()));
    redoAct->setEnabled(!undone.isEmpty());
    // The list of what can be done again hangs on the same button.
    undoAct->setEnabled(!done.isEmpty() || !undone.isEmpty());
}

void MainWindow::doLinRegression()
{
    tools->fit(1);
}

void MainWindow::doQuadRegression()
{
    tools->fit(2);
}

void MainWindow::doFunctions(int select)
{
    const int code = regression->itemData(select).toInt();
    if (code != REG_STATISTICS && code != REG_RANKING && code != REG_FFT) // which look at what is shown
        endReplay();
    if (code != REG_SLOPE)
        tools->setMode(GraphTools::Mode::Slope, false); // which its picture no longer shows
    const bool isPredicting = tools->mode() == GraphTools::Mode::Predict;
    if (isPredicting)
        tools->setMode(GraphTools::Mode::Predict, false); // the same
    switch (code) {
    case REG_SLOPE:
        doSlope();
        break;
    case REG_LIN:
        doLinRegression();
        break;
    case REG_QUAD:
        doQuadRegression();
        break;
    case REG_FIT:
        showFit();
        break;
    case REG_SMOOTH:
        tools->smooth();
        break;
    case REG_DERIVATIVE:
        tools->addDerivative();
        break;
    case REG_INTEGRAL:
        tools->addIntegral();
        break;
    case REG_STATISTICS:
        showStatistics();
        break;
    case REG_RANKING:
        showRanking();
        break;
    case REG_FFT:
        toggleSpectrum();
        break;
    case REG_PREDICT:
        tools->setMode(GraphTools::Mode::Predict, !isPredicting);
        if (!isPredicting)
            statusLine->setAdvice(tr("Draw in a graph, with the button held down, what its curve will do."));
        break;
    case REG_FORMULA:
        if (Plot* const plot = tools->target())
            CalculationDialog::ask(tools, mTembrin, plot->getIndex(), this);
        break;
    case REG_RIGHT:
        if (Plot* const plot = tools->target())
            plot->showNextRight();
        break;
    case REG_UNPREDICT:
        predictions->removeAll();
        break;
    }
}

void MainWindow::toggleSpectrum()
{
    if (Plot* const plot = tools->target())
        sideViews->toggleSpectrum(plot);
}

/// As the setup names it.
QString MainWindow::rateName(double dt) const
{
    const auto* const found = std::find(std::begin(RateTables::seconds), std::end(RateTables::seconds), dt);
    if (found != std::end(RateTables::seconds))
        return mTembrin->tembrinDataAt(0)->RateNames.value(int(found - std::begin(RateTables::seconds)));
    return dt > 0 ? tr("%1 s").arg(dt) : mTembrin->tembrinDataAt(0)->RateNames.value(0);
}

void MainWindow::showFit()
{
    if (!fitDialog)
        fitDialog = new FitDialog(tools, mTembrin, prompt, this);
    fitDialog->showBeside();
}

void MainWindow::showRanking()
{
    if (!ranking)
        ranking = new GroupRanking(tools, mTembrin, prompt, this);
    ranking->show();
    ranking->raise();
    ranking->activateWindow();
}

void MainWindow::showStatistics()
{
    const ExpData* const set = tools->targetData();
    if (!set)
        return;
    const SensorPtr& sensor = set->getActiveSensor();
    if (set->getXSize() < 2 || !sensor) {
        statusLine->setAdvice(tr("Statistics need at least two samples."));
        return;
    }
    const Subjects subjects(tools, mTembrin);
    Subject one = subjects.meant().value(0);
    if (one.stretch.iSens < 0) // bars and spectra have no markers
        one.stretch = Stretch::whole(*set, set->getSelectedSensor());
    const SensorPtr& channel = set->getSens(one.stretch.iSens);
    const QVector<Subject> groups = subjects.groups();
    QVector<RangeStatistics> ofGroups;
    for (const Subject& group : groups)
        ofGroups.append(RangeStatistics::of(*mTembrin->dataAt(group.slot), group.stretch));
    const QPointer<statistics> dialog = new statistics(prompt, this);
    dialog->update((channel ? channel : sensor)->nameForLegend(true), RangeStatistics::of(*set, one.stretch),
                   rateName(set->dt), subjects.range());
    dialog->setGroups(statistics::told(groups, ofGroups), statistics::numbers(groups, ofGroups));
    dialog->exec();
    if (dialog)
        dialog->deleteLater();
}

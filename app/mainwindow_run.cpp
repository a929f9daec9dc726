#include "app/mainwindow.h"

#include "app/classnotices.h"
#include "app/refreshclock.h"
#include "app/runline.h"
#include "app/runrecorder.h"
#include "app/selfrun.h"
#include "app/sideviews.h"
#include "classroom/classrun.h"
#include "classroom/commandqueue.h"
#include "classroom/jobtexts.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/waits.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "instruments/statusline.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

#include <QAction>
#include <QComboBox>
#include <QDateTime>
#include <QStatusBar>

namespace {
constexpr int msBetweenPumps = 20;
}

void MainWindow::connectFlows()
{
    createSelfRun();
    const CommandQueue* queue = &mTembrin->queue();
    connect(queue, &CommandQueue::changed, this, &MainWindow::updateActions);
    connect(queue, &CommandQueue::begun, this, &MainWindow::clearOutcome);
    connect(queue, &CommandQueue::ended, this, &MainWindow::showOutcome);
    connect(queue, &CommandQueue::ended, this, &MainWindow::showFilled);
    connect(queue, &CommandQueue::ended, this, &MainWindow::settleMemory, Qt::QueuedConnection);

    const ClassRun* run = &mTembrin->run();
    connect(run, &ClassRun::experimentBegun, this, &MainWindow::showNewExperiment);
    connect(run, &ClassRun::channelsPlanned, this, &MainWindow::showPlanned);
    connect(run, &ClassRun::classBegun, this, &MainWindow::showNewClass);
    connect(run, &ClassRun::samplesTaken, this, &MainWindow::showSamples);
    connect(run, &ClassRun::sensorsChanged, this, [this](int index) {
        statusLine->setOutcome(
            tr("%1 measures with other sensors than before; new ones are not shown in this run.")
                .arg(mTembrin->groupName(index)));
    });
    connect(run, &ClassRun::tooSlow, this, &MainWindow::showBusyTitle);
    connect(run, &ClassRun::phaseChanged, this, &MainWindow::showPhase);
    connect(run, &ClassRun::ended, this, &MainWindow::showEndOfRun);
    connect(run, &ClassRun::storedRunsEnded, this, &MainWindow::fetchStoredRuns);
    connect(run, &ClassRun::gapsLeft, this, &MainWindow::fetchGaps);
}

void MainWindow::updateRunStopButton(bool showRun)
{
    if (isPanel)
        return;
    runAct->setVisible(showRun);
    stopAct->setVisible(!showRun);
}

/// The queue and the run alone decide what can be pressed. Stop can be as long as anything may run.
void MainWindow::updateActions()
{
    const bool isIdle = mTembrin->queue().isIdle();
    const bool isRunning = mTembrin->isAnyRunning();
    updateRunStopButton(!isRunning && !mTembrin->run().isAwaited() && !selfRun->isWaiting());
    runAct->setEnabled(isIdle);
    basicSetupAct->setEnabled(isIdle);
    downloadAct->setEnabled(isIdle && !isRunning);
    statusLine->setWaiting(JobTexts::present(mTembrin->queue().jobs(), groupNames()));
}

std::function<QString(int)> MainWindow::groupNames() const
{
    return [this](int slot) { return mTembrin->groupName(slot); };
}

void MainWindow::showOutcome(const ClassJob& job)
{
    const QString text = JobTexts::outcome(job, groupNames());
    if (text.isEmpty())
        return;
    statusLine->setOutcome(text);
    if (job.task == ClassJob::Task::Stop)
        notStopped = text;
}

/// Who was not stopped is told until somebody starts or stops the class again: other jobs begin by
/// themselves.
void MainWindow::clearOutcome(ClassJob::Task task)
{
    const bool isOfRun = task == ClassJob::Task::Start || task == ClassJob::Task::Stop;
    if (isOfRun || statusLine->outcome() != notStopped)
        statusLine->setOutcome(QString());
}

// --- Start and stop ---

void MainWindow::createSelfRun()
{
    const auto stop = [this] {
        runLine->noteStop();
        mTembrin->sendCmdToAll(CMD_STOP_LOGGING);
    };
    selfRun = new SelfRun(
        mTembrin, [this] { doRun(); }, stop, [this] { return !isSaving; }, this);
    connect(selfRun, &SelfRun::changed, this, &MainWindow::updateActions);
    connect(selfRun, &SelfRun::told, statusLine, &StatusLine::setOutcome);
    connect(selfRun, &SelfRun::stopWanted, this, &MainWindow::doStopAll);
}

void MainWindow::doRun()
{
    closePage();
    if (!mTembrin->startRun()) {
        statusLine->setAdvice(tr("No logger is connected, so none was started."));
        return;
    }
    const QStringList unsure = groupsNotSetUp();
    statusLine->setOutcome(unsure.isEmpty()
                               ? QString()
                               : tr("Setup not confirmed, so times and sensors may be other than shown: %1")
                                     .arg(unsure.join(QStringLiteral(", "))));
    updateActions();
}

/// Loggers that never said whether they took what was chosen last.
QStringList MainWindow::groupsNotSetUp() const
{
    QStringList groups;
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i) {
        if (mTembrin->isRecognized(i) && !mTembrin->tembrinAt(i)->isSetupConfirmed())
            groups.append(mTembrin->groupName(i));
    }
    return groups;
}

void MainWindow::doStopAll()
{
    const bool isGivenUp = selfRun->giveUp();
    if (isGivenUp && !mTembrin->isAnyRunning() && !mTembrin->run().isAwaited())
        return;
    runLine->noteStop();
    mTembrin->sendCmdToAll(CMD_STOP_LOGGING);
}

void MainWindow::showEndOfRun()
{
    if (!isSaving) // else it is not known yet whether it is saved
        recorder->noteSaved();
    hideBusyTitle();
    QMetaObject::invokeMethod(this, &MainWindow::settleMemory, Qt::QueuedConnection);
    markViews(-1);
    if (mTembrin->tembrinDataAt(0)->isVorta() && !mTembrin->tembrinAt(0)->Vorta_drawOnline)
        updateAll();
    updateActions();
}

// --- The loggers' part in the run ---

void MainWindow::showNewExperiment(int index)
{
    ExpData* set = mTembrin->dataAt(index);
    endLessonName(index);
    data->setXYIndex(-1);
    set->setXYIndex(-1);
    mTembrin->plotAt(index)->setMarkers();
    updateAll(index);
    setSelected(index, qMax(0, set->getSelectedSensor()));
    showPins(index); // another group may have its place
}

void MainWindow::showPlanned(int index)
{
    showNewExperiment(index);
    if (mTembrin->dataC()->getXSize() == 0)
        updateAll(-1);
}

void MainWindow::showNewClass()
{
    handleOnlyStaticClassMode(false); // also for a run that was started on a logger
    runLine->noteStart();
    graph->setMarkers();
    updateAll(-1);
    setSelected(-1, 0);
    runBegun = QDateTime::currentDateTime();
    runTitle = runBegun.toString(QStringLiteral("hh:mm, d-MM-yyyy"));
    graph->updateTitle(runTitle);
}

/// An opened lesson brings the names of its groups, and samples keep that of who measured them when another
/// group takes the place.
QString MainWindow::titleName(int index) const
{
    const bool isOfLesson = namedByLesson >> index & 1;
    const ExpData& set = *mTembrin->dataAt(index);
    const bool isOfGroup = set.getXSize() > 0 && !set.getGroupName().isEmpty();
    return isOfLesson || isOfGroup ? set.getGroupName() : mTembrin->groupName(index);
}

/// A logger that was lost in the run says so where its curve stands, and since when.
QString MainWindow::titleOf(int index) const
{
    const QString group = titleName(index);
    const QDateTime since = mTembrin->run().lostSince(index);
    return since.isValid()
               ? tr("%1: connection lost at %2").arg(group, since.toString(QStringLiteral("HH:mm:ss")))
               : group;
}

/// What its graph shows from now on is of the group whose logger is connected.
void MainWindow::endLessonName(int index)
{
    if (!(namedByLesson >> index & 1))
        return;
    namedByLesson &= quint8(~(1u << index));
    showTitle(index);
}

void MainWindow::showTitle(int index)
{
    for (Plot* plot : mTembrin->viewsOf(index))
        plot->updateTitle(titleOf(index));
    sideViews->setTitle(index, titleOf(index));
}

void MainWindow::showPhase(int index)
{
    const QDateTime since = mTembrin->run().lostSince(index);
    const quint8 bit = quint8(1u << index);
    if (since.isValid() != bool(markedLost & bit)) {
        markedLost ^= bit;
        const QString group = mTembrin->groupName(index);
        showTitle(index);
        if (since.isValid())
            statusLine->setOutcome(titleOf(index));
        else if (statusLine->outcome().startsWith(tr("%1: connection lost at %2").arg(group, QString())))
            statusLine->setOutcome(QString()); // it is back
    }
    markViews(index);
    updateActions();
}

// --- Samples ---

void MainWindow::showSamples(int index, int samplesWaiting)
{
    ++nestCounter;
    isViewNew[index] = true;
    if (nestCounter > 1) {
        countSkipped(mTembrin->dataAt(index)->dt);
    } else {
        howManySkipped = 0;
        hideBusyTitle();
        letOthersIn();
        const TembrinData* state = mTembrin->tembrinDataAt(index);
        const bool isDrawn = !state->isVorta() || mTembrin->tembrinAt(index)->Vorta_drawOnline ||
                             mTembrin->run().isSimulation();
        if (samplesWaiting == 0 && isDrawn)
            onlineUpdateSafe();
    }
    --nestCounter;
}

void MainWindow::countSkipped(double dt)
{
    ++howManySkipped;
    if (dt < 1 && howManySkipped > 1 / dt)
        showBusyTitle();
}

void MainWindow::showBusyTitle()
{
    if (isSlowWarning)
        return;
    isSlowWarning = true;
    graph->setTempTitle();
}

void MainWindow::hideBusyTitle()
{
    if (!isSlowWarning)
        return;
    isSlowWarning = false;
    graph->restoreTitle();
}

// In a flood of samples the thread would not come back to its event loop. The user's own events wait until it
// does: a dialog opened from here would hold up the stream that it was opened in.
void MainWindow::letOthersIn()
{
    if (sincePump.isValid() && sincePump.elapsed() < msBetweenPumps)
        return;
    Waits::pumpPending(Waits::UserEvents::Later);
    sincePump.start();
}

void MainWindow::onlineUpdateSafe()
{
    for (int i = 0; i < mTembrin->nMaxTembrins(); ++i) {
        if (std::exchange(isViewNew[i], false))
            markViews(i);
    }
    if (!isOnlyStaticClassMode)
        markViews(-1);
}

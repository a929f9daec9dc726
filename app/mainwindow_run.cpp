#include "app/mainwindow.h"

#include "app/refreshclock.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/userprompt.h"
#include "common/waits.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

#include <QAction>
#include <QComboBox>
#include <QDateTime>
#include <QStatusBar>

namespace {

constexpr int msBetweenStarts = 25;
constexpr int msOfLatePackets = 1000;
constexpr int msBetweenPumps = 20;
constexpr int biggestGap = 3; // sample numbers; more is another run

struct StopReason
{
    int reason;
    const char* title;
    const char* text;
};

constexpr StopReason stopReasons[] = {
    {TERMINATE_BATTERY, QT_TRANSLATE_NOOP("MainWindow", "Low battery power"),
     QT_TRANSLATE_NOOP("MainWindow", "Can't run requested experiment.\nPlease charge the Tembrin battery.")},
    {TERMINATE_MEMORY, QT_TRANSLATE_NOOP("MainWindow", "Not enough memory"),
     QT_TRANSLATE_NOOP("MainWindow",
                       "Not enough memory for the requested experiment.\nPlease clear Tembrin memory.")},
    {TERMINATE_MAXEXP, QT_TRANSLATE_NOOP("MainWindow", "Not enough memory"),
     QT_TRANSLATE_NOOP("MainWindow",
                       "Not enough memory for the requested experiment.\nPlease clear Tembrin memory.")},
    {TERMINATE_NOSENS, QT_TRANSLATE_NOOP("MainWindow", "No selected sensors"),
     QT_TRANSLATE_NOOP("MainWindow",
                       "Can't run requested experiment.\nPlease select at least one sensor.\n")},
};

} // namespace

void MainWindow::updateRunStopButton(bool showRun)
{
    if (isPanel)
        return;
    runAct->setVisible(showRun);
    stopAct->setVisible(!showRun);
}

// A run may also be started on a logger's own keys.
void MainWindow::handleLoggerMode()
{
    bool allIdle = true;
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i) {
        const TembrinData* state = mTembrin->tembrinDataAt(i);
        if (mTembrin->isTembrinConnect(i) && (state->isLoggerRecognized() || state->isVorta()))
            allIdle = allIdle && state->isIdle();
    }
    updateRunStopButton(allIdle);
}

// --- Start ---

void MainWindow::doRun()
{
    updateRunStopButton(false);
    handleOnlyStaticClassMode(false);
    // Before the first start and not after the last: a quick logger has sent samples by then.
    mTembrin->resetLastOnline();
    isFastRunEnded = false;
    nextToStart = 0;
    startNextLogger();
}

void MainWindow::startNextLogger()
{
    while (nextToStart < mTembrin->nMaxTembrins() && !mTembrin->isTembrinConnect(nextToStart))
        ++nextToStart;
    if (nextToStart >= mTembrin->nMaxTembrins()) {
        downloadWhenAllStopped();
        return;
    }
    mTembrin->sendCommand(nextToStart, CMD_START_LOGGING);
    mTembrin->setInRun(nextToStart, true);
    ++nextToStart;
    startTimer.start(msBetweenStarts);
}

// --- Samples ---

double MainWindow::sampleTime(int index) const
{
    return mTembrin->tembrinDataAt(index)->samplePeriod();
}

void MainWindow::onlineReceived(int index, short current, const QVector<QVector<double>>& samplesBlock,
                                int samplesWaiting)
{
    if (mTembrin->isIgnoreOnlineAfterStop(index) && current > 0)
        return;
    if (current < 0) { // the stream is too fast for the program
        showBusyTitle();
        return;
    }
    ++nestCounter;
    if (!isRun) {
        updateRunStopButton(false);
        isRun = true;
    }
    const double dt = sampleTime(index);
    if (startsExperiment(index, current))
        startExperiment(index, dt);
    if (current > 0 && live[index].startsClass) {
        live[index].startsClass = false;
        startClassExperiment(dt);
    }
    mTembrin->setLastOnline(index, current);
    storeSamples(index, current, dt, samplesBlock);

    if (nestCounter > 1) {
        countSkipped(dt);
    } else {
        howManySkipped = 0;
        hideBusyTitle();
        letOthersIn();
        const TembrinData* state = mTembrin->tembrinDataAt(index);
        if (samplesWaiting == 0 && (!state->isVorta() || state->Vorta_drawOnline))
            onlineUpdateSafe();
    }
    --nestCounter;
}

bool MainWindow::startsExperiment(int index, int current) const
{
    const int last = mTembrin->getLastOnline(index);
    if (current == 0 || current - last > biggestGap || current < last)
        return true;
    // The first samples of this run were lost: what stands in the set is not of this run.
    const ExpData* set = mTembrin->dataAt(index);
    return last == 0 && (set->finalData || set->getXSize() == 0);
}

void MainWindow::startExperiment(int index, double dt)
{
    const TembrinData* state = mTembrin->tembrinDataAt(index);
    ExpData* set = mTembrin->dataAt(index);
    data->setXYIndex(-1);
    set->setXYIndex(-1);
    mTembrin->setIgnoreOnlineAfterStop(index, false);
    if (graph->isHidden() && layouts)
        layouts->setCurrentIndex(LAYOUT_MULTI_WINDOWS);
    set->setDataNewEmpty(state->runChannels(), dt, mTembrin->groupName(index));
    set->setCardWidth(state->photoObjW);
    classMembers |= 1U << index;
    mTembrin->plotAt(index)->setMarkers();
    live[index].startsClass = true;
    // The other loggers' graphs follow with their own first samples.
    updateAll(index);
    setSelected(index, 0);
    graph->updateTitle(QDateTime::currentDateTime().toString(QStringLiteral("hh:mm, d-MM-yyyy")));
}

void MainWindow::startClassExperiment(double dt)
{
    handleOnlyStaticClassMode(false); // also for a run that was started on a logger
    ExpData* classSet = mTembrin->dataC();
    classSet->setDataNewEmpty(mTembrin->getSensorsC(), dt);
    graph->setMarkers();
    updateAll(-1);
    setSelected(-1, 0);
}

void MainWindow::storeSamples(int index, int current, double dt, const QVector<QVector<double>>& samplesBlock)
{
    ExpData* set = mTembrin->dataAt(index);
    const double step = dt > 0 ? dt : 1; // by hand: sample numbers
    for (int i = 0; i < samplesBlock.size(); ++i)
        set->addSample(step * (current * samplesBlock.size() + i), samplesBlock[i]);
    live[index].isNew = true;
    if (current > 0 && index < mTembrin->nDefTembrins() && !isOnlyStaticClassMode) {
        mTembrin->dataC()->addSample(index, set);
        isClassNew = true;
    }
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
    if (!myMutex.tryLock())
        return;
    for (int i = 0; i < mTembrin->nMaxTembrins(); ++i) {
        if (live[i].isNew)
            markViews(i);
        live[i].isNew = false;
    }
    if (isClassNew)
        refreshClock->mark(graph);
    isClassNew = false;
    myMutex.unlock();
}

// --- Stop ---

void MainWindow::doStopAll()
{
    startTimer.stop();
    updateRunStopButton(true);
    mTembrin->sendCmdToAll(CMD_STOP_LOGGING);
}

void MainWindow::commandAccepted(int index, commandType cmd)
{
    if (cmd != CMD_STOP_LOGGING)
        return;
    mTembrin->setInRun(index, false);
    mTembrin->dataAt(index)->finalData = true;
    // Packets still under way must not start a data set.
    mTembrin->setIgnoreOnlineAfterStop(index, true);
    QTimer::singleShot(msOfLatePackets, this, [this, index] { stopIgnoreOnline(index); });
    markViews(index);
}

void MainWindow::stopIgnoreOnline(int index)
{
    mTembrin->setIgnoreOnlineAfterStop(index, false);
}

void MainWindow::doStop(int index, bool)
{
    endRun(index);
    const TembrinData* state = mTembrin->tembrinDataAt(index);
    isFastRunEnded = isFastRunEnded || (!state->isVorta() && state->isFastRate());
    downloadWhenAllStopped();
}

void MainWindow::endRun(int index)
{
    mTembrin->setInRun(index, false);
    hideBusyTitle();
    updateRunStopButton(true);
    isRun = false;
    mTembrin->dataAt(index)->finalData = true;
    if (!mTembrin->isAnyRunning())
        mTembrin->dataC()->setXRange();
    refreshClock->mark(graph);
    markViews(index);
    if (mTembrin->tembrinDataAt(0)->isVorta() && !mTembrin->tembrinDataAt(0)->Vorta_drawOnline)
        updateAll();
}

void MainWindow::doStop(int index, int reason)
{
    endRun(index);
    downloadWhenAllStopped(); // what the others measured
    qCInfo(appLog, "logger %d: no run, reason %d", index + 1, reason);
    for (const StopReason& row : stopReasons) {
        if (row.reason == reason)
            prompt->warning(this, tr(row.title), tr(row.text));
    }
}

void MainWindow::showTemperatureChangeWarning(int index)
{
    qCInfo(appLog, "logger %d: its temperature unit is not the program's", index + 1);
    prompt->information(this, tr("Change of temperature units"),
                        tr("Temperature units has been changed.\n"
                           "Please restart Kormelin for the change to take effect."));
}

// --- One command to all ---

void MainWindow::sendingCommandToAllLoggers(commandType cmd)
{
    QString doing = tr("busy");
    if (cmd == CMD_TEMBRIN_LOGGING_SETUP)
        doing = tr("being setup");
    else if (cmd == CMD_STOP_LOGGING)
        doing = tr("being stopped");
    else if (cmd == CMD_DOWNLOAD_STORED_DATA)
        doing = tr("downloading");
    else if (cmd == CMD_CONFIGURE_TEMBRIN)
        doing = tr("being cofigurated");
    statusBar()->showMessage(tr("Please wait while all Tembrin are %1").arg(doing));
    updateIconsConnection(false);
    passedOver.clear();
}

void MainWindow::sendingCommandToAllLoggers()
{
    statusBar()->showMessage(passedOverText());
    updateIconsConnection(true);
}

#include "classroom/jobrunner.h"

#include "classroom/classlog.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

#include <utility>

using Task = ClassJob::Task;
using Progress = ClassJob::Progress;
using Reason = ClassJob::Reason;

namespace {

constexpr int mostTries = 3;

struct RefusalRow
{
    int code;
    Reason reason;
};

constexpr RefusalRow refusals[] = {
    {TERMINATE_BATTERY, Reason::Battery},
    {TERMINATE_MEMORY, Reason::Memory},
    {TERMINATE_MAXEXP, Reason::Memory},
    {TERMINATE_NOSENS, Reason::NoSensor},
};

} // namespace

JobRunner::JobRunner(const ClassLoggers& loggers, QObject* parent)
    : QObject(parent)
    , loggers(loggers)
{
    turnTimer.setSingleShot(true);
    turnTimer.setTimerType(Qt::PreciseTimer);
    connect(&turnTimer, &QTimer::timeout, this, &JobRunner::nextTurn);
    for (int slot = 0; slot < mostLoggers; ++slot)
        connectLogger(slot);
}

void JobRunner::connectLogger(int slot)
{
    for (QTimer* timer : {&answerTimers[slot], &repeatTimers[slot]})
        timer->setSingleShot(true);
    connect(&answerTimers[slot], &QTimer::timeout, this, [this, slot] { answerMissing(slot); });
    connect(&repeatTimers[slot], &QTimer::timeout, this, [this, slot] { repeat(slot); });
    connect(loggers[slot], &TembrinProtocol::loggerDisconnected, this, &JobRunner::takeLoss);
    const TembrinData* state = stateOf(slot);
    connect(state, &TembrinData::commandAccepted, this, &JobRunner::takeAnswer);
    connect(state, &TembrinData::downloadComplete, this, &JobRunner::takeDownload);
    connect(state, &TembrinData::statusReceived, this, [this, slot] { takeStatus(slot); });
    connect(state, qOverload<int, int>(&TembrinData::runTerminated), this, &JobRunner::takeRefusal);
    connect(state, qOverload<int, bool>(&TembrinData::runTerminated), this, &JobRunner::takeEndOfRun);
    connect(state, qOverload<int, short, QVector<QVector<double>>, int>(&TembrinData::onlineReceived), this,
            [this](int index) {
                isSilent[index] = false;
                takeRunning(index);
            });
}

TembrinData* JobRunner::stateOf(int slot) const
{
    return loggers[slot]->tembrinData;
}

ClassJob::Step* JobRunner::openStep(int slot)
{
    if (!isOn)
        return nullptr;
    for (ClassJob::Step& step : present.steps) {
        if (step.slot == slot && step.progress == Progress::Working)
            return &step;
    }
    return nullptr;
}

commandType JobRunner::command() const
{
    switch (present.task) {
    case Task::Start:
        return CMD_START_LOGGING;
    case Task::Stop:
        return CMD_STOP_LOGGING;
    case Task::Setup:
        return CMD_TEMBRIN_LOGGING_SETUP;
    case Task::Configure:
        return CMD_CONFIGURE_TEMBRIN;
    case Task::Download:
        return CMD_DOWNLOAD_STORED_DATA;
    }
    return CMD_GET_TEMBRIN_STATUS;
}

void JobRunner::begin(const ClassJob& job)
{
    present = job;
    isOn = true;
    ++number;
    nextTurn();
}

void JobRunner::nextTurn()
{
    if (!isOn)
        return;
    turnTimer.stop();
    // Who hears of an outcome may cancel this job, and begin another one.
    const int own = number;
    for (int i = 0; isOn && own == number && i < present.steps.size(); ++i) {
        ClassJob::Step& step = present.steps[i];
        if (step.progress != Progress::Waiting)
            continue;
        const Reason reason = obstacle(step);
        if (reason == Reason::None) {
            turn(step);
            return;
        }
        end(step, Progress::PassedOver, reason);
    }
    endIfDone();
}

/// Why a logger can't be told now.
Reason JobRunner::obstacle(const ClassJob::Step& step) const
{
    const TembrinData* state = stateOf(step.slot);
    if (!loggers[step.slot]->isConnect)
        return step.reason == Reason::None ? Reason::NotConnected : step.reason;
    if (!state->isLoggerRecognized() && !state->isVorta())
        return Reason::Silent;
    const bool isForIdle = present.task != Task::Start && present.task != Task::Stop;
    return isForIdle && !state->isIdle() ? Reason::Running : Reason::None;
}

void JobRunner::turn(ClassJob::Step& step)
{
    const int slot = step.slot;
    step.progress = Progress::Working;
    step.tries = 0;
    step.storedBefore = stateOf(slot)->numExperiments();
    otherAnswers[slot].reset();
    isAsked[slot] = false;
    isDownloadBad = false;
    Q_EMIT working(slot, true);
    if (ClassJob::Step* open = openStep(slot))
        send(*open);
    if (!isOn)
        return;
    if (present.task == Task::Start)
        turnTimer.start(pacing.startPause);
    else if (!isAlone())
        turnTimer.start(qMin(pacing.patience, pacing.repeat));
}

void JobRunner::send(ClassJob::Step& step)
{
    TembrinProtocol* logger = loggers[step.slot];
    ++step.tries;
    repeatTimers[step.slot].stop();
    // One that was silent all the time is asked, but nobody waits for it again.
    const bool isBrief = isSilent[step.slot] || present.task == Task::Start;
    answerTimers[step.slot].start(isBrief ? qMin(2 * pacing.patience, pacing.repeat) : pacing.repeat);
    if (present.task == Task::Download) {
        isDownloadBad = false;
        const short newest = short(logger->tembrinData->numExperiments());
        logger->sendCommand(command(), step.experiment > 0 ? short(step.experiment) : newest);
        return;
    }
    logger->sendCommand(command());
}

void JobRunner::repeatNow()
{
    const int own = number;
    for (int i = 0; isOn && own == number && i < present.steps.size(); ++i) {
        if (present.steps[i].progress == Progress::Working) {
            present.steps[i].tries = 0;
            send(present.steps[i]);
        }
    }
}

void JobRunner::answerMissing(int slot)
{
    ClassJob::Step* step = openStep(slot);
    if (!step)
        return;
    // A download that has begun ends by itself; the answer to a request may be lost.
    if (isAlone() && stateOf(slot)->isDownloading()) {
        answerTimers[slot].start(pacing.repeat);
        return;
    }
    tryAgain(*step, Reason::Silent);
}

void JobRunner::tryAgain(ClassJob::Step& step, Reason reason)
{
    const int slot = step.slot;
    answerTimers[slot].stop();
    qCInfo(classLog, "logger %d did not confirm command %d, try %d", slot, int(command()), step.tries);
    if (step.tries >= mostTries || isSilent[slot]) {
        isSilent[slot] = reason == Reason::Silent;
        passOver(step, reason);
        return;
    }
    repeatTimers[slot].start(pacing.pause);
}

void JobRunner::passOver(ClassJob::Step& step, Reason reason)
{
    end(step, Progress::PassedOver, reason);
    if (isOn && (isAlone() || !turnTimer.isActive()))
        turnTimer.start(pacing.pause);
}

void JobRunner::repeat(int slot)
{
    ClassJob::Step* step = openStep(slot);
    if (!step)
        return;
    const Reason reason = obstacle(*step); // its own key may have been pressed meanwhile
    if (reason != Reason::None)
        passOver(*step, reason);
    else if (present.task == Task::Start)
        askWhetherItRuns(*step);
    else
        send(*step);
}

/// A start that was heard must not be given twice: only when the logger says that it is idle it is told
/// again.
void JobRunner::askWhetherItRuns(ClassJob::Step& step)
{
    ++step.tries;
    isAsked[step.slot] = true;
    answerTimers[step.slot].start(qMin(2 * pacing.patience, pacing.repeat));
    if (stateOf(step.slot)->isVorta())
        loggers[step.slot]->sendVortaCommand(CMD_VORTA_GET_STATUS);
    else
        loggers[step.slot]->sendCommand(CMD_GET_TEMBRIN_STATUS);
}

void JobRunner::takeAnswer(int slot, commandType cmd)
{
    ClassJob::Step* step = openStep(slot);
    if (!step || cmd != command())
        return;
    if (isAlone() && isDownloadBad) {
        tryAgain(*step, Reason::Failed);
        return;
    }
    TembrinProtocol* logger = loggers[slot];
    const bool isWanted = (present.task != Task::Setup || logger->isSetupConfirmed()) &&
                          (present.task != Task::Configure || logger->isConfigurationConfirmed());
    if (!isWanted && !isOwnWay(slot))
        return;
    if (!isWanted)
        logger->settleForReported();
    end(*step, Progress::Confirmed, Reason::None);
    if (isOn && present.task != Task::Start)
        turnTimer.start(pacing.pause);
}

/// Another answer than the wanted one is that to an earlier choice; a logger that takes the choice in its own
/// way says the same twice.
bool JobRunner::isOwnWay(int slot)
{
    const LoggerSettings& now = stateOf(slot)->reported();
    const std::optional<LoggerSettings> before = std::exchange(otherAnswers[slot], now);
    return before && before->isSameSetup(now) && before->isSameConfiguration(now);
}

void JobRunner::takeStatus(int slot)
{
    isSilent[slot] = false;
    if (!stateOf(slot)->isIdle()) {
        takeRunning(slot);
        return;
    }
    ClassJob::Step* step = openStep(slot);
    if (step && present.task == Task::Start && isAsked[slot]) {
        isAsked[slot] = false;
        loggers[slot]->sendCommand(command());
    }
}

/// A logger that runs has confirmed its start.
void JobRunner::takeRunning(int slot)
{
    ClassJob::Step* step = openStep(slot);
    if (step && present.task == Task::Start)
        end(*step, Progress::Confirmed, Reason::None);
}

/// A run that has ended was started; but the late answer to a stop before it says the same, and then there is
/// nothing new in the memory.
void JobRunner::takeEndOfRun(int slot)
{
    const ClassJob::Step* step = openStep(slot);
    const bool isVorta = stateOf(slot)->isVorta();
    if (step && (isVorta || stateOf(slot)->numExperiments() > step->storedBefore))
        takeRunning(slot);
    if (isVorta) // the end of its run is all that it says to a stop
        takeAnswer(slot, CMD_STOP_LOGGING);
}

void JobRunner::takeRefusal(int slot, int code)
{
    ClassJob::Step* step = openStep(slot);
    if (!step || present.task != Task::Start)
        return;
    for (const RefusalRow& row : refusals) {
        if (row.code == code)
            end(*step, Progress::PassedOver, row.reason);
    }
}

void JobRunner::takeDownload(int slot, bool isGood)
{
    if (openStep(slot))
        isDownloadBad = !isGood;
}

void JobRunner::takeLoss(int slot)
{
    if (!isOn)
        return;
    isSilent[slot] = false;
    if (ClassJob::Step* step = openStep(slot)) {
        end(*step, Progress::PassedOver, Reason::Lost);
        if (isOn && present.task != Task::Start)
            turnTimer.start(pacing.pause);
        return;
    }
    // It may be back before its turn comes.
    for (ClassJob::Step& step : present.steps) {
        if (step.slot == slot && step.progress == Progress::Waiting)
            step.reason = Reason::Lost;
    }
}

void JobRunner::cancel()
{
    if (!isOn)
        return;
    turnTimer.stop();
    const int own = number;
    for (int i = 0; own == number && i < present.steps.size(); ++i) {
        const Progress progress = present.steps[i].progress;
        if (progress == Progress::Working && isAlone())
            stateOf(present.steps[i].slot)->cancelDownload();
        if (progress == Progress::Working || progress == Progress::Waiting)
            end(present.steps[i], Progress::PassedOver, Reason::Cancelled);
    }
}

void JobRunner::end(ClassJob::Step& step, Progress progress, Reason reason)
{
    const bool wasWorking = step.progress == Progress::Working;
    step.progress = progress;
    step.reason = reason;
    answerTimers[step.slot].stop();
    repeatTimers[step.slot].stop();
    const ClassJob::Step outcome = step;
    if (progress == Progress::PassedOver)
        qCInfo(classLog, "logger %d is passed over in command %d, reason %d", outcome.slot, int(command()),
               int(reason));
    if (wasWorking)
        Q_EMIT working(outcome.slot, false);
    Q_EMIT stepEnded(present.task, outcome);
    endIfDone();
}

void JobRunner::endIfDone()
{
    if (!isOn || present.isOpen())
        return;
    isOn = false;
    turnTimer.stop();
    Q_EMIT ended(present);
}

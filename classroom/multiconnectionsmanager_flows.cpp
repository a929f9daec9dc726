#include "classroom/multiconnectionsmanager.h"

#include "classroom/classrun.h"
#include "classroom/commandqueue.h"
#include "classroom/loggerconnector.h"
#include "classroom/replay.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

using Task = ClassJob::Task;

namespace {

struct CommandRow
{
    commandType command;
    Task task;
};

constexpr CommandRow commandRows[] = {
    {CMD_START_LOGGING, Task::Start},           {CMD_STOP_LOGGING, Task::Stop},
    {CMD_TEMBRIN_LOGGING_SETUP, Task::Setup},   {CMD_CONFIGURE_TEMBRIN, Task::Configure},
    {CMD_DOWNLOAD_STORED_DATA, Task::Download},
};

const CommandRow* rowOf(commandType command)
{
    for (const CommandRow& row : commandRows) {
        if (row.command == command)
            return &row;
    }
    return nullptr;
}

commandType commandOf(Task task)
{
    for (const CommandRow& row : commandRows) {
        if (row.task == task)
            return row.command;
    }
    return CMD_GET_TEMBRIN_STATUS;
}

} // namespace

void multiConnectionsManager::createFlows()
{
    ClassLoggers sessions;
    for (int i = 0; i < nMaxTembrins(); ++i)
        sessions[size_t(i)] = loggers[i].protocol;
    loggerConnector = new LoggerConnector(sessions, this);
    commandQueue = new CommandQueue(sessions, this);
    classRun = new ClassRun(this);
    played = new Replay(this);
    connect(commandQueue, &CommandQueue::working, this, &multiConnectionsManager::setBTComm);
    connect(commandQueue, &CommandQueue::begun, this,
            [this](Task task) { Q_EMIT startSendCommandToAll(commandOf(task)); });
    connect(commandQueue, &CommandQueue::stepEnded, this, [this](Task task, const ClassJob::Step& step) {
        if (step.progress != ClassJob::Progress::PassedOver)
            return;
        const bool isOfRun = task == Task::Start || task == Task::Stop;
        if (isOfRun && step.reason == ClassJob::Reason::Silent)
            classRun->giveUp(step.slot);
        Q_EMIT passedOver(step.slot);
    });
    connect(commandQueue, &CommandQueue::ended, this, [this] { Q_EMIT doneSendCommandToAll(); });
    // A setup that could not be given while the logger was away, or ran, is given when it can be.
    const auto catchUpAll = [this] {
        for (int i = 0; i < nDef; ++i)
            catchUp(i);
    };
    connect(classRun, &ClassRun::ended, this, catchUpAll, Qt::QueuedConnection);
    // One that is lost in a run is looked for as long as the run lasts.
    const auto seekLost = [this] {
        for (int i = 0; i < nMaxTembrins(); ++i)
            loggerConnector->seek(i, classRun->isSought(i));
    };
    connect(commandQueue, &CommandQueue::begun, this, [this, seekLost](Task task) {
        if (task == Task::Stop)
            classRun->noteStop();
        seekLost();
    });
    connect(classRun, &ClassRun::phaseChanged, this, seekLost);
    connect(classRun, &ClassRun::classBegun, this, seekLost);
    connect(
        classRun, &ClassRun::stopOwed, this,
        [this](int i) { commandQueue->add(Task::Stop, quint8(1u << i)); }, Qt::QueuedConnection);
    connect(classRun, &ClassRun::heardAgain, this, &multiConnectionsManager::catchUp, Qt::QueuedConnection);
    for (const Logger& logger : loggers) {
        // Its first good status, which may come later than the first that was damaged.
        const int i = logger.protocol->index;
        connect(logger.protocol, &TembrinProtocol::loggerDisconnected, this, seekLost);
        connect(
            logger.protocol->tembrinData, &TembrinData::loggerTypeChanged, this, [this, i] { catchUp(i); },
            Qt::QueuedConnection);
    }
}

void multiConnectionsManager::catchUp(int i)
{
    if (i >= nDef || !isRecognized(i) || isRunning(i) || classRun->isGivenUp(i) ||
        tembrinDataAt(i)->isVorta())
        return;
    if (!tembrinAt(i)->isSetupConfirmed())
        commandQueue->add(Task::Setup, quint8(1u << i));
    if (!tembrinAt(i)->isConfigurationConfirmed())
        commandQueue->add(Task::Configure, quint8(1u << i));
}

bool multiConnectionsManager::isRecognized(int i) const
{
    return isTembrinConnect(i) && (tembrinDataAt(i)->isLoggerRecognized() || tembrinDataAt(i)->isVorta());
}

bool multiConnectionsManager::isRunning(int i) const
{
    return classRun->isRunning(i);
}

bool multiConnectionsManager::isAnyRunning() const
{
    return classRun->isAnyRunning();
}

bool multiConnectionsManager::isMeasuring() const
{
    return isAnyRunning() || classRun->isSimulation();
}

bool multiConnectionsManager::startRun()
{
    quint8 which = 0;
    for (int i = 0; i < nDef; ++i) {
        if (isRecognized(i))
            which |= quint8(1u << i);
    }
    if (which == 0)
        return false;
    classRun->order(which);
    // Also to those that do not answer: their absence is told.
    return commandQueue->add(Task::Start);
}

void multiConnectionsManager::sendCmdToAll(commandType cmd)
{
    if (cmd == CMD_START_LOGGING)
        startRun();
    else if (const CommandRow* row = rowOf(cmd);
             row && !commandQueue->add(row->task) && row->task == Task::Stop)
        classRun->noteStop(); // everybody is away
}

void multiConnectionsManager::downloadFrom(int index, int number)
{
    commandQueue->addDownload(index, number);
}

void multiConnectionsManager::cancelDownload()
{
    commandQueue->cancel(Task::Download);
}

bool multiConnectionsManager::isSending(commandType cmd) const
{
    const CommandRow* row = rowOf(cmd);
    return row && commandQueue->has(row->task);
}

void multiConnectionsManager::setPacing(int repeatMs, int pauseMs)
{
    JobPacing pacing;
    pacing.repeat = repeatMs;
    pacing.pause = pauseMs;
    commandQueue->setPacing(pacing);
}

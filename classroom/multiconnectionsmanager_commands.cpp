#include "classroom/multiconnectionsmanager.h"

#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

Q_LOGGING_CATEGORY(classLog, "pellandra.class", QtInfoMsg)

namespace {
constexpr int mostBadDownloads = 3;

// The others set up something that a Vorta logger has not: it is told its rate with the start, and has no
// memory.
bool isForVorta(commandType command)
{
    return command == CMD_STOP_LOGGING;
}
} // namespace

int multiConnectionsManager::nextConnected(int from) const
{
    int i = from;
    while (i < nDef && !isTembrinConnect(i))
        ++i;
    return i;
}

bool multiConnectionsManager::isServed(int i) const
{
    if (!isTembrinConnect(i))
        return false;
    const TembrinData* state = tembrinDataAt(i);
    if (state->isVorta())
        return isForVorta(command);
    return command != CMD_DOWNLOAD_STORED_DATA || state->numExperiments > 0;
}

int multiConnectionsManager::nextServed(int from) const
{
    const int end = qMin(nDef, commandEnd);
    int i = from;
    while (i < end && !isServed(i))
        ++i;
    return i < end ? i : idle;
}

void multiConnectionsManager::setPacing(int repeatMs, int pause)
{
    repeatTimer.setInterval(repeatMs);
    pauseMs = pause;
}

void multiConnectionsManager::sendCmdToAll(commandType cmd)
{
    experiment = newest;
    begin(cmd, 0, nMaxTembrins());
}

void multiConnectionsManager::downloadFrom(int index, int number)
{
    experiment = number;
    begin(CMD_DOWNLOAD_STORED_DATA, index, index + 1);
}

void multiConnectionsManager::cancelDownload()
{
    if (!isSending(CMD_DOWNLOAD_STORED_DATA))
        return;
    tembrinDataAt(commandIndex)->cancelDownload();
    commandEnd = 0;
    passOn();
}

void multiConnectionsManager::begin(commandType cmd, int from, int end)
{
    repeatTimer.stop();
    pauseTimer.stop();
    const int before = commandIndex;
    command = cmd;
    commandEnd = end;
    commandIndex = nextServed(from);
    badDownloads = 0;
    if (before != idle)
        Q_EMIT setBTComm(before, false);
    if (commandIndex == idle) {
        qCInfo(classLog, "command %d to all: there is no logger for it", int(cmd));
        if (before != idle)
            Q_EMIT doneSendCommandToAll();
        return;
    }
    sendCommandNow();
    Q_EMIT setBTComm(commandIndex, true);
    Q_EMIT startSendCommandToAll(cmd);
}

void multiConnectionsManager::sendCommandNow()
{
    if (commandIndex == idle)
        return;
    TembrinProtocol* logger = tembrinAt(commandIndex);
    switch (command) {
    case CMD_DOWNLOAD_STORED_DATA:
        // The newest experiment is the last one.
        isDownloadBad = false;
        logger->sendCommand(command,
                            experiment == newest ? logger->tembrinData->numExperiments : short(experiment));
        repeatTimer.start();
        break;
    case CMD_TEMBRIN_LOGGING_SETUP:
    case CMD_STOP_LOGGING:
    case CMD_CONFIGURE_TEMBRIN:
        logger->sendCommand(command);
        repeatTimer.start();
        break;
    default: // every other command is for one logger at a time
        break;
    }
}

void multiConnectionsManager::commandAccepted(int index, commandType cmd)
{
    if (cmd != command || index != commandIndex)
        return;
    if (cmd == CMD_DOWNLOAD_STORED_DATA && isDownloadBad)
        repeatDownload();
    else
        passOn();
}

/// The end of its run is all that a Vorta logger says to a stop.
void multiConnectionsManager::takeEndOfRun(int index)
{
    if (tembrinDataAt(index)->isVorta())
        commandAccepted(index, CMD_STOP_LOGGING);
}

void multiConnectionsManager::takeDownload(int index, bool success)
{
    if (index == commandIndex)
        isDownloadBad = !success;
}

void multiConnectionsManager::repeatDownload()
{
    repeatTimer.stop();
    ++badDownloads;
    qCInfo(classLog, "logger %d: download %d failed", commandIndex + 1, badDownloads);
    if (badDownloads < mostBadDownloads)
        pauseTimer.start(pauseMs);
    else
        passOver();
}

void multiConnectionsManager::passOn()
{
    repeatTimer.stop();
    pauseTimer.stop();
    const int served = commandIndex;
    const int next = nextServed(served + 1);
    commandIndex = next;
    badDownloads = 0;
    Q_EMIT setBTComm(served, false);
    if (commandIndex == idle) {
        Q_EMIT doneSendCommandToAll();
        return;
    }
    pauseTimer.start(pauseMs);
    Q_EMIT setBTComm(next, true);
}

void multiConnectionsManager::handleLoss(int index)
{
    if (index != commandIndex)
        return;
    passOver();
}

void multiConnectionsManager::passOver()
{
    qCInfo(classLog, "logger %d is passed over in command %d to all", commandIndex + 1, int(command));
    Q_EMIT passedOver(commandIndex);
    passOn();
}

void multiConnectionsManager::cmdTimeoutTriggered()
{
    if (command == CMD_DOWNLOAD_STORED_DATA) {
        // A download that has begun ends by itself; the answer to a request may be lost.
        if (tembrinDataAt(commandIndex)->isDownloading())
            repeatTimer.start();
        else
            repeatDownload();
        return;
    }
    qCInfo(classLog, "logger %d did not confirm command %d; it is sent again", commandIndex + 1,
           int(command));
    pauseTimer.start(pauseMs);
}

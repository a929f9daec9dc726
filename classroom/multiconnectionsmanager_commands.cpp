#include "classroom/multiconnectionsmanager.h"

#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

Q_LOGGING_CATEGORY(classLog, "pellandra.class", QtInfoMsg)

int multiConnectionsManager::nextConnected(int from) const
{
    int i = from;
    while (i < nDef && !isTembrinConnect(i))
        ++i;
    return i;
}

void multiConnectionsManager::setPacing(int repeatMs, int pause)
{
    repeatTimer.setInterval(repeatMs);
    pauseMs = pause;
}

void multiConnectionsManager::sendCmdToAll(commandType cmd)
{
    repeatTimer.stop();
    pauseTimer.stop();
    if (commandIndex != idle)
        Q_EMIT setBTComm(commandIndex, false);
    command = cmd;
    const int first = nextConnected(0);
    if (first >= nDef) {
        commandIndex = idle;
        qCInfo(classLog, "command %d to all: no logger is connected", int(cmd));
        return;
    }
    commandIndex = first;
    sendCommandNow();
    Q_EMIT setBTComm(first, true);
    Q_EMIT startSendCommandToAll(cmd);
}

void multiConnectionsManager::sendCommandNow()
{
    if (commandIndex == idle)
        return;
    TembrinProtocol* logger = tembrinAt(commandIndex);
    switch (command) {
    case CMD_DOWNLOAD_STORED_DATA:
        // The newest experiment is the last one; the logger tells the end of the download by itself.
        logger->sendCommand(command, logger->tembrinData->numExperiments);
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
    if (cmd == command && index == commandIndex)
        passOn();
}

void multiConnectionsManager::passOn()
{
    repeatTimer.stop();
    pauseTimer.stop();
    const int served = commandIndex;
    const int next = nextConnected(served + 1);
    commandIndex = next < nDef ? next : idle;
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
    qCInfo(classLog, "logger %d was lost during command %d to all and is passed over", index + 1,
           int(command));
    passOn();
}

void multiConnectionsManager::cmdTimeoutTriggered()
{
    qCInfo(classLog, "logger %d did not confirm command %d; it is sent again", commandIndex + 1,
           int(command));
    pauseTimer.start(pauseMs);
}

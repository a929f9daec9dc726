#include "classroom/loggerconnector.h"

#include "classroom/classlog.h"
#include "link/connectthread.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

#include <climits>
#include <utility>

namespace {
constexpr int msBetweenAttempts = 100;
constexpr int furtherAttempts = 10;
constexpr int msBetweenLooks = 1000; // for one that was not back within a series
constexpr int looks = 60;
constexpr int msBetweenLateLooks = 5000;
constexpr int msForRadio = 300;
constexpr int msForAnswer = 5000; // both kinds of question have gone out several times by then

/// Trying again within a second changes nothing.
bool isHopeless(PortFailure failure)
{
    return failure == PortFailure::NoRight || failure == PortFailure::AdapterFull ||
           failure == PortFailure::NotPaired || failure == PortFailure::Refused ||
           failure == PortFailure::NoAdapter || failure == PortFailure::AdapterOff ||
           failure == PortFailure::NoService;
}

/// Whether what hindered a logger was of the radio, and has gone: somebody paired a device, switched the
/// radio on, or started its service.
bool isCleared(const TembrinProtocol& logger, const BluetoothState& radio)
{
    switch (logger.failure) {
    case PortFailure::NotPaired:
        return radio.adaptersOf.contains(QString(logger.portName).remove(QLatin1Char(':')));
    case PortFailure::NoAdapter:
    case PortFailure::AdapterOff:
    case PortFailure::NoService:
        return radio.hindrance == PortFailure::None;
    case PortFailure::None:
    case PortFailure::NoPort:
    case PortFailure::NoRight:
    case PortFailure::Held:
    case PortFailure::OutOfReach:
    case PortFailure::Refused:
    case PortFailure::AdapterFull:
    case PortFailure::Cancelled:
    case PortFailure::Lost:
    case PortFailure::Other:
        return false;
    }
    return false;
}

} // namespace

LoggerConnector::LoggerConnector(const ClassLoggers& loggers, QObject* parent)
    : QObject(parent)
    , loggers(loggers)
{
    seriesTimer.setSingleShot(true);
    seriesTimer.setTimerType(Qt::PreciseTimer);
    connect(&seriesTimer, &QTimer::timeout, this, &LoggerConnector::connectNext);
    radioTimer.setSingleShot(true);
    radioTimer.setInterval(msForRadio);
    connect(&radioTimer, &QTimer::timeout, this, &LoggerConnector::takeRadio);
    for (int slot = 0; slot < mostLoggers; ++slot) {
        Slot& place = places[slot];
        for (QTimer* timer : {&place.retry, &place.answer})
            timer->setSingleShot(true);
        connect(&place.retry, &QTimer::timeout, this, [this, slot] { attempt(slot); });
        connect(&place.answer, &QTimer::timeout, this, [this, slot] {
            places[slot].isSilent = true;
            qCInfo(classLog, "logger %d is connected and does not answer", slot);
            Q_EMIT silent(slot);
        });
        const TembrinProtocol* logger = loggers[slot];
        connect(logger, &TembrinProtocol::openDone, this, &LoggerConnector::takeResult);
        connect(logger, &TembrinProtocol::loggerDisconnected, this, &LoggerConnector::takeLoss);
        connect(logger->tembrinData, &TembrinData::communicationEstablished, this,
                &LoggerConnector::takeAnswer);
    }
}

LoggerConnector::~LoggerConnector()
{
    waitForAttempts(ULONG_MAX);
}

bool LoggerConnector::waitForAttempts(unsigned long ms)
{
    for (int slot = 0; slot < mostLoggers; ++slot)
        cancel(slot);
    bool isDone = true;
    for (ConnectThread* thread : findChildren<ConnectThread*>())
        isDone = thread->wait(ms) && isDone;
    return isDone;
}

void LoggerConnector::setInUse(int count)
{
    inUse = count;
    for (int slot = count; slot < mostLoggers; ++slot) {
        seek(slot, false);
        cancel(slot);
    }
}

LoggerConnector::State LoggerConnector::state(int slot) const
{
    const Slot& place = places[slot];
    const TembrinProtocol* logger = loggers[slot];
    if (place.isOpening)
        return State::Opening;
    if (logger->isConnect) {
        if (logger->tembrinData->isLoggerRecognized() || logger->tembrinData->isVorta())
            return State::Known;
        return place.isSilent ? State::Silent : State::Open;
    }
    return place.retry.isActive() ? State::Waiting : State::Idle;
}

bool LoggerConnector::isAnyOpening() const
{
    for (const Slot& place : places) {
        if (place.isOpening)
            return true;
    }
    return false;
}

void LoggerConnector::connectAll()
{
    nextInSeries = 0;
    connectNext();
}

void LoggerConnector::connectNext()
{
    seriesTimer.stop();
    if (nextInSeries >= inUse)
        return;
    const int slot = nextInSeries++;
    seriesTimer.start(msBetweenAttempts);
    if (!loggers[slot]->isConnect)
        connectLogger(slot);
}

void LoggerConnector::connectLogger(int slot)
{
    Slot& place = places[slot];
    place.tries = 0;
    place.isWanted = true;
    place.isNext = place.isOpening && place.isCancelled;
    attempt(slot);
}

void LoggerConnector::cancel(int slot)
{
    Slot& place = places[slot];
    place.isWanted = false;
    place.isNext = false;
    if (place.isOpening && !place.isCancelled) {
        place.isCancelled = true;
        loggers[slot]->cancelOpening();
    } else if (place.retry.isActive()) {
        place.retry.stop();
        place.tries = 0;
        Q_EMIT failed(slot, true);
    }
}

qint64 LoggerConnector::msOpening(int slot) const
{
    return places[slot].isOpening ? places[slot].begun.elapsed() : -1;
}

void LoggerConnector::takeRadio()
{
    const BluetoothState radio = loggers[0]->bluetooth();
    for (int slot = 0; slot < inUse; ++slot) {
        if (places[slot].isWanted && state(slot) == State::Idle && isCleared(*loggers[slot], radio))
            connectLogger(slot);
    }
}

void LoggerConnector::attempt(int slot)
{
    Slot& place = places[slot];
    // A retry that was due must not tear down what another attempt has opened.
    place.retry.stop();
    if (slot >= inUse || place.isOpening)
        return;
    if (!std::exchange(isWatching, true))
        loggers[0]->watchPorts(this, [this] { radioTimer.start(); });
    loggers[slot]->takeStoredName();
    place.isOpening = true;
    place.isCancelled = false;
    place.isSilent = false;
    place.begun.start();
    TembrinProtocol* logger = loggers[slot];
    if (logger->isConnect) {
        logger->isConnect = false;
        logger->release();
    }
    if (!place.isSought)
        Q_EMIT opening(slot);
    (new ConnectThread(logger, this))->start();
}

void LoggerConnector::takeResult(int slot)
{
    Slot& place = places[slot];
    place.isOpening = false;
    if (std::exchange(place.isNext, false)) {
        attempt(slot);
        return;
    }
    if (loggers[slot]->isConnect && slot >= inUse) {
        loggers[slot]->release(); // the class has become smaller meanwhile
        return;
    }
    if (loggers[slot]->isConnect) {
        place.tries = 0;
        seek(slot, false);
        greet(slot);
        return;
    }
    if (place.isSought) {
        place.retry.start(place.tries < furtherAttempts           ? msBetweenAttempts
                          : place.tries < furtherAttempts + looks ? msBetweenLooks
                                                                  : msBetweenLateLooks);
        ++place.tries;
        return;
    }
    const bool isLast = place.tries >= furtherAttempts || slot >= inUse || place.isCancelled ||
                        isHopeless(loggers[slot]->failure);
    if (isLast)
        place.tries = 0;
    else
        ++place.tries;
    if (!isLast)
        place.retry.start(msBetweenAttempts);
    qCInfo(classLog, "logger %d: not connected, port %s", slot, qPrintable(loggers[slot]->portName));
    Q_EMIT failed(slot, isLast);
}

/// Nothing tells beforehand what hangs on the port, so both kinds of logger are asked.
void LoggerConnector::greet(int slot)
{
    TembrinProtocol* logger = loggers[slot];
    // Makes the listener and the talker, so it belongs on this thread and not on the one that opened the
    // port.
    logger->init();
    logger->tembrinData->setVorta(false);
    Q_EMIT opened(slot);
    places[slot].answer.start(msForAnswer);
    logger->sendCommand(CMD_GET_ALL_SENSORS_ID);
    logger->sendVortaCommand(CMD_VORTA_GET_STATUS);
}

/// Its first status: the logger is known from now on.
void LoggerConnector::takeAnswer(int slot)
{
    places[slot].answer.stop();
    places[slot].isSilent = false;
    loggers[slot]->sendCommand(CMD_SET_DATE_AND_TIME);
}

void LoggerConnector::takeLoss(int slot)
{
    places[slot].answer.stop();
    loggers[slot]->tembrinData->setLoggerRecognized(false);
    loggers[slot]->tembrinData->setGotSensorList(false);
}

void LoggerConnector::seek(int slot, bool isOn)
{
    Slot& place = places[slot];
    if (place.isSought == isOn || (isOn && (slot >= inUse || loggers[slot]->isConnect)))
        return;
    place.isSought = isOn;
    place.tries = 0;
    if (!isOn)
        place.retry.stop();
    else if (!place.isOpening)
        place.retry.start(msBetweenAttempts);
    Q_EMIT seeking(slot, isOn);
}

void LoggerConnector::disconnectAll()
{
    seriesTimer.stop();
    for (int slot = 0; slot < mostLoggers; ++slot) {
        seek(slot, false);
        cancel(slot);
        TembrinProtocol* logger = loggers[slot];
        if (!logger->isConnect)
            continue;
        logger->isConnect = false;
        logger->release();
    }
}

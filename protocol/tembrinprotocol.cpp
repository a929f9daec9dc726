#include "protocol/tembrinprotocol.h"

#include "common/settings.h"
#include "link/myporttalker.h"
#include "link/portlistener.h"
#include "link/serialmonitorthread.h" // the monitor is ended here
#include "link/systemports.h"
#include "protocol/packets.h"
#include "protocol/tembrindata.h"

namespace {

constexpr int questionInterval = 500;    // ms; both kinds of logger are asked in turn
constexpr int firstStatusTimeout = 2000; // ms; the answer may have been damaged on the way
constexpr int loaderTimeout = 1000;      // ms
constexpr int longCommandTries = 6;      // the first included
constexpr int longPageSize = 251;        // bytes of data from which a page goes out in the long form

void prepare(QTimer* timer, int ms)
{
    timer->setSingleShot(true);
    timer->setInterval(ms);
}

/// What the logging setup says of a socket: 0 for none and for one that nothing is known of.
short socketCode(int slot, int id)
{
    return slot < 0 || id == 0 ? short(0) : static_cast<short>(Sensor::IDToCode(id));
}

} // namespace

TembrinProtocol::TembrinProtocol(int index, const Units& units, QObject* parent)
    : QObject(parent)
    , index(index)
    , units(units)
    , tembrinData(new TembrinData(index, units, this))
    , loggerKey(Settings::loggerKey(index))
    , groupKey(Settings::groupKey(index))
    , portFactory(systemPortFactory())
    , discovery(systemPortDiscovery())
{
    prepare(&sendIDTimer, questionInterval);
    sendIDTimer.setTimerType(Qt::PreciseTimer); // else it may be late by a part of its interval
    prepare(&statusTimer, firstStatusTimeout);
    prepare(&blTimer, loaderTimeout);
    prepare(&cmdTimer, 0);
    connect(&sendIDTimer, &QTimer::timeout, this, &TembrinProtocol::sendIDTimeout);
    connect(&statusTimer, &QTimer::timeout, this, &TembrinProtocol::repeatStatusQuestion);
    connect(tembrinData, &TembrinData::loggerTypeChanged, &statusTimer, &QTimer::stop);
    connect(&blTimer, &QTimer::timeout, this, &TembrinProtocol::BLTimeout);
    connect(&cmdTimer, &QTimer::timeout, this, &TembrinProtocol::cmdTimeout);
    // Before anybody else hears of an answer, so that who does may ask whether it confirmed.
    connect(tembrinData, &TembrinData::commandAccepted, this,
            [this](int, commandType cmd) { noteAnswer(cmd); });
    connect(tembrinData, &TembrinData::needLoggerType, this, &TembrinProtocol::noteNewSensors);
    connect(tembrinData, &TembrinData::recognizedVorta, this, &TembrinProtocol::noteNewSensors);
    connect(tembrinData, &TembrinData::needNextPacket, this, &TembrinProtocol::sendNextPacket);
    connect(tembrinData, &TembrinData::needLoggerType, this, &TembrinProtocol::requestLoggerType);
    connect(tembrinData, &TembrinData::stopTransmission, this, &TembrinProtocol::stopTransmission);
    connect(tembrinData, &TembrinData::recognizedVorta, this, &TembrinProtocol::detectedVorta);
}

TembrinProtocol::~TembrinProtocol()
{
    endConnection(true);
}

void TembrinProtocol::sendCommand(commandType cmd)
{
    if (!isConnect || !talker)
        return;
    if (tembrinData->isVorta()) {
        if (cmd == CMD_START_LOGGING)
            sendVortaCommand(CMD_VORTA_START);
        else if (cmd == CMD_STOP_LOGGING)
            sendVortaCommand(CMD_VORTA_STOP);
        else if (cmd == CMD_GET_ALL_SENSORS_VALUES)
            sendVortaCommand(CMD_VORTA_GET_ALL_SENS_VALUES);
        return;
    }
    if (cmd == CMD_TEMBRIN_LOGGING_SETUP) {
        talker->sendCommand(cmd, loggingSetup());
        return;
    }
    if (cmd == CMD_CONFIGURE_TEMBRIN) {
        talker->sendCommand(cmd, configuration());
        return;
    }
    if (cmd == CMD_GET_ALL_SENSORS_ID)
        sendIDTimer.start();
    talker->sendCommand(cmd);
}

QVector<short> TembrinProtocol::loggingSetup() const
{
    const LoggerSettings setup = wanted();
    return {static_cast<short>(setup.mask),
            tembrinData->fixedRateDecrease(setup.rate),
            setup.samples,
            setup.trigType,
            setup.trigSens,
            setup.trigLevel,
            socketCode(tembrinData->socketPlace(0), setup.external[0]),
            socketCode(tembrinData->socketPlace(1), setup.external[1]),
            setup.rangeSens,
            setup.rangeMin};
}

QVector<short> TembrinProtocol::configuration() const
{
    const LoggerSettings conf = wanted();
    return {conf.sound, conf.fahrenheit, conf.bluetooth,
            conf.gps,   conf.hpa,        static_cast<short>(conf.language)};
}

void TembrinProtocol::sendCommand(commandType cmd, short argument)
{
    if (!isConnect || !talker)
        return;
    if (cmd == CMD_DOWNLOAD_STORED_DATA)
        tembrinData->expectDownload();
    talker->sendCommand(cmd, {argument});
}

void TembrinProtocol::sendCommand(commandType cmd, const QByteArray& data)
{
    if (talker)
        talker->sendLongCommand(cmd, data);
}

void TembrinProtocol::sendCommandWithTimeout(commandType cmd, const QByteArray& data, int ms)
{
    lastCommand = cmd;
    lastData = data;
    lastTimeout = ms;
    cmdTimer.start(ms);
    sendCommand(cmd, data);
}

void TembrinProtocol::sendVortaCommand(commandType cmd)
{
    if (!isConnect || !talker)
        return;
    if (cmd == CMD_VORTA_START) {
        const LoggerSettings setup = wanted();
        tembrinData->expectVortaRun(setup);
        talker->sendVortaCommand(cmd, {setup.vortaRate, setup.vortaSamples});
        return;
    }
    talker->sendVortaCommand(cmd);
}

void TembrinProtocol::sendBLCommand(commandType cmd)
{
    if (isConnect && talker)
        talker->sendBLCommand(cmd);
}

void TembrinProtocol::sendBLCommand(commandType cmd, int address)
{
    if (!isConnect || !talker)
        return;
    lastCommand = cmd;
    lastAddress = address;
    blTimer.start();
    talker->sendBLCommand(cmd, address);
}

void TembrinProtocol::sendBLCommand(commandType cmd, int address, const QByteArray& data)
{
    if (!isConnect || !talker)
        return;
    if (data.size() < longPageSize)
        talker->sendBLCommand(cmd, address, data);
    else
        talker->sendLongPage(cmd, address, data);
}

void TembrinProtocol::stopBLTimer()
{
    blTimer.stop();
}

void TembrinProtocol::stopCmdTimer()
{
    cmdTries = 0;
    cmdTimer.stop();
}

void TembrinProtocol::sendNextPacket()
{
    sendCommand(CMD_SEND_NEXT_PACKET);
}

void TembrinProtocol::requestLoggerType()
{
    sendIDTimer.stop();
    statusTimer.start();
    sendCommand(CMD_GET_TEMBRIN_STATUS);
}

void TembrinProtocol::repeatStatusQuestion()
{
    if (!isConnect || tembrinData->isTypeKnown())
        return;
    qCInfo(lcProtocol) << "logger" << index << "has sent no good status since its sensor list, asking again";
    requestLoggerType();
}

void TembrinProtocol::detectedVorta()
{
    sendIDTimer.stop();
}

void TembrinProtocol::stopTransmission()
{
    if (listener)
        listener->clearBuffer();
    sendCommand(CMD_STOP_TRANSMISSION);
}

void TembrinProtocol::deleteFromLogger(bool all)
{
    sendCommand(all ? CMD_CLEAR_ALL_SAMPLES_MEMORY : CMD_DELETE_LAST_RECORDING);
}

// Nothing tells beforehand which kind of logger hangs on the port, so both questions go out in turn.
void TembrinProtocol::sendIDTimeout()
{
    qCDebug(lcProtocol) << "logger" << index << "no reply from sensID #" << sendIDTries;
    ++sendIDTries;
    if (sendIDTries % 2 == 1) {
        sendCommand(CMD_GET_ALL_SENSORS_ID);
    } else {
        sendIDTimer.start();
        sendVortaCommand(CMD_VORTA_GET_STATUS);
    }
}

void TembrinProtocol::BLTimeout()
{
    qCInfo(lcProtocol) << "logger" << index << "resending last BL cmd";
    if (isConnect && talker)
        talker->sendBLCommand(lastCommand, lastAddress);
}

void TembrinProtocol::cmdTimeout()
{
    ++cmdTries;
    if (cmdTries >= longCommandTries) {
        cmdTries = 0;
        return;
    }
    qCInfo(lcProtocol) << "logger" << index << "resending last CMD:" << cmdTries;
    cmdTimer.start(lastTimeout);
    sendCommand(lastCommand, lastData);
}

#include "protocol/tembrindata.h"

#include "protocol/eventcodes.h"
#include "protocol/packets.h"

#include <algorithm>

namespace {

constexpr int mostSamples = 4;     ///< the last entry of the numbers of samples
constexpr int languageWithNtc = 2; ///< loggers in this language came with the other thermometer

} // namespace

void TembrinData::handleStatus(unsigned char* udata, int len)
{
    const auto packet = Packets::parseStatus(udata, len);
    if (!packet)
        return;
    qCDebug(lcProtocol) << "logger" << index << *packet;
    takeStatusFields(*packet);
    if (!loggerRecognized) {
        loggerRecognized = true;
        Q_EMIT communicationEstablished(index);
    }
    if (packet->eventCode != eventNoPacketLeft) {
        replaceSensor(0, Sensor::codeToID(packet->externalCode1));
        replaceSensor(1, Sensor::codeToID(packet->externalCode2));
    }
    followExternalTemperature();
    checkTemperatureUnit();
    if (!packet->sumGood) {
        qCInfo(lcProtocol) << "logger" << index << "Got status - wrong CS";
        return;
    }
    identity.dateTime = packet->dateTime;
    takeModel(packet->type);
    settings.mask = packet->mask;
    Q_EMIT statusReceived();
    reactToStatus(packet->eventCode);
}

void TembrinData::takeStatusFields(const Packets::Status& status)
{
    identity.firmware = status.firmware;
    identity.smallFirmware = status.smallFirmware;
    identity.runState = status.runState;
    identity.stored = status.numExperiments;
    // By the type in this packet: the one held is 0 until the first status after a sensor list is through.
    settings.rate = RateTables::fromCode(static_cast<short>(status.rateCode), status.type, status.firmware,
                                         status.smallFirmware);
    settings.samples = static_cast<short>(qMin<int>(status.samples, mostSamples));
    settings.trigType = static_cast<short>(status.trigType);
    settings.trigSens = static_cast<short>(status.trigSens);
    settings.trigLevel = static_cast<short>(status.trigLevel);
    settings.rangeSens = static_cast<short>(status.rangeSens);
    settings.rangeMin = static_cast<short>(status.rangeMin);
    settings.language = status.language;
    settings.sound = status.options & 0x01;
    settings.fahrenheit = status.options & 0x02;
    settings.bluetooth = status.options & 0x04;
    settings.gps = status.options & 0x08;
    settings.hpa = status.options & 0x10;
}

/// The old firmware reports one thermometer for both kinds; which one is there follows from its language.
void TembrinData::followExternalTemperature()
{
    const bool isOld = identity.firmware <= 1 || (identity.firmware == 2 && identity.smallFirmware <= 9);
    if (!isOld || extTempIndex < 0 || extTempIndex >= sensors.size())
        return;
    const int required = settings.language == languageWithNtc ? SENSOR_EXT_TEMP_NTC : SENSOR_EXT_TEMP;
    if (sensors.at(extTempIndex)->ID != required)
        replaceEntry(extTempIndex, required);
}

void TembrinData::checkTemperatureUnit()
{
    const bool isOther = settings.fahrenheit != units.fahrenheit;
    const bool isNew = isOther && !isUnitTold;
    // The mark first: who is warned may pump events, and the next status must not warn again.
    isUnitTold = isOther;
    if (isNew)
        Q_EMIT temperatureChangeWarning(index);
}

void TembrinData::takeModel(int type)
{
    if (identity.type == type)
        return;
    qCDebug(lcProtocol) << "logger" << index << "is a" << modelName(type);
    identity.type = type;
    Q_EMIT loggerTypeChanged();
}

void TembrinData::reactToStatus(int eventCode)
{
    if (eventCode >= eventCalibrated && eventCode <= eventCalibratedLast) {
        Q_EMIT calibrationResult(CALIBRATION_OK + eventCode - eventCalibrated);
        return;
    }
    switch (eventCode) {
    case eventStatus:
        Q_EMIT loggerMode();
        break;
    case eventSetup:
        Q_EMIT commandAccepted(index, CMD_TEMBRIN_LOGGING_SETUP);
        break;
    case eventStarted:
        if (isFastRate())
            Q_EMIT offlineRunStarted(true);
        break;
    case eventNoBattery:
        Q_EMIT runTerminated(index, int(TERMINATE_BATTERY));
        break;
    case eventNoMemory:
        Q_EMIT runTerminated(index, int(TERMINATE_MEMORY));
        break;
    case eventNoSensor:
        Q_EMIT runTerminated(index, int(TERMINATE_NOSENS));
        break;
    case eventStopped:
        Q_EMIT runTerminated(index, false);
        Q_EMIT commandAccepted(index, CMD_STOP_LOGGING);
        break;
    case eventDownload:
        if (!isDownloadRefused)
            download.start(stream.dataPacketSize);
        break;
    case eventTable:
        forgetExperimentTable();
        break;
    case eventNoPacketLeft:
        download.finish();
        break;
    case eventLongCommand:
        Q_EMIT gotBrevikString();
        Q_EMIT calibrationResult(CALIBRATION_OK);
        break;
    case eventConfigured:
        Q_EMIT commandAccepted(index, CMD_CONFIGURE_TEMBRIN);
        forgetExperimentTable();
        break;
    }
}

void TembrinData::handleTestData(unsigned char* udata, int len)
{
    const auto packet = Packets::parseSelfTest(udata, len);
    if (!packet)
        return;
    qCDebug(lcProtocol) << "logger" << index << *packet;
    QVector<unsigned char> results(packet->count);
    std::copy(packet->results, packet->results + packet->count, results.begin());
    Q_EMIT testDataReceived(results);
}

#include "protocol/tembrindata.h"

#include "protocol/eventcodes.h"
#include "protocol/packets.h"

#include <algorithm>

namespace {

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
        replaceSensor(true, Sensor::codeToID(packet->externalCode1));
        replaceSensor(false, Sensor::codeToID(packet->externalCode2));
    }
    followExternalTemperature();
    checkTemperatureUnit();
    if (!packet->sumGood) {
        qCInfo(lcProtocol) << "logger" << index << "Got status - wrong CS";
        return;
    }
    loggerDateTime = packet->dateTime;
    takeModel(packet->type);
    setActiveFromMask(packet->mask);
    Q_EMIT statusReceived();
    reactToStatus(packet->eventCode);
}

void TembrinData::takeStatusFields(const Packets::Status& status)
{
    firmwareVersion = static_cast<short>(status.firmware);
    firmwareSmallVersion = static_cast<short>(status.smallFirmware);
    runState = status.runState;
    numExperiments = static_cast<short>(status.numExperiments);
    // By the type in this packet: the one held is 0 until the first status after a sensor list is through.
    settings.rate = RateTables::fromCode(static_cast<short>(status.rateCode), status.type, status.firmware,
                                         status.smallFirmware);
    settings.samples = static_cast<short>(qMin<int>(status.samples, std::size(SamplesNames) - 1));
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
    const bool isOld = firmwareVersion <= 1 || (firmwareVersion == 2 && firmwareSmallVersion <= 9);
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
    if (tembrinType == type)
        return;
    tembrinType = static_cast<short>(type);
    setSamplesNamesForType();
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
            download.start(dataPacketSize);
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

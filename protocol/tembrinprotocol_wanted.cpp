#include "protocol/packets.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

namespace {

/// A sensor that names itself can't be talked out of its socket, nor into it.
bool canBeTold(int wantedID, int reportedID)
{
    return wantedID != 0 && Sensor::isIDVestrel(wantedID) == Sensor::isIDVestrel(reportedID);
}

} // namespace

LoggerSettings TembrinProtocol::wanted() const
{
    LoggerSettings settings = tembrinData->reported();
    if (wantedSetup)
        settings.takeSetup(*wantedSetup);
    if (wantedConfiguration)
        settings.takeConfiguration(*wantedConfiguration);
    return settings;
}

void TembrinProtocol::wantSetup(const LoggerSettings& settings)
{
    wantedSetup = settings;
    const int sensors = tembrinData->getSensors().size();
    if (sensors < 16)
        wantedSetup->mask &= (1u << sensors) - 1;
    wantedSensors = fixedSensors();
    qCDebug(lcProtocol) << "logger" << index << "shall record with mask" << Qt::hex << wantedSetup->mask
                        << Qt::dec << ", rate" << wantedSetup->rate << ", samples" << wantedSetup->samples
                        << ", sockets" << wantedSetup->external[0] << wantedSetup->external[1];
    tembrinData->chooseVortaRun(*wantedSetup);
}

void TembrinProtocol::wantConfiguration(const LoggerSettings& settings)
{
    wantedConfiguration = settings;
    qCDebug(lcProtocol) << "logger" << index << "shall be configured with sound" << settings.sound
                        << ", Fahrenheit" << settings.fahrenheit << ", GPS" << settings.gps << ", language"
                        << settings.language;
}

bool TembrinProtocol::isSetupConfirmed() const
{
    return !wantedSetup || tembrinData->isVorta();
}

/// An answer to an earlier command of the kind says nothing of what is wanted by now.
void TembrinProtocol::noteAnswer(commandType cmd)
{
    if (cmd == CMD_TEMBRIN_LOGGING_SETUP && wantedSetup)
        settle(&wantedSetup, isReportedAs(*wantedSetup), "setup");
    else if (cmd == CMD_CONFIGURE_TEMBRIN && wantedConfiguration)
        settle(&wantedConfiguration, tembrinData->reported().isSameConfiguration(*wantedConfiguration),
               "configuration");
}

void TembrinProtocol::settle(std::optional<LoggerSettings>* want, bool isConfirmed, const char* what)
{
    if (isConfirmed) {
        qCDebug(lcProtocol) << "logger" << index << "confirmed the wanted" << what;
        want->reset();
    } else {
        qCInfo(lcProtocol) << "logger" << index << "answered with another" << what << "than is wanted";
    }
}

bool TembrinProtocol::isReportedAs(const LoggerSettings& setup) const
{
    const LoggerSettings& reported = tembrinData->reported();
    // A rate that a logger lacks comes back as its nearest, so what counts is what went over the wire.
    if (reported.mask != setup.mask || reported.samples != setup.samples ||
        tembrinData->fixedRateDecrease(reported.rate) != tembrinData->fixedRateDecrease(setup.rate))
        return false;
    const int slots[] = {tembrinData->socketPlace(0), tembrinData->socketPlace(1)};
    for (int i = 0; i < 2; ++i) {
        if (slots[i] >= 0 && canBeTold(setup.external[i], reported.external[i]) &&
            setup.external[i] != reported.external[i])
            return false;
    }
    return true;
}

void TembrinProtocol::noteNewSensors()
{
    if (!wantedSetup)
        return;
    if (wantedSensors == fixedSensors()) {
        tembrinData->chooseVortaRun(*wantedSetup);
        return;
    }
    qCInfo(lcProtocol) << "logger" << index << "has other sensors than the wanted setup was made for";
    wantedSetup.reset();
}

/// The sensors of the list, without what happens to be plugged in.
QVector<int> TembrinProtocol::fixedSensors() const
{
    QVector<int> ids;
    const SensorList& list = tembrinData->getSensors();
    for (int i = 0; i < list.size(); ++i) {
        const bool isSocket = tembrinData->isExtSens1(i) || tembrinData->isExtSens2(i);
        // Which of the two thermometers an old logger has, it tells only after the list.
        const bool isThermometer = list.at(i)->ID == SENSOR_EXT_TEMP_NTC;
        ids.append(isSocket ? int(SENSOR_EXTERNAL) : isThermometer ? int(SENSOR_EXT_TEMP) : list.at(i)->ID);
    }
    return ids;
}

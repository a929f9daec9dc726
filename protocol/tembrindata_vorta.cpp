#include "protocol/tembrindata.h"

#include "protocol/eventcodes.h"
#include "protocol/packets.h"

#include <algorithm>

namespace {

// Places in the list of the five sensors.
constexpr int force50 = 0;
constexpr int force5 = 1;
constexpr int accX = 2;
constexpr int channelCount = 5;

constexpr short fastRate = 5;         ///< VORTA_RATE_500HZ
constexpr quint16 fastSensors = 0x15; ///< the only three that the fast rate carries
constexpr quint16 usualSensors = 0x02;
constexpr quint16 allSensors = 0x1F;
constexpr int runStateIdleToo = 3;

constexpr int vortaHeader = 3;
constexpr int fastSamples = 50; ///< in a packet; the slow types have 1, 4 or 10
constexpr int typeFourSamples = 0xF1;
constexpr int typeTenSamples = 0xF2;

// Standing upright, the logger's own weight pulls at its force sensor.
constexpr double uprightAcc = 0.9;       ///< g
constexpr double weightCorrection = 1.9; ///< N

} // namespace

void TembrinData::handleVortaStatus(unsigned char* udata, int len)
{
    const auto packet = Packets::parseVortaStatus(udata, len);
    if (!packet)
        return;
    qCDebug(lcProtocol) << "logger" << index << *packet;
    takeVortaFields(*packet);
    if (vorta)
        calibrateForce();
    else
        becomeVorta();
    if (!packet->sumGood) {
        qCInfo(lcProtocol) << "logger" << index << "Got status - wrong CS";
        return;
    }
    takeModel(LOGGER_VORTA);
    Q_EMIT statusReceived();
    reactToVortaStatus(packet->eventCode);
}

void TembrinData::takeVortaFields(const Packets::VortaStatus& status)
{
    Vorta_HardwareVersion = static_cast<short>(status.hardware);
    Vorta_SoftwareVersion = static_cast<short>(status.software);
    runState = status.runState == runStateIdleToo ? 0 : static_cast<short>(status.runState);
    Vorta_rate = static_cast<short>(std::clamp(status.rate, 1, RateTables::vortaCount - 1));
    Vorta_samples = static_cast<short>(status.samples);
    Vorta_gain = static_cast<short>(status.gain);
    Vorta_offset1 = static_cast<short>(status.offset1);
    Vorta_offset2 = static_cast<short>(status.offset2);
}

void TembrinData::becomeVorta()
{
    tembrinType = 0;
    setupSensorsForType(LOGGER_VORTA);
    calibrateForce();
    setActiveFromMask(Vorta_rate == fastRate ? fastSensors : usualSensors);
    loggerRecognized = false;
    vorta = true;
    onlineCounter = 0;
    Q_EMIT communicationEstablished(index);
    Q_EMIT recognizedVorta();
}

void TembrinData::calibrateForce()
{
    if (sensors.size() <= force5)
        return;
    const quint16 gain = static_cast<quint16>(Vorta_gain);
    sensors.at(force50)->setOffset(Vorta_offset1);
    sensors.at(force50)->setGain(static_cast<float>(gain * 0.1));
    sensors.at(force5)->setOffset(Vorta_offset2);
    sensors.at(force5)->setGain(gain);
}

void TembrinData::reactToVortaStatus(int eventCode)
{
    switch (eventCode) {
    case eventStatus:
        Q_EMIT loggerMode();
        break;
    case eventStarted:
        onlineCounter = 0; // the end of the run before may have been lost
        break;
    case eventNoBattery:
        Q_EMIT runTerminated(index, int(TERMINATE_BATTERY));
        break;
    case eventUser:
    case eventStopped:
        onlineCounter = 0;
        Q_EMIT runTerminated(index, false);
        break;
    }
}

void TembrinData::handleVortaFetch(unsigned char* udata, int len)
{
    const auto packet = Packets::parseVortaSnapshot(udata, len);
    if (!packet)
        return;
    qCDebug(lcProtocol) << "logger" << index << *packet;
    for (int i = 0; i < qMin(sensors.size(), channelCount); ++i) {
        sensors.at(i)->setLastValue(packet->words[i]);
        if (i != accX || sensors.at(accX)->lastValue.value(0) <= uprightAcc)
            continue;
        for (const int force : {force50, force5}) {
            Sensor& sensor = *sensors.at(force);
            sensor.lastValue[0] = std::min(sensor.lastValue.at(0) + weightCorrection, sensor.max);
        }
    }
    Q_EMIT newSnapReceived();
}

/// The values of the channels that are on, in list order; `carried` are the channels of this kind of packet.
QVector<double> TembrinData::vortaSample(const Packets::VortaWords& words, quint16 carried) const
{
    const bool upright = sensors.at(accX)->convert(words[accX]) >= uprightAcc;
    QVector<double> values;
    for (int i = 0; i < channelCount; ++i) {
        const Sensor& sensor = *sensors.at(i);
        if (!sensor.active || !(carried >> i & 1))
            continue;
        const double value = sensor.convert(words[i]);
        const bool isForce = i == force50 || i == force5;
        values.append(isForce && upright ? std::min(value + weightCorrection, sensor.max) : value);
    }
    return values;
}

void TembrinData::handleVortaOnlineFast(unsigned char* udata, int len)
{
    takeVortaBlock(udata, len, fastSamples);
}

void TembrinData::handleVortaOnlineSlow(unsigned char* udata, int len)
{
    if (len <= vortaHeader)
        return;
    const int type = udata[2];
    takeVortaBlock(udata, len, type == typeTenSamples ? 10 : type == typeFourSamples ? 4 : 1);
}

void TembrinData::takeVortaBlock(const unsigned char* bytes, int len, int sampleCount)
{
    const bool isFast = sampleCount == fastSamples;
    const int sampleSize = isFast ? Packets::vortaFastSampleSize : Packets::vortaSlowSampleSize;
    if (len < vortaHeader + sampleCount * sampleSize + 1 || sensors.size() < channelCount)
        return;
    SampleBlock block;
    block.reserve(sampleCount);
    for (int i = 0; i < sampleCount; ++i) {
        const unsigned char* sample = bytes + vortaHeader + i * sampleSize;
        block.append(isFast ? vortaSample(Packets::vortaFastWords(sample), fastSensors)
                            : vortaSample(Packets::vortaSlowWords(sample), allSensors));
    }
    const int blockNumber = onlineCounter++;
    Q_EMIT onlineReceived(index, static_cast<short>(blockNumber), block, samplesWaiting);
}

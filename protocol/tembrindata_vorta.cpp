#include "protocol/tembrindata.h"

#include "protocol/eventcodes.h"
#include "protocol/packets.h"

#include <algorithm>

namespace {

constexpr short fastRate = 5; ///< VORTA_RATE_500HZ
constexpr quint16 usualSensors = 0x02;
constexpr int runStateIdleToo = 3;

constexpr int vortaHeader = 3;
constexpr int fastSamples = 50; ///< in a packet; the slow types have 1, 4 or 10
constexpr int typeFourSamples = 0xF1;
constexpr int typeTenSamples = 0xF2;

} // namespace

void TembrinData::handleVortaStatus(unsigned char* udata, int len)
{
    const auto packet = Packets::parseVortaStatus(udata, len);
    if (!packet)
        return;
    qCDebug(lcProtocol) << "logger" << index << *packet;
    takeVortaFields(*packet);
    vortaRun.calibrate(*packet);
    if (!vorta)
        becomeVorta();
    if (!packet->sumGood) {
        qCInfo(lcProtocol) << "logger" << index << "Got status - wrong CS";
        return;
    }
    takeModel(LOGGER_VORTA);
    // After a lost line: it may have stopped in the meantime, or been set to something else.
    if (vortaRun.isRunning() && (isIdle() || vortaRun.period() != VortaRates[settings.vortaRate]))
        vortaRun.end();
    Q_EMIT statusReceived();
    reactToVortaStatus(packet->eventCode);
}

void TembrinData::takeVortaFields(const Packets::VortaStatus& status)
{
    identity.hardware = status.hardware;
    identity.software = status.software;
    identity.runState = status.runState == runStateIdleToo ? 0 : status.runState;
    settings.vortaRate = static_cast<short>(std::clamp(status.rate, 1, RateTables::vortaCount - 1));
    settings.vortaSamples = static_cast<short>(status.samples);
}

void TembrinData::becomeVorta()
{
    identity.type = 0;
    setupSensorsForType(LOGGER_VORTA);
    settings.mask = settings.vortaRate == fastRate ? VortaRun::fastChannels : usualSensors;
    vortaRun.choose(settings.mask, false);
    loggerRecognized = false;
    vorta = true;
    Q_EMIT communicationEstablished(index);
    Q_EMIT recognizedVorta();
}

void TembrinData::chooseVortaRun(const LoggerSettings& setup)
{
    vortaRun.choose(setup.mask, setup.vortaInvertForce);
}

void TembrinData::expectVortaRun(const LoggerSettings& setup)
{
    chooseVortaRun(setup);
    vortaRun.expect(VortaRates[setup.vortaRate]);
}

void TembrinData::reactToVortaStatus(int eventCode)
{
    switch (eventCode) {
    case eventStatus:
        Q_EMIT loggerMode();
        break;
    case eventStarted:
        vortaRun.begin(VortaRates[settings.vortaRate]);
        break;
    case eventNoBattery:
        Q_EMIT runTerminated(index, int(TERMINATE_BATTERY));
        break;
    case eventUser:
    case eventStopped:
        vortaRun.end();
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
    snapshotValues = vortaRun.snapshot(packet->words);
    Q_EMIT newSnapReceived();
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
    if (len < vortaHeader + sampleCount * sampleSize + 1)
        return;
    if (!vortaRun.take(bytes + vortaHeader, sampleCount, isFast, VortaRates[settings.vortaRate])) {
        qCDebug(lcProtocol) << "logger" << index << "a block that was under way when the run ended";
        return;
    }
    Q_EMIT onlineReceived(index, static_cast<short>(vortaRun.number()), vortaRun.block(),
                          stream.samplesWaiting);
}

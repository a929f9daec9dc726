#include "protocol/vortarun.h"

#include <algorithm>
#include <cmath>

#include "sensors/sensorsmaster.h"

namespace {

// Places among the five channels.
constexpr int force50 = 0;
constexpr int force5 = 1;
constexpr int accX = 2;

constexpr int lateBlocks = 2000; ///< ms after a stop

// Standing upright, the logger's own weight pulls at its force sensor.
constexpr double uprightAcc = 0.9;       ///< g
constexpr double weightCorrection = 1.9; ///< N

constexpr int channelIDs[] = {SENSOR_VORTA_FORCE50, SENSOR_VORTA_FORCE5, SENSOR_VORTA_ACC_X,
                              SENSOR_VORTA_ACC_Y, SENSOR_VORTA_ACC_Z};

bool isForce(int channel)
{
    return channel == force50 || channel == force5;
}

double highest(int channel)
{
    return sensorRow(channelIDs[channel])->max;
}

double withoutWeight(int channel, double newtons)
{
    return std::min(newtons + weightCorrection, highest(channel));
}

} // namespace

void VortaRun::choose(quint16 mask, bool invertForce)
{
    chosen = mask;
    isForceInverted = invertForce;
}

void VortaRun::calibrate(const Packets::VortaStatus& status)
{
    force[force50] = {static_cast<qint16>(status.offset1), static_cast<float>(status.gain * 0.1), false};
    force[force5] = {static_cast<qint16>(status.offset2), static_cast<float>(status.gain), false};
}

VortaRun::Kinds VortaRun::kindsNow() const
{
    Kinds now;
    for (int i = 0; i < channelCount; ++i) {
        ForceCalibration calibration = isForce(i) ? force[i] : ForceCalibration();
        calibration.isInverted = isForceInverted;
        now[i] = SensorKind(channelIDs[i], units, calibration);
    }
    return now;
}

void VortaRun::expect(double samplePeriod)
{
    isExpected = true;
    if (!isOpen)
        ownPeriod = samplePeriod;
}

void VortaRun::begin(double samplePeriod)
{
    isOpen = true;
    isExpected = isInterrupted = isFrozen = false;
    ownPeriod = samplePeriod;
    next = 0;
    beforehand = 0;
    begun.start();
}

void VortaRun::end()
{
    if (isOpen)
        ended.start();
    isOpen = isExpected = isInterrupted = false;
}

void VortaRun::forget()
{
    end();
    ended.invalidate();
    isFrozen = false;
    ownPeriod = 0;
}

bool VortaRun::isLate() const
{
    return !isOpen && !isExpected && ended.isValid() && !ended.hasExpired(lateBlocks);
}

RunDecoder VortaRun::layoutOf(quint16 mask) const
{
    const Kinds now = kindsNow();
    RunDecoder sensors(units);
    for (int i = 0; i < channelCount; ++i) {
        if (mask >> i & 1)
            sensors.add(now[i], i);
    }
    return sensors;
}

void VortaRun::freeze(bool isFast)
{
    isFrozen = true;
    isFastRun = isFast;
    kinds = kindsNow();
    layout = layoutOf(isFast ? chosen & fastChannels : chosen);
}

SensorList VortaRun::channels() const
{
    return (isFrozen ? layout : layoutOf(chosen)).channels();
}

bool VortaRun::take(const unsigned char* samples, int count, bool isFast, double usualPeriod)
{
    if (isLate())
        return false;
    // A run whose beginning nobody told of: its status was lost, or it was on before the connection.
    if (!isOpen)
        begin(isExpected ? ownPeriod : usualPeriod);
    if (!isFrozen || isFast != isFastRun)
        freeze(isFast);
    findNumber(count * ownPeriod);
    rows.resize(count);
    const int size = isFast ? Packets::vortaFastSampleSize : Packets::vortaSlowSampleSize;
    for (int i = 0; i < count; ++i, samples += size)
        decode(isFast ? Packets::vortaFastWords(samples) : Packets::vortaSlowWords(samples), &rows[i]);
    return true;
}

/// Blocks carry no number. Within a connection they are counted; after a lost line the time since the first
/// one says how many there must have been.
void VortaRun::findNumber(double blockPeriod)
{
    const double elapsed = begun.nsecsElapsed() / 1e9;
    if (next == 0 && !isInterrupted)
        beforehand = blockPeriod - elapsed;
    if (isInterrupted && blockPeriod > 0)
        next = std::max(next, static_cast<int>(std::lround((elapsed + beforehand) / blockPeriod)) - 1);
    isInterrupted = false;
    ++next;
}

/// The fast packets carry no words for the other channels, and the layout has none of them then.
void VortaRun::decode(const Packets::VortaWords& words, QVector<double>* row) const
{
    const bool isUpright = kinds[accX].convert(words[accX]) >= uprightAcc;
    row->resize(layout.valueCount());
    for (int i = 0; i < layout.valueCount(); ++i) {
        const int channel = layout.listIndex(i);
        const double value = kinds[channel].convert(words[channel]);
        (*row)[i] = isForce(channel) && isUpright ? withoutWeight(channel, value) : value;
    }
}

VortaRun::Block VortaRun::snapshot(const Packets::VortaWords& words) const
{
    const Kinds now = kindsNow();
    Block values(channelCount);
    for (int i = 0; i < channelCount; ++i) {
        const double value = now[i].convert(words[i]);
        values[i] = {value > highest(i) ? 0 : value};
    }
    if (values[accX][0] > uprightAcc) {
        for (const int channel : {force50, force5})
            values[channel][0] = withoutWeight(channel, values[channel][0]);
    }
    return values;
}

#pragma once

#include "sensors/sensorkind.h"

#include <QByteArray>
#include <QHash>

class LessonSignals;

/// Turns values into the bytes of a sample: the raw words that the catalogue converts back to them.
class SampleWriter
{
public:
    /// Bytes of one sample of this sensor; 0 for an ID without a catalogue row.
    int width(int sensorId);
    /// The calibration of a force channel.
    void setForce(int sensorId, int offset, float gain);
    /// The raw word whose value lies nearest to `value`, base unit.
    quint16 word(int sensorId, double value);
    /// One sample of a plain sensor or composite at `seconds` of lesson time. `offset` is added to
    /// temperatures: the logger's calibration.
    QByteArray block(int sensorId, const LessonSignals& lesson, double seconds, double offset = 0);

private:
    const SensorKind& catalogue(int sensorId);

    QHash<int, SensorKind> kinds;
};

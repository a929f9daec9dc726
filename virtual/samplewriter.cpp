#include "virtual/samplewriter.h"

#include "sensors/sensorids.h"
#include "virtual/lessonsignals.h"
#include "virtual/wire.h"

#include <QtMath>

namespace {

/// Where a conversion runs one way: words `first` to `last`, counted from 0x8000 up if they are signed.
struct WordRange
{
    int id;
    bool isSigned;
    int first;
    int last;
};

constexpr WordRange wordRanges[] = {
    {SENSOR_HEARTRATE_RATE, false, 0, 1000},   {QUELLMARK_HEARTRATE_RATE, false, 0, 1000},
    {SENSOR_DISTANCE, false, 0, 10000},        {SENSOR_AMB_TEMP_NTC_CALC, true, 0, 0xFFFF},
    {SENSOR_THERMOCOUPLE, true, 0, 0xFFFF},    {SENSOR_ION, true, 0, 0xFFFF},
    {QUELLMARK_THERMOCOUPLE, true, 0, 0xFFFF}, {SENSOR_ACCELERATION_X, true, 0, 0xFFFF},
    {SENSOR_ACCELERATION_Y, true, 0, 0xFFFF},  {SENSOR_ACCELERATION_Z, true, 0, 0xFFFF},
    {SENSOR_VORTA_ACC_X, true, 0, 0xFFFF},     {SENSOR_VORTA_ACC_Y, true, 0, 0xFFFF},
    {SENSOR_VORTA_ACC_Z, true, 0, 0xFFFF},     {SENSOR_VORTA_FORCE50, false, 0, 0x0FFF},
    {SENSOR_VORTA_FORCE5, false, 0, 0x0FFF},
};

WordRange wordRange(int sensorId)
{
    for (const WordRange& range : wordRanges) {
        if (range.id == sensorId)
            return range;
    }
    return {sensorId, false, 0, 0xFFFF};
}

/// Degrees, thousandths of a minute, hemisphere.
void appendAngle(QByteArray& bytes, double degrees, char positive, char negative)
{
    const int thousandths = qRound(qAbs(degrees) * 60000);
    bytes += char(thousandths / 60000);
    Wire::append16(bytes, thousandths % 60000);
    bytes += degrees < 0 ? negative : positive;
}

} // namespace

const SensorKind& SampleWriter::catalogue(int sensorId)
{
    const auto known = kinds.constFind(sensorId);
    return known != kinds.constEnd() ? *known : *kinds.insert(sensorId, SensorKind(sensorId));
}

int SampleWriter::width(int sensorId)
{
    return catalogue(sensorId).numBytes();
}

void SampleWriter::setForce(int sensorId, int offset, float gain)
{
    kinds.insert(sensorId, SensorKind(sensorId, {}, {offset, gain}));
}

quint16 SampleWriter::word(int sensorId, double value)
{
    const SensorKind kind = catalogue(sensorId);
    const WordRange range = wordRange(sensorId);
    const auto wordAt = [&range](int i) { return quint16(range.isSigned ? i ^ 0x8000 : i); };
    const auto valueAt = [&](int i) { return kind.convert(wordAt(i)); };
    const bool rises = valueAt(range.last) > valueAt(range.first);
    int low = range.first;
    int high = range.last;
    while (high - low > 1) {
        const int middle = (low + high) / 2;
        if ((valueAt(middle) <= value) == rises)
            low = middle;
        else
            high = middle;
    }
    return wordAt(qAbs(valueAt(low) - value) <= qAbs(valueAt(high) - value) ? low : high);
}

QByteArray SampleWriter::block(int sensorId, const LessonSignals& lesson, double seconds, double offset)
{
    QByteArray bytes;
    if (sensorId == SENSOR_GPS) {
        appendAngle(bytes, lesson.value(SENSOR_GPS_LAT, seconds), 'N', 'S');
        appendAngle(bytes, lesson.value(SENSOR_GPS_LONG, seconds), 'E', 'W');
        Wire::append16(bytes, qRound(lesson.value(SENSOR_GPS_SPEED, seconds) * 10));
        Wire::append16(bytes, qRound(lesson.value(SENSOR_GPS_ANGLE, seconds) * 10));
        return bytes;
    }
    const SensorKind kind = catalogue(sensorId);
    if (kind.isComposite()) {
        for (int i = 0; i < kind.valueCount(); ++i)
            Wire::append16(bytes, word(kind.childID(i), lesson.value(kind.childID(i), seconds)));
    } else if (kind.numBytes() == 2) {
        const double shift = SensorKind::isTemperature(sensorId) ? offset : 0;
        Wire::append16(bytes, word(sensorId, lesson.value(sensorId, seconds) + shift));
    }
    return bytes;
}

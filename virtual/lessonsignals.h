#pragma once

#include <QtGlobal>

/// What the sensors of one logger see: a cup of tea cooling down, a pendulum, a day's light, a heart, a walk.
/// A pure function of sensor, time and seed; two seeds give curves of the same kind that differ in height,
/// pace and noise.
class LessonSignals
{
public:
    explicit LessonSignals(quint32 seed = 1)
        : seed(seed)
    {
    }

    /// The value of a channel (for a composite: of the child) in its base unit at `seconds` of lesson time.
    double value(int sensorId, double seconds) const;
    /// Lesson time of a sample. A run over hours shows the lesson slowed down, so that its curve has a shape.
    static double lessonTime(double seconds, double period);

private:
    double spread(int sensorId, int what) const;
    double walk(int sensorId, double seconds) const;

    quint32 seed;
};

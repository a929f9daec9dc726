#pragma once

#include <QVector>

#include "sensors/sensor.h"
#include "sensors/sensorkind.h"

/// By what the bytes of one run, or of one stored experiment, are read: its sensors in their order, as they
/// were when it began. What a logger says later of its sockets or its mask changes nothing here.
class RunDecoder
{
public:
    RunDecoder() = default;
    explicit RunDecoder(const Units& units)
        : units(units)
    {
    }
    /// The sensors of a logger's list whose bit is set in `mask`.
    RunDecoder(const SensorList& list, quint16 mask, const Units& units);

    /// Entry `listIndex` of the logger's list belongs to the run too.
    void add(const SensorKind& kind, int listIndex);
    /// What was plugged into a socket when the experiment was recorded.
    void replace(int listIndex, const SensorKind& kind);

    quint16 mask() const { return ownMask; }
    int bytesPerSample() const { return bytes; }
    int valueCount() const { return values; }
    int sensorCount() const { return entries.size(); }
    /// Place in the logger's list of the run's sensor `i`.
    int listIndex(int i) const { return entries.at(i).listIndex; }
    /// One sample of bytesPerSample() bytes into valueCount() values.
    void decode(const unsigned char* sample, double* into) const;
    /// A new channel for each value: what the user does to one changes no logger and no other run.
    SensorList channels() const;

private:
    struct Entry
    {
        SensorKind kind;
        int listIndex;
    };

    QVector<Entry> entries;
    Units units;
    quint16 ownMask = 0;
    int bytes = 0;
    int values = 0;
};

#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QVector>

#include "classroom/newestvalues.h"
#include "common/classsize.h"
#include "sensors/sensor.h"

/// What there is to tell of a group right now, as texts and values of its chosen sensor in the unit on
/// display.
struct GroupReading
{
    enum class Link
    {
        Off,
        Connecting,
        Sought, ///< lost in a run and looked for
        On,
        Replayed ///< it is not of now, but of a run that is played again
    };

    bool operator==(const GroupReading& other) const;
    bool operator!=(const GroupReading& other) const { return !(*this == other); }

    QString group;
    QString channel;
    QString unit;
    QString digits; ///< empty where nothing was measured yet
    QString widest; ///< the longest digits that were shown of this sensor, or are to be expected
    int age = -1;   ///< seconds since it was measured
    bool isOld = false;
    double perSecond = 0; ///< samples that arrive; 0 unless they do
    int lost = 0;         ///< samples of the run that did not arrive
    Link link = Link::Off;
    bool isBatteryLow = false; ///< it refused a run for that
};

/// What was measured last in each group, by a run or by a snapshot, how long ago, and how the samples come
/// in. It keeps what it has told, so that a logger that is away leaves its last value behind.
class GroupReadings : public QObject
{
    Q_OBJECT

public:
    /// `manager` has the sessions and data sets; not owned.
    explicit GroupReadings(multiConnectionsManager* manager, QObject* parent = nullptr);

    /// As of now; below `slot` is a logger in use.
    GroupReading reading(int slot);

Q_SIGNALS:
    /// Logger `slot` has answered a snapshot, or begins another run.
    void changed(int slot);

private:
    struct Mark
    {
        qint64 at; ///< ms of `clock`
        int rows;
    };
    struct Place
    {
        QString port;      ///< of the logger that all this is about
        qint64 rowAt = -1; ///< ms of `clock`, when the last row came
        qint64 snapshotAt = -1;
        int size = 0; ///< of the set after that row; another size is another run's, or edited
        int rows = 0;
        qint64 number = -1; ///< of the last row
        int lost = 0;
        QVector<Mark> marks; ///< of the last seconds
        bool isBatteryLow = false;
        // What was told last:
        QString group;
        int channel = -1;
        QString digits;
        QString widest;
        qint64 measuredAt = -1;
    };

    void connectLogger(int slot);
    void takeRow(int slot, double time, const QVector<double>& values);
    double newest(int slot, const Sensor& channel, qint64* at) const;
    void takeValue(int slot, const SensorPtr& channel);
    void takeValue(Place* place, const Sensor& channel, double value, qint64 at) const;
    GroupReading readingOf(const Place& place, const Sensor& channel) const;
    GroupReading replayed(int slot);
    int lostOfReplay(int slot) const;
    double perSecond(int slot) const;
    int lostOf(int slot) const;
    GroupReading::Link linkOf(int slot) const;

    multiConnectionsManager* manager;
    NewestValues snapshots;
    Place places[mostLoggers];
    Place replayPlaces[mostLoggers]; ///< what is told of a replay, by its own clock
    QElapsedTimer clock;
};

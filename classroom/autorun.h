#pragma once

#include <QObject>
#include <QString>
#include <QVector>

#include <functional>

#include "common/classsize.h"

/// When a run begins and ends without a hand.
struct AutoRunPlan
{
    enum class Begin
    {
        AtOnce,
        Countdown,
        Level ///< when a value passes a level; one that is beyond it already has to come back first
    };
    static constexpr int anyGroup = -1;
    static constexpr int allGroups = -2;

    Begin begin = Begin::AtOnce;
    int countdown = 5;    ///< s
    int group = anyGroup; ///< of the level: a slot, or one of the above
    double level = 0;     ///< in the unit that values come in
    bool isRising = true;
    QString condition;    ///< the level in words: "Light of all groups rises above 300 lx"
    double stopAfter = 0; ///< s, from the first sample on; 0: as the loggers are set up
    int times = 1;
};

/// Runs by a plan: waits, starts, stops and does so again. It knows no loggers and no clock; those who do
/// tell it what happens and carry out what it wants. A person who presses Run in the meantime only ends the
/// waiting, whoever presses Stop ends all of it.
class AutoRun : public QObject
{
    Q_OBJECT

public:
    enum class State
    {
        Off,
        Waiting, ///< for the countdown, the level, or until the loggers are free
        Running,
        Stopping
    };

    /// The world as it is at the moment.
    struct World
    {
        std::function<bool()> isFree;          ///< a run could begin, and nobody is busy with something else
        std::function<bool()> isAnyoneThere;   ///< a logger is connected
        std::function<double(int slot)> value; ///< the newest, not a number where nobody knows
        std::function<void()> start;           ///< noteBegun() comes from within, or it did not begin
        std::function<void()> stop;
    };

    explicit AutoRun(const World& world, QObject* parent = nullptr);

    /// In place of a plan that is at work. Times are milliseconds of any clock.
    void arm(const AutoRunPlan& plan, qint64 now);
    /// A person does not want it any more; a run that is on is left to whoever asked. False if there was
    /// nothing to give up.
    bool giveUp();
    /// Often enough for whoever looks at it.
    void tick(qint64 now);

    void noteBegun(qint64 now);
    void noteSample(qint64 now);
    /// `isEmpty`: nobody has measured anything, and nothing is on its way from a memory.
    void noteEnded(qint64 now, bool isEmpty);

    State state() const { return at; }
    bool isOn() const { return at != State::Off; }
    bool isLevelWatched() const { return at == State::Waiting && plan.begin == AutoRunPlan::Begin::Level; }
    /// What it waits for, or how the run stands.
    QString text() const;

Q_SIGNALS:
    void changed();
    /// Why it has ended, or how.
    void told(const QString& line);

private:
    void wait(qint64 now);
    void lookAtLevel();
    void begin();
    void end(const QString& line);
    QString counted() const;

    const World world;
    AutoRunPlan plan;
    State at = State::Off;
    qint64 time = 0;                  ///< of the last tick
    qint64 from = 0;                  ///< what waiting or the run is counted from
    bool isDue = false;               ///< it begins as soon as it can
    bool isKnown = false;             ///< a value has come
    bool isFirst = true;              ///< no sample of the run has come
    int done = 0;                     ///< runs that are over
    bool wasBefore[mostLoggers] = {}; ///< has been on the near side of the level
};

#pragma once

#include <QDateTime>
#include <QElapsedTimer>
#include <QObject>
#include <QVector>

#include "classroom/classjob.h"
#include "classroom/classset.h"
#include "common/classsize.h"
#include "sensors/sensor.h"

class ExpData;
class TembrinData;
struct StoredRun;
class multiConnectionsManager;

/// A run of the class, from the order or the first sample on to the end of the last logger. It says of each
/// logger how it stands in the run, and takes what the loggers send into their data sets and that of the
/// class. It knows no window; what there is to show is told by signals.
class ClassRun : public QObject
{
    Q_OBJECT

public:
    enum class Phase
    {
        Idle,
        Ordered, ///< it was told to start, and nothing has come yet
        Running,
        Lost, ///< its connection broke in the run
        Ended
    };

    /// `manager` has the sessions and data sets; not owned.
    explicit ClassRun(multiConnectionsManager* manager);

    /// A run that this program starts: the loggers in `which` (a bit each) begin anew, and so does the class.
    void order(quint8 which);
    /// It does not answer a start or a stop: it counts as away, and is not waited for, until it says
    /// something again.
    void giveUp(int slot);
    /// Somebody stops the class. Who is away is no longer sought, and is stopped when it comes back in a run.
    void noteStop();
    Phase phase(int slot) const { return places[slot].phase; }
    /// The logger runs or was told to, whoever started it, as far as is known.
    bool isRunning(int slot) const;
    bool isAnyRunning() const;
    /// It did not answer a start or a stop, and has said nothing since.
    bool isGivenUp(int slot) const { return places[slot].isGivenUp; }
    /// It was lost in this run, and nobody has stopped the class since: it is worth looking for.
    bool isSought(int slot) const;
    /// Everybody whom the program started was lost, and one that comes back goes on with the run.
    bool isAwaited() const;
    /// Since when a logger of this run is away; invalid unless it is.
    QDateTime lostSince(int slot) const;
    /// Milliseconds since the run began; to its end when it has ended, 0 before any.
    qint64 elapsed() const;
    /// Samples that have arrived in it, of all loggers.
    int samples() const;
    /// Puts in what the run of a logger lacks from the same run as its memory has it, and joins it to the
    /// class again. The number of samples that were missing; -1, with nothing changed, for another run.
    int fillGaps(int slot, const StoredRun& stored);
    /// Gives a logger that has measured nothing yet the channels that it is set to.
    void showPlanned(int slot);
    /// The sets hold something else than its run: whoever is heard of next begins another.
    void forget();

    // A run that the program plays itself, in the set of the first logger, in classrun_simulation.cpp

    /// It begins in place of what that set and the class hold; nobody else may be running. `name` stands
    /// where a group's does.
    void beginSimulation(const SensorList& channels, double period, const QString& name);
    /// The next row of it, at `time` seconds.
    void takeSimulated(double time, const QVector<double>& values);
    /// What there is of it stays. A run of loggers ends it before it begins.
    void endSimulation();
    /// It has begun and not ended; maybe it pauses.
    bool isSimulation() const { return isPlayed; }

    ClassSet& classSet() { return set; }
    const ClassSet& classSet() const { return set; }

public Q_SLOTS:
    /// Connect to onlineReceived() of every logger: a row, or a block of them, whose first sample has the
    /// number `current` times the number of rows.
    void takeSamples(int slot, short current, const QVector<QVector<double>>& rows, int samplesWaiting);

Q_SIGNALS:
    /// A run of the class begins; the sets still have what they had.
    void begun();
    /// A row went into the set of logger `slot`, at its time there and arranged as its channels.
    void rowTaken(int slot, double time, const QVector<double>& values);
    /// While others go on, logger `slot` begins another experiment; its set still has what it had.
    void groupReplaced(int slot);
    /// The set of logger `slot` has been emptied for a new experiment.
    void experimentBegun(int slot);
    /// The set of logger `slot`, still empty, has the channels that the logger is set to.
    void channelsPlanned(int slot);
    /// The set of the class was.
    void classBegun();
    /// `waiting` more are behind them.
    void samplesTaken(int slot, int waiting);
    /// The computer is too slow for the stream.
    void tooSlow(int slot);
    /// The logger's second part in the run has other sensors than its first: what is there of both goes on.
    void sensorsChanged(int slot);
    /// It came back in the run that was stopped while it was away.
    void stopOwed(int slot);
    /// One that was given up has said something.
    void heardAgain(int slot);
    /// The logger has another phase.
    void phaseChanged(int slot);
    void ended();
    /// These ended a run that they stored and did not stream, a bit each.
    void storedRunsEnded(quint8 which);
    /// No more rows of it are taken.
    void simulationEnded();
    /// The run is over, and of what these streamed in it samples are missing that their memories have; a bit
    /// each.
    void gapsLeft(quint8 which);

private:
    struct Place
    {
        Phase phase = Phase::Idle;
        bool isOrdered = false; ///< this run of it was started by the program
        bool isGivenUp = false; ///< connected and silent; what it last said of itself may be over
        bool isStored = false;  ///< it stores this run and does not stream it
        bool isSeen = false;    ///< it has told that it runs
        bool owesStop = false;  ///< the class was stopped while it was away
        bool isAway = false;    ///< was lost, and no sample has come since
        bool hasGap = false;    ///< there are samples from while it was away
        int storedBefore = 0;   ///< experiments in its memory at the order
        int last = -1;          ///< number of the last sample
        qint64 shift = 0;       ///< added to the numbers: a second part follows the first
        qint64 zero = 0;        ///< time of sample 0, ms of `clock`
        QVector<int> origins;   ///< place in a row of the second part for each channel; empty: in order
        qint64 endedAt = 0;     ///< ms of `clock`
        QDateTime lost;
    };

    TembrinData* state(int slot) const;
    ExpData* data(int slot) const;
    void connectLogger(int slot);
    SensorList planned(int slot) const;
    void takeStatus(int slot);
    void goOn(int slot);
    bool wasSeen(int slot) const;
    bool isOfEarlierStop(int slot) const;
    void takeEnd(int slot);
    void takeLoss(int slot);
    bool isLate(const Place& place, int current) const;
    bool isNew(int slot, int number) const;
    bool isBackInTime(int slot, int number) const;
    bool isSecondPart(const Place& place, int number) const;
    bool isAlone(int slot) const;
    void beginExperiment(int slot, int number, const SensorList& channels);
    qint64 shiftOfOlderRun(const Place& place, int number, double dt) const;
    void beginSecondPart(int slot, int number);
    void followSensors(int slot);
    QVector<double> arranged(int slot, const QVector<double>& row) const;
    void beginRun();
    void clearPast(int slot);
    void setPhase(int slot, Phase phase);
    void endIfNobodyRuns();
    void endRun();
    void tellGaps();
    void showGap(int slot, double time, int channels);
    static QVector<int> originsOf(const ExpData& own, const SensorList& channels);

    multiConnectionsManager* manager;
    ClassSet set;
    Place places[mostLoggers];
    bool isOn = false;
    bool isStopped = false; ///< by a person
    bool isPlayed = false;
    quint8 storedRuns = 0;
    quint8 gaps = 0;
    QElapsedTimer clock;
    qint64 begunAt = 0;
    qint64 duration = 0;
    int taken = 0;
};

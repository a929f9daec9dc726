#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include "classroom/jobrunner.h"

/// Brings each logger of a class from chosen to talking. All are tried side by side and none holds up
/// another: a series on a logger is one attempt and up to ten further ones, after which it stays alone until
/// somebody asks again.
class LoggerConnector : public QObject
{
    Q_OBJECT

public:
    enum class State
    {
        Idle,    ///< not connected, and nobody tries
        Opening, ///< an attempt is under way
        Waiting, ///< the next attempt of the series is due
        Open,    ///< connected; it has not told what it is
        Silent,  ///< the same, for too long
        Known
    };

    /// The sessions by slot, not owned.
    explicit LoggerConnector(const ClassLoggers& loggers, QObject* parent = nullptr);
    /// Waits for the attempts under way.
    ~LoggerConnector() override;

    /// Slots from 0 on that are tried; further attempts on others are given up.
    void setInUse(int count);
    State state(int slot) const;
    bool isAnyOpening() const;
    /// A new series on every logger in use that is not connected, the first attempts 100 ms apart.
    void connectAll();
    /// A new series on one; a connection that stands is closed first. Nothing while an attempt is under way
    /// that nobody has cancelled.
    void connectLogger(int slot);
    /// Gives up the series on one; failed() follows. Nothing where none is under way.
    void cancel(int slot);
    /// How long the attempt under way has lasted, ms; -1 without one.
    qint64 msOpening(int slot) const;
    /// Tries one whose connection broke again and again, quietly, until it is there or `isOn` is false.
    void seek(int slot, bool isOn);
    bool isSought(int slot) const { return places[slot].isSought; }
    /// Closes all connections and cancels the attempts under way.
    void disconnectAll();
    /// Cancels the attempts and waits until no attempt is under way any more, `ms` at most for each: what a
    /// thread still uses must not go. False if one still is.
    bool waitForAttempts(unsigned long ms);

Q_SIGNALS:
    void opening(int slot);
    /// It is looked for from now on, or no longer; of its attempts nothing else is told.
    void seeking(int slot, bool isOn);
    /// The port is open, its listener there, and the logger is about to be asked what it is.
    void opened(int slot);
    /// An attempt failed; `isLast` when no other follows.
    void failed(int slot, bool isLast);
    /// It has been connected for some time and has not told what it is.
    void silent(int slot);

private:
    void attempt(int slot);
    void takeResult(int slot);
    void greet(int slot);
    void takeAnswer(int slot);
    void takeLoss(int slot);
    void takeRadio();
    void connectNext();

    struct Slot
    {
        bool isOpening = false;
        bool isSilent = false;
        bool isSought = false;
        bool isCancelled = false; ///< the attempt under way
        bool isWanted = false;    ///< nobody gave it up, so it is tried again when what hindered it has gone
        bool isNext = false;      ///< a new series follows the cancelled attempt
        int tries = 0;
        QElapsedTimer begun; ///< of the attempt under way
        QTimer retry;
        QTimer answer; ///< until a connected logger counts as silent
    };

    ClassLoggers loggers;
    Slot places[mostLoggers];
    int inUse = 0;
    int nextInSeries = 0;
    QTimer seriesTimer;
    QTimer radioTimer;       ///< what the radio tells comes in bursts
    bool isWatching = false; ///< from the first attempt on
};

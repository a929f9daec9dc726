#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QVector>

#include "classroom/jobrunner.h"

/// What the loggers of a class are told, in which order. Jobs wait their turn and none is dropped; each ends
/// with an outcome for every logger that it was for. A stop does not wait: it goes beside whatever is under
/// way, ends the starts that are still open, and nothing new begins before it is through. No window, no data:
/// who shows a job is told of it by value.
class CommandQueue : public QObject
{
    Q_OBJECT

public:
    /// The sessions by slot, not owned.
    explicit CommandQueue(const ClassLoggers& loggers, QObject* parent = nullptr);

    /// Slots from 0 on that jobs are for.
    void setInUse(int count) { inUse = count; }
    void setPacing(const JobPacing& newPacing);

    /// For all loggers in use that it can be for: connected ones, or ones that were connected before; a Vorta
    /// logger takes no setup, no configuration and has no memory; a download goes to those that have
    /// something stored. A job of the same task that still waits takes this one in. False, and nothing is
    /// done, if there is no logger for it.
    bool add(ClassJob::Task task);
    /// The same for some loggers, a bit each.
    bool add(ClassJob::Task task, quint8 which);
    /// One stored experiment of one logger, `number` from 1. False if it is not connected.
    bool addDownload(int slot, int number);
    /// Asks logger `slot` what it measures right now: at once or not at all, so that no job waits for it.
    /// Only an idle logger is asked, while nothing is at work or waits, and not again while the answer is
    /// under way. True if it was; TembrinData::newSnapReceived() is the answer.
    bool askValues(int slot);
    /// What is open of a task, at work or waiting, ends as cancelled.
    void cancel(ClassJob::Task task);

    /// Nothing is at work, and nothing waits.
    bool isIdle() const;
    /// A job of this task is at work or waits.
    bool has(ClassJob::Task task) const;
    /// It is at work or waits, and logger `slot` has no outcome yet.
    bool isOpen(ClassJob::Task task, int slot) const;
    /// A job of this task is at work.
    bool isWorking(ClassJob::Task task) const;
    /// Those at work first, then those that wait, in order.
    QVector<ClassJob> jobs() const;

Q_SIGNALS:
    /// Logger `slot` has, or no longer has, a command.
    void working(int slot, bool tf);
    /// Jobs, steps or outcomes are not what they were.
    void changed();
    void begun(ClassJob::Task task);
    void stepEnded(ClassJob::Task task, ClassJob::Step step);
    void ended(ClassJob job);

private:
    bool isFor(ClassJob::Task task, int slot) const;
    void enqueue(const ClassJob& job);
    void beginStop(const ClassJob& job);
    void goOn();
    void takeEnd(const ClassJob& job);
    void connectRunner(JobRunner* runner);
    void noteKnown(int slot) { known |= quint8(1u << slot); }

    ClassLoggers loggers;
    int inUse = 0;
    quint8 known = 0;     ///< a bit for each logger that was connected once
    quint8 stopAgain = 0; ///< a bit for each that came back during a stop, which was asked for again
    QVector<ClassJob> waiting;
    JobRunner work;
    JobRunner stop;
    QTimer goOnTimer;
    QElapsedTimer asked[mostLoggers]; ///< invalid unless an answer is awaited
};

#pragma once

#include <QObject>
#include <QThreadPool>
#include <QVector>

#include "persistence/journalfolder.h"

class QLabel;
class QMainWindow;
class QToolBar;

/// Runs that an earlier start of the program had to leave unsaved. It looks for their journals and offers one
/// after the other on a bar that stands in nobody's way.
class RunRecovery : public QObject
{
    Q_OBJECT

public:
    /// The bar appears at the lower edge of `window` when there is something to offer.
    explicit RunRecovery(QMainWindow* window);

    /// Looks on another thread; an hour's run takes its time.
    void look();
    /// No more searches; false if one is still at work after `ms`.
    bool finish(int ms);
    /// What is offered; only while something is.
    const FoundJournal& offered() const { return journals.constFirst(); }
    /// The offered one has been dealt with; the next has its turn.
    void next();
    /// "The run of 10:42".
    static QString nameOf(const JournalRun& run);
    /// "3 min 12 s".
    static QString durationText(int seconds);
    /// "8 groups, 3 min 12 s".
    static QString extentOf(const JournalRun& run);

Q_SIGNALS:
    void restoreWanted();

private:
    void take(const QVector<FoundJournal>& found);
    void createBar();
    void show();

    bool isFinished = false;
    QThreadPool searches; ///< none outlives this, and with it the locks of what it found
    QMainWindow* window;
    QToolBar* bar = nullptr;
    QLabel* text = nullptr;
    QVector<FoundJournal> journals;  ///< still to offer, and the one that is
    QVector<FoundJournal> postponed; ///< to the next start of the program
};

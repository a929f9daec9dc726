#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <functional>

#include "classroom/autorun.h"

class NewestValues;
class QLabel;
class QMainWindow;
class QPushButton;
class QToolBar;
class multiConnectionsManager;

/// Runs that begin and end by themselves: the question about them, the line in the window that says what is
/// waited for, and the loggers to AutoRun's logic.
class SelfRun : public QObject
{
    Q_OBJECT

public:
    /// `start` and `stop` do what a person does with Run and Stop, and `mayBegin` says whether a person
    /// could. Nothing is owned.
    SelfRun(multiConnectionsManager* manager, const std::function<void()>& start,
            const std::function<void()>& stop, const std::function<bool()>& mayBegin, QMainWindow* window);

    /// Asks for a plan; the one at work ends when there is another.
    void ask();
    void arm(const AutoRunPlan& plan, int sensorID);
    /// A person pressed Stop. False if there was nothing to give up.
    bool giveUp() { return logic.giveUp(); }
    /// It waits for something, and Stop ends that.
    bool isWaiting() const { return logic.state() == AutoRun::State::Waiting; }

Q_SIGNALS:
    void changed();
    void told(const QString& line);
    /// By the button of the line.
    void stopWanted();

private:
    AutoRun::World worldOf(const std::function<void()>& start, const std::function<void()>& stop);
    bool isComing(int slot) const;
    bool isFree() const;
    bool isEmptyRun() const;
    void takeChange();
    void createLine();
    void askValues();

    multiConnectionsManager* const manager;
    QMainWindow* const window;
    const std::function<void()> start;
    const std::function<bool()> mayBegin;
    NewestValues* newest = nullptr; ///< null until a level is watched
    int sensor = 0;
    AutoRun logic;
    bool wasWaiting = false;
    QElapsedTimer clock;
    QTimer ticks;
    QTimer asking;
    QToolBar* line = nullptr; ///< null until it is first shown
    QLabel* words = nullptr;
    QPushButton* runNow = nullptr;
    QPushButton* stop = nullptr;
};

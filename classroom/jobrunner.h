#pragma once

#include <QObject>
#include <QTimer>

#include <array>
#include <optional>

#include "classroom/classjob.h"
#include "common/classsize.h"
#include "link/commandtype.h"
#include "protocol/loggersettings.h"

class TembrinData;
class TembrinProtocol;

/// The sessions of a class by slot; none is owned.
using ClassLoggers = std::array<TembrinProtocol*, mostLoggers>;

/// How long the runner waits; milliseconds.
struct JobPacing
{
    int repeat = 5000;   ///< before an unanswered command is sent again
    int pause = 100;     ///< between two loggers, and before a repeat
    int startPause = 25; ///< between two starts
    int patience = 1000; ///< after which the next logger gets its turn beside one that has not answered
};

/// Carries out one job: tells the loggers in the order of its steps, takes their confirmations, asks again
/// those that are silent, three times in all, and gives every step an outcome. A download has the line for
/// itself; of any other task the next logger's turn comes when the one before has confirmed or has let the
/// others wait for too long. No logger holds up the job for ever.
class JobRunner : public QObject
{
    Q_OBJECT

public:
    JobRunner(const ClassLoggers& loggers, QObject* parent = nullptr);

    void setPacing(const JobPacing& newPacing) { pacing = newPacing; }
    bool isBusy() const { return isOn; }
    /// The present one; after its end the last one.
    const ClassJob& job() const { return present; }
    /// Only when not busy.
    void begin(const ClassJob& job);
    /// Tells those that have not confirmed once more, now.
    void repeatNow();
    /// Ends all that is open of the job; a download under way is broken off, and what came of it is dropped.
    void cancel();

Q_SIGNALS:
    /// Logger `slot` has, or no longer has, the command.
    void working(int slot, bool tf);
    /// A step has its outcome.
    void stepEnded(ClassJob::Task task, ClassJob::Step step);
    void ended(ClassJob job);

private:
    ClassJob::Step* openStep(int slot);
    TembrinData* stateOf(int slot) const;
    commandType command() const;
    bool isAlone() const { return present.task == ClassJob::Task::Download; }
    void connectLogger(int slot);
    void nextTurn();
    ClassJob::Reason obstacle(const ClassJob::Step& step) const;
    void turn(ClassJob::Step& step);
    void send(ClassJob::Step& step);
    void answerMissing(int slot);
    void takeAnswer(int slot, commandType cmd);
    bool isOwnWay(int slot);
    void takeStatus(int slot);
    void takeDownload(int slot, bool isGood);
    void takeRunning(int slot);
    void takeEndOfRun(int slot);
    void takeRefusal(int slot, int reason);
    void takeLoss(int slot);
    void askWhetherItRuns(ClassJob::Step& step);
    void tryAgain(ClassJob::Step& step, ClassJob::Reason reason);
    void repeat(int slot);
    void passOver(ClassJob::Step& step, ClassJob::Reason reason);
    void end(ClassJob::Step& step, ClassJob::Progress progress, ClassJob::Reason reason);
    void endIfDone();

    ClassLoggers loggers;
    JobPacing pacing;
    ClassJob present;
    bool isOn = false;
    int number = 0; ///< of the job, counted
    std::optional<LoggerSettings>
        otherAnswers[mostLoggers];   ///< a confirmation of something else than is wanted
    bool isAsked[mostLoggers] = {};  ///< whether it runs, after a start without an answer
    bool isSilent[mostLoggers] = {}; ///< was passed over, and has said nothing since
    bool isDownloadBad = false;
    QTimer turnTimer;
    QTimer answerTimers[mostLoggers];
    QTimer repeatTimers[mostLoggers];
};

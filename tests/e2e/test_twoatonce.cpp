#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QStatusBar>
#include <QTemporaryDir>

#include "classroom/loggerconnector.h"
#include "instruments/statusline.h"
#include "persistence/journalfolder.h"
#include "sensors/sensorids.h"
#include "tests/app/windowbench.h"
#include "virtual/rates.h"
#include "virtual/wire.h"

namespace {

enum Flow
{
    Connecting,
    Starting,
    Running,
    RunningVorta, ///< the second logger is a Vorta
    RunningFast,  ///< a run that is stored, and fetched by the program when it has ended
    Stopping,
    SettingUp,
    Configuring,
    Downloading,
    DownloadingOwn, ///< one logger's, in the choice of an experiment
    FetchingRun     ///< what a fast run has left
};

enum Moment
{
    Middle, ///< the second of three loggers has its turn; half of the samples are there
    Last    ///< the last one has; the last samples come
};

enum Event
{
    Nothing,
    StatusArrives,
    IsLost,
    ComesBack,
    FallsSilent,
    OwnKey,
    OwnKeyTwice, ///< stopped and started again
    KeyTurnsRate,
    IsPlugged,
    DialogOpens,
    RunClicked,
    StopClicked,
    SetupClicked,
    ConfigureClicked,
    DownloadClicked,
    IconClicked,
    FileOpens,
    SaveFails,
    ProgramEnds
};

constexpr int loggers = 3;
constexpr int patience = 15000; // ms that anything may take
constexpr int slowAnswer = 60;
constexpr int vortaBlock = 10; // samples, at 100/Sec

} // namespace

/// What the window does when two things happen at once. Whatever they are, in the end nothing is lost,
/// nothing is blocked, and a line on the screen names the group that something happened to.
class TestTwoAtOnce : public GuardedTest
{
    Q_OBJECT

    void begin() override { wrong.clear(); }
    void finish() override { bench.reset(); }

private Q_SLOTS:
    void nothingIsLostAndNothingBlocked_data();
    void nothingIsLostAndNothingBlocked();

private:
    // --- Waiting and looking ---

    bool wait(const std::function<bool()>& condition, const char* what, int ms = patience)
    {
        const bool isMet = QTest::qWaitFor(condition, ms);
        if (!isMet)
            wrong << QStringLiteral("no %1").arg(QLatin1String(what));
        return isMet;
    }
    void check(bool isTrue, const QString& what)
    {
        if (!isTrue)
            wrong << what;
    }
    bool canClick(const char* name) const
    {
        const QAction* action = bench->action(name);
        return action->isEnabled() && action->isVisible();
    }
    bool click(const char* name)
    {
        const bool can = canClick(name);
        if (can)
            bench->action(name)->trigger();
        return can;
    }
    void clickIcon(int i)
    {
        QTest::mouseClick(bench->window->findChild<QLabel*>(QStringLiteral("loggerIcon%1").arg(i + 1)),
                          Qt::LeftButton);
    }
    /// Clicks, and lets `hand` work in the dialog that opens; then it is closed. False if none opened.
    bool inDialog(const char* name, const std::function<void(QWidget*)>& hand)
    {
        QObject guard; // no dialog, no hand
        bool isOpen = false;
        QTimer::singleShot(0, &guard, [&] {
            QWidget* dialog = QApplication::activeModalWidget();
            if (!dialog)
                return;
            isOpen = true;
            hand(dialog);
            dialog->close();
        });
        click(name);
        return isOpen;
    }
    bool isThere(int i) const { return bench->manager->isTembrinConnect(i) && bench->isReady(i); }
    /// All that the window tells below the graphs and in boxes.
    QString told() const
    {
        const auto* line = bench->window->findChild<StatusLine*>();
        QStringList texts = bench->prompt.asked;
        texts << bench->window->statusBar()->currentMessage() << (line ? line->text() : QString());
        for (const QLabel* label : bench->window->statusBar()->findChildren<QLabel*>())
            texts << label->text();
        texts.removeAll(QString());
        return texts.join(QLatin1Char('\n'));
    }

    // --- The flows, up to the moment ---

    void reach(Flow flow, Moment moment);
    bool chooseRate()
    {
        return inDialog("basicSetupAct", [](QWidget* dialog) {
            dialog->findChild<QComboBox*>(QStringLiteral("comboRate"))
                ->setCurrentText(QStringLiteral("10/Sec"));
        });
    }
    bool turnSound()
    {
        return inDialog("advancedSetupAct", [](QWidget* dialog) {
            dialog->findChild<QCheckBox*>(QStringLiteral("boxSound"))->click();
        });
    }
    void slowDown(int ms)
    {
        for (int i = 0; i < loggers; ++i)
            bench->delay(i, ms);
    }
    /// Waits until logger i has heard a command of this code.
    void waitHeard(int i, int code)
    {
        wait([=] { return bench->heard(i, code) > 0; }, "command to the logger of the moment");
    }

    // --- The events, and how it must end ---

    void checkButtons(Flow flow);
    void happen(Event event, int who);
    void comeBack(int who);
    void settle();
    void checkSamples();
    void checkJournal();
    void checkChoice(Flow flow, int who, Event event);
    void checkAnotherRun();
    void runInAChild();

    QScopedPointer<WindowBench> bench;
    QTemporaryDir folder;
    QStringList wrong;
};

void TestTwoAtOnce::nothingIsLostAndNothingBlocked_data()
{
    columns<int, int, int, int>({"flow", "moment", "event", "who"});
    const auto add = [](Flow flow, Moment moment, Event event, int who, const char* name) {
        row(name, int(flow), int(moment), int(event), who);
    };
    add(Connecting, Middle, StatusArrives, 0, "connect: a status of one that is there");
    add(Connecting, Middle, IsLost, 1, "connect: the one whose turn it is is lost");
    add(Connecting, Middle, ComesBack, 1, "connect: it is lost and comes back");
    add(Connecting, Last, FallsSilent, 2, "connect: the last one says nothing any more");
    add(Connecting, Middle, OwnKey, 0, "connect: a pupil starts a run");
    add(Connecting, Middle, RunClicked, 0, "connect: run");
    add(Connecting, Last, IconClicked, 2, "connect: its icon is clicked");
    add(Connecting, Middle, DialogOpens, 0, "connect: a dialog");
    add(Connecting, Middle, ProgramEnds, 0, "connect: the program is left");

    add(Starting, Middle, StatusArrives, 2, "start: a status of one that waits");
    add(Starting, Middle, IsLost, 2, "start: one that waits is lost");
    add(Starting, Last, IsLost, 2, "start: the last one is lost");
    add(Starting, Middle, ComesBack, 2, "start: one is lost and comes back");
    add(Starting, Last, FallsSilent, 2, "start: the last one says nothing any more");
    add(Starting, Middle, OwnKey, 2, "start: a pupil is quicker");
    add(Starting, Middle, StopClicked, 0, "start: stop");
    add(Starting, Middle, SetupClicked, 0, "start: setup");
    add(Starting, Middle, ProgramEnds, 0, "start: the program is left");

    add(Running, Middle, StatusArrives, 1, "run: a status");
    add(Running, Middle, IsLost, 1, "run: one is lost");
    add(Running, Middle, IsLost, 0, "run: the first is lost");
    add(Running, Middle, ComesBack, 1, "run: one is lost and comes back");
    add(Running, Middle, FallsSilent, 1, "run: one says nothing any more");
    add(Running, Middle, OwnKey, 1, "run: a pupil stops");
    add(Running, Middle, OwnKeyTwice, 1, "run: a pupil stops and starts again");
    add(Running, Middle, IsPlugged, 2, "run: a plug is pulled");
    add(Running, Middle, DialogOpens, 0, "run: a dialog");
    add(Running, Middle, StopClicked, 0, "run: stop");
    add(Running, Middle, SetupClicked, 0, "run: setup");
    add(Running, Middle, ConfigureClicked, 0, "run: configuration");
    add(Running, Middle, DownloadClicked, 0, "run: download");
    add(Running, Middle, IconClicked, 1, "run: an icon is clicked");
    add(Running, Middle, FileOpens, 0, "run: a file is opened");
    add(Running, Middle, SaveFails, 0, "run: a write fails");
    add(Running, Middle, ProgramEnds, 0, "run: the program is left");
    add(Running, Last, StopClicked, 0, "last samples: stop");
    add(Running, Last, IsLost, 1, "last samples: one is lost");
    add(Running, Last, OwnKey, 1, "last samples: a pupil stops");

    add(RunningVorta, Middle, StatusArrives, 1, "Vorta: a status");
    add(RunningVorta, Middle, StopClicked, 0, "Vorta: stop");
    add(RunningVorta, Middle, OwnKey, 1, "Vorta: a pupil stops");
    add(RunningVorta, Middle, IsLost, 1, "Vorta: it is lost");
    add(RunningVorta, Middle, ComesBack, 1, "Vorta: it is lost and comes back");
    add(RunningVorta, Middle, FallsSilent, 1, "Vorta: it says nothing any more");

    add(RunningFast, Middle, IsLost, 1, "fast run: one is lost");
    add(RunningFast, Middle, StatusArrives, 1, "fast run: a status");
    add(RunningFast, Middle, StopClicked, 0, "fast run: stop");
    add(RunningFast, Middle, OwnKey, 1, "fast run: a pupil stops");
    add(RunningFast, Middle, FallsSilent, 2, "fast run: one says nothing any more");

    add(Stopping, Middle, StatusArrives, 2, "stop: a status of one that waits");
    add(Stopping, Middle, IsLost, 1, "stop: the one whose turn it is is lost");
    add(Stopping, Last, IsLost, 2, "stop: the last one is lost");
    add(Stopping, Middle, ComesBack, 1, "stop: it is lost and comes back");
    add(Stopping, Middle, FallsSilent, 1, "stop: it says nothing any more");
    add(Stopping, Middle, OwnKey, 2, "stop: a pupil is quicker");
    add(Stopping, Middle, StopClicked, 0, "stop: again");
    add(Stopping, Last, RunClicked, 0, "stop: run");
    add(Stopping, Middle, ConfigureClicked, 0, "stop: configuration");

    add(SettingUp, Middle, StatusArrives, 2, "setup: a status of one that waits");
    add(SettingUp, Middle, IsLost, 1, "setup: the one whose turn it is is lost");
    add(SettingUp, Last, IsLost, 2, "setup: the last one is lost");
    add(SettingUp, Middle, ComesBack, 1, "setup: it is lost and comes back");
    add(SettingUp, Middle, FallsSilent, 1, "setup: it says nothing any more");
    add(SettingUp, Middle, OwnKey, 0, "setup: a pupil starts a run");
    add(SettingUp, Middle, KeyTurnsRate, 2, "setup: a pupil turns the rate of one that waits");
    add(SettingUp, Middle, IsPlugged, 2, "setup: a plug is put in");
    add(SettingUp, Middle, RunClicked, 0, "setup: run");
    add(SettingUp, Middle, SetupClicked, 0, "setup: again");
    add(SettingUp, Middle, ConfigureClicked, 0, "setup: configuration");
    add(SettingUp, Middle, DownloadClicked, 0, "setup: download");
    add(SettingUp, Middle, ProgramEnds, 0, "setup: the program is left");

    add(Configuring, Middle, StatusArrives, 2, "configuration: a status of one that waits");
    add(Configuring, Middle, IsLost, 1, "configuration: the one whose turn it is is lost");
    add(Configuring, Middle, FallsSilent, 1, "configuration: it says nothing any more");
    add(Configuring, Middle, SetupClicked, 0, "configuration: setup");
    add(Configuring, Last, ConfigureClicked, 0, "configuration: again");

    add(Downloading, Middle, StatusArrives, 1, "download: a status in the middle of it");
    add(Downloading, Middle, IsLost, 1, "download: the one whose turn it is is lost");
    add(Downloading, Last, IsLost, 2, "download: the last one is lost");
    add(Downloading, Middle, FallsSilent, 1, "download: it says nothing any more");
    add(Downloading, Middle, OwnKey, 2, "download: a pupil starts a run");
    add(Downloading, Last, IsPlugged, 2, "download: a plug is put in");
    add(Downloading, Middle, ConfigureClicked, 0, "download: configuration");
    add(Downloading, Middle, DownloadClicked, 0, "download: again");
    add(Downloading, Middle, FileOpens, 0, "download: a file is opened");
    add(Downloading, Middle, ProgramEnds, 0, "download: the program is left");

    add(DownloadingOwn, Middle, IsLost, 0, "choice of an experiment: the logger is lost");
    add(DownloadingOwn, Middle, FallsSilent, 0, "choice of an experiment: it says nothing any more");
    add(DownloadingOwn, Middle, OwnKey, 1, "choice of an experiment: a pupil starts a run");
    add(FetchingRun, Middle, IsLost, 1, "after a fast run: one is lost");
    add(FetchingRun, Middle, ConfigureClicked, 0, "after a fast run: configuration");
    add(FetchingRun, Middle, OwnKey, 2, "after a fast run: a pupil starts a run");
}

void TestTwoAtOnce::nothingIsLostAndNothingBlocked()
{
    const auto [flowNumber, momentNumber, eventNumber, who] =
        fetched<int, int, int, int>({"flow", "moment", "event", "who"});
    const auto flow = Flow(flowNumber);
    const auto event = Event(eventNumber);
    guard->expect(QStringLiteral("open failed"));
    guard->expect(QStringLiteral("Not a JPEG file")); // in the file that is opened
    if (event == ProgramEnds && qEnvironmentVariableIsEmpty("PELLANDRA_LEAVES")) {
        runInAChild();
        return;
    }
    const bool isStored = flow == Downloading || flow == DownloadingOwn;
    const bool isVorta = flow == RunningVorta;
    const bool isFast = flow == RunningFast || flow == FetchingRun;
    const char* rate = isFast ? "1000/Sec" : "100/Sec";
    QVector<LoggerIdentity> identities;
    for (const char* model : {"Birch", isVorta ? "Vorta" : "Fjord", "Dune"})
        identities.append(VirtualBench::identity(model, rate, flow == Running ? 100 : 1000, isStored ? 2 : 0,
                                                 isFast ? 402 : 405));
    bench.reset(new WindowBench(identities));
    reach(flow, Moment(momentNumber));
    if (flow != DownloadingOwn) {
        checkButtons(flow);
        happen(event, who);
    }
    slowDown(0);
    settle();
    const bool isBackInTime = event == ComesBack && flow == Connecting;
    if ((event == IsLost || event == FallsSilent || event == ComesBack) && !isBackInTime &&
        !wait([=, i = who] { return told().contains(VirtualBench::group(i)); }, "group's name"))
        wrong << told();
    checkSamples();
    checkJournal();
    checkChoice(flow, who, event);
    checkAnotherRun();
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(QStringLiteral("; "))));
}

void TestTwoAtOnce::reach(Flow flow, Moment moment)
{
    const int turn = moment == Middle ? 1 : 2;
    if (flow == Connecting) {
        slowDown(150);
        waitHeard(turn, Wire::SensorIds);
        return;
    }
    wait([this] { return isThere(0) && isThere(1) && isThere(2); }, "class");
    for (int i = 0; i < loggers; ++i)
        wait([=] { return bench->state(i)->isVorta() || bench->heard(i, Wire::SetClock) > 0; },
             "last word of a session's beginning");
    wait([this] { return canClick("runAct"); }, "run button");
    bench->forgetHeard();
    slowDown(flow == Running || flow == RunningVorta || flow == RunningFast ? 0 : slowAnswer);
    switch (flow) {
    case Connecting:
        break;
    case Starting:
        click("runAct");
        waitHeard(turn, Wire::Start);
        break;
    case Running:
        click("runAct");
        wait([=] { return bench->samples(2).size() >= (moment == Middle ? 30 : 85); }, "samples");
        break;
    case RunningVorta:
        click("runAct");
        wait([=] { return bench->samples(1).size() >= 20; }, "samples");
        break;
    case RunningFast:
        click("runAct");
        waitHeard(2, Wire::Start);
        break;
    case Stopping:
        click("runAct");
        wait([=] { return bench->samples(2).size() >= 10; }, "samples");
        click("stopAct");
        waitHeard(turn, Wire::Stop);
        break;
    case SettingUp:
        check(chooseRate(), QStringLiteral("no setup dialog"));
        waitHeard(turn, Wire::LoggingSetup);
        break;
    case Configuring:
        check(turnSound(), QStringLiteral("no configuration dialog"));
        waitHeard(turn, Wire::Configure);
        break;
    case Downloading:
        click("downloadAct");
        waitHeard(turn, Wire::NextPacket);
        break;
    case DownloadingOwn:
        inDialog("selectExperimentAct", [this](QWidget* dialog) {
            auto* start = dialog->findChild<QPushButton*>(QStringLiteral("pushDownload"));
            wait([=] { return start->isEnabled(); }, "table of experiments");
            QTest::mouseClick(start, Qt::LeftButton);
            waitHeard(0, Wire::NextPacket);
            QFETCH(int, event);
            QFETCH(int, who);
            happen(Event(event), who);
            slowDown(0);
            wait([=] { return !bench->manager->isSending(CMD_DOWNLOAD_STORED_DATA); }, "end of the download");
        });
        break;
    case FetchingRun:
        click("runAct");
        waitHeard(turn, Wire::NextPacket);
        break;
    }
}

/// While anything runs or is under way.
void TestTwoAtOnce::checkButtons(Flow flow)
{
    if (flow == Connecting)
        return;
    check(!canClick("downloadAct") && !canClick("selectExperimentAct"), QStringLiteral("a download offered"));
    if (flow == Starting || flow == Running || flow == RunningVorta || flow == RunningFast)
        check(canClick("stopAct"), QStringLiteral("no stop offered"));
    else
        check(!bench->window->findChild<StatusLine*>()->waiting().isEmpty(), QStringLiteral("no word of it"));
}

void TestTwoAtOnce::happen(Event event, int who)
{
    const auto ask = [](VirtualLogger& logger, qint64 now) {
        return logger.receive(QByteArray::fromHex("47141095"), now);
    };
    switch (event) {
    case Nothing:
        break;
    case StatusArrives:
        bench->act(who, ask);
        break;
    case IsLost:
        bench->pull(who);
        wait([=] { return !bench->manager->isTembrinConnect(who); }, "loss");
        break;
    case ComesBack:
        comeBack(who);
        break;
    case FallsSilent:
        bench->setDead(who);
        break;
    case OwnKey:
        if (bench->isRunning(who))
            bench->pressStop(who);
        else
            bench->pressStart(who);
        break;
    case OwnKeyTwice:
        bench->pressStop(who);
        wait([=] { return bench->state(who)->isIdle(); }, "word of the stop");
        bench->pressStart(who);
        break;
    case KeyTurnsRate:
        bench->chooseRate(who, "1/Sec");
        break;
    case IsPlugged:
        bench->plug(who, 0, QUELLMARK_FIRST);
        QTest::qWait(20);
        bench->plug(who, 0, 0);
        break;
    case DialogOpens:
        inDialog("advancedSetupAct", [](QWidget*) { QTest::qWait(100); });
        break;
    case RunClicked:
        click("runAct");
        break;
    case StopClicked:
        click("stopAct");
        break;
    case SetupClicked:
        inDialog("basicSetupAct", [](QWidget*) {});
        break;
    case ConfigureClicked:
        turnSound();
        break;
    case DownloadClicked:
        click("downloadAct");
        break;
    case IconClicked:
        clickIcon(who);
        break;
    case FileOpens:
        bench->prompt.file = QStringLiteral(EXPERIMENT_FILE);
        bench->prompt.answer = UserPrompt::Answer::No; // to save the run first
        check(click("openAct"), QStringLiteral("open can't be clicked"));
        break;
    case SaveFails:
        bench->prompt.file = folder.filePath(QStringLiteral("none/a.xml"));
        check(click("saveAct"), QStringLiteral("save can't be clicked"));
        check(told().contains(QLatin1String("File not saved")), QStringLiteral("no word of the failure"));
        break;
    case ProgramEnds:
        bench->prompt.answer = UserPrompt::Answer::No;
        bench->prompt.confirmed = true; // though the loggers go on
        click("exitAct");
        wrong << QStringLiteral("the program goes on");
        break;
    }
}

void TestTwoAtOnce::comeBack(int who)
{
    bench->pull(who);
    wait([=] { return !bench->manager->isTembrinConnect(who); }, "loss");
    bench->putBack(who);
    if (bench->manager->connector().state(who) == LoggerConnector::State::Idle)
        clickIcon(who);
    wait([=] { return isThere(who); }, "return");
}

/// Whatever still runs is stopped; then everything can be clicked again.
void TestTwoAtOnce::settle()
{
    const auto isAnyRunning = [this] {
        for (int i = 0; i < loggers; ++i) {
            if (isThere(i) && !bench->isDead(i) && bench->isRunning(i))
                return true;
        }
        return false;
    };
    // A logger's last words may be on their way.
    QTest::qWait(2 * slowAnswer);
    if (isAnyRunning()) {
        wait([=] { return canClick("stopAct") || !isAnyRunning(); }, "stop while one runs");
        QFETCH(int, flow);
        if (flow == Running)
            wait([=] { return !isAnyRunning(); }, "end of the run by itself");
    }
    click("stopAct"); // a silent one may run for ever
    wait([=] { return !isAnyRunning(); }, "end of all runs");
    wait(
        [=] {
            return canClick("runAct") && canClick("basicSetupAct") && canClick("downloadAct") &&
                   canClick("advancedSetupAct");
        },
        "way to go on");
}

/// Each sample that came while the program was connected stands under its number.
void TestTwoAtOnce::checkSamples()
{
    QFETCH(int, flow);
    QFETCH(int, event);
    QFETCH(int, who);
    if (flow == RunningFast || flow == FetchingRun || flow == Downloading || flow == DownloadingOwn)
        return;
    for (int i = 0; i < loggers; ++i) {
        const ExpData* set = bench->data(i);
        VirtualBench::Rows rows = bench->samples(i);
        const bool isVorta = bench->state(i)->isVorta();
        QMap<int, QVector<double>> stored;
        for (int k = 0; k < set->getXSize(); ++k) {
            if (isVorta && std::isnan(set->getYNoConvAt(0, k)))
                continue; // the gap
            QVector<double>& values = stored[qRound(set->getXAt(k) / set->dt)];
            for (int channel = 0; channel < set->getNSens(); ++channel)
                values.append(set->getYNoConvAt(channel, k));
        }
        // The second part follows the first.
        const VirtualBench::Rows first =
            event == OwnKeyTwice && bench->runs(i) > 1 ? bench->samples(i, 1) : VirtualBench::Rows();
        if (!first.isEmpty()) {
            check(stored.values().mid(0, first.size()) == first.values() &&
                      stored.values().mid(first.size()) == rows.values(),
                  QStringLiteral("not both parts are stored"));
            continue;
        }
        // What did not arrive is in the memory of a logger that is back.
        if ((event == ComesBack || event == IconClicked) && i == who && !isVorta)
            rows = bench->taken(i);
        // A Vorta logger does not say which samples it has sent while it was away, and a block that comes
        // before its first word can't be read.
        const int unread = isVorta && event == ComesBack ? rows.size() - stored.size() : 0;
        check(isVorta ? stored.size() == rows.size() || unread == vortaBlock : stored == rows,
              QStringLiteral("%1: %2 samples came, %3 are stored")
                  .arg(VirtualBench::group(i))
                  .arg(rows.size())
                  .arg(stored.size()));
    }
}

/// After a crash now the next start would have all that the sets have.
void TestTwoAtOnce::checkJournal()
{
    const auto text = [](const QVector<double>& values) {
        QString text;
        for (const double value : values)
            text += QString::number(value, 'g', 17) + QLatin1Char(' ');
        return text;
    };
    const auto isKept = [&] {
        const QDir journals(JournalFolder::path());
        const QString newest =
            journals.entryList({QStringLiteral("*.journal")}, QDir::Files, QDir::Time).value(0);
        JournalRun run;
        QString reason;
        if (!JournalReader::read(journals.filePath(newest), JournalReader::What::Samples, &run, &reason))
            return false;
        return std::all_of(
            run.experiments.begin(), run.experiments.end(), [&](const JournalExperiment& kept) {
                const ExpData* set = bench->data(kept.head.slot);
                bool isSame = text(kept.times) == text(set->getX());
                for (int channel = 0; channel < kept.columns.size(); ++channel)
                    isSame = isSame && text(kept.columns[channel]) == text(set->getYNoConv(channel));
                return isSame;
            });
    };
    QFETCH(int, flow);
    if (flow == Running || flow == RunningVorta || flow == Stopping)
        wait(isKept, "journal with all samples", 2000);
}

/// What was chosen is what every logger that was there all the time has heard.
void TestTwoAtOnce::checkChoice(Flow flow, int who, Event event)
{
    const bool isAway = event == IsLost || event == FallsSilent || event == ComesBack;
    const int wanted = LoggerRates::find(QStringLiteral("10/Sec"), 0, 4, 5);
    for (int i = 0; i < loggers; ++i) {
        if (isAway && i == who)
            continue;
        const LoggerIdentity& self = bench->logger(i).identity();
        if (flow == SettingUp && event != OwnKey)
            check(self.rate == wanted,
                  QStringLiteral("%1 has rate %2").arg(VirtualBench::group(i)).arg(self.rate));
        if (flow == Configuring && event != ConfigureClicked)
            check(bench->configuration(i).flags >= 0 && bench->configuration(i) == bench->configuration(0),
                  QStringLiteral("%1 is configured otherwise").arg(VirtualBench::group(i)));
    }
}

void TestTwoAtOnce::checkAnotherRun()
{
    QVector<int> before;
    for (int i = 0; i < loggers; ++i)
        before.append(bench->runs(i));
    check(click("runAct"), QStringLiteral("run can't be clicked"));
    for (int i = 0; i < loggers; ++i) {
        if (isThere(i) && !bench->isDead(i))
            wait([=] { return bench->isRunning(i) || bench->runs(i) > before[i]; }, "other run");
    }
    wait([=] { return canClick("stopAct"); }, "stop of the other run");
    click("stopAct");
    // One that was silent at the stop is seen to run when it is heard again; then Stop is there to press
    // again.
    const auto isOver = [=] { return canClick("runAct"); };
    if (!QTest::qWaitFor(isOver, patience / 4)) {
        check(click("stopAct"), QStringLiteral("stop can't be pressed again"));
        wait(isOver, "run after the other run");
    }
}

/// The program ends without a crash and in time, from wherever it was.
void TestTwoAtOnce::runInAChild()
{
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PELLANDRA_LEAVES"), QStringLiteral("1"));
    child.setProcessEnvironment(environment);
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("nothingIsLostAndNothingBlocked:") + QLatin1String(QTest::currentDataTag())});
    QVERIFY(child.waitForFinished(60000));
    const QByteArray output = child.readAll();
    QVERIFY2(child.exitStatus() == QProcess::NormalExit && child.exitCode() == 0, output);
    QVERIFY2(!output.contains("FAIL") && !output.contains("Totals"), output);
}

QTEST_MAIN(TestTwoAtOnce)
#include "test_twoatonce.moc"

#include <QSignalSpy>

#include "classroom/commandqueue.h"
#include "classroom/jobtexts.h"
#include "classroom/loggerconnector.h"
#include "tests/classroom/managerbench.h"
#include "virtual/wire.h"

using Task = ClassJob::Task;

/// Commands to a class: their order, and what comes of them.
class TestManager : public GuardedTest
{
    Q_OBJECT

    static QVector<LoggerIdentity> loggers(int count, int stored = 0)
    {
        return QVector<LoggerIdentity>(count, VirtualBench::identity("Birch", "10/Sec", 100, stored));
    }

    void use(ManagerBench* bench)
    {
        trace.clear();
        ends.clear();
        connect(&bench->manager, &multiConnectionsManager::setBTComm, this, [this](int index, bool tf) {
            trace << QStringLiteral("%1%2").arg(tf ? QStringLiteral("+") : QStringLiteral("-")).arg(index);
        });
        connect(&bench->manager, &multiConnectionsManager::startSendCommandToAll, this,
                [this](commandType cmd) { trace << QStringLiteral("start %1").arg(cmd); });
        connect(&bench->manager, &multiConnectionsManager::doneSendCommandToAll, this,
                [this] { trace << QStringLiteral("done"); });
        connect(&bench->manager.queue(), &CommandQueue::ended, this, [this](const ClassJob& job) {
            ends << JobTexts::outcome(job, [](int slot) { return VirtualBench::group(slot); });
        });
    }
    QString told() const { return trace.join(QLatin1Char(' ')); }

private Q_SLOTS:
    void aCommandGoesFromLoggerToLogger_data()
    {
        columns<QVector<int>, QString>({"away", "expected"});
        row("all", QVector<int>{}, "start 4 +0 -0 +1 -1 +2 -2 done");
        row("the middle one is away", QVector<int>{1}, "start 4 +0 -0 +2 -2 done");
        row("the first one is away", QVector<int>{0}, "start 4 +1 -1 +2 -2 done");
        row("nobody", QVector<int>{0, 1, 2}, "");
    }

    void aCommandGoesFromLoggerToLogger()
    {
        QFETCH(QVector<int>, away);
        ManagerBench bench(loggers(3));
        for (int i = 0; i < 3; ++i) {
            if (!away.contains(i))
                bench.open(i);
        }
        for (int i = 0; i < 3; ++i)
            QTRY_VERIFY(away.contains(i) || bench.isReady(i));
        use(&bench);
        bench.manager.sendCmdToAll(CMD_STOP_LOGGING);
        QTRY_VERIFY(bench.manager.queue().isIdle());
        QTEST(told(), "expected");
        for (int i = 0; i < 3; ++i)
            QCOMPARE(bench.heard(i, Wire::Stop), away.contains(i) ? 0 : 1);
        QCOMPARE(ends.join(QString()), QString()); // who was never there is not missed
    }

    void nothingTakesOverAndNothingIsDropped()
    {
        ManagerBench bench(loggers(2, 1));
        bench.openAll();
        use(&bench);
        for (commandType cmd : {CMD_CONFIGURE_TEMBRIN, CMD_TEMBRIN_LOGGING_SETUP, CMD_DOWNLOAD_STORED_DATA})
            bench.manager.sendCmdToAll(cmd);
        bench.manager.sendCmdToAll(CMD_TEMBRIN_LOGGING_SETUP); // waits already
        bench.manager.sendCmdToAll(CMD_STOP_LOGGING);          // does not wait
        QTRY_VERIFY_WITH_TIMEOUT(bench.manager.queue().isIdle(), 8000);
        QCOMPARE(told().count(QStringLiteral("done")), 4);
        for (int i : {0, 1}) {
            for (int code : {Wire::Configure, Wire::LoggingSetup, Wire::Download, Wire::Stop})
                QCOMPARE(bench.heard(i, code), 1);
        }
        QVERIFY(trace.indexOf(QStringLiteral("start 17")) < trace.indexOf(QStringLiteral("start 2")));
        QVERIFY(trace.indexOf(QStringLiteral("start 2")) < trace.indexOf(QStringLiteral("start 5")));
    }

    void whoDoesNotConfirmIsNamed_data()
    {
        columns<int, QString, QString>({"command", "fault", "outcome"});
        row("a stop that is not heard", int(CMD_STOP_LOGGING), "dead",
            "Not stopped: Group B (does not answer).");
        row("a setup that is not heard", int(CMD_TEMBRIN_LOGGING_SETUP), "dead",
            "Not set up: Group B (does not answer).");
        row("a start that is not heard", int(CMD_START_LOGGING), "dead",
            "Not started: Group B (does not answer).");
        row("a request that is not heard", int(CMD_DOWNLOAD_STORED_DATA), "dead",
            "No experiment could be fetched from Group B (does not answer).");
        row("lost before its turn", int(CMD_CONFIGURE_TEMBRIN), "lost",
            "Not configured: Group B (connection lost).");
        row("it runs", int(CMD_TEMBRIN_LOGGING_SETUP), "runs", "Not set up: Group B (is running).");
        row("lost at its turn", int(CMD_TEMBRIN_LOGGING_SETUP), "lost at its turn",
            "Not set up: Group B (connection lost).");
        row("a download without it", int(CMD_DOWNLOAD_STORED_DATA), "lost", "");
        row("a download that breaks off", int(CMD_DOWNLOAD_STORED_DATA), "dead in between",
            "No experiment could be fetched from Group B (does not answer).");
        row("lost answers", int(CMD_TEMBRIN_LOGGING_SETUP), "deaf twice", "");
        row("too many lost answers", int(CMD_TEMBRIN_LOGGING_SETUP), "deaf thrice",
            "Not set up: Group B (does not answer).");
    }

    void whoDoesNotConfirmIsNamed()
    {
        const auto [command, fault] = fetched<int, QString>({"command", "fault"});
        ManagerBench bench(loggers(3, 1));
        bench.openAll();
        use(&bench);
        if (fault == QLatin1String("dead"))
            bench.setDead(1);
        else if (fault == QLatin1String("lost"))
            bench.pull(1);
        else if (fault == QLatin1String("deaf twice"))
            bench.dropAnswers(1, 2);
        else if (fault == QLatin1String("deaf thrice"))
            bench.dropAnswers(1, 3);
        if (fault == QLatin1String("lost at its turn"))
            bench.manager.setPacing(60000, 5); // nobody waits for it
        if (fault.endsWith(QLatin1String("turn")) || fault.endsWith(QLatin1String("between")))
            bench.delay(1, 50);
        QTRY_VERIFY(bench.manager.isTembrinConnect(1) != (fault == QLatin1String("lost")));
        if (fault == QLatin1String("runs")) {
            bench.pressStart(1);
            QTRY_VERIFY(bench.manager.isRunning(1));
        }
        bench.manager.sendCmdToAll(commandType(command));
        if (fault == QLatin1String("lost at its turn")) {
            QTRY_COMPARE(bench.heard(1, Wire::LoggingSetup), 1);
            bench.pull(1);
        } else if (fault == QLatin1String("dead in between")) {
            QTRY_VERIFY(bench.heard(1, Wire::NextPacket) > 0);
            bench.setDead(1);
        }
        QTRY_VERIFY_WITH_TIMEOUT(bench.manager.queue().isIdle(), 8000);
        QTEST(ends.join(QString()), "outcome");
        for (int i : {0, 2})
            QVERIFY(!bench.heard(i).isEmpty());
        if (fault.startsWith(QLatin1String("deaf")))
            QCOMPARE(bench.heard(1, Wire::LoggingSetup), 3);
    }

    void whoIsHeardAgainIsAskedAsOftenAsAnybody()
    {
        ManagerBench bench(loggers(1));
        bench.openAll();
        use(&bench);
        bench.setDead(0);
        bench.manager.sendCmdToAll(CMD_STOP_LOGGING);
        QTRY_COMPARE(ends, QStringList("Not stopped: Group A (does not answer)."));
        LoggerSettings plan = bench.state(0)->reported();
        plan.samples = 0;
        bench.session(0)->wantSetup(plan);
        bench.setDead(0, false);
        bench.session(0)->sendCommand(CMD_GET_TEMBRIN_STATUS);
        QTRY_VERIFY(bench.session(0)->isSetupConfirmed()); // caught up by its first word
        QTRY_VERIFY(bench.manager.queue().isIdle());
        bench.dropAnswers(0, 1);
        bench.manager.sendCmdToAll(CMD_STOP_LOGGING);
        QTRY_COMPARE(ends.value(2, QStringLiteral("-")), QString());
    }

    void anAnswerToAnEarlierSetupConfirmsNoOther()
    {
        ManagerBench bench(loggers(1));
        bench.openAll();
        bench.manager.setPacing(400, 5);
        bench.delay(0, 50);
        LoggerSettings plan = bench.state(0)->reported();
        for (const short samples : {0, 1}) {
            plan.samples = samples;
            bench.session(0)->wantSetup(plan);
            bench.manager.sendCmdToAll(CMD_TEMBRIN_LOGGING_SETUP);
        }
        QTRY_VERIFY(bench.manager.queue().isIdle());
        QCOMPARE(bench.setup(0).samples, 1);
        QCOMPARE(int(bench.state(0)->reported().samples), 1);
    }

    void anAttemptEndsWhatWasDueBeforeIt()
    {
        guard->expect(QStringLiteral("open failed"));
        ManagerBench bench(loggers(2));
        LoggerConnector& connector = bench.manager.connector();
        QSignalSpy opened(&connector, &LoggerConnector::opened);
        bench.pull(0);
        bench.open(0);
        QTRY_COMPARE(connector.state(0), LoggerConnector::State::Waiting);
        bench.putBack(0);
        bench.open(0);
        QTRY_VERIFY(bench.isReady(0));
        bench.open(1);
        bench.manager.setDefTembrins(1); // it is nobody's any more when its port is open
        QTRY_VERIFY(!connector.isAnyOpening());
        QVERIFY(!bench.manager.isTembrinConnect(1));
        QVERIFY(!opened.wait(150));
        QCOMPARE(opened.size(), 1);
        bench.open(0); // and the sessions go while it is under way
    }

    void whatHindersTheRadioIsWaitedFor()
    {
        guard->expect(QStringLiteral("open failed"));
        ManagerBench bench(loggers(2));
        PortFailure hindrance = PortFailure::NoService;
        std::function<void()> changed;
        PortDiscovery discovery;
        discovery.pairedDevices = [] { return QVector<possibleDevice>(); };
        discovery.bluetooth = [&] { return BluetoothState{hindrance, {}}; };
        discovery.watch = [&](QObject*, const std::function<void()>& tell) { changed = tell; };
        const SerialPortFactory working = bench.factory();
        const auto broken = [&](const QString& name, SerialPort::QueryMode mode) {
            auto port = working(name, mode);
            static_cast<FakePort*>(port.get())->failOpen(QStringLiteral("no"), PortFailure::NoService);
            return port;
        };
        for (int i = 0; i < 2; ++i) {
            bench.session(i)->setPortDiscovery(discovery);
            bench.session(i)->setPortFactory(broken);
        }
        LoggerConnector& connector = bench.manager.connector();
        QSignalSpy failed(&connector, &LoggerConnector::failed);
        connector.connectAll();
        QTRY_COMPARE(failed, (QList<QVariantList>{{0, true}, {1, true}})); // one attempt each
        connector.cancel(1);
        changed(); // nothing that helps
        QVERIFY(!failed.wait(500));
        hindrance = PortFailure::None;
        for (int i = 0; i < 2; ++i)
            bench.session(i)->setPortFactory(working);
        for (int i = 0; i < 3; ++i)
            changed();
        QTRY_VERIFY(bench.isReady(0));
        QCOMPARE(connector.state(1), LoggerConnector::State::Idle); // given up by hand
    }

    void aCallInVainIsCancelled()
    {
        guard->expect(QStringLiteral("open failed"));
        ManagerBench bench(loggers(1));
        const SerialPortFactory working = bench.factory();
        bench.session(0)->setPortFactory([&](const QString& name, SerialPort::QueryMode mode) {
            auto port = working(name, mode);
            static_cast<FakePort*>(port.get())->callInVain();
            return port;
        });
        LoggerConnector& connector = bench.manager.connector();
        QSignalSpy failed(&connector, &LoggerConnector::failed);
        bench.open(0);
        connector.cancel(0);
        QTRY_COMPARE(failed, (QList<QVariantList>{{0, true}}));
        QCOMPARE(bench.session(0)->failure, PortFailure::Cancelled);
        bench.open(0);
        connector.disconnectAll(); // another choice of loggers, and at once the next series
        bench.session(0)->setPortFactory(working);
        bench.open(0);
        QTRY_VERIFY(bench.isReady(0));
    }

    void whatWasMissedIsCaughtUp()
    {
        ManagerBench bench(loggers(2));
        bench.openAll();
        use(&bench);
        LoggerSettings plan = bench.state(1)->reported();
        plan.samples = 0;
        bench.pull(1);
        bench.session(1)->wantSetup(plan);
        bench.manager.sendCmdToAll(CMD_TEMBRIN_LOGGING_SETUP);
        QTRY_VERIFY(bench.manager.queue().isIdle());
        QVERIFY(bench.setup(1).samples != 0);
        bench.putBack(1);
        bench.open(1);
        QTRY_COMPARE(bench.setup(1).samples, 0);
        QTRY_VERIFY(bench.session(1)->isSetupConfirmed());
    }

    void aRunBegunMeanwhileIsTold_data()
    {
        columns<int, QString>({"command", "outcome"});
        row("before its turn", int(CMD_DOWNLOAD_STORED_DATA),
            "No experiment could be fetched from Group B (is running).");
        row("between two tries", int(CMD_TEMBRIN_LOGGING_SETUP), "Not set up: Group B (is running).");
    }

    void aRunBegunMeanwhileIsTold()
    {
        QFETCH(int, command);
        ManagerBench bench(loggers(2, 1));
        bench.openAll();
        use(&bench);
        if (command == CMD_DOWNLOAD_STORED_DATA) {
            bench.delay(0, 100);
            bench.manager.sendCmdToAll(CMD_CONFIGURE_TEMBRIN);
        } else {
            bench.dropAnswers(1, 1);
            bench.loseSamples(1, 0, 5);
        }
        bench.manager.sendCmdToAll(commandType(command));
        QTRY_VERIFY(!bench.heard(1).isEmpty());
        bench.pressStart(1);
        QTRY_VERIFY(bench.manager.queue().isIdle());
        QTEST(ends.join(QString()), "outcome");
        QVERIFY(bench.heard(1, Wire::Download) == 0);
        QVERIFY(bench.heard(1, Wire::LoggingSetup) < 2);
    }

    void aCancelledRequestBringsNothing()
    {
        ManagerBench bench(loggers(1, 1));
        bench.openAll();
        bool isDelivered = false;
        connect(bench.state(0), &TembrinData::downloadComplete, this, [&] { isDelivered = true; });
        bench.delay(0, 100);
        bench.manager.sendCmdToAll(CMD_DOWNLOAD_STORED_DATA);
        QTRY_COMPARE(bench.heard(0, Wire::Download), 1);
        bench.manager.cancelDownload();
        QVERIFY(bench.manager.queue().isIdle());
        bench.manager.sendCmdToAll(CMD_TEMBRIN_LOGGING_SETUP);
        QTRY_VERIFY(bench.manager.queue().isIdle());
        QVERIFY(!bench.state(0)->isDownloading());
        QCOMPARE(bench.heard(0, Wire::NextPacket), 0);
        QVERIFY(!isDelivered);
        bench.manager.sendCmdToAll(CMD_DOWNLOAD_STORED_DATA);
        QTRY_VERIFY(isDelivered);
    }

    void aStopTakesBackWhatIsNotBegun()
    {
        ManagerBench bench(loggers(2));
        bench.openAll();
        bench.manager.sendCmdToAll(CMD_TEMBRIN_LOGGING_SETUP);
        bench.manager.sendCmdToAll(CMD_START_LOGGING); // waits
        bench.manager.sendCmdToAll(CMD_STOP_LOGGING);
        QTRY_VERIFY(bench.manager.queue().isIdle());
        QCOMPARE(bench.heard(0, Wire::Start) + bench.heard(1, Wire::Start), 0);
        QVERIFY(!bench.manager.isAnyRunning());
    }

    void whoComesBackDuringAStopIsToldByTheNext()
    {
        ManagerBench bench(loggers(2));
        bench.openAll();
        bench.manager.setPacing(3000, 5);
        bench.setDead(0);
        bench.pull(1);
        QTRY_VERIFY(!bench.manager.isTembrinConnect(1));
        bench.manager.sendCmdToAll(CMD_STOP_LOGGING);
        bench.putBack(1);
        bench.open(1);
        QTRY_VERIFY(bench.isReady(1));
        QCOMPARE(bench.heard(1, Wire::Stop), 0);
        bench.setDead(0, false);
        bench.manager.sendCmdToAll(CMD_STOP_LOGGING);
        QTRY_VERIFY(bench.manager.queue().isIdle());
        QCOMPARE(bench.heard(0, Wire::Stop), 1);
        QCOMPARE(bench.heard(1, Wire::Stop), 1);
    }

    void aSetupThatARunKeptAwayFollowsIt()
    {
        ManagerBench bench(loggers(1));
        bench.openAll();
        bench.pressStart(0);
        QTRY_VERIFY(bench.manager.isRunning(0));
        LoggerSettings plan = bench.state(0)->reported();
        plan.samples = 0;
        bench.session(0)->wantSetup(plan);
        bench.manager.sendCmdToAll(CMD_TEMBRIN_LOGGING_SETUP);
        QTRY_VERIFY(bench.manager.queue().isIdle());
        QCOMPARE(bench.heard(0, Wire::LoggingSetup), 0);
        bench.pressStop(0);
        QTRY_COMPARE(bench.setup(0).samples, 0);
    }

    void aLoggerThatTakesAChoiceInItsOwnWayIsAskedNoMore()
    {
        ManagerBench bench(loggers(1));
        bench.openAll();
        LoggerSettings plan = bench.state(0)->reported();
        plan.external[0] = VERNIER_PH; // it has no such socket
        plan.rate = 9;                 // nor that rate
        bench.session(0)->wantSetup(plan);
        bench.manager.sendCmdToAll(CMD_TEMBRIN_LOGGING_SETUP);
        QTRY_VERIFY(bench.manager.queue().isIdle());
        QVERIFY(bench.session(0)->isSetupConfirmed());
        QVERIFY(bench.heard(0, Wire::LoggingSetup) <= 3);
    }

    void aStartIsNotGivenTwice()
    {
        ManagerBench bench(loggers(1));
        bench.openAll();
        bench.loseSamples(0, 0, 2000);
        bench.dropAnswers(0, 1);
        bench.manager.sendCmdToAll(CMD_START_LOGGING);
        QTRY_VERIFY(bench.manager.queue().isIdle());
        QCOMPARE(bench.heard(0, Wire::Start), 1);
        QVERIFY(bench.manager.isRunning(0));
    }

private:
    QStringList trace;
    QStringList ends;
};

QTEST_MAIN(TestManager)
#include "test_manager.moc"

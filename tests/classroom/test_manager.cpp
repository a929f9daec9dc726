#include <QElapsedTimer>
#include <QTest>

#include "classroom/multiconnectionsmanager.h"
#include "common/settings.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "tests/common/testsupport.h"
#include "tests/link/fakeport.h"

namespace {
const QByteArray stopFrame = QByteArray::fromHex("47143372");
}

class TestManager : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        ports.reset(new FakePorts);
        manager.reset(new multiConnectionsManager);
        manager->setPortFactory(ports->factory());
        manager->setDefTembrins(3);
        trace.clear();
        connect(manager.data(), &multiConnectionsManager::setBTComm, this, [this](int index, bool tf) {
            trace << QStringLiteral("%1%2").arg(tf ? QStringLiteral("+") : QStringLiteral("-")).arg(index);
        });
        connect(manager.data(), &multiConnectionsManager::startSendCommandToAll, this,
                [this](commandType cmd) { trace << QStringLiteral("start %1").arg(cmd); });
        connect(manager.data(), &multiConnectionsManager::doneSendCommandToAll, this,
                [this] { trace << QStringLiteral("done"); });
    }

    void finish() override { manager.reset(); }

private Q_SLOTS:
    void aCommandGoesFromLoggerToLogger_data()
    {
        columns<QVector<int>, QString>({"connected", "expected"});
        row("all", QVector<int>{0, 1, 2}, "+0 start 4 -0 +1 -1 +2 -2 done");
        row("the middle one is away", QVector<int>{0, 2}, "+0 start 4 -0 +2 -2 done");
        row("the first one is away", QVector<int>{1, 2}, "+1 start 4 -1 +2 -2 done");
        row("the last one is away", QVector<int>{0, 1}, "+0 start 4 -0 +1 -1 done");
        row("one beyond those in use", QVector<int>{1, 3}, "+1 start 4 -1 done");
        row("nobody", QVector<int>{}, "");
    }

    void aCommandGoesFromLoggerToLogger()
    {
        QFETCH(QVector<int>, connected);
        QFETCH(QString, expected);
        for (int i : connected)
            connectLogger(i);
        manager->setPacing(5000, 20);
        manager->sendCmdToAll(CMD_STOP_LOGGING);
        for (int i : connected) {
            if (i >= 3)
                continue;
            QTRY_COMPARE(written(i), stopFrame);
            accept((i + 1) % 3); // another logger's confirmation does not count
            accept(i);
        }
        QCOMPARE(trace.join(QLatin1Char(' ')), expected);
        QTest::qWait(50);
        for (int i : connected)
            QCOMPARE(written(i), i < 3 ? stopFrame : QByteArray());
    }

    void anUnconfirmedCommandIsRepeatedEveryFiveSeconds()
    {
        connectLogger(0);
        QElapsedTimer clock;
        clock.start();
        manager->sendCmdToAll(CMD_STOP_LOGGING);
        QTRY_COMPARE_WITH_TIMEOUT(written(0), stopFrame + stopFrame, 7000);
        QVERIFY2(qAbs(clock.elapsed() - 5100) < 300, qPrintable(QString::number(clock.elapsed())));
        accept(0);
        QCOMPARE(trace.last(), QStringLiteral("done"));
    }

    void aLostLoggerIsPassedOver()
    {
        for (int i : {0, 1, 2})
            connectLogger(i);
        manager->setPacing(30, 10);
        manager->sendCmdToAll(CMD_STOP_LOGGING);
        QTRY_VERIFY(written(0).startsWith(stopFrame.repeated(2))); // or already more
        ports->port(name(0))->hangUp(); // while the chain waits for it
        QCOMPARE(trace.last(), QStringLiteral("+1"));
        ports->port(name(1))->hangUp(); // while the chain pauses before it
        QTRY_VERIFY(written(2).startsWith(stopFrame));
        accept(2);
        QCOMPARE(trace.last(), QStringLiteral("done"));
    }

    void aNewCommandTakesOver()
    {
        connectLogger(0);
        manager->setPacing(40, 10);
        manager->sendCmdToAll(CMD_CONFIGURE_TEMBRIN);
        ports->port(name(0))->writes.clear();
        manager->sendCmdToAll(CMD_STOP_LOGGING);
        Q_EMIT manager->tembrinDataAt(0)->commandAccepted(0, CMD_CONFIGURE_TEMBRIN); // too late
        QVERIFY(!trace.contains(QStringLiteral("done")));
        QTRY_VERIFY(written(0).startsWith(stopFrame.repeated(3)));
        accept(0);
        QCOMPARE(trace.last(), QStringLiteral("done"));
    }

    void aBadDownloadIsAskedForThreeTimes()
    {
        for (int i : {0, 1, 2})
            connectLogger(i);
        manager->setPacing(60, 5);
        connect(manager.data(), &multiConnectionsManager::passedOver, this,
                [this](int index) { trace << QStringLiteral("over %1").arg(index); });
        manager->sendCmdToAll(CMD_DOWNLOAD_STORED_DATA);
        QCOMPARE(trace, QStringList()); // nobody has anything stored
        for (int i : {0, 1, 2})
            manager->tembrinDataAt(i)->numExperiments = short(i + 1);
        manager->tembrinDataAt(1)->setVorta(true);
        manager->sendCmdToAll(CMD_DOWNLOAD_STORED_DATA);
        for (int requests = 1; requests <= 3; ++requests) {
            QTRY_VERIFY(written(0).startsWith(downloadFrame(1).repeated(requests)));
            if (requests != 2) // the second request gets no answer at all
                endDownload(0, false);
        }
        QTRY_COMPARE(written(2), downloadFrame(3));
        endDownload(2, true);
        QCOMPARE(trace.join(QLatin1Char(' ')), QStringLiteral("+0 start 5 over 0 -0 +2 -2 done"));
        QCOMPARE(written(1), QByteArray());

        trace.clear();
        manager->tembrinDataAt(0)->setVorta(true);
        manager->sendCmdToAll(CMD_TEMBRIN_LOGGING_SETUP);
        QCOMPARE(trace.join(QLatin1Char(' ')), QStringLiteral("+2 start 2"));
        manager->sendCmdToAll(CMD_STOP_LOGGING); // which a Vorta confirms with the end of its run
        for (int i : {0, 1})
            Q_EMIT manager->tembrinDataAt(i)->runTerminated(i, false);
        trace.clear();
        manager->downloadFrom(2, 2);
        QVERIFY(written(2).endsWith(downloadFrame(2)));
        endDownload(2, true);
        QCOMPARE(trace.last(), QStringLiteral("done"));
    }

private:
    static QByteArray downloadFrame(int number)
    {
        return QByteArray::fromHex("471444").append(char(number)).append(char(256 - 0x9F - number));
    }
    void endDownload(int i, bool success)
    {
        TembrinData* state = manager->tembrinDataAt(i);
        Q_EMIT state->downloadComplete(i, success);
        Q_EMIT state->commandAccepted(i, CMD_DOWNLOAD_STORED_DATA);
    }
    static QString name(int i) { return QStringLiteral("port%1").arg(i); }
    QByteArray written(int i) const { return ports->port(name(i))->written(); }
    void accept(int i) { Q_EMIT manager->tembrinDataAt(i)->commandAccepted(i, CMD_STOP_LOGGING); }

    void connectLogger(int i)
    {
        Settings::mainStore().setValue(Settings::loggerKey(i), name(i));
        manager->tembrinAt(i)->open();
        manager->tembrinAt(i)->init();
        QVERIFY(manager->isTembrinConnect(i));
    }

    QScopedPointer<FakePorts> ports;
    QScopedPointer<multiConnectionsManager> manager;
    QStringList trace;
};

QTEST_MAIN(TestManager)
#include "test_manager.moc"

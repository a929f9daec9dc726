#include <QSignalSpy>
#include <QTest>

#include <thread>

#include "common/waits.h"
#include "link/connectthread.h"
#include "link/myporttalker.h"
#include "tests/protocol/loggerbench.h"

class TestSession : public BenchTest
{
    Q_OBJECT

private Q_SLOTS:
    void aSessionOpensByteForByte()
    {
        TembrinProtocol& protocol = bench->protocol;
        protocol.talker->setClock([] { return QDateTime({2026, 12, 31}, {23, 59, 58}, Qt::UTC); });
        connect(&bench->data, &TembrinData::communicationEstablished, this,
                [&] { protocol.sendCommand(CMD_SET_DATE_AND_TIME); });
        protocol.sendCommand(CMD_GET_ALL_SENSORS_ID);
        protocol.sendVortaCommand(CMD_VORTA_GET_STATUS);
        QCOMPARE(written(), bytes("4714AAFB 67241065"));
        bench->feed(bytes(statusHex)); // too early: no answer to it
        bench->feed(bytes(sensorListHex));
        QCOMPARE(written(), bytes("4714AAFB 67241065 47141095"));
        bench->feed(bytes(statusHex));
        bench->feed(bytes(statusHex));
        QCOMPARE(written(), bytes("4714AAFB 67241065 47141095") + summed("4714CC 31 12 26 23 59 58"));
        QCOMPARE(bench->port().baud, 115200);
    }

    void aFirstStatusThatGotLostIsAskedForAgain()
    {
        bench->feed(bytes(sensorListHex));
        QCOMPARE(written(), bytes("47141095"));
        QTRY_COMPARE_WITH_TIMEOUT(written(), bytes("47141095 47141095"), 2500);
        bench->feed(bytes(statusHex));
        QTest::qWait(2200);
        QCOMPARE(written(), bytes("47141095 47141095"));
    }

    void aSilentPortIsAskedForBothKindsInTurn()
    {
        bench->protocol.sendCommand(CMD_GET_ALL_SENSORS_ID);
        const auto& writes = bench->port().writes;
        QTRY_COMPARE_WITH_TIMEOUT(writes.size(), 4, 2500);
        const char* expected[] = {"4714AAFB", "4714AAFB", "67241065", "4714AAFB"};
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(writes[i].bytes, bytes(expected[i]));
            const qint64 gap = i == 0 ? 500 : writes[i].ms - writes[i - 1].ms;
            QVERIFY2(gap >= 470 && gap < 700, QByteArray::number(gap));
        }
    }

    void commandsCarryWhatTheLoggerIsSetTo()
    {
        bench->recognise();
        bench->data.ext2Index = -1;
        bench->data.trigLevel = -1;
        bench->protocol.sendCommand(CMD_TEMBRIN_LOGGING_SETUP);
        // The socket holds what code 0 of a status makes of it, and reads so from the wire again.
        QCOMPARE(written(), summed("471411 0005 03 02 01 02 00FF 26 00 FF 0032"));
        bench->port().writes.clear();
        bench->protocol.sendCommand(CMD_CONFIGURE_TEMBRIN);
        bench->protocol.sendCommand(CMD_DOWNLOAD_STORED_DATA, 3);
        bench->protocol.deleteFromLogger(true);
        QCOMPARE(written(), summed("4714DD 15 02") + summed("471444 03") + summed("471499"));
    }

    void aVortaGetsItsOwnCommandsOrNone()
    {
        bench->protocol.sendCommand(CMD_GET_ALL_SENSORS_ID);
        bench->feed(summed("3E7983 10 01 02 00 03 0064 0000 0000 00"));
        bench->port().writes.clear();
        for (const commandType cmd : {CMD_START_LOGGING, CMD_TEMBRIN_LOGGING_SETUP, CMD_GET_TEMBRIN_STATUS,
                                      CMD_GET_ALL_SENSORS_VALUES, CMD_STOP_LOGGING})
            bench->protocol.sendCommand(cmd);
        QCOMPARE(written(), summed("672422 03 0064") + summed("672455") + summed("672433"));
    }

    void loaderAndLongCommandsAreRepeatedSoOften()
    {
        const QByteArray page(251, '\0');
        bench->protocol.sendBLCommand(CMD_BL_WRITE_PROG_MEM_PAGE, 0x100, page.left(250));
        bench->protocol.sendBLCommand(CMD_BL_WRITE_PROG_MEM_PAGE, 0x100, page);
        QCOMPARE(bench->port().writes[0].bytes.left(7), bytes("571612 00000100"));
        QCOMPARE(bench->port().writes[1].bytes.left(7), bytes("571612 00000080"));
        bench->port().writes.clear();
        bench->protocol.sendCommandWithTimeout(CMD_BREVIK_WRITE_STRINGS, "ab", 5);
        bench->protocol.sendBLCommand(CMD_BL_READ_PROG_MEM_PAGE, 0x100);
        QTRY_COMPARE(bench->port().writes.size(), 8); // 6 and 2, the last after a second
        QCOMPARE(bench->port().writes.last().bytes, summed("571613 00000100"));
        QCOMPARE(written().count(bytes("471491") + "ab"), 6);
    }

    void aLostLineIsToldOnceAndLetsGoOfThePort()
    {
        QSignalSpy lost(&bench->protocol, &TembrinProtocol::loggerDisconnected);
        Q_EMIT bench->port().dsrChanged(true);
        QVERIFY(bench->protocol.isConnect);
        bench->port().hangUp();
        QCOMPARE(lost.count(), 1);
        QVERIFY(!bench->protocol.isConnect && !bench->protocol.port && !bench->protocol.listener);
        bench->protocol.sendCommand(CMD_GET_ALL_SENSORS_ID);
        bench->protocol.sendCommandWithTimeout(CMD_BREVIK_WRITE_STRINGS, "ab", 1);
        bench->protocol.stopCmdTimer();
        QTRY_VERIFY(!bench->ports.port("fake"));
        bench->protocol.release();
        QCOMPARE(lost.count(), 2); // also from a slot that has nothing to release
        bench->protocol.open();
        bench->protocol.init();
        Q_EMIT bench->port().test(2);
        QCOMPARE(lost.count(), 3);
        QVERIFY(!bench->protocol.isConnect);
    }

    void aPortReleasedUnderARunningReceiveIsDeletedLater()
    {
        bench->recognise();
        // The window reconnects from a slot that pumps events, in the middle of a burst.
        bool reconnected = false;
        connect(&bench->data, &TembrinData::statusReceived, this, [&] {
            if (reconnected)
                return;
            reconnected = true;
            bench->protocol.release();
            bench->protocol.open();
            bench->protocol.init();
            Waits::pump(20);
        });
        QPointer<FakePort> old = &bench->port();
        bench->feed(bytes(statusHex) + bytes(statusHex) + bytes(statusHex));
        QCOMPARE(bench->told.count("status"), 1);
        QTRY_VERIFY(!old);
        QVERIFY(bench->protocol.isConnect && bench->protocol.port == &bench->port());
        bench->feed(bytes(statusHex));
        QCOMPARE(bench->told.count("status"), 2);
    }

    void whatAnOldPortSaysLateDoesNotHarmTheNewOne()
    {
        QSignalSpy lost(&bench->protocol, &TembrinProtocol::loggerDisconnected);
        FakePort* old = &bench->port();
        // From the port's own thread: queued now, delivered after the reconnection.
        std::thread([old] { Q_EMIT old->dsrChanged(false); }).join();
        bench->protocol.release();
        bench->protocol.open();
        bench->protocol.init();
        Waits::pump(10);
        QCOMPARE(lost.count(), 1);
        QVERIFY(bench->protocol.isConnect);
    }

    void anAttemptRunsOnItsThreadAndReportsOnThisOne_data()
    {
        columns<QString, bool>({"port", "connected"});
        row("opens", "other", true);
        row("refused", "refused", false);
        row("not configured", QString(), false);
    }

    void anAttemptRunsOnItsThreadAndReportsOnThisOne()
    {
        QFETCH(QString, port);
        QFETCH(bool, connected);
        TembrinProtocol& protocol = bench->protocol;
        protocol.release();
        bench->ports.refuse("refused", "busy");
        bench->ports.refuse("COMxx", "no such port");
        {
            QSettings store = Settings::mainStore();
            store.remove("BT");
            if (!port.isEmpty()) {
                store.setValue(Settings::loggerKey(3), port);
                store.setValue(Settings::groupKey(3), "Ants");
            }
        }
        QThread* heardOn = nullptr;
        connect(
            &protocol, &TembrinProtocol::openDone, this, [&] { heardOn = QThread::currentThread(); },
            Qt::DirectConnection);
        QPointer<ConnectThread> attempt = new ConnectThread(&protocol);
        attempt->start();
        QTRY_VERIFY(heardOn && !attempt);
        QCOMPARE(heardOn, thread());
        QCOMPARE(protocol.isConnect, connected);
        QCOMPARE(protocol.port != nullptr, connected);
        QCOMPARE(protocol.portName, port.isEmpty() ? QStringLiteral("COMxx") : port);
        QCOMPARE(protocol.getGroupName(),
                 port.isEmpty() ? QStringLiteral("Group 3") : QStringLiteral("Ants"));
        if (connected)
            QCOMPARE(protocol.port->thread(), thread());
    }

    void aPolledPortIsReadAndLetGo()
    {
        bench->protocol.release();
        bench->protocol.portMode = TembrinProtocol::Polling;
        bench->protocol.open();
        bench->protocol.init();
        bench->feed(bytes(sensorListHex));
        QTRY_COMPARE(bench->told, QStringList{"type?"});
        bench->protocol.release();
        QTRY_VERIFY(!bench->ports.port("fake"));
    }

private:
    QByteArray written() { return bench->port().written(); }
};

QTEST_GUILESS_MAIN(TestSession)
#include "test_session.moc"

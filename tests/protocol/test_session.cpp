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

private:
    void begin() override
    {
        BenchTest::begin();
        bench->protocol.setPortDiscovery({[] {
                                              return QVector<possibleDevice>{
                                                  {"rfcomm0", "", "", "Tembrin_1", ""},
                                                  {"other", "", "", "Tembrin_2", ""}};
                                          },
                                          [] { return QVector<SerialPortRecord>(); }});
    }

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
        bench->feed(bytes(statusHex).replace(32, 1, "\x77")); // damaged: the type is not known by it
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
        bench->recognise("2E6982 01 02 04 07 20 00 00000000000000000000 00 B9"); // one socket
        bench->feed(status({{23, 0xFF}, {24, 0xFF}}));
        bench->port().writes.clear();
        bench->protocol.sendCommand(CMD_TEMBRIN_LOGGING_SETUP);
        // The socket holds what code 0 of a status makes of it, and reads so from the wire again.
        QCOMPARE(written(), summed("471411 0005 03 02 01 02 00FF 26 00 FF 0032"));
        bench->port().writes.clear();
        bench->protocol.sendCommand(CMD_CONFIGURE_TEMBRIN);
        bench->protocol.sendCommand(CMD_DOWNLOAD_STORED_DATA, 3);
        bench->protocol.deleteFromLogger(true);
        QCOMPARE(written(), summed("4714DD 15 02") + summed("471444 03") + summed("471499"));
    }

    void aWantedSetupIsOpenUntilTheLoggerAnswersThisOne_data()
    {
        columns<QByteArray, bool>({"answer", "confirmed"});
        // Wanted: mask 0x13, rate code 4, 3 for 10000 samples, 337 is code 26 in both sockets.
        const std::initializer_list<std::pair<int, int>> same = {{3, 0x11}, {10, 0x13}, {11, 4},
                                                                 {12, 3},   {25, 0x1C}, {26, 0x26}};
        const auto changed = [&](int offset, int value) {
            QByteArray packet = status(same);
            packet.chop(1);
            packet[offset] = char(value);
            return summed(packet);
        };
        row("this one", status(same), true);
        row("a socket names its sensor", changed(25, 101), true);
        row("an earlier mask", changed(10, 0x03), false);
        row("an earlier rate", changed(11, 3), false);
        row("an earlier number", changed(12, 2), false);
        row("an earlier socket", changed(25, 0x26), false);
        row("a key of the logger", changed(3, 0x00), false);
        row("a damaged one", status(same).replace(32, 1, "\x77"), false);
    }

    void aWantedSetupIsOpenUntilTheLoggerAnswersThisOne()
    {
        QFETCH(QByteArray, answer);
        bench->recognise();
        TembrinProtocol& protocol = bench->protocol;
        LoggerSettings setup = protocol.wanted();
        setup.mask = 0xFF13; // of six sensors
        setup.rate = 4;
        setup.samples = 3;
        setup.external[0] = VERNIER_PH;
        setup.sound = false; // no part of a setup
        protocol.wantSetup(setup);
        bench->feed(status({{3, 0}, {21, 2}})); // pressed in the middle: changes nothing of what is sent
        protocol.sendCommand(CMD_TEMBRIN_LOGGING_SETUP);
        const QByteArray frame = summed("471411 0013 04 03 01 02 012C 1C 26 FF 0032");
        QCOMPARE(written(), frame);
        QVERIFY(protocol.wanted().sound && protocol.isConfigurationConfirmed());

        bool told = false;
        connect(&bench->data, &TembrinData::commandAccepted, this,
                [&] { told = protocol.isSetupConfirmed(); });
        bench->feed(answer);
        QTEST(protocol.isSetupConfirmed(), "confirmed");
        QTEST(told, "confirmed");
        if (!told) {
            protocol.sendCommand(CMD_TEMBRIN_LOGGING_SETUP);
            QCOMPARE(written(), frame + frame);
        }
        bench->feed(status({{11, 2}})); // what a logger reports later is what it is set to
        QCOMPARE(protocol.wanted().rate, short(told ? 2 : 4));
        bench->feed(bytes("2E6982 01020407202700000000000000000000 00 92")); // the same list
        QTEST(protocol.isSetupConfirmed(), "confirmed");
        bench->feed(bytes("2E6982 01020405202700000000000000000000 00 94")); // another
        QVERIFY(protocol.isSetupConfirmed());
    }

    void aWantedConfigurationIsOpenUntilAnsweredAsSent()
    {
        bench->recognise();
        LoggerSettings conf = bench->protocol.wanted();
        conf.sound = false;
        conf.fahrenheit = true;
        conf.language = 3;
        bench->protocol.wantConfiguration(conf);
        bench->feed(status({}));
        bench->protocol.sendCommand(CMD_CONFIGURE_TEMBRIN);
        QCOMPARE(written(), summed("4714DD 16 03"));
        bench->feed(status({{3, 0xDD}}));
        QVERIFY(!bench->protocol.isConfigurationConfirmed());
        bench->feed(status({{11, 2}})); // and what is recorded is none of its business
        QCOMPARE(bench->protocol.wanted().rate, short(2));
        bench->feed(status({{3, 0xDD}, {30, 0x16}, {31, 3}}));
        QVERIFY(bench->protocol.isConfigurationConfirmed());
    }

    void aVortaGetsItsOwnCommandsOrNone()
    {
        bench->protocol.sendCommand(CMD_GET_ALL_SENSORS_ID);
        bench->feed(summed("3E7983 10 01 02 00 03 0064 0000 0000 00"));
        LoggerSettings setup;
        setup.vortaRate = 4;
        setup.vortaSamples = 1000;
        bench->protocol.wantSetup(setup);
        bench->port().writes.clear();
        bench->feed(summed("3E7983 22 01 02 01 03 0064 0000 0000 00")); // reports what it last did
        for (const commandType cmd : {CMD_START_LOGGING, CMD_TEMBRIN_LOGGING_SETUP, CMD_GET_TEMBRIN_STATUS,
                                      CMD_GET_ALL_SENSORS_VALUES, CMD_STOP_LOGGING})
            bench->protocol.sendCommand(cmd);
        QCOMPARE(written(), summed("672422 04 03E8") + summed("672455") + summed("672433"));
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

    void whatWasOwedToOneConnectionIsNotPaidToTheNext()
    {
        bench->protocol.sendCommandWithTimeout(CMD_BREVIK_WRITE_STRINGS, "ab", 300);
        bench->protocol.sendBLCommand(CMD_BL_READ_PROG_MEM_PAGE, 0x100);
        bench->protocol.release();
        bench->protocol.open();
        bench->protocol.init();
        QTest::qWait(1100);
        QCOMPARE(written(), QByteArray());
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
        bench->feed(bytes(sensorListHex) + bytes(statusHex));
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

    void aPortThatIsNoLongerTheSlotsIsLetGo()
    {
        bench->protocol.release();
        const auto factory = bench->ports.factory();
        bench->protocol.setPortFactory([&](const QString& name, SerialPort::QueryMode mode) {
            Settings::mainStore().setValue(Settings::loggerKey(3), QStringLiteral("other"));
            return factory(name, mode);
        });
        bench->protocol.open();
        QVERIFY(!bench->protocol.isConnect);
        bench->protocol.open();
        QVERIFY(bench->protocol.isConnect);
        QCOMPARE(bench->protocol.loggerName(), QStringLiteral("Tembrin_2"));
    }

    void aDeviceIsFoundByItsAddress_data()
    {
        columns<QString, QString, QString, QString, bool>(
            {"port", "address", "bound", "opened", "remembered"});
        row("other number now", "COM3", "0012F3A1B2C3", "", "COM7", true);
        row("bound by hand", "rfcomm0", "", "0012F3A1B2C3", "COM7", true);
        row("bound to another", "rfcomm0", "", "00000000AAAA", "rfcomm0", false);
        row("not paired now", "COM3", "0012F3A1FFFF", "", "COM3", true);
        row("chosen by its port", "COM7", "", "", "COM7", true);
        row("no such device", "other", "", "", "other", false);
    }

    void aDeviceIsFoundByItsAddress()
    {
        QFETCH(QString, port);
        QFETCH(QString, address);
        QFETCH(QString, bound);
        QFETCH(bool, remembered);
        bench->protocol.release();
        PortDiscovery discovery;
        discovery.pairedDevices = [] {
            return QVector<possibleDevice>{{"COM5", "0012F3A1B2C2", "", "Tembrin_2", ""},
                                           {"COM7", "0012F3A1B2C3", "", "Tembrin_3", ""}};
        };
        discovery.boundAddress = [bound](const QString&) { return bound; };
        bench->protocol.setPortDiscovery(discovery);
        Settings::mainStore().setValue(Settings::loggerKey(3), port);
        Settings::mainStore().setValue(Settings::addressKey(3), address);
        bench->protocol.open();
        QVERIFY(bench->protocol.isConnect);
        QTEST(bench->protocol.portName, "opened");
        const QString known = Settings::mainStore().value(Settings::addressKey(3)).toString();
        QCOMPARE(known, !remembered         ? QString()
                        : address.isEmpty() ? QStringLiteral("0012F3A1B2C3")
                                            : address);
        QCOMPARE(Settings::mainStore().value(Settings::loggerKey(3)).toString(), port);
    }

    void aPairedLoggerIsTakenFromTheList()
    {
        QSignalSpy list(&bench->protocol, &TembrinProtocol::publishBTList);
        bench->protocol.requestForBTList();
        QCOMPARE(list.takeFirst(), QVariantList({QStringList({"Tembrin_1", "Tembrin_2"}), true}));
        bench->protocol.gotBTMenu(-1);
        QVERIFY(!bench->protocol.isConnect);
        bench->protocol.gotBTMenu(0);
        QCOMPARE(Settings::mainStore().value("lastBTPortName").toString(), QStringLiteral("rfcomm0"));
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

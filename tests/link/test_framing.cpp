#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include "common/waits.h"
#include "link/myporttalker.h"
#include "link/portlistener.h"
#include "tests/common/testsupport.h"
#include "tests/link/fakeport.h"
#include "tests/link/simpleidentifier.h"

namespace {

QByteArray online(int number)
{
    return SimpleIdentifier::packet(PacketKind::Sample, QByteArray::number(number).rightJustified(6, '0'));
}

} // namespace

class TestFraming : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        port = new FakePort;
        port->open(SerialPort::OpenMode::ReadWrite);
        listener = new PortListener(port, &identifier, 3);
        connect(port, &SerialPort::readyRead, listener, &PortListener::receive);
        heard.clear();
        identifier.then = nullptr;
    }

    void finish() override
    {
        delete listener;
        delete port;
    }

private Q_SLOTS:
    void framesGoOutByteForByte_data()
    {
        columns<int, QVector<short>, QByteArray>({"command", "args", "frame"});
        const auto row = [](const char* name, int cmd, const QVector<short>& args, const char* hex) {
            QTest::newRow(name) << cmd << args << QByteArray::fromHex(hex);
        };
        const short mask = static_cast<short>(0x8001);
        row("status", CMD_GET_TEMBRIN_STATUS, {}, "47141095");
        row("setup: slot 16 in the mask, levels below zero", CMD_TEMBRIN_LOGGING_SETUP,
            {mask, 5, 7, 1, 2, -1, 32, 33, 3, -300}, "4714118001050701 0200FF202103FFD4EE");
        row("setup with an argument missing", CMD_TEMBRIN_LOGGING_SETUP, {1, 5, 7, 1, 2, -1, 32, 33, 3}, "");
        row("clock", CMD_SET_DATE_AND_TIME, {}, "4714CC3112262359589C");
        row("configuration", CMD_CONFIGURE_TEMBRIN, {1, 0, 1, 0, 1, 3}, "4714DD1503B0");
        row("default calibration", CMD_CALIBRATE_TEMP, {0}, "4714E0FFFFC7");
        row("calibration at 0.1 degrees", CMD_CALIBRATE_TEMP, {1}, "4714E00001C4");
        row("a long command has its own way", CMD_BREVIK_WRITE_STRINGS, {}, "");
        row("no such command", 12, {}, "");
        row("Vorta start", CMD_VORTA_START, {3, 1000}, "6724220303E865");
        row("Vorta loader", CMD_VORTA_BL_RUN, {}, "6726096A");
        row("page", CMD_BL_WRITE_PROG_MEM_PAGE, {}, "571612000123450102FF16");
        row("EEPROM page: the low half of the address", CMD_BL_WRITE_EEPROM_PAGE, {}, "57161723450102FF12");
        row("reading a page takes no data", CMD_BL_READ_PROG_MEM_PAGE, {}, "5716130001234517");
    }

    void framesGoOutByteForByte()
    {
        QFETCH(int, command);
        QFETCH(QVector<short>, args);
        guard->expect("arguments");
        MyPortTalker talker(port, 3);
        talker.setClock([] { return QDateTime({2027, 1, 1}, {0, 59, 58}, Qt::OffsetFromUTC, 3600); });
        const auto cmd = static_cast<commandType>(command);
        talker.sendCommand(cmd, args); // each takes its own commands only
        talker.sendVortaCommand(cmd, args);
        talker.sendBLCommand(cmd, 0x12345, QByteArray::fromHex("0102FF"));
        QTEST(port->written(), "frame");
        QVERIFY(port->writes.size() <= 1);
    }

    void longFramesEndInASixteenBitSum()
    {
        MyPortTalker talker(port, 3);
        talker.sendLongCommand(CMD_BREVIK_WRITE_STRINGS, QByteArray::fromHex("FFFFFFFF"));
        talker.sendLongPage(CMD_BL_WRITE_PROG_MEM_PAGE, 0x12000, QByteArray::fromHex("0102030405"));
        talker.sendLongPage(CMD_BL_ERASE, 0, {});
        QCOMPARE(port->written().toHex(), QByteArray("471491fffffffffb18"
                                                     "571612000090000102030405fee2"));
    }

    void packetsAreCutWhereverTheBytesWereSplit()
    {
        const QByteArray stream = online(1) + "xyz" + online(2) + online(3);
        for (int cut = 0; cut <= stream.size(); ++cut) {
            heard.clear();
            port->feed(stream.left(cut));
            port->feed(stream.mid(cut));
            QCOMPARE(heard, QVector<QByteArray>({online(1), online(2), online(3)}));
        }
    }

    void onlyBytesThatMakeNoPacketOverflow()
    {
        QSignalSpy slow(listener, &PortListener::tooSlowSignal);
        QVector<QByteArray> sent;
        for (int i = 0; i < 15000; ++i) // more than one call takes
            sent.append(online(i));
        port->feed(QByteArrayList(sent.toList()).join());
        QTRY_COMPARE(heard.size(), sent.size());
        QCOMPARE(heard, sent);
        heard.clear();

        const QByteArray never = SimpleIdentifier::endless();
        port->feed(never + QByteArray(2000 - never.size(), 'x'));
        QCOMPARE(slow.size(), 0);
        guard->expect("thrown away");
        port->feed("x");
        QCOMPARE(slow.size(), 1);
        const QByteArray data = SimpleIdentifier::packet(PacketKind::Packet, "stored");
        const QByteArray status = SimpleIdentifier::packet(PacketKind::Status, "fine");
        port->feed(online(1) + data + online(2) + status + online(3));
        QCOMPARE(heard, QVector<QByteArray>({data, status, online(3)}));
    }

    void aSlotThatPumpsEventsKeepsTheOrder()
    {
        identifier.then = [this] {
            if (heard.size() == 2) {
                port->feed(online(4) + online(5)); // comes in while the outer call is at packet 2
                Waits::pumpPending();
            }
        };
        port->feed(online(1) + online(2) + online(3));
        QCOMPARE(heard, QVector<QByteArray>({online(1), online(2), online(3), online(4), online(5)}));
    }

    void aConnectionThatEndsInsideASlotIsSurvived()
    {
        QPointer<QObject> oldListener = listener;
        identifier.then = [this] {
            QTimer::singleShot(0, this, [this] {
                std::exchange(listener, nullptr)->deleteLater();
                std::exchange(port, nullptr)->deleteLater();
            });
            Waits::pump(20);
        };
        port->feed(online(1) + online(2));
        QVERIFY(!oldListener);
        QCOMPARE(heard, QVector<QByteArray>({online(1)}));
    }

    void nothingIsHandedOutBehindTheEnd()
    {
        identifier.then = [this] { listener->end(); };
        QSignalSpy loader(listener, &PortListener::bootloadCommandOK);
        const QByteArray answer = SimpleIdentifier::packet(PacketKind::BootloadCommandOK, "");
        port->feed(answer + online(1) + online(2) + answer);
        port->feed(online(3));
        QCOMPARE(heard, QVector<QByteArray>({online(1)}));
        QCOMPARE(loader.size(), 1);
    }

private:
    SimpleIdentifier identifier;
    FakePort* port = nullptr;
    PortListener* listener = nullptr;
    QVector<QByteArray>& heard = identifier.heard;
};

QTEST_GUILESS_MAIN(TestFraming)
#include "test_framing.moc"

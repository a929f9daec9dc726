#include <QDBusConnection>
#include <QDBusMessage>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalServer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include "link/bluezdevices.h"
#include "link/linkedports.h"
#include "tests/common/testsupport.h"

namespace {

const QString address = "00:12:F3:A1:B2:C3";
const QString second = "00:12:F3:A1:B2:C4";

/// BlueZ as a mock on a bus of the test's own, which stands at a given place.
class MockBluez
{
public:
    explicit MockBluez(const QString& place)
    {
        bus.start("dbus-daemon", {"--session", "--nofork", "--address=" + place});
        const auto isUp = [&] {
            QDBusConnection::disconnectFromBus("mock");
            return QDBusConnection::connectToBus(place, "mock").isConnected();
        };
        if (!QTest::qWaitFor(isUp))
            return;
        mock.start("/usr/bin/python3", {"-m", "dbusmock", "--system", "--template", "bluez5"});
        isReady = QTest::qWaitFor([&] { return call("/", "AddAdapter", {"hci0", "class"}); }, 15000);
    }
    ~MockBluez()
    {
        QDBusConnection::disconnectFromBus("mock");
        mock.kill();
        bus.kill();
        mock.waitForFinished();
        bus.waitForFinished();
    }

    bool call(const QString& path, const QString& method, const QVariantList& arguments,
              const QString& interface = "org.bluez.Mock")
    {
        QDBusMessage message = QDBusMessage::createMethodCall("org.bluez", path, interface, method);
        message.setArguments(arguments);
        return QDBusConnection("mock").call(message).type() == QDBusMessage::ReplyMessage;
    }
    bool pair(const QString& device, const QString& name)
    {
        return call("/", "AddDevice", {"hci0", device, name}) && call("/", "PairDevice", {"hci0", device, 0});
    }

    bool isReady = false;

private:
    QProcess bus;
    QProcess mock;
};

QStringList texts(const QVector<possibleDevice>& devices)
{
    QStringList all;
    for (const possibleDevice& device : devices)
        all << QStringList{device.name, device.portName, device.address}.join(' ');
    return all;
}

} // namespace

class TestLinuxPorts : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // Read once by the library, so all tests have their bus at this place.
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", place().toLocal8Bit());
    }

    void withoutABusThereAreNone() { QVERIFY(pairedBluezDevices(terminals()).isEmpty()); }

    void aBusThatDoesNotAnswerIsNotWaitedFor()
    {
        QLocalServer silent;
        QVERIFY(silent.listen(folder.filePath("bus")));
        QElapsedTimer clock;
        clock.start();
        QVERIFY(pairedBluezDevices(terminals()).isEmpty());
        QVERIFY2(clock.elapsed() >= 400 && clock.elapsed() < 800, QByteArray::number(clock.elapsed()));
    }

    void pairedLoggersComeWithTheTerminalBoundToThem()
    {
        QTRY_VERIFY(!QFile::exists(folder.filePath("bus")));
        MockBluez bluez(place());
        QVERIFY(bluez.isReady);
        QVERIFY(bluez.pair(address, "Tembrin_0421") && bluez.pair(second, "Vorta_7"));
        QVERIFY(bluez.pair("00:12:F3:A1:B2:C5", "Headphones"));
        bind("rfcomm3", address);
        bind("ttyS0", second); // not a terminal of the radio
        const QString port = "Tembrin_0421 rfcomm3 0012F3A1B2C3";
        QTRY_COMPARE(texts(pairedBluezDevices(terminals())), QStringList({port, "Vorta_7  0012F3A1B2C4"}));
        QVERIFY(bluez.call("/org/bluez/hci0/dev_00_12_F3_A1_B2_C4", "UpdateProperties",
                           {"org.bluez.Device1", QVariantMap{{"Name", "Phone_7"}}},
                           "org.freedesktop.DBus.Mock"));
        QCOMPARE(texts(pairedBluezDevices(terminals())), QStringList(port));
    }

    void linksToTerminalsAreLoggers()
    {
        QDir root(folder.path());
        QVERIFY(root.mkpath("dev") && root.mkpath("own"));
        const auto link = [&](const char* target, const char* name) {
            return QFile::link(target, folder.filePath(name));
        };
        QVERIFY(link("/dev/null", "dev/Sorrel_1") && link("/dev/zero", "dev/cdrom"));
        QVERIFY(link("/dev/null", "own/again") && link("/dev/zero", "own/Ada"));
        QVERIFY(link("/nowhere", "own/Tembrin_gone") && link("/etc/passwd", "own/Tembrin_file"));
        const QVector<LinkedPort> links =
            readLinkedPorts({{folder.filePath("dev"), false}, {folder.filePath("own"), true}, {"/no", true}});

        QVector<possibleDevice> devices{{"null", "0012F3A1B2C3", "", "Sorrel_1", ""},
                                        {"", "", "", "far", ""}};
        addLinkedPorts(links, devices);
        const QString path = folder.path();
        QCOMPARE(texts(devices), QStringList({"Sorrel_1 " + path + "/dev/Sorrel_1 0012F3A1B2C3", "far  ",
                                              "Ada " + path + "/own/Ada "}));
    }

private:
    QString place() const { return "unix:path=" + folder.filePath("bus"); }
    QString terminals() const { return folder.filePath("tty"); }
    void bind(const QString& terminal, const QString& device)
    {
        QVERIFY(QDir().mkpath(terminals() + '/' + terminal));
        QFile file(terminals() + '/' + terminal + "/address");
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(device.toLatin1() + '\n');
    }

    QTemporaryDir folder;
};

QTEST_GUILESS_MAIN(TestLinuxPorts)
#include "test_linuxports.moc"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalServer>
#include <QTemporaryDir>
#include <QTest>

#include "link/bluezhub.h"
#include "link/linkedports.h"
#include "tests/common/testsupport.h"
#include "tests/link/fakebluez.h"

namespace {

const QString address = "00:12:F3:A1:B2:C3";
const QString second = "00:12:F3:A1:B2:C4";

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
    void initTestCase() { bluez.reset(new FakeBluez); }
    void cleanupTestCase() { bluez.reset(); }

    void withoutABusThereAreNone()
    {
        QVERIFY(hub()->pairedDevices().isEmpty());
        QCOMPARE(hub()->state().hindrance, PortFailure::NoService);
    }

    void aBusThatDoesNotAnswerIsNotWaitedFor()
    {
        QLocalServer silent;
        QVERIFY(silent.listen(FakeBluez::place().section('=', -1)));
        QElapsedTimer clock;
        clock.start();
        QVERIFY(hub()->pairedDevices().isEmpty());
        QVERIFY2(clock.elapsed() >= 400 && clock.elapsed() < 800, QByteArray::number(clock.elapsed()));
    }

    void pairedLoggersAreKnownByTheirAddress()
    {
        QVERIFY(bluez->startBus());
        const auto hub = this->hub();
        int known = -1;
        QObject context;
        hub->watch(&context, [&] { known = hub->pairedDevices().size(); });
        QVERIFY(hub->pairedDevices().isEmpty());
        QVERIFY(bluez->start());
        QTRY_COMPARE(hub->state().hindrance, PortFailure::NoAdapter);
        bluez->call("AddAdapter", {"hci0", false});
        QTRY_COMPARE(hub->state().hindrance, PortFailure::AdapterOff);
        bluez->call("AddAdapter", {"hci1", true});
        bluez->call("AddDevice", {"hci0", address, "Tembrin_0421", true, ""});
        bluez->call("AddDevice", {"hci1", address, "Tembrin_0421", true, ""});
        bluez->call("AddDevice", {"hci1", second, "Vorta_7", false, ""});
        bluez->call("AddDevice", {"hci1", "00:12:F3:A1:B2:C5", "Headphones", true, ""});
        const QString port = "Tembrin_0421 00:12:F3:A1:B2:C3 0012F3A1B2C3";
        QTRY_COMPARE(texts(hub->pairedDevices()), QStringList(port));
        QTRY_COMPARE(known, 1);
        bluez->call("SetPaired", {second, true});
        QTRY_COMPARE(known, 2);
        QCOMPARE(texts(hub->pairedDevices()), QStringList({port, "Vorta_7 00:12:F3:A1:B2:C4 0012F3A1B2C4"}));
        QCOMPARE(hub->state().adaptersOf.value("0012F3A1B2C3"), QStringList("hci1"));
        bluez->call("SetPowered", {"hci0", true});
        QTRY_COMPARE(hub->state().adaptersOf.value("0012F3A1B2C3"), QStringList({"hci0", "hci1"}));
        bluez->call("RemoveDevice", {second});
        QTRY_COMPARE(texts(hub->pairedDevices()), QStringList(port));
        bluez->end(SIGKILL);
        QTRY_COMPARE(hub->state().hindrance, PortFailure::NoService);
        QVERIFY(hub->pairedDevices().isEmpty());
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

        // The terminal that Ada leads to belongs to a device that is paired, the other one to a stranger.
        const auto bound = [](const QString& terminal) {
            return QString(terminal == "/dev/zero" ? "0012F3A1B2C3" : "0012F3A1B2C4");
        };
        QVector<possibleDevice> devices{{address, "0012F3A1B2C3", "", "Tembrin_1", ""}};
        addLinkedPorts(links, bound, devices);
        QCOMPARE(texts(devices), QStringList({"Tembrin_1 " + address + " 0012F3A1B2C3",
                                              "Sorrel_1 " + folder.path() + "/dev/Sorrel_1 0012F3A1B2C4"}));
    }

    void aTerminalIsKnownByTheDeviceItIsBoundTo_data()
    {
        columns<QString, QString>({"port", "bound"});
        row<QString, QString>("name", "rfcomm3", "0012F3A1B2C3");
        row<QString, QString>("path", "/dev/rfcomm3", "0012F3A1B2C3");
        row<QString, QString>("link", folder.filePath("link"), "0012F3A1B2C3");
        row<QString, QString>("bound to nothing", "rfcomm4", "");
        row<QString, QString>("not of the radio", "ttyS0", "");
        row<QString, QString>("none", "", "");
    }
    void aTerminalIsKnownByTheDeviceItIsBoundTo()
    {
        QFETCH(QString, port);
        bind("rfcomm3", address);
        bind("ttyS0", second); // not a terminal of the radio
        bind("rfcomm4", "none");
        QFile::link(folder.filePath("rfcomm3"), folder.filePath("link"));
        QFile(folder.filePath("rfcomm3")).open(QIODevice::WriteOnly);
        QTEST(boundAddress(port, terminals()), "bound");
    }

private:
    static std::shared_ptr<BluezHub> hub() { return std::make_shared<BluezHub>(); }
    QString terminals() const { return folder.filePath("tty"); }
    void bind(const QString& terminal, const QString& device)
    {
        QVERIFY(QDir().mkpath(terminals() + '/' + terminal));
        QFile file(terminals() + '/' + terminal + "/address");
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(device.toLatin1() + '\n');
    }

    QTemporaryDir folder;
    QScopedPointer<FakeBluez> bluez;
};

QTEST_GUILESS_MAIN(TestLinuxPorts)
#include "test_linuxports.moc"

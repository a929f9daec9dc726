#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalServer>
#include <QTemporaryDir>
#include <QTest>

#include <future>

#include "common/waits.h"
#include "link/bluezhub.h"
#include "link/sessionport.h"
#include "link/socketworker.h"
#include "tests/common/testsupport.h"
#include "tests/link/fakebluez.h"

using namespace std::chrono_literals;

namespace {

constexpr BluezTimes shortTimes{2000ms, 500ms, 50ms, 1000ms, 900ms, 100ms};

QString addressOf(int logger)
{
    return QString("00:12:F3:00:00:%1").arg(logger, 2, 10, QLatin1Char('0'));
}

} // namespace

Q_DECLARE_METATYPE(PortFailure)

class TestBluetooth : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        QVERIFY(bluez->startBus());
        startService();
        hub = std::make_shared<BluezHub>(shortTimes);
        drops = 0;
    }
    void startService()
    {
        QVERIFY(bluez->start());
        for (const char* adapter : {"hci0", "hci1"})
            bluez->call("AddAdapter", {adapter, true});
        for (int logger = 1; logger <= 8; ++logger) {
            for (const char* adapter : {"hci0", "hci1"})
                bluez->call("AddDevice", {adapter, addressOf(logger), QString("Tembrin_%1").arg(logger), true,
                                          logger == 1 ? elsewhere.fullServerName() : QString()});
        }
    }
    void finish() override
    {
        hub.reset();
        elsewhere.close();
        bluez->end(SIGKILL);
        bluez->endBus();
    }

private Q_SLOTS:
    void initTestCase() { bluez.reset(new FakeBluez); }
    void cleanupTestCase() { bluez.reset(); }

    void eightConnectAtOnceOverTwoAdapters()
    {
        std::vector<std::unique_ptr<SerialPort>> ports;
        std::vector<std::future<bool>> openings;
        for (int logger = 1; logger <= 8; ++logger)
            ports.push_back(makePort(logger));
        for (const auto& port : ports)
            openings.push_back(opening(port.get()));
        for (auto& opening : openings)
            QVERIFY(opening.get());
        for (const char* adapter : {"hci0", "hci1"})
            QCOMPARE(linksOf(adapter), 4);
        for (const auto& port : ports) {
            QCOMPARE(port->lineStatus(), 0xFu);
            const QByteArray bytes =
                port->portName().toLatin1().repeated(30000); // more than the line takes at once
            port->write(bytes);
            QTRY_COMPARE(port->bytesAvailable(), qint64(bytes.size()));
            QCOMPARE(port->read(bytes.size()), bytes);
        }
        ports[2]->close();
        QTRY_COMPARE(linksOf("hci0") + linksOf("hci1"), 7);
        QVERIFY2(ports[2]->open(SerialPort::OpenMode::ReadWrite), qPrintable(ports[2]->errorString()));
        QCOMPARE(drops, 0);
        ports.clear();
        QTRY_COMPARE(linksOf("hci0") + linksOf("hci1"), 0);
        QTRY_VERIFY(state()["profiles"].toArray().isEmpty());
    }

    void theEndOfALinkIsToldOnce_data()
    {
        columns<QString>({"what"});
        row<QString>("by the radio", "DropLink");
        row<QString>("by the service", "AskToDisconnect");
    }
    void theEndOfALinkIsToldOnce()
    {
        QFETCH(QString, what);
        const auto port = makePort(1);
        QVERIFY(port->open(SerialPort::OpenMode::ReadWrite));
        QCOMPARE(port->failure(), PortFailure::None);
        bluez->call(what, {addressOf(1)});
        QTRY_COMPARE(drops, 1);
        QCOMPARE(port->failure(), PortFailure::Lost);
        QVERIFY(port->open(SerialPort::OpenMode::ReadWrite));
        QCOMPARE(drops, 1);
    }

    void whyALinkIsRefusedIsTold_data()
    {
        columns<QString, QString, QString, PortFailure>({"what", "error", "message", "failure"});
        const QString failed = "org.bluez.Error.Failed";
        const auto message = [&](const char* text, PortFailure failure) {
            row<QString, QString, QString>(text, "error", failed, text, failure);
        };
        message("br-connection-page-timeout", PortFailure::OutOfReach);
        message("Host is down", PortFailure::OutOfReach);
        message("br-connection-aborted-by-remote", PortFailure::Refused);
        message("br-connection-refused", PortFailure::Refused);
        message("br-connection-key-missing", PortFailure::Refused);
        message("Permission denied", PortFailure::Refused);
        message("br-connection-adapter-not-powered", PortFailure::AdapterOff);
        message("Too many links", PortFailure::AdapterFull);
        message("br-connection-concurrent-connection-limit", PortFailure::AdapterFull);
        message("br-connection-canceled", PortFailure::Cancelled);
        message("something new", PortFailure::Other);
        const auto name = [](const char* error, PortFailure failure) {
            row<QString, QString, QString>(error, "error", error, "", failure);
        };
        name("org.bluez.Error.NotReady", PortFailure::AdapterOff);
        name("org.bluez.Error.DoesNotExist", PortFailure::NotPaired);
        name("org.bluez.Error.AuthenticationFailed", PortFailure::Refused);
        name("org.bluez.Error.AlreadyConnected", PortFailure::Held);
        name("org.freedesktop.DBus.Error.UnknownObject", PortFailure::NotPaired);
        name("org.freedesktop.DBus.Error.AccessDenied", PortFailure::NoRight);
        const auto behaviour = [](const char* what, PortFailure failure) {
            row<QString, QString, QString>(what, what, "", "", failure);
        };
        behaviour("bare", PortFailure::Held);
        behaviour("away", PortFailure::OutOfReach);
        behaviour("refuse", PortFailure::Refused);
        behaviour("silent", PortFailure::OutOfReach);
    }
    void whyALinkIsRefusedIsTold()
    {
        const auto [what, error, message, failure] =
            fetched<QString, QString, QString, PortFailure>({"what", "error", "message", "failure"});
        const auto port = makePort(1);
        behave(1, what, 0, error, message);
        QVERIFY(!port->open(SerialPort::OpenMode::ReadWrite));
        QCOMPARE(port->failure(), failure);
        QVERIFY(!port->errorString().isEmpty());
        behave(1, "reply-first", 0.05);
        QVERIFY2(port->open(SerialPort::OpenMode::ReadWrite), qPrintable(port->errorString()));
        QCOMPARE(drops, 0);
    }

    void withoutAWayNobodyIsCalled()
    {
        const auto failure = [this] {
            const auto port = makePort(1);
            return port->open(SerialPort::OpenMode::ReadWrite) ? PortFailure::None : port->failure();
        };
        bluez->call("TakeLink", {addressOf(2)}); // over the first adapter
        {
            const auto port = makePort(1);
            QVERIFY(port->open(SerialPort::OpenMode::ReadWrite));
            QCOMPARE(linksOf("hci1"), 1);
        }
        QTRY_COMPARE(linksOf("hci1"), 0);
        bluez->call("SetPaired", {addressOf(1), false});
        QCOMPARE(failure(), PortFailure::NotPaired);
        bluez->call("SetPaired", {addressOf(1), true});
        bluez->call("SetPowered", {"hci0", false});
        // The adapter that is left carries seven links, other programs' too.
        for (int logger = 2; logger <= 8; ++logger)
            bluez->call("TakeLink", {addressOf(logger)});
        QCOMPARE(failure(), PortFailure::None);
        std::vector<std::unique_ptr<SerialPort>> ports;
        for (int logger = 2; logger <= 8; ++logger) {
            ports.push_back(makePort(logger));
            QVERIFY(ports.back()->open(SerialPort::OpenMode::ReadWrite));
        }
        QCOMPARE(failure(), PortFailure::AdapterFull);
        bluez->call("SetPowered", {"hci1", false});
        QTRY_COMPARE(failure(), PortFailure::AdapterOff);
        bluez->call("RemoveAdapter", {"hci0"});
        bluez->call("RemoveAdapter", {"hci1"});
        QTRY_COMPARE(failure(), PortFailure::NoAdapter);
    }

    void aBusyAdapterIsAskedAgain()
    {
        bluez->call("SetPowered", {"hci1", false});
        behave(1, "link", 0.2);
        behave(2, "busy", 0);
        const auto one = makePort(1);
        const auto two = makePort(2);
        auto first = opening(one.get());
        QTRY_COMPARE(calling("hci0"), addressOf(1));
        QVERIFY(two->open(SerialPort::OpenMode::ReadWrite));
        QVERIFY(first.get());
        QVERIFY(connectsOf(2) > 1);
    }

    void aCancelledCallIsGivenUp()
    {
        const auto third = makePort(3); // the profile stands for it
        QVERIFY(third->open(SerialPort::OpenMode::ReadWrite));
        behave(1, "link", 1);
        const auto port = makePort(1);
        QElapsedTimer clock;
        auto called = opening(port.get());
        QTRY_COMPARE(calling("hci1"), addressOf(1));
        clock.start();
        port->cancelOpening();
        QVERIFY(!called.get());
        QVERIFY2(clock.elapsed() < 200, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(port->failure(), PortFailure::Cancelled);
        QVERIFY(
            QTest::qWaitFor([this] { return calling("hci1").isEmpty(); }, 400)); // long before the call ends

        // A link that comes all the same is closed.
        const auto other = makePort(2);
        behave(1, "reply-first", 0.2);
        behave(2, "link", 0.4);
        called = opening(port.get());
        QTRY_COMPARE(connectsOf(1), 2);
        auto later = opening(other.get());
        port->cancelOpening();
        QVERIFY(!called.get() && later.get());
        QCOMPARE(linksOf("hci0") + linksOf("hci1"), 2);
        behave(1, "link", 0);
        QVERIFY(port->open(SerialPort::OpenMode::ReadWrite));
    }

    void aLinkThatTakesNothingHoldsUpNobody()
    {
        QTemporaryDir folder;
        QVERIFY(elsewhere.listen(folder.filePath("logger")));
        bluez->end(SIGKILL);
        startService();
        const auto port = makePort(1);
        QVERIFY(port->open(SerialPort::OpenMode::ReadWrite));
        port->write(QByteArray(1000000, 'x'));
        QTRY_VERIFY(elsewhere.hasPendingConnections());
        QElapsedTimer clock;
        clock.start();
        port->close();
        QVERIFY2(clock.elapsed() < 200, qPrintable(QString::number(clock.elapsed())));
        QTRY_COMPARE(linksOf("hci0"), 0);
    }

    void aServiceThatDiesAndReturns()
    {
        // The far end of the first link does not go with the service.
        QTemporaryDir folder;
        QVERIFY(elsewhere.listen(folder.filePath("logger")));
        bluez->end(SIGKILL);
        startService();
        const auto linked = makePort(1);
        const auto called = makePort(2);
        QVERIFY2(linked->open(SerialPort::OpenMode::ReadWrite), qPrintable(linked->errorString()));
        behave(2, "silent", 0);
        auto call = opening(called.get());
        QTRY_COMPARE(connectsOf(2), 1);
        bluez->end(SIGKILL);
        QVERIFY(!call.get());
        QCOMPARE(called->failure(), PortFailure::NoService);
        QVERIFY(!called->open(SerialPort::OpenMode::ReadWrite));
        QCOMPARE(called->failure(), PortFailure::NoService);
        QVERIFY(linked->isOpen());
        startService();
        QTRY_COMPARE(state()["profiles"].toArray().size(), 1); // for the port that is open
        QVERIFY2(called->open(SerialPort::OpenMode::ReadWrite), qPrintable(called->errorString()));
        bluez->call("ReleaseProfiles");
        QTRY_VERIFY(!called->isOpen());
        QVERIFY2(called->open(SerialPort::OpenMode::ReadWrite), qPrintable(called->errorString()));

        bluez->end(SIGKILL);
        bluez->endBus();
        QTRY_COMPARE(hub->state().hindrance, PortFailure::NoService);
        QVERIFY(bluez->startBus());
        startService();
        QTRY_VERIFY(called->isOpen() || called->open(SerialPort::OpenMode::ReadWrite));
    }

    void aFrozenServiceHoldsUpNobody()
    {
        const auto linked = makePort(1);
        const auto called = makePort(2);
        QVERIFY(linked->open(SerialPort::OpenMode::ReadWrite));
        bluez->signal(SIGSTOP);
        QElapsedTimer clock;
        clock.start();
        auto call = opening(called.get());
        QCOMPARE(hub->pairedDevices().size(), 8);
        QObject context;
        const auto wish = hub->dial("001200000003", &context, [](const RadioAnswer&) {});
        QVERIFY2(clock.elapsed() < 50, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(!call.get());
        QCOMPARE(called->failure(), PortFailure::NoService);
        QVERIFY(linked->isOpen());
        bluez->signal(SIGCONT);
        QTRY_VERIFY(called->isOpen() || called->open(SerialPort::OpenMode::ReadWrite));
    }

    void nothingIsLeftOfAThousandLinks()
    {
        const auto port = makePort(1);
        const auto rounds = [&port](int count) {
            for (int i = 0; i < count; ++i) {
                if (!port->open(SerialPort::OpenMode::ReadWrite))
                    return false;
                port->write("x");
                port->close();
            }
            return true;
        };
        QVERIFY(rounds(100));
        const auto threads = entries("/proc/self/task");
        const auto descriptors = entries("/proc/self/fd");
        [[maybe_unused]] const auto memory = residentKiB();
        QVERIFY2(rounds(1000), qPrintable(port->errorString()));
        QTRY_VERIFY(entries("/proc/self/fd") <=
                    descriptors); // the start may have been counted within a round
        QTRY_VERIFY(entries("/proc/self/task") <= threads);
#ifndef __SANITIZE_ADDRESS__ // which keeps what was freed, and looks for leaks itself
        QVERIFY2(residentKiB() < memory + 2048, qPrintable(QString::number(residentKiB() - memory)));
#endif
    }

private:
    std::unique_ptr<SerialPort> makePort(int logger)
    {
        const RadioDial dial = [hub = hub, address = addressOf(logger).remove(':')](QObject* context,
                                                                                    const auto& answer) {
            return hub->dial(address, context, answer);
        };
        auto port = std::make_unique<SessionPort>(addressOf(logger), SerialPort::QueryMode::EventDriven,
                                                  SocketWorker::kind(dial));
        connect(port.get(), &SerialPort::dsrChanged, this, [this](bool up) { drops += up ? 100 : 1; });
        return port;
    }
    static std::future<bool> opening(SerialPort* port)
    {
        return std::async(std::launch::async, [port] { return port->open(SerialPort::OpenMode::ReadWrite); });
    }

    void behave(int logger, const QString& what, double seconds, const QString& error = {},
                const QString& message = {})
    {
        bluez->call("Behave", {addressOf(logger), what, seconds, error, message});
    }
    QString calling(const char* adapter)
    {
        return state()["adapters"].toObject()[adapter].toObject()["calling"].toString();
    }
    int connectsOf(int logger)
    {
        return state()["connects"].toObject()[addressOf(logger)].toInt();
    }
    static int entries(const char* directory)
    {
        return QDir(directory).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
    }
    static long residentKiB()
    {
        QFile file("/proc/self/statm");
        return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').at(1).toLong() * 4 : 0;
    }

    QJsonObject state()
    {
        return QJsonDocument::fromJson(bluez->call("State").toString().toUtf8()).object();
    }
    int linksOf(const char* adapter)
    {
        return state()["adapters"].toObject()[adapter].toObject()["links"].toArray().size();
    }

    QLocalServer elsewhere;
    QScopedPointer<FakeBluez> bluez;
    std::shared_ptr<BluezHub> hub;
    int drops = 0;
};

QTEST_GUILESS_MAIN(TestBluetooth)
#include "test_bluetooth.moc"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <future>

#include "common/waits.h"
#include "link/bluezerrors.h"
#include "link/bluezhub.h"
#include "link/sessionport.h"
#include "link/socketworker.h"
#include "tests/common/testsupport.h"
#include "tests/link/fakebluez.h"

using namespace std::chrono_literals;

namespace {

constexpr BluezTimes shortTimes{800ms, 150ms, 50ms, 1000ms, 600ms, 100ms};

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
        QVERIFY(bluez->startBus() && bluez->start());
        for (const char* adapter : {"hci0", "hci1"})
            bluez->call("AddAdapter", {adapter, true});
        for (int logger = 1; logger <= 8; ++logger) {
            for (const char* adapter : {"hci0", "hci1"})
                bluez->call("AddDevice",
                            {adapter, addressOf(logger), QString("Tembrin_%1").arg(logger), true, ""});
        }
        hub = std::make_shared<BluezHub>(shortTimes);
        drops = 0;
    }
    void finish() override
    {
        hub.reset();
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
            const QByteArray bytes = port->portName().toLatin1();
            port->write(bytes);
            QTRY_COMPARE(port->bytesAvailable(), qint64(bytes.size()));
            QCOMPARE(port->read(100), bytes);
        }
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

    QJsonObject state() { return QJsonDocument::fromJson(bluez->call("State").toString().toUtf8()).object(); }
    int linksOf(const char* adapter)
    {
        return state()["adapters"].toObject()[adapter].toObject()["links"].toArray().size();
    }

    QScopedPointer<FakeBluez> bluez;
    std::shared_ptr<BluezHub> hub;
    int drops = 0;
};

QTEST_GUILESS_MAIN(TestBluetooth)
#include "test_bluetooth.moc"

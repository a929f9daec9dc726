#include <QSignalSpy>
#include <QTest>

#include "tests/protocol/loggerbench.h"

/// A session on a computer with two paired loggers and some serial ports.
class TestDiscovery : public BenchTest
{
    Q_OBJECT

private:
    void begin() override
    {
        BenchTest::begin();
        bench->protocol.setPortDiscovery(
            {[this] { return paired; }, [] { return QVector<SerialPortRecord>(); }});
    }

private Q_SLOTS:
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

private:
    const QVector<possibleDevice> paired{{"rfcomm0", "", "", "Tembrin_1", ""},
                                         {"other", "", "", "Tembrin_2", ""}};
};

QTEST_GUILESS_MAIN(TestDiscovery)
#include "test_discovery.moc"

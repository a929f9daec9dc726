#include <QTest>

#include "common/common.h"
#include "tests/protocol/loggerbench.h"

class TestStatus : public BenchTest
{
    Q_OBJECT

private Q_SLOTS:
    void aStatusIsReadFieldByField()
    {
        QCOMPARE(bench->data.getSensors().size(), 11); // before anything is connected
        QCOMPARE(int(bench->data.tembrinType()), int(LOGGER_BIRCH));
        bench->recognise();
        const TembrinData& data = bench->data;
        QCOMPARE(data.versionLine(), QStringLiteral("Tembrin Birch, firmware 4.05"));
        QVERIFY(data.isIdle());
        QCOMPARE(data.numExperiments(), 3);
        QCOMPARE(data.reported().mask, quint16(0x0005));
        QCOMPARE(data.reported().rate, short(3));
        QCOMPARE(data.reported().samples, short(2));
        QCOMPARE(data.loggerDateTime(), QDateTime({2026, 11, 22}, {21, 47, 58}, Qt::UTC));
        QCOMPARE(data.reported().trigType, short(1));
        QCOMPARE(data.reported().trigSens, short(2));
        QCOMPARE(data.reported().trigLevel, short(300));
        QCOMPARE(data.reported().rangeSens, short(0xFF));
        QCOMPARE(data.reported().rangeMin, short(50));
        const LoggerSettings& conf = data.reported();
        QVERIFY(conf.sound && !conf.fahrenheit && conf.bluetooth && !conf.gps);
        QVERIFY(data.reported().hpa);
        QCOMPARE(data.reported().language, 2);
        bench->feed(status({{7, 1}, {12, 200}}));
        QVERIFY(!data.isIdle());
        QCOMPARE(data.reported().samples, short(4)); // the names end there
    }

    void aFirstStatusWithABadSumEstablishesButIsNotBelieved()
    {
        bench->feed(bytes(sensorListHex));
        bench->told.clear();
        QByteArray damaged = bytes(statusHex);
        damaged[32] = 0;
        bench->feed(damaged);
        QCOMPARE(bench->told, QStringList{"established"});
        QCOMPARE(bench->data.tembrinType(), 0);
        QCOMPARE(bench->data.reported().mask, quint16(0));
        bench->feed(bytes(statusHex));
        QCOMPARE(bench->told, (QStringList{"established", "type changed", "status", "mode"}));
    }

    void eventCodes()
    {
        const QMap<int, const char*> expected{
            {0x00, ""},
            {0x10, "mode"},
            {0x11, "accepted 2"},
            {0x22, ""},
            {0x23, "terminated 2"},
            {0x24, "terminated 3"},
            {0x25, "terminated 5"},
            {0x33, "stopped 0,accepted 4"},
            {0x44, "packet 0/1,next"},
            {0x45, ""},
            {0x46, "complete 0,accepted 5"}, // the download of the row before has brought nothing
            {0x91, "string,calibration 1"},
            {0xDD, "accepted 17"},
            {0xE0, "calibration 1"},
            {0xE4, "calibration 5"},
            {0xE5, ""},
        };
        bench->recognise();
        for (auto row = expected.begin(); row != expected.end(); ++row) {
            bench->told = QStringList{};
            bench->feed(status({{3, row.key()}}));
            QCOMPARE(bench->told.join(','), QString("status,%1").arg(row.value()).remove(QRegExp(",$")));
        }
    }

    void aFastRunIsAnnouncedAsStored()
    {
        bench->recognise();
        bench->feed(status({{3, 0x22}, {11, 6}}));
        QCOMPARE(bench->told, (QStringList{"status", "offline"}));
        QVERIFY(bench->data.isFastRate());
    }

    void sensorLists_data()
    {
        columns<QByteArray, QVector<int>, bool, QString>({"list", "ids", "gate", "language"});
        const QVector<int> plain{4, 2, 32, 39};
        row("sockets not identified", bytes("2E6982 04 02 20 27 000000000000000000000000 00"), plain, false,
            "en");
        row("both identified", bytes("2E6982 04 02 20 27 000000000000000000000000 6C"),
            QVector<int>{4, 2, 106, 112}, true, "en");
        row("second identified", bytes("2E6982 04 02 20 27 000000000000000000000000 05"),
            QVector<int>{4, 2, 32, 105}, false, "en");
        row("in Russian", bytes("2E6982 04 02 20 27 000000000000000000000000 00"),
            QVector<int>{47, 2, 32, 39}, false, "ru_RU");
        row("nothing", bytes("2E6982 00000000000000000000000000000000 00"), QVector<int>{}, false, "en");
    }

    void sensorLists()
    {
        const auto [list, ids, language] =
            fetched<QByteArray, QVector<int>, QString>({"list", "ids", "language"});
        Settings::mainStore().setValue(Settings::language, language);
        Common::forgetLocale();
        bench->feed(summed(list));
        Settings::mainStore().remove(Settings::language);
        Common::forgetLocale();
        QVector<int> found;
        for (const SensorPtr& sensor : bench->data.getSensors())
            found.append(sensor->ID);
        QCOMPARE(found, ids);
        QCOMPARE(bench->data.socketPlace(0), ids.isEmpty() ? -1 : 2);
        QCOMPARE(bench->data.socketPlace(1), ids.isEmpty() ? -1 : 3);
        QTEST(bench->data.hasPhotogate(), "gate");
        QCOMPARE(bench->told, QStringList{"type?"});
        bench->feed(bytes(statusHex)); // finds sockets to fill, or none
        QVERIFY(bench->data.isLoggerRecognized());
    }

    void socketsFollowWhatIsPluggedIn()
    {
        bench->feed(bytes(sensorListHex));
        const SensorPtr held = bench->data.getSensors().at(4);
        const auto first = [this] { return bench->data.getSensors().at(4)->ID; };
        QCOMPARE(bench->data.reported().external[0], 0); // a port that nothing is known of
        bench->feed(status({{25, 101}, {26, 3}}));
        QCOMPARE(first(), int(QUELLMARK_CURRENT));
        QCOMPARE(bench->data.getSensors().at(5)->ID, VERNIER_CODE + 3);
        QCOMPARE(bench->data.reported().external[0], int(QUELLMARK_CURRENT));
        QCOMPARE(bench->data.reported().external[1], VERNIER_CODE + 3);
        QCOMPARE(held->ID, int(SENSOR_EXTERNAL)); // who holds the old one keeps what it was

        bench->feed(status({{3, 0x46}, {25, 103}}));
        QCOMPARE(first(), int(QUELLMARK_CURRENT)); // the end of a download says nothing of sockets

        bench->told.clear();
        bench->feed(summed("2E6985 6A 00"));
        QCOMPARE(bench->told, QStringList{"status"});
        QCOMPARE(first(), int(QUELLMARK_HEARTRATE_WAVE));
        QCOMPARE(bench->data.getSensors().at(5)->ID, int(SENSOR_EXTERNAL_B));
        QVERIFY(bench->data.hasPhotogateCompatibleSensor() && !bench->data.hasPhotogate());
        QCOMPARE(bench->data.getExtSensID1(), 106);
        bench->feed(summed("2E6985 05 00")); // no sensor that a socket can hold
        QCOMPARE(first(), int(QUELLMARK_HEARTRATE_WAVE));
        bench->data.handleQuellmarkSensors(112, -1);
        QCOMPARE(first(), int(QUELLMARK_PHOTOGATE));
        QCOMPARE(bench->data.getExtSensID2(), 0);
        QVERIFY(bench->data.hasPhotogate());
        bench->feed(bytes(sensorListHex)); // pulled out while nobody listened
        QVERIFY(!bench->data.hasPhotogate());
    }

    void oldFirmwareTellsTheThermometerByItsLanguage()
    {
        bench->feed(summed("2E6982 0D 000000000000000000000000000000 00"));
        bench->feed(status({{5, 2}, {6, 9}, {31, 2}}));
        QCOMPARE(bench->data.getSensors().at(0)->ID, int(SENSOR_EXT_TEMP_NTC));
        bench->feed(status({{5, 2}, {6, 0x10}, {31, 1}}));
        QCOMPARE(bench->data.getSensors().at(0)->ID, int(SENSOR_EXT_TEMP_NTC));
    }

    void anotherTemperatureUnitWarnsOnceUntilTheyAgree()
    {
        bench->recognise();
        const QByteArray fahrenheit = status({{30, 0x17}});
        for (const QByteArray& packet : {fahrenheit, fahrenheit, status({}), fahrenheit})
            bench->feed(packet);
        QCOMPARE(bench->told.count("temperature"), 2);
    }
};

QTEST_GUILESS_MAIN(TestStatus)
#include "test_status.moc"

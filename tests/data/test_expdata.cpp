#include <QRandomGenerator>
#include <QTest>

#include <numeric>

#include "common/settings.h"
#include "tests/common/testsupport.h"
#include "tests/data/fedlogger.h"

using Values = QVector<double>;

namespace {

SensorPtr activeSensor(int ID)
{
    const SensorPtr sensor = SensorPtr::create(ID);
    sensor->active = true;
    return sensor;
}

/// Rows of two channels that count up from `from`, a second apart.
void run(ExpData* data, int samples, double from)
{
    for (int i = 0; i < samples; ++i)
        data->addSample(double(i), {from + i, from + i + 100});
}

QVector<int> lengths(const ExpData& data)
{
    QVector<int> result;
    for (int i = 0; i < data.getNSens(); ++i)
        result.append(data.getYSize(i));
    return result;
}

} // namespace

class TestExpData : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override { Settings::mainStore().clear(); }

private Q_SLOTS:
    void aLoggerShowsTwoChannelsBeforeItsFirstRun()
    {
        TembrinProtocol protocol(0);
        ExpData data(&protocol);
        QCOMPARE(data.locateSensByID(SENSOR_PH), 1);
        const SensorList& sensors = protocol.tembrinData->getSensors();
        QCOMPARE(sensors.at(data.getSens(1)->inLoggerIndex)->ID, int(SENSOR_PH));
        for (const SensorPtr& sensor : sensors)
            QCOMPARE(sensor->active, sensor->ID == SENSOR_AMB_TEMP || sensor->ID == SENSOR_PH);
        data.setDummySensors(0x10);
        QCOMPARE(data.getNSens(), 0);
        QVERIFY(!data.getActiveSensor());
    }

    void storesWhatALoggerSends()
    {
        FedLogger fed(QByteArray{"\x02\x0e\x1e"}); // pH, colorimeter, ambient temperature
        ExpData data(&fed.protocol);
        fed.online(0b110, 0, QByteArray::fromHex("03e807d00bb800c8"));
        data.setDataNewEmpty(fed.logger().runChannels(), 0.1024);
        data.addSample(0, fed.row());
        const SensorPtr& temp = data.getSens(3);
        QCOMPARE(temp->mapMin, 17.0);
        QCOMPARE(temp->mapMax, 23.0);

        fed.online(0b110, 1, QByteArray::fromHex("044c076c0bb8ffce"));
        data.addSample(0.1024, fed.row());
        QCOMPARE(data.getX(), Values({0.0, 0.1024}));
        QCOMPARE(data.getYNoConv(1), Values({20.0, 19.0}));
        QCOMPARE(data.getYNoConv(3), Values({20.0, -5.0}));
        QCOMPARE(temp->mapMin, -5.0);
        QCOMPARE(temp->maxView, 20.0);

        // The next run has no temperature, yet the class still has a curve of this one.
        fed.online(0b001, 0, QByteArray::fromHex("1b58"));
        ExpData classData;
        classData.setDataNewEmpty({temp, data.getSens(1)}, 0.1024);
        QCOMPARE(classData.getSensors(), SensorList({temp, data.getSens(1)}));
        data.setDataNewEmpty(fed.logger().runChannels(), 0);
        data.addSample(3, fed.row());
        QCOMPARE(data.getX(), Values({3.0}));
    }

    void takesOverADownload()
    {
        FedLogger fed(QByteArray{"\x02\x16\x1e"}); // pH, pulse, ambient temperature
        ExpData data(&fed.protocol);
        fed.download(0b110, 3, 3, QByteArray::fromHex("00468000000000468000001e004680000032"));
        data.getLoggerExperiment();
        QCOMPARE(data.getX(), Values({0.0, 0.1024, 0.2048}));
        QCOMPARE(data.getData(), QVector<Values>({Values(3, 70.0), Values(3, 1.65), {0.0, 3.0, 5.0}}));
        QCOMPARE(data.getMaxX(), 0.2048);
    }

    void loadedDataGetASensibleView_data()
    {
        columns<Values, Values>({"values", "view"});
        row("wide", Values{20, 60, 45}, Values{20, 60});
        row("zeros for missing readings", Values{20, 0, 60}, Values{20, 60});
        row("zero from the start", Values{0, 20, 60}, Values{0, 60});
        row("flat", Values{50, 50.1}, Values{45.05, 55.05});
        row("flat at the top", Values{99, 98}, Values{90, 100});
    }

    void loadedDataGetASensibleView()
    {
        QFETCH(Values, values);
        ExpData data;
        load(&data, {SENSOR_HUMIDITY}, {values});
        QTEST(Values({data.getSens(0)->minView, data.getSens(0)->maxView}), "view");
        QVERIFY(data.getSens(0)->active && data.finalData);
    }

    void servesOneChannelInDegreesFahrenheit()
    {
        Settings::mainStore().setValue(QLatin1String(Settings::unitsCelsius), false);
        ExpData data;
        QVERIFY(data.boundingRect().isNull());
        QCOMPARE(data.sample(3), QPointF());
        load(&data, {SENSOR_PH, SENSOR_AMB_TEMP}, {{7, 8, 9}, {10, 20, 40, 30}});
        data.setSensorToDraw(1);
        QCOMPARE(data.getY(1), Values({50, 68, 104, 86}));
        QCOMPARE(data.boundingRect(), QRectF(0, 10, 2, 30));
        QCOMPARE(data.sample(1), QPointF(1, 68));
        QCOMPARE(data.sample(77), QPointF(2, 104));
        data.setSensorScale(1, 0, 100);
        QCOMPARE(data.getSens(1)->maxView, 212.0);
        data.setXYIndex(1);
        data.setSensorToDraw(0);
        QCOMPARE(data.sample(2), QPointF(104, 9));
        QCOMPARE(data.boundingRect(), QRectF(10, 7, 30, 2));
    }

    void aRepeatedRunStandsBesideTheLast()
    {
        ExpData data;
        data.setDataNewEmpty({activeSensor(SENSOR_PH), activeSensor(SENSOR_LIGHT)}, 1);
        run(&data, 5, 10);
        data.setDataAddRepeatExp();
        run(&data, 3, 50);
        QCOMPARE(lengths(data), QVector<int>({5, 5, 3, 3}));
        QCOMPARE(data.boundingRect().width(), 4.0);
        QCOMPARE(data.minY, Values({10, 110, 50, 150}));
        QCOMPARE(data.getSens(2)->maxView, 52.0);
        data.setDataAddRepeatExp();
        run(&data, 6, 70);
        QCOMPARE(lengths(data), QVector<int>({3, 3, 6, 6}));
        QCOMPARE(data.getX(), Values({0, 1, 2, 3, 4, 5}));
        QCOMPARE(data.maxY, Values({52, 152, 75, 175}));
    }

    void slidesAnAppendedExperiment()
    {
        ExpData data;
        load(&data, {SENSOR_PH}, {{10, 11, 12, 13, 14, 15, 16, 17}});
        QVERIFY(!data.mergeDataFromNewOpen(2, {0, 1}, 1.0001));
        QVERIFY(!data.mergeDataFromNewOpen(2, {1, 2}, 1));
        QVERIFY(!data.mergeDataFromNewOpen(2, {}, 1));
        QCOMPARE(data.getNSens(), 1);
        QVERIFY(data.mergeDataFromNewOpen(2, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, 1));
        Values later(10);
        std::iota(later.begin(), later.end(), 20);
        data.addSensorData(1, SENSOR_PH, later, -1, true);
        data.addSensorData(2, SENSOR_PH, {}, -1, true);
        QCOMPARE(data.getSens(1)->name, QStringLiteral("pH[2]"));

        const auto state = [&data] {
            return lengths(data) + QVector<int>{data.getXSize(), data.getLeftPad(0), data.getLeftPad(1)};
        };
        data.shiftLastData(5);
        QCOMPARE(state(), QVector<int>({8, 15, 0, 15, 0, 5}));
        QCOMPARE(data.getYNoConv(1).mid(3, 4), Values({20, 20, 20, 21}));
        data.shiftLastData(2);
        QCOMPARE(state(), QVector<int>({8, 12, 0, 12, 0, 2}));
        data.shiftLastData(-3);
        QCOMPARE(state(), QVector<int>({11, 10, 0, 11, 3, 0}));
        QCOMPARE(data.getYNoConv(1), later);
        // What a crop took of the padding is not taken from the data.
        data.doCrop(2, 100);
        data.shiftLastData(0);
        QCOMPARE(data.getYNoConv(0), Values({10, 11, 12, 13, 14, 15, 16, 17}));
        data.doCrop(99, 100);
        data.doCrop(3.5, 6);
        QCOMPARE(data.getX(), Values({4, 5}));
    }

    // Three loggers that deliver as they like, one of them starting late: after each sample every position
    // that all begun channels reach has their mean, and no other has one.
    void theAverageIsTheMeanOfWhatIsStored()
    {
        QRandomGenerator dice(20240607);
        for (int round = 0; round < 30; ++round) {
            ExpData loggers[3];
            SensorList list{activeSensor(SENSOR_LIGHT)};
            for (ExpData& logger : loggers) {
                logger.setDataNewEmpty({activeSensor(SENSOR_PH), activeSensor(SENSOR_LIGHT)}, 0.5);
                logger.setSelectedSensor(1);
                list.prepend(logger.getSens(1));
            }
            ExpData data;
            data.setDataNewEmpty(list, 0.5);
            const int speed[3] = {2, 5, 9};
            const int lateFrom = dice.bounded(60);
            for (int step = 0; step < 120; ++step) {
                const int i = dice.bounded(3);
                if (dice.bounded(10) >= speed[i] || (i == round % 3 && step < lateFrom))
                    continue;
                loggers[i].addSample(loggers[i].getXSize() * 0.5, {1.0, 10 + dice.bounded(5000) / 7.0});
                // Some samples reach the class only with the next one.
                if (dice.bounded(4) > 0)
                    data.addSample(i, &loggers[i]);
                verifyAverage(data, loggers);
                if (QTest::currentTestFailed())
                    return;
            }
        }
    }

    void aClassIsRebuiltFromStoredRuns()
    {
        Settings::mainStore().setValue(QLatin1String(Settings::unitsCelsius), false);
        ExpData first;
        load(&first, {SENSOR_AMB_TEMP}, {{20, 30}});
        ExpData second;
        load(&second, {SENSOR_AMB_TEMP}, {{10, 12, 14}});
        ExpData data;
        data.setDataNewEmpty({first.getSens(0), second.getSens(0), activeSensor(SENSOR_AMB_TEMP)}, 1);
        data.copyValues(0, &first);
        data.copyValues(1, &second);
        data.updateMean(true);
        data.makeUniformScales();
        QCOMPARE(data.getX(), Values({0, 1, 2}));
        QCOMPARE(data.getYNoConv(2), Values({15, 21}));
        QCOMPARE(data.minY, Values({20, 10, 15}));
        for (const SensorPtr& sensor : data.getSensors()) {
            QCOMPARE(sensor->classMinView, 50.0);
            QCOMPARE(sensor->classMaxView, 86.0);
        }
    }

private:
    static void verifyAverage(const ExpData& data, const ExpData* loggers)
    {
        QVector<Values> begun;
        int reach = INT_MAX;
        for (int c = 0; c < 3; ++c) {
            const Values& y = data.getYNoConv(c);
            QCOMPARE(y, loggers[c].getYNoConv(1).mid(0, y.size()));
            QVERIFY(data.getXSize() >= y.size());
            if (y.isEmpty())
                continue;
            begun.append(y);
            reach = qMin(reach, y.size());
            QCOMPARE(data.minY.at(c), *std::min_element(y.begin(), y.end()));
        }
        QCOMPARE(data.getYSize(3), begun.isEmpty() ? 0 : reach);
        for (int k = 0; k < data.getYSize(3); ++k) {
            double sum = 0.0;
            for (const Values& y : begun)
                sum += y.at(k);
            QCOMPARE(data.getYNoConvAt(3, k), sum / begun.size());
        }
    }
};

QTEST_GUILESS_MAIN(TestExpData)
#include "test_expdata.moc"

#include <QRandomGenerator>
#include <QTest>

#include <cmath>
#include <functional>
#include <numeric>

#include "common/settings.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "tests/common/testsupport.h"
#include "tests/data/loadedset.h"

using Values = QVector<double>;

namespace {

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
        QCOMPARE(int(protocol.tembrinData->reported().mask), 1 << 1 | 1 << 7);
        data.setDummySensors(0x10);
        QCOMPARE(data.getNSens(), 0);
        QVERIFY(!data.getActiveSensor());
    }

    void theViewOfATemperatureFollowsItsValues()
    {
        ExpData data;
        data.setDataNewEmpty({SensorPtr::create(SENSOR_AMB_TEMP)}, 0.1024);
        const SensorPtr& temp = data.getSens(0);
        data.addSample(0, {20});
        QCOMPARE(Values({temp->mapMin, temp->mapMax}), Values({17, 23}));
        data.addSample(0.1024, {-5});
        QCOMPARE(Values({temp->mapMin, temp->maxView}), Values({-5, 20}));
        data.setDataNewEmpty({SensorPtr::create(SENSOR_AMB_TEMP)}, 0);
        data.addSample(3, {20});
        QCOMPARE(data.getX(), Values({3.0}));
    }

    // What was recorded stays what it was when a plug is pulled, a class is built from it or a run begins.
    void channelsBelongToOneSet()
    {
        const SensorPtr theirs = SensorPtr::create(SENSOR_AMB_TEMP);
        theirs->readSetMinMax = theirs->readClassMinMax = theirs->readClassSetMinMax = true;
        ExpData data;
        data.setDataNewEmpty({SensorPtr::create(SENSOR_PH), theirs}, 1);
        QVERIFY(theirs->readSetMinMax && theirs->readClassMinMax && theirs->readClassSetMinMax);
        QVERIFY(!data.getSens(1)->readSetMinMax);
        data.addSample(0, {7, 20});
        const int measured = theirs->ID;
        theirs->ID = SENSOR_VOLTAGE;
        ExpData classSet;
        classSet.setDataNewEmpty({data.getSens(1), SensorPtr::create(SENSOR_AMB_TEMP)}, 1);
        classSet.getSens(0)->name = QStringLiteral("other");
        classSet.joinSample(0, 0, 90);
        QCOMPARE(data.getSens(1)->ID, measured);
        QCOMPARE(data.getSens(1)->maxView, 20.0);
        QVERIFY(data.getSens(1)->name != QStringLiteral("other"));
    }

    void onlyWhatTheUserMadeNeedsToBeSaved()
    {
        ExpData own;
        load(&own, {SENSOR_LIGHT}, {{1, 2, 3}});
        QVERIFY(!own.isNeedSave());
        ExpData data;
        data.setNeedSave(true);
        data.setDataNewEmpty({SensorPtr::create(SENSOR_LIGHT), SensorPtr::create(SENSOR_LIGHT)}, 1);
        data.setSelectedSensor(0);
        data.joinChannel(0, own.getSens(0), own);
        data.makeUniformScales();
        data.setXRange();
        QVERIFY(!data.isNeedSave());
        const std::function<void()> doings[] = {[&] { data.joinSample(0, 3, 4); },
                                                [&] { data.smoothCurve(); },
                                                [&] { data.addSpecialCurve(ExpData::CURVE_DERIV); },
                                                [&] { data.doCrop(1, 3); },
                                                [&] {
                                                    data.addSample(9, {1, 1});
                                                },
                                                [&] { data.takeExperiment(own.getSensors(), 1, {{5}}); }};
        for (const auto& doing : doings) {
            data.setNeedSave(false);
            doing();
            QVERIFY(data.isNeedSave());
        }
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
        QVERIFY(data.finalData);
    }

    void servesOneChannelInDegreesFahrenheit()
    {
        ExpData data(inFahrenheit());
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
        data.setDataNewEmpty({SensorPtr::create(SENSOR_PH), SensorPtr::create(SENSOR_LIGHT)}, 1);
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

    // Three loggers that lose samples and deliver as they like: each value stands at its time, and the
    // average of a time is over those that have a value there, whether they came one by one or whole.
    void theAverageIsTheMeanOfWhatIsThere()
    {
        QRandomGenerator dice(20240607);
        for (const double dt : {0.5, 0.0}) {
            const double period = dt > 0 ? dt : 1;
            ExpData loggers[3];
            const SensorList list(4, SensorPtr::create(SENSOR_LIGHT));
            ExpData live;
            live.setDataNewEmpty(list, dt);
            QMap<int, Values> truth; // by sample number
            int next[3] = {0, 0, 40};
            for (ExpData& logger : loggers) {
                logger.setDataNewEmpty({SensorPtr::create(SENSOR_PH), SensorPtr::create(SENSOR_LIGHT)}, dt);
                logger.setSelectedSensor(1);
            }
            for (int step = 0; step < 400; ++step) {
                const int i = dice.bounded(3);
                const int number = next[i]++;
                if (dice.bounded(10) == 0)
                    continue; // lost
                const double value = 10 + dice.bounded(5000) / 7.0;
                loggers[i].addSample(number * period, {1.0, value});
                // A clock that runs a little late is the same sample all the same.
                if (dice.bounded(4) > 0)
                    live.joinSample(i, (number + dice.bounded(0.3)) * period, value);
                else
                    live.addSample(i, &loggers[i]);
                Values& row = truth[number];
                row.resize(3);
                row[i] = value;
            }
            verifyAverage(live, truth);
            ExpData whole;
            whole.setDataNewEmpty(list, dt);
            for (const int i : {2, 0, 1, 2})
                whole.joinChannel(i, loggers[i].getSens(1), loggers[i]);
            verifyAverage(whole, truth);
            QCOMPARE(whole.getX().size(), truth.size());
            QCOMPARE(whole.getXAt(truth.size() - 1), truth.lastKey() * period);
        }
    }

    // What the user did to the class stays when one group's channel comes anew.
    void aChannelJoinedAnewLeavesTheRest()
    {
        ExpData light, sour;
        load(&light, {SENSOR_LIGHT}, {{0, 10, 20, 30, 40, 50}});
        load(&sour, {SENSOR_PH}, {{1, 2, 3, 4, 5, 6, 7, 8}});
        ExpData data;
        data.setDataNewEmpty(SensorList(3, SensorPtr::create(SENSOR_LIGHT)), 1);
        data.joinChannel(0, light.getSens(0), light);
        data.joinChannel(1, light.getSens(0), light);
        data.doCrop(1, 5);
        data.setSelectedSensor(1);
        data.smoothCurve();
        data.setSelectedSensor(2);
        data.addSpecialCurve(ExpData::CURVE_DERIV);
        data.getSens(1)->readClassSetMinMax = true;
        data.getSens(1)->classMaxView = 77;
        const QString smooth = data.getSens(1)->name;

        data.joinChannel(0, sour.getSens(0), sour);
        QCOMPARE(data.getYNoConv(1), Values({15, 20, 30, 35}));
        QCOMPARE(data.getSens(1)->name, smooth);
        QCOMPARE(data.getYNoConv(0).mid(0, 4), Values({2, 3, 4, 5})); // the times 1 to 4, which the crop kept
        QCOMPARE(data.getX(), Values({1, 2, 3, 4, 6, 7}));            // and what is later than the crop knew
        QCOMPARE(data.getYNoConv(2), Values({8.5, 11.5, 17, 20, 7, 8}));
        QCOMPARE(data.getYNoConv(3), Values({3, 3, 5.5, 3, -6.5, 1}));
        QCOMPARE(data.getSens(2)->ID, int(SENSOR_PH)); // the average is of the first group's kind
        QCOMPARE(data.getSens(3)->name, data.getSens(0)->name + QStringLiteral("/time"));
        QCOMPARE(data.getSens(3)->unitName, data.getSens(0)->unitName + QStringLiteral("/s"));
        QCOMPARE(data.groupsInAverage(), 2);
        QVERIFY(data.isMeaningless(2) && !data.isMeaningless(1));
        QCOMPARE(data.valuesAt(4), 1);
        data.joinChannel(0, light.getSens(0), light);
        QCOMPARE(data.getX(), Values({1, 2, 3, 4}));
        QCOMPARE(data.getSens(0)->classMaxView, 77.0);
        QVERIFY(!data.isMeaningless(2));
        data.joinSample(0, 9, 100);
        data.joinSample(0, 0, 100);
        data.joinSample(1, 5.2, 100);
        QCOMPARE(data.getX(), Values({1, 2, 3, 4, 9}));
        QCOMPARE(data.getYNoConvAt(3, 4), (100 - 37.5) / 5);
        // Another period is not for this class, but does no harm.
        ExpData fast;
        load(&fast, {SENSOR_LIGHT}, {Values(40, 6.0)}, 0.15);
        data.joinChannel(1, fast.getSens(0), fast);
        QVERIFY(std::is_sorted(data.getX().begin(), data.getX().end()));
    }

    // Its curve and its rows stay, and what it alone measured has no average.
    void aGroupCanBeTakenOutOfTheAverage()
    {
        ExpData first, second, sour;
        load(&first, {SENSOR_LIGHT}, {{10, 20, 30}});
        load(&second, {SENSOR_LIGHT}, {{14, 26}});
        load(&sour, {SENSOR_PH}, {{1, 2, 3, 4}});
        ExpData data;
        data.setDataNewEmpty(SensorList(4, SensorPtr::create(SENSOR_LIGHT)), 1);
        const ExpData* const groups[] = {&first, &second, &sour};
        for (int i = 0; i < 3; ++i)
            data.joinChannel(i, groups[i]->getSens(0), *groups[i]);
        QVERIFY(data.isMeaningless(3));
        const ExpData::Content before = data.content();
        data.setOut(2, true);
        data.setOut(3, true); // the average itself is no group
        QVERIFY(!data.isMeaningless(3) && data.isOut(2) && !data.isOut(3));
        data.joinSample(2, 4, 9);
        QCOMPARE(data.getYNoConv(3).mid(0, 3), Values({12, 23, 30}));
        QVERIFY(std::isnan(data.getYNoConvAt(3, 3)) && std::isnan(data.getYNoConvAt(3, 4)));
        QCOMPARE(data.spread().mid(0, 2), Values({std::sqrt(8), std::sqrt(18)}));
        QVERIFY(std::isnan(data.spread().at(2)));
        data.joinChannel(1, second.getSens(0), second); // comes back
        QCOMPARE(data.getXSize(), 5);
        QCOMPARE(data.getYNoConvAt(3, 0), 12.0);
        data.removeSamples(4, 4);
        data.setOut(2, false);
        QVERIFY(data.holds(before));
        data.setDataNewEmpty(SensorList(4, SensorPtr::create(SENSOR_LIGHT)), 1);
        QVERIFY(data.out().isEmpty());
    }

    void aClassIsRebuiltFromStoredRuns()
    {
        ExpData first(inFahrenheit());
        load(&first, {SENSOR_AMB_TEMP}, {{20, 30}});
        ExpData second(inFahrenheit());
        load(&second, {SENSOR_AMB_TEMP}, {{10, 12, 14}});
        ExpData data;
        data.setDataNewEmpty({first.getSens(0), second.getSens(0), second.getSens(0)}, 1);
        data.copyValues(0, &first);
        data.copyValues(1, &second);
        data.updateMean(true);
        data.makeUniformScales();
        QCOMPARE(data.getX(), Values({0, 1, 2}));
        QCOMPARE(data.getYNoConv(2), Values({15, 21, 14}));
        QCOMPARE(data.minY, Values({20, 10, 14}));
        for (const SensorPtr& sensor : data.getSensors()) {
            QCOMPARE(sensor->classMinView, 50.0);
            QCOMPARE(sensor->classMaxView, 86.0);
        }
    }

private:
    static void verifyAverage(const ExpData& data, const QMap<int, Values>& truth)
    {
        for (auto at = truth.begin(); at != truth.end(); ++at) {
            const int row = int(std::distance(truth.begin(), at));
            double sum = 0;
            int count = 0;
            for (int c = 0; c < 3; ++c) {
                const double value = data.getYNoConv(c).value(row, qQNaN());
                QVERIFY(at->at(c) == 0 ? std::isnan(value) : value == at->at(c));
                count += at->at(c) == 0 ? 0 : 1;
                sum += at->at(c);
            }
            QCOMPARE(data.getYNoConvAt(3, row), sum / count);
            double squares = 0;
            for (int c = 0; c < 3; ++c)
                squares += at->at(c) == 0 ? 0 : std::pow(at->at(c) - sum / count, 2);
            QVERIFY(count < 2 ? std::isnan(data.spread().at(row))
                              : qAbs(data.spread().at(row) - std::sqrt(squares / (count - 1))) < 1e-9);
            QCOMPARE(data.valuesAt(row), count);
        }
    }
};

QTEST_GUILESS_MAIN(TestExpData)
#include "test_expdata.moc"

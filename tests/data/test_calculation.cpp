#include <QTest>

#include <algorithm>
#include <cmath>

#include "data/calculation.h"
#include "tests/common/testsupport.h"
#include "tests/data/loadedset.h"

using Values = QVector<double>;

/// Channels that a formula gives.
class TestCalculation : public GuardedTest
{
    Q_OBJECT

private:
    static Calculation::Recipe recipe(const ExpData& set, const QString& formula)
    {
        Calculation::Recipe recipe;
        const QString problem = Calculation::read(formula, set.getSensors(), &recipe);
        if (!problem.isEmpty())
            qFatal("%s", qPrintable(problem));
        recipe.name = QStringLiteral("Energy");
        recipe.unit = QStringLiteral("J");
        for (const QString& name : Calculation::constantsOf(recipe))
            recipe.constants.append({name, 2});
        return recipe;
    }
    /// With gaps as -1.
    static Values energy(const ExpData& set)
    {
        Values values = set.getYNoConv(set.getNSens() - 1);
        std::replace_if(
            values.begin(), values.end(), [](double value) { return std::isnan(value); }, -1.0);
        return values;
    }
    static SensorList channels(const QVector<int>& ids)
    {
        SensorList list;
        for (const int id : ids)
            list.append(SensorPtr::create(id));
        return list;
    }

private Q_SLOTS:
    void formulasAreRead_data()
    {
        columns<QString, QString, QString>({"typed", "formula", "problem"});
        row("letters", "0.5*m*A^2", "0.5*m*A^2", "");
        row("names", "2*distance + VOLTAGE", "2*A + B", "");
        row("a name in another", "Distance/time - Distance", "C - A", "");
        row("no more than words", "Distances + A", "Distances + A", ""); // a constant
        row("another channel", "A*K", "A*K", "no channel K");
        row("no channel", "3*t", "3*t", "needs");
        row("nothing", " ", "", "Type");
        row("half of one", "A*(", "A*(", "expression");
    }

    void formulasAreRead()
    {
        const auto [typed, formula, problem] =
            fetched<QString, QString, QString>({"typed", "formula", "problem"});
        ExpData set;
        load(&set, {SENSOR_DISTANCE, SENSOR_VOLTAGE, SENSOR_VOLTAGE}, {{1, 2}, {3, 4}, {5, 6}});
        set.getSens(2)->name = QStringLiteral("Distance/time");
        Calculation::Recipe read;
        const QString told = Calculation::read(typed, set.getSensors(), &read);
        QVERIFY2(problem.isEmpty() ? told.isEmpty() : told.contains(problem), qPrintable(told));
        QCOMPARE(read.formula, formula);
    }

    void followsItsOrigins()
    {
        ExpData set(inFahrenheit());
        load(&set, {SENSOR_AMB_TEMP, SENSOR_VOLTAGE}, {{10, qQNaN(), 30, 40, 50}, {1, 2, 0, 4}});
        QVERIFY(set.addCalculated(recipe(set, QStringLiteral("k*A/B + t"))));
        // In base units; without a value where an origin has none, or the formula.
        QCOMPARE(energy(set), Values({20, -1, -1, 23, -1}));
        set.replaceYVal(0, 1, 20);
        set.replaceYVal(1, 2, 1);
        QCOMPARE(energy(set), Values({20, 21, 62, 23, -1}));
        QCOMPARE(set.getMaxY(2), 62.0);
        set.setSelectedSensor(0);
        set.addSpecialCurve(ExpData::CURVE_DERIV);
        QVERIFY(set.addCalculated(recipe(set, QStringLiteral("Energy + D"))));
        QCOMPARE(energy(set), Values({30, 31, 72, 33, -1}));
        set.setSelectedSensor(1);
        set.smoothCurve(); // of three samples
        QCOMPARE(set.getYNoConv(2).at(1), 2 * 20 / ((1 + 2 + 1) / 3.0) + 1);
        QCOMPARE(energy(set).at(1), set.getYNoConv(2).at(1) + 10);
        set.doCrop(1, 4);
        QCOMPARE(energy(set).size(), 3);
        QCOMPARE(set.getSens(2)->precision, 2.0); // four digits of what there is
    }

    void comesAlongIntoTheNextRun_data()
    {
        columns<QVector<int>, Values>({"channels", "energy"});
        row("the same", QVector<int>{SENSOR_DISTANCE, SENSOR_VOLTAGE}, Values{7, -1, 14});
        row("elsewhere", QVector<int>{SENSOR_VOLTAGE, SENSOR_LIGHT, SENSOR_DISTANCE}, Values{6, -1, 12});
        row("without one", QVector<int>{SENSOR_DISTANCE, SENSOR_LIGHT}, Values());
        row("another set of two", QVector<int>{SENSOR_VOLTAGE, SENSOR_VOLTAGE}, Values());
    }

    void comesAlongIntoTheNextRun()
    {
        const auto [ids, expected] = fetched<QVector<int>, Values>({"channels", "energy"});
        ExpData set;
        set.setDataNewEmpty(channels({SENSOR_DISTANCE, SENSOR_VOLTAGE}), 1);
        QVERIFY(set.addCalculated(recipe(set, QStringLiteral("A + 3*B"))));
        set.addSample(0, {1, 1});
        QCOMPARE(energy(set), Values({4}));
        set.setDataNewEmpty(channels(ids), 1);
        QCOMPARE(set.getNSens(), ids.size() + (expected.isEmpty() ? 0 : 1));
        const auto value = [n = ids.size()](double first) { // 1, 2, 3 ...
            Values row;
            for (int i = 0; i < n; ++i)
                row.append(first * (i + 1));
            return row;
        };
        set.addSample(0, value(1));
        set.addSample(1, Values(ids.size(), qQNaN()));
        set.addSample(2, value(2));
        if (!expected.isEmpty())
            QCOMPARE(energy(set), expected);
        // As a value, in place and out of it again.
        const ExpData::Content content = set.content();
        set.setDataNewEmpty();
        set.setContent(content);
        set.setDataNewEmpty(set.getSensors(), 1);
        QCOMPARE(set.getNSens(), content.sensors.size());
        set.takeExperiment(channels(ids), 1, QVector<Values>(ids.size(), Values{1}));
        if (!expected.isEmpty())
            QCOMPARE(energy(set), Values({4}));
    }

    void groupsOfTheClassCount()
    {
        ExpData set;
        set.setDataNewEmpty(channels({SENSOR_PH, SENSOR_PH, SENSOR_PH}), 1);
        set.joinSample(0, 0, 7);
        set.joinSample(1, 0, 5);
        QVERIFY(set.addCalculated(recipe(set, QStringLiteral("A - B"))));
        set.joinSample(0, 1, 9);
        QCOMPARE(energy(set), Values({2, -1}));
        set.joinSample(1, 1, 5);
        QCOMPARE(energy(set), Values({2, 4}));
        QVERIFY(set.isAverage(2));
        QCOMPARE(set.getYNoConv(2), Values({6, 7}));
        ExpData other;
        load(&other, {SENSOR_PH}, {{8, 8, 8}});
        set.joinChannel(0, set.getSens(0), other);
        QCOMPARE(energy(set), Values({3, 3, -1}));
    }
};

QTEST_MAIN(TestCalculation)
#include "test_calculation.moc"

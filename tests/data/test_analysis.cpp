#include <QFile>
#include <QTest>

#include <cmath>

#include "common/settings.h"
#include "tests/common/testsupport.h"
#include "tests/data/loadedset.h"

namespace {

/// The points of a certified set and the coefficients of x⁰, x¹, x² that belong to them.
QVector<QPointF> readCertified(const QString& name, QVector<double>* coefficients)
{
    QVector<QPointF> points;
    QFile file(QStringLiteral(DATA_DIR "/") + name);
    const QList<QByteArray> lines =
        file.open(QIODevice::ReadOnly) ? file.readAll().split('\n') : QList<QByteArray>();
    for (const QByteArray& line : lines) {
        const QList<QByteArray> xy = line.split(',');
        if (line.startsWith("# B"))
            coefficients->append(line.split(' ').last().toDouble());
        else if (xy.size() == 2 && xy.first() != "x")
            points.append({xy.first().toDouble(), xy.last().toDouble()});
    }
    return points;
}

double digits(double value, double truth)
{
    return value == truth ? 16.0 : -std::log10(std::fabs((value - truth) / truth));
}

} // namespace

class TestAnalysis : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override { Settings::mainStore().clear(); }

private Q_SLOTS:
    // The certified sets of the US National Institute of Standards and Technology, and the parabola again a
    // day into a run.
    void regressionsReachTheCertifiedDigits_data()
    {
        columns<QString, int, double>({"file", "degree", "later"});
        row("line", "norris.csv", 1, 0.0);
        row("parabola", "pontius.csv", 2, 0.0);
        row("late parabola", "pontius.csv", 2, 86.4e6);
    }

    void regressionsReachTheCertifiedDigits()
    {
        const auto [file, degree, later] = fetched<QString, int, double>({"file", "degree", "later"});
        QVector<double> k;
        QVector<QPointF> points = readCertified(file, &k);
        QCOMPARE(k.size(), degree + 1);
        for (QPointF& p : points)
            p.rx() += later;
        if (later > 0)
            k = {k[0] - k[1] * later + k[2] * later * later, k[1] - 2 * k[2] * later, k[2]};
        double a = 0, b = 0, c = 0, r = 0;
        if (degree == 1)
            ExpData::linearRegression(points, &b, &c, &r);
        else
            ExpData::quadRegression(points, &a, &b, &c, &r);
        const QVector<double> found{c, b, a};
        for (int i = 0; i <= degree; ++i)
            QVERIFY(digits(found.at(i), k.at(i)) >= 9);
    }

    void regressionsOfFewPoints()
    {
        double a = 0, b = 0, c = 0, r = 0;
        ExpData::linearRegression({{1, 9}, {2, 7}, {3, 5}}, &a, &b, &r);
        QCOMPARE(a, -2.0);
        QCOMPARE(r, 1.0);
        ExpData::quadRegression({{7200.1, 3}, {7201.1, 1}, {7202.1, 9}}, &a, &b, &c, &r);
        QCOMPARE(a, 5.0);
        ExpData::quadRegression({{0.1, 9}, {0.7, 7}, {0.7, 5}, {0.1, 3}}, &a, &b, &c, &r);
        QVERIFY(!std::isfinite(a));
    }

    void smoothsTheStoredValuesAndOnlyThisCurve()
    {
        ExpData data(inFahrenheit());
        load(&data, {SENSOR_AMB_TEMP, SENSOR_AMB_TEMP}, {{1, 2, 9}, {1, 2, 9}});
        const QString name = data.getSens(0)->name;
        data.smoothCurve();
        QCOMPARE(data.getYNoConv(0), QVector<double>({1.5, 4, 5.5}));
        QCOMPARE(data.getYAt(0, 1), 39.2);
        QCOMPARE(data.getSens(0)->name, name + QStringLiteral(" (smooth)"));
        QCOMPARE(data.getYNoConv(1), QVector<double>({1, 2, 9}));
        QCOMPARE(data.getSens(1)->name, name);
    }

    void aDerivativeGrowsWithItsOrigin()
    {
        ExpData data;
        data.setDataNewEmpty({SensorPtr::create(SENSOR_DISTANCE)}, 0.5);
        data.addSample(0, {1});
        data.addSpecialCurve(ExpData::CURVE_DERIV);
        QCOMPARE(data.getNSens(), 1);
        data.addSample(0.5, {1.5});
        data.addSample(1, {1.25});
        data.addSpecialCurve(ExpData::CURVE_DERIV);
        data.addSample(1.5, {3.25});
        QCOMPARE(data.getYNoConv(1), QVector<double>({1, 1, -0.5, 4}));
        data.addSpecialCurve(ExpData::CURVE_SMOOTH);
        data.addSample(3, {0.25}); // two samples were lost: a slope over three periods
        QCOMPARE(data.getYNoConvAt(1, 4), -2.0);
        QCOMPARE(data.getYNoConv(2).mid(2), QVector<double>({2, 4.75 / 3, 1.75}));
        const SensorPtr& speed = data.getSens(1);
        QCOMPARE(speed->name, QStringLiteral("Speed"));
        QCOMPARE(speed->unitName, QStringLiteral("m/s"));
        QCOMPARE(speed->max, 1.0);
        QCOMPARE(speed->maxView, 4.0);
        data.replaceYVal(0, 0, 3); // typed over
        QCOMPARE(data.getYNoConvAt(1, 1), -3.0);
    }

    void derivedCurvesFollowTheUnit()
    {
        ExpData data(inFahrenheit());
        data.setDataNew(1, {0, 1, 2}, 1);
        data.addSensorData(0, SENSOR_IR_TEMP, {10, 20, 30}, -1);
        data.setSelectedSensor(0);
        data.addSpecialCurve(ExpData::CURVE_SMOOTH);
        data.addSpecialCurve(ExpData::CURVE_DERIV);
        QCOMPARE(data.getYAt(1, 1), 68.0); // a temperature
        QCOMPARE(data.getYAt(2, 1), 18.0); // a difference of ten degrees
    }

    // A missing sample has no part in anything, and nothing is calculated across it.
    void gapsAreNoValues()
    {
        const double none = qQNaN();
        const auto isGap = [](double v) { return std::isnan(v); };
        ExpData data;
        load(&data, {SENSOR_LIGHT}, {{none, 2, 4, none, 8, 6, none}});
        QCOMPARE(data.getMinY(0), 2.0);
        QCOMPARE(data.getMaxY(0), 8.0);
        QVERIFY(isGap(data.interpolateY(0, 2.5)));
        QCOMPARE(data.interpolateY(0, 2), 4.0);
        QCOMPARE(data.interpolateY(0, 4.5), 7.0);
        QCOMPARE(data.integral(0, 1, 5), 3.0 + 7.0);
        double a = 0, b = 0, c = 0, r = 0;
        data.regression(1, 0, 1.5, 3.5, &a, &b, &c, &r);
        QCOMPARE(b, 2.0);
        data.calcStat(&a, &b, &c, &r);
        QCOMPARE(QVector<double>({a, b, c}), QVector<double>({2, 8, 5}));
        data.addSpecialCurve(ExpData::CURVE_DERIV);
        data.addSpecialCurve(ExpData::CURVE_SMOOTH);
        const QVector<double> slopes{none, 2, 2, none, 2, -2, none};
        const QVector<double> smooth{none, 3, 3, none, 7, 7, none};
        for (int i = 0; i < slopes.size(); ++i) {
            QVERIFY(isGap(slopes[i]) ? isGap(data.getYNoConvAt(1, i)) : data.getYNoConvAt(1, i) == slopes[i]);
            QVERIFY(isGap(smooth[i]) ? isGap(data.getYNoConvAt(2, i)) : data.getYNoConvAt(2, i) == smooth[i]);
        }
    }

    // A cup that cools by 0.7 degrees a second, told in steps of a tenth by a sensor that flickers.
    void slopesAreFittedOverAWindow()
    {
        QVector<double> cup;
        for (int i = 0; i < 400; ++i)
            cup << std::round(10 * (80 - 0.07 * i) + i % 3 - 1) / 10;
        ExpData data(inFahrenheit());
        load(&data, {SENSOR_EXT_TEMP}, {cup}, 0.1);
        data.setSelectedSensor(0);
        data.derivWindow = 21;
        data.addSpecialCurve(ExpData::CURVE_DERIV);
        for (int i = 0; i < 400; ++i) {
            const double tolerance = i < 10 || i > 389 ? 0.5 : 0.1;
            const double tangent = data.tangentSlope(0, i * 0.1, 1.2) / 1.8;
            const double derivative = data.getYNoConvAt(1, i);
            QVERIFY2(qAbs(tangent + 0.7) < tolerance && qAbs(derivative + 0.7) < tolerance,
                     qPrintable(QStringLiteral("sample %1: %2, %3").arg(i).arg(tangent).arg(derivative)));
        }
        load(&data, {SENSOR_LIGHT}, {{1, 2, 5}});
        data.derivWindow = 5; // more than there are
        data.setSelectedSensor(0);
        data.addSpecialCurve(ExpData::CURVE_DERIV);
        QCOMPARE(data.getYNoConvAt(1, 1), 2.0);
    }

    // The line goes from 0 at 1 s to 6 at 4 s and on to 2 at 6 s.
    void predictionsAreAsFarAway_data()
    {
        columns<QVector<double>, double, double, double>({"samples", "dt", "start", "mean"});
        row("on the line", QVector<double>{0, 2, 4, 6, 4, 2}, 1.0, 1.0, 0.0);
        row("above and below", QVector<double>{9, 3, 1, 6, 4, 3, 9}, 1.0, 0.0, 8.0 / 3);
        row("a gap counts nothing", QVector<double>{1, qQNaN(), 7}, 1.0, 1.0, 2.0);
        row("another rate", QVector<double>{0, 1, 2, 4}, 0.5, 1.0, 0.25);
        row("between points", QVector<double>{3, 7}, 2.5, 2.0, 1.5);
        row("after the line", QVector<double>{1, 2}, 1.0, 6.5, qQNaN());
        row("before it, and nothing else", QVector<double>{1, 2}, 0.25, 0.0, qQNaN());
    }

    void predictionsAreAsFarAway()
    {
        const auto [samples, dt, start, mean] =
            fetched<QVector<double>, double, double, double>({"samples", "dt", "start", "mean"});
        Prediction line;
        line.draw({6, 2}, {4, 6}); // from right to left
        line.draw({1, 5}, {2, 5});
        line.draw({2.5, -7}, {0.5, 9});
        line.draw({1, 0}, {4, 6}); // again, over what was there
        line.points.removeFirst(); // that before it
        QCOMPARE(line.points, (QVector<QPointF>{{1, 0}, {4, 6}, {6, 2}}));
        QVector<double> times;
        for (int i = 0; i < samples.size(); ++i)
            times.append(start + i * dt);
        const double deviation = Predictions::meanDeviation(line, times, samples);
        QVERIFY2(std::abs(deviation - mean) < 1e-12 || (std::isnan(mean) && std::isnan(deviation)),
                 qPrintable(QString::number(deviation)));
    }

    void readsBetweenSamples()
    {
        ExpData data;
        load(&data, {SENSOR_LIGHT, SENSOR_LIGHT}, {{0, 1, 4, 9, 16}, {7}});
        QCOMPARE(data.interpolateY(0, 2.5), 6.5);
        QCOMPARE(data.interpolateY(0, 6), 30.0);
        QCOMPARE(data.interpolateY(0, -1), 0.0);
        QCOMPARE(data.interpolateY(1, 3), 7.0);
        QCOMPARE(data.tangentSlope(0, 2.5, 0), 5.0);
        QCOMPARE(data.tangentSlope(0, 4, 0), 8.0);
        QVERIFY(!std::isfinite(data.tangentSlope(0, 4.1, 0)));
        QCOMPARE(data.integral(0, 2.2, 2.6), 0.4 * (5 + 7) / 2);
        QCOMPARE(data.integral(0, 0.5, 3), 0.375 + 2.5 + 6.5);
        double a = 0, b = 0, c = 0, r = 0;
        data.regression(2, 0, 1, 4, &a, &b, &c, &r);
        QCOMPARE(a, 1.0);
        QVERIFY(std::fabs(b) < 1e-12 && std::fabs(c) < 1e-12);
        data.regression(1, 0, 1, 2, &a, &b, &c, &r);
        QCOMPARE(QVector<double>({a, b, c}), QVector<double>({0, 3, -2}));

        data.setSelectedSensor(1);
        data.addSensorData(1, SENSOR_LIGHT, {2, 4}, -1);
        data.calcStat(&a, &b, &c, &r);
        QCOMPARE(QVector<double>({a, b, c, r}), QVector<double>({2, 4, 3, 1}));

        // On an XY plot between the samples nearest to both points.
        load(&data, {SENSOR_LIGHT, SENSOR_LIGHT}, {{10, 1, 2, 3, 4, -7}, {0, 20, 40, 60, 80, 5}});
        data.setXYIndex(0);
        data.regressionXY(1, 1, 3.9, 1.1, 78, 22, &a, &b, &c, &r);
        QCOMPARE(b, 20.0);
    }

    void measuresAtPhotogates()
    {
        const QVector<double> early{0, 0, 5, 5, 5, 5, 0, 0, 0, 0, 5, 0};
        const QVector<double> late{0, 0, 0, 0, 0, 0, 0, 5, 5, 0, 0, 0};
        const QVector<double> blocked{5, 5, 0, 0, 5, 0};
        const QVector<double> open{0, 0, 0, 0, 5, 5};
        const int gate = QUELLMARK_PHOTOGATE;
        ExpData data;
        load(&data, {gate, gate, gate, gate, SENSOR_VOLTAGE}, {early, late, blocked, open, early}, 0.01);
        double speed = -1, mid = -1, time = -1, width = -1;
        data.photoSpeed(0, &speed, &mid, &time, &width);
        QCOMPARE(speed, 1.25);
        QCOMPARE(mid, 0.04);
        for (const int silent : {2, 3, 4}) {
            data.photoSpeed(silent, &speed, &mid, &time, &width);
            QCOMPARE(speed, 0.0);
        }
        double accel = -1, gain = -1;
        data.photoAccel(1, 0, &accel, &gain, &mid, &time);
        QCOMPARE(accel, 1.25 / 0.04);
        data.setCardWidth(0.1);
        data.photoSpeed(0, &speed, &mid, &time, &width);
        QCOMPARE(speed, 2.5);
    }
};

QTEST_GUILESS_MAIN(TestAnalysis)
#include "test_analysis.moc"

#include <QFile>
#include <QTest>

#include <cmath>

#include "app/common/settings.h"
#include "tests/common/testsupport.h"
#include "tests/data/fedlogger.h"

namespace {

struct Certified
{
    QVector<QPointF> points;
    QVector<double> coefficients; ///< of x⁰, x¹, x²
};

Certified readCertified(const QString& name)
{
    Certified result;
    QFile file(QStringLiteral(DATA_DIR "/") + name);
    if (!file.open(QIODevice::ReadOnly))
        return result;
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QList<QByteArray> xy = line.split(',');
        if (line.startsWith("# B"))
            result.coefficients.append(line.split(' ').last().toDouble());
        else if (xy.size() == 2 && xy.first() != "x")
            result.points.append({xy.first().toDouble(), xy.last().toDouble()});
    }
    return result;
}

double digits(double value, double truth)
{
    return value == truth ? 16.0 : -std::log10(std::fabs((value - truth) / truth));
}

/// The fit from sums of powers of x as they are, coefficients of x⁰, x¹, x².
QVector<double> plainFit(const QVector<QPointF>& points, int degree)
{
    double s[5] = {};
    double t[3] = {};
    for (const QPointF& p : points) {
        for (int j = 0; j < 5; ++j)
            s[j] += std::pow(p.x(), j);
        for (int j = 0; j < 3; ++j)
            t[j] += std::pow(p.x(), j) * p.y();
    }
    if (degree == 1) {
        const double slope = (s[0] * t[1] - s[1] * t[0]) / (s[0] * s[2] - s[1] * s[1]);
        return {(t[0] - slope * s[1]) / s[0], slope};
    }
    const auto solve = [](double a, double b, double c, double d, double e, double f, double g, double h,
                          double i) {
        return a * (e * i - f * h) - b * (d * i - f * g) + c * (d * h - e * g);
    };
    const double d = solve(s[0], s[1], s[2], s[1], s[2], s[3], s[2], s[3], s[4]);
    return {solve(t[0], s[1], s[2], t[1], s[2], s[3], t[2], s[3], s[4]) / d,
            solve(s[0], t[0], s[2], s[1], t[1], s[3], s[2], t[2], s[4]) / d,
            solve(s[0], s[1], t[0], s[1], s[2], t[1], s[2], s[3], t[2]) / d};
}

} // namespace

class TestAnalysis : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        guard.reset(new WarningGuard);
        Settings::mainStore().clear();
    }

    void cleanup()
    {
        VERIFY_NO_WARNINGS(*guard);
        guard.reset();
    }

    // The certified sets of the US National Institute of Standards and Technology, and the parabola again a
    // day into a run.
    void regressionsReachTheCertifiedDigits_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("degree");
        QTest::addColumn<double>("later");
        QTest::newRow("line") << "norris.csv" << 1 << 0.0;
        QTest::newRow("parabola") << "pontius.csv" << 2 << 0.0;
        QTest::newRow("late parabola") << "pontius.csv" << 2 << 86.4e6;
    }

    void regressionsReachTheCertifiedDigits()
    {
        QFETCH(QString, file);
        QFETCH(int, degree);
        QFETCH(double, later);
        Certified set = readCertified(file);
        QCOMPARE(set.coefficients.size(), degree + 1);
        for (QPointF& p : set.points)
            p.rx() += later;
        if (later > 0) {
            QVector<double>& k = set.coefficients;
            k = {k[0] - k[1] * later + k[2] * later * later, k[1] - 2 * k[2] * later, k[2]};
        }
        QVERIFY(set.points.size() >= 36);
        double a = 0, b = 0, c = 0, r = 0;
        if (degree == 1)
            ExpData::linearRegression(set.points, &b, &c, &r);
        else
            ExpData::quadRegression(set.points, &a, &b, &c, &r);
        const QVector<double> found{c, b, a};
        const QVector<double> plain = plainFit(set.points, degree);
        for (int i = 0; i <= degree; ++i) {
            const double truth = set.coefficients.at(i);
            qInfo("coefficient of x^%d: %.1f correct digits, plain power sums %.1f", i,
                  digits(found.at(i), truth), digits(plain.at(i), truth));
            QVERIFY(digits(found.at(i), truth) >= 9);
        }
    }

    void regressionsOfFewPoints()
    {
        double a = 0, b = 0, c = 0, r = 0;
        ExpData::linearRegression({{1, 9}, {2, 7}, {3, 5}}, &a, &b, &r);
        QCOMPARE(a, -2.0);
        QCOMPARE(b, 11.0);
        QCOMPARE(r, 1.0);
        ExpData::quadRegression({{7200.1, 3}, {7201.1, 1}, {7202.1, 9}}, &a, &b, &c, &r);
        QCOMPARE(a, 5.0);
        QCOMPARE(r, 1.0);
        QVERIFY(std::fabs(a * 7200.1 * 7200.1 + b * 7200.1 + c - 3) < 1e-6);

        ExpData::linearRegression({{0.1, 9}, {0.1, 7}, {0.1, 5}}, &a, &b, &r);
        QVERIFY(!std::isfinite(a));
        ExpData::linearRegression({{0.1, 0.7}, {0.2, 0.7}, {0.3, 0.7}}, &a, &b, &r);
        QVERIFY(!std::isfinite(r));
        ExpData::quadRegression({{0.1, 9}, {0.7, 7}, {0.7, 5}, {0.1, 3}}, &a, &b, &c, &r);
        QVERIFY(!std::isfinite(a));
    }

    void smoothsTheStoredValuesAndOnlyThisCurve()
    {
        Settings::mainStore().setValue(QLatin1String(Settings::unitsCelsius), false);
        FedLogger fed(QByteArray{"\x1e"}); // ambient temperature
        ExpData data(&fed.protocol);
        fed.online(1, 0, FedLogger::word(10));
        data.setDataNewEmpty(fed.logger().getSensors(), 1);
        for (const double value : {1.0, 2.0, 9.0})
            data.addSample(value, {value});
        const QString name = data.getSens(0)->name;
        data.smoothCurve();
        QCOMPARE(data.getYNoConv(0), QVector<double>({1.5, 4, 5.5}));
        QCOMPARE(data.getYAt(0, 1), 39.2);
        QCOMPARE(data.maxY.at(0), 9.0);
        QCOMPARE(data.getSens(0)->name, name + QStringLiteral(" (smooth)"));
        QCOMPARE(fed.logger().sensors.at(0)->name, name);
        data.smoothKernel = 11;
        data.smoothCurve();
        QCOMPARE(data.getYNoConv(0), QVector<double>(3, 11.0 / 3));
    }

    void aDerivativeGrowsWithItsOrigin()
    {
        FedLogger fed(QByteArray{"\x19"}); // distance
        ExpData data(&fed.protocol);
        const auto sample = [&](short n, quint16 millimetres) {
            fed.online(1, n, FedLogger::word(millimetres));
            if (n == 0)
                data.setDataNewEmpty(fed.logger().getSensors(), 0.5);
            data.addSample(n);
        };
        sample(0, 1000);
        data.addSpecialCurve(ExpData::CURVE_DERIV);
        QCOMPARE(data.getNSens(), 1);
        sample(1, 1500);
        sample(2, 1250);
        data.addSpecialCurve(ExpData::CURVE_DERIV);
        sample(3, 3250);
        QCOMPARE(data.getYNoConv(1), QVector<double>({1, 1, -0.5, 4}));
        const SensorPtr& speed = data.getSens(1);
        QCOMPARE(speed->name, QStringLiteral("Speed"));
        QCOMPARE(speed->unitName, QStringLiteral("m/s"));
        QCOMPARE(speed->min, -0.5);
        QCOMPARE(speed->max, 1.0);
        data.setSelectedSensor(1);
        data.addSpecialCurve(ExpData::CURVE_DERIV);
        QCOMPARE(data.getSens(2)->name, QStringLiteral("Speed/time"));
        QCOMPARE(data.getSens(2)->minView, -3 - 0.1 * 12);
        QCOMPARE(data.getYNoConv(2), QVector<double>({0, 0, -3, 9}));
    }

    void readsBetweenSamples()
    {
        ExpData data;
        load(&data, {SENSOR_LIGHT, SENSOR_LIGHT, SENSOR_LIGHT}, {{0, 1, 4, 9, 16}, {7}, {}});
        QCOMPARE(data.interpolateY(0, 2.5), 6.5);
        QCOMPARE(data.interpolateY(0, 6), 30.0);
        QCOMPARE(data.interpolateY(0, 4), 16.0);
        QCOMPARE(data.interpolateY(0, -1), 0.0);
        QCOMPARE(data.interpolateY(1, 3), 7.0);
        QCOMPARE(data.interpolateY(2, 3), 0.0);
        QCOMPARE(data.approximateDeriv(0, 2, 4), 4.0);
        QCOMPARE(data.approximateDeriv(0, 2.5, 6.25), 5.0);
        QVERIFY(!std::isfinite(data.approximateDeriv(0, 0, 0)));
        QVERIFY(!std::isfinite(data.approximateDeriv(0, 4, 16)));
        QCOMPARE(data.integral(0, 2.2, 2.6), 0.4 * (5 + 7) / 2);
        QCOMPARE(data.integral(0, 0.5, 3), 0.375 + 2.5 + 6.5);
        double a = 0, b = 0, c = 0, r = 0;
        data.regression(2, 0, 1, 4, &a, &b, &c, &r);
        QCOMPARE(a, 1.0);
        QVERIFY(std::fabs(b) < 1e-12 && std::fabs(c) < 1e-12);
        data.regression(1, 0, 1, 2, &a, &b, &c, &r);
        QCOMPARE(a, 0.0);
        QCOMPARE(b, 3.0);
        QCOMPARE(c, -2.0);
    }

    void fitsAnXYPlotBetweenItsNearestSamples()
    {
        ExpData data;
        load(&data, {SENSOR_LIGHT, SENSOR_LIGHT}, {{10, 1, 2, 3, 4, -7}, {0, 20, 40, 60, 80, 5}});
        data.setXYIndex(0);
        double a = 0, b = 0, c = 0, r = 0;
        data.regressionXY(1, 1, 3.9, 1.1, 78, 22, &a, &b, &c, &r);
        QCOMPARE(b, 20.0);
        QVERIFY(std::fabs(c) < 1e-9);
    }

    void measuresAtPhotogates()
    {
        const QVector<double> early{0, 0, 5, 5, 5, 5, 0, 0, 0, 0, 5, 0};
        const QVector<double> late{0, 0, 0, 0, 0, 0, 0, 5, 5, 0, 0, 0};
        const QVector<double> blocked{5, 5, 0, 0, 5, 0, 0, 0, 0, 0, 0, 0};
        const QVector<double> open{0, 0, 0, 0, 0, 0, 0, 0, 5, 5, 5, 5};
        const int gate = QUELLMARK_PHOTOGATE;
        ExpData data;
        load(&data, {gate, gate, gate, gate, SENSOR_VOLTAGE}, {early, late, blocked, open, early}, 0.01);
        double speed = -1, mid = -1, time = -1, width = -1;
        data.photoSpeed(0, &speed, &mid, &time, &width);
        QCOMPARE(speed, 1.25);
        QCOMPARE(mid, 0.04);
        for (const int silent : {2, 3, 4, 9}) {
            data.photoSpeed(silent, &speed, &mid, &time, &width);
            QCOMPARE(speed, 0.0);
            QCOMPARE(mid, 0.0);
        }
        double accel = -1, gain = -1;
        data.photoAccel(0, 3, &accel, &gain, &mid, &time);
        QCOMPARE(accel, -1.0);
        for (const auto& order : {qMakePair(0, 1), qMakePair(1, 0)}) {
            data.photoAccel(order.first, order.second, &accel, &gain, &mid, &time);
            QCOMPARE(gain, 1.25);
            QCOMPARE(accel, 1.25 / 0.04);
        }
    }

    void statisticsAreOfTheChannelItself()
    {
        ExpData data;
        load(&data, {SENSOR_PH, SENSOR_PH}, {{1, 1, 1, 1}, {4, 2, 0, 2}});
        data.addSensorData(1, SENSOR_PH, {2, 4}, -1);
        data.setSelectedSensor(1);
        double min = 0, max = 0, avg = 0, stdv = 0;
        data.calcStat(&min, &max, &avg, &stdv);
        QCOMPARE(QVector<double>({min, max, avg, stdv}), QVector<double>({2, 4, 3, 1}));
    }

private:
    QScopedPointer<WarningGuard> guard;
};

QTEST_GUILESS_MAIN(TestAnalysis)
#include "test_analysis.moc"

#include <QImage>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <cmath>
#include <limits>

#include "instruments/juniorsensorpallete.h"
#include "instruments/thermometer.h"
#include "tests/common/testsupport.h"

class TestThermometer : public GuardedTest
{
    Q_OBJECT

private:
    /// What the column paints, seen through the glass or not.
    static int columnPixels(ThermoMeter& meter, double value)
    {
        meter.setValue(qQNaN());
        const QImage empty = meter.grab().toImage();
        meter.setValue(value);
        const QImage picture = meter.grab().toImage();
        int count = 0;
        for (int y = 0; y < picture.height() * 9 / 10; ++y) { // below it stands the value
            for (int x = 0; x < picture.width(); ++x)
                count += picture.pixel(x, y) != empty.pixel(x, y);
        }
        return count;
    }

private Q_SLOTS:
    void scalesAreTidyAndEnd_data()
    {
        constexpr double most = std::numeric_limits<double>::max();
        columns<double, double, double, double>({"minimum", "maximum", "low", "high"});
        row("steps of 15", 0.0, 100.0, 0.0, 120.0);
        row("over zero", -10.0, 40.0, -10.0, 70.0);
        row("small", 0.0, 1.0, 0.0, 1.2);
        row("the other way round", 40.0, -10.0, -10.0, 70.0);
        row("equal", 7.0, 7.0, 6.9, 8.1);
        row("below zero", -100.0, -20.0, qQNaN(), qQNaN());
        row("odd", -3.0, 1e9, qQNaN(), qQNaN());
        row("tiny and far", 1e9, 1e9 + 1e-5, qQNaN(), qQNaN());
        row("all numbers", -most, most, qQNaN(), qQNaN());
        row("infinite", 0.0, qInf(), 0.0, 1.0);
        row("no number", qQNaN(), 5.0, 0.0, 1.0);
    }

    void scalesAreTidyAndEnd()
    {
        const auto [minimum, maximum, low, high] =
            fetched<double, double, double, double>({"minimum", "maximum", "low", "high"});
        const TidyScale scale = TidyScale::of(minimum, maximum);
        QVERIFY(std::isfinite(scale.minimum) && std::isfinite(scale.maximum));
        QVERIFY(scale.minimum < scale.maximum);
        if (!std::isnan(low)) {
            QVERIFY(std::fabs(scale.minimum - low) < 1e-9 && std::fabs(scale.maximum - high) < 1e-9);
        } else if (std::fabs(minimum) < 1e300) {
            const double room = 1e-12 * std::fabs(maximum);
            QVERIFY(scale.minimum <= minimum + room && scale.maximum >= maximum - room);
        }
    }

    void theColumnStaysInItsGlass_data()
    {
        columns<double, double, QString>({"value", "height", "text"});
        row("at the foot", 0.0, 10.0, "0.0 [C]");
        row("half way", 60.0, 122.0, "60.0 [C]");
        row("far above", 1e30, 241.0, QString());
        row("far below", -1e30, 5.0, QString());
        row("no number", qQNaN(), 5.0, "---- [C]");
    }

    void theColumnStaysInItsGlass()
    {
        const auto [value, height, text] = fetched<double, double, QString>({"value", "height", "text"});
        ThermoMeter meter(false);
        meter.setMinimum(200); // would stand above the maximum
        meter.setMaximum(-5);
        QCOMPARE(meter.scale().maximum, 120.0);
        meter.setValue(value);
        QCOMPARE(meter.fillHeight(), height);
        if (!text.isEmpty())
            QCOMPARE(meter.valueText(), text);
    }

    void morePaintForMoreHeatAtEverySize()
    {
        for (const QSize& size : {QSize(60, 90), QSize(200, 200), QSize(900, 1000)}) {
            for (const bool isHeat : {true, false}) {
                ThermoMeter meter(false);
                meter.setHeat(isHeat);
                meter.resize(size);
                const int cold = columnPixels(meter, 20);
                const int hot = columnPixels(meter, 90);
                QVERIFY(cold > 0 && hot > cold * 3 / 2);
            }
        }
    }

    void aSensorSaysAllThatIsShown()
    {
        ThermoMeter meter(true);
        meter.setValue(2.345);
        meter.showSensor(SensorPtr::create(SENSOR_DISTANCE));
        const Sensor distance(SENSOR_DISTANCE);
        QVERIFY(meter.scale().minimum <= distance.min && meter.scale().maximum >= distance.max);
        QVERIFY2(meter.valueText().endsWith(" m"), qPrintable(meter.valueText()));
        meter.showSensor({});
        QVERIFY(meter.valueText().endsWith(" m"));
        Thermo small(THERMO_TYPE_LAB, SensorPtr::create(SENSOR_DISTANCE));
        QCOMPARE(small.upperBound(), distance.max);
        QCOMPARE(small.orientation(), Qt::Horizontal);
    }

    void thePaletteHasAButtonForEachSensor_data()
    {
        columns<int, QSize, int>({"sensors", "size", "shift"});
        row("one", 1, QSize(76, 72), 0);
        row("one column", 10, QSize(76, 720), 0);
        row("two columns", 11, QSize(152, 432), 38);
    }

    void thePaletteHasAButtonForEachSensor()
    {
        const auto [sensors, size, shift] = fetched<int, QSize, int>({"sensors", "size", "shift"});
        SensorList list;
        for (int i = 0; i < sensors; ++i)
            list.append(SensorPtr::create(SENSOR_LIGHT));
        QVector<bool> active(sensors, false);
        active[0] = true;
        JuniorSensorPallete palette(list, active);
        QCOMPARE(palette.size(), size);
        QCOMPARE(palette.getXShift(), shift);
        QSignalSpy toggled(&palette, &JuniorSensorPallete::toggled);
        palette.findChildren<QToolButton*>().last()->click();
        QCOMPARE(toggled.first(), (QVariantList{sensors - 1, sensors > 1}));
        active[0] = sensors > 1;
        active.last() = sensors > 1;
        QCOMPARE(palette.active(), active);
        palette.move(5000, 5000); // the pointer is elsewhere and has never been in it
        palette.show();
        QTRY_VERIFY(!palette.isVisible());
    }
};

QTEST_MAIN(TestThermometer)
#include "test_thermometer.moc"

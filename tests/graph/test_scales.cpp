#include <QTest>

#include <qwt_plot.h>
#include <qwt_scale_map.h>
#include <qwt_scale_widget.h>

#include <cmath>

#include "common/common.h"
#include "common/settings.h"
#include "data/expdata.h"
#include "graph/scalemanager.h"
#include "graph/timescaledraw.h"
#include "graph/timescaleengine.h"
#include "tests/common/testsupport.h"
#include "tests/data/loadedset.h"

namespace {

void fill(ExpData& data, const QVector<int>& ids, const QVector<QVector<double>>& channels)
{
    load(&data, ids, channels);
    for (int i = 0; i < ids.size(); ++i)
        data.getSens(i)->readSetMinMax = false;
}

QVector<double> shown(const scaleManager& scaler, int i)
{
    return {scaler.getScaleMin(i), scaler.getScaleMax(i)};
}

using Range = QVector<double>;

} // namespace

class TestScales : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        Settings::mainStore().clear();
        Common::forgetLocale();
    }

private Q_SLOTS:
    void automaticRange_data()
    {
        columns<double, Range, Range>({"sensRange", "data", "scale"});
        row("flat", 100.0, Range{20, 20}, Range{15, 25});
        row("flat at the lower limit", 100.0, Range{2, 2}, Range{0, 7});
        row("flat below the lower limit", 100.0, Range{-20, -20}, Range{0, 5});
        row("just flat", 100.0, Range{20, 27.4}, Range{18.7, 28.7});
        row("just not flat", 100.0, Range{20, 27.5}, Range{19.25, 28.25});
        row("margins", 100.0, Range{10, 60}, Range{5, 65});
        row("margin at the lower limit", 100.0, Range{1, 60}, Range{0, 65.9});
        row("a large sensor is not flatter", 100000.0, Range{20, 20}, Range{15, 25});
    }

    void automaticRange()
    {
        QFETCH(double, sensRange);
        QFETCH(Range, data);
        oneScale scale(data[0], data[1], sensRange, 0, 0, QString(), QString());
        QTEST((Range{scale.scaleFullMin, scale.scaleFullMax}), "scale");
        scale.setZoomScales(0.5, 1);
        QCOMPARE(scale.scaleZoomMin, (scale.scaleFullMin + scale.scaleFullMax) / 2);
    }

    void fixedRangesDoNotFollowTheData()
    {
        ExpData data;
        fill(data, {SENSOR_HUMIDITY, QUELLMARK_PHOTOGATE}, {{40, 60}, {0, 3}});
        data.getSens(0)->readSetMinMax = true;
        data.getSens(0)->minView = 90;
        data.getSens(0)->maxView = 10;
        scaleManager scaler;
        scaler.setScales(&data, false);
        data.maxY[0] = 95;
        scaler.updateScales(&data);
        QCOMPARE(shown(scaler, 0), (Range{90, 10}));
        QCOMPARE(shown(scaler, 1), (Range{-1, 7}));
    }

    void zoomTakesAllAutomaticScalesAlong()
    {
        ExpData data;
        fill(data, {SENSOR_HUMIDITY, SENSOR_PH, SENSOR_BAROMETER}, {{10, 60}, {4, 9}, {900, 1000}});
        data.getSens(2)->readSetMinMax = true;
        data.getSens(2)->minView = 800;
        data.getSens(2)->maxView = 1100;
        scaleManager scaler;
        scaler.setScales(&data, false);
        QwtScaleMap map;
        scaler.fixScaleY(&map, 1);
        QCOMPARE(map.s2(), 9.5);
        scaler.setZoom(0, 20, 50); // of 5 to 65: a quarter to three quarters
        QCOMPARE(shown(scaler, 0), (Range{20, 50}));
        QCOMPARE(shown(scaler, 1), (Range{5, 8}));
        QCOMPARE(shown(scaler, 2), (Range{800, 1100}));
        scaler.updateScales(&data);
        QCOMPARE(shown(scaler, 1), (Range{5, 8}));
        scaler.setZoom(2, 850, 900);
        QCOMPARE(shown(scaler, 2), (Range{850, 900}));
        scaler.setZoomOut();
        QCOMPARE(shown(scaler, 1), (Range{3.5, 9.5}));
        QCOMPARE(shown(scaler, 2), (Range{800, 1100}));
        scaler.scales[0]->setUserScales(30, 30, false);
        scaler.setZoom(0, 20, 50); // of a range without width
        QCOMPARE(shown(scaler, 0), (Range{30, 30}));
        QCOMPARE(shown(scaler, 1), (Range{3.5, 9.5}));
    }

    void channelsOfOneQuantityShareAScale_data()
    {
        using Ids = QVector<int>;
        columns<Ids, QVector<Range>, QVector<Range>>({"ids", "channels", "scales"});
        row("two kinds of thermometer", Ids{SENSOR_AMB_TEMP_NTC_CALC, SENSOR_EXT_TEMP},
            QVector<Range>{{22, 22}, {70, 74}}, QVector<Range>{{19, 77}, {19, 77}});
        row("steady", Ids{SENSOR_HUMIDITY, SENSOR_HUMIDITY}, QVector<Range>{{40, 40}, {40, 40}},
            QVector<Range>{{35, 45}, {35, 45}});
        row("one without samples asks for no room", Ids{SENSOR_BAROMETER, SENSOR_BAROMETER},
            QVector<Range>{{900, 1000}, {}}, QVector<Range>{{890, 1010}, {890, 1010}});
        row("one unit, two quantities", Ids{SENSOR_VOLTAGE, SENSOR_MICROPHONE},
            QVector<Range>{{-20, 20}, {1, 2}}, QVector<Range>{{-24, 24}, {0.9, 2.1}});
        row("columns of a spreadsheet", Ids{SENSOR_SPECIAL, SENSOR_SPECIAL},
            QVector<Range>{{30, 30}, {-5, 5}}, QVector<Range>{{28.5, 31.5}, {-6, 6}});
    }

    void channelsOfOneQuantityShareAScale()
    {
        const auto [ids, channels, scales] =
            fetched<QVector<int>, QVector<Range>, QVector<Range>>({"ids", "channels", "scales"});
        ExpData data;
        fill(data, ids, channels);
        for (int i = 0; i < ids.size(); ++i) {
            if (ids[i] == SENSOR_SPECIAL)
                data.addSpecialSensorData(QStringLiteral("T%1").arg(i), QStringLiteral("°C"), i, channels[i]);
        }
        for (const bool isClass : {false, true}) {
            scaleManager scaler;
            scaler.setScales(&data, isClass);
            QCOMPARE((QVector<Range>{shown(scaler, 0), shown(scaler, 1)}), scales);
            isClass ? scaler.updateClassScales(&data) : scaler.updateScales(&data);
            QCOMPARE((QVector<Range>{shown(scaler, 0), shown(scaler, 1)}), scales);
            QCOMPARE((Range{scaler.scales[0]->scaleFullMin, scaler.scales[0]->scaleFullMax}), scales[0]);
        }
    }

    void aRangeFixedForTheClassHoldsUntilItIsReleased()
    {
        ExpData data;
        fill(data, {SENSOR_HUMIDITY, SENSOR_HUMIDITY}, {{10, 60}, {30, 90}});
        scaleManager scaler;
        scaler.setScales(&data, true);
        data.getSens(1)->classMinView = 20;
        data.getSens(1)->classMaxView = 40;
        data.getSens(1)->readClassSetMinMax = true;
        scaler.updateClassScales(&data);
        QCOMPARE(shown(scaler, 0), (Range{20, 40}));
        scaler.setZoom(0, 30, 35); // the height counts, and lasts
        scaler.updateClassScales(&data);
        QCOMPARE(shown(scaler, 1), (Range{30, 35}));
        QCOMPARE(shown(scaler, 0), (Range{30, 35}));
        scaler.setZoomOut();
        QCOMPARE(shown(scaler, 1), (Range{20, 40}));
        data.getSens(1)->readClassSetMinMax = false;
        scaler.updateClassScales(&data);
        QCOMPARE(shown(scaler, 1), (Range{5, 96}));
    }

    void rangesOfARunMoveInFewStepsAndHoldAllSamples()
    {
        ExpData data;
        QVector<Range> channels{{20}, {50}};
        fill(data, {SENSOR_EXT_TEMP, SENSOR_HUMIDITY}, channels);
        scaleManager scaler;
        scaler.setScales(&data, false);
        Range before = shown(scaler, 0);
        int steps = 0;
        for (int i = 1; i < 1000; ++i) {
            channels[0].append(20 + i * 0.05);
            channels[1].append(50 - 10 * std::sin(i * 0.01));
            fill(data, {SENSOR_EXT_TEMP, SENSOR_HUMIDITY}, channels);
            scaler.growScales(&data, false);
            for (const int channel : {0, 1})
                QVERIFY(scaler.getScaleMin(channel) < data.getMinY(channel) &&
                        scaler.getScaleMax(channel) > data.getMaxY(channel));
            const Range now = shown(scaler, 0);
            steps += now != before;
            before = now;
        }
        QVERIFY2(steps > 3 && steps < 30, qPrintable(QString::number(steps)));
        QVERIFY(before[1] - before[0] < 2 * (data.getMaxY(0) - data.getMinY(0)));
    }

    void repeatedRunKeepsTheScaleOfTheFirst()
    {
        ExpData data;
        fill(data, {SENSOR_PH}, {{4, 9}});
        data.setDataAddRepeatExp();
        data.addSample(0, {7});
        data.addSample(1, {13});
        scaleManager scaler;
        scaler.setScales(&data, false);
        QCOMPARE(scaler.scales.size(), 2);
        QCOMPARE(shown(scaler, 0), (Range{3.5, 13.6}));
        QCOMPARE(shown(scaler, 1), shown(scaler, 0));
    }

    void timeTexts_data()
    {
        columns<double, double, double, QString>({"end", "res", "time", "text"});
        const auto row = [](const char* name, double end, double res, double time, const char* text) {
            QTest::newRow(name) << end << res << time << text;
        };
        row("sample number is cut", 50, 0, 12.7, "12");
        row("decimals of the step", 50, 0.05, 1.239, "1,24");
        row("finest decimals", 50, 0.0005, 1, "1,00000");
        row("a hair below the minute", 200, 0.1, 120 - 1e-9, "2:00");
        row("clearly below the minute", 200, 0.01, 119.99, "1:59");
        row("before the start", 200, 1, -65, "-1:05");
        row("whole minutes", 200, 60, 125, "2");
        row("hours and minutes", 9000, 1, 3725, "1:02");
    }

    void timeTexts()
    {
        const auto [end, res, time] = fetched<double, double, double>({"end", "res", "time"});
        Settings::mainStore().setValue(QLatin1String(Settings::language), "pl");
        TimeScaleDraw axis(false);
        axis.setUnitByMaxX(end, res);
        QTEST(axis.getTimeString(time), "text");
    }

    void labels()
    {
        const auto label = [](bool isBar, double value) {
            TimeScaleDraw axis(isBar);
            axis.setUnitByMaxX(200, 1);
            return axis.label(value).text();
        };
        QCOMPARE(label(true, 2.999), QStringLiteral("2:59"));
        QCOMPARE(label(true, 2 + 7.0 / 60), QStringLiteral("2:07"));
        QCOMPARE(label(true, -0.25), QStringLiteral("-0:15"));
        Settings::mainStore().setValue(QLatin1String(Settings::version), "VestrelJunior");
        QCOMPARE(label(false, 90), QStringLiteral("1"));
    }

    void ticksAreRoundInTheUnit_data()
    {
        columns<bool, Range, double, QString>({"isBar", "span", "res", "texts"});
        const auto row = [](const char* name, bool isBar, const Range& span, double res, const char* texts) {
            QTest::newRow(name) << isBar << span << res << texts;
        };
        row("seconds", false, {0, 60}, 1, "0 10 20 30 40 50 60");
        row("few minutes", false, {0, 200}, 1, "0:00 0:30 1:00 1:30 2:00 2:30 3:00");
        row("quarters of an hour", false, {0, 5400}, 1, "0:00 15:00 30:00 45:00 60:00 75:00 90:00");
        row("a zoom into minutes", false, {3000, 3055}, 1, "50:00 50:10 50:20 50:30 50:40 50:50");
        row("a school day", false, {0, 86400}, 1, "0:00 3:00 6:00 9:00 12:00 15:00 18:00 21:00 24:00");
        row("less than a second", false, {3000, 3001}, 0.1,
            "50:00.0 50:00.2 50:00.4 50:00.6 50:00.8 50:01.0");
        row("minutes of a long run", false, {7200, 7320}, 1,
            "2:00:00 2:00:15 2:00:30 2:00:45 2:01:00 2:01:15 2:01:30 2:01:45 2:02:00");
        row("whole samples only", false, {3, 6}, 0, "3 4 5 6");
        row("bars by the second", true, {1.3, 2}, 1, "1:20 1:30 1:40 1:50 2:00");
    }

    void ticksAreRoundInTheUnit()
    {
        const auto [isBar, span, res] = fetched<bool, Range, double>({"isBar", "span", "res"});
        TimeScaleDraw draw(isBar);
        draw.setUnitByMaxX(isBar ? 120 : span[1], res);
        const TimeScaleEngine engine(&draw);
        const QwtScaleDiv div = engine.divideScale(span[0], span[1], 8, 5);
        QCOMPARE((Range{div.lowerBound(), div.upperBound()}), span);
        draw.setScaleDiv(div);
        QStringList texts;
        const QList<double> ticks = div.ticks(QwtScaleDiv::MajorTick);
        for (const double tick : ticks)
            texts.append(draw.label(tick).text());
        QTEST(texts.join(QLatin1Char(' ')), "texts");
    }

    // A run that ends beside a bound, or a zoom there, does not throw the labels about.
    void theUnitKeepsItsPlace()
    {
        TimeScaleDraw axis(false);
        QVector<units> seen;
        for (const double end : {99.0, 100.0, 80.0, 59.0, 99.0, 6000.0, 5000.0, 3599.0}) {
            axis.setUnitByMaxX(end, 1);
            seen.append(axis.getUnit());
        }
        QCOMPARE(seen, QVector<units>({UNIT_SEC, UNIT_MIN, UNIT_MIN, UNIT_SEC, UNIT_SEC, UNIT_HOUR, UNIT_HOUR,
                                       UNIT_MIN}));
        QCOMPARE(axis.getTimeString(125.34, 0.4), QStringLiteral("2:05.3"));
        QCOMPARE(axis.getTimeString(125.34, 2), QStringLiteral("2:05"));
    }

    void labelsDoNotLieOnEachOther()
    {
        QwtPlot plot;
        plot.setAxisScaleDraw(QwtPlot::xBottom, new SparseScaleDraw);
        plot.setAxisMaxMajor(QwtPlot::xBottom, 20);
        plot.setAxisScale(QwtPlot::xBottom, 100000, 100020);
        plot.replot();
        plot.resize(400, 200);
        plot.updateLayout();
        const QImage axis = plot.axisWidget(QwtPlot::xBottom)->grab().toImage();
        // Gaps between the digits of a label are narrow, between labels there is a wider one.
        const int row = axis.height() - 8;
        int gaps = 0;
        int free = 0;
        for (int column = 0; column < axis.width(); ++column) {
            bool isInked = false;
            for (int k = -5; k <= 6; ++k)
                isInked = isInked || qGray(axis.pixel(column, row + k)) < 100;
            gaps += isInked && free > 4 ? 1 : 0;
            free = isInked ? 0 : free + 1;
        }
        QVERIFY2(gaps >= 2 && gaps < 8, qPrintable(QString::number(gaps)));
    }

    void automaticRangeGrowsInRoundSteps()
    {
        TimeScaleDraw draw(false);
        draw.setUnitByMaxX(1000, 1);
        const TimeScaleEngine engine(&draw);
        double from = 0;
        double to = 1130;
        double step = 0;
        engine.autoScale(8, from, to, step);
        QCOMPARE(step, 300.0);
        QCOMPARE(from, 0.0);
        QCOMPARE(to, 1200.0);
        from = to = 600; // a single sample
        engine.autoScale(8, from, to, step);
        QVERIFY(from < 600 && to > 600 && step > 0);
    }
};

QTEST_MAIN(TestScales)
#include "test_scales.moc"

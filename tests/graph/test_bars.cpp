#include <QTest>

#include <cmath>

#include <qwt_plot_histogram.h>

#include "data/expdata.h"
#include "graph/plot.h"
#include "graph/scrollbar.h"
#include "tests/common/fakeprompt.h"
#include "tests/common/testsupport.h"

class TestBars : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        guard.reset(new WarningGuard);
        data.reset(new ExpData);
    }
    void cleanup()
    {
        bars.reset();
        VERIFY_NO_WARNINGS(*guard);
        guard.reset();
    }

    void theWindowFitsTheNumberOfBars_data()
    {
        QTest::addColumn<int>("samples");
        QTest::addColumn<double>("dt");
        QTest::addColumn<bool>("isRun");
        QTest::addColumn<int>("first"); // sample in the window
        QTest::addColumn<int>("last");  // there is room for
        QTest::addColumn<double>("perUnit");
        QTest::addColumn<QString>("title");
        QTest::newRow("few") << 5 << 1.0 << true << 0 << 10 << 1.0 << "Time [s]";
        QTest::newRow("11") << 11 << 0.1 << false << 0 << 20 << 10.0 << "Time [s]";
        QTest::newRow("21") << 21 << 1.0 << true << 0 << 40 << 1.0 << "Time [s]";
        QTest::newRow("41") << 41 << 1.0 << true << 0 << 40 << 1.0 << "Time [s]";
        QTest::newRow("the newest") << 90 << 1.0 << true << 49 << 89 << 1.0 << "Time [s]";
        QTest::newRow("stopped") << 90 << 1.0 << false << 0 << 40 << 1.0 << "Time [s]";
        QTest::newRow("minutes") << 101 << 1.0 << true << 60 << 100 << 60.0 << "Time [min]";
        QTest::newRow("manual") << 150 << 0.0 << true << 109 << 149 << 1.0 << "Sample";
        QTest::newRow("a long run") << 200000 << 0.01 << false << 0 << 40 << 6000.0 << "Time [min]";
    }

    void theWindowFitsTheNumberOfBars()
    {
        QFETCH(int, samples);
        QFETCH(double, dt);
        QFETCH(bool, isRun);
        QFETCH(int, first);
        QFETCH(int, last);
        QFETCH(double, perUnit);
        fill(samples, dt);
        bars->updateBarData(isRun);
        QCOMPARE(left() * perUnit, first - 1.0 / 3);
        QCOMPARE(bars->axisInterval(QwtPlot::xBottom).maxValue() * perUnit, last + 1.0 / 3);
        QTEST(bars->axisTitle(QwtPlot::xBottom).text(), "title");
        QCOMPARE(scrollBar() && scrollBar()->isVisibleTo(bars.data()), samples > 40);
        // Those in sight and the next one on either side.
        QCOMPARE(int(histogram()->dataSize()), qMin(last + 2, samples) - qMax(first - 1, 0));
        for (size_t i = 0; i < histogram()->dataSize(); ++i) {
            const QwtIntervalSample bar = histogram()->sample(i);
            const int k = qMax(first - 1, 0) + int(i);
            QVERIFY(std::abs(bar.interval.minValue() * perUnit - (k - 1.0 / 3)) < 1e-6);
            QVERIFY(std::abs(bar.interval.maxValue() * perUnit - (k + 1.0 / 3)) < 1e-6);
            QCOMPARE(bar.value, data->getYAt(0, k));
        }
    }

    void aPlaceThatTheUserChoseHolds()
    {
        fill(95, 1);
        bars->updateBarData(true);
        scrollBar()->setValue(scrollBar()->minimum() + (scrollBar()->maximum() - scrollBar()->minimum()) / 2);
        const double place = left();
        QVERIFY(place > 20 && place < 30);
        addSamples(3);
        QCOMPARE(left(), place);
        addSamples(50); // the axis goes over to minutes
        QVERIFY(std::abs(left() * 60 - place) < 1e-6);
        data->finalData = false;
        scrollBar()->setValue(scrollBar()->maximum());
        addSamples(20);
        QVERIFY(std::abs(left() * 60 - (167 - 40 - 1.0 / 3)) < 1e-6);
    }

    void aSensorHasItsOwnRangeAndColour()
    {
        fill(60, 1, 12);
        FakePrompt prompt;
        prompt.picked = 0xff123456;
        bars->setUserPrompt(&prompt);
        data->getSens(1)->barUserScale = true;
        data->getSens(1)->barUserMin = 25; // upside down
        data->getSens(1)->barUserMax = -5;
        bars->updateBarSens(1, true);
        QCOMPARE(int(histogram()->dataSize()), 12); // its series is shorter
        QCOMPARE(bars->axisScaleDiv(QwtPlot::yLeft).lowerBound(), 25.0);
        QCOMPARE(bars->axisScaleDiv(QwtPlot::yLeft).upperBound(), -5.0);
        QCOMPARE(data->getSelectedSensor(), 0); // the class goes on with its own
        bars->updateBarSens(0, true);
        const double before = left();
        QTest::mouseClick(bars->canvas(), Qt::RightButton);
        QCOMPARE(left(), before); // a release of the button does not zoom
        bars->setBarData();
        QCOMPARE(histogram()->brush().color(), QColor(0x12, 0x34, 0x56));
    }

private:
    // Two sensors; the second may have fewer samples.
    void fill(int samples, double dt, int ofSecond = 1)
    {
        QVector<double> t(samples);
        QVector<double> v(samples);
        for (int i = 0; i < samples; ++i) {
            t[i] = i * (dt > 0 ? dt : 1);
            v[i] = 10 + 9 * std::sin(0.3 * i);
        }
        data->setDataNew(2, t, dt);
        data->addSensorData(0, SENSOR_VOLTAGE, v, -1);
        data->addSensorData(1, SENSOR_PH, v.mid(0, ofSecond), -1);
        data->finalData = false;
        bars.reset(new Plot(data.data(), GRAPH_BAR, false, 3));
        bars->resize(600, 400);
        bars->show();
    }
    void addSamples(int count)
    {
        for (int i = 0; i < count; ++i)
            data->addSample(data->getX().last() + 1, {5, 5});
        bars->updateBarData(true);
    }
    const QwtPlotHistogram* histogram() const
    {
        return static_cast<const QwtPlotHistogram*>(bars->itemList(QwtPlotItem::Rtti_PlotHistogram).value(0));
    }
    ScrollBar* scrollBar() const { return bars->findChild<ScrollBar*>(); }
    double left() const { return bars->axisInterval(QwtPlot::xBottom).minValue(); }

    QScopedPointer<WarningGuard> guard;
    QScopedPointer<ExpData> data;
    QScopedPointer<Plot> bars;
};

QTEST_MAIN(TestBars)
#include "test_bars.moc"

#include <cmath>

#include <qwt_plot_histogram.h>
#include <qwt_scale_widget.h>

#include "graph/scrollbar.h"
#include "tests/graph/plottest.h"

class TestBars : public PlotTest
{
    Q_OBJECT

private Q_SLOTS:
    void theWindowFitsTheNumberOfBars_data()
    {
        // first: sample in the window; last: there is room for
        columns<int, double, bool, int, int, double, QString>(
            {"samples", "dt", "isRun", "first", "last", "perUnit", "title"});
        row("few", 5, 1.0, true, 0, 10, 1.0, "Time [s]");
        row("11", 11, 0.1, false, 0, 20, 10.0, "Time [s]");
        row("21", 21, 1.0, true, 0, 40, 1.0, "Time [s]");
        row("41", 41, 1.0, true, 0, 40, 1.0, "Time [s]");
        row("the newest", 90, 1.0, true, 49, 89, 1.0, "Time [s]");
        row("stopped", 90, 1.0, false, 0, 40, 1.0, "Time [s]");
        row("minutes", 101, 1.0, true, 60, 100, 60.0, "Time [min]");
        row("manual", 150, 0.0, true, 109, 149, 1.0, "Sample");
        row("a long run", 200000, 0.01, false, 0, 40, 6000.0, "Time [min]");
    }

    void theWindowFitsTheNumberOfBars()
    {
        const auto [samples, dt, isRun, first, last, perUnit] = fetched<int, double, bool, int, int, double>(
            {"samples", "dt", "isRun", "first", "last", "perUnit"});
        fill(samples, dt);
        plot->updateBarData(isRun);
        QCOMPARE(left() * perUnit, first - 1.0 / 3);
        QCOMPARE(plot->axisInterval(QwtPlot::xBottom).maxValue() * perUnit, last + 1.0 / 3);
        QTEST(plot->axisTitle(QwtPlot::xBottom).text(), "title");
        QCOMPARE(scrollBar() && scrollBar()->isVisibleTo(plot.data()), samples > 40);
        // Those in sight and no sliver of another.
        QCOMPARE(int(histogram()->dataSize()), qMin(last + 1, samples) - first);
        for (size_t i = 0; i < histogram()->dataSize(); ++i) {
            const QwtIntervalSample bar = histogram()->sample(i);
            const int k = first + int(i);
            QVERIFY(std::abs(bar.interval.minValue() * perUnit - (k - 1.0 / 3)) < 1e-6);
            QVERIFY(std::abs(bar.interval.maxValue() * perUnit - (k + 1.0 / 3)) < 1e-6);
            QCOMPARE(bar.value, data->getYAt(0, k));
        }
    }

    void aPlaceThatTheUserChoseHolds()
    {
        fill(95, 1);
        plot->updateBarData(true);
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
        prompt.picked = 0xff123456;
        data->getSens(1)->barUserScale = true;
        data->getSens(1)->barUserMin = 25; // upside down
        data->getSens(1)->barUserMax = -5;
        plot->updateBarSens(1, true);
        QCOMPARE(int(histogram()->dataSize()), 12); // its series is shorter
        QCOMPARE(plot->axisScaleDiv(QwtPlot::yLeft).lowerBound(), 25.0);
        QCOMPARE(plot->axisScaleDiv(QwtPlot::yLeft).upperBound(), -5.0);
        QCOMPARE(data->getSelectedSensor(), 0); // the class goes on with its own
        plot->updateBarSens(0, true);
        const double before = left();
        const QColor entry = plot->getCurve(0)->title().color();
        plot->setActivePlot(3); // a click on a title
        QCOMPARE(plot->getCurve(0)->title().color(), entry);
        QTest::mousePress(plot->axisWidget(QwtPlot::xBottom), Qt::RightButton);
        QVERIFY(!QApplication::activePopupWidget()); // bars stand over the time only
        QTest::mouseClick(plot->canvas(), Qt::RightButton);
        QCOMPARE(left(), before); // a release of the button does not zoom
        plot->setBarData();
        QCOMPARE(histogram()->brush().color(), QColor(0x12, 0x34, 0x56));
    }

private:
    // Two sensors; the second may have fewer samples.
    void fill(int samples, double dt, int ofSecond = 1)
    {
        QVector<double> v;
        for (int i = 0; i < samples; ++i)
            v << 10 + 9 * std::sin(0.3 * i);
        load(data.data(), {SENSOR_VOLTAGE, SENSOR_PH}, {v, v.mid(0, ofSecond)}, dt);
        data->finalData = false;
        show({600, 600}, GRAPH_BAR, 3);
    }
    void addSamples(int count)
    {
        for (int i = 0; i < count; ++i)
            data->addSample(data->getX().last() + 1, {5, 5});
        plot->updateBarData(true);
    }
    const QwtPlotHistogram* histogram() const
    {
        return static_cast<const QwtPlotHistogram*>(plot->itemList(QwtPlotItem::Rtti_PlotHistogram).value(0));
    }
    ScrollBar* scrollBar() const { return plot->findChild<ScrollBar*>(); }
    double left() const { return plot->axisInterval(QwtPlot::xBottom).minValue(); }
};

QTEST_MAIN(TestBars)
#include "test_bars.moc"

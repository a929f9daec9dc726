// A frame of a run paints the columns that its samples reach; the picture is that of a whole repaint.

#include <QPaintEvent>
#include <QScreen>

#include <algorithm>
#include <cmath>

#include <qwt_plot_canvas.h>

#include "graph/pinnedcurves.h"
#include "tests/graph/plottest.h"

namespace {

class PaintedArea : public QObject
{
public:
    explicit PaintedArea(QWidget* watched) { watched->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            widest = std::max(widest, static_cast<QPaintEvent*>(event)->region().boundingRect().width());
        return false;
    }
    int widest = 0;
};

} // namespace

class TestLivePicture : public PlotTest
{
    Q_OBJECT

private Q_SLOTS:
    void aFrameAddsToThePicture_data()
    {
        columns<int, bool, bool>({"mode", "isDerived", "isPinned"});
        row("lines", int(CURVE_LINE), false, false);
        row("symbols", int(CURVE_SYMBOL), false, false);
        row("a smoothed curve beside", int(CURVE_LINE), true, false);
        row("over a pinned run and predictions", int(CURVE_LINE), false, true);
    }

    void aFrameAddsToThePicture()
    {
        const auto [mode, isDerived, isPinned] = fetched<int, bool, bool>({"mode", "isDerived", "isPinned"});
        constexpr int before = 3000;
        load(data.data(), {SENSOR_PH, SENSOR_VOLTAGE}, {wave(0, before, 3), wave(0, before, 7)}, 0.01);
        data->finalData = false;
        if (isDerived)
            data->addSpecialCurve(ExpData::CURVE_SMOOTH);
        show({700, 420});
        plot->getCurve(0)->setMode(mode);
        plot->setData();
        if (isPinned) {
            ExpData other;
            load(&other, {SENSOR_PH, SENSOR_VOLTAGE}, {wave(9, 9000, 3), wave(9, 9000, 7)}, 0.02);
            plot->setPinned({{"Run 1", StoredExperiment::of(other, true), {}}});
            for (const int i : {0, 1}) {
                Prediction line = Predictions::about(*data, i);
                line.draw({0, 1}, {28, 9});
                line.draw({28, 9}, {25, 2}); // both curves end below and above it
                data->predictions.append(line);
            }
            plot->showPredictions();
        }
        plot->Update();
        QCoreApplication::processEvents();
        int narrow = 0;
        for (int frame = 0; frame < 40; ++frame) {
            PaintedArea area(plot->canvas());
            for (int i = 0; i < 7; ++i) {
                const int n = data->getXSize();
                data->addSample(n * 0.01, {wave(n, 1, 3).first(), wave(n, 1, 7).first()});
            }
            plot->Update();
            if (frame % 10 == 9)
                plot->renewDeviations();
            QCoreApplication::processEvents();
            narrow += area.widest < plot->canvas()->width() / 2 ? 1 : 0;
            const QImage grown = screenshot();
            QCOMPARE(grown.size(), plot->size());
            static_cast<QwtPlotCanvas*>(plot->canvas())->replot();
            QCoreApplication::processEvents();
            QCOMPARE(grown, screenshot());
        }
        QVERIFY2(narrow >= 30, qPrintable(QString::number(narrow))); // some moved the axis
    }

    void aPinnedRunStandsInTheUnitOnDisplay_data()
    {
        columns<bool>({"isCelsius"});
        row("base unit", true);
        row("another unit", false);
    }

    void aPinnedRunStandsInTheUnitOnDisplay()
    {
        QFETCH(bool, isCelsius);
        Units units;
        units.fahrenheit = !isCelsius;
        data.reset(new ExpData(units));
        QVector<double> rising;
        for (int i = 0; i < 400; ++i)
            rising.append(20 + i * 0.02);
        load(data.data(), {SENSOR_EXT_TEMP}, {rising}, 0.1);
        StoredExperiment run = StoredExperiment::of(*data, true);
        for (double& value : run.channels[0].samples)
            value -= 2.5;
        run.times.removeLast(); // no sample stands beside one of the other
        show({800, 500});
        const QColor ground = plot->canvasBackground().color();
        const QImage without = screenshot();
        plot->setPinned({{"Run 1", run, {}}});
        QCoreApplication::processEvents();
        const QImage with = screenshot();
        for (const int i : {150, 250, 350}) {
            const double shown = data->getYAt(0, i) - (isCelsius ? 2.5 : 4.5);
            const QPoint at = plot->canvas()->mapTo(plot.data(), place(0, i * 0.1, shown));
            QVERIFY(with.pixel(at) != without.pixel(at) && with.pixelColor(at) != ground);
            const QPoint beside = at + QPoint(0, 12);
            QCOMPARE(with.pixel(beside), without.pixel(beside));
        }
        plot->setPinned({});
        QCoreApplication::processEvents();
        QCOMPARE(screenshot(), without);
    }

private:
    static QVector<double> wave(int from, int count, double period)
    {
        QVector<double> values;
        for (int i = from; i < from + count; ++i)
            values.append(5 + 2 * std::sin(i / (50 * period)) + 0.2 * std::sin(i * period));
        return values;
    }
    QImage screenshot() const { return plot->screen()->grabWindow(plot->winId()).toImage(); }
};

QTEST_MAIN(TestLivePicture)
#include "test_livepicture.moc"

// A frame of a run paints the columns that its samples reach; the picture is that of a whole repaint.

#include <QPaintEvent>
#include <QScreen>

#include <algorithm>
#include <cmath>

#include <qwt_plot_canvas.h>

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
        columns<int, bool>({"mode", "isDerived"});
        row("lines", int(CURVE_LINE), false);
        row("symbols", int(CURVE_SYMBOL), false);
        row("a smoothed curve beside", int(CURVE_LINE), true);
    }

    void aFrameAddsToThePicture()
    {
        const auto [mode, isDerived] = fetched<int, bool>({"mode", "isDerived"});
        constexpr int before = 3000;
        load(data.data(), {SENSOR_PH, SENSOR_VOLTAGE}, {wave(0, before, 3), wave(0, before, 7)}, 0.01);
        data->finalData = false;
        if (isDerived)
            data->addSpecialCurve(ExpData::CURVE_SMOOTH);
        show({700, 420});
        plot->getCurve(0)->setMode(mode);
        plot->setData();
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

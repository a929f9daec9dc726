// What one refresh of the class's graphs costs, against the same graphs drawn with plain curves of the plot
// library: nine visible plots, CPU time, both sides in turns in this process, medians. No timed test: it
// prints a table and ends with 0 unless a graph did not paint.

#include <QApplication>
#include <QEvent>
#include <QGridLayout>
#include <QTextStream>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include <qwt_legend.h>
#include <qwt_plot.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>

#include "common/classsize.h"
#include "data/expdata.h"
#include "graph/colorscale.h"
#include "graph/plot.h"

namespace {

constexpr int loggers = mostLoggers;
constexpr int curvesPerPlot = 4;
constexpr int rounds = 9;
constexpr int plainWidth = 2;
constexpr int plainWidthActive = 4;
constexpr int settleRounds = 5;

const int sensorIDs[curvesPerPlot] = {SENSOR_LIGHT, SENSOR_PH, SENSOR_VOLTAGE, SENSOR_HUMIDITY};

enum class Signal
{
    Noisy,
    FullScaleNoise
};

double processMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

QVector<double> samples(Signal signal, int n, int seed)
{
    std::mt19937 random(static_cast<unsigned>(seed));
    std::uniform_real_distribution<double> whole(0, 10);
    std::normal_distribution<double> little(0, 0.15);
    QVector<double> v(n);
    for (int i = 0; i < n; ++i) {
        const double phase = 20.0 * i / n + seed;
        v[i] = signal == Signal::FullScaleNoise ? whole(random) : 5 + 3 * std::sin(phase) + little(random);
    }
    return v;
}

std::unique_ptr<ExpData> makeData(Signal signal, int n, int nCurves, int seed)
{
    const double dt = 0.01;
    QVector<double> t(n);
    for (int i = 0; i < n; ++i)
        t[i] = i * dt;
    auto data = std::make_unique<ExpData>();
    data->setDataNew(nCurves, t, dt);
    for (int i = 0; i < nCurves; ++i)
        data->addSensorData(i, sensorIDs[i % curvesPerPlot], samples(signal, n, 100 * seed + i), -1);
    data->finalData = true;
    return data;
}

// Counts what is painted, so that no side wins by painting nothing.
class PaintCounter : public QObject
{
public:
    int count = 0;
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::Paint;
        return false;
    }
};

// The class plot above two rows of four cells, as on the screen of the program.
struct Board
{
    QWidget window;
    std::vector<QwtPlot*> plots;
    PaintCounter counter;

    void add(QwtPlot* plot)
    {
        plots.push_back(plot);
        plot->canvas()->installEventFilter(&counter);
    }
    void open(int x)
    {
        auto* column = new QVBoxLayout(&window);
        auto* grid = new QGridLayout;
        column->addWidget(plots.back(), 1);
        column->addLayout(grid, 1);
        for (int i = 0; i < loggers; ++i)
            grid->addWidget(plots[size_t(i)], i / 4, i % 4);
        window.setGeometry(x, 0, 1600, 900);
        window.show();
        for (int i = 0; i < settleRounds; ++i)
            QApplication::processEvents();
    }
    double refresh(const std::function<void(QwtPlot*)>& bringUpToDate)
    {
        counter.count = 0;
        const double start = processMilliseconds();
        for (QwtPlot* plot : plots)
            bringUpToDate(plot);
        QApplication::processEvents();
        const double cost = processMilliseconds() - start;
        if (counter.count < int(plots.size()))
            qFatal("only %d of %d graphs were painted", counter.count, int(plots.size()));
        return cost;
    }
};

QwtPlot* makePlain(const ExpData& data, QWidget* parent)
{
    auto* plot = new QwtPlot(parent);
    plot->setTitle(QStringLiteral("New experiment"));
    plot->insertLegend(new QwtLegend, QwtPlot::RightLegend);
    auto* grid = new QwtPlotGrid;
    grid->enableXMin(true);
    grid->enableYMin(true);
    grid->attach(plot);
    for (int i = 0; i < data.getNSens(); ++i) {
        auto* curve = new QwtPlotCurve(data.getSens(i)->name);
        curve->setPen(ColorScale::myColors(i), i == 0 ? plainWidthActive : plainWidth);
        curve->setRawSamples(data.getX().constData(), data.getYNoConv(i).constData(), data.getXSize());
        curve->attach(plot);
    }
    return plot;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct Costs
{
    double plain;
    double ours;
};

Costs compare(Signal signal, int n)
{
    std::vector<std::unique_ptr<ExpData>> data;
    Board plain;
    Board ours;
    for (int i = 0; i <= loggers; ++i) {
        data.push_back(makeData(signal, n, curvesPerPlot, i));
        plain.add(makePlain(*data.back(), &plain.window));
        ours.add(new Plot(data.back().get(), GRAPH_LINE, false, i < loggers ? i : -1, &ours.window));
    }
    plain.open(0);
    ours.open(1600);
    const auto replot = [](QwtPlot* plot) { plot->replot(); };
    const auto update = [](QwtPlot* plot) { static_cast<Plot*>(plot)->Update(); };
    ours.refresh(update); // brings the axes to the data
    std::vector<double> plainCosts;
    std::vector<double> ourCosts;
    for (int i = 0; i < rounds; ++i) {
        plainCosts.push_back(plain.refresh(replot));
        ourCosts.push_back(ours.refresh(update));
    }
    return {median(plainCosts), median(ourCosts)};
}

// A run at 100 samples a second on eight loggers with all their channels on, and the samples of one frame
// more before each refresh: moving axes count too.
double liveFrame(int framesPerSecond, graphtype cells, int samplesBefore)
{
    constexpr int channels = 16;
    constexpr int perSecond = 100;
    std::vector<std::unique_ptr<ExpData>> data;
    Board board;
    for (int i = 0; i <= loggers; ++i) {
        data.push_back(makeData(Signal::Noisy, samplesBefore, i < loggers ? channels : loggers + 1, i));
        data.back()->finalData = false;
        const bool isClass = i == loggers;
        board.add(new Plot(data.back().get(), isClass ? GRAPH_LINE : cells, false, isClass ? -1 : i,
                           &board.window));
    }
    board.open(0);
    double total = 0;
    const int frames = 5 * framesPerSecond;
    for (int frame = 0; frame < frames; ++frame) {
        for (const auto& set : data) {
            for (int i = 0; i < perSecond / framesPerSecond; ++i) {
                const double t = set->getX().last() + set->dt;
                set->addSample(t, QVector<double>(set->getNSens(), 5 + 3 * std::sin(t)));
            }
        }
        total += board.refresh([](QwtPlot* plot) { static_cast<Plot*>(plot)->Update(); });
    }
    return total / frames;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QTextStream out(stdout);
    out << "refresh of 9 plots, 4 curves each, pens 2 and 4 wide; CPU ms, medians of " << rounds << "\n\n"
        << "signal            samples     plain      ours   times faster\n";
    for (const Signal signal : {Signal::Noisy, Signal::FullScaleNoise}) {
        double small = 0;
        for (const int n : {1000, 30000}) {
            const Costs costs = compare(signal, n);
            if (n == 1000)
                small = costs.ours;
            out << QStringLiteral("%1 %2 %3 %4 %5")
                       .arg(signal == Signal::Noisy ? "noisy" : "full-scale noise", -16)
                       .arg(n, 8)
                       .arg(costs.plain, 9, 'f', 2)
                       .arg(costs.ours, 9, 'f', 2)
                       .arg(costs.plain / costs.ours, 11, 'f', 1);
            out << (n == 1000 ? QString()
                              : QStringLiteral("   (own cost over that at 1,000: %1)")
                                    .arg(costs.ours / small, 0, 'f', 2))
                << "\n";
            out.flush();
        }
    }
    const int framesPerSecond = 25;
    const auto live = [&](const char* what, graphtype cells, int samples) {
        const double frame = liveFrame(framesPerSecond, cells, samples);
        out << QStringLiteral(
                   "live, 8 %1 and the class, %2 samples: %3 ms a frame, %4 of a core at %5 frames "
                   "a second\n")
                   .arg(QLatin1String(what))
                   .arg(samples)
                   .arg(frame, 0, 'f', 2)
                   .arg(frame * framesPerSecond / 1000, 0, 'f', 2)
                   .arg(framesPerSecond);
    };
    out << "\n";
    live("graphs of 16 curves", GRAPH_LINE, 5500);
    live("bar graphs", GRAPH_BAR, 1000);
    live("bar graphs", GRAPH_BAR, 30000);
    return 0;
}

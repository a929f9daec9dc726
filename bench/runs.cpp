// What kept and pinned runs and the band of the class cost: nine graphs of a class of eight with eight
// sensors and 30,000 samples, without the band, with it, with ten kept runs of that size, and with three of
// them pinned. No timed test: it prints a table.

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QGridLayout>
#include <QTextStream>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <memory>
#include <vector>

#include "common/classsize.h"
#include "data/expdata.h"
#include "graph/averageband.h"
#include "graph/pinnedcurves.h"
#include "graph/plot.h"
#include "persistence/lesson.h"
#include "persistence/sampleshelf.h"

namespace {

constexpr int sensors = 8;
constexpr int rows = 30000;
constexpr int keptRuns = 10;
constexpr int pinnedRuns = 3;
constexpr int frames = 60;
constexpr int rowsAFrame = 4;
constexpr int wholeFrames = 9;
constexpr double period = 0.01;
constexpr int sensorIDs[sensors] = {SENSOR_LIGHT,        SENSOR_PH,    SENSOR_VOLTAGE,  SENSOR_HUMIDITY,
                                    SENSOR_AMB_TEMP_NTC, SENSOR_LIGHT, SENSOR_DISTANCE, SENSOR_TURBIDITY};

double processMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

double residentMegabytes()
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).simplified().split(' ').first().toDouble() / 1024;
    }
    return 0;
}

double valueAt(int i, int seed)
{
    return 5 + 3 * std::sin(20.0 * i / rows + seed) + 0.2 * std::sin(double(i) * i + seed);
}

std::unique_ptr<ExpData> measured(int channels, int seed)
{
    QVector<double> times(rows);
    for (int i = 0; i < rows; ++i)
        times[i] = i * period;
    auto set = std::make_unique<ExpData>();
    set->setDataNew(channels, times, period);
    for (int channel = 0; channel < channels; ++channel) {
        QVector<double> values(rows);
        for (int i = 0; i < rows; ++i)
            values[i] = valueAt(i, seed + channel);
        set->addSensorData(channel, sensorIDs[channel % sensors], values, -1);
    }
    return set;
}

std::unique_ptr<ExpData> joined(const std::vector<std::unique_ptr<ExpData>>& groups)
{
    auto set = std::make_unique<ExpData>();
    set->setDataNewEmpty(SensorList(mostLoggers + 1, groups.front()->getSens(0)), period);
    for (int i = 0; i < mostLoggers; ++i)
        set->joinChannel(i, groups[size_t(i)]->getSens(0), *groups[size_t(i)]);
    return set;
}

struct Class
{
    QWidget window;
    std::vector<std::unique_ptr<ExpData>> sets;
    std::vector<Plot*> plots;

    Class()
    {
        auto* const column = new QVBoxLayout(&window);
        auto* const grid = new QGridLayout;
        for (int i = 0; i <= mostLoggers; ++i) {
            const bool isClass = i == mostLoggers;
            sets.push_back(isClass ? joined(sets) : measured(sensors, i));
            sets.back()->finalData = false;
            plots.push_back(new Plot(sets.back().get(), GRAPH_LINE, false, isClass ? -1 : i, &window));
            if (!isClass)
                grid->addWidget(plots.back(), i / 4, i % 4);
        }
        column->addWidget(plots.back(), 1);
        column->addLayout(grid, 1);
        window.resize(1600, 900);
        window.show();
        for (int i = 0; i < 5; ++i)
            QApplication::processEvents();
    }

    /// Of a run: a few samples more, and the columns that they reach.
    double frame()
    {
        for (const auto& set : sets) {
            const double last = set->getX().constLast();
            for (int i = 0; set == sets.back() && i < rowsAFrame * mostLoggers; ++i)
                set->joinSample(i % mostLoggers, last + (i / mostLoggers + 1) * period,
                                valueAt(set->getXSize(), i % mostLoggers));
            for (int i = 0; set != sets.back() && i < rowsAFrame; ++i) {
                QVector<double> values;
                for (int channel = 0; channel < set->getNSens(); ++channel)
                    values.append(valueAt(set->getXSize(), channel));
                set->addSample(set->getX().constLast() + period, values);
            }
        }
        const double start = processMilliseconds();
        for (Plot* plot : plots)
            plot->Update();
        QApplication::processEvents();
        return processMilliseconds() - start;
    }

    void showBand(bool tf) const
    {
        for (QwtPlotItem* item : plots.back()->itemList()) {
            if (dynamic_cast<AverageBand*>(item))
                item->setVisible(tf);
        }
    }

    double wholePicture() const
    {
        const double start = processMilliseconds();
        for (Plot* plot : plots)
            plot->replot();
        QApplication::processEvents();
        return processMilliseconds() - start;
    }
};

double mean(std::vector<double> values)
{
    double sum = 0;
    for (const double value : values)
        sum += value;
    return sum / double(values.size());
}

struct Costs
{
    double frame = 0;
    double slowest = 0;
    double whole = 0;
    double memory = 0;
};

Costs costsOf(Class& board)
{
    std::vector<double> costs;
    std::vector<double> whole;
    for (int i = 0; i < frames; ++i)
        costs.push_back(board.frame());
    for (int i = 0; i < wholeFrames; ++i)
        whole.push_back(board.wholePicture());
    return {mean(costs), *std::max_element(costs.begin(), costs.end()), mean(whole), residentMegabytes()};
}

struct Kept
{
    LessonRun outline;
    std::shared_ptr<const SampleShelf> shelf;

    PinnedRun behind(int run, int part) const
    {
        return {QStringLiteral("Run %1").arg(run + 1), outline.parts.at(part).experiment,
                [shelf = shelf, part](int channel) { return shelf->column(part, channel); }};
    }
};

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QTextStream out(stdout);
    Class board;
    double laid = 0;
    costsOf(board); // the axes have their steps
    board.showBand(false);
    const Costs plain = costsOf(board);
    board.showBand(true);
    const Costs none = costsOf(board);
    std::vector<Kept> kept;
    for (int run = 0; run < keptRuns; ++run) {
        LessonRun whole;
        for (int i = 0; i <= mostLoggers; ++i) {
            const bool isClass = i == mostLoggers;
            Lesson::Part part;
            part.isStored = true;
            part.experiment = StoredExperiment::of(
                *measured(isClass ? mostLoggers + 1 : sensors, 100 * run + i), true, isClass);
            whole.parts.append(part);
        }
        QElapsedTimer timer;
        timer.start();
        kept.push_back({SampleShelf::outlineOf(whole), SampleShelf::of(whole)});
        laid += double(timer.nsecsElapsed()) / 1e6 / keptRuns;
    }
    const Costs ten = costsOf(board);
    for (int i = 0; i <= mostLoggers; ++i) {
        QVector<PinnedRun> pinned;
        for (int run = 0; run < pinnedRuns; ++run)
            pinned.append(kept[size_t(run)].behind(run, i));
        board.plots[size_t(i)]->setPinned(pinned);
    }
    QApplication::processEvents();
    const Costs three = costsOf(board);
    out << "9 graphs, 8 groups of 8 sensors, 30,000 samples; CPU ms of a frame of a run and of a whole "
           "picture\n\n"
        << "                    frame  slowest  whole picture  memory MB\n";
    const auto line = [&out](const char* what, const Costs& costs) {
        out << QStringLiteral("%1 %2 %3 %4 %5\n")
                   .arg(QLatin1String(what), -16)
                   .arg(costs.frame, 8, 'f', 2)
                   .arg(costs.slowest, 8, 'f', 2)
                   .arg(costs.whole, 14, 'f', 2)
                   .arg(costs.memory, 10, 'f', 0);
    };
    line("without the band", plain);
    line("none", none);
    line("ten kept", ten);
    line("three pinned", three);
    out << QStringLiteral("\nframe with the band of the class over none: %1, whole picture: %2")
               .arg(none.frame / plain.frame, 0, 'f', 2)
               .arg(none.whole / plain.whole, 0, 'f', 2);
    out << QStringLiteral(
               "\nframe with three pinned over none: %1, whole picture: %2; memory over none: %4; a run is "
               "laid on the disk in %3 ms\n")
               .arg(three.frame / none.frame, 0, 'f', 2)
               .arg(three.whole / none.whole, 0, 'f', 2)
               .arg(laid, 0, 'f', 0)
               .arg(three.memory / none.memory, 0, 'f', 2);
    return 0;
}

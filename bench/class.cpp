// A class at work, measured: eight virtual loggers at 100 samples a second with all sensors on, through real
// pseudo terminals and the real window. usage: bench-class VIRTUAL_LOGGERS [--seconds S] [--bars]
#include <QAction>
#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QEvent>
#include <QFile>
#include <QGridLayout>
#include <QProcess>
#include <QScreen>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <ctime>
#include <memory>
#include <sys/resource.h>

#include <qwt_plot_canvas.h>

#include "app/mainwindow.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/classsize.h"
#include "common/settings.h"
#include "common/waits.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "protocol/tembrindata.h"
#include "sensors/sensor.h"

namespace {

constexpr int loggerCount = mostLoggers;

qint64 monotonicNs()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return qint64(now.tv_sec) * 1000000000 + now.tv_nsec;
}

double cpuSeconds()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& t) { return double(t.tv_sec) + double(t.tv_usec) * 1e-6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double percentile(QVector<double> values, double fraction)
{
    if (values.isEmpty())
        return NAN;
    std::sort(values.begin(), values.end());
    return values.at(qMin(values.size() - 1, int(fraction * values.size())));
}

/// What was on a logger's graph after a paint.
struct Shown
{
    int samples = 0;
    qint64 ns = 0;
};

/// Sees each graph being painted and each frame reaching the screen.
class WatchingApplication : public QApplication
{
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override
    {
        const QEvent::Type type = event->type();
        const bool handled = QApplication::notify(receiver, event);
        if (!watching)
            return handled;
        if (type == QEvent::Paint) {
            for (int i = 0; i < loggerCount; ++i) {
                if (receiver == canvases[size_t(i)])
                    painted[size_t(i)] = data[size_t(i)]->getXSize();
            }
        } else if (type == QEvent::UpdateRequest && receiver->isWidgetType()) {
            noteFrame();
        }
        return handled;
    }

    std::array<QWidget*, loggerCount> canvases{};
    std::array<ExpData*, loggerCount> data{};
    std::array<QVector<Shown>, loggerCount> shown;
    QVector<qint64> frames;
    bool watching = false;

private:
    void noteFrame()
    {
        const qint64 now = monotonicNs();
        bool any = false;
        for (size_t i = 0; i < loggerCount; ++i) {
            if (painted[i] >= 0) {
                shown[i].append({painted[i], now});
                painted[i] = -1;
                any = true;
            }
        }
        if (any)
            frames.append(now);
    }

    std::array<int, loggerCount> painted{-1, -1, -1, -1, -1, -1, -1, -1};
};

/// Asks the GUI thread for a sign of life every 5 ms and notes how long the answer took.
class Pulse : public QThread
{
public:
    explicit Pulse(QObject* inGuiThread)
        : receiver(inGuiThread)
    {
    }

    void finish()
    {
        stopping = true;
        while (!wait(5))
            QCoreApplication::processEvents();
    }

    QVector<double> delays; ///< ms

protected:
    void run() override
    {
        while (!stopping) {
            const qint64 asked = monotonicNs();
            std::atomic<bool> answered{false};
            QMetaObject::invokeMethod(receiver, [&answered] { answered = true; });
            while (!answered)
                usleep(200);
            delays.append(double(monotonicNs() - asked) * 1e-6);
            msleep(5);
        }
    }

private:
    QObject* receiver;
    std::atomic<bool> stopping{false};
};

/// A sample as the loggers recorded it when they sent it.
struct SentSample
{
    int number = 0;
    qint64 ns = 0;
    QByteArray bytes;
};
using SentSamples = std::array<QVector<SentSample>, loggerCount>;

SentSamples readRecord(const QString& fileName)
{
    SentSamples sent;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(fileName));
    while (!file.atEnd()) {
        const QList<QByteArray> fields = file.readLine().trimmed().split(' ');
        if (fields.size() == 5 && fields.at(0).toInt() <= loggerCount && fields.at(1).toInt() == 1)
            sent[size_t(fields.at(0).toInt() - 1)].append(
                {fields.at(2).toInt(), fields.at(3).toLongLong(), QByteArray::fromHex(fields.at(4))});
    }
    return sent;
}

/// The values of one sample's bytes, in the order of the data set's channels, decoded by sensors of our own.
QVector<double> decode(const QVector<SensorKind>& kinds, const QByteArray& bytes)
{
    QVector<double> values;
    int position = 0;
    for (const SensorKind& kind : kinds) {
        const int before = values.size();
        values.resize(before + kind.valueCount());
        kind.decode(reinterpret_cast<const unsigned char*>(bytes.constData()) + position,
                    values.data() + before);
        position += kind.numBytes();
    }
    return position == bytes.size() ? values : QVector<double>();
}

struct Comparison
{
    int sent = 0;
    int stored = 0;
    int wrong = 0; ///< samples missing, out of place or with another value
};

Comparison compare(const QVector<SentSample>& sent, const ExpData& stored, const TembrinData& logger)
{
    QVector<SensorKind> own;
    const SensorList& list = logger.getSensors();
    for (int i = 0; i < list.size(); ++i) {
        if (logger.reported().mask >> i & 1)
            own.append(SensorKind(list.at(i)->ID));
    }
    Comparison result{sent.size(), stored.getXSize(), 0};
    const double period = logger.samplePeriod();
    for (int k = 0; k < qMin(result.sent, result.stored); ++k) {
        const QVector<double> values = decode(own, sent.at(k).bytes);
        bool same =
            values.size() == stored.getNSens() && sent.at(k).number == k && stored.getXAt(k) == period * k;
        for (int channel = 0; same && channel < values.size(); ++channel)
            same = stored.getYNoConvAt(channel, k) == values.at(channel);
        result.wrong += !same;
    }
    result.wrong += qAbs(result.sent - result.stored);
    return result;
}

void addDelays(const QVector<SentSample>& sent, const QVector<Shown>& shown, QVector<double>* delays)
{
    int k = 0;
    for (const Shown& frame : shown) {
        for (; k < qMin(frame.samples, sent.size()); ++k)
            delays->append(double(frame.ns - sent.at(k).ns) * 1e-6);
    }
}

/// The links of the loggers in the order of their numbers, from what the program says on its start.
QStringList publishedLinks(const QByteArray& output)
{
    QStringList links;
    for (const QByteArray& line : output.split('\n')) {
        const QList<QByteArray> words = line.split(' ');
        if (words.size() > 1 && words.at(1).startsWith('/'))
            links.append(QString::fromLocal8Bit(words.at(1)));
    }
    return links;
}

template<typename Condition> void waitFor(const char* what, int ms, Condition condition)
{
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > ms)
            qFatal("gave up waiting: %s", what);
        Waits::pump(20);
    }
}

void row(const char* name, double value, int decimals, const char* bound, bool reached)
{
    QTextStream(stdout) << QStringLiteral("%1 %2   %3  %4\n")
                               .arg(QLatin1String(name), -44)
                               .arg(value, 12, 'f', decimals)
                               .arg(QLatin1String(bound), -22)
                               .arg(reached ? QStringLiteral("reached") : QStringLiteral("MISSED"));
}

/// What is measured, from the command line.
struct Choice
{
    QString virtualLoggers; ///< the program
    QString model;
    double seconds = 0;
    bool isBars = false;
};

Choice readCommandLine(const QCoreApplication& application)
{
    QCommandLineParser parser;
    const QCommandLineOption seconds(QStringLiteral("seconds"), QStringLiteral("Length of the run."),
                                     QStringLiteral("S"), QStringLiteral("60"));
    const QCommandLineOption model(QStringLiteral("model"), QStringLiteral("Model of the loggers."),
                                   QStringLiteral("NAME"), QStringLiteral("Birch"));
    const QCommandLineOption bars(QStringLiteral("bars"), QStringLiteral("Bar graphs in all cells."));
    parser.addOptions({seconds, model, bars});
    parser.addPositionalArgument(QStringLiteral("virtual-loggers"),
                                 QStringLiteral("The program that plays loggers."));
    parser.addHelpOption();
    parser.process(application);
    if (parser.positionalArguments().size() != 1)
        parser.showHelp(2);
    return {parser.positionalArguments().first(), parser.value(model), parser.value(seconds).toDouble(),
            parser.isSet(bars)};
}

/// The measurement, step by step in the order of the functions.
class Bench
{
public:
    Bench(WatchingApplication* application, const Choice& choice)
        : application(application)
        , choice(choice)
    {
    }

    void start();
    void connect();
    void run();
    void stop();
    /// Prints the table; false if a sample is missing or wrong.
    bool report() const;

private:
    int fewestFrames() const;

    WatchingApplication* application;
    const Choice choice;
    QTemporaryDir folder;
    const QString record = folder.filePath(QStringLiteral("record"));
    QProcess loggers;
    std::unique_ptr<MainWindow> window;
    multiConnectionsManager* manager = nullptr;
    qint64 begin = 0; ///< of the run, ns
    double wall = 0;  ///< s
    double cpu = 0;   ///< s
    double held = 0;  ///< ms, the longest that the GUI thread gave no answer
};

/// Starts the loggers and makes them those in use.
void Bench::start()
{
    loggers.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    loggers.start(choice.virtualLoggers,
                  {QStringLiteral("--count"), QString::number(loggerCount), QStringLiteral("--directory"),
                   folder.filePath(QStringLiteral("loggers")), QStringLiteral("--model"), choice.model,
                   QStringLiteral("--rate"), QStringLiteral("100/Sec"), QStringLiteral("--samples"),
                   QStringLiteral("30000"), QStringLiteral("--sensors"), QStringLiteral("all"),
                   QStringLiteral("--record"), record});
    QByteArray output;
    while (!output.contains("ready") && loggers.waitForReadyRead(5000))
        output += loggers.readAllStandardOutput();

    const QStringList links = publishedLinks(output);
    QSettings settings = Settings::mainStore();
    for (int i = 0; i < loggerCount; ++i) {
        settings.setValue(Settings::loggerKey(i), links.value(i));
        settings.setValue(Settings::groupKey(i), QStringLiteral("Group %1").arg(QChar('A' + i)));
    }
    settings.setValue(QLatin1String(Settings::numDefined), loggerCount);
}

/// Opens the window, waits until it knows all loggers, and puts the graphs that are watched into the cells.
void Bench::connect()
{
    window = std::make_unique<MainWindow>();
    window->resize(QGuiApplication::primaryScreen()->size());
    window->show();
    manager = window->findChild<multiConnectionsManager*>();
    waitFor("all loggers known", 15000, [this] {
        for (int i = 0; i < loggerCount; ++i) {
            if (!manager->tembrinDataAt(i)->isLoggerRecognized())
                return false;
        }
        return true;
    });
    Waits::pump(1000);
    auto* grid =
        qobject_cast<QGridLayout*>(window->findChild<QWidget*>(QStringLiteral("graphGridW"))->layout());
    for (int i = 0; i < loggerCount; ++i) {
        manager->addWidgetByIndex(grid, choice.isBars ? VIEW_BAR : VIEW_GRAPH, i);
        const Plot* shown = choice.isBars ? manager->barAt(i) : manager->plotAt(i);
        application->canvases[size_t(i)] = const_cast<QWidget*>(shown->canvas());
        application->data[size_t(i)] = manager->dataAt(i);
    }
}

void Bench::run()
{
    window->findChild<QAction*>(QStringLiteral("runAct"))->trigger();
    waitFor("the first samples of all loggers", 5000, [this] {
        return std::all_of(application->data.begin(), application->data.end(),
                           [](const ExpData* set) { return set->getXSize() > 3; });
    });
    application->watching = true;
    Pulse pulse(window.get());
    pulse.start();
    const double cpuBefore = cpuSeconds();
    begin = monotonicNs();
    Waits::pump(int(choice.seconds * 1000));
    wall = double(monotonicNs() - begin) * 1e-9;
    cpu = cpuSeconds() - cpuBefore;
    pulse.finish();
    application->watching = false;
    held = *std::max_element(pulse.delays.begin(), pulse.delays.end());
}

void Bench::stop()
{
    window->findChild<QAction*>(QStringLiteral("stopAct"))->trigger();
    waitFor("all loggers stopped", 20000, [this] { return !manager->isAnyRunning(); });
    Waits::pump(1500);
    loggers.terminate();
    loggers.waitForFinished(5000);
}

/// In the slowest whole second of the run.
int Bench::fewestFrames() const
{
    constexpr qint64 oneSecond = 1000000000;
    const QVector<qint64>& frames = application->frames;
    int fewest = frames.size();
    for (qint64 second = begin; second + oneSecond <= begin + qint64(wall * 1e9); second += oneSecond) {
        const auto from = std::lower_bound(frames.begin(), frames.end(), second);
        const auto to = std::lower_bound(frames.begin(), frames.end(), second + oneSecond);
        fewest = qMin(fewest, int(to - from));
    }
    return fewest;
}

bool Bench::report() const
{
    const SentSamples sent = readRecord(record);
    Comparison all;
    QVector<double> delays;
    for (size_t i = 0; i < loggerCount; ++i) {
        const Comparison one = compare(sent[i], *application->data[i], *manager->tembrinDataAt(int(i)));
        all.sent += one.sent;
        all.stored += one.stored;
        all.wrong += one.wrong;
        addDelays(sent[i], application->shown[i], &delays);
    }
    QTextStream(stdout) << QStringLiteral(
                               "%1 loggers, %2, 100/Sec, %3 channels each, %4 s, window %5 x %6%7\n")
                               .arg(loggerCount)
                               .arg(choice.model)
                               .arg(application->data[0]->getNSens())
                               .arg(wall, 0, 'f', 1)
                               .arg(window->width())
                               .arg(window->height())
                               .arg(choice.isBars ? QStringLiteral(", bar graphs") : QString());
    const double frames = application->frames.size() / wall;
    const double median = percentile(delays, 0.5);
    const double most = percentile(delays, 0.99);
    const double cores = cpu / wall;
    row("samples sent", all.sent, 0, "", all.sent > 0);
    row("samples stored", all.stored, 0, "as many as sent", all.stored == all.sent);
    row("samples lost, doubled or with another value", all.wrong, 0, "0", all.wrong == 0);
    row("frames a second, mean", frames, 1, "at least 15", frames >= 15);
    row("frames in the slowest second", fewestFrames(), 0, "at least 15", fewestFrames() >= 15);
    row("byte written to curve on screen, median, ms", median, 1, "at most 15", median <= 15);
    row("the same, 99 of 100, ms", most, 1, "at most 30", most <= 30);
    row("GUI thread held at the longest, ms", held, 1, "at most 100", held <= 100);
    row("cores used by the program", cores, 2, "at most 0.35", cores <= 0.35);
    return all.wrong == 0;
}

} // namespace

int main(int argc, char** argv)
{
    WatchingApplication application(argc, argv);
    Bench bench(&application, readCommandLine(application));
    bench.start();
    bench.connect();
    bench.run();
    bench.stop();
    return bench.report() ? 0 : 1;
}

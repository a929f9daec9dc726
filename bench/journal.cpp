// What the journal of a run costs while 8 loggers send 100 samples a second of 16 channels, and how long an
// hour of that takes to read. The stall is by how much a tick of 10 ms came late, with a journal and without.

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <cmath>
#include <cstdio>
#include <ctime>
#include <memory>
#include <vector>

#include "app/runrecorder.h"
#include "classroom/classrun.h"
#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"
#include "persistence/journalreader.h"

namespace {

constexpr int channels = 16;
constexpr int msOfTick = 10;
constexpr int ticks = 2000;
constexpr int rowsOfAnHour = 360000;

struct Cost
{
    double percent = 0; ///< of a core, of all threads
    double latest = 0;  ///< ms
};

double cpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

QVector<double> valuesAt(int row)
{
    QVector<double> values(channels);
    for (int channel = 0; channel < channels; ++channel)
        values[channel] = std::sin(row * 0.01 + channel);
    return values;
}

void fill(ExpData* set)
{
    SensorList sensors;
    for (int i = 0; i < channels; ++i)
        sensors.append(SensorPtr::create(SENSOR_AMB_TEMP_NTC));
    set->setDataNewEmpty(sensors, 0.01);
}

Cost live(multiConnectionsManager* manager, bool hasJournal)
{
    std::unique_ptr<RunRecorder> recorder;
    if (hasJournal)
        recorder.reset(new RunRecorder(manager));
    Q_EMIT manager->run().begun();
    Cost cost;
    QElapsedTimer clock;
    int tick = 0;
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, [&] {
        cost.latest = qMax(cost.latest, double(clock.nsecsElapsed()) * 1e-6 - (tick + 1) * msOfTick);
        const QVector<double> values = valuesAt(tick);
        for (int slot = 0; slot < mostLoggers; ++slot)
            Q_EMIT manager->run().rowTaken(slot, tick * 0.01, values);
        if (++tick == ticks)
            QCoreApplication::quit();
    });
    const double before = cpuSeconds();
    clock.start();
    timer.start(msOfTick);
    QCoreApplication::exec();
    recorder.reset();
    cost.percent = (cpuSeconds() - before) / (double(clock.elapsed()) / 1000) * 100;
    return cost;
}

void writeHour(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("no file");
    file.write(JournalFormat::head(QDateTime::currentDateTime()));
    for (int slot = 0; slot < mostLoggers; ++slot) {
        JournalGroup group;
        group.slot = slot;
        group.period = 0.01;
        group.channels = QVector<JournalChannel>(channels);
        file.write(JournalFormat::block(group));
    }
    constexpr int rowsOfBlock = 25;
    for (int first = 0; first < rowsOfAnHour; first += rowsOfBlock) {
        JournalRows rows{0, channels, {}};
        for (int row = first; row < first + rowsOfBlock; ++row)
            rows.values += QVector<double>{row * 0.01} + valuesAt(row);
        for (rows.slot = 0; rows.slot < mostLoggers; ++rows.slot)
            file.write(JournalFormat::block(rows));
    }
}

double readingSeconds(const QString& path, JournalReader::What what)
{
    QElapsedTimer clock;
    clock.start();
    JournalRun run;
    QString reason;
    if (!JournalReader::read(path, what, &run, &reason) || run.experiments.value(7).rows != rowsOfAnHour)
        qFatal("not read: %s", qPrintable(reason));
    return double(clock.elapsed()) / 1000;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    const QTemporaryDir folder;
    qputenv("XDG_STATE_HOME", folder.path().toLocal8Bit());
    multiConnectionsManager manager;
    std::vector<std::unique_ptr<ExpData>> sets;
    for (int slot = 0; slot < mostLoggers; ++slot) {
        sets.push_back(std::make_unique<ExpData>());
        fill(sets.back().get());
        manager.setDataAt(slot, sets.back().get());
    }
    const Cost without = live(&manager, false);
    const Cost with = live(&manager, true);
    std::printf("8 loggers, 100 samples/s, %d channels, %d s\n", channels, ticks * msOfTick / 1000);
    std::printf("  %-28s %6.2f %% of a core\n", "journal costs", with.percent - without.percent);
    std::printf("  %-28s %6.2f ms (without it %.2f ms)\n", "latest tick", with.latest, without.latest);

    const QString path = folder.filePath(QStringLiteral("hour.journal"));
    writeHour(path);
    std::printf("an hour of it, %.0f MB\n", double(QFileInfo(path).size()) / 1e6);
    std::printf("  %-28s %6.2f s\n", "what there is", readingSeconds(path, JournalReader::What::Extent));
    std::printf("  %-28s %6.2f s\n", "all samples", readingSeconds(path, JournalReader::What::Samples));
    return 0;
}

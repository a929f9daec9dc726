// A class file of 9 channels of 30,000 samples, written and read by the program and as a tree of
// QDomDocument. Every run is a process of its own, in turns, which tells its time and the memory that the
// task added.

#include <QCoreApplication>
#include <QDomDocument>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <malloc.h>

#include "data/expdata.h"
#include "persistence/lesson.h"
#include "persistence/readwrite.h"
#include "sensors/sensorkind.h"

namespace {

constexpr int channels = 9;
constexpr int samples = 30000;
constexpr int groups = 8;
constexpr int rounds = 7;

struct Figures
{
    double ms;
    double megabytes;
};

QVector<double> times()
{
    QVector<double> t(samples);
    for (int i = 0; i < samples; ++i)
        t[i] = i * 0.01;
    return t;
}

constexpr int kinds[channels] = {SENSOR_AMB_TEMP_NTC, SENSOR_HUMIDITY, SENSOR_LIGHT,
                                 SENSOR_AIRPRESSURE,  SENSOR_VOLTAGE,  SENSOR_CURRENT,
                                 SENSOR_UV,           SENSOR_AMB_TEMP, SENSOR_MICROPHONE};

/// What loggers measure: the meaning of words that swing and tremble.
QVector<double> values(int kind, int channel)
{
    QVector<double> v(samples);
    for (int i = 0; i < samples; ++i)
        v[i] = SensorKind(kind).convert(
            quint16(30000 + 500 * channel + 8000 * std::sin(i * 0.003 + channel) + 370 * std::sin(i * 1.7)));
    return v;
}

/// A group's channels, or those of the class, which are of one kind.
void fill(ExpData* data, bool isClass = true)
{
    data->setDataNew(channels, times(), 0.01);
    for (int c = 0; c < channels; ++c) {
        const int kind = kinds[isClass ? 0 : c];
        data->addSensorData(c, kind, values(kind, c), -1);
    }
}

void check(bool isFine, const char* what)
{
    if (!isFine)
        qFatal("%s failed", what);
}

void ownWrite(const QString& name, const ExpData& data)
{
    QString reason;
    check(ReadWrite::write(name, QStringLiteral("Class"), &data, {}, {}, {}, QStringLiteral("Line"), &reason),
          "own write");
}

void treeWrite(const QString& name, const ExpData& data)
{
    QDomDocument document(QStringLiteral("ExpData"));
    QDomElement root = document.createElement(QStringLiteral("ExpDataRoot"));
    document.appendChild(root);
    root.setAttribute(QStringLiteral("numSensors"), channels);
    root.setAttribute(QStringLiteral("Rate"), data.dt);
    const auto addList = [&](QDomElement parent, const QString& tag, const QString& key,
                             const QVector<double>& v, int decimals) {
        for (const double value : v) {
            QDomElement element = document.createElement(tag);
            element.setAttribute(key, QStringLiteral("%1").arg(value, 0, 'f', decimals));
            parent.appendChild(element);
        }
    };
    QDomElement timeList = document.createElement(QStringLiteral("Times"));
    root.appendChild(timeList);
    addList(timeList, QStringLiteral("T"), QStringLiteral("t"), data.getX(), 6);
    for (int c = 0; c < channels; ++c) {
        QDomElement sensor = document.createElement(QStringLiteral("Sensor"));
        sensor.setAttribute(QStringLiteral("DataIndex"), c);
        sensor.setAttribute(QStringLiteral("SensorID"), data.getSens(c)->ID);
        root.appendChild(sensor);
        QDomElement list = document.createElement(QStringLiteral("Samples"));
        sensor.appendChild(list);
        addList(list, QStringLiteral("V"), QStringLiteral("v"), data.getYNoConv(c),
                int(data.getSens(c)->precision) + 1);
    }
    QFile file(name);
    check(file.open(QIODevice::WriteOnly), "tree write");
    QTextStream stream(&file);
    stream.setCodec("UTF-16");
    stream.setGenerateByteOrderMark(true);
    stream << document.toString();
    stream.flush();
    check(stream.status() == QTextStream::Ok, "tree write");
}

/// Eight groups of eight channels and the class, with all digits that a lesson keeps.
Lesson lesson()
{
    Lesson lesson;
    for (int slot = -1; slot < groups; ++slot) {
        ExpData data;
        fill(&data, slot < 0);
        Lesson::Part part;
        part.isClass = slot < 0;
        part.slot = slot;
        part.isInClass = part.isStored = true;
        part.experiment = StoredExperiment::of(data, true, slot < 0);
        if (slot >= 0)
            part.experiment.channels.removeLast();
        lesson.parts.append(part);
    }
    return lesson;
}

void lessonTask(const QString& task, const QString& name, const Lesson& lesson)
{
    QString reason;
    Lesson read;
    if (task == QLatin1String("lesson-write"))
        check(LessonFile::write(name, lesson, &reason), "lesson write");
    else
        check(LessonFile::read(name, &read, &reason) && reason.isEmpty(), "lesson read");
}

void ownRead(const QString& name)
{
    ExpData data;
    check(ReadWrite::read(name, &data, nullptr, nullptr) == QLatin1String("Line"), "own read");
    check(data.getNSens() == channels && data.getYSize(channels - 1) == samples, "own read");
}

/// Only the parsing: what a reader then picks from the tree is left out.
void treeRead(const QString& name)
{
    QFile file(name);
    QDomDocument document;
    check(file.open(QIODevice::ReadOnly) && document.setContent(&file), "tree read");
}

double statusMegabytes(const char* key)
{
    QFile status(QStringLiteral("/proc/self/status"));
    check(status.open(QIODevice::ReadOnly), "status");
    const QByteArray text = status.readAll();
    return text.mid(text.indexOf(key) + qstrlen(key), 20).trimmed().split(' ').first().toDouble() / 1024;
}

/// One task in this process; the figures go to the standard output.
int runTask(const QString& task, const QString& name)
{
    ExpData data;
    if (task.endsWith(QLatin1String("write")) && !task.startsWith(QLatin1String("lesson")))
        fill(&data);
    const Lesson toWrite = task == QLatin1String("lesson-write") ? lesson() : Lesson();
    malloc_trim(0);
    QFile peak(QStringLiteral("/proc/self/clear_refs")); // "5" makes the peak start anew
    check(peak.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && peak.write("5") == 1, "peak");
    const double before = statusMegabytes("VmRSS:");
    QElapsedTimer timer;
    timer.start();
    if (task.startsWith(QLatin1String("lesson")))
        lessonTask(task, name, toWrite);
    else if (task == QLatin1String("own-write"))
        ownWrite(name, data);
    else if (task == QLatin1String("tree-write"))
        treeWrite(name, data);
    else if (task == QLatin1String("own-read"))
        ownRead(name);
    else
        treeRead(name);
    const double ms = double(timer.nsecsElapsed()) / 1e6;
    std::printf("%f %f\n", ms, statusMegabytes("VmHWM:") - before);
    return 0;
}

Figures inOwnProcess(const QString& task, const QString& name)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QCoreApplication::applicationFilePath(), {task, name});
    check(process.waitForFinished(-1) && process.exitCode() == 0, qPrintable(task));
    const QList<QByteArray> words = process.readAllStandardOutput().trimmed().split(' ');
    return {words.value(0).toDouble(), words.value(1).toDouble()};
}

double median(QVector<double> v)
{
    std::sort(v.begin(), v.end());
    return v.at(v.size() / 2);
}

void compare(const char* what, const QString& own, const QString& tree, const QString& ownName,
             const QString& treeName)
{
    QVector<double> ownMs, treeMs, ownMb, treeMb;
    for (int i = 0; i < rounds; ++i) {
        const Figures o = inOwnProcess(own, ownName);
        const Figures t = inOwnProcess(tree, treeName);
        ownMs << o.ms;
        ownMb << o.megabytes;
        treeMs << t.ms;
        treeMb << t.megabytes;
    }
    std::printf("%-6s %9.1f ms %9.1f ms %7.1fx   %8.1f MB %8.1f MB %7.1fx\n", what, median(ownMs),
                median(treeMs), median(treeMs) / median(ownMs), median(ownMb), median(treeMb),
                median(treeMb) / median(ownMb));
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication app(argc, argv);
    if (argc == 3)
        return runTask(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2]));
    const QTemporaryDir folder;
    const QString own = folder.filePath(QStringLiteral("own.xml"));
    const QString tree = folder.filePath(QStringLiteral("tree.xml"));
    std::printf("class file, %d channels of %d samples, medians of %d processes\n", channels, samples,
                rounds);
    std::printf("%-6s %12s %12s %8s   %11s %11s %8s\n", "", "own", "tree", "faster", "own", "tree", "less");
    compare("save", QStringLiteral("own-write"), QStringLiteral("tree-write"), own, tree);
    compare("open", QStringLiteral("own-read"), QStringLiteral("tree-read"), own, own);
    std::printf("lesson, %d groups of %d channels and the class\n", groups, channels - 1);
    const QString name = folder.filePath(QStringLiteral("bench.lesson"));
    for (const char* task : {"lesson-write", "lesson-read"}) {
        QVector<double> ms, mb;
        for (int i = 0; i < rounds; ++i) {
            const Figures figures = inOwnProcess(QLatin1String(task), name);
            ms << figures.ms;
            mb << figures.megabytes;
        }
        std::printf("%-12s %9.1f ms %9.1f MB\n", task, median(ms), median(mb));
    }
    std::printf("size %9.1f MB\n", double(QFileInfo(name).size()) / (1 << 20));
    return 0;
}

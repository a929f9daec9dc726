#include "persistence/sampleshelf.h"

#include <QCryptographicHash>
#include <QDir>
#include <QMutexLocker>
#include <QStandardPaths>
#include <QTemporaryFile>

namespace {

QByteArray sumOf(const QVector<double>& column)
{
    QCryptographicHash sum(QCryptographicHash::Md5);
    sum.addData(reinterpret_cast<const char*>(column.constData()), column.size() * int(sizeof(double)));
    return sum.result();
}

/// The times and the channels, as a shelf has them.
QVector<QVector<double>> columnsOf(const StoredExperiment& experiment)
{
    QVector<QVector<double>> columns{experiment.times};
    for (const StoredExperiment::Channel& channel : experiment.channels)
        columns.append(channel.samples);
    return columns;
}

void takeSamples(StoredExperiment* experiment)
{
    if (experiment->times.size() > 1)
        experiment->times = {experiment->times.constLast()};
    for (StoredExperiment::Channel& channel : experiment->channels)
        channel.samples = {};
}

} // namespace

std::shared_ptr<const SampleShelf> SampleShelf::of(const LessonRun& run)
{
    const std::shared_ptr<SampleShelf> shelf(new SampleShelf);
    return shelf->write(run) ? shelf : nullptr;
}

bool SampleShelf::write(const LessonRun& run)
{
    // Not in the folder for what is temporary, which may be in memory.
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    file = std::make_unique<QTemporaryFile>(folder + QStringLiteral("/run-XXXXXX"));
    if (!QDir().mkpath(folder) || !static_cast<QTemporaryFile*>(file.get())->open())
        return false;
    QHash<const double*, qint64> written;
    for (const Lesson::Part& part : run.parts) {
        if (!writeColumns(part.experiment, &written) || !writeColumns(part.raw, &written))
            return false;
    }
    return file->flush() && file->size() == end;
}

/// Columns that parts share lie there once.
bool SampleShelf::writeColumns(const StoredExperiment& experiment, QHash<const double*, qint64>* written)
{
    Columns columns;
    columns.sums = sumsOf(experiment);
    for (const QVector<double>& column : columnsOf(experiment)) {
        const auto found = written->constFind(column.constData());
        if (column.isEmpty() || found != written->cend()) {
            columns.places.append({column.isEmpty() ? 0 : *found, column.size()});
            continue;
        }
        const qint64 bytes = qint64(column.size()) * qint64(sizeof(double));
        if (file->write(reinterpret_cast<const char*>(column.constData()), bytes) != bytes)
            return false;
        columns.places.append({end, column.size()});
        written->insert(column.constData(), end);
        end += bytes;
    }
    experiments.append(columns);
    return true;
}

LessonRun SampleShelf::outlineOf(LessonRun run)
{
    for (Lesson::Part& part : run.parts) {
        takeSamples(&part.experiment);
        takeSamples(&part.raw);
    }
    return run;
}

SampleShelf::Sums SampleShelf::sumsOf(const StoredExperiment& experiment)
{
    Sums sums;
    for (const QVector<double>& column : columnsOf(experiment))
        sums.append(sumOf(column));
    return sums;
}

QVector<double> SampleShelf::read(const Column& column) const
{
    QVector<double> samples(column.count);
    const qint64 bytes = qint64(column.count) * qint64(sizeof(double));
    const QMutexLocker lock(&mutex);
    if (!file->seek(column.offset) || file->read(reinterpret_cast<char*>(samples.data()), bytes) != bytes)
        return {};
    return samples;
}

QVector<double> SampleShelf::column(int part, int channel) const
{
    const QVector<Column>& places = experiments.at(2 * part).places;
    return channel + 1 < places.size() ? read(places.at(channel + 1)) : QVector<double>();
}

bool SampleShelf::fillExperiment(StoredExperiment* experiment, const Columns& columns,
                                 QHash<qint64, QVector<double>>* shared) const
{
    for (int i = 0; i < columns.places.size(); ++i) {
        const Column& place = columns.places.at(i);
        QVector<double>& samples = i == 0 ? experiment->times : experiment->channels[i - 1].samples;
        samples.clear();
        if (place.count == 0)
            continue;
        QVector<double>& common = (*shared)[place.offset];
        if (common.size() != place.count)
            common = read(place);
        if (common.isEmpty())
            return false;
        samples = common;
    }
    return true;
}

bool SampleShelf::fill(LessonRun* run) const
{
    LessonRun whole = *run;
    QHash<qint64, QVector<double>> shared;
    for (int i = 0; i < whole.parts.size(); ++i) {
        if (!fillExperiment(&whole.parts[i].experiment, experiments.at(2 * i), &shared) ||
            !fillExperiment(&whole.parts[i].raw, experiments.at(2 * i + 1), &shared))
            return false;
    }
    *run = whole;
    return true;
}

#pragma once

#include <QByteArray>
#include <QFile>
#include <QHash>
#include <QMutex>
#include <QVector>

#include <memory>

#include "persistence/lesson.h"

/// The samples of a run in a file beside the memory, which goes with the last who has it. Any thread.
class SampleShelf
{
public:
    /// Null where the disk does not take them: they stay in memory then.
    static std::shared_ptr<const SampleShelf> of(const LessonRun& run);

    /// What is left of a run whose samples are on a shelf: all but the samples. Of the times the last stays,
    /// so that it says how long the run was.
    static LessonRun outlineOf(LessonRun run);
    /// Back into its outline. False, with `run` as it was, if they can't be read.
    bool fill(LessonRun* run) const;
    /// A channel of the experiment of part `part`, by its number in the list of channels, or the times (-1).
    /// Empty if it can't be read.
    QVector<double> column(int part, int channel) const;
    /// Bytes on the disk.
    qint64 size() const { return end; }

    /// What is the same for the same bits, for each part: of its times and its channels.
    using Sums = QVector<QByteArray>;
    static Sums sumsOf(const StoredExperiment& experiment);
    const Sums& sums(int part) const { return experiments.at(2 * part).sums; }

private:
    struct Column
    {
        qint64 offset = 0;
        int count = 0;
    };
    /// The times and the channels of an experiment.
    struct Columns
    {
        QVector<Column> places;
        Sums sums;
    };

    SampleShelf() = default;
    bool write(const LessonRun& run);
    bool writeColumns(const StoredExperiment& experiment, QHash<const double*, qint64>* written);
    QVector<double> read(const Column& column) const;
    bool fillExperiment(StoredExperiment* experiment, const Columns& columns,
                        QHash<qint64, QVector<double>>* shared) const;

    mutable QMutex mutex; ///< of the place in the file
    std::unique_ptr<QFile> file;
    QVector<Columns> experiments; ///< for each part its experiment and what it was before its steps
    qint64 end = 0;
};

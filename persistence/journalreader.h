#pragma once

#include <QCoreApplication>

#include "persistence/journalformat.h"

/// One group of a run that a journal has kept.
struct JournalExperiment
{
    JournalGroup head;
    int rows = 0;
    double first = 0; ///< time of the first and of the last row
    double last = 0;
    QVector<double> times;
    QVector<QVector<double>> columns; ///< one a channel
};

struct JournalRun
{
    QDateTime begun;
    QVector<JournalExperiment> experiments; ///< by slot; only those with rows
    bool isWhole = false;                   ///< nothing of the file was left out

    /// Of the group that ran longest; 0 where no group has a rate.
    double seconds() const;
};

/// Gives back what a journal has kept, up to the first block that is not whole.
class JournalReader
{
    Q_DECLARE_TR_FUNCTIONS(JournalReader)

public:
    enum class What
    {
        Extent, ///< groups, rows and times of the ends: no more memory than the groups take
        Samples
    };

    /// False for bytes that are no journal.
    static bool read(const uchar* bytes, qint64 size, What what, JournalRun* run);
    /// False, with a reason for a person, also for a file that can't be read.
    static bool read(const QString& path, What what, JournalRun* run, QString* reason);
};

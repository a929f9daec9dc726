#pragma once

#include <QCoreApplication>
#include <QDateTime>
#include <QString>
#include <QVector>

#include "data/samplestep.h"
#include "data/storedexperiment.h"

/// A run as a class has it on its graphs. A value, which may go to another thread; it shares its samples.
struct LessonRun
{
    struct Part
    {
        bool isClass = false;
        int slot = -1; ///< of a group
        QString group;
        bool isInClass = false; ///< the group's chosen channel is one of the class
        QString view;           ///< what the group's cell shows, a word; empty for its graph
        bool isStored = false;  ///< there is an experiment; a group in use may have none
        StoredExperiment experiment;
        QVector<SampleStep> steps; ///< that made it
        bool isRawStored = false;  ///< of steps that are more than derived channels
        StoredExperiment raw;      ///< what they began with, the derived channels before them included
    };

    QString name;               ///< of one that is kept
    QDateTime begun;            ///< the run
    bool isClassOfFile = false; ///< the class came from a file of its own, and not from the groups
    bool isPinned = false;      ///< a kept one stands behind the present curves
    QVector<Part> parts;
};

/// What is on the graphs, and the runs before it that are kept.
struct Lesson : LessonRun
{
    QString layout;
    QVector<LessonRun> kept;
};

/// The container that a lesson is kept in, as docs/lesson-format.md has it. Any thread.
class LessonFile
{
    Q_DECLARE_TR_FUNCTIONS(LessonFile)

public:
    /// False, with the reason, leaves the file that was there as it was.
    static bool write(const QString& filename, const Lesson& lesson, QString* reason);
    /// False, with the reason, if nothing of it can be used. Else `reason` names what had to be left out.
    static bool read(const QString& filename, Lesson* lesson, QString* reason);
    static constexpr qint64 mostUnpacked = Q_INT64_C(4) << 30; ///< bytes of all experiments together
    /// The same from the bytes of a file; `reason` gets only the cause.
    static bool read(const QByteArray& bytes, Lesson* lesson, QString* reason, qint64 most = mostUnpacked);

    /// What the manifest calls them, in the order of SampleStep::Kind.
    static constexpr const char* stepNames[] = {"smooth", "derivative", "crop", "edit", "formula", "remove"};
    static constexpr int mostSteps = 200;
    static constexpr int version = 1;
    static constexpr int mostEntries = 4096;
    static constexpr qint64 mostManifest = 1 << 20;          ///< bytes
    static constexpr qint64 mostMember = Q_INT64_C(1) << 30; ///< bytes of an experiment that is written
};

#pragma once

#include <QList>
#include <QSharedPointer>
#include <QString>
#include <QVector>

class ExpData;
class SafeFile;
class myPlotMarker;
class oneScale;

/// What goes into an experiment file. Nothing is owned.
struct ExperimentToWrite
{
    QString title;
    const ExpData* data;
    const QVector<QSharedPointer<oneScale>>& scales; ///< one per channel; a channel without one has its view
    const QList<myPlotMarker*>& markers;
    const QList<myPlotMarker*>& barMarkers;
    QString view;
};

/// Writes an experiment as XML in UTF-16, in the form that QDomDocument gives it, without a tree in memory.
class ExperimentWriter
{
public:
    /// False when `file` failed. The caller commits it.
    static bool write(SafeFile* file, const ExperimentToWrite& experiment);
};

#pragma once

#include <QColor>
#include <QSize>
#include <QString>
#include <QVector>

#include <memory>

#include "data/expdata.h"
#include "graph/pinnedcurves.h"
#include "graph/plot.h"

/// What a graph over time shows, with its samples, as a value: a run may go on meanwhile. It shares the
/// samples until then.
struct GraphCopy
{
    int index = -1; ///< -1: of the class
    QString title;
    ExpData::Content content;
    int xSensor = -1;
    int selected = 0;
    PlotState state;
    QVector<QColor> colors; ///< that a person gave the curves; not valid for the others
    QVector<Prediction> predictions;
    QVector<PinnedRun> pinned; ///< the runs behind it
    QString present;           ///< the name of the run that it shows, if it has one

    /// `set` is that of `plot`.
    static GraphCopy of(const Plot& plot, const ExpData& set);
    bool isEmpty() const { return content.x.isEmpty() && state.marks.isEmpty(); }
    /// A graph of its own, on nobody's screen. It reads `set`, which it fills; not owned.
    std::unique_ptr<Plot> made(ExpData* set, const QSize& size) const;
};

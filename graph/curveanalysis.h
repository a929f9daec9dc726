#pragma once

#include <QString>

#include <memory>

#include "data/stretch.h"
#include "graph/graphparts.h"
#include "graph/myplotmarker.h"

/// Analyses of a curve between two crosses.
namespace CurveAnalysis {

/// The marker that shows what came out, or why nothing did.
struct Result
{
    std::unique_ptr<myPlotMarker> marker;
    QString refusal;
};

/// Degree 1 or 2; over a sensor from the first cross to the second, over time from left to right.
Result fit(const GraphParts& parts, int degree, const QList<myPlotMarker*>& crosses);
/// A fit that was made elsewhere, for a graph.
Result placed(const GraphParts& parts, const FittedCurve& fit, int iSens, double from, double to);
/// What the two crosses lie round on the curve that both stand on; else all of the curve `iSens`, between the
/// crosses if there are two.
Stretch stretch(const ExpData& data, const QList<myPlotMarker*>& crosses, int iSens);
Result integral(const GraphParts& parts, const QList<myPlotMarker*>& crosses);
/// A fit or integral over the same span of the present data; false where there is none any more.
bool renew(const GraphParts& parts, myPlotMarker* result);

} // namespace CurveAnalysis

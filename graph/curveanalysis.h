#pragma once

#include <memory>

#include "graph/graphparts.h"

class myPlotMarker;

/// Analyses of a curve between two crosses. Each gives the marker that shows its result, or nothing where
/// there is none.
namespace CurveAnalysis {

/// Degree 1 or 2; over a sensor from the first cross to the second, over time from left to right.
std::unique_ptr<myPlotMarker> fit(const GraphParts& parts, int degree, const myPlotMarker& first,
                                  const myPlotMarker& second);
std::unique_ptr<myPlotMarker> integral(const GraphParts& parts, const myPlotMarker& first,
                                       const myPlotMarker& second);

} // namespace CurveAnalysis

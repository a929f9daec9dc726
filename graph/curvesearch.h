#pragma once

#include <QList>

#include <optional>

#include "graph/graphparts.h"
#include "graph/nearcurve.h"

class myPlotMarker;

/// Finds what lies nearest to a point of the canvas: visible curves and fitted lines.
class CurveSearch
{
public:
    struct Place
    {
        int iSens = -1; ///< -1: none in reach
        int iReg = -1;  ///< index of the fitted line among the markers
        double x = 0;
        double y = 0;
        double dist = 0; ///< pixels
    };

    explicit CurveSearch(const GraphParts& parts);

    /// Among all curves and the fitted lines of `markers`.
    Place nearest(const QPointF& pos, const QList<myPlotMarker*>& markers = {}) const;
    /// Where a cross goes under the pointer: on its own curve or line.
    Place nearestFor(const myPlotMarker& cross, const QPointF& pos,
                     const QList<myPlotMarker*>& markers) const;
    /// On one curve, as far beside the point as `reach` pixels.
    Place nearestOn(int iSens, const QPointF& pos, double reach) const;

private:
    void lookAtPath(int iSens, const QPointF& pos, Place* best) const;
    void lookAtCurve(int iSens, const QPointF& pos, double reach, Place* best) const;
    void lookAtLine(int iReg, const myPlotMarker& line, const QPointF& pos, Place* best) const;
    static void takeNearer(const std::optional<NearCurve::Hit>& hit, int iSens, int iReg, Place* best);
    NearCurve::Maps mapsOf(int iSens) const;

    const GraphParts parts;
};

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

    /// Among all curves and the fitted lines of `markers`. Without curves to speak of it is the point itself.
    Place nearest(const QPointF& pos, const QList<myPlotMarker*>& markers = {}) const;
    /// On one curve, as far beside the point as `reach` pixels.
    Place nearestOn(int iSens, const QPointF& pos, double reach) const;

private:
    Place byAxes(const QPointF& pos) const;
    Place onPaths(const QPointF& pos) const;
    void lookAtCurve(int iSens, const QPointF& pos, double reach, Place* best) const;
    void lookAtLines(const QPointF& pos, const QList<myPlotMarker*>& markers, Place* best) const;
    static void takeNearer(const std::optional<NearCurve::Hit>& hit, int iSens, int iReg, Place* best);
    NearCurve::Maps mapsOf(int iSens) const;

    const GraphParts parts;
};

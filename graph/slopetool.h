#pragma once

#include <QPointF>

#include <memory>

#include "graph/curvesearch.h"
#include "graph/graphparts.h"

class MarkerLayer;
class myPlotMarker;

/// The tangent that follows the pointer along the active curve, with its text among the other markers.
class SlopeTool
{
public:
    /// `layer` is not owned.
    SlopeTool(const GraphParts& parts, MarkerLayer& layer);
    ~SlopeTool();

    void setOn(bool tf);
    bool isOn() const { return tangent != nullptr; }
    /// Until the pointer moves again.
    void hide();
    /// To the point of the curve nearest to a point of the canvas; between two crosses of the curve only.
    void follow(const QPointF& pos);
    /// To the active curve at the same x; away with it where that is not seen.
    void renew();

private:
    void show();

    const GraphParts parts;
    MarkerLayer& layer;
    const CurveSearch search;
    std::unique_ptr<myPlotMarker> tangent;
};

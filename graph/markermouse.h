#pragma once

#include <QPointF>
#include <QPointer>

#include "graph/curvesearch.h"
#include "graph/myplotmarker.h"

class MarkerEditor;
class MarkerLayer;
class QMouseEvent;

/// The mouse on markers: what it hits, and what a press, drag or double click does with it.
class MarkerMouse
{
public:
    /// Nothing is owned.
    MarkerMouse(const GraphParts& parts, MarkerLayer& layer, MarkerEditor& editor);

    /// Takes up the marker under the pointer; false when there is none.
    bool take(const QPointF& pos);
    void drag(const QPointF& pos);
    void letGo();
    /// Puts back what is dragged.
    void cancel();
    bool isDragging() const { return !dragged.isNull(); }
    /// A cross on the curve or line under the pointer.
    void placeCross(const QPointF& pos);
    /// False when the press was on no marker.
    bool pressRight(const QMouseEvent& event);
    bool doubleClick(const QPointF& pos);

private:
    myPlotMarker* at(const QPointF& pos, bool* isTip) const;
    void begin();
    void end(const QString& step);

    MarkerLayer& layer;
    MarkerEditor& editor;
    const CurveSearch search;
    /// Where a marker stood when it was taken up.
    struct Start
    {
        QPointF value;
        QPoint offset;
        bool isPlacedByHand = false;
    };

    QPointer<myPlotMarker> dragged;
    Start start;
    bool isChanging = false; ///< what it was taken up for is not told yet
    bool isByTip = false;    ///< by the tip of its balloon
};

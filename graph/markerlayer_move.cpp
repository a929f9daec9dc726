// Markers under the pointer.

#include "graph/markerlayer.h"

#include <cmath>

#include <qwt_plot.h>

#include "data/expdata.h"

void MarkerLayer::drag(myPlotMarker* marker, const QPointF& pos, bool isByTip)
{
    const QwtScaleMap xMap = parts.plot.canvasMap(QwtPlot::xBottom);
    const QwtScaleMap yMap = marker->ownMap(parts.plot.canvasMap(QwtPlot::yLeft));
    parts.data.setNeedSave(true);
    if (isCross(*marker) && !marker->isLocked()) {
        dragCross(marker, pos);
    } else if (marker->type == MARKER_ANNOTATE && isByTip) {
        marker->fixBalloonOffset(pos);
    } else if (marker->type == MARKER_ANNOTATE) {
        marker->setValue(xMap.invTransform(pos.x()), yMap.invTransform(pos.y()));
    } else if (marker->type == MARKER_FLOATING_TEXT) {
        const myPlotMarker* const partner = marker->connectTo;
        const double x = partner ? partner->xValue() : marker->pointToXVal;
        const double y = partner ? partner->yValue() : marker->pointToYVal;
        marker->xOffset = int(pos.x()) - int(xMap.transform(x));
        marker->yOffset = int(pos.y()) - int(yMap.transform(y));
        marker->isPlacedByHand = true;
    }
    repaint();
}

// A cross keeps to the curve or line that it was put on.
void MarkerLayer::dragCross(myPlotMarker* cross, const QPointF& pos)
{
    const CurveSearch::Place near = search.nearestFor(*cross, pos, markers);
    setCross(cross, near.iSens < 0 ? MARKER_X_GHOST : MARKER_X);
    if (near.iSens < 0)
        cross->setValue(parts.plot.invTransform(QwtPlot::xBottom, pos.x()),
                        cross->ownMap(parts.plot.canvasMap(QwtPlot::yLeft)).invTransform(pos.y()));
    else
        cross->setValue(near.x, near.y);
}

void MarkerLayer::putBack(myPlotMarker* marker, const QPointF& value, const QPoint& offset,
                          bool isPlacedByHand)
{
    if (isCross(*marker) && !marker->isLocked())
        setCross(marker, MARKER_X);
    marker->setValue(value);
    marker->xOffset = offset.x();
    marker->yOffset = offset.y();
    marker->isPlacedByHand = isPlacedByHand;
    repaint();
}

void MarkerLayer::putOnCurve(myPlotMarker* marker, int iSens) const
{
    const double y = parts.data.interpolateY(iSens, marker->xValue());
    if (std::isfinite(y))
        marker->setYValue(y);
}

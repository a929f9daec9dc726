// Markers under the pointer.

#include "graph/markerlayer.h"

#include <algorithm>
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
        places.put(marker);
    }
    repaint();
}

void MarkerLayer::dragCross(myPlotMarker* cross, const QPointF& pos)
{
    const CurveSearch::Place near = search.nearest(pos, markers);
    myPlotMarker* const text = cross->connectTo;
    if (near.iSens < 0) {
        cross->setValue(parts.plot.invTransform(QwtPlot::xBottom, pos.x()),
                        cross->ownMap(parts.plot.canvasMap(QwtPlot::yLeft)).invTransform(pos.y()));
        setCross(cross, MARKER_X_GHOST);
        text->setShown(false);
        return;
    }
    cross->setValue(near.x, near.y);
    cross->iReg = near.iReg;
    cross->iSens = text->iSens = near.iSens;
    setCross(cross, MARKER_X);
    bringOther(cross);
    places.put(text);
    renewText(text);
}

// Analyses go from one cross to the other, so both lie on one curve.
void MarkerLayer::bringOther(myPlotMarker* cross)
{
    if (form == MarkerForm::Frequency || crosses.size() < 2)
        return;
    myPlotMarker* const other = crosses[cross == crosses[0] ? 1 : 0];
    if (other == cross || (other->iSens == cross->iSens && other->iReg == cross->iReg))
        return;
    const myPlotMarker* const line = markers.value(cross->iReg);
    if (line) {
        const double inside = std::max(std::min(line->linX0, line->linX1),
                                       std::min(other->xValue(), std::max(line->linX0, line->linX1)));
        other->setValue(inside, line->calcRegValue(inside));
    } else {
        putOnCurve(other, cross->iSens);
    }
    other->iSens = cross->iSens;
    other->iReg = cross->iReg;
    other->connectTo->iSens = cross->iSens;
    places.put(other->connectTo);
    renewText(other->connectTo);
}

void MarkerLayer::putOnCurve(myPlotMarker* marker, int iSens) const
{
    const double y = parts.data.interpolateY(iSens, marker->xValue());
    if (std::isfinite(y))
        marker->setYValue(y);
}

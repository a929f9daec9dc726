#include "graph/slopetool.h"

#include <algorithm>
#include <cmath>

#include <qwt_plot.h>

#include "data/expdata.h"
#include "graph/graphcurves.h"
#include "graph/markerlayer.h"

namespace {

constexpr double reach = 10;       // pixels on each side whose samples the tangent is fitted to
constexpr double besidePixels = 5; // how far beside the pointer the curve is looked for

} // namespace

SlopeTool::SlopeTool(const GraphParts& parts, MarkerLayer& layer)
    : parts(parts)
    , layer(layer)
    , search(parts)
{
}

SlopeTool::~SlopeTool()
{
    if (tangent)
        tangent->detach();
}

void SlopeTool::setOn(bool tf)
{
    if (tf == isOn())
        return;
    if (!tf) { // no result that a file keeps, so the data stay as saved as they were
        layer.drop(tangent->connectTo);
        tangent->detach();
        tangent.reset();
        layer.repaint();
        return;
    }
    const int iSens = parts.curves.activeIndex();
    tangent = std::make_unique<myPlotMarker>(iSens, &parts.scaler, MARKER_TANGENT);
    auto* text = new myPlotMarker(iSens, &parts.scaler, MARKER_FLOATING_TEXT);
    tangent->connectTo = text;
    text->connectTo = tangent.get();
    text->yOffset = -TextPlaces::tangentDistance;
    tangent->setShown(false);
    text->setShown(false);
    tangent->attach(&parts.plot);
    layer.adopt(text);
    tangent->xSensor = text->xSensor;
}

void SlopeTool::hide()
{
    if (!tangent)
        return;
    tangent->setShown(false);
    tangent->connectTo->setShown(false);
}

void SlopeTool::follow(const QPointF& pos)
{
    if (!tangent || parts.data.isXYPlot())
        return;
    const int iSens = parts.curves.activeIndex();
    QPointF at = pos;
    const QList<myPlotMarker*>& crosses = layer.movable();
    if (crosses.size() == 2 && crosses[0]->iSens == iSens) {
        const double p0 = parts.plot.transform(QwtPlot::xBottom, crosses[0]->xValue());
        const double p1 = parts.plot.transform(QwtPlot::xBottom, crosses[1]->xValue());
        at.setX(std::max(std::min(p0, p1), std::min(at.x(), std::max(p0, p1))));
    }
    const CurveSearch::Place near = search.nearestOn(iSens, at, besidePixels);
    if (near.iSens != iSens)
        return;
    tangent->iSens = tangent->connectTo->iSens = iSens;
    tangent->setValue(near.x, near.y);
    show();
    layer.repaint();
}

/// The tangent where it stands, with its text; neither where the curve has no slope.
void SlopeTool::show()
{
    const QwtScaleMap map = parts.plot.canvasMap(QwtPlot::xBottom);
    const double perPixel = map.pDist() > 0 ? map.sDist() / map.pDist() : 0;
    tangent->slope = parts.data.tangentSlope(tangent->iSens, tangent->xValue(), reach * perPixel);
    const bool isThere = std::isfinite(tangent->slope);
    tangent->setShown(isThere);
    tangent->connectTo->setShown(isThere);
    if (!isThere)
        return;
    layer.renewText(tangent->connectTo);
    layer.placeText(tangent->connectTo);
}

void SlopeTool::renew()
{
    if (!tangent || !tangent->isShown())
        return;
    const int iSens = parts.curves.activeIndex();
    const myPlotCurve* const curve = parts.curves.at(iSens);
    if (!curve || !curve->isVisible() || parts.data.isXYPlot()) {
        hide();
        return;
    }
    tangent->iSens = tangent->connectTo->iSens = iSens;
    layer.putOnCurve(tangent.get(), iSens);
    show();
}

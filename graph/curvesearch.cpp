#include "graph/curvesearch.h"

#include <algorithm>
#include <cmath>

#include <qwt_plot.h>

#include "data/expdata.h"
#include "graph/graphcurves.h"
#include "graph/myplotcurve.h"
#include "graph/myplotmarker.h"
#include "graph/scalemanager.h"

namespace {

constexpr double hotPixels = 20; // how far beside the pointer a curve is looked for
constexpr int fewestSamples = 2;

} // namespace

CurveSearch::CurveSearch(const GraphParts& parts)
    : parts(parts)
{
}

NearCurve::Maps CurveSearch::mapsOf(int iSens) const
{
    NearCurve::Maps maps{parts.plot.canvasMap(QwtPlot::xBottom), parts.plot.canvasMap(QwtPlot::yLeft)};
    parts.scaler.fixScaleY(&maps.y, iSens);
    return maps;
}

CurveSearch::Place CurveSearch::nearest(const QPointF& pos, const QList<myPlotMarker*>& markers) const
{
    Place best;
    for (int i = 0; i < parts.curves.size(); ++i) {
        if (parts.data.isXYPlot())
            lookAtPath(i, pos, &best);
        else
            lookAtCurve(i, pos, hotPixels, &best);
    }
    for (int i = 0; i < markers.size() && !parts.data.isXYPlot(); ++i)
        lookAtLine(i, *markers[i], pos, &best);
    return best;
}

CurveSearch::Place CurveSearch::nearestFor(const myPlotMarker& cross, const QPointF& pos,
                                           const QList<myPlotMarker*>& markers) const
{
    Place best;
    if (const myPlotMarker* line = markers.value(cross.iReg))
        lookAtLine(cross.iReg, *line, pos, &best);
    else if (parts.data.isXYPlot())
        lookAtPath(cross.iSens, pos, &best);
    else
        lookAtCurve(cross.iSens, pos, hotPixels, &best);
    return best;
}

CurveSearch::Place CurveSearch::nearestOn(int iSens, const QPointF& pos, double reach) const
{
    Place best;
    lookAtCurve(iSens, pos, reach, &best);
    return best;
}

void CurveSearch::lookAtCurve(int iSens, const QPointF& pos, double reach, Place* best) const
{
    const myPlotCurve* const curve = parts.curves.at(iSens);
    const ExpData& data = parts.data;
    if (!curve || !curve->isVisible() || data.getXSize() < fewestSamples)
        return;
    const NearCurve::Maps maps = mapsOf(iSens);
    const double first = maps.x.transform(data.getXAt(data.getLeftPad(iSens)));
    const double last = std::floor(maps.x.transform(data.getLastXForIndex(iSens)));
    const NearCurve::Strip strip{std::max(pos.x() - reach, first), std::min(pos.x() + reach, last)};
    takeNearer(NearCurve::onFunction(pos, strip, maps, [&](double x) { return data.interpolateY(iSens, x); }),
               iSens, -1, best);
}

void CurveSearch::lookAtLine(int iReg, const myPlotMarker& line, const QPointF& pos, Place* best) const
{
    if (line.type != MARKER_REGRESSION || !line.isShown())
        return;
    const NearCurve::Maps maps = mapsOf(line.iSens);
    const double p0 = maps.x.transform(line.linX0);
    const double p1 = maps.x.transform(line.linX1);
    const NearCurve::Strip strip{std::max(pos.x() - hotPixels, std::min(p0, p1)),
                                 std::min(pos.x() + hotPixels, std::max(p0, p1))};
    takeNearer(NearCurve::onFunction(pos, strip, maps, [&](double x) { return line.calcRegValue(x); }),
               line.iSens, iReg, best);
}

void CurveSearch::takeNearer(const std::optional<NearCurve::Hit>& hit, int iSens, int iReg, Place* best)
{
    if (hit && (best->iSens < 0 || hit->dist < best->dist))
        *best = {iSens, iReg, hit->value.x(), hit->value.y(), hit->dist};
}

void CurveSearch::lookAtPath(int iSens, const QPointF& pos, Place* best) const
{
    const ExpData& data = parts.data;
    const int iX = data.getXYIndex();
    const myPlotCurve* const curve = parts.curves.at(iSens);
    if (!curve || !curve->isVisible() || iSens == iX || data.getXSize() < fewestSamples)
        return;
    const int n = std::min(data.getYSize(iX), data.getYSize(iSens));
    const auto hit = NearCurve::onPath(
        pos, n, mapsOf(iSens), [&](int k) { return QPointF(data.getYAt(iX, k), data.getYAt(iSens, k)); });
    takeNearer(hit, iSens, -1, best);
}

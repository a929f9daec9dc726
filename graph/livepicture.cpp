#include "graph/livepicture.h"

#include <algorithm>
#include <utility>

#include <qwt_plot.h>
#include <qwt_scale_map.h>

#include "data/expdata.h"
#include "graph/curvepainter.h"
#include "graph/graphparts.h"
#include "graph/scalemanager.h"

namespace {

// Rows before the first new one whose picture changes: the new line begins at the last one, and joins it; a
// derived curve may still change by the width of its kernel, and the class by a group that comes late.
int unsettledRows(const GraphParts& parts)
{
    constexpr int joined = 3;
    constexpr int late = 64;
    const int last = parts.data.getNSens() - 1;
    const SensorPtr sensor = last >= 0 ? parts.data.getSens(last) : SensorPtr();
    return parts.index >= 0 && sensor && sensor->specialType == 0 ? joined : late;
}

} // namespace

QRect LivePicture::grown(const GraphParts& parts)
{
    const QVector<double>& x = parts.data.getX();
    State now;
    now.rows = x.size();
    if (!x.isEmpty()) {
        now.firstX = x.first();
        now.lastX = x.last();
    }
    const QwtScaleMap xMap = parts.plot.canvasMap(QwtPlot::xBottom);
    now.scales.append({xMap.s1(), xMap.s2()});
    for (int i = 0; i < parts.scaler.scales.size(); ++i)
        now.scales.append({parts.scaler.getScaleMin(i), parts.scaler.getScaleMax(i)});

    const State before = std::exchange(known, now);
    const bool hasGrown = before.rows > 0 && now.rows > before.rows && now.firstX == before.firstX &&
                          x.at(before.rows - 1) == before.lastX;
    if (parts.data.finalData || !hasGrown || now.scales != before.scales)
        return QRect();
    const int from = std::max(0, before.rows - unsettledRows(parts));
    const int left = int(xMap.transform(x.at(from))) - CurvePainter::maxPenWidth;
    const int right = int(xMap.transform(now.lastX)) + CurvePainter::maxPenWidth;
    const QRect all = parts.plot.canvas()->contentsRect();
    return QRect(QPoint(left, all.top()), QPoint(right, all.bottom())) & all;
}

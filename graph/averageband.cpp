#include "graph/averageband.h"

#include <QPainter>
#include <QPolygonF>
#include <QVector>

#include <algorithm>
#include <cmath>

#include <qwt_scale_map.h>

#include "data/expdata.h"
#include "graph/graphcurves.h"
#include "graph/graphparts.h"
#include "graph/myplotcurve.h"
#include "graph/scalemanager.h"

namespace {

constexpr double behindCurves = 14; // the grid has 10, pinned runs 15
constexpr int alpha = 56;           // the grid is seen through it
constexpr double longestGap = 4.5;  // samples, as for the curves

} // namespace

/// What the band covers of one pixel column, base unit.
struct AverageBand::Column
{
    double x;
    double low;
    double high;
};

AverageBand::AverageBand(const GraphParts& parts)
    : parts(parts)
{
    setZ(behindCurves);
    setItemAttribute(Legend, false);
}

/// One for each stretch without a gap, of two points a pixel column.
QVector<QPolygonF> AverageBand::shapes(const QwtScaleMap& xMap, const QwtScaleMap& yMap) const
{
    const int mean = parts.data.meanIndex();
    const QVector<double>& x = parts.data.getX();
    const QVector<double>& middle = parts.data.getYNoConv(mean);
    const QVector<double>& spread = parts.data.spread();
    const auto end = x.cbegin() + std::min({parts.data.settledRows(), middle.size(), spread.size()});
    const auto visible = std::minmax({xMap.s1(), xMap.s2()});
    const auto first = std::lower_bound(x.cbegin(), end, visible.first);
    const auto last = std::upper_bound(first, end, visible.second);
    const int from = std::max(0, int(first - x.cbegin()) - 1);
    const int to = std::min(int(last - x.cbegin()) + 1, int(end - x.cbegin()));
    const Sensor::AltUnit unit = parts.data.getSens(mean)->altUnit();
    const double longest = parts.data.dt > 0 ? longestGap * parts.data.dt : HUGE_VAL;

    QVector<QPolygonF> all;
    QVector<Column> columns;
    double columnEnd = 0; // of the last one, on the x axis: asking each row for its pixel would cost more
    const auto heightOf = [&](double value) { return yMap.transform(value * unit.factor + unit.offset); };
    const auto close = [&] {
        QPolygonF shape;
        for (const Column& column : qAsConst(columns))
            shape.append({xMap.transform(column.x), heightOf(column.high)});
        for (auto column = columns.crbegin(); column != columns.crend(); ++column)
            shape.append({xMap.transform(column->x), heightOf(column->low)});
        if (columns.size() > 1)
            all.append(shape);
        columns.clear();
    };
    for (int row = from; row < to; ++row) {
        const double apart = spread.at(row);
        const double at = x.at(row);
        if (!std::isfinite(apart) || (row > from && at - x.at(row - 1) > longest))
            close();
        if (!std::isfinite(apart))
            continue;
        const Column column{at, middle.at(row) - apart, middle.at(row) + apart};
        if (columns.isEmpty() || at >= columnEnd) {
            columns.append(column);
            columnEnd = xMap.invTransform(std::floor(xMap.transform(at)) + 1);
            continue;
        }
        Column& newest = columns.last();
        newest.low = std::min(newest.low, column.low);
        newest.high = std::max(newest.high, column.high);
    }
    close();
    return all;
}

void AverageBand::draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                       const QRectF& canvas) const
{
    const int mean = parts.data.meanIndex();
    const myPlotCurve* const curve = parts.curves.at(mean);
    if (!parts.data.isAverage(mean) || parts.data.isXYPlot() || parts.data.isMeaningless(mean) || !curve ||
        !curve->isVisible())
        return;
    QwtScaleMap own = yMap;
    parts.scaler.fixScaleY(&own, mean);
    QColor color = curve->getColor();
    color.setAlpha(alpha);
    painter->save();
    painter->setClipRect(canvas, Qt::IntersectClip);
    painter->setPen(Qt::NoPen);
    painter->setBrush(color);
    for (const QPolygonF& shape : shapes(xMap, own))
        painter->drawPolygon(shape);
    painter->restore();
}

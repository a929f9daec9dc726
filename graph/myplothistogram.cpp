#include "graph/myplothistogram.h"

#include <QPainter>
#include <QPalette>
#include <QPolygonF>

#include <algorithm>
#include <cmath>

#include <qwt_column_symbol.h>
#include <qwt_plot.h>
#include <qwt_scale_map.h>

#include "graph/contrast.h"

namespace {
constexpr int frameWidth = 2;
constexpr double leastOutlinedWidth = 4;
constexpr double breakDistance = 8; // pixels of the broken foot from the edge
constexpr double breakGap = 4;
constexpr double breakTooth = 6;
constexpr double leastRaisedWidth = 6 * frameWidth; // of a narrower box the frame would leave no colour
} // namespace

myPlotHistogram::myPlotHistogram()
{
    setPen(Qt::black);
    setStyle(Columns);
    setItemAttribute(Legend, false);
}

void myPlotHistogram::setColor(const QColor& color)
{
    setBrush(color);
    auto* box = new QwtColumnSymbol(QwtColumnSymbol::Box);
    box->setFrameStyle(QwtColumnSymbol::Raised);
    box->setLineWidth(frameWidth);
    box->setPalette(QPalette(color));
    setSymbol(box);
}

QColor myPlotHistogram::ground() const
{
    return plot() ? plot()->canvasBackground().color() : QColor(Qt::white);
}

void myPlotHistogram::drawColumn(QPainter* painter, const QwtColumnRect& rect,
                                 const QwtIntervalSample& sample) const
{
    QRectF box = rect.toRect();
    if (box.width() < leastRaisedWidth) {
        // Whole pixels, so that the gaps between bars stay open.
        box = QRectF(std::round(box.left()), box.top(), std::max(1.0, std::floor(box.width())), box.height());
        painter->fillRect(box, brush());
    } else {
        QwtPlotHistogram::drawColumn(painter, rect, sample);
    }
    const QColor outline = Contrast::casingFor(brush().color(), ground());
    if (!outline.isValid() || box.width() < leastOutlinedWidth)
        return;
    painter->setPen(QPen(outline, 1));
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(box.adjusted(0, 0, -1, -1));
}

void myPlotHistogram::draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                           const QRectF& canvasRect) const
{
    QwtPlotHistogram::draw(painter, xMap, yMap, canvasRect);
    const double nearest = std::abs(yMap.s1()) < std::abs(yMap.s2()) ? yMap.s1() : yMap.s2();
    if (dataSize() == 0 || yMap.s1() * yMap.s2() <= 0)
        return;
    // A zigzag band in the colour of the ground, drawn over the end of the axis that is nearer to 0.
    const bool isBelow = yMap.transform(nearest) > canvasRect.center().y();
    const double foot = isBelow ? canvasRect.bottom() - breakDistance : canvasRect.top() + breakDistance;
    for (const double side : {-breakGap / 2, breakGap / 2, 0.0}) {
        QPolygonF zigzag;
        int tooth = 0;
        for (double x = canvasRect.left(); x < canvasRect.right() + breakTooth; x += breakTooth)
            zigzag.append({x, foot + side + (++tooth % 2 ? breakTooth / 2 : -breakTooth / 2)});
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(side == 0 ? QPen(ground(), breakGap - 1) : QPen(Contrast::inkOn(ground()), 1));
        painter->drawPolyline(zigzag);
        painter->restore();
    }
}

#include "graph/myplothistogram.h"

#include <QPainter>
#include <QPalette>

#include <algorithm>
#include <cmath>

#include <qwt_column_symbol.h>

namespace {
constexpr int frameWidth = 2;
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

void myPlotHistogram::drawColumn(QPainter* painter, const QwtColumnRect& rect,
                                 const QwtIntervalSample& sample) const
{
    const QRectF box = rect.toRect();
    if (box.width() < leastRaisedWidth)
        painter->fillRect(
            QRectF(std::round(box.left()), box.top(), std::max(1.0, std::floor(box.width())), box.height()),
            brush()); // whole pixels, so that the gaps between bars stay open
    else
        QwtPlotHistogram::drawColumn(painter, rect, sample);
}

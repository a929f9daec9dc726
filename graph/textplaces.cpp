#include "graph/textplaces.h"

#include <QVector>
#include <QWidget>

#include <algorithm>
#include <cmath>

#include <qwt_plot.h>

#include "graph/myplotmarker.h"

namespace {

constexpr double textFrame = 3; // pixels round it

double overlap(const QRectF& a, const QRectF& b)
{
    const QRectF common = a & b;
    return common.width() * common.height();
}

} // namespace

TextPlaces::TextPlaces(const QwtPlot& plot, const QList<myPlotMarker*>& markers)
    : plot(plot)
    , markers(markers)
{
}

void TextPlaces::lean(const myPlotMarker& cross, myPlotMarker* text, bool isBelow) const
{
    constexpr int distance = myPlotMarker::textDistance;
    const QPointF middle = QRectF(plot.canvas()->contentsRect()).center();
    const QPointF pos = cross.pixelPos();
    text->xOffset = pos.x() > middle.x() ? -distance : distance;
    text->yOffset = pos.y() < middle.y() || isBelow ? distance : -distance;
}

/// The whole pixel that a text keeps its distance from.
QPointF TextPlaces::basePixel(const myPlotMarker& text) const
{
    const myPlotMarker* const partner = text.connectTo;
    const double x = partner ? partner->xValue() : text.pointToXVal;
    const double y = partner ? partner->yValue() : text.pointToYVal;
    return QPointF(std::trunc(plot.transform(QwtPlot::xBottom, x)),
                   std::trunc(text.ownMap(plot.canvasMap(QwtPlot::yLeft)).transform(y)));
}

/// The box of a text at a distance from its base, pushed back onto the canvas as far as it fits.
QRectF TextPlaces::boxAt(const myPlotMarker& text, const QPointF& base, const QPoint& offset) const
{
    const QRectF area = plot.canvas()->contentsRect();
    QRectF box = text.hotBox(base + offset).adjusted(-textFrame, -textFrame, textFrame, textFrame);
    if (!area.contains(base))
        return box;
    if (box.width() < area.width())
        box.moveLeft(std::clamp(box.left(), area.left(), area.right() - box.width()));
    if (box.height() < area.height())
        box.moveTop(std::clamp(box.top(), area.top(), area.bottom() - box.height()));
    return box;
}

void TextPlaces::findRoom(myPlotMarker* text) const
{
    constexpr int farthest = 5; // text distances
    QVector<QRectF> taken;
    for (const myPlotMarker* marker : markers) {
        if (marker != text && marker->isShown() && !marker->hotBox(QPointF()).isEmpty())
            taken.append(marker->isBubble() ? marker->balloonRect(marker->pixelPos())
                                            : marker->hotBox(marker->pixelPos()));
    }
    const QPointF base = basePixel(*text);
    const auto hidden = [&](const QPoint& offset) {
        const QRectF box = boxAt(*text, base, offset);
        double area = 0;
        for (const QRectF& other : qAsConst(taken))
            area += overlap(box, other);
        return area;
    };
    QPoint best(text->xOffset, text->yOffset);
    double least = hidden(best);
    const int right = best.x() < 0 ? -myPlotMarker::textDistance : myPlotMarker::textDistance;
    const int down = best.y() < 0 ? -myPlotMarker::textDistance : myPlotMarker::textDistance;
    for (int i = 1; i <= farthest && least > 0; ++i) {
        for (const QPoint& offset : {QPoint(right, i * down), QPoint(right, -i * down),
                                     QPoint(-right, i * down), QPoint(-right, -i * down)}) {
            const double area = hidden(offset);
            if (area < least) {
                best = offset;
                least = area;
            }
        }
    }
    text->xOffset = best.x();
    text->yOffset = best.y();
}

void TextPlaces::put(myPlotMarker* text) const
{
    const QPointF base = basePixel(*text);
    if (text->connectTo && text->connectTo->type == MARKER_TANGENT)
        flipTangentText(text, base.y());
    const QPointF place = boxAt(*text, base, QPoint(text->xOffset, text->yOffset)).center();
    text->setValue(plot.invTransform(QwtPlot::xBottom, place.x()),
                   text->ownMap(plot.canvasMap(QwtPlot::yLeft)).invTransform(place.y()));
    text->setShown(true);
}

// On a canvas too low for either side the text goes to the wider one, as far off as it can.
void TextPlaces::flipTangentText(myPlotMarker* text, double y) const
{
    const double half = text->hotBox(QPointF()).height() / 2;
    const double above = y - half;
    const double below = plot.canvas()->height() - y - half;
    const bool isAbove = text->yOffset < 0;
    const double room = isAbove ? above : below;
    const double other = isAbove ? below : above;
    const bool isFlipped = room <= tangentDistance && other > room;
    const int distance = int(std::max(half, std::min<double>(tangentDistance, isFlipped ? other : room)));
    text->yOffset = isAbove != isFlipped ? -distance : distance;
}

// Where the texts beside the markers stand.

#include "graph/plot.h"

#include <algorithm>
#include <cmath>

#include "graph/myplotmarker.h"
#include "graph/scalemanager.h"

namespace {

constexpr double textFrame = 3; // pixels round it

double overlap(const QRectF& a, const QRectF& b)
{
    const QRectF common = a & b;
    return common.width() * common.height();
}

} // namespace

void Plot::leanToMiddle(const myPlotMarker* cross, myPlotMarker* text) const
{
    const QPointF middle = QRectF(canvas()->contentsRect()).center();
    const QPointF pos = cross->pixelPos();
    text->xOffset = pos.x() > middle.x() ? -myPlotMarker::textDistance : myPlotMarker::textDistance;
    text->yOffset =
        pos.y() < middle.y() || type == GRAPH_FFT ? myPlotMarker::textDistance : -myPlotMarker::textDistance;
}

/// The whole pixel that a text keeps its distance from.
QPointF Plot::basePixel(const myPlotMarker& text) const
{
    const myPlotMarker* const partner = text.connectTo;
    const double x = partner ? partner->xValue() : text.pointToXVal;
    const double y = partner ? partner->yValue() : text.pointToYVal;
    return QPointF(std::trunc(transform(xBottom, x)), std::trunc(text.ownMap(canvasMap(yLeft)).transform(y)));
}

/// The box of a text at a distance from its base, pushed back onto the canvas as far as it fits.
QRectF Plot::boxAt(const myPlotMarker& text, const QPointF& base, const QPoint& offset) const
{
    const QRectF area = canvas()->contentsRect();
    QRectF box = text.hotBox(base + offset).adjusted(-textFrame, -textFrame, textFrame, textFrame);
    if (!area.contains(base))
        return box;
    if (box.width() < area.width())
        box.moveLeft(std::clamp(box.left(), area.left(), area.right() - box.width()));
    if (box.height() < area.height())
        box.moveTop(std::clamp(box.top(), area.top(), area.bottom() - box.height()));
    return box;
}

/// Moves a new text to where it hides no other text and no cross, if it would otherwise.
void Plot::findRoom(myPlotMarker* text) const
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

/// Puts a text at its distance in pixels from its partner or the value that it points at, but not beyond the
/// canvas, and shows it.
void Plot::setFloatingMarkerPosition(myPlotMarker* text)
{
    const QPointF base = basePixel(*text);
    if (text->connectTo && text->connectTo->type == MARKER_TANGENT)
        flipTangentText(text, base.y());
    const QPointF place = boxAt(*text, base, QPoint(text->xOffset, text->yOffset)).center();
    text->setValue(invTransform(xBottom, place.x()), text->ownMap(canvasMap(yLeft)).invTransform(place.y()));
    text->setShown(true);
}

// On a canvas too low for either side the text goes to the wider one, as far off as it can.
void Plot::flipTangentText(myPlotMarker* text, double y) const
{
    const double half = text->hotBox(QPointF()).height() / 2;
    const double above = y - half;
    const double below = canvas()->height() - y - half;
    const bool isAbove = text->yOffset < 0;
    const double room = isAbove ? above : below;
    const double other = isAbove ? below : above;
    const bool isFlipped = room <= slopeTextDistance && other > room;
    const int distance = int(std::max(half, std::min<double>(slopeTextDistance, isFlipped ? other : room)));
    text->yOffset = isAbove != isFlipped ? -distance : distance;
}

/// Places the texts that had to wait for the axes, or all that are shown.
void Plot::placeTexts(bool all)
{
    for (myPlotMarker* text : qAsConst(markers)) {
        if (text->type != MARKER_FLOATING_TEXT)
            continue;
        const bool isNew = std::isnan(text->xValue());
        if (isNew && text->connectTo && text->connectTo->type == MARKER_X)
            leanToMiddle(text->connectTo, text);
        if (isNew)
            findRoom(text);
        if (isNew || (all && text->isShown()))
            setFloatingMarkerPosition(text);
    }
    hasUnplacedTexts = false;
}

/// For a text that has no partner, which is placed as soon as the axes are known.
void Plot::addValueText(myPlotMarker* text, int xOffset, int yOffset)
{
    text->xOffset = xOffset;
    text->yOffset = yOffset;
    text->setXValue(myPlotMarker::notPlaced);
    text->setShown(false);
    hasUnplacedTexts = true;
    addMarker(text);
}

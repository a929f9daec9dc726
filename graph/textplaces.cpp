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

TextPlaces::TextPlaces(const QwtPlot& plot, const QList<myPlotMarker*>& markers, bool isBelow)
    : plot(plot)
    , markers(markers)
    , isBelow(isBelow)
{
}

void TextPlaces::lean(const myPlotMarker& cross, myPlotMarker* text) const
{
    constexpr int distance = myPlotMarker::textDistance;
    const QPointF middle = QRectF(plot.canvas()->contentsRect()).center();
    const QPointF pos = cross.pixelPos();
    text->xOffset = pos.x() > middle.x() ? -distance : distance;
    text->yOffset = pos.y() < middle.y() || isBelow ? distance : -distance;
}

void TextPlaces::putAll() const
{
    QVector<QRectF> taken;
    QList<myPlotMarker*> texts;
    for (myPlotMarker* marker : markers) {
        if (marker->type == MARKER_FLOATING_TEXT)
            texts.append(marker);
        else if (marker->isShown() && !marker->hotBox(QPointF()).isEmpty())
            taken.append(boxOf(*marker));
    }
    // Those that a person has put somewhere go first.
    std::stable_partition(texts.begin(), texts.end(),
                          [](const myPlotMarker* text) { return text->isPlacedByHand; });
    for (myPlotMarker* text : qAsConst(texts)) {
        const myPlotMarker* const partner = text->connectTo;
        const bool isTangent = partner && partner->type == MARKER_TANGENT;
        if (std::isnan(text->xValue()) && partner && partner->symbol())
            lean(*partner, text);
        // Nothing to keep clear of where nobody looks; a graph that comes into sight gets a size.
        if ((!text->isShown() || !plot.isVisible()) && !std::isnan(text->xValue()))
            continue;
        if (isTangent) {
            put(text);
        } else if (text->isPlacedByHand) {
            // A small canvas can push it onto what it tells about.
            const QRectF box = boxAt(*text, basePixel(*text), QPoint(text->xOffset, text->yOffset));
            const bool isPushed = partner && overlap(box, boxOf(*partner)) > 0;
            putAt(text, isPushed ? freeOffset(*text, taken) : QPoint(text->xOffset, text->yOffset));
        } else {
            const QPoint offset = freeOffset(*text, taken);
            text->xOffset = offset.x();
            text->yOffset = offset.y();
            putAt(text, offset);
        }
        if (text->isShown())
            taken.append(boxOf(*text));
    }
}

QRectF TextPlaces::boxOf(const myPlotMarker& marker) const
{
    const QPointF place = marker.pixelPos();
    return marker.isBubble() ? marker.balloonRect(place) : marker.hotBox(place);
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

/// The distance nearest to what the text wants at which it hides as little as possible of what is taken.
QPoint TextPlaces::freeOffset(const myPlotMarker& text, const QVector<QRectF>& taken) const
{
    constexpr int farthest = 5; // text distances
    const QPointF base = basePixel(text);
    const auto hidden = [&](const QPoint& offset) {
        const QRectF box = boxAt(text, base, offset);
        double area = 0;
        for (const QRectF& other : taken)
            area += overlap(box, other);
        return area;
    };
    QPoint best(text.xOffset, text.yOffset);
    double least = hidden(best);
    const int right = best.x() < 0 ? -myPlotMarker::textDistance : myPlotMarker::textDistance;
    const int down = best.y() < 0 ? -myPlotMarker::textDistance : myPlotMarker::textDistance;
    for (int i = 1; i <= farthest && least > 0; ++i) {
        for (const QPoint& offset :
             {QPoint(right, i * down), QPoint(right, -i * down), QPoint(-right, i * down),
              QPoint(-right, -i * down), QPoint(2 * i * right, down), QPoint(-2 * i * right, down)}) {
            const double area = hidden(offset);
            if (area < least) {
                best = offset;
                least = area;
            }
        }
    }
    return best;
}

void TextPlaces::put(myPlotMarker* text) const
{
    if (text->connectTo && text->connectTo->type == MARKER_TANGENT)
        flipTangentText(text, basePixel(*text).y());
    putAt(text, QPoint(text->xOffset, text->yOffset));
}

void TextPlaces::putAt(myPlotMarker* text, const QPoint& offset) const
{
    const QPointF place = boxAt(*text, basePixel(*text), offset).center();
    text->setValue(plot.invTransform(QwtPlot::xBottom, place.x()),
                   text->ownMap(plot.canvasMap(QwtPlot::yLeft)).invTransform(place.y()));
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

#include "graph/textplaces.h"

#include <QVector>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <utility>

#include <qwt_plot.h>

#include "graph/myplotmarker.h"

namespace {

constexpr double placeFrame = 3; // pixels round it

double overlap(const QRectF& a, const QRectF& b)
{
    const QRectF common = a & b;
    return common.width() * common.height();
}

} // namespace

TextPlaces::TextPlaces(const QwtPlot& plot, const QList<myPlotMarker*>& markers,
                       std::function<QVector<QPointF>()> curvePoints, bool isBelow)
    : plot(plot)
    , markers(markers)
    , curvePoints(std::move(curvePoints))
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

QVector<QRectF> TextPlaces::groundFor(const QList<myPlotMarker*>& texts) const
{
    const QwtInterval x = plot.axisInterval(QwtPlot::xBottom);
    QVector<QRectF> ground{QRectF(QPointF(x.minValue(), x.maxValue()), plot.canvas()->size())};
    for (const myPlotMarker* marker : markers) {
        if (marker->type != MARKER_FLOATING_TEXT)
            ground.append(marker->isShown() ? boxOf(*marker) : QRectF());
    }
    for (const myPlotMarker* text : texts) {
        const QPoint offset = text->isPlacedByHand ? QPoint(text->xOffset, text->yOffset) : QPoint();
        ground.append(text->isShown() ? text->hotBox(basePixel(*text) + offset) : QRectF());
    }
    return ground;
}

void TextPlaces::putAll(myPlotMarker* span)
{
    Taken taken;
    QList<myPlotMarker*> texts;
    for (myPlotMarker* marker : markers) {
        if (marker->type == MARKER_FLOATING_TEXT)
            texts.append(marker);
        else if (marker->isShown() && !marker->hotBox(QPointF()).isEmpty())
            taken.boxes.append(boxOf(*marker));
    }
    if (span)
        texts.append(span);
    const bool isAnyNew = std::any_of(texts.cbegin(), texts.cend(),
                                      [](const myPlotMarker* text) { return std::isnan(text->xValue()); });
    const QVector<QRectF> ground = groundFor(texts);
    taken.isKept = ground == lastGround && !isAnyNew;
    const bool isLayoutNew = lastGround.isEmpty() || lastGround.constFirst() != ground.constFirst();
    lastGround = ground;
    if (!texts.isEmpty() && (isLayoutNew || isAnyNew))
        taken.curves = curvePoints();
    // Those that a person has put somewhere go first.
    std::stable_partition(texts.begin(), texts.end(),
                          [](const myPlotMarker* text) { return text->isPlacedByHand; });
    for (myPlotMarker* text : qAsConst(texts))
        putText(text, &taken);
}

void TextPlaces::putText(myPlotMarker* text, Taken* taken)
{
    const myPlotMarker* const partner = text->connectTo;
    const bool isTangent = partner && partner->type == MARKER_TANGENT;
    if (std::isnan(text->xValue()) && partner && partner->symbol())
        lean(*partner, text);
    // Nothing to keep clear of where nobody looks; a graph that comes into sight gets a size.
    if ((!text->isShown() || !plot.isVisible()) && !std::isnan(text->xValue()))
        return;
    if (isTangent) {
        put(text);
    } else if (text->isPlacedByHand) {
        // A small canvas can push it onto what it tells about.
        const QRectF box = boxAt(*text, basePixel(*text), QPoint(text->xOffset, text->yOffset));
        const bool isPushed = partner && overlap(box, boxOf(*partner)) > 0;
        putAt(text, isPushed ? freeOffset(*text, *taken) : QPoint(text->xOffset, text->yOffset));
    } else {
        const QPoint offset =
            taken->isKept ? QPoint(text->xOffset, text->yOffset) : freeOffset(*text, *taken);
        text->xOffset = offset.x();
        text->yOffset = offset.y();
        putAt(text, offset);
    }
    if (text->isShown())
        taken->boxes.append(boxOf(*text));
}

/// How bad it is to put a box somewhere, in square pixels; a curve is not as bad as another text.
double TextPlaces::hidden(const Taken& taken, const QRectF& box) const
{
    constexpr double perPoint = 30;
    double area = 0;
    for (const QRectF& other : taken.boxes)
        area += overlap(box, other);
    for (const QPointF& point : taken.curves)
        area += box.contains(point) ? perPoint : 0;
    return area;
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
    QRectF box = text.hotBox(base + offset).adjusted(-placeFrame, -placeFrame, placeFrame, placeFrame);
    if (!area.contains(base))
        return box;
    if (box.width() < area.width())
        box.moveLeft(std::clamp(box.left(), area.left(), area.right() - box.width()));
    if (box.height() < area.height())
        box.moveTop(std::clamp(box.top(), area.top(), area.bottom() - box.height()));
    return box;
}

/// The distance nearest to what the text wants at which it hides as little as possible of what is taken.
QPoint TextPlaces::freeOffset(const myPlotMarker& text, const Taken& taken) const
{
    constexpr int farthest = 5; // text distances
    constexpr int leastStep = 15;
    constexpr int stepsInHeight = 8;
    // In a small cell steps as wide as on the wall would all end at its edges.
    const int step =
        std::clamp(plot.canvas()->height() / stepsInHeight, leastStep, myPlotMarker::textDistance);
    const QPointF base = basePixel(text);
    QPoint best(text.xOffset, text.yOffset);
    double least = hidden(taken, boxAt(text, base, best));
    const int right = best.x() < 0 ? -myPlotMarker::textDistance : myPlotMarker::textDistance;
    const int down = best.y() < 0 ? -step : step;
    for (int i = 1; i <= farthest * myPlotMarker::textDistance / step && least > 0; ++i) {
        for (const QPoint& offset :
             {QPoint(right, i * down), QPoint(right, -i * down), QPoint(-right, i * down),
              QPoint(-right, -i * down), QPoint(2 * i * right, down), QPoint(-2 * i * right, down)}) {
            const double area = hidden(taken, boxAt(text, base, offset));
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

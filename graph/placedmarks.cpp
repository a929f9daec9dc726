#include "graph/placedmarks.h"

#include <tuple>

#include "graph/myplotmarker.h"

namespace {

QVector<double> numbersOf(const myPlotMarker& marker)
{
    if (marker.type != MARKER_REGRESSION && marker.type != MARKER_INTEGRAL)
        return {};
    return {marker.linX0, marker.linX1, marker.a, marker.b, marker.c, marker.r, marker.integral};
}

void setNumbers(myPlotMarker* marker, const QVector<double>& numbers)
{
    double* const targets[] = {&marker->linX0, &marker->linX1, &marker->a,       &marker->b,
                               &marker->c,     &marker->r,     &marker->integral};
    int i = 0;
    for (const double number : numbers)
        *targets[i++] = number;
}

auto whatAPersonDid(const PlacedMark& mark)
{
    // What a text of a pair says follows from its subject.
    const bool isWorded = mark.type == MARKER_FLOATING_TEXT;
    const bool isFree = isWorded && !mark.isPlacedByHand;
    return std::make_tuple(mark.type, mark.iSens, mark.xSensor, mark.onFit, isWorded ? QPointF() : mark.at,
                           isFree ? QPoint() : mark.offset, isWorded ? QString() : mark.text,
                           mark.picture.cacheKey(), mark.isBubble, mark.isLocked, mark.isPlacedByHand,
                           mark.numbers, mark.fit);
}

myPlotMarker* madeOne(const PlacedMark& mark)
{
    auto* marker = new myPlotMarker(mark.iSens, markerType(mark.type));
    marker->setValue(mark.at);
    marker->xSensor = mark.xSensor;
    marker->iReg = mark.onFit;
    marker->xOffset = mark.offset.x();
    marker->yOffset = mark.offset.y();
    marker->channel = mark.channel;
    marker->setText(mark.text);
    if (!mark.picture.isNull())
        marker->setPic(mark.picture);
    marker->pictureFile = mark.pictureFile;
    marker->setBubble(mark.isBubble);
    if (mark.isLocked)
        marker->lock();
    marker->isPlacedByHand = mark.isPlacedByHand;
    setNumbers(marker, mark.numbers);
    marker->fit = mark.fit;
    marker->fitX = mark.fitX;
    marker->fitY = mark.fitY;
    return marker;
}

} // namespace

bool operator==(const PlacedMark& a, const PlacedMark& b)
{
    return whatAPersonDid(a) == whatAPersonDid(b);
}

bool Placed::isPlaced(const myPlotMarker& marker)
{
    const myPlotMarker* const partner = marker.connectTo;
    if (marker.type == MARKER_FLOATING_TEXT)
        return partner && partner->type != MARKER_TANGENT;
    return marker.type != MARKER_TANGENT;
}

PlacedMarks Placed::of(const QList<myPlotMarker*>& list)
{
    QList<myPlotMarker*> placed;
    for (myPlotMarker* marker : list) {
        if (isPlaced(*marker))
            placed.append(marker);
    }
    PlacedMarks marks;
    for (const myPlotMarker* marker : qAsConst(placed)) {
        PlacedMark mark;
        mark.type = marker->type;
        mark.iSens = marker->iSens;
        mark.xSensor = marker->xSensor;
        mark.onFit = placed.indexOf(list.value(marker->iReg));
        mark.at = marker->value();
        mark.offset = QPoint(marker->xOffset, marker->yOffset);
        mark.channel = marker->channel;
        mark.text = marker->label().text();
        mark.picture = marker->getPic();
        mark.pictureFile = marker->pictureFile;
        mark.numbers = numbersOf(*marker);
        mark.fit = marker->fit;
        mark.fitX = marker->fitX;
        mark.fitY = marker->fitY;
        mark.isBubble = marker->isBubble();
        mark.isLocked = marker->isLocked();
        mark.isPlacedByHand = marker->isPlacedByHand;
        mark.isOfPair = !marker->connectTo.isNull();
        marks.append(mark);
    }
    return marks;
}

QList<myPlotMarker*> Placed::made(const PlacedMarks& marks)
{
    QList<myPlotMarker*> list;
    for (const PlacedMark& mark : marks) {
        myPlotMarker* const marker = madeOne(mark);
        if (mark.isOfPair && mark.type == MARKER_FLOATING_TEXT && !list.isEmpty()) {
            marker->connectTo = list.last();
            list.last()->connectTo = marker;
        }
        list.append(marker);
    }
    return list;
}

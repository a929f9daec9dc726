#include "graph/markermouse.h"

#include <QMouseEvent>

#include <utility>

#include "graph/markereditor.h"
#include "graph/markerlayer.h"

namespace {

constexpr double tipPixels = 10; // how near the tip of a balloon counts as on it

} // namespace

MarkerMouse::MarkerMouse(const GraphParts& parts, MarkerLayer& layer, MarkerEditor& editor)
    : layer(layer)
    , editor(editor)
    , search(parts)
{
}

/// The first shown marker under a point of the canvas.
myPlotMarker* MarkerMouse::at(const QPointF& pos, bool* isTip) const
{
    *isTip = false;
    for (myPlotMarker* marker : layer.all()) {
        if (!marker->isShown())
            continue;
        const QPointF place = marker->pixelPos();
        if (marker->hotBox(place).contains(pos))
            return marker;
        if (marker->type != MARKER_ANNOTATE || !marker->isBubble())
            continue;
        QPointF tip;
        *isTip = marker->distToBubbleTip(pos, &tip) < tipPixels;
        if (*isTip || myPlotMarker::isInTriangle(marker->balloonRect(place), tip, pos))
            return marker;
    }
    return nullptr;
}

bool MarkerMouse::take(const QPointF& pos)
{
    dragged = at(pos, &isByTip);
    if (dragged) {
        start = {dragged->value(), QPoint(dragged->xOffset, dragged->yOffset), dragged->isPlacedByHand};
        begin();
    }
    return isDragging();
}

void MarkerMouse::begin()
{
    end(QString()); // a release that never came
    isChanging = true;
    Q_EMIT layer.changing();
}

void MarkerMouse::end(const QString& step)
{
    if (std::exchange(isChanging, false))
        Q_EMIT layer.changed(step);
}

void MarkerMouse::drag(const QPointF& pos)
{
    if (dragged)
        layer.drag(dragged, pos, isByTip);
}

void MarkerMouse::letGo()
{
    myPlotMarker* const marker = dragged;
    dragged.clear();
    if (!marker) {
        end(QString());
        return;
    }
    const bool isGone = marker->type == MARKER_X_GHOST;
    const QString name = MarkerTexts::kindNameInSentence(isGone ? MARKER_X : marker->type);
    if (isGone)
        layer.remove(marker);
    end((isGone ? MarkerLayer::tr("Delete %1") : MarkerLayer::tr("Move %1")).arg(name));
}

void MarkerMouse::cancel()
{
    if (!dragged)
        return;
    layer.putBack(dragged, start.value, start.offset, start.isPlacedByHand);
    dragged.clear();
    end(QString());
}

void MarkerMouse::placeCross(const QPointF& pos)
{
    if (layer.refusesCross())
        return;
    const CurveSearch::Place near = search.nearest(pos, layer.all());
    if (near.iSens < 0)
        return;
    begin();
    layer.addCross(near.iSens, near.iReg, near.x, near.y);
    end(MarkerLayer::tr("Add %1").arg(MarkerTexts::kindNameInSentence(MARKER_X)));
}

bool MarkerMouse::pressRight(const QMouseEvent& event)
{
    bool isTip = false;
    myPlotMarker* const marker = at(event.pos(), &isTip);
    if (!marker)
        return false;
    if (MarkerLayer::isCross(*marker) || marker->type == MARKER_FLOATING_TEXT)
        editor.openMenu(marker, event.globalPos());
    else
        editor.askToRemove(marker);
    return true;
}

bool MarkerMouse::doubleClick(const QPointF& pos)
{
    bool isTip = false;
    myPlotMarker* const marker = at(pos, &isTip);
    if (!marker)
        return false;
    if (marker->type == MARKER_ANNOTATE)
        editor.edit(marker);
    else
        editor.lock(marker, true);
    return true;
}

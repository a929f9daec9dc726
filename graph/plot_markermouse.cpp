// The mouse on markers: what it hits, drags, edits, and the nearest curve.

#include "graph/plot.h"

#include <QAction>
#include <QMenu>
#include <QMouseEvent>
#include <QPointer>

#include <algorithm>
#include <cmath>

#include <qwt_scale_map.h>

#include "data/expdata.h"
#include "graph/bubbleedit.h"
#include "graph/myplotcurve.h"
#include "graph/myplotmarker.h"
#include "graph/scalemanager.h"

namespace {

constexpr double hotPixels = 20; // how far beside the pointer a curve is looked for
constexpr double tipPixels = 10; // how near the tip of a balloon counts as on it

bool isCross(const myPlotMarker& marker)
{
    return marker.type == MARKER_X || marker.type == MARKER_X_GHOST;
}

} // namespace

void Plot::pressMarker(const QPointF& pos)
{
    selectedMarker = isInMarker(pos, &balloonTip);
    if (selectedMarker >= 0)
        return;
    if (isAnnotate) {
        newAnnotation(pos);
    } else if (isMarker && type != GRAPH_BAR) {
        const NearPoint near = isNearCurve(pos, true);
        if (near.iSens >= 0)
            newMarker(near.iSens, near.iReg, near.bestX, near.bestY);
    }
}

/// True when the press was on a marker.
bool Plot::rightPressMarker(const QMouseEvent* event)
{
    bool isTip = false;
    const int hit = isInMarker(event->pos(), &isTip);
    if (hit < 0)
        return false;
    myPlotMarker* const marker = markers[hit];
    if (isCross(*marker) || marker->type == MARKER_FLOATING_TEXT)
        openMarkerMenu(marker, event->globalPos());
    else
        verifyAndRemoveMarker(hit);
    return true;
}

void Plot::openMarkerMenu(myPlotMarker* marker, const QPoint& globalPos)
{
    const myPlotMarker* const subject = subjectOf(marker);
    if (!subject || subject->type == MARKER_TANGENT)
        return;
    auto* menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("markerMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const QString name = markerName(MARKER_X, true);
    const QPointer<myPlotMarker> target(marker);
    QAction* const remove = menu->addAction(tr("Delete %1").arg(name));
    remove->setObjectName(QStringLiteral("deleteMarker"));
    connect(remove, &QAction::triggered, this, [=] { verifyAndRemoveMarker(markers.indexOf(target)); });
    QAction* const lock = menu->addAction(tr("Lock %1").arg(name));
    lock->setObjectName(QStringLiteral("lockMarker"));
    lock->setEnabled(subject->type == MARKER_X && !subject->isLocked());
    connect(lock, &QAction::triggered, this, [=] { lockMarker(target, false); });
    menu->popup(globalPos);
}

void Plot::doubleClickMarker(const QPointF& pos)
{
    bool isTip = false;
    const int hit = isInMarker(pos, &isTip);
    if (hit < 0)
        return;
    if (markers[hit]->type == MARKER_ANNOTATE)
        editMarker(hit);
    else
        lockMarker(markers[hit], true);
}

void Plot::dragMarker(const QPointF& pos)
{
    if (isSlope)
        updateSlope(pos.toPoint());
    else if (selectedMarker >= 0 && selectedMarker < markers.size())
        moveMarker(selectedMarker, pos);
}

void Plot::releaseMarker()
{
    myPlotMarker* const marker = markers.value(selectedMarker);
    selectedMarker = -1;
    if (marker && marker->type == MARKER_X_GHOST)
        removeMarker(marker);
}

void Plot::moveMarker(int iMark, const QPointF& pos)
{
    myPlotMarker* const marker = markers[iMark];
    const QwtScaleMap xMap = canvasMap(xBottom);
    const QwtScaleMap yMap = marker->ownMap(canvasMap(yLeft));
    data->setNeedSave(true);
    if (isCross(*marker) && !marker->isLocked()) {
        moveMarkerX(marker, pos);
    } else if (marker->type == MARKER_ANNOTATE && balloonTip) {
        marker->fixBalloonOffset(pos);
    } else if (marker->type == MARKER_ANNOTATE) {
        marker->setValue(xMap.invTransform(pos.x()), yMap.invTransform(pos.y()));
    } else if (marker->type == MARKER_FLOATING_TEXT) {
        const myPlotMarker* const partner = marker->connectTo;
        const double x = partner ? partner->xValue() : marker->pointToXVal;
        const double y = partner ? partner->yValue() : marker->pointToYVal;
        marker->xOffset = int(pos.x()) - int(xMap.transform(x));
        marker->yOffset = int(pos.y()) - int(yMap.transform(y));
        setFloatingMarkerPosition(marker);
    }
    repaintMarkers();
}

void Plot::moveMarkerX(myPlotMarker* cross, const QPointF& pos)
{
    const NearPoint near = isNearCurve(pos, true);
    myPlotMarker* const text = cross->connectTo;
    if (near.iSens < 0) {
        cross->setValue(invTransform(xBottom, pos.x()),
                        cross->ownMap(canvasMap(yLeft)).invTransform(pos.y()));
        setCross(cross, MARKER_X_GHOST);
        text->setShown(false);
        return;
    }
    cross->setValue(near.bestX, near.bestY);
    cross->iReg = near.iReg;
    cross->iSens = text->iSens = near.iSens;
    setCross(cross, MARKER_X);
    skip2ndMarker(cross);
    setFloatingMarkerPosition(text);
    setPartnerText(text);
}

/// The first shown marker under a point of the canvas, -1 if none is.
int Plot::isInMarker(const QPointF pos, bool* isTip) const
{
    *isTip = false;
    for (int i = 0; i < markers.size(); ++i) {
        const myPlotMarker& marker = *markers[i];
        if (!marker.isShown())
            continue;
        const QPointF place = marker.pixelPos();
        if (marker.hotBox(place).contains(pos))
            return i;
        if (marker.type != MARKER_ANNOTATE || !marker.isBubble())
            continue;
        QPointF tip;
        *isTip = marker.distToBubbleTip(pos, &tip) < tipPixels;
        if (*isTip || myPlotMarker::isInTriangle(marker.balloonRect(place), tip, pos))
            return i;
    }
    return -1;
}

void Plot::editMarker(int iMark)
{
    myPlotMarker* const marker = markers.value(iMark);
    if (!marker)
        return;
    data->setNeedSave(true);
    const auto place = [this, marker] { return markers.indexOf(marker); }; // the dialog goes with it
    auto* dialog = new BubbleEdit(marker->label().text(), place, marker->isBubble(), userPrompt, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setModal(true);
    connect(dialog, &BubbleEdit::textChanged, this, &Plot::changeMarkerText);
    connect(dialog, &BubbleEdit::bubbleChanged, this, &Plot::changeBubble);
    connect(dialog, &BubbleEdit::imageChanged, this, &Plot::setBubbleImage);
    connect(marker, &QObject::destroyed, dialog, &QDialog::reject);
    dialog->show();
}

void Plot::changeMarkerText(const QString& text, int index)
{
    if (myPlotMarker* marker = markers.value(index)) {
        marker->setText(text);
        repaintMarkers();
    }
}

void Plot::changeBubble(bool tf, int index)
{
    if (myPlotMarker* marker = markers.value(index)) {
        marker->setBubble(tf);
        repaintMarkers();
    }
}

void Plot::setBubbleImage(const QPixmap& pic, int index)
{
    if (myPlotMarker* marker = markers.value(index)) {
        marker->setPic(pic);
        repaintMarkers();
    }
}

// --- The nearest curve ---

NearCurve::Maps Plot::mapsOf(int iSens) const
{
    NearCurve::Maps maps{canvasMap(xBottom), canvasMap(yLeft)};
    scaler->fixScaleY(&maps.y, iSens);
    return maps;
}

Plot::NearPoint Plot::isNearCurve(const QPointF& pos, bool regression) const
{
    return data->isXYPlot() ? isNearCurveXY(pos) : isNearCurve(pos, regression, -1, hotPixels);
}

Plot::NearPoint Plot::pointByAxes(const QPointF& pos) const
{
    return {activeSens, -1, invTransform(xBottom, pos.x()), invTransform(yLeft, pos.y()), 0};
}

Plot::NearPoint Plot::isNearCurve(const QPointF& pos, bool regression, int onlyThisSens, double hot) const
{
    if (data->getXSize() < 2)
        return pointByAxes(pos);
    NearPoint best;
    for (int i = 0; i < curves.size(); ++i) {
        if (!curves[i]->isVisible() || (onlyThisSens >= 0 && i != onlyThisSens))
            continue;
        const NearCurve::Maps maps = mapsOf(i);
        const double first = maps.x.transform(data->getXAt(data->getLeftPad(i)));
        const double last = std::floor(maps.x.transform(data->getLastXForIndex(i)));
        const NearCurve::Strip strip{std::max(pos.x() - hot, first), std::min(pos.x() + hot, last)};
        const auto hit =
            NearCurve::onFunction(pos, strip, maps, [&](double x) { return data->interpolateY(i, x); });
        takeNearer(hit, i, -1, &best);
    }
    if (regression)
        searchRegressions(pos, hot, &best);
    return best;
}

void Plot::searchRegressions(const QPointF& pos, double hot, NearPoint* best) const
{
    for (int i = 0; i < markers.size(); ++i) {
        const myPlotMarker& line = *markers[i];
        if (line.type != MARKER_REGRESSION || !line.isShown())
            continue;
        const NearCurve::Maps maps = mapsOf(line.iSens);
        const double p0 = maps.x.transform(line.linX0);
        const double p1 = maps.x.transform(line.linX1);
        const NearCurve::Strip strip{std::max(pos.x() - hot, std::min(p0, p1)),
                                     std::min(pos.x() + hot, std::max(p0, p1))};
        const auto hit =
            NearCurve::onFunction(pos, strip, maps, [&](double x) { return line.calcRegValue(x); });
        takeNearer(hit, line.iSens, i, best);
    }
}

void Plot::takeNearer(const std::optional<NearCurve::Hit>& hit, int iSens, int iReg, NearPoint* best)
{
    if (hit && (best->iSens < 0 || hit->dist < best->dist))
        *best = {iSens, iReg, hit->value.x(), hit->value.y(), hit->dist};
}

Plot::NearPoint Plot::isNearCurveXY(const QPointF& pos) const
{
    if (data->getXSize() < 2)
        return pointByAxes(pos);
    NearPoint best;
    const int iX = data->getXYIndex();
    for (int i = 0; i < curves.size(); ++i) {
        if (!curves[i]->isVisible() || i == iX)
            continue;
        const int n = std::min(data->getYSize(iX), data->getYSize(i));
        const auto hit = NearCurve::onPath(
            pos, n, mapsOf(i), [&](int k) { return QPointF(data->getYAt(iX, k), data->getYAt(i, k)); });
        takeNearer(hit, i, -1, &best);
    }
    return best;
}

// What the user places on a graph: making, pairing, moving along, locking and removing.

#include "graph/plot.h"

#include <QPen>
#include <QPointer>

#include <algorithm>
#include <cmath>

#include <qwt_plot_canvas.h>
#include <qwt_symbol.h>

#include "common/common.h"
#include "common/userprompt.h"
#include "data/expdata.h"
#include "graph/myplotcurve.h"
#include "graph/myplotmarker.h"
#include "graph/scalemanager.h"

namespace {

constexpr int maxCrosses = 2;

bool hasPartnerText(int type)
{
    return type == MARKER_X || type == MARKER_REGRESSION || type == MARKER_INTEGRAL;
}

QString translatedName(int type)
{
    switch (type) {
    case MARKER_ANNOTATE:
        return Plot::tr("annotation");
    case MARKER_X:
        return Plot::tr("marker");
    case MARKER_REGRESSION:
        return Plot::tr("regression");
    case MARKER_FLOATING_TEXT:
        return Plot::tr("floating text");
    case MARKER_INTEGRAL:
        return Plot::tr("integral");
    }
    return QString();
}

} // namespace

QString Plot::markerName(int type, bool translate)
{
    return translate ? translatedName(type) : markerTypeName(type);
}

QString Plot::markerNameComp(int type)
{
    if (Common::isAzeri() && type == MARKER_ANNOTATE)
        return tr("annotation_c");
    if (Common::isAzeri() && type == MARKER_X)
        return tr("marker_c");
    return markerName(type, true);
}

int Plot::markerIndex(const QString& name, bool translate)
{
    for (int type = 0; type < MARKER_LAST; ++type) {
        if (!name.isEmpty() && markerName(type, translate) == name)
            return type;
    }
    return -1;
}

void Plot::setMarkers()
{
    dropDeriv();
    clearMarkers();
    if (isSlope)
        newDeriv();
    repaintMarkers();
}

void Plot::setMarkers(const QList<myPlotMarker*>& list)
{
    setMarkers();
    for (myPlotMarker* marker : pairedUp(list))
        takeStored(marker);
    repaintMarkers();
}

QList<myPlotMarker*> Plot::pairedUp(const QList<myPlotMarker*>& list)
{
    QList<myPlotMarker*> result;
    for (int i = 0; i < list.size(); ++i) {
        myPlotMarker* const marker = list[i];
        if (hasPartnerText(marker->type)) {
            myPlotMarker* const next = list.value(i + 1);
            const bool isStored = next && next->type == MARKER_FLOATING_TEXT;
            myPlotMarker* const text =
                isStored ? next : new myPlotMarker(marker->iSens, MARKER_FLOATING_TEXT);
            i += isStored ? 1 : 0;
            if (!isStored) {
                text->setXValue(myPlotMarker::notPlaced);
                text->setShown(false);
                hasUnplacedTexts = true;
            }
            marker->connectTo = text;
            text->connectTo = marker;
            result << marker << text;
        } else if (marker->type == MARKER_ANNOTATE) {
            result << marker;
        } else {
            delete marker;
        }
    }
    return result;
}

void Plot::takeStored(myPlotMarker* marker)
{
    marker->setScaler(scaler.get());
    addMarker(marker);
    if (const SensorPtr& sensor = data->getSens(marker->iSens); sensor && sensor->needAltUnit()) {
        marker->setYValue(sensor->convertToAltUnit(marker->yValue()));
        if (marker->type == MARKER_REGRESSION) {
            marker->a *= sensor->altUnit().factor;
            marker->b *= sensor->altUnit().factor;
            marker->c = sensor->convertToAltUnit(marker->c);
        }
    }
    marker->setText(marker->label().text());
    if (marker->type == MARKER_X) {
        setCross(marker, MARKER_X);
        if (!marker->isLocked() && curveMarker.size() == maxCrosses)
            marker->lock();
        if (!marker->isLocked())
            curveMarker.append(marker);
    } else if (marker->type == MARKER_INTEGRAL) {
        marker->curve = getCurve(marker->iSens);
    } else if (marker->type == MARKER_FLOATING_TEXT) {
        const bool isNew = std::isnan(marker->xValue());
        if (marker->connectTo->type == MARKER_X || isNew)
            setPartnerText(marker);
        if (isNew) {
            marker->xOffset = myPlotMarker::textDistance;
            marker->yOffset = -myPlotMarker::textDistance;
        }
    }
}

void Plot::addMarker(myPlotMarker* marker)
{
    marker->attach(this);
    markers.append(marker);
}

void Plot::addPair(myPlotMarker* graphic, int xOffset, int yOffset)
{
    auto* text = new myPlotMarker(graphic->iSens, scaler.get(), MARKER_FLOATING_TEXT);
    graphic->connectTo = text;
    text->connectTo = graphic;
    text->xOffset = xOffset;
    text->yOffset = yOffset;
    addMarker(graphic);
    addMarker(text);
}

void Plot::newAnnotation(const QPointF pos)
{
    constexpr double sideMargin = 50;
    constexpr double endMargin = 20;
    const QRect area = canvas()->contentsRect();
    const auto inside = [](double at, double margin, double size) {
        return std::max(margin, std::min(at, size - margin));
    };
    data->setNeedSave(true);
    auto* marker = new myPlotMarker(activeSens, scaler.get(), MARKER_ANNOTATE);
    marker->setValue(invTransform(xBottom, inside(pos.x(), sideMargin, area.width())),
                     invTransform(yLeft, inside(pos.y(), endMargin, area.height())));
    marker->setText(tr("New label"));
    marker->xOffset = 10;
    marker->yOffset = -75;
    addMarker(marker);
    repaintMarkers();
    editMarker(markers.size() - 1);
}

void Plot::newMarker(int iSens, int iReg, double xVal, double yVal)
{
    if (curveMarker.size() >= maxCrosses)
        return;
    data->setNeedSave(true);
    auto* cross = new myPlotMarker(iSens, scaler.get(), MARKER_X);
    cross->iReg = iReg;
    cross->setValue(xVal, yVal);
    setCross(cross, MARKER_X);
    addPair(cross, 0, 0);
    curveMarker.append(cross);
    leanToMiddle(cross, cross->connectTo);
    setPartnerText(cross->connectTo);
    findRoom(cross->connectTo);
    setFloatingMarkerPosition(cross->connectTo);
    skip2ndMarker(cross);
    // The distance of the two goes by where the second one has been brought.
    setPartnerText(cross->connectTo);
    repaintMarkers();
}

void Plot::setCross(myPlotMarker* marker, markerType kind)
{
    constexpr int size = 20;
    constexpr int penWidth = 3;
    if (marker->type == kind && marker->symbol())
        return;
    const QColor color = kind == MARKER_X ? Qt::black : Qt::gray;
    marker->type = kind;
    marker->setSymbol(new QwtSymbol(QwtSymbol::XCross, color, QPen(color, penWidth), QSize(size, size)));
}

// Analyses go from one cross to the other, so both lie on one curve.
void Plot::skip2ndMarker(myPlotMarker* cross)
{
    if (type == GRAPH_FFT || curveMarker.size() < maxCrosses)
        return;
    myPlotMarker* const other = curveMarker[cross == curveMarker[0] ? 1 : 0];
    if (other == cross || (other->iSens == cross->iSens && other->iReg == cross->iReg))
        return;
    const myPlotMarker* const line = markers.value(cross->iReg);
    const double x = other->xValue();
    if (line) {
        const double inside =
            std::max(std::min(line->linX0, line->linX1), std::min(x, std::max(line->linX0, line->linX1)));
        other->setValue(inside, line->calcRegValue(inside));
    } else {
        putOnCurve(other, cross->iSens);
    }
    other->iSens = cross->iSens;
    other->iReg = cross->iReg;
    other->connectTo->iSens = cross->iSens;
    setFloatingMarkerPosition(other->connectTo);
    setPartnerText(other->connectTo);
}

/// To the height of a curve; over a gap it stays where it is, since a file knows no place without one.
void Plot::putOnCurve(myPlotMarker* marker, int iSens) const
{
    const double y = data->interpolateY(iSens, marker->xValue());
    if (std::isfinite(y))
        marker->setYValue(y);
}

/// After the curves were made anew.
void Plot::followCurves()
{
    for (myPlotMarker* marker : qAsConst(markers)) {
        if (marker->type == MARKER_INTEGRAL)
            marker->curve = getCurve(marker->iSens);
    }
}

void Plot::showMarkersWithCurves()
{
    for (myPlotMarker* marker : qAsConst(markers)) {
        const myPlotCurve* curve = getCurve(marker->iSens);
        if (!slope || marker != slope->connectTo)
            marker->setShown(curve && curve->isVisible());
    }
}

myPlotMarker* Plot::subjectOf(myPlotMarker* marker) const
{
    return marker && marker->type == MARKER_FLOATING_TEXT ? marker->connectTo.data() : marker;
}

void Plot::verifyAndRemoveMarker(int mark)
{
    const QPointer<myPlotMarker> subject = subjectOf(markers.value(mark));
    if (!subject || subject->type == MARKER_TANGENT || !userPrompt)
        return;
    const QPointer<Plot> alive(this);
    const QString name = markerNameComp(subject->type);
    const auto answer = userPrompt->question(this, tr("Delete %1").arg(name),
                                             tr("Do you want to remove this %1?").arg(name), false);
    if (alive && subject && answer == UserPrompt::Answer::Yes)
        removeMarker(subject);
}

void Plot::removeMarker(myPlotMarker* marker)
{
    data->setNeedSave(true);
    if (marker->connectTo)
        dropMarker(marker->connectTo);
    dropMarker(marker);
    repaintMarkers();
}

/// Takes one marker out of all that knows it.
void Plot::dropMarker(myPlotMarker* marker)
{
    const int at = markers.indexOf(marker);
    if (at >= 0) {
        markers.removeAt(at);
        if (selectedMarker >= at)
            selectedMarker = selectedMarker == at ? -1 : selectedMarker - 1;
    }
    curveMarker.removeOne(marker);
    for (myPlotMarker* cross : qAsConst(markers)) {
        if (at < 0 || cross->iReg < at)
            continue;
        if (cross->iReg == at)
            putOnCurve(cross, cross->iSens);
        cross->iReg = cross->iReg == at ? -1 : cross->iReg - 1;
    }
    marker->detach();
    delete marker;
}

void Plot::clearMarkers()
{
    curveMarker.clear();
    selectedMarker = -1;
    while (!markers.isEmpty()) {
        myPlotMarker* const marker = markers.takeLast();
        marker->detach();
        delete marker;
    }
}

void Plot::lockMarker(myPlotMarker* marker, bool needConfirm)
{
    const QPointer<myPlotMarker> subject = subjectOf(marker);
    if (!subject || subject->isLocked() || subject->type != MARKER_X || (needConfirm && !userPrompt))
        return;
    if (needConfirm) {
        const QPointer<Plot> alive(this);
        const QString name = markerNameComp(subject->type);
        const auto answer = userPrompt->question(this, tr("Lock %1").arg(name),
                                                 tr("Do you want to lock this %1?").arg(name), false);
        if (!alive || !subject || answer != UserPrompt::Answer::Yes)
            return;
    }
    subject->lock();
    curveMarker.removeOne(subject);
    repaintMarkers();
}

// A marker changes nothing about the axes, whose layout costs more than the picture.
void Plot::repaintMarkers()
{
    if (axesChanged || type != GRAPH_LINE) {
        replot();
        return;
    }
    static_cast<QwtPlotCanvas*>(canvas())->replot();
}

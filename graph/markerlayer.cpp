#include "graph/markerlayer.h"

#include <cmath>

#include "data/expdata.h"
#include "graph/graphaxes.h"
#include "graph/graphcurves.h"
#include "graph/myplotcurve.h"

MarkerLayer::MarkerLayer(const GraphParts& parts, MarkerForm form)
    : parts(parts)
    , form(form)
    , texts(parts.data, parts.axes.time(), form)
    , places(parts.plot, markers)
    , search(parts)
{
}

MarkerLayer::~MarkerLayer()
{
    for (myPlotMarker* marker : qAsConst(markers)) {
        marker->detach();
        delete marker;
    }
}

bool MarkerLayer::isCross(const myPlotMarker& marker)
{
    return marker.type == MARKER_X || marker.type == MARKER_X_GHOST;
}

myPlotMarker* MarkerLayer::subjectOf(myPlotMarker* marker)
{
    return marker && marker->type == MARKER_FLOATING_TEXT ? marker->connectTo.data() : marker;
}

void MarkerLayer::remove(myPlotMarker* marker)
{
    parts.data.setNeedSave(true);
    if (marker->connectTo)
        drop(marker->connectTo);
    drop(marker);
    repaint();
}

void MarkerLayer::drop(myPlotMarker* marker)
{
    const int at = markers.indexOf(marker);
    markers.removeOne(marker);
    crosses.removeOne(marker);
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

void MarkerLayer::clear()
{
    for (int i = markers.size() - 1; i >= 0; --i) {
        const myPlotMarker* const partner = markers[i]->connectTo;
        if (!partner || partner->type != MARKER_TANGENT)
            drop(markers[i]);
    }
    repaint();
}

void MarkerLayer::lock(myPlotMarker* cross)
{
    cross->lock();
    crosses.removeOne(cross);
    repaint();
}

void MarkerLayer::cropTo(double x0, double x1)
{
    while (!crosses.isEmpty())
        remove(crosses.last());
    for (int i = markers.size() - 1; i >= 0; --i) {
        const double x = markers[i]->xValue();
        if (markers[i]->type == MARKER_ANNOTATE && (x < x0 || x > x1))
            remove(markers[i]);
    }
}

void MarkerLayer::followCurves()
{
    for (myPlotMarker* marker : qAsConst(markers)) {
        if (marker->type == MARKER_INTEGRAL)
            marker->curve = parts.curves.at(marker->iSens);
    }
}

void MarkerLayer::showWithCurves()
{
    for (myPlotMarker* marker : qAsConst(markers)) {
        const myPlotCurve* const curve = parts.curves.at(marker->iSens);
        if (!marker->connectTo || marker->connectTo->type != MARKER_TANGENT)
            marker->setShown(curve && curve->isVisible());
    }
}

void MarkerLayer::showOnly(int iSens)
{
    for (myPlotMarker* marker : qAsConst(markers))
        marker->setShown(marker->iSens == iSens);
}

void MarkerLayer::renewTexts()
{
    for (myPlotMarker* text : qAsConst(markers)) {
        if (text->type == MARKER_FLOATING_TEXT && text->connectTo &&
            text->connectTo->type != MARKER_REGRESSION && text->connectTo->type != MARKER_INTEGRAL)
            renewText(text);
    }
}

void MarkerLayer::renewText(myPlotMarker* text)
{
    const myPlotMarker* const subject = text->connectTo;
    if (!subject)
        return;
    text->setText(texts.of(*subject));
    if (!isCross(*subject) || crosses.size() < 2)
        return;
    const QString distance = texts.distance(*subject, *crosses[0], *crosses[1]);
    if (!distance.isEmpty())
        Q_EMIT distanceTold(distance);
}

void MarkerLayer::placeTexts(bool isAll)
{
    for (myPlotMarker* text : qAsConst(markers)) {
        if (text->type != MARKER_FLOATING_TEXT)
            continue;
        const bool isNew = std::isnan(text->xValue());
        if (isNew && text->connectTo && isCross(*text->connectTo))
            places.lean(*text->connectTo, text, form == MarkerForm::Frequency);
        if (isNew)
            places.findRoom(text);
        if (isNew || (isAll && text->isShown()))
            places.put(text);
    }
    hasUnplacedTexts = false;
}

void MarkerLayer::repaint()
{
    parts.axes.repaint();
}

#include "graph/markerlayer.h"

#include <cmath>
#include <limits>

#include <QWidget>

#include <qwt_plot.h>

#include "data/expdata.h"
#include "graph/graphaxes.h"
#include "graph/graphcurves.h"
#include "graph/graphdesign.h"
#include "graph/myplotcurve.h"
#include "graph/scalemanager.h"

MarkerLayer::MarkerLayer(const GraphParts& parts, const KindTraits& traits)
    : parts(parts)
    , traits(traits)
    , texts(parts.data, parts.axes.time(), traits.markers, parts.index < 0)
    , places(
          parts.plot, markers, [this] { return curvePoints(); }, traits.markers == MarkerForm::Frequency)
    , search(parts)
{
}

MarkerLayer::~MarkerLayer()
{
    for (const auto& own : {span.get(), previewed.get()}) {
        if (own)
            own->detach();
    }
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
    for (myPlotMarker* cross : qAsConst(markers)) {
        if (at < 0 || cross->iReg < at)
            continue;
        const bool isOnIt = cross->iReg == at;
        cross->iReg = isOnIt ? -1 : cross->iReg - 1;
        if (isOnIt)
            followCross(cross);
    }
    marker->detach();
    delete marker;
    findMovable();
}

void MarkerLayer::clear()
{
    for (int i = markers.size() - 1; i >= 0; --i) {
        const myPlotMarker* const partner = markers[i]->connectTo;
        if (!partner || partner->type != MARKER_TANGENT)
            drop(markers[i]);
    }
    if (previewed)
        preview({});
    repaint();
}

void MarkerLayer::lock(myPlotMarker* cross)
{
    cross->lock();
    findMovable();
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

void MarkerLayer::findMovable()
{
    crosses.clear();
    for (myPlotMarker* marker : qAsConst(markers)) {
        if (isCross(*marker) && !marker->isLocked() && marker->xSensor == parts.data.getXYIndex())
            crosses.append(marker);
    }
}

// What stands over the time means nothing over a sensor, and comes back with its axis.
bool MarkerLayer::isSeen(const myPlotMarker& marker) const
{
    if (marker.isLocked() || marker.xSensor != parts.data.getXYIndex())
        return false;
    if (!traits.hasLegend)
        return true;
    const myPlotCurve* const curve = parts.curves.at(marker.iSens);
    return traits.isStyled ? curve && curve->isVisible() : marker.iSens == parts.curves.activeIndex();
}

void MarkerLayer::renew()
{
    renewShown();
    for (myPlotMarker* marker : qAsConst(markers)) {
        if (marker->type == MARKER_FLOATING_TEXT)
            renewText(marker);
    }
    tellDistance();
}

void MarkerLayer::renewShown()
{
    findMovable();
    for (myPlotMarker* marker : qAsConst(markers)) {
        const myPlotMarker* const partner = marker->connectTo;
        if (partner && partner->type == MARKER_TANGENT)
            continue;
        const bool isOfGhost = partner && partner->type == MARKER_X_GHOST;
        marker->setShown(isSeen(*marker) && !isOfGhost);
    }
}

void MarkerLayer::renewText(myPlotMarker* text)
{
    const myPlotMarker* const subject = text->connectTo;
    if (!subject || subject->xSensor != parts.data.getXYIndex() ||
        (subject->type == MARKER_TANGENT && !subject->isShown()))
        return;
    const QString words = texts.of(*subject, apart());
    if (text->label().text() != words)
        text->setText(words);
}

/// Seconds between the two crosses; without two, so much that nothing depends on it.
double MarkerLayer::apart() const
{
    const double distance = crosses.size() < 2 ? 0 : std::abs(crosses[0]->xValue() - crosses[1]->xValue());
    return distance > 0 ? distance : std::numeric_limits<double>::infinity();
}

void MarkerLayer::fitText(myPlotMarker* marker) const
{
    marker->setTextPixels(GraphFonts::textPixels(parts.plot.height()));
    marker->setRoom(parts.plot.canvas()->size());
}

QVector<QPointF> MarkerLayer::curvePoints() const
{
    constexpr int step = 8; // pixels
    QVector<QPointF> points;
    const QwtScaleMap xMap = parts.plot.canvasMap(QwtPlot::xBottom);
    for (int i = 0; i < parts.curves.size(); ++i) {
        if (!parts.curves.at(i)->isVisible() || parts.data.isXYPlot())
            continue;
        QwtScaleMap yMap = parts.plot.canvasMap(QwtPlot::yLeft);
        parts.scaler.fixScaleY(&yMap, i);
        for (int column = 0; column < parts.plot.canvas()->width(); column += step)
            points.append(
                QPointF(column, yMap.transform(parts.data.interpolateY(i, xMap.invTransform(column)))));
    }
    return points;
}

// Half way between the two, in pixels; their scales may differ.
void MarkerLayer::renewSpan()
{
    const QString words = crosses.size() < 2 ? QString() : texts.span(*crosses[0], *crosses[1]);
    const bool isSeenNow = !words.isEmpty() && crosses[0]->isShown() && crosses[1]->isShown();
    if (!isSeenNow) {
        if (span)
            span->detach();
        span.reset();
        return;
    }
    if (!span) {
        span = std::make_unique<myPlotMarker>(crosses[0]->iSens, &parts.scaler, MARKER_FLOATING_TEXT);
        span->setZ(span->z() - 0.5); // under the other texts, also under those that come later
        span->setXValue(myPlotMarker::notPlaced);
        span->attach(&parts.plot);
    }
    span->iSens = crosses[0]->iSens;
    fitText(span.get());
    if (span->label().text() != words)
        span->setText(words);
    aimSpan();
}

void MarkerLayer::aimSpan()
{
    if (!span || crosses.size() < 2)
        return;
    const QPointF middle = (crosses[0]->pixelPos() + crosses[1]->pixelPos()) / 2;
    span->pointToXVal = parts.plot.invTransform(QwtPlot::xBottom, middle.x());
    span->pointToYVal = span->ownMap(parts.plot.canvasMap(QwtPlot::yLeft)).invTransform(middle.y());
}

void MarkerLayer::placeTexts()
{
    fit(); // the labels of an axis can have taken room from the canvas
    aimSpan();
    places.putAll(span.get());
}

void MarkerLayer::tellDistance()
{
    renewSpan();
    const QString distance = crosses.size() < 2 ? QString() : texts.distance(*crosses[0], *crosses[1]);
    // What was refused for these markers is past when there are others.
    const bool isRefusalPast = refusedWith >= 0 && refusedWith != markers.size();
    if (distance == lastDistance && !isRefusalPast)
        return;
    refusedWith = -1;
    lastDistance = distance;
    Q_EMIT distanceTold(distance);
}

// The place of a cross over a sensor is a point of the path, which a height alone does not tell.
void MarkerLayer::followCross(myPlotMarker* cross)
{
    if (cross->type != MARKER_X || cross->xSensor >= 0)
        return;
    const myPlotMarker* const line = markers.value(cross->iReg);
    if (line)
        cross->setYValue(line->calcRegValue(cross->xValue()));
    else
        putOnCurve(cross, cross->iSens);
}

/// Whose values something is about: another channel, or the same one smoothed, has others.
QString MarkerLayer::channelOf(int iSens) const
{
    const SensorPtr& sensor = parts.data.getSens(iSens);
    return parts.curves.at(iSens)->getChannel() + QLatin1Char(' ') + (sensor ? sensor->name : QString());
}

void MarkerLayer::followData()
{
    QList<QPointer<myPlotMarker>> lost;
    QList<myPlotMarker*> followers;
    for (myPlotMarker* marker : qAsConst(markers)) {
        const myPlotCurve* const curve = parts.curves.at(marker->iSens);
        if (!curve)
            continue;
        // What a file says of its marks holds for the file's data.
        const bool isOfFile = marker->channel.isEmpty();
        const QString channel = channelOf(marker->iSens);
        const bool isOther = !isOfFile && marker->channel != channel;
        marker->channel = channel;
        if (!isOfFile)
            followers.append(marker);
        if (marker->type == MARKER_INTEGRAL || marker->type == MARKER_REGRESSION)
            marker->curve = parts.curves.at(marker->iSens);
        if (marker->type == MARKER_INTEGRAL || (marker->type == MARKER_REGRESSION && isOther)) {
            if (!CurveAnalysis::renew(parts, marker))
                lost.append(marker);
        }
    }
    for (myPlotMarker* marker : qAsConst(followers)) // when the lines that they may stand on are known
        followCross(marker);
    for (const QPointer<myPlotMarker>& marker : qAsConst(lost))
        remove(marker);
    renewShown();
}

void MarkerLayer::fit()
{
    for (myPlotMarker* marker : qAsConst(markers))
        fitText(marker);
    if (span)
        fitText(span.get());
}

// A marker changes nothing about the axes, whose layout costs more than the picture.
void MarkerLayer::repaint()
{
    renew();
    if (!parts.axes.isDue())
        placeTexts();
    parts.axes.repaint(); // with axes that are due the graph places the texts
}

// How markers come onto a graph.

#include "graph/markerlayer.h"

#include <QWidget>

#include <algorithm>
#include <cmath>

#include <qwt_plot.h>

#include "data/expdata.h"
#include "data/storedexperiment.h"
#include "graph/graphaxes.h"
#include "graph/graphcurves.h"
#include "graph/graphdesign.h"
#include "graph/myplotcurve.h"
#include "graph/photogates.h"

namespace {

constexpr int maxCrosses = 2;

bool hasPartnerText(int type)
{
    return type == MARKER_X || type == MARKER_REGRESSION || type == MARKER_INTEGRAL;
}

/// A second press on the button, for the same span of the same curve.
bool isSameResult(const myPlotMarker& a, const myPlotMarker& b)
{
    return a.type == b.type && a.iSens == b.iSens && a.xSensor == b.xSensor && a.linX0 == b.linX0 &&
           a.linX1 == b.linX1 && a.fit.isNone() == b.fit.isNone() &&
           (a.fit.isNone()
                ? (a.a != 0) == (b.a != 0)
                : a.fit.curve.model == b.fit.curve.model && a.fit.curve.expression == b.fit.curve.expression);
}

/// A file keeps it in the words of the fit only.
double toldCorrelation(const QString& words)
{
    QString number = words.section(QLatin1Char('='), -1).trimmed();
    return number.replace(QLatin1Char(','), QLatin1Char('.')).toDouble();
}

} // namespace

void MarkerLayer::adopt(myPlotMarker* marker)
{
    marker->xSensor = parts.data.getXYIndex();
    fitText(marker);
    marker->attach(&parts.plot);
    markers.append(marker);
}

void MarkerLayer::addPair(myPlotMarker* graphic)
{
    auto* text = new myPlotMarker(graphic->iSens, &parts.scaler, MARKER_FLOATING_TEXT);
    graphic->connectTo = text;
    text->connectTo = graphic;
    text->xOffset = myPlotMarker::textDistance;
    text->yOffset = -myPlotMarker::textDistance;
    text->setXValue(myPlotMarker::notPlaced);
    adopt(graphic);
    adopt(text);
    if (parts.curves.at(graphic->iSens))
        graphic->channel = channelOf(graphic->iSens);
}

myPlotMarker* MarkerLayer::addNote(const QPointF& pos)
{
    constexpr double sideMargin = 50;
    constexpr double endMargin = 20;
    const QRect area = parts.plot.canvas()->contentsRect();
    const auto inside = [](double at, double margin, double size) {
        return std::max(margin, std::min(at, size - margin));
    };
    parts.data.setNeedSave(true);
    auto* note = new myPlotMarker(parts.curves.activeIndex(), &parts.scaler, MARKER_ANNOTATE);
    note->setValue(parts.plot.invTransform(QwtPlot::xBottom, inside(pos.x(), sideMargin, area.width())),
                   parts.plot.invTransform(QwtPlot::yLeft, inside(pos.y(), endMargin, area.height())));
    note->setText(tr("New label"));
    note->xOffset = 10;
    note->yOffset = -75;
    adopt(note);
    repaint();
    return note;
}

void MarkerLayer::refuse(const QString& why)
{
    refusedWith = markers.size();
    Q_EMIT refused(why);
}

bool MarkerLayer::refusesCross()
{
    constexpr int fewestSamples = 2;
    const bool isEmpty = parts.data.getXSize() < fewestSamples;
    if (isEmpty)
        refuse(tr("There is no curve to put a marker on yet."));
    else if (crosses.size() >= maxCrosses)
        refuse(tr("There are two markers already; lock or delete one for another."));
    return isEmpty || crosses.size() >= maxCrosses;
}

void MarkerLayer::addCross(int iSens, int iReg, double x, double y)
{
    if (crosses.size() >= maxCrosses)
        return;
    parts.data.setNeedSave(true);
    auto* cross = new myPlotMarker(iSens, &parts.scaler, MARKER_X);
    cross->iReg = iReg;
    cross->setValue(x, y);
    setCross(cross, MARKER_X);
    addPair(cross);
    repaint();
}

void MarkerLayer::setCross(myPlotMarker* marker, markerType kind)
{
    if (marker->type == kind && marker->symbol())
        return;
    marker->type = kind;
    marker->setCross(kind == MARKER_X ? Qt::black : Qt::gray);
}

void MarkerLayer::addResult(CurveAnalysis::Result result)
{
    if (!result.marker) {
        refuse(result.refusal);
        return;
    }
    parts.data.setNeedSave(true);
    const QList<myPlotMarker*> present = markers;
    const auto same = std::find_if(present.cbegin(), present.cend(), [&](const myPlotMarker* marker) {
        return isSameResult(*marker, *result.marker);
    });
    if (same != present.cend())
        remove(*same);
    result.marker->curve = parts.curves.at(result.marker->iSens);
    addPair(result.marker.release());
    repaint();
}

void MarkerLayer::install(const QList<myPlotMarker*>& list)
{
    clear();
    for (myPlotMarker* marker : pairedUp(list))
        takeStored(marker);
    renewShown();
    parts.axes.repaint();
}

void MarkerLayer::place(const PlacedMarks& marks, const TextLayout& layout)
{
    for (int i = markers.size() - 1; i >= 0; --i) {
        if (Placed::isPlaced(*markers[i]))
            drop(markers[i]);
    }
    const int first = markers.size();
    for (myPlotMarker* marker : Placed::made(marks)) {
        const int axis = marker->xSensor;
        marker->setScaler(&parts.scaler);
        adopt(marker);
        marker->xSensor = axis;
        marker->iReg += marker->iReg >= 0 ? first : 0;
        if (isCross(*marker))
            setCross(marker, marker->type);
        else if (marker->type == MARKER_INTEGRAL || marker->type == MARKER_REGRESSION)
            marker->curve = parts.curves.at(marker->iSens);
    }
    followData();
    renew();
    if (span) {
        span->xOffset = layout.spanOffset.x();
        span->yOffset = layout.spanOffset.y();
        span->setXValue(span->pointToXVal); // it has its place
    }
    places.setGround(layout.ground);
    repaint();
}

TextLayout MarkerLayer::textLayout() const
{
    return {span ? QPoint(span->xOffset, span->yOffset) : QPoint(), places.ground()};
}

QList<myPlotMarker*> MarkerLayer::pairedUp(const QList<myPlotMarker*>& list)
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
                text->xOffset = myPlotMarker::textDistance;
                text->yOffset = -myPlotMarker::textDistance;
            }
            text->isPlacedByHand = isStored && !std::isnan(text->xValue());
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

void MarkerLayer::takeStored(myPlotMarker* marker)
{
    marker->setScaler(&parts.scaler);
    const int axis = marker->xSensor;
    adopt(marker);
    marker->xSensor = axis;
    const SensorPtr& sensor = parts.data.getSens(marker->iSens);
    marker->setYValue(BaseUnit::shown(sensor, marker->yValue()));
    if (marker->type == MARKER_REGRESSION) {
        marker->a = BaseUnit::shown(sensor, marker->a, true);
        marker->b = BaseUnit::shown(sensor, marker->b, true);
        marker->c = BaseUnit::shown(sensor, marker->c);
        takeStoredFit(marker);
    }
    marker->setText(marker->label().text());
    if (marker->type == MARKER_X) {
        setCross(marker, MARKER_X);
        if (!marker->isLocked() && crosses.size() == maxCrosses)
            marker->lock();
        findMovable();
    } else if (marker->type == MARKER_INTEGRAL || marker->type == MARKER_REGRESSION) {
        marker->curve = parts.curves.at(marker->iSens);
    } else if (marker->connectTo && marker->connectTo->type == MARKER_REGRESSION &&
               marker->connectTo->r == 0) {
        marker->connectTo->r = toldCorrelation(marker->label().text());
    }
    // A fit says what it said until the data are there.
    if (marker->connectTo && (marker->connectTo->type == MARKER_X || std::isnan(marker->xValue())))
        renewText(marker);
}

/// Its numbers stay in their own units; the axes may count in others now.
void MarkerLayer::takeStoredFit(myPlotMarker* marker) const
{
    if (marker->fit.isNone())
        return;
    const bool isTime = marker->xSensor < 0;
    const auto x = isTime ? marker->fit.x : FittedCurve::Unit::of(parts.data.getSens(marker->xSensor));
    marker->setXValue(x.from(marker->fit.x, marker->xValue()));
    marker->linX0 = x.from(marker->fit.x, marker->linX0);
    marker->linX1 = x.from(marker->fit.x, marker->linX1);
    marker->fitX = x;
    marker->fitY = FittedCurve::Unit::of(parts.data.getSens(marker->iSens));
}

void MarkerLayer::preview(CurveAnalysis::Result result)
{
    if (previewed)
        previewed->detach();
    previewed = std::move(result.marker);
    if (previewed) {
        fitText(previewed.get());
        previewed->attach(&parts.plot);
    }
    parts.axes.repaint();
}

void MarkerLayer::renewGateTexts()
{
    for (int i = markers.size() - 1; i >= 0; --i) {
        if (markers[i]->type == MARKER_FLOATING_TEXT && !markers[i]->connectTo)
            drop(markers[i]);
    }
    for (const Photogates::Told& told : Photogates::read(parts.data))
        addGateText(told.iSens, told.at, told.offset, told.words);
}

/// A text without a partner, which is placed as soon as the axes are known.
void MarkerLayer::addGateText(int iSens, const QPointF& at, const QPoint& offset, const QString& words)
{
    auto* text = new myPlotMarker(iSens, &parts.scaler, MARKER_FLOATING_TEXT);
    text->pointToXVal = at.x();
    text->pointToYVal = at.y();
    text->xOffset = offset.x();
    text->yOffset = offset.y();
    text->setText(words);
    text->setXValue(myPlotMarker::notPlaced);
    adopt(text);
    text->xSensor = -1; // times
}

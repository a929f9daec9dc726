#include "graph/linekind.h"

#include <algorithm>

#include <qwt_plot.h>

#include "data/expdata.h"
#include "graph/averageband.h"
#include "graph/curvenames.h"
#include "graph/graphaxes.h"
#include "graph/graphcurves.h"
#include "graph/graphlegend.h"
#include "graph/markerlayer.h"
#include "graph/myplotcurve.h"
#include "graph/scalemanager.h"

namespace {

constexpr int minXSamp = 100;         // samples that the axis of a young run has room for
constexpr double needMoreFrac = 0.75; // part of that room that fills before the axis follows the data
constexpr int fewSamples = int(minXSamp * needMoreFrac);
constexpr double slowRate = 0.05;  // s between samples: from here on each of the first ones may move the axis
constexpr double namesPart = 0.08; // of the range, right of the curves of the class for their names
constexpr double colourReach = 20; // pixels: how near a curve a right press picks its colour

} // namespace

LineKind::LineKind(const GraphParts& parts, GraphLegend& legend, MarkerLayer& layer)
    : parts(parts)
    , legend(legend)
    , layer(layer)
    , search(parts)
{
    parts.axes.setRange(QwtPlot::yLeft, 0, 1);
    if (parts.index >= 0)
        return;
    names = std::make_unique<CurveNames>(parts);
    names->attach(&parts.plot);
    band = std::make_unique<AverageBand>(this->parts);
    band->attach(&parts.plot);
}

LineKind::~LineKind() = default;

void LineKind::setData()
{
    if (parts.data.getXSize() == 0) {
        endZoom();
        parts.axes.time().setUnit(UNIT_SEC); // no long run before decides on the unit of this
    }
    parts.curves.rebuild();
    legend.watchEntries();
    if (parts.index < 0)
        parts.data.makeUniformScales();
    parts.scaler.setScales(&parts.data, parts.index < 0);
    parts.axes.setText(QwtPlot::xBottom, parts.axes.timeTitle(parts.data.dt));
    parts.axes.setText(QwtPlot::yLeft, sensorTitle(parts.curves.activeIndex()));
    showRight();
    parts.axes.setAuto(QwtPlot::xBottom);
    if (parts.data.getXSize() == 0) // the window that a run begins with
        showWindow();
    else if (!isZoomed)
        shownXMax = parts.data.getX().last();
    layer.renewGateTexts();
    layer.followData();
    parts.plot.replot();
}

void LineKind::update()
{
    if (parts.data.getXSize() == 0) {
        showRoom();
        layer.renew();
        parts.plot.replot();
    } else if (parts.data.isXYPlot()) {
        updateOverSensor();
    } else {
        updateOverTime();
    }
}

void LineKind::makeRoom(double length)
{
    room = length;
    parts.scaler.isOpen = length > 0;
    if (parts.data.getXSize() == 0)
        follow();
}

void LineKind::follow()
{
    parts.axes.setDue();
    if (parts.data.getXSize() > 0 && !parts.data.isXYPlot() && !parts.data.finalData)
        parts.scaler.setScales(&parts.data, parts.index < 0);
    else if (parts.data.getXSize() == 0 && !isZoomed)
        showWindow();
    update();
}

/// Where the last line ends that was predicted of a channel; 0 without one.
double LineKind::predictedEnd() const
{
    double end = 0;
    for (const Prediction& prediction : qAsConst(parts.data.predictions)) {
        if (Predictions::channelOf(parts.data, prediction) >= 0)
            end = std::max(end, prediction.points.constLast().x());
    }
    return end;
}

/// The window that a run begins with.
void LineKind::showWindow()
{
    parts.axes.setRange(QwtPlot::xBottom, 0, (parts.data.dt > 0 ? parts.data.dt : 1) * minXSamp);
    showRoom();
}

/// A graph without samples has room for what is expected of it.
void LineKind::showRoom()
{
    const double end = std::max(room, predictedEnd());
    if ((end <= 0 && !isRoomShown) || isZoomed)
        return;
    isRoomShown = end > 0;
    if (!isRoomShown) {
        parts.axes.setRange(QwtPlot::yLeft, 0, 1);
        setData();
        return;
    }
    parts.scaler.setScales(&parts.data, parts.index < 0);
    showRangeY();
    parts.axes.setRange(QwtPlot::xBottom, 0, end);
    parts.axes.setTimeUnit(end, parts.data.dt);
    parts.axes.setText(QwtPlot::xBottom, parts.axes.timeTitle(parts.data.dt));
}

void LineKind::updateOverTime()
{
    leaveXY();
    updateXRange();
    updateScales();
    const bool isGrowing = !isZoomed && !parts.axes.isFixed(QwtPlot::xBottom);
    parts.axes.setTimeUnit(isGrowing ? parts.data.getX().last() : shownXMax, parts.data.dt);
    parts.data.setTimeScale(&parts.axes.time());
    parts.axes.setText(QwtPlot::xBottom, parts.axes.timeTitle(parts.data.dt));
    layer.renew();
    repaint();
}

void LineKind::updateXRange()
{
    if (isZoomed)
        return;
    const QVector<double>& x = parts.data.getX();
    const bool isWhole = parts.data.finalData || parts.data.isRepeatMode1stPhase();
    if (const double end = predictedEnd(); end > x.last()) {
        shownXMax = end;
        parts.axes.setRange(QwtPlot::xBottom, std::min(0.0, x.first()), end);
        return;
    }
    if (isWhole && x.last() > x.first()) {
        shownXMax = x.last();
        const double forNames = parts.index < 0 ? namesPart * (x.last() - x.first()) : 0;
        parts.axes.setRange(QwtPlot::xBottom, x.first(), shownXMax + forNames);
    } else if (x.size() > fewSamples) {
        if (!parts.axes.isFixed(QwtPlot::xBottom))
            return;
        shownXMax = x.last();
        parts.axes.setAuto(QwtPlot::xBottom);
    } else if (x.size() < fewSamples) {
        shownXMax = x.first() + (parts.data.dt > 0 ? parts.data.dt : 1) * minXSamp;
        parts.axes.setRange(QwtPlot::xBottom, x.first(), shownXMax);
    }
}

void LineKind::updateScales()
{
    const bool isClass = parts.index < 0;
    if (isClass) {
        const SensorPtr& first = parts.data.get1stSensor();
        if (first && !first->readClassSetMinMax)
            parts.data.makeUniformScales();
    }
    const bool isSlow = parts.data.dt >= slowRate && parts.data.getXSize() <= fewSamples;
    if (!parts.data.finalData && !isSlow)
        parts.scaler.growScales(&parts.data, isClass);
    else if (isClass)
        parts.scaler.updateClassScales(&parts.data);
    else
        parts.scaler.updateScales(&parts.data);
    if (isClass)
        parts.curves.renewAverage();
    showRangeY();
}

void LineKind::showRangeY()
{
    const int active = parts.curves.activeIndex();
    if (const myPlotCurve* curve = parts.curves.active())
        parts.axes.setAccent(QwtPlot::yLeft, curve->getColor());
    parts.axes.setRange(QwtPlot::yLeft, parts.scaler.getScaleMin(active), parts.scaler.getScaleMax(active));
    showRight();
}

/// A second channel has its scale on the right as long as its curve is in sight and the left axis is another.
void LineKind::showRight()
{
    const int right = parts.data.getRightIndex();
    const bool isOn = parts.curves.hasOwnScale(right);
    parts.axes.setRightShown(isOn);
    if (!isOn)
        return;
    parts.axes.setAccent(QwtPlot::yRight, parts.curves.at(right)->getColor());
    parts.axes.setText(QwtPlot::yRight, sensorTitle(right));
    parts.axes.setRange(QwtPlot::yRight, parts.scaler.getScaleMin(right), parts.scaler.getScaleMax(right));
}

void LineKind::updateOverSensor()
{
    const int iX = parts.data.getXYIndex();
    isXYShown = true;
    if (!isZoomed) {
        showRangeY();
        parts.axes.setRange(QwtPlot::xBottom, parts.scaler.getScaleMin(iX), parts.scaler.getScaleMax(iX));
    }
    parts.axes.setText(QwtPlot::xBottom, sensorTitle(iX));
    parts.axes.setSeconds();
    layer.renew();
    repaint();
}

// Back from a sensor the bottom axis still has the range of that, at any number of samples.
void LineKind::leaveXY()
{
    if (!isXYShown)
        return;
    isXYShown = false;
    parts.axes.setAuto(QwtPlot::xBottom);
    shownXMax = parts.data.getX().last();
}

void LineKind::setXSensor(int iSens)
{
    const int before = parts.data.getXYIndex();
    if (iSens == before)
        return;
    endZoom();
    parts.data.setXYIndex(iSens);
    for (int i : {iSens, before})
        parts.curves.design(i);
    parts.axes.setDue();
    update();
}

QString LineKind::sensorTitle(int iSens) const
{
    const SensorPtr& sensor = parts.data.getSens(iSens);
    if (!sensor)
        return QString();
    const QString title = sensor->getNameWithUnit(false);
    const QString common = sensor->specialType == 0 ? parts.curves.commonSensor() : QString();
    return common.isEmpty() ? title : QString(title).replace(sensor->name, common);
}

// An automatic range ends at a tick, so it changes only when the data pass it.
bool LineKind::outgrewAutoRange() const
{
    return !parts.axes.isFixed(QwtPlot::xBottom) &&
           parts.data.getX().last() > parts.plot.axisInterval(QwtPlot::xBottom).maxValue();
}

void LineKind::repaint()
{
    if (outgrewAutoRange())
        parts.axes.setDue();
    // A group that was late puts its samples between older ones of the class, and marks may have moved.
    const QRect grown = live.grown(parts);
    const bool isAppended = parts.index >= 0 && !parts.data.isXYPlot() && layer.all().isEmpty();
    parts.axes.repaint(isAppended ? grown : QRect());
}

void LineKind::showSensor(int iSens)
{
    const int before = parts.curves.activeIndex();
    parts.curves.setActive(iSens);
    const int active = parts.curves.activeIndex();
    if (active == parts.data.getRightIndex() && active != before)
        parts.data.setRightIndex(before); // both scales stay in sight
    parts.curves.designPens();
    parts.axes.setText(QwtPlot::yLeft, sensorTitle(parts.curves.activeIndex()));
    update();
}

void LineKind::showColor(int iSens)
{
    parts.curves.design(iSens);
    showRangeY();
    parts.plot.replot();
}

QPair<double, double> LineKind::range(int iSens) const
{
    if (iSens < 0 || iSens >= parts.scaler.scales.size())
        return {0, 1};
    const oneScale& scale = *parts.scaler.scales[iSens];
    return {scale.scaleFullMin, scale.scaleFullMax};
}

/// The channels on the scale of one, itself included.
SensorList LineKind::sharersOf(const SensorPtr& sensor) const
{
    SensorList sharers{sensor};
    const QString quantity = sensor->quantity();
    for (const SensorPtr& other : parts.data.getSensors()) {
        if (other && other != sensor && !quantity.isEmpty() && other->quantity() == quantity)
            sharers.append(other);
    }
    return sharers;
}

void LineKind::setUserRange(const SensorPtr& sensor, double min, double max)
{
    const bool isClass = parts.index < 0;
    for (const SensorPtr& other : sharersOf(sensor)) {
        (isClass ? other->classMinView : other->minView) = min;
        (isClass ? other->classMaxView : other->maxView) = max;
        (isClass ? other->readClassSetMinMax : other->readSetMinMax) = true;
        other->readClassMinMax = other->readClassMinMax && !isClass;
    }
    takeFixedRanges();
}

/// A range that is no part of the whole any more.
bool LineKind::showsAll(const QRectF& rect) const
{
    const QVector<double>& x = parts.data.getX();
    const int active = parts.curves.activeIndex();
    if (x.isEmpty() || active >= parts.scaler.scales.size() || parts.data.isXYPlot())
        return false;
    const oneScale& scale = *parts.scaler.scales[active];
    return rect.left() <= x.first() && rect.right() >= x.last() &&
           rect.top() <= std::min(scale.scaleFullMin, scale.scaleFullMax) &&
           rect.bottom() >= std::max(scale.scaleFullMin, scale.scaleFullMax);
}

void LineKind::setAutomaticRange(const SensorPtr& sensor)
{
    for (const SensorPtr& other : sharersOf(sensor))
        (parts.index < 0 ? other->readClassSetMinMax : other->readSetMinMax) = false;
    takeFixedRanges();
}

/// At once, also where the axis of a run stands still.
void LineKind::takeFixedRanges()
{
    if (parts.index < 0)
        parts.scaler.updateClassScales(&parts.data);
    else
        parts.scaler.updateScales(&parts.data);
    update();
}

void LineKind::zoomIn(const QRectF& rect)
{
    const int active = parts.curves.activeIndex();
    if (isZoomed && showsAll(rect)) {
        zoomOut();
        return;
    }
    shownXMax = rect.right();
    parts.axes.setRange(QwtPlot::xBottom, rect.left(), rect.right());
    isZoomed = true;
    // A scale that stands upside down stays so. Over a sensor the curves follow their scales too.
    const bool isReversed = parts.scaler.getScaleMin(active) > parts.scaler.getScaleMax(active);
    parts.scaler.setZoom(active, isReversed ? rect.bottom() : rect.top(),
                         isReversed ? rect.top() : rect.bottom());
    showRangeY();
    update();
}

void LineKind::endZoom()
{
    if (!isZoomed)
        return;
    parts.scaler.setZoomOut();
    isZoomed = false;
}

// The next picture has another span.
void LineKind::startAnew()
{
    if (!isZoomed)
        return;
    endZoom();
    parts.axes.setAuto(QwtPlot::xBottom);
}

void LineKind::zoomOut()
{
    endZoom();
    parts.axes.setAuto(QwtPlot::xBottom);
    if (parts.data.getXSize() > 0)
        shownXMax = parts.data.getX().last();
    update();
}

int LineKind::sensorAt(const QPointF& pos) const
{
    constexpr int fewSamplesToHit = 2;
    if (parts.data.getXSize() <= fewSamplesToHit)
        return -1;
    const CurveSearch::Place near = search.nearest(pos);
    return near.dist < colourReach ? near.iSens : -1;
}

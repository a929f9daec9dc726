// Curves, axes and scales of a graph, and the way of new samples to the screen.

#include "graph/plot.h"

#include <QPen>

#include <algorithm>

#include <qwt_plot_canvas.h>
#include <qwt_scale_widget.h>

#include "data/expdata.h"
#include "graph/curvepainter.h"
#include "graph/myplotcurve.h"
#include "graph/scalemanager.h"
#include "graph/timescaledraw.h"

namespace {

constexpr int minXSamp = 100;         // samples that the axis of a young run has room for
constexpr double needMoreFrac = 0.75; // part of that room that fills before the axis follows the data
constexpr int fewSamples = int(minXSamp * needMoreFrac);

int idOf(const SensorPtr& sensor)
{
    return sensor ? sensor->ID : -1;
}

bool isHiddenKind(int id)
{
    return id == SENSOR_GPS_LAT || id == SENSOR_GPS_LONG || id == SENSOR_GPS_ANGLE ||
           id == SENSOR_SIM_ENERGY || id == SENSOR_SIM_SPEED;
}

} // namespace

void Plot::dropCurves()
{
    legendItems.clear();
    for (myPlotCurve* curve : qAsConst(curves)) {
        curve->detach();
        delete curve;
    }
    curves.clear();
}

void Plot::setData()
{
    if (type != GRAPH_LINE)
        return;
    const QVector<CurveLook> before = looks();
    dropCurves();
    nSens = data->getNSens();
    hasColorimeter = data->hasColorimeter();
    if (activeSens >= nSens)
        activeSens = 0;
    for (int i = 0; i < nSens; ++i)
        addCurve(i, before.value(i));
    fitLegend();
    if (index < 0)
        data->makeUniformScales();
    scaler->setScales(data, index < 0);
    setAxisText(xBottom, timeTitle());
    setAxisText(yLeft, sensorTitle(activeSens));
    setAxisAuto(xBottom);
    if (data->getXSize() == 0) // the window that a run begins with
        setAxisRange(xBottom, 0, (data->dt > 0 ? data->dt : 1) * minXSamp);
    followCurves();
    addPhotogateTexts();
    replot();
}

QVector<Plot::CurveLook> Plot::looks() const
{
    QVector<CurveLook> result;
    for (const myPlotCurve* curve : curves)
        result.append({curve->getChannel(), curve->getMode(), curve->getColor()});
    return result;
}

QString Plot::channelKey(int i) const
{
    const SensorPtr& sensor = data->getSens(i);
    if (!sensor)
        return QString();
    return QStringLiteral("%1 %2 %3 %4")
        .arg(sensor->ID)
        .arg(sensor->specialType)
        .arg(sensor->specialOriginIndex)
        .arg(sensor->groupName);
}

void Plot::addCurve(int i, const CurveLook& before)
{
    auto* curve = new myPlotCurve(data, scaler.get(), i, columnPainter.get());
    curves.append(curve);
    curve->setChannel(channelKey(i));
    if (isHiddenAtFirst(i))
        curve->hide();
    if (!before.channel.isEmpty() && before.channel == curve->getChannel()) {
        curve->setMode(before.mode);
        if (before.color.isValid())
            curve->setColor(before.color);
    }
    const int hint = data->curveModeHint.value(i, -1);
    if (hint >= 0)
        curve->setMode(hint);
    designCurve(i);
    curve->attach(this);
    watchLegendItem(curve);
}

// The average of the class says something only for sensors of one kind.
bool Plot::isHiddenAtFirst(int i) const
{
    const SensorList& sensors = data->getSensors();
    if (isHiddenKind(idOf(sensors[i])))
        return true;
    return index < 0 && i == data->meanIndex() && !data->isOfOneKind();
}

void Plot::Update()
{
    if (type == GRAPH_BAR)
        updateBarData(!data->finalData);
    else if (type == GRAPH_FFT || data->getXSize() == 0)
        replot();
    else if (data->isXYPlot())
        updateXY();
    else
        updateT();
}

void Plot::updateT()
{
    leaveXY();
    updateXRange();
    updateScales();
    updateTimeUnit();
    setTexts();
    refresh();
}

void Plot::updateXRange()
{
    if (data->isRepeatMode() && !data->isRepeatMode1stPhase())
        xAuto = false;
    if (usingZoom)
        return;
    const QVector<double>& x = data->getX();
    const bool isWhole = data->finalData || data->isRepeatMode1stPhase();
    if (isWhole && x.last() > x.first()) {
        shownXMin = x.first();
        shownXMax = x.last();
        setAxisRange(xBottom, shownXMin, shownXMax);
    } else if (!xAuto && x.size() > fewSamples) {
        shownXMin = x.first();
        shownXMax = x.last();
        setAxisAuto(xBottom);
        xAuto = true;
    } else if (x.size() < fewSamples) {
        const double xStep = data->dt > 0 ? data->dt : 1;
        shownXMin = x.first();
        shownXMax = x.first() + xStep * minXSamp;
        setAxisRange(xBottom, shownXMin, shownXMax);
        xAuto = false;
    }
}

void Plot::updateScales()
{
    if (index < 0) {
        const SensorPtr& first = data->get1stSensor();
        if (first && !first->readClassSetMinMax)
            data->makeUniformScales();
        scaler->updateClassScales(data);
        renewAverageName();
    } else {
        scaler->updateScales(data);
    }
    setAxisRange(yLeft, scaler->getScaleMin(activeSens), scaler->getScaleMax(activeSens));
}

// A fixed range gets its ticks when it is set, so ticks of another unit need it set again.
void Plot::updateTimeUnit()
{
    const units before = myTimeScale->getUnit();
    myTimeScale->setUnitByMaxX(shownXMax, data->dt);
    data->setTimeScale(myTimeScale);
    if (myTimeScale->getUnit() != before)
        renewTicks();
    setAxisText(xBottom, timeTitle());
}

void Plot::renewTicks()
{
    const AxisRange shown = ranges[xBottom];
    ranges[xBottom] = AxisRange();
    if (shown.isFixed)
        setAxisRange(xBottom, shown.from, shown.to);
    axesChanged = true;
}

void Plot::updateXY()
{
    isXYShown = true;
    if (!usingZoom) {
        const int iX = data->getXYIndex();
        setAxisRange(yLeft, scaler->getScaleMin(activeSens), scaler->getScaleMax(activeSens));
        setAxisRange(xBottom, scaler->getScaleMin(iX), scaler->getScaleMax(iX));
    }
    setAxisText(xBottom, sensorTitle(data->getXYIndex()));
    if (myTimeScale->getUnit() != UNIT_SEC) {
        myTimeScale->setUnit(UNIT_SEC);
        renewTicks();
    }
    setTexts();
    refresh();
}

// Back from an XY plot the bottom axis still has the range of a sensor, at any number of samples.
void Plot::leaveXY()
{
    if (!isXYShown)
        return;
    isXYShown = false;
    xAuto = false;
    setAxisAuto(xBottom);
}

void Plot::setXYIndex(int sel)
{
    const int before = data->getXYIndex();
    if (sel == before)
        return;
    if (usingZoom) {
        scaler->setZoomOut();
        usingZoom = false;
    }
    data->setXYIndex(sel);
    for (int i : {sel, before})
        designCurve(i);
    axesChanged = true;
    Update();
}

QString Plot::timeTitle() const
{
    return data->dt > 0 ? tr("Time [%1]").arg(myTimeScale->getUnitName()) : tr("Sample");
}

QString Plot::sensorTitle(int iSens) const
{
    const SensorPtr& sensor = data->getSens(iSens);
    return sensor ? sensor->getNameWithUnit(false) : QString();
}

void Plot::setAxisText(int axisID, const QString& text)
{
    if (axisTexts[axisID] == text)
        return;
    setAxisTitleAndSize(axisID, text, 0);
    axesChanged = true;
}

void Plot::setAxisRange(int axisID, double from, double to)
{
    AxisRange& range = ranges[axisID];
    if (range.isFixed && range.from == from && range.to == to)
        return;
    range = {true, from, to};
    setAxisScale(axisID, from, to);
    axesChanged = true;
}

void Plot::setAxisAuto(int axisID)
{
    ranges[axisID] = AxisRange();
    setAxisAutoScale(axisID);
    axesChanged = true;
}

// An automatic range ends at a tick, so it changes only when the data pass it.
bool Plot::outgrewAutoRange() const
{
    return !ranges[xBottom].isFixed && data->getX().last() > axisInterval(xBottom).maxValue();
}

// Laying out axes and legend costs more than painting the curves, and is left out while the axes stand still.
void Plot::refresh()
{
    const bool areAxesDue = axesChanged || type == GRAPH_FFT || (type == GRAPH_LINE && outgrewAutoRange());
    if (hasUnplacedTexts || (areAxesDue && !data->finalData && !markers.isEmpty())) {
        updateAxes();
        placeTexts(!data->finalData);
    }
    if (areAxesDue) {
        replot();
        return;
    }
    static_cast<QwtPlotCanvas*>(canvas())->replot();
}

void Plot::replot()
{
    if (isBarWindowMoving) {
        updateAxes();
        return;
    }
    axesChanged = false;
    QwtPlot::replot();
}

// The time axis is cut into pixel columns once for all curves of a picture, and anew for the next.
void Plot::drawItems(QPainter* painter, const QRectF& canvasRect, const QwtScaleMap maps[axisCnt]) const
{
    columnPainter->forget();
    QwtPlot::drawItems(painter, canvasRect, maps);
    columnPainter->forget();
}

void Plot::updateSens(int iSens)
{
    if (type == GRAPH_BAR) {
        updateBarSens(iSens, !data->finalData);
        return;
    }
    nSens = data->getNSens();
    activeSens = iSens >= 0 && iSens < nSens ? iSens : 0;
    for (int i = 0; i < curves.size(); ++i)
        setCurvePen(i);
    if (slope)
        moveDeriv(activeSens);
    setAxisText(yLeft, sensorTitle(activeSens));
    Update();
}

QVector<int> Plot::getShownSensIDs() const
{
    QVector<int> ids;
    for (int i = 0; i < curves.size(); ++i) {
        if (curves[i]->isShown())
            ids.append(idOf(data->getSens(i)));
    }
    return ids;
}

QPen Plot::getCurvePen(int iSens) const
{
    const myPlotCurve* curve = getCurve(iSens);
    return curve ? curve->pen() : QPen();
}

void Plot::keepCurveModesInData() const
{
    data->curveModeHint.resize(curves.size());
    for (int i = 0; i < curves.size(); ++i)
        data->curveModeHint[i] = curves[i]->getMode();
}

void Plot::forceDefaultSetScale()
{
    const SensorPtr& sensor = data->getSens(activeSens);
    if (!sensor || activeSens >= scaler->scales.size())
        return;
    scaler->scales[activeSens]->setUserScales(sensor->minView, sensor->maxView, false);
    Update();
}

void Plot::zoomIn(const QRectF& rect)
{
    const QRectF zoomed = rect.normalized();
    if (zoomed.width() <= 0 || zoomed.height() <= 0)
        return;
    shownXMin = zoomed.left();
    shownXMax = zoomed.right();
    setAxisRange(xBottom, shownXMin, shownXMax);
    usingZoom = true;
    if (type == GRAPH_FFT) {
        setAxisRange(yLeft, zoomed.top(), zoomed.bottom());
        replot();
        return;
    }
    // A scale that stands upside down stays so. In an XY plot the curves follow their scales too.
    const bool isReversed = scaler->getScaleMin(activeSens) > scaler->getScaleMax(activeSens);
    scaler->setZoom(activeSens, isReversed ? zoomed.bottom() : zoomed.top(),
                    isReversed ? zoomed.top() : zoomed.bottom());
    setAxisRange(yLeft, scaler->getScaleMin(activeSens), scaler->getScaleMax(activeSens));
    Update();
}

void Plot::zoomOut()
{
    if (type == GRAPH_FFT)
        return;
    scaler->setZoomOut();
    usingZoom = false;
    xAuto = false;
    setAxisAuto(xBottom);
    Update();
}

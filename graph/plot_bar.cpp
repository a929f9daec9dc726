// The bars of a bar graph and the window that scrolls along them. Their x values are in the unit of the axis.

#include "graph/plot.h"

#include <QPen>
#include <QScopedValueRollback>

#include <algorithm>
#include <cmath>

#include <qwt_interval.h>
#include <qwt_scale_div.h>

#include "data/expdata.h"
#include "graph/colorscale.h"
#include "graph/myplotcurve.h"
#include "graph/myplothistogram.h"
#include "graph/scalemanager.h"
#include "graph/scrollzoomer.h"
#include "graph/timescaledraw.h"

namespace {

constexpr double barPart = 2.0 / 3; // of the distance of two samples

int barsInWindow(int samples)
{
    if (samples <= 10)
        return 10;
    return samples <= 20 ? 20 : 40;
}

} // namespace

void Plot::setBarData()
{
    if (!hist)
        createBars();
    QVector<QColor> colors;
    for (const myPlotCurve* curve : qAsConst(curves))
        colors.append(curve->getColor());
    dropCurves();
    nSens = data->getNSens();
    if (activeSens >= nSens)
        activeSens = 0;
    for (int i = 0; i < nSens; ++i)
        addBarEntry(i, i < colors.size() ? colors[i] : ColorScale::myColors(i));
    fitLegend();
    setBarColor();
    axesChanged = true;
}

void Plot::createBars()
{
    hist = std::make_unique<myPlotHistogram>();
    hist->attach(this);
    setAxisText(xBottom, tr("Time [s]"));
    setAxisText(yLeft, tr("Value"));
    setAxisScale(xBottom, 0, barsInWindow(0));
    setAxisScale(yLeft, 0, 1);
    barZoomer = new ScrollZoomer(canvas());
    barZoomer->setRubberBand(QwtPicker::NoRubberBand);
    connect(barZoomer, &QwtPlotZoomer::zoomed, this, &Plot::barsScrolled);
}

// A curve that is never drawn: it holds the sensor's place in the legend and its colour.
void Plot::addBarEntry(int i, const QColor& color)
{
    auto* entry = new myPlotCurve(data, scaler.get(), i, columnPainter.get());
    curves.append(entry);
    entry->setColor(color);
    setBarEntryPen(i);
    entry->setTitle(legendName(i));
    entry->setLegendAttribute(QwtPlotCurve::LegendShowLine, true);
    entry->setVisible(false);
    entry->attach(this);
    watchLegendItem(entry);
}

void Plot::setBarEntryPen(int i)
{
    curves[i]->setPen(QPen(curves[i]->getColor(), i == activeSens ? curveWidthAct : curveWidth));
}

void Plot::setBarColor()
{
    const myPlotCurve* entry = getCurve();
    hist->setColor(entry ? entry->getColor() : ColorScale::myColors(activeSens));
}

int Plot::barCount() const
{
    return std::min(data->getYSize(activeSens), data->getXSize());
}

double Plot::barX(int i) const
{
    return data->getXAt(i) / myTimeScale->getdT();
}

void Plot::updateBarData(bool isRun)
{
    if (!hist)
        return;
    const int n = barCount();
    if (n < barsKnown) // of another experiment than those that the user scrolled
        barPlace.reset();
    barsKnown = n;
    if (n == 0) {
        hist->setSamples(QVector<QwtIntervalSample>());
        replot();
        return;
    }
    const units unitBefore = myTimeScale->getUnit();
    myTimeScale->setUnitByMaxX(data->getX().last(), std::max(data->dt, 0.0));
    axesChanged = axesChanged || myTimeScale->getUnit() != unitBefore;
    setAxisText(xBottom, timeTitle());
    barTStep = data->dt > 0 ? myTimeScale->getFactor() : 1;
    barWidth = barPart * barTStep;

    const int numGood = barsInWindow(n);
    const double width = barTStep * numGood + barWidth;
    const double minX = barX(0) - barWidth / 2;
    const double maxX = n > numGood ? barX(n - 1) + barWidth / 2 : minX + width;
    const double last = std::max(minX, maxX - width);
    double xPos = isRun ? last : minX;
    if (barPlace)
        xPos = std::clamp(*barPlace / myTimeScale->getdT(), minX, last);
    barZoomer->setScrollBarMode(Qt::Horizontal, n > numGood ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    moveBarWindow(QwtInterval(minX, maxX), QwtInterval(xPos, xPos + width));
    buildBars();
    refresh();
}

// The range that the zoomer shows is normalised; which way up the axis stands it takes from the axis itself.
void Plot::moveBarWindow(const QwtInterval& whole, const QwtInterval& shown)
{
    const QPair<double, double> range = barRange();
    const auto over = [&](const QwtInterval& x) {
        return QRectF(QPointF(x.minValue(), range.first), QPointF(x.maxValue(), range.second)).normalized();
    };
    const QwtScaleDiv& y = axisScaleDiv(yLeft);
    const bool isYNew = y.lowerBound() != range.first || y.upperBound() != range.second;
    if (!isYNew && !axesChanged && barZoomer->zoomRect() == over(shown) &&
        barZoomer->zoomBase() == over(whole))
        return;
    // The zoomer asks for a picture at each step; one at the end is enough.
    const QScopedValueRollback<bool> moving(isBarWindowMoving, true);
    if (isYNew) {
        setAxisScale(yLeft, range.first, range.second);
        updateAxes();
    }
    barZoomer->zoom(over(shown));
    barZoomer->setZoomBase(over(whole));
    axesChanged = true;
}

// By the rule of the line graphs, unless somebody fixed a range for the bars of this sensor.
QPair<double, double> Plot::barRange() const
{
    const SensorPtr& sensor = data->getSens(activeSens);
    if (!sensor)
        return {0, 1};
    // A sensor's kept view is no range that somebody fixed.
    const Sensor::View* kept = Sensor::fixedView(sensor->ID);
    const bool isKept = kept && sensor->barUserMin == kept->min && sensor->barUserMax == kept->max;
    if (sensor->barUserScale && !isKept)
        return {sensor->barUserMin, sensor->barUserMax};
    oneScale scale(data->getMinY(activeSens), data->getMaxY(activeSens), sensor->max - sensor->min,
                   sensor->min, index, QString(), sensor->name);
    scale.keepView(*data, activeSens);
    return {scale.scaleFullMin, scale.scaleFullMax};
}

// Those in the window and one more on each side, however long the run is.
void Plot::buildBars()
{
    const QRectF shown = barZoomer->zoomRect();
    const double unit = myTimeScale->getdT();
    const double* const x = data->getX().constData();
    const double* const end = x + barCount();
    const double* const from = std::lower_bound(x, end, (shown.left() - barTStep) * unit);
    const double* const to = std::upper_bound(from, end, (shown.right() + barTStep) * unit);
    QVector<QwtIntervalSample> bars;
    bars.reserve(int(to - from));
    for (const double* at = from; at != to; ++at) {
        const double middle = *at / unit;
        if (std::isnan(data->getYNoConvAt(activeSens, int(at - x))))
            continue;
        bars.append(QwtIntervalSample(data->getYAt(activeSens, int(at - x)), middle - barWidth / 2,
                                      middle + barWidth / 2));
    }
    hist->setSamples(bars);
}

// At the end of a live run the window follows the newest bar again, anywhere else it stays.
void Plot::barsScrolled(const QRectF& shown)
{
    if (isBarWindowMoving)
        return;
    const bool isAtEnd = shown.right() >= barZoomer->zoomBase().right() - barTStep / 2;
    if (isAtEnd && !data->finalData)
        barPlace.reset();
    else
        barPlace = shown.left() * myTimeScale->getdT();
    buildBars();
    replot();
}

void Plot::updateBarSens(int iSens, bool isRun)
{
    if (curves.size() != data->getNSens())
        setBarData();
    activeSens = iSens >= 0 && iSens < nSens ? iSens : 0;
    for (int i = 0; i < curves.size(); ++i)
        setBarEntryPen(i);
    setBarColor();
    for (myPlotMarker* marker : qAsConst(markers))
        marker->setShown(activeSens);
    axesChanged = true;
    setAxisText(yLeft, sensorTitle(activeSens));
    updateBarData(isRun);
}

#include "graph/barkind.h"

#include <QObject>
#include <QScopedValueRollback>

#include <algorithm>
#include <cmath>

#include <qwt_interval.h>
#include <qwt_plot.h>
#include <qwt_scale_div.h>

#include "data/expdata.h"
#include "graph/colorscale.h"
#include "graph/graphaxes.h"
#include "graph/graphcurves.h"
#include "graph/graphlegend.h"
#include "graph/markerlayer.h"
#include "graph/myplotcurve.h"
#include "graph/myplothistogram.h"
#include "graph/scalemanager.h"
#include "graph/scrollzoomer.h"

namespace {

constexpr double barPart = 2.0 / 3; // of the distance of two samples

int barsInWindow(int samples)
{
    if (samples <= 10)
        return 10;
    return samples <= 20 ? 20 : 40;
}

} // namespace

BarKind::BarKind(const GraphParts& parts, GraphLegend& legend, MarkerLayer& layer)
    : parts(parts)
    , legend(legend)
    , layer(layer)
    , bars(std::make_unique<myPlotHistogram>())
    , zoomer(new ScrollZoomer(parts.plot.canvas()))
{
    bars->attach(&parts.plot);
    parts.axes.setText(QwtPlot::xBottom, QObject::tr("Time [s]"));
    parts.axes.setText(QwtPlot::yLeft, QObject::tr("Value"));
    parts.plot.setAxisScale(QwtPlot::xBottom, 0, barsInWindow(0));
    parts.plot.setAxisScale(QwtPlot::yLeft, 0, 1);
    zoomer->setRubberBand(QwtPicker::NoRubberBand);
    QObject::connect(zoomer, &QwtPlotZoomer::zoomed, zoomer, [this](const QRectF& rect) { scrolled(rect); });
}

BarKind::~BarKind() = default;

void BarKind::setData()
{
    parts.curves.rebuildEntries();
    legend.watchEntries();
    showColor();
    parts.axes.setDue();
}

void BarKind::showColor()
{
    const myPlotCurve* const entry = parts.curves.active();
    const QColor color = entry ? entry->getColor() : ColorScale::myColors(parts.curves.activeIndex());
    bars->setColor(color);
    parts.axes.setAccent(QwtPlot::yLeft, color);
}

void BarKind::showColor(int iSens)
{
    parts.curves.design(iSens);
    showColor();
    parts.plot.replot();
}

int BarKind::sensorAt(const QPointF&) const
{
    return parts.curves.activeIndex();
}

int BarKind::count() const
{
    return std::min(parts.data.getYSize(parts.curves.activeIndex()), parts.data.getXSize());
}

double BarKind::xOf(int i) const
{
    return parts.data.getXAt(i) / parts.axes.time().getdT();
}

void BarKind::update()
{
    update(!parts.data.finalData);
}

void BarKind::update(bool isRun)
{
    const int n = count();
    if (n < known) // of another experiment than those that the user scrolled
        place.reset();
    known = n;
    if (n == 0) {
        bars->setSamples(QVector<QwtIntervalSample>());
        parts.plot.replot();
        return;
    }
    const double dt = parts.data.dt;
    parts.axes.setTimeUnit(parts.data.getX().last(), std::max(dt, 0.0));
    parts.axes.setText(QwtPlot::xBottom, parts.axes.timeTitle(dt));
    step = dt > 0 ? parts.axes.time().getFactor() : 1;
    width = barPart * step;

    const int numGood = barsInWindow(n);
    const double window = step * numGood + width;
    const double minX = xOf(0) - width / 2;
    const double maxX = n > numGood ? xOf(n - 1) + width / 2 : minX + window;
    const double last = std::max(minX, maxX - window);
    double from = isRun ? last : minX;
    if (place)
        from = std::clamp(*place / parts.axes.time().getdT(), minX, last);
    zoomer->setScrollBarMode(Qt::Horizontal, n > numGood ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    moveWindow(QwtInterval(minX, maxX), QwtInterval(from, from + window));
    build();
    layer.renew();
    parts.axes.repaint();
}

// The range that the zoomer shows is normalised; which way up the axis stands it takes from the axis itself.
void BarKind::moveWindow(const QwtInterval& whole, const QwtInterval& shown)
{
    const QPair<double, double> y = range(parts.curves.activeIndex());
    const auto over = [&](const QwtInterval& x) {
        return QRectF(QPointF(x.minValue(), y.first), QPointF(x.maxValue(), y.second)).normalized();
    };
    const QwtScaleDiv& before = parts.plot.axisScaleDiv(QwtPlot::yLeft);
    const bool isYNew = before.lowerBound() != y.first || before.upperBound() != y.second;
    if (!isYNew && !parts.axes.isDue() && zoomer->zoomRect() == over(shown) &&
        zoomer->zoomBase() == over(whole))
        return;
    // The zoomer asks for a picture at each step; one at the end is enough.
    const QScopedValueRollback<bool> moving(isMoving, true);
    if (isYNew) {
        parts.plot.setAxisScale(QwtPlot::yLeft, y.first, y.second);
        parts.plot.updateAxes();
    }
    zoomer->zoom(over(shown));
    zoomer->setZoomBase(over(whole));
    parts.axes.setDue();
}

// By the rule of the line graphs, unless somebody fixed a range for the bars of this sensor.
QPair<double, double> BarKind::range(int iSens) const
{
    const SensorPtr& sensor = parts.data.getSens(iSens);
    if (!sensor)
        return {0, 1};
    // A sensor's kept view is no range that somebody fixed.
    const Sensor::View* kept = Sensor::fixedView(sensor->ID);
    const bool isKept = kept && sensor->barUserMin == kept->min && sensor->barUserMax == kept->max;
    if (sensor->barUserScale && !isKept)
        return {sensor->barUserMin, sensor->barUserMax};
    oneScale scale(parts.data.getMinY(iSens), parts.data.getMaxY(iSens), sensor->max - sensor->min,
                   sensor->min, parts.index, QString(), sensor->name);
    scale.keepView(parts.data, iSens);
    return {scale.scaleFullMin, scale.scaleFullMax};
}

// Those in the window, however long the run is.
void BarKind::build()
{
    const int active = parts.curves.activeIndex();
    const QRectF shown = zoomer->zoomRect();
    const double unit = parts.axes.time().getdT();
    const double* const x = parts.data.getX().constData();
    const double* const end = x + count();
    const double* const from = std::lower_bound(x, end, (shown.left() - step) * unit);
    const double* const to = std::upper_bound(from, end, (shown.right() + step) * unit);
    QVector<QwtIntervalSample> samples;
    samples.reserve(int(to - from));
    for (const double* at = from; at != to; ++at) {
        const double middle = *at / unit;
        if (std::isnan(parts.data.getYNoConvAt(active, int(at - x))))
            continue;
        const double left = std::max(middle - width / 2, shown.left());
        const double right = std::min(middle + width / 2, shown.right());
        if (left < right) // the canvas goes on a little beyond the window
            samples.append(QwtIntervalSample(parts.data.getYAt(active, int(at - x)), left, right));
    }
    bars->setSamples(samples);
}

// At the end of a live run the window follows the newest bar again, anywhere else it stays.
void BarKind::scrolled(const QRectF& shown)
{
    if (isMoving)
        return;
    const bool isAtEnd = shown.right() >= zoomer->zoomBase().right() - step / 2;
    if (isAtEnd && !parts.data.finalData)
        place.reset();
    else
        place = shown.left() * parts.axes.time().getdT();
    build();
    parts.plot.replot();
}

void BarKind::showSensor(int iSens)
{
    showSensor(iSens, !parts.data.finalData);
}

void BarKind::showSensor(int iSens, bool isRun)
{
    if (parts.curves.size() != parts.data.getNSens())
        setData();
    parts.curves.setActive(iSens);
    parts.curves.designPens();
    showColor();
    const SensorPtr& sensor = parts.data.getSens(parts.curves.activeIndex());
    parts.axes.setDue();
    parts.axes.setText(QwtPlot::yLeft, sensor ? sensor->getNameWithUnit(false) : QString());
    update(isRun);
}

void BarKind::setUserRange(const SensorPtr& sensor, double min, double max)
{
    sensor->barUserMin = min;
    sensor->barUserMax = max;
    sensor->barUserScale = true;
    update();
}

void BarKind::setAutomaticRange(const SensorPtr& sensor)
{
    sensor->barUserScale = false;
    update();
}

#include "data/expdata.h"

#include <algorithm>
#include <cmath>

#include "data/novalue.h"
#include "data/regression.h"

namespace {

constexpr double gateThreshold = 0.1; ///< V, above it the beam is blocked

/// First and last moment at which the beam is blocked for the first time; false without a whole passage.
bool firstPassage(const QVector<double>& v, const QVector<double>& x, double dt, double* t0, double* t1)
{
    if (v.isEmpty() || v.constFirst() > gateThreshold || dt <= 0)
        return false;
    const double start = x.isEmpty() ? 0.0 : x.constFirst(); // not 0 after a crop
    int i = 0;
    while (i < v.size() && !(v.at(i) >= gateThreshold))
        ++i;
    *t0 = start + i * dt;
    while (i < v.size() && !(v.at(i) <= gateThreshold))
        ++i;
    *t1 = start + i * dt;
    return i < v.size() && *t1 > *t0;
}

void fit(int degree, QVector<QPointF> points, double* a, double* b, double* c, double* r)
{
    const auto isGap = [](const QPointF& p) { return std::isnan(p.x()) || std::isnan(p.y()); };
    points.erase(std::remove_if(points.begin(), points.end(), isGap), points.end());
    if (degree == 1) {
        *a = 0.0;
        ExpData::linearRegression(points, b, c, r);
    } else {
        ExpData::quadRegression(points, a, b, c, r);
    }
}

} // namespace

QString ExpData::smoothedName(const QString& name) const
{
    return QStringLiteral("%1 (%2)").arg(name, tr("smooth"));
}

void ExpData::smoothCurve()
{
    if (!getActiveSens() || getYSize(iSelectedSensor) == 0)
        return;
    const SensorPtr& sensor = sensors.at(iSelectedSensor);
    sensor->name = smoothedName(sensor->name);
    y[iSelectedSensor] = derivation(CURVE_SMOOTH).of(y.at(iSelectedSensor));
    deviations.clear();
    followWhole(iSelectedSensor);
    needSave = true;
}

DerivedCurve ExpData::derivation(int type) const
{
    const bool isSlope = type == CURVE_DERIV;
    return DerivedCurve(isSlope ? DerivedCurve::Slope : DerivedCurve::Smooth, x, samplePeriod(),
                        isSlope ? derivWindow : smoothKernel);
}

/// The channel `index` that is derived from another.
SensorPtr ExpData::derivedFrom(int origin, int index, int type) const
{
    SensorPtr sensor = ownCopy(sensors.at(origin)); // its unit is the origin's
    sensor->ID = SENSOR_SPECIAL;
    sensor->specialType = type;
    sensor->specialOriginIndex = origin;
    sensor->isVirtual = true;
    sensor->inLoggerIndex = index;
    sensor->virtualIndex = -1;
    sensor->readSetMinMax = sensor->readClassMinMax = sensor->readClassSetMinMax = false;
    sensor->barUserScale = false;
    return sensor;
}

void ExpData::addSpecialCurve(int type)
{
    const int origin = iSelectedSensor;
    const SensorPtr from = getActiveSens();
    if (!from || getYSize(origin) < 2)
        return;
    const int added = sensors.size();
    sensors.append(derivedFrom(origin, added, type));
    resizeChannels(sensors.size());
    leftPad[added] = leftPad.at(origin);
    y[added] = derivation(type).of(y.at(origin));
    findMinMax(y.at(added), minY[added], maxY[added]);
    describeSpecialCurve(added, *from);
    needSave = true;
}

/// Name, unit and ranges of a derived channel.
void ExpData::describeSpecialCurve(int iSens, const Sensor& origin)
{
    Sensor& sensor = *sensors.at(iSens);
    if (sensor.specialType != CURVE_DERIV) {
        sensor.name = smoothedName(origin.name);
        sensor.unitName = origin.unitName;
        sensor.minView = origin.minView;
        sensor.maxView = origin.maxView;
        return;
    }
    sensor.isRate = true;
    sensor.name = origin.name == QLatin1String("Distance") ? tr("Speed") : tr("%1/time").arg(origin.name);
    sensor.unitName = tr("%1/s").arg(origin.unitName);
    sensor.min = getMinY(iSens);
    sensor.max = getMaxY(iSens);
    const double margin = 0.1 * (sensor.max - sensor.min);
    sensor.minView = sensor.min - margin;
    sensor.maxView = sensor.max + margin;
}

int ExpData::timedSamples(int iSens) const
{
    return qMin(x.size(), getYSize(iSens));
}

double ExpData::interpolateY(int iSens, double X) const
{
    const int n = timedSamples(iSens);
    if (n == 0)
        return 0.0;
    if (n == 1 || X < x.constFirst())
        return getYAt(iSens, 0);
    const auto above = std::upper_bound(x.cbegin() + 1, x.cbegin() + n, X);
    const int i = qMin(int(above - x.cbegin()), n - 1);
    const double y0 = getYAt(iSens, i - 1);
    const double y1 = getYAt(iSens, i);
    const double width = x.at(i) - x.at(i - 1);
    if (width > 0 && X == x.at(i - 1))
        return y0; // also where a gap follows
    return width > 0 ? y0 + ((X - x.at(i - 1)) / width) * (y1 - y0) : y1;
}

double ExpData::tangentSlope(int iSens, double x1, double reach) const
{
    const int n = timedSamples(iSens);
    if (n < 2 || !sensors.at(iSens) || x1 < x.constFirst() || x1 > x.at(n - 1) ||
        std::isnan(interpolateY(iSens, x1)))
        return noValue;
    const auto firstFrom = [&](double t) {
        return int(std::lower_bound(x.cbegin(), x.cbegin() + n, t) - x.cbegin());
    };
    const int after = qMin(firstFrom(x1), n - 1);
    const int nearest = after > 0 && x1 - x.at(after - 1) < x.at(after) - x1 ? after - 1 : after;
    const int beside = qMax(nearest - firstFrom(x1 - reach), firstFrom(x1 + reach) - 1 - nearest);
    const int window = qBound(DerivedCurve::leastWindow, 2 * beside + 1, DerivedCurve::mostWindow);
    const DerivedCurve slope(DerivedCurve::Slope, x, samplePeriod(), window);
    return slope.fittedSlope(y.at(iSens), nearest, x1) * sensors.at(iSens)->altUnit().factor;
}

/// The curve between two times with both ends interpolated, in the unit on display.
QVector<QPointF> ExpData::span(int iSens, double x1, double x2) const
{
    const int n = timedSamples(iSens);
    QVector<QPointF> points{{x1, interpolateY(iSens, x1)}};
    for (int i = int(std::upper_bound(x.cbegin(), x.cbegin() + n, x1) - x.cbegin()); i < n && x.at(i) < x2;
         ++i)
        points.append({x.at(i), getYAt(iSens, i)});
    points.append({x2, interpolateY(iSens, x2)});
    return points;
}

double ExpData::integral(int iSens, double x1, double x2) const
{
    const QVector<QPointF> points = span(iSens, x1, x2);
    double area = 0.0;
    for (int i = 1; i < points.size(); ++i) {
        const QPointF step = points.at(i) - points.at(i - 1);
        if (!std::isnan(step.y()))
            area += step.x() * (points.at(i).y() + points.at(i - 1).y()) / 2;
    }
    return area;
}

void ExpData::regression(int degree, int iSens, double x1, double x2, double* a, double* b, double* c,
                         double* r) const
{
    fit(degree, span(iSens, x1, x2), a, b, c, r);
}

void ExpData::regressionXY(int degree, int iSens, double x1, double x2, double y1, double y2, double* a,
                           double* b, double* c, double* r) const
{
    int first = nearestXY(iSens, x1, y1);
    int last = nearestXY(iSens, x2, y2);
    if (last < first)
        std::swap(first, last);
    QVector<QPointF> points{{x1, y1}};
    for (int i = qMax(0, first); i <= last; ++i)
        points.append({getYAt(xySensIndex, i), getYAt(iSens, i)});
    points.append({x2, y2});
    fit(degree, points, a, b, c, r);
}

int ExpData::nearestXY(int iSens, double px, double py) const
{
    const double xRange = getMaxY(xySensIndex) - getMinY(xySensIndex);
    const double yRange = getMaxY(iSens) - getMinY(iSens);
    const int n = qMin(getYSize(xySensIndex), getYSize(iSens));
    int nearest = -1;
    float smallest = 99999999.0F;
    for (int i = 0; i < n; ++i) {
        const double dx = (getYAt(xySensIndex, i) - px) / (xRange > 0 ? xRange : 1.0);
        const double dy = (getYAt(iSens, i) - py) / (yRange > 0 ? yRange : 1.0);
        const float distance = float(dx * dx + dy * dy);
        if (distance < smallest) {
            smallest = distance;
            nearest = i;
        }
    }
    return nearest;
}

void ExpData::linearRegression(const QVector<QPointF>& points, double* a, double* b, double* r)
{
    const LineFit line = fitLine(points);
    *a = line.slope;
    *b = line.intercept;
    *r = line.r;
}

void ExpData::quadRegression(const QVector<QPointF>& points, double* a, double* b, double* c, double* r)
{
    const ParabolaFit parabola = fitParabola(points);
    *a = parabola.a;
    *b = parabola.b;
    *c = parabola.c;
    *r = parabola.r;
}

void ExpData::photoSpeed(int iSens, double* speed, double* midTime, double* deltaT, double* width) const
{
    *speed = *midTime = *deltaT = *width = 0.0;
    double t0 = 0.0;
    double t1 = 0.0;
    const SensorPtr& gate = getSens(iSens);
    if (!gate || !Sensor::isPhotoGate(gate->ID) || !firstPassage(getYNoConv(iSens), x, dt, &t0, &t1))
        return;
    *width = cardWidth;
    *deltaT = t1 - t0;
    *speed = *width / *deltaT;
    *midTime = (t0 + t1) / 2;
}

void ExpData::photoAccel(int iSens1, int iSens2, double* accel, double* deltaV, double* midTime,
                         double* deltaT) const
{
    double speed1 = 0.0;
    double speed2 = 0.0;
    double mid1 = 0.0;
    double mid2 = 0.0;
    double blocked = 0.0;
    double width = 0.0;
    photoSpeed(iSens1, &speed1, &mid1, &blocked, &width);
    photoSpeed(iSens2, &speed2, &mid2, &blocked, &width);
    if (speed1 == 0.0 || speed2 == 0.0 || mid1 == mid2)
        return;
    *deltaV = mid1 < mid2 ? speed2 - speed1 : speed1 - speed2;
    *deltaT = std::fabs(mid1 - mid2);
    *midTime = (mid1 + mid2) / 2;
    *accel = *deltaV / *deltaT;
}

void ExpData::calcStat(double* min, double* max, double* avg, double* stdv) const
{
    *min = *max = *avg = *stdv = 0.0;
    QVector<double> values = getY(iSelectedSensor);
    values.erase(std::remove_if(values.begin(), values.end(), [](double v) { return std::isnan(v); }),
                 values.end());
    if (values.isEmpty())
        return;
    const auto range = std::minmax_element(values.cbegin(), values.cend());
    *min = *range.first;
    *max = *range.second;
    double sum = 0.0;
    for (const double value : values)
        sum += value;
    *avg = sum / values.size();
    double squares = 0.0;
    for (const double value : values)
        squares += (value - *avg) * (value - *avg);
    *stdv = std::sqrt(squares / values.size());
}

#include "graph/scalemanager.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QStringList>

#include <qwt_scale_map.h>

#include "data/expdata.h"

namespace {

constexpr double yFracRange = 0.1; // the smallest span and the margin, as fractions
constexpr double NeedMoreFrac = 0.75;
constexpr double maxSmallestSpan = 10;
constexpr double samplesAhead = 25;

using ScalePtr = QSharedPointer<oneScale>;

/// What no automatic range goes below. Of a derived or imported channel only the data are known.
double lowestOf(const Sensor& sensor)
{
    return sensor.isRate || sensor.ID == SENSOR_SPECIAL ? std::numeric_limits<double>::lowest() : sensor.min;
}

} // namespace

oneScale::oneScale(double dataMin, double dataMax, double sensRange, double minLimit, int groupIndex,
                   const QString& groupName, const QString& sensName)
    : dataMin(dataMin)
    , dataMax(dataMax)
    , sensRange(sensRange)
    , minLimit(minLimit)
    , groupIndex(groupIndex)
    , groupName(groupName)
    , sensName(sensName)
{
    calcScales();
}

void oneScale::calcScales()
{
    userScale = false;
    calcScales(0, 1);
}

void oneScale::calcScales(double minZoom, double maxZoom)
{
    const double midY = (dataMin + dataMax) / 2;
    double minY = std::min(yFracRange * sensRange, maxSmallestSpan);
    if (!(minY > 0)) // a column that never changes and of which nothing else is known
        minY = midY == 0 ? 1 : yFracRange * std::abs(midY);
    const double yDataR = dataMax - dataMin;
    if (yDataR < NeedMoreFrac * minY) {
        scaleFullMin = std::max(midY - minY / 2, minLimit);
        scaleFullMax = midY + minY / 2;
        if (scaleFullMax < minLimit)
            scaleFullMax = minLimit + minY / 2;
    } else {
        scaleFullMin = std::max(dataMin - yFracRange * yDataR, minLimit);
        scaleFullMax = dataMax + yFracRange * yDataR;
    }
    if (least.min < least.max) {
        scaleFullMin = dataMin < least.min ? std::min(scaleFullMin, least.min) : least.min;
        scaleFullMax = dataMax > least.max ? std::max(scaleFullMax, least.max) : least.max;
    }
    marginBelow = scaleFullMin > minLimit ? dataMin - scaleFullMin : std::numeric_limits<double>::max();
    marginAbove = scaleFullMax - dataMax;
    setZoomScales(minZoom, maxZoom);
}

double oneScale::marginTaken(double newDataMin, double newDataMax) const
{
    return userScale ? 0
                     : std::max((dataMin - newDataMin) / marginBelow, (newDataMax - dataMax) / marginAbove);
}

void oneScale::grow(double newDataMin, double newDataMax, double part, double zoomMin, double zoomMax)
{
    const bool isDown = newDataMin < dataMin;
    const bool isUp = newDataMax > dataMax;
    updateScale(newDataMin, newDataMax, zoomMin, zoomMax);
    if (userScale)
        return;
    const double room = part * (dataMax - dataMin);
    if (isDown && scaleFullMin > minLimit) {
        scaleFullMin = std::max(scaleFullMin - room, minLimit);
        marginBelow += room;
    }
    if (isUp) {
        scaleFullMax += room;
        marginAbove += room;
    }
    setZoomScales(zoomMin, zoomMax);
}

void oneScale::keepView(const ExpData& data, int iSens)
{
    const SensorPtr& sensor = data.getSens(iSens);
    const Sensor::View* fixed = sensor ? Sensor::fixedView(sensor->ID) : nullptr;
    if (!fixed)
        return;
    least = *fixed;
    if (data.getYSize(iSens) == 0) // extremes of 0 that nobody measured
        dataMin = dataMax = least.min;
    calcScales();
}

void oneScale::setZoomScales(double minZoom, double maxZoom)
{
    scaleZoomMin = scaleFullMin + minZoom * fullSpan();
    scaleZoomMax = scaleFullMin + maxZoom * fullSpan();
}

void oneScale::updateScale(double newDataMin, double newDataMax, double zoomMin, double zoomMax)
{
    dataMin = newDataMin;
    dataMax = newDataMax;
    if (!userScale)
        calcScales(zoomMin, zoomMax);
}

void oneScale::setUserScales(double uMin, double uMax, bool isClass)
{
    scaleFullMin = scaleZoomMin = uMin;
    scaleFullMax = scaleZoomMax = uMax;
    if (!isClass)
        userScale = true;
}

void oneScale::showAs(const oneScale& other)
{
    scaleFullMin = other.scaleFullMin;
    scaleFullMax = other.scaleFullMax;
    scaleZoomMin = other.scaleZoomMin;
    scaleZoomMax = other.scaleZoomMax;
}

void scaleManager::setScales(const ExpData* data, bool isClass)
{
    constexpr int firstGroupIndex = 10;
    scales.clear();
    isRepeated = data->isRepeatMode();
    for (int i = 0; i < data->getNSens(); ++i) {
        const SensorPtr& sensor = data->getSens(i);
        if (!sensor) {
            scales.append(ScalePtr::create(0.0, 1.0, 1.0, 0.0, firstGroupIndex + i, QString(), QString()));
            continue;
        }
        const Sensor::View held = extremes(*data, i);
        const auto scale = ScalePtr::create(held.min, held.max, sensor->max - sensor->min, lowestOf(*sensor),
                                            firstGroupIndex + i, sensor->groupName, sensor->name);
        scales.append(scale);
        scale->quantity = sensor->quantity();
        scale->isFilled = data->getYSize(i) > 0 && !data->isMeaningless(i);
        scale->keepView(*data, i);
        scale->setZoomScales(zoomMin, zoomMax);
        takeFixedRange(i, *sensor, isClass);
    }
    share();
}

/// What the automatic range of a channel has to hold, in the unit on display: its samples and what was
/// predicted of it.
Sensor::View scaleManager::extremes(const ExpData& data, int i) const
{
    Sensor::View held{data.getMinY(i), data.getMaxY(i)};
    const SensorPtr& sensor = data.getSens(i);
    const Prediction* const prediction = Predictions::of(data, i);
    if (data.getYSize(i) == 0 && (isOpen || prediction))
        held = {sensor->min, sensor->max};
    for (const QPointF& point : prediction ? prediction->points : QVector<QPointF>()) {
        const double shown = sensor->convertToAltUnit(point.y());
        held = {std::min(held.min, shown), std::max(held.max, shown)};
    }
    return held;
}

void scaleManager::updateScales(const ExpData* data)
{
    follow(data, false);
}

void scaleManager::updateClassScales(const ExpData* data)
{
    follow(data, true);
}

void scaleManager::follow(const ExpData* data, bool isClass)
{
    isRepeated = data->isRepeatMode();
    const int n = std::min(data->getNSens(), scales.size());
    for (int i = 0; i < n; ++i) {
        const SensorPtr& sensor = data->getSens(i);
        if (!sensor)
            continue;
        takeFixedRange(i, *sensor, isClass);
        scales[i]->isFilled = data->getYSize(i) > 0 && !data->isMeaningless(i);
        const Sensor::View held = extremes(*data, i);
        if (data->getYSize(i) > 0 || held.min < held.max)
            scales[i]->updateScale(held.min, held.max, zoomMin, zoomMax);
    }
    share();
}

/// The channel says whether its range is fixed; a zoom into that range stays.
void scaleManager::takeFixedRange(int i, const Sensor& sensor, bool isClass)
{
    oneScale& scale = *scales[i];
    double low = isClass ? sensor.classMinView : sensor.minView;
    double high = isClass ? sensor.classMaxView : sensor.maxView;
    bool isFixed = isClass ? sensor.readClassSetMinMax : sensor.readSetMinMax;
    if (Sensor::isPhotoGate(sensor.ID)) {
        // Both levels of the gate, 0 and 5 V, stay clear of the edges.
        scale.dataMin = 0;
        scale.dataMax = scale.sensRange = 5;
        low = -1;
        high = 7;
        isFixed = true;
    }
    if (!isFixed) {
        if (scale.isUserScale()) {
            scale.calcScales();
            scale.setZoomScales(zoomMin, zoomMax);
        }
    } else if (!scale.isUserScale() || scale.scaleFullMin != low || scale.scaleFullMax != high) {
        scale.setUserScales(low, high, false);
    }
}

QVector<ScalePtr> scaleManager::groupOf(const oneScale& scale) const
{
    QVector<ScalePtr> group;
    for (const ScalePtr& other : scales) {
        if (other.data() == &scale || (!scale.quantity.isEmpty() && other->quantity == scale.quantity))
            group.append(other);
    }
    return group;
}

/// The scale fixed by hand that decides on the range of sensor `iSens`; null where it is automatic.
ScalePtr scaleManager::fixedFor(int iSens) const
{
    const QVector<ScalePtr> group = groupOf(*scales.at(iSens));
    const auto fixed = std::find_if(group.cbegin(), group.cend(),
                                    [](const ScalePtr& scale) { return scale->isUserScale(); });
    return fixed != group.cend() ? *fixed : ScalePtr();
}

void scaleManager::share()
{
    QStringList done;
    for (int i = 0; i < scales.size(); ++i) {
        const QString& quantity = scales.at(i)->quantity;
        if (quantity.isEmpty() || done.contains(quantity))
            continue;
        done.append(quantity);
        const QVector<ScalePtr> group = groupOf(*scales.at(i));
        const ScalePtr fixed = fixedFor(i);
        if (!fixed)
            shareAmong(group);
        else
            std::for_each(group.cbegin(), group.cend(),
                          [&](const ScalePtr& scale) { scale->showAs(*fixed); });
    }
    if (isRepeated)
        unifyRepeatedScales();
}

void scaleManager::growScales(const ExpData* data, bool isClass)
{
    constexpr double most = 0.7;  // of a margin, and the scale moves
    constexpr double some = 0.25; // and it goes along when another one does
    // What a steady change takes in the next samples, or a quarter of the span so far.
    const double room = std::max(0.25, samplesAhead / std::max(1, data->getXSize()));
    isRepeated = data->isRepeatMode();
    double taken = 0;
    const int n = std::min(data->getNSens(), scales.size());
    for (int i = 0; i < n; ++i) {
        const SensorPtr& sensor = data->getSens(i);
        if (!sensor || data->getYSize(i) == 0)
            continue;
        takeFixedRange(i, *sensor, isClass);
        const Sensor::View held = extremes(*data, i);
        const bool isNew = !scales[i]->isFilled && !data->isMeaningless(i);
        taken = std::max(taken, isNew ? 1 : scales[i]->marginTaken(held.min, held.max));
    }
    for (int i = 0; i < n && taken > most; ++i) {
        if (!data->getSens(i) || data->getYSize(i) == 0)
            continue;
        oneScale& scale = *scales[i];
        const Sensor::View held = extremes(*data, i);
        const bool isNew = !scale.isFilled;
        scale.isFilled = !data->isMeaningless(i);
        if (isNew)
            scale.updateScale(held.min, held.max, zoomMin, zoomMax);
        else if (scale.marginTaken(held.min, held.max) > some)
            scale.grow(held.min, held.max, room, zoomMin, zoomMax);
    }
    if (isClass || taken > most)
        share();
}

/// The range that the automatic scales of a group need together; one without data asks for none.
void scaleManager::shareAmong(const QVector<ScalePtr>& group)
{
    const bool isAnyFilled =
        std::any_of(group.cbegin(), group.cend(), [](const ScalePtr& scale) { return scale->isFilled; });
    double min = std::numeric_limits<double>::max();
    double max = std::numeric_limits<double>::lowest();
    for (const ScalePtr& scale : group) {
        if (isAnyFilled && !scale->isFilled)
            continue;
        min = std::min(min, scale->scaleFullMin);
        max = std::max(max, scale->scaleFullMax);
    }
    for (const ScalePtr& scale : group) {
        scale->scaleFullMin = min;
        scale->scaleFullMax = max;
        scale->setZoomScales(zoomMin, zoomMax);
    }
}

void scaleManager::unifyRepeatedScales()
{
    const int half = scales.size() / 2;
    for (int i = 0; i < half; ++i)
        shareAmong({scales.at(i), scales.at(i + half)});
}

void scaleManager::setZoom(int iSens, double bottom, double top)
{
    if (iSens < 0 || iSens >= scales.size() || scales.at(iSens)->fullSpan() == 0)
        return;
    const oneScale& active = *scales.at(iSens);
    zoomMin = (bottom - active.scaleFullMin) / active.fullSpan();
    zoomMax = (top - active.scaleFullMin) / active.fullSpan();
    for (const ScalePtr& scale : qAsConst(scales)) {
        if (!scale->isUserScale())
            scale->calcScales(zoomMin, zoomMax);
    }
    if (const ScalePtr fixed = fixedFor(iSens)) {
        fixed->scaleZoomMin = bottom;
        fixed->scaleZoomMax = top;
    }
    share();
}

void scaleManager::setZoomOut()
{
    zoomMin = 0;
    zoomMax = 1;
    for (const ScalePtr& scale : qAsConst(scales)) {
        if (scale->isUserScale())
            scale->setZoomScales(0, 1);
        else
            scale->calcScales();
    }
    share();
}

double scaleManager::getScaleMin(int iSens) const
{
    return iSens >= 0 && iSens < scales.size() ? scales.at(iSens)->scaleZoomMin : 0;
}

double scaleManager::getScaleMax(int iSens) const
{
    return iSens >= 0 && iSens < scales.size() ? scales.at(iSens)->scaleZoomMax : 1;
}

void scaleManager::fixScaleY(QwtScaleMap* scl, int iSens) const
{
    if (!scales.isEmpty())
        scl->setScaleInterval(getScaleMin(iSens), getScaleMax(iSens));
}

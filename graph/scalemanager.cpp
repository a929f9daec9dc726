#include "graph/scalemanager.h"

#include <algorithm>

#include <qwt_scale_map.h>

#include "data/expdata.h"

namespace {

constexpr double yFracRange = 0.1; // the smallest span and the margin, as fractions
constexpr double NeedMoreFrac = 0.75;
constexpr double maxSmallestSpan = 10;

using ScalePtr = QSharedPointer<oneScale>;

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
    const double minY = std::min(yFracRange * sensRange, maxSmallestSpan);
    const double yDataR = dataMax - dataMin;
    if (yDataR < NeedMoreFrac * minY) {
        const double midY = (dataMin + dataMax) / 2;
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
    setZoomScales(minZoom, maxZoom);
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

void scaleManager::setScales(const ExpData* data, bool isClass)
{
    constexpr int firstGroupIndex = 10;
    scales.clear();
    tempScales.clear();
    for (int i = 0; i < data->getNSens(); ++i) {
        const SensorPtr& sensor = data->getSens(i);
        if (!sensor) {
            scales.append(ScalePtr::create(0.0, 1.0, 1.0, 0.0, firstGroupIndex + i, QString(), QString()));
            continue;
        }
        const auto scale =
            ScalePtr::create(data->getMinY(i), data->getMaxY(i), sensor->max - sensor->min, sensor->min,
                             firstGroupIndex + i, sensor->groupName, sensor->name);
        scale->keepView(*data, i);
        scales.append(scale);
        if (sensor->isTemperature() && !sensor->isRate)
            tempScales.append(scale);
        if (isClass && sensor->readClassMinMax)
            scale->setUserScales(sensor->classMinView, sensor->classMaxView, true);
        else if (!isClass && sensor->readSetMinMax)
            scale->setUserScales(sensor->minView, sensor->maxView, false);
        if (Sensor::isPhotoGate(sensor->ID)) {
            // Both levels of the gate, 0 and 5 V, stay clear of the edges.
            scale->dataMin = 0;
            scale->dataMax = scale->sensRange = 5;
            scale->setUserScales(-1, 7, false);
        }
    }
    unifyScales(data);
}

bool scaleManager::isOutgrown(const ExpData* data) const
{
    constexpr double leastMargin = 0.03; // of the range, left free on either side
    const int n = std::min(data->getNSens(), scales.size());
    for (int i = 0; i < n; ++i) {
        const SensorPtr& sensor = data->getSens(i);
        const oneScale& scale = *scales[i];
        if (!sensor || sensor->readSetMinMax || scale.isUserScale() || data->getYSize(i) == 0)
            continue;
        const double margin = leastMargin * (scale.scaleFullMax - scale.scaleFullMin);
        if (data->getMaxY(i) > scale.scaleFullMax - margin)
            return true;
        if (scale.scaleFullMin > scale.minLimit && data->getMinY(i) < scale.scaleFullMin + margin)
            return true;
    }
    return false;
}

void scaleManager::updateScales(const ExpData* data)
{
    const int n = std::min(data->getNSens(), scales.size());
    for (int i = 0; i < n; ++i) {
        const SensorPtr& sensor = data->getSens(i);
        if (sensor && !sensor->readSetMinMax && data->getYSize(i) > 0)
            scales[i]->updateScale(data->getMinY(i), data->getMaxY(i), zoomMin, zoomMax);
    }
    unifyScales(data);
}

void scaleManager::updateClassScales(const ExpData* data)
{
    const int n = std::min(data->getNSens(), scales.size());
    for (int i = 0; i < n; ++i) {
        const SensorPtr& sensor = data->getSens(i);
        oneScale& scale = *scales[i];
        if (sensor && sensor->specialType > 0 && i > data->meanIndex())
            scale.updateScale(data->getMinY(i), data->getMaxY(i), zoomMin, zoomMax);
        if (!sensor || !(sensor->readClassMinMax || sensor->readClassSetMinMax))
            continue;
        scale.dataMin = scale.scaleZoomMin = sensor->classMinView;
        scale.dataMax = scale.scaleZoomMax = sensor->classMaxView;
    }
}

void scaleManager::unifyScales(const ExpData* data)
{
    unifyTemperatureScales();
    if (data->isRepeatMode())
        unifyRepeatedScales();
}

void scaleManager::unify(const QVector<ScalePtr>& group, double min, double max)
{
    for (const ScalePtr& scale : group) {
        scale->scaleFullMin = min;
        scale->scaleFullMax = max;
        scale->setZoomScales(zoomMin, zoomMax);
    }
}

void scaleManager::unifyTemperatureScales()
{
    if (tempScales.size() < 2)
        return;
    double min = 9999;
    double max = -1000;
    for (const ScalePtr& scale : qAsConst(tempScales)) {
        min = std::min(min, scale->scaleFullMin);
        max = std::max(max, scale->scaleFullMax);
    }
    unify(tempScales, min, max);
}

void scaleManager::unifyRepeatedScales()
{
    const int half = scales.size() / 2;
    for (int i = 0; i < half; ++i) {
        const ScalePtr& earlier = scales.at(i);
        const ScalePtr& present = scales.at(i + half);
        unify({earlier, present}, std::min(earlier->scaleFullMin, present->scaleFullMin),
              std::max(earlier->scaleFullMax, present->scaleFullMax));
    }
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
    if (active.isUserScale()) {
        scales[iSens]->scaleZoomMin = bottom;
        scales[iSens]->scaleZoomMax = top;
    }
}

void scaleManager::setZoomOut()
{
    zoomMin = 0;
    zoomMax = 1;
    for (const ScalePtr& scale : qAsConst(scales))
        scale->calcScales();
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

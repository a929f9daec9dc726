#include "data/expdata.h"

#include <algorithm>
#include <cmath>
#include <limits>

void ExpData::findMinMax(const QVector<double>& v, double& min, double& max)
{
    const auto* first = std::find_if(v.cbegin(), v.cend(), [](double value) { return !std::isnan(value); });
    if (first == v.cend())
        return;
    min = max = *first;
    for (const double value : v) { // comparisons with a gap are false
        // Loggers send 0 for a reading that they do not have.
        if (value < min && value != 0.0)
            min = value;
        if (value > max)
            max = value;
    }
}

void ExpData::setSensorScale(int dataIndex, double minView, double maxView)
{
    const SensorPtr& sensor = getSens(dataIndex);
    if (!sensor)
        return;
    sensor->readSetMinMax = minView < maxView;
    if (sensor->readSetMinMax) {
        sensor->minView = sensor->convertToAltUnit(minView);
        sensor->maxView = sensor->convertToAltUnit(maxView);
    }
}

void ExpData::setSensorScaleBar(int dataIndex, double barMinView, double barMaxView)
{
    const SensorPtr& sensor = getSens(dataIndex);
    if (!sensor)
        return;
    sensor->barUserScale = barMinView < barMaxView;
    if (sensor->barUserScale) {
        sensor->barUserMin = sensor->convertToAltUnit(barMinView);
        sensor->barUserMax = sensor->convertToAltUnit(barMaxView);
    }
}

void ExpData::updateMapRange(int iSens)
{
    const SensorPtr& sensor = getSens(iSens);
    if (!sensor)
        return;
    sensor->mapMin = sensor->convertToAltUnit(minY.at(iSens));
    sensor->mapMax = sensor->convertToAltUnit(maxY.at(iSens));
}

/// The view is what was measured, but not less than the view that sensors of the kind keep.
void ExpData::viewExtremes(int iSens)
{
    const SensorPtr& sensor = getSens(iSens);
    if (!sensor)
        return;
    sensor->minView = getMinY(iSens);
    sensor->maxView = getMaxY(iSens);
    if (const Sensor::View* fixed = Sensor::fixedView(sensor->ID)) {
        sensor->minView = qMin(sensor->minView, fixed->min);
        sensor->maxView = qMax(sensor->maxView, fixed->max);
    }
}

/// The view of loaded data: its extremes, but at least a tenth of what the sensor can measure, so that noise
/// does not fill the graph.
void ExpData::setDefaultView(int iSens)
{
    const SensorPtr& sensor = getSens(iSens);
    const double lowest = sensor->convertFromAltUnit(sensor->min);
    const double highest = sensor->convertFromAltUnit(sensor->max);
    const double minRange = (highest - lowest) * 0.1;
    double bottom = minY.at(iSens);
    double top = maxY.at(iSens);
    if (top - bottom < minRange) {
        bottom = (top + bottom) / 2 - minRange / 2;
        if (bottom + minRange > highest)
            bottom = highest - minRange;
        if (bottom < lowest)
            bottom = lowest;
        top = bottom + minRange;
    }
    sensor->minView = sensor->convertToAltUnit(bottom);
    sensor->maxView = sensor->convertToAltUnit(top);
}

void ExpData::makeUniformScales(int ID)
{
    double lowest = std::numeric_limits<double>::max();
    double highest = std::numeric_limits<double>::lowest();
    // The view of a group without a value is what the sensor could measure.
    const bool isAnyFilled =
        std::any_of(y.cbegin(), y.cbegin() + qMax(0, meanIndex()), [&](const QVector<double>& v) {
            const SensorPtr& sensor = getSens(int(&v - y.constData()));
            return !v.isEmpty() && sensor && sensor->ID == ID;
        });
    for (int i = 0; i < meanIndex(); ++i) {
        const SensorPtr& sensor = sensors.at(i);
        if (sensor && sensor->ID == ID && (!isAnyFilled || getYSize(i) > 0)) {
            lowest = qMin(lowest, sensor->minView);
            highest = qMax(highest, sensor->maxView);
        }
    }
    if (lowest > highest)
        return;
    for (int i = 0; i <= meanIndex(); ++i) {
        const SensorPtr& sensor = sensors.at(i);
        if (!sensor || sensor->ID != ID || sensor->readClassSetMinMax)
            continue;
        sensor->classMinView = lowest;
        sensor->classMaxView = highest;
        sensor->readClassMinMax = true;
    }
}

void ExpData::makeUniformScales()
{
    QVector<int> done;
    for (int i = 0; i < meanIndex(); ++i) {
        const SensorPtr& sensor = sensors.at(i);
        const bool isComparable = sensor && sensor->ID != SENSOR_SPECIAL; // columns of a table are anything
        if (isComparable && !done.contains(sensor->ID)) {
            done.append(sensor->ID);
            makeUniformScales(sensor->ID);
        }
    }
}

void ExpData::makeUniformScalesAfterOpen()
{
    for (int i = 0; i < sensors.size(); ++i) {
        const SensorPtr& sensor = sensors.at(i);
        if (!sensor)
            continue;
        sensor->readClassSetMinMax = false;
        viewExtremes(i);
    }
    isAveraged = isAveraged || isLastTheMean();
    makeUniformScales();
}

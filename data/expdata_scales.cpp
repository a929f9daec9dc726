#include "data/expdata.h"

#include <limits>

void ExpData::findMinMax(const QVector<double>& v, double& min, double& max)
{
    if (v.isEmpty())
        return;
    min = max = v.constFirst();
    for (const double value : v) {
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
    for (int i = 0; i < closingChannel(); ++i) {
        const SensorPtr& sensor = sensors.at(i);
        if (sensor && sensor->ID == ID) {
            lowest = qMin(lowest, sensor->minView);
            highest = qMax(highest, sensor->maxView);
        }
    }
    if (lowest > highest)
        return;
    for (const SensorPtr& sensor : qAsConst(sensors)) {
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
    for (int i = 0; i < closingChannel(); ++i) {
        const SensorPtr& sensor = sensors.at(i);
        if (sensor && !done.contains(sensor->ID)) {
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
        sensor->minView = getMinY(i);
        sensor->maxView = getMaxY(i);
    }
    makeUniformScales();
}

#include "data/storedexperiment.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "data/expdata.h"
#include "sensors/sensorsmaster.h"

namespace {

using Channel = StoredExperiment::Channel;

/// For what has units to choose from, one of its kind; 0 for everything else.
int kindOfUnit(const Sensor& sensor)
{
    if (sensor.isTemperature())
        return SENSOR_AMB_TEMP_NTC;
    if (sensor.isDistance())
        return SENSOR_DISTANCE;
    if (sensor.isAirPressure())
        return SENSOR_AIRPRESSURE;
    if (sensor.isSpeed())
        return SENSOR_GPS_SPEED;
    return sensor.isBarometer() ? SENSOR_BAROMETER : 0;
}

/// What a derived or imported channel measures, which its ID does not say.
void tellSpecial(const Sensor& sensor, Channel* channel)
{
    channel->unit = sensor.unitName;
    channel->originID = kindOfUnit(sensor);
    if (channel->originID != 0) {
        const QString shown = Sensor(channel->originID, sensor.units()).unitName;
        channel->unit = Sensor(channel->originID).unitName + sensor.unitName.mid(shown.size());
        channel->isRate = sensor.isRate;
    }
    channel->derivedBy = std::max(0, sensor.specialType);
    if (sensor.calculation)
        channel->recipe = sensor.calculation->recipe();
    else
        channel->originPlace = sensor.specialOriginIndex;
}

Channel channelOf(const ExpData& data, int i, bool isClass)
{
    const SensorPtr& sensor = data.getSens(i);
    Channel channel;
    channel.place = i;
    channel.sensorID = sensor->ID;
    if (sensor->ID == SENSOR_SPECIAL)
        tellSpecial(*sensor, &channel);
    channel.isNamed = true;
    channel.name = sensor->nameForLegend(true);
    channel.group = sensor->groupName;
    channel.ownName = sensor->name;
    channel.isRangeFixed = isClass ? sensor->readClassSetMinMax : sensor->readSetMinMax;
    channel.minView = BaseUnit::of(sensor, isClass ? sensor->classMinView : sensor->minView);
    channel.maxView = BaseUnit::of(sensor, isClass ? sensor->classMaxView : sensor->maxView);
    channel.barUseScale = sensor->barUserScale;
    channel.barMinView = BaseUnit::of(sensor, sensor->barUserMin);
    channel.barMaxView = BaseUnit::of(sensor, sensor->barUserMax);
    channel.curveMode = data.curveModeHint.value(i, -1);
    channel.isOut = isClass && data.isOut(i);
    channel.leftPad = data.getLeftPad(i);
    // Of the base unit, in which the values stand, and not of the unit that is on display.
    const SensorRow* row = sensorRow(sensor->ID);
    channel.decimals = int(row ? row->prec : sensor->precision) + 1;
    if (!data.isMeaningless(i))
        channel.samples = data.getYNoConv(i);
    return channel;
}

/// What the catalogue does not know of a derived or imported channel: unit and digits.
void describeSpecial(Sensor* sensor, const Channel& channel, bool isDerived)
{
    sensor->ID = channel.sensorID;
    sensor->isRate = channel.isRate;
    sensor->specialType = channel.derivedBy; // it stands behind the average of a class
    if (isDerived)
        sensor->unitName += channel.unit.mid(Sensor(channel.originID).unitName.size());
    else
        sensor->unitName = channel.unit;
    sensor->precision = std::max(sensor->precision, double(channel.decimals));
}

/// What only a part of a lesson says of a channel.
void fillPart(Sensor* sensor, int i, const Channel& channel)
{
    if (!channel.ownName.isEmpty()) {
        sensor->name = channel.ownName;
        sensor->groupName = channel.group;
    }
    if (channel.derivedBy > 0 && channel.originPlace < i)
        sensor->specialOriginIndex = channel.originPlace;
}

/// The formula goes on with what stands before its channel.
void restoreCalculation(ExpData* data, int i, const Channel& channel)
{
    Calculation::Recipe recipe = channel.recipe;
    if (recipe.origins.isEmpty() || Calculation::nameOrigins(data->getSensors(), &recipe) > i)
        return;
    recipe.name = channel.ownName;
    recipe.unit = channel.unit;
    data->restoreCalculated(i, recipe, channel.isRangeFixed);
}

void fillChannel(ExpData* data, int i, const Channel& channel, bool append, const StoredExperiment& of)
{
    const bool isDerived = channel.originID != SENSOR_SPECIAL && sensorRow(channel.originID);
    data->addSensorData(i, isDerived ? channel.originID : channel.sensorID, channel.samples,
                        channel.curveMode, append);
    if (channel.sensorID == SENSOR_SPECIAL)
        describeSpecial(data->getSens(i).data(), channel, isDerived);
    const bool isPart = of.isPart && !append;
    if (!isPart || (channel.isRangeFixed && !of.isClass))
        data->setSensorScale(i, channel.minView, channel.maxView);
    else
        data->getSens(i)->readSetMinMax = false; // a sensor that keeps its view does that without being fixed
    if (channel.barUseScale)
        data->setSensorScaleBar(i, channel.barMinView, channel.barMaxView);
    if (channel.isNamed)
        data->setSensorSpecialName(i, channel.name);
    if (isPart)
        fillPart(data->getSens(i).data(), i, channel);
    if (isPart)
        restoreCalculation(data, i, channel);
    data->setLeftPad(i, channel.leftPad);
}

} // namespace

QString BaseUnit::nameOf(const Sensor& sensor)
{
    if (sensor.ID != SENSOR_SPECIAL)
        return Sensor(sensor.ID).unitName;
    Channel channel;
    tellSpecial(sensor, &channel);
    return channel.unit;
}

double BaseUnit::of(const SensorPtr& sensor, double shown, bool isSlope)
{
    constexpr double step = 1e11; // an offset costs digits behind the point
    if (!sensor || kindOfUnit(*sensor) == 0)
        return shown;
    const bool isOffset = sensor->isTemperature() && !sensor->isRate && !isSlope;
    const Sensor::AltUnit unit = sensor->altUnit();
    double base = sensor->needAltUnit() ? (shown - (isSlope ? 0 : unit.offset)) / unit.factor : shown;
    if (isOffset && std::fabs(base) < step)
        base = std::round(base * step) / step;
    return QString::number(base, 'g', 14).toDouble();
}

double BaseUnit::shown(const SensorPtr& sensor, double base, bool isSlope)
{
    if (!sensor || !sensor->needAltUnit())
        return base;
    return isSlope ? base * sensor->altUnit().factor : sensor->convertToAltUnit(base);
}

StoredExperiment StoredExperiment::of(const ExpData& data, bool isPart, bool isClass)
{
    StoredExperiment stored;
    stored.isPart = isPart;
    stored.isClass = isClass;
    stored.rate = data.dt;
    stored.places = data.getNSens();
    stored.activeSens = data.getSelectedSensor();
    stored.xyIndex = data.getXYIndex();
    stored.rightIndex = isPart ? data.getRightIndex() : -1;
    stored.appendIndex = data.getAppendIndex();
    stored.times = data.getX();
    if (isPart)
        stored.predictions = data.predictions;
    for (int i = 0; i < data.getNSens(); ++i) {
        if (data.getSens(i))
            stored.channels.append(channelOf(data, i, isClass));
    }
    return stored;
}

bool StoredExperiment::fill(ExpData* data, bool append) const
{
    const int before = append ? data->getNSens() : 0;
    const int n = channels.size();
    if (append) {
        if (!data->mergeDataFromNewOpen(n, times, rate))
            return false;
    } else {
        data->setDataNew(n, times, rate);
        data->setAppendIndex(appendIndex);
        data->predictions = predictions;
    }
    QVector<int> outs;
    for (int i = 0; i < n; ++i) {
        fillChannel(data, before + i, channels.at(i), append, *this);
        if (channels.at(i).isOut && isPart && !append)
            outs.append(i);
    }
    if (!append)
        data->takeOut(outs);
    if (append)
        data->makeUniformScales();
    data->setSelectedSensor(activeSens);
    if (!append)
        data->setRightIndex(isPart && rightIndex < n ? rightIndex : -1);
    if (xyIndex >= 0)
        data->setXYIndex(xyIndex);
    return true;
}

void StoredExperiment::fixClassRanges(ExpData* data) const
{
    for (int i = 0; i < channels.size(); ++i) {
        const Channel& channel = channels.at(i);
        const SensorPtr& sensor = data->getSens(i);
        if (!sensor || !channel.isRangeFixed || !(channel.minView < channel.maxView))
            continue;
        sensor->classMinView = sensor->convertToAltUnit(channel.minView);
        sensor->classMaxView = sensor->convertToAltUnit(channel.maxView);
        sensor->readClassSetMinMax = true;
    }
}

// Channels that a formula gives.

#include "data/expdata.h"

#include <algorithm>
#include <cmath>

#include "data/calculation.h"

namespace {

SensorPtr calculatedSensor(const Calculation::Recipe& recipe, int index, const Units& units)
{
    const auto calculation = QSharedPointer<const Calculation>::create(recipe, index);
    if (!calculation->isValid())
        return {};
    SensorPtr sensor = SensorPtr::create(SENSOR_SPECIAL, units);
    sensor->name = recipe.name;
    sensor->unitName = recipe.unit;
    sensor->specialType = ExpData::CURVE_FORMULA;
    sensor->specialOriginIndex = recipe.origins.constFirst().place;
    sensor->isVirtual = true;
    sensor->inLoggerIndex = index;
    sensor->virtualIndex = -1;
    sensor->precision = calculation->decimals(0);
    sensor->min = sensor->max = 0; // nobody knows
    sensor->calculation = calculation;
    return sensor;
}

} // namespace

bool ExpData::addCalculated(const Calculation::Recipe& recipe)
{
    const int added = sensors.size();
    const SensorPtr sensor = calculatedSensor(recipe, added, units);
    if (!sensor)
        return false;
    sensors.append(sensor);
    resizeChannels(sensors.size());
    const bool areSamples = needSave || !x.isEmpty();
    calculate(added, 0, x.size() - 1);
    needSave = areSamples;
    return true;
}

void ExpData::restoreCalculated(int channel, const Calculation::Recipe& recipe, bool isRangeFixed)
{
    const SensorPtr& sensor = getSens(channel);
    const auto calculation = QSharedPointer<const Calculation>::create(recipe, channel);
    if (!sensor || !calculation->isValid())
        return;
    sensor->calculation = calculation;
    sensor->specialOriginIndex = recipe.origins.constFirst().place;
    sensor->min = sensor->max = 0; // nobody knows
    sensor->precision = decimalsOf(channel);
    if (!isRangeFixed)
        setDefaultView(channel);
}

/// Rows `first` to `last` of a channel that a formula gives.
void ExpData::calculate(int channel, int first, int last)
{
    const QSharedPointer<const Calculation> calculation = sensors.at(channel)->calculation;
    for (int row = qMax(0, first); row <= last; ++row)
        putValue(channel, row, calculation->at(x, y, row));
    sensors.at(channel)->precision = decimalsOf(channel);
}

int ExpData::decimalsOf(int calculated) const
{
    const double largest = std::max(std::fabs(minY.at(calculated)), std::fabs(maxY.at(calculated)));
    return sensors.at(calculated)->calculation->decimals(largest);
}

/// All of a channel has other values; those that are calculated from it go along.
void ExpData::followWhole(int changed)
{
    QVector<int> others{changed};
    for (int c = changed + 1; c < sensors.size(); ++c) {
        const auto isOf = [&](int place) { return sensors.at(c)->calculation->isOf(place); };
        if (!sensors.at(c) || !sensors.at(c)->calculation ||
            std::none_of(others.cbegin(), others.cend(), isOf))
            continue;
        others.append(c);
        minY[c] = maxY[c] = 0.0;
        y[c].clear();
        calculate(c, 0, x.size() - 1);
    }
}

/// The channels of a new run with those that are calculated from them, as they were before it.
SensorList ExpData::withCalculated(SensorList list) const
{
    for (int c = 0; c < sensors.size(); ++c) {
        const SensorPtr& before = sensors.at(c);
        const auto isIt = [&](const SensorPtr& other) {
            return other && other->calculation && other->name == before->calculation->recipe().name;
        };
        if (isAveraged || !before || !before->calculation || std::any_of(list.cbegin(), list.cend(), isIt))
            continue;
        const auto recipe = Calculation::placed(before->calculation->recipe(), list);
        const SensorPtr sensor = recipe ? calculatedSensor(*recipe, list.size(), units) : SensorPtr();
        if (sensor)
            list.append(sensor);
    }
    return list;
}

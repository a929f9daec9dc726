#include "data/expdata.h"

#include <algorithm>
#include <cmath>
#include <limits>

void ExpData::addSample(double xval, const QVector<double>& values)
{
    needSave = true;
    const int row = hasSlot(firstLive) ? getYSize(firstLive) : x.size();
    if (row >= x.size()) {
        x.append(xval);
        minX = x.size() == 1 ? xval : qMin(minX, xval);
        maxX = x.size() == 1 ? xval : qMax(maxX, xval);
    }
    const int count = qMin(values.size(), y.size() - firstLive);
    for (int i = 0; i < count; ++i) {
        y[firstLive + i].append(values.at(i));
        followValue(firstLive + i, values.at(i));
    }
    if (firstLive + count < y.size())
        followOrigins(row, row);
}

/// Brings the derived channels up to date with their origins, which changed from row `first` to `last`.
void ExpData::followOrigins(int first, int last)
{
    const int end = last;
    for (int c = meanIndex() + 1; c < sensors.size(); ++c) {
        const int origin = sensors.at(c) ? sensors.at(c)->specialOriginIndex : -1;
        if (origin < 0 || origin >= c)
            continue;
        first = qMin(first, getYSize(c));
        if (sensors.at(c)->calculation) {
            calculate(c, first, qMax(last, end));
            continue;
        }
        const DerivedCurve curve = derivation(sensors.at(c)->specialType);
        curve.widen(y.at(origin), &first, &last);
        for (int row = first; row <= last; ++row)
            putValue(c, row, curve.at(y.at(origin), row));
    }
}

/// Stores a value in a row that the channel may not reach yet.
void ExpData::putValue(int iSens, int row, double value)
{
    QVector<double>& channel = y[iSens];
    while (channel.size() <= row)
        channel.append(std::numeric_limits<double>::quiet_NaN());
    channel[row] = value;
    followValue(iSens, value);
}

/// The extremes, and the ranges that go with them, after a value was stored.
void ExpData::followValue(int iSens, double value)
{
    if (std::isnan(value))
        return;
    const auto isThere = [](double v) { return !std::isnan(v); };
    const QVector<double>& v = y.at(iSens);
    // Extremes of 0 can be those of a channel that had no value before.
    const bool isFirst = v.size() == 1 || (minY.at(iSens) == 0.0 && maxY.at(iSens) == 0.0 && value != 0.0 &&
                                           std::count_if(v.cbegin(), v.cend(), isThere) == 1);
    minY[iSens] = isFirst ? value : qMin(minY.at(iSens), value);
    maxY[iSens] = isFirst ? value : qMax(maxY.at(iSens), value);
    followLiveRange(iSens, isFirst);
}

/// The ranges of the map and of the axis go with the extremes.
void ExpData::followLiveRange(int iSens, bool isFirst)
{
    const SensorPtr& sensor = getSens(iSens);
    if (!sensor)
        return;
    const double lowest = minY.at(iSens);
    const double highest = maxY.at(iSens);
    if (isFirst) {
        const float span = float(sensor->max - sensor->min);
        sensor->mapMin = lowest - span * 0.05;
        sensor->mapMax = highest + span * 0.05;
    } else if (highest > lowest) {
        sensor->mapMin = lowest;
        sensor->mapMax = highest;
    }
    if (sensor->needAltUnit())
        updateMapRange(iSens);
    if (!sensor->readSetMinMax)
        viewExtremes(iSens);
}

#include "data/expdata.h"

/// The value of a derived channel in the row being gathered; it reads its origin from the same row.
double ExpData::liveValue(int iSens) const
{
    const int origin = getSens(iSens)->specialOriginIndex;
    const QVector<double>& stored = getYNoConv(repeatExpMode ? origin + row.size() : origin);
    if (origin < 0 || origin >= iSens || stored.isEmpty() || dt <= 0)
        return 0.0;
    return (row.at(origin) - stored.constLast()) / dt;
}

void ExpData::addSample(double xval, const QVector<double>& yval)
{
    needSave = true;
    const int n = repeatExpMode ? sensors.size() / 2 : sensors.size();
    row = yval;
    for (int i = row.size(); i < n && getSens(i) && getSens(i)->ID == SENSOR_SPECIAL; ++i)
        row.append(liveValue(i));
    addRow(xval, row);
}

void ExpData::addRow(double xval, const QVector<double>& yval)
{
    // A repeated run walks along the axis that the run before it made.
    if (!repeatExpMode || x.isEmpty() || xval > x.constLast())
        x.append(xval);
    minX = x.size() == 1 ? xval : qMin(minX, xval);
    maxX = x.size() == 1 ? xval : qMax(maxX, xval);

    const int first = repeatExpMode ? yval.size() : 0;
    for (int i = 0; i < yval.size() && first + i < y.size(); ++i) {
        const int c = first + i;
        y[c].append(yval.at(i));
        const bool isFirst = y.at(c).size() == 1;
        trackExtremes(c, yval.at(i), isFirst);
        followLiveRange(c, isFirst);
    }
}

void ExpData::trackExtremes(int iSens, double value, bool isFirst)
{
    minY[iSens] = isFirst ? value : qMin(minY.at(iSens), value);
    maxY[iSens] = isFirst ? value : qMax(maxY.at(iSens), value);
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
    if (!sensor->readSetMinMax) {
        sensor->minView = sensor->convertToAltUnit(lowest);
        sensor->maxView = sensor->convertToAltUnit(highest);
    }
}

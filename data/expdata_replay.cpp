// A run that is played again: the set grows as it did, out of what it held.

#include "data/expdata.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

/// Only what is missing is copied, so that growing costs by the new rows and going back nothing.
void takeFirst(QVector<double>* column, const QVector<double>& whole, int n)
{
    const int had = qMin(column->size(), n);
    column->reserve(whole.size());
    column->resize(n);
    std::copy(whole.cbegin() + had, whole.cbegin() + n, column->begin() + had);
}

} // namespace

void ExpData::showFirst(const Content& whole, int rows)
{
    const int n = qBound(0, rows, whole.x.size());
    const bool isSpreadKnown = nSens > 0 && deviations.size() == y.at(meanIndex()).size();
    takeFirst(&x, whole.x, n);
    for (int i = 0; i < qMin(nSens, whole.y.size()); ++i) {
        const QVector<double>& all = whole.y.at(i);
        const int had = y.at(i).size();
        takeFirst(&y[i], all, n == whole.x.size() ? all.size() : qMin(n, all.size()));
        const bool isShorter = y.at(i).size() < had;
        if (isShorter || y.at(i).isEmpty())
            minY[i] = maxY[i] = 0.0;
        followRows(i, isShorter ? 0 : had);
    }
    if (isSpreadKnown)
        followSpread();
    else
        deviations.clear();
    updateXExtent();
    finalData = false;
}

void ExpData::showWhole(const Content& whole)
{
    x = whole.x;
    y = whole.y;
    minY = whole.minY;
    maxY = whole.maxY;
    for (int i = 0; i < qMin(sensors.size(), whole.sensors.size()); ++i) {
        if (sensors.at(i) && whole.sensors.at(i))
            *sensors.at(i) = *whole.sensors.at(i);
    }
    deviations.clear();
    updateXExtent();
}

/// The extremes after rows have come, many at once.
void ExpData::followRows(int iSens, int first)
{
    const QVector<double>& v = y.at(iSens);
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (int k = first; k < v.size(); ++k) { // comparisons with a gap are false
        low = v.at(k) < low ? v.at(k) : low;
        high = v.at(k) > high ? v.at(k) : high;
    }
    if (low > high)
        return;
    const bool isFirst =
        minY.at(iSens) == 0.0 && maxY.at(iSens) == 0.0 &&
        std::all_of(v.cbegin(), v.cbegin() + first, [](double value) { return std::isnan(value); });
    minY[iSens] = isFirst ? low : qMin(minY.at(iSens), low);
    maxY[iSens] = isFirst ? high : qMax(maxY.at(iSens), high);
    followLiveRange(iSens, isFirst && low == high);
}

void ExpData::followSpread()
{
    const int rows = isAveraged ? y.at(meanIndex()).size() : 0;
    int row = qMin(deviations.size(), rows);
    deviations.resize(rows);
    for (; row < rows; ++row)
        deviations[row] = spreadAt(row);
}

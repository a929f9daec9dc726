#include "data/rangestatistics.h"

#include "common/common.h"
#include "data/expdata.h"
#include "data/novalue.h"
#include "data/regression.h"

#include <algorithm>
#include <cmath>
#include <numeric>

RangeStatistics RangeStatistics::of(const ExpData& data, const Stretch& stretch)
{
    RangeStatistics result;
    const QVector<double>& y = stretch.y;
    const QString& perName = stretch.xUnit.name;
    result.n = y.size();
    result.unit = stretch.yUnit.name;
    result.areaUnit = perName.isEmpty() || result.unit.isEmpty() ? result.unit + perName
                                                                 : result.unit + QChar(0x00b7) + perName;
    result.slopeUnit = perName.isEmpty() ? result.unit : Common::unitPer(result.unit, perName, 1);
    result.mean = result.deviation = result.min = result.max = result.area = result.slope = noValue;
    if (y.isEmpty())
        return result;
    const auto [least, most] = std::minmax_element(y.cbegin(), y.cend());
    result.min = *least;
    result.max = *most;
    result.mean = std::accumulate(y.cbegin(), y.cend(), 0.0) / y.size();
    double squares = 0;
    for (const double value : y)
        squares += (value - result.mean) * (value - result.mean);
    result.deviation = std::sqrt(squares / y.size());
    if (stretch.isTime && stretch.from < stretch.to)
        result.area = data.integral(stretch.iSens, stretch.from, stretch.to);
    QVector<QPointF> points;
    for (int i = 0; i < y.size(); ++i)
        points.append({stretch.x[i], y[i]});
    result.slope = fitLine(points).slope;
    return result;
}

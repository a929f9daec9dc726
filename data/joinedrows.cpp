#include "data/joinedrows.h"

#include <algorithm>
#include <cmath>

#include "data/novalue.h"

namespace {

void trimEnd(QVector<double>* v)
{
    while (!v->isEmpty() && std::isnan(v->constLast()))
        v->removeLast();
}

} // namespace

bool TimeCuts::contains(double t) const
{
    return std::any_of(cuts.cbegin(), cuts.cend(),
                       [t](const QPair<double, double>& cut) { return t > cut.first && t < cut.second; });
}

void JoinedRows::append(double t, double value, int from)
{
    times.append(t);
    own.append(value);
    source.append(from);
}

JoinedRows JoinedRows::merge(const QVector<double>& before, const QVector<bool>& kept,
                             const QVector<QPointF>& values, double reach)
{
    JoinedRows rows;
    rows.times.reserve(qMax(before.size(), values.size()));
    const auto* value = values.cbegin();
    for (int i = 0; i < before.size(); ++i) {
        if (!kept.at(i))
            continue;
        for (; value != values.cend() && value->x() <= before.at(i) - reach; ++value)
            rows.append(value->x(), value->y(), -1);
        rows.append(before.at(i), noValue, i);
        // Of several within reach of a row the last counts, and one that lies nearer to the next row is its.
        for (; value != values.cend() && value->x() < before.at(i) + reach; ++value) {
            if (i + 1 < before.size() && before.at(i + 1) - value->x() < value->x() - before.at(i))
                break;
            rows.own.last() = value->y();
        }
    }
    for (; value != values.cend(); ++value)
        rows.append(value->x(), value->y(), -1);
    trimEnd(&rows.own);
    return rows;
}

QVector<double> JoinedRows::moved(const QVector<double>& v) const
{
    QVector<double> result(source.size(), noValue);
    for (int row = 0; row < source.size(); ++row)
        result[row] = v.value(source.at(row), noValue);
    trimEnd(&result);
    return result;
}

// Samples that did not arrive, from the memory of the logger that took them.

#include "data/expdata.h"

#include <algorithm>
#include <cmath>

#include "data/novalue.h"

namespace {

/// Where the rows of a filled set come from.
struct FilledRows
{
    struct Row
    {
        int own;    ///< row of the set, -1 for none
        int filler; ///< row of what it is filled with, -1 for none
    };

    QVector<Row> rows;
    QVector<double> times;

    /// Both ascend; two times are one row when they lie nearer than `reach`.
    static FilledRows merge(const QVector<double>& own, const QVector<double>& filler, double reach)
    {
        FilledRows merged;
        int i = 0;
        int k = 0;
        while (i < own.size() || k < filler.size()) {
            const bool hasOwn = i < own.size() && (k == filler.size() || own.at(i) < filler.at(k) + reach);
            const bool hasFiller = k < filler.size() && (i == own.size() || filler.at(k) < own.at(i) + reach);
            merged.times.append(hasOwn ? own.at(i) : filler.at(k));
            merged.rows.append({hasOwn ? i++ : -1, hasFiller ? k++ : -1});
        }
        return merged;
    }
};

double valueAt(const QVector<double>& column, int row)
{
    return row >= 0 && row < column.size() ? column.at(row) : noValue;
}

/// Neither says of any row something else than the other.
bool doAgree(const QVector<double>& own, const QVector<double>& filler, const QVector<FilledRows::Row>& rows)
{
    return std::all_of(rows.cbegin(), rows.cend(), [&](const FilledRows::Row& row) {
        const double a = valueAt(own, row.own);
        const double b = valueAt(filler, row.filler);
        return std::isnan(a) || std::isnan(b) || a == b;
    });
}

} // namespace

int ExpData::fillRows(const QVector<double>& times, const QVector<QVector<double>>& columns)
{
    const int recorded = qMin(columns.size(), y.size());
    FilledRows merged = FilledRows::merge(x, times, samplePeriod() / 2);
    for (int c = 0; c < recorded; ++c) {
        if (!doAgree(y.at(c), columns.at(c), merged.rows))
            return -1;
    }
    int filled = 0;
    QVector<double> newTimes;
    QVector<QVector<double>> newColumns(recorded);
    for (int i = 0; i < merged.rows.size(); ++i) {
        const FilledRows::Row row = merged.rows.at(i);
        if (row.own < 0 && cuts.contains(merged.times.at(i)))
            continue;
        bool isFilled = false;
        for (int c = 0; c < recorded; ++c) {
            const double own = valueAt(y.at(c), row.own);
            const double value = std::isnan(own) ? valueAt(columns.at(c), row.filler) : own;
            isFilled = isFilled || (std::isnan(own) && !std::isnan(value));
            newColumns[c].append(value);
        }
        newTimes.append(merged.times.at(i));
        filled += isFilled ? 1 : 0;
    }
    if (filled > 0)
        takeFilled(newTimes, newColumns);
    return filled;
}

void ExpData::takeFilled(const QVector<double>& times, const QVector<QVector<double>>& columns)
{
    x = times;
    for (int c = 0; c < y.size(); ++c) {
        y[c] = columns.value(c);
        minY[c] = maxY[c] = 0.0;
        findMinMax(y.at(c), minY[c], maxY[c]);
        updateMapRange(c);
        if (sensors.at(c) && !sensors.at(c)->readSetMinMax)
            viewExtremes(c);
    }
    updateXExtent();
    followOrigins(0, x.size() - 1);
    needSave = true;
}

#pragma once

#include <QPair>
#include <QPointF>
#include <QVector>

/// Times that the user took away from a set. Who joins a channel later has none there either.
class TimeCuts
{
public:
    /// From one sample to another, both included; `reach` is half the time between two.
    void add(double from, double to, double reach) { cuts.append({from - reach, to + reach}); }
    void clear() { cuts.clear(); }
    bool contains(double t) const;

private:
    QVector<QPair<double, double>> cuts;
};

/// Rows that several channels share, after one channel came anew. Two times are one row when they lie nearer
/// than half a sample.
struct JoinedRows
{
    QVector<double> times;
    QVector<double> own; ///< the new channel, with gaps
    QVector<int> source; ///< the former row, -1 for none

    /// `kept` says which of the rows `before` others have a value in; `values` ascend by time.
    static JoinedRows merge(const QVector<double>& before, const QVector<bool>& kept,
                            const QVector<QPointF>& values, double reach);
    /// A channel of the former rows in the new ones.
    QVector<double> moved(const QVector<double>& v) const;

private:
    void append(double t, double value, int from);
};

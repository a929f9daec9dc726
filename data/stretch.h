#pragma once

#include <QPointF>
#include <QVector>

#include "data/fittedcurve.h"

class ExpData;

/// The samples of one channel that an analysis is about, in the units on display, gaps left out. Over the
/// time x is in seconds, or counts samples that were taken by hand; over a sensor it is that sensor's value.
struct Stretch
{
    int iSens = -1;
    double from = 0; ///< what it was asked for; of a whole channel what it has
    double to = 0;
    bool isWhole = true;
    bool isTime = true; ///< else over a sensor
    QVector<double> x;
    QVector<double> y;
    FittedCurve::Unit xUnit;
    FittedCurve::Unit yUnit;

    bool isEmpty() const { return x.isEmpty(); }

    static Stretch whole(const ExpData& data, int iSens);
    /// Both ends count; they may come in any order.
    static Stretch between(const ExpData& data, int iSens, double from, double to);
    /// On a path over a sensor: the samples from the one nearest to a point to that nearest to another.
    static Stretch along(const ExpData& data, int iSens, const QPointF& from, const QPointF& to);
};

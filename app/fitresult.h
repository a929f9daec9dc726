#pragma once

#include <QCoreApplication>

#include "app/resulttable.h"
#include "app/subjects.h"
#include "data/fittedcurve.h"

/// A fit of one channel, and whose it is.
struct FitResult : Subject
{
    CurveFit::Fit fit;

    bool isGood() const { return fit.isGood() && !fit.curve.parameters.isEmpty(); }
    FittedCurve curve() const { return {fit, stretch.xUnit, stretch.yUnit}; }
    /// What the curve leaves of each value.
    QVector<double> residuals() const;
};

/// Fits as tables.
class FitTables
{
    Q_DECLARE_TR_FUNCTIONS(FitTables)

public:
    /// Of one fit: a row for each of its numbers, in words and as pure numbers.
    static ResultTable told(const FitResult& result);
    static ResultTable numbers(const FitResult& result);
    /// A row for each group, and mean and standard deviation (n - 1) of the parameters over those that have
    /// them in one unit.
    static ResultTable told(const QVector<FitResult>& results);
    static ResultTable numbers(const QVector<FitResult>& results);
};

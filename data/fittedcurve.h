#pragma once

#include <QStringList>

#include "data/curvefit.h"
#include "sensors/sensor.h"

/// A curve that was fitted to a channel, with the units that its numbers are in. These stay as they were
/// found; who shows the channel in another unit asks for it.
struct FittedCurve
{
    /// What an axis counts in: shown = base * factor + offset.
    struct Unit
    {
        QString name;
        double factor = 1;
        double offset = 0;

        static Unit of(const SensorPtr& sensor);
        bool isSame(const Unit& other) const { return factor == other.factor && offset == other.offset; }
        /// A value of another unit in this one.
        double from(const Unit& other, double value) const;
    };

    static constexpr int longestFormula = 500; ///< characters

    CurveFit::Curve curve;
    QVector<double> errors; ///< of the parameters
    double r2 = 0;
    double rmse = 0;
    int n = 0;
    Unit x;
    Unit y;

    FittedCurve() = default;
    FittedCurve(const CurveFit::Fit& fit, const Unit& x, const Unit& y);

    bool isNone() const { return curve.parameters.isEmpty(); }
    /// A curve can be drawn: it has as many numbers as its formula asks for.
    bool isSound() const;
    /// Of the parameters.
    QStringList names() const;
    QString formula() const;
    /// What a parameter is measured in, empty where nobody knows.
    QString unitOf(int parameter) const;
    /// The same curve for values in another unit, where its form allows that; else as it is.
    FittedCurve in(const Unit& shown) const;
    /// Its heights where the axes count in these units.
    QVector<double> values(const QVector<double>& at, const Unit& shownX, const Unit& shownY) const;

    /// The word for a model in files, and back; false for none.
    static QString key(CurveFit::Model model);
    static bool modelOf(const QString& key, CurveFit::Model* model);
};
bool operator==(const FittedCurve& a, const FittedCurve& b);

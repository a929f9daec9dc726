#pragma once

#include <QPointF>
#include <QVector>

/// Least squares fits. Coefficients and r are not finite where the points do not settle them (all at one x,
/// a curve without any slope has no r).

struct LineFit
{
    double slope = 0.0;
    double intercept = 0.0;
    double r = 0.0; ///< never negative
};

struct ParabolaFit
{
    double a = 0.0; ///< y = a x² + b x + c
    double b = 0.0;
    double c = 0.0;
    double r = 0.0; ///< correlation of measured and fitted y
};

LineFit fitLine(const QVector<QPointF>& points);
ParabolaFit fitParabola(const QVector<QPointF>& points);
/// Slope at `x` of the parabola through the points, or of the line where they stand at two places only. In
/// the middle of evenly spaced points both are the same; at their end the line would lag behind a bend.
double fittedSlope(const QVector<QPointF>& points, double x);

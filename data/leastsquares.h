#pragma once

#include <QVector>

#include <functional>

/// Nonlinear least squares by Levenberg-Marquardt (GNU Scientific Library), with derivatives by differences
/// of the fourth order.
namespace LeastSquares {

/// Writes the model's value at each point for these parameters.
using Values = std::function<void(const double* parameters, double* values)>;

struct Minimum
{
    bool isConverged = false; ///< else `parameters` are the best that were met
    QVector<double> parameters;
    QVector<double> errors; ///< standard errors; not finite without degrees of freedom
    double ssr = 0;         ///< sum of the squared residuals; not finite where the model has no value
};

/// The parameters near `start` that bring the model nearest to `y`. At least one parameter, and not fewer
/// points than parameters.
Minimum minimise(const Values& values, const QVector<double>& y, const QVector<double>& start,
                 int mostIterations = 1000);
/// The sum of the squared residuals.
double squares(const Values& values, const QVector<double>& y, const QVector<double>& parameters);

} // namespace LeastSquares

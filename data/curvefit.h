#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <atomic>

/// Curves through measured points by least squares (Levenberg-Marquardt of the GNU Scientific Library), with
/// the standard errors of their parameters.
namespace CurveFit {

enum class Model
{
    Line,         ///< a x + b
    Parabola,     ///< a x^2 + b x + c
    Proportional, ///< a x
    Exponential,  ///< a exp(b x) + c
    Power,        ///< a x^b, for x above 0
    Logarithm,    ///< a + b ln x, for x above 0
    Sine,         ///< a sin(b x + c) + d
    Gauss,        ///< a exp(-(x - b)^2 / (2 c^2)) + d
    Formula       ///< typed by a person
};
constexpr int nModels = int(Model::Formula) + 1;

/// What a person calls the model.
QString modelName(Model model);
/// "a·exp(b·x) + c"; empty for a typed formula.
QString modelFormula(Model model);
/// "a", "b" and so on; empty for a typed formula.
QStringList parameterNames(Model model);
/// What a parameter is measured in, from the units of the axes: "°C/s". Empty for a number without a unit and
/// for a typed formula, whose units nobody knows.
QString parameterUnit(Model model, int parameter, const QString& xUnit, const QString& yUnit);

/// A model with values for its parameters.
struct Curve
{
    Model model = Model::Line;
    QString expression; ///< of a typed formula
    QVector<double> parameters;

    /// Its values at `x`; not finite where it has none.
    QVector<double> values(const QVector<double>& x) const;
};

struct Fit
{
    QString problem; ///< why there is none, a sentence; the rest is empty then
    Curve curve;
    QStringList names;            ///< of the parameters
    QVector<double> errors;       ///< their standard errors; not finite without degrees of freedom
    int n = 0;                    ///< points that counted
    double r2 = 0;                ///< 1 - SSR / SST, SST about the mean
    double rmse = 0;              ///< sqrt(SSR / n)
    double residualDeviation = 0; ///< sqrt(SSR / (n - parameters)), what the standard errors stand on

    bool isGood() const { return problem.isEmpty(); }
};

/// Fits `model` to the points (x, y), of which those that are not finite, or where the model has no value,
/// are left out. A typed formula stands in `expression`. Without `start` the start values are found by the
/// data; else there must be one for each parameter. Never throws; takes about a microsecond for each point
/// and parameter. Any thread; `stop` (null allowed) may be raised by another one to end it early, without a
/// result.
Fit fit(Model model, const QVector<double>& x, const QVector<double>& y,
        const QString& expression = QString(), const QVector<double>& start = {},
        const std::atomic_bool* stop = nullptr);

} // namespace CurveFit

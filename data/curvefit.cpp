#include "data/curvefit.h"

#include "data/curvefit_start.h"
#include "data/formula.h"
#include "data/leastsquares.h"

#include <QCoreApplication>
#include <QtMath>

#include <cmath>
#include <limits>

namespace {

using CurveFit::Model;

constexpr int mostIterations = 1000;
constexpr int lookIterations = 60; ///< from another start, when there is a result already

struct ModelRow
{
    const char* name;
    const char* formula;
    int parameters;
    const char* units; ///< of each parameter: y, x, s (y/x), q (y/x^2), i (1/x), or - for none
};

/// One row for each Model, in its order.
const ModelRow rows[CurveFit::nModels] = {
    {QT_TRANSLATE_NOOP("CurveFit", "Line"), "a·x + b", 2, "sy"},
    {QT_TRANSLATE_NOOP("CurveFit", "Parabola"), "a·x² + b·x + c", 3, "qsy"},
    {QT_TRANSLATE_NOOP("CurveFit", "Proportional"), "a·x", 1, "s"},
    {QT_TRANSLATE_NOOP("CurveFit", "Exponential"), "a·exp(b·x) + c", 3, "yiy"},
    {QT_TRANSLATE_NOOP("CurveFit", "Power"), "a·x^b", 2, "--"},
    {QT_TRANSLATE_NOOP("CurveFit", "Logarithm"), "a + b·ln(x)", 2, "yy"},
    {QT_TRANSLATE_NOOP("CurveFit", "Sine"), "a·sin(b·x + c) + d", 4, "yi-y"},
    {QT_TRANSLATE_NOOP("CurveFit", "Gauss"), "a·exp(-(x - b)²/(2·c²)) + d", 4, "yxxy"},
    {QT_TRANSLATE_NOOP("CurveFit", "Formula"), "", 0, ""},
};

const ModelRow& rowOf(Model model)
{
    return rows[int(model)];
}

double valueOf(Model model, double x, const double* p)
{
    switch (model) {
    case Model::Line:
        return p[0] * x + p[1];
    case Model::Parabola:
        return (p[0] * x + p[1]) * x + p[2];
    case Model::Proportional:
        return p[0] * x;
    case Model::Exponential:
        return p[0] * std::exp(p[1] * x) + p[2];
    case Model::Power:
        return p[0] * std::pow(x, p[1]);
    case Model::Logarithm:
        return p[0] + p[1] * std::log(x);
    case Model::Sine:
        return p[0] * std::sin(p[1] * x + p[2]) + p[3];
    case Model::Gauss: {
        const double distance = (x - p[1]) / p[2];
        return p[0] * std::exp(-distance * distance / 2) + p[3];
    }
    case Model::Formula:
        break;
    }
    return std::numeric_limits<double>::quiet_NaN();
}

bool needsPositive(Model model)
{
    return model == Model::Power || model == Model::Logarithm;
}

/// The points that a fit can use.
void keepUsable(Model model, const QVector<double>& x, const QVector<double>& y, QVector<double>* usedX,
                QVector<double>* usedY)
{
    const int n = qMin(x.size(), y.size());
    for (int i = 0; i < n; ++i) {
        if (std::isfinite(x[i]) && std::isfinite(y[i]) && (!needsPositive(model) || x[i] > 0)) {
            usedX->append(x[i]);
            usedY->append(y[i]);
        }
    }
}

/// What is the same curve with other numbers is told in one way: amplitudes and widths above 0, the phase
/// between -pi and pi.
void normalise(Model model, QVector<double>* p)
{
    QVector<double>& v = *p;
    if (model == Model::Gauss)
        v[2] = std::fabs(v[2]);
    if (model != Model::Sine)
        return;
    if (v[1] < 0) {
        v[1] = -v[1];
        v[2] = -v[2];
        v[0] = -v[0];
    }
    if (v[0] < 0) {
        v[0] = -v[0];
        v[2] += M_PI;
    }
    v[2] = std::remainder(v[2], 2 * M_PI);
}

QString tr(const char* text)
{
    return QCoreApplication::translate("CurveFit", text);
}

void judge(const LeastSquares::Minimum& minimum, const QVector<double>& y, CurveFit::Fit* fit)
{
    const int free = y.size() - minimum.parameters.size();
    double mean = 0;
    for (const double value : y)
        mean += value / y.size();
    double sst = 0;
    for (const double value : y)
        sst += (value - mean) * (value - mean);
    fit->n = y.size();
    fit->r2 = sst > 0 ? 1 - minimum.ssr / sst : std::numeric_limits<double>::quiet_NaN();
    fit->rmse = std::sqrt(minimum.ssr / y.size());
    fit->residualDeviation =
        free > 0 ? std::sqrt(minimum.ssr / free) : std::numeric_limits<double>::quiet_NaN();
}

} // namespace

QString CurveFit::modelName(Model model)
{
    return tr(rowOf(model).name);
}

QString CurveFit::modelFormula(Model model)
{
    return QString::fromUtf8(rowOf(model).formula);
}

QStringList CurveFit::parameterNames(Model model)
{
    QStringList names;
    for (int i = 0; i < rowOf(model).parameters; ++i)
        names += QString(QChar('a' + i));
    return names;
}

QString CurveFit::parameterUnit(Model model, int parameter, const QString& xUnit, const QString& yUnit)
{
    if (parameter < 0 || parameter >= rowOf(model).parameters)
        return {};
    const QString y = yUnit.isEmpty() ? QStringLiteral("1") : yUnit;
    switch (rowOf(model).units[parameter]) {
    case 'y':
        return yUnit;
    case 'x':
        return xUnit;
    case 'i':
        return xUnit.isEmpty() ? QString() : QStringLiteral("1/") + xUnit;
    case 's':
        return xUnit.isEmpty() ? yUnit : y + QLatin1Char('/') + xUnit;
    case 'q':
        return xUnit.isEmpty() ? yUnit : y + QLatin1Char('/') + xUnit + QChar(0x00b2);
    default:
        return {};
    }
}

QVector<double> CurveFit::Curve::values(const QVector<double>& x) const
{
    QVector<double> y(x.size(), std::numeric_limits<double>::quiet_NaN());
    if (model == Model::Formula) {
        const ::Formula formula(expression);
        if (!formula.isValid() || formula.parameters().size() != parameters.size())
            return y;
        for (int i = 0; i < x.size(); ++i)
            y[i] = formula.value(&x[i], parameters.constData());
        return y;
    }
    if (parameters.size() != rowOf(model).parameters)
        return y;
    for (int i = 0; i < x.size(); ++i)
        y[i] = valueOf(model, x[i], parameters.constData());
    return y;
}

CurveFit::Fit CurveFit::fit(Model model, const QVector<double>& x, const QVector<double>& y,
                            const QString& expression, const QVector<double>& start,
                            const std::atomic_bool* stop)
{
    Fit fit;
    fit.curve.model = model;
    fit.names = parameterNames(model);
    const ::Formula formula(model == Model::Formula ? expression : QString());
    if (model == Model::Formula) {
        fit.curve.expression = formula.expression();
        fit.names = formula.parameters();
        if (!formula.isValid())
            fit.problem = formula.error();
        else if (fit.names.isEmpty())
            fit.problem = tr("The formula has no parameter to find, such as a in a*x.");
        if (!fit.isGood())
            return fit;
    }
    QVector<double> usedX;
    QVector<double> usedY;
    keepUsable(model, x, y, &usedX, &usedY);
    if (usedY.size() < fit.names.size() || (!start.isEmpty() && start.size() != fit.names.size())) {
        fit.problem = needsPositive(model) ? tr("There are too few points with x above 0.")
                                           : tr("There are too few points.");
        return fit;
    }
    const LeastSquares::Values values = [&](const double* p, double* result) {
        const bool isStopped = stop && *stop;
        for (int i = 0; i < usedX.size(); ++i)
            result[i] = isStopped                 ? std::numeric_limits<double>::quiet_NaN()
                        : model == Model::Formula ? formula.value(&usedX[i], p)
                                                  : valueOf(model, usedX[i], p);
    };
    LeastSquares::Minimum minimum;
    if (!start.isEmpty()) {
        minimum = LeastSquares::minimise(values, usedY, start);
    } else {
        // Several, since a start that is near one minimum may be far from the lowest one.
        for (const QVector<double>& first : startValues(model, formula, usedX, usedY)) {
            const bool isOneFound = minimum.isConverged;
            LeastSquares::Minimum next =
                LeastSquares::minimise(values, usedY, first, isOneFound ? lookIterations : mostIterations);
            const bool isBetter =
                std::isfinite(next.ssr) && (minimum.parameters.isEmpty() || next.ssr < minimum.ssr);
            if (isBetter && isOneFound && !next.isConverged)
                next = LeastSquares::minimise(values, usedY, next.parameters, mostIterations);
            if (isBetter)
                minimum = next;
        }
    }
    if (minimum.parameters.isEmpty() || !std::isfinite(minimum.ssr) || !minimum.isConverged) {
        fit.problem = tr("No such curve comes near to the points.");
        return fit;
    }
    fit.curve.parameters = minimum.parameters;
    normalise(model, &fit.curve.parameters);
    fit.errors = minimum.errors;
    judge(minimum, usedY, &fit);
    return fit;
}

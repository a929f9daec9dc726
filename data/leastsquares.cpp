#include "data/leastsquares.h"

#include <gsl/gsl_blas.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_multifit_nlinear.h>

#include <cmath>
#include <limits>
#include <memory>
#include <utility>

namespace {

constexpr double convergedStep = 1e-11; // of each parameter, relative
constexpr double flatStep = 1e-15;      // of the residuals' length, by one iteration
constexpr int flatSteps = 3;            // of them in a row
const double differenceStep = std::pow(std::numeric_limits<double>::epsilon(), 0.2);
constexpr double sizeOfZero = 1e-3;     // a parameter that starts at 0 is stepped as one of this size
constexpr double leastOfLargest = 1e-3; // one that goes through 0 as this part of the largest it has been
constexpr double noImprovement = 1e150; // a residual where the model has none: never an improvement

struct Problem
{
    const LeastSquares::Values& values;
    const QVector<double>& y;
    QVector<double> atPoints[4]; // values of the model at four steps
    QVector<double> stepped;     // parameters
    QVector<double> sizes;       // the largest that each has been
};

int residuals(const gsl_vector* parameters, void* user, gsl_vector* result)
{
    auto* const problem = static_cast<Problem*>(user);
    problem->values(parameters->data, result->data);
    for (size_t i = 0; i < result->size; ++i) {
        const double residual = result->data[i] - problem->y[int(i)];
        result->data[i] = std::isfinite(residual) ? residual : noImprovement;
    }
    return GSL_SUCCESS;
}

int derivatives(const gsl_vector* parameters, void* user, gsl_matrix* result)
{
    auto* const problem = static_cast<Problem*>(user);
    constexpr double places[] = {-2, -1, 1, 2};
    for (size_t p = 0; p < parameters->size; ++p) {
        const double centre = gsl_vector_get(parameters, p);
        // As the machine holds it, so that the quotient is of the step that was really made.
        double& size = problem->sizes[int(p)];
        size = std::fmax(size, std::fabs(centre));
        const double own = std::fmax(std::fabs(centre), leastOfLargest * size);
        volatile double there = centre + differenceStep * (own > 0 ? own : sizeOfZero);
        const double step = there - centre;
        std::copy(parameters->data, parameters->data + parameters->size, problem->stepped.begin());
        for (int k = 0; k < 4; ++k) {
            problem->stepped[int(p)] = centre + places[k] * step;
            problem->values(problem->stepped.constData(), problem->atPoints[k].data());
        }
        const QVector<double>* const at = problem->atPoints;
        for (size_t i = 0; i < result->size1; ++i) {
            const int row = int(i);
            const double slope = (8 * (at[2][row] - at[1][row]) - (at[3][row] - at[0][row])) / (12 * step);
            gsl_matrix_set(result, i, p, std::isfinite(slope) ? slope : 0);
        }
    }
    return GSL_SUCCESS;
}

using Workspace = std::unique_ptr<gsl_multifit_nlinear_workspace, decltype(&gsl_multifit_nlinear_free)>;

Workspace workspaceFor(size_t points, size_t parameters)
{
    gsl_set_error_handler_off(); // an ill-posed fit is told by its result, and not by the end of the program
    gsl_multifit_nlinear_parameters method = gsl_multifit_nlinear_default_parameters();
    method.trs = gsl_multifit_nlinear_trs_lm;
    method.scale = gsl_multifit_nlinear_scale_more;
    method.solver = gsl_multifit_nlinear_solver_qr;
    return {gsl_multifit_nlinear_alloc(gsl_multifit_nlinear_trust, &method, points, parameters),
            &gsl_multifit_nlinear_free};
}

/// A parameter that the points hardly settle goes on moving in its last digits; then the sum of squares tells
/// that the bottom is reached.
bool iterate(gsl_multifit_nlinear_workspace* work, int mostIterations)
{
    double norm = gsl_blas_dnrm2(gsl_multifit_nlinear_residual(work));
    int flat = 0;
    for (int i = 0; i < mostIterations; ++i) {
        const int status = gsl_multifit_nlinear_iterate(work);
        // No step is an improvement any more: it stands at the bottom, as far as numbers tell.
        if (status == GSL_ENOPROG)
            return true;
        if (status != GSL_SUCCESS)
            return false;
        int why = 0;
        if (gsl_multifit_nlinear_test(convergedStep, 0, 0, &why, work) == GSL_SUCCESS)
            return true;
        const double before = std::exchange(norm, gsl_blas_dnrm2(gsl_multifit_nlinear_residual(work)));
        flat = before - norm <= flatStep * before ? flat + 1 : 0;
        if (flat == flatSteps)
            return true;
    }
    return false;
}

QVector<double> standardErrors(gsl_multifit_nlinear_workspace* work, int points, double ssr)
{
    const gsl_matrix* const jacobian = gsl_multifit_nlinear_jac(work);
    const int parameters = int(jacobian->size2);
    const std::unique_ptr<gsl_matrix, decltype(&gsl_matrix_free)> covariance(
        gsl_matrix_alloc(jacobian->size2, jacobian->size2), &gsl_matrix_free);
    QVector<double> errors(parameters, std::numeric_limits<double>::quiet_NaN());
    if (points <= parameters || gsl_multifit_nlinear_covar(jacobian, 0, covariance.get()) != GSL_SUCCESS)
        return errors;
    for (int p = 0; p < parameters; ++p)
        errors[p] =
            std::sqrt(gsl_matrix_get(covariance.get(), size_t(p), size_t(p)) * ssr / (points - parameters));
    return errors;
}

} // namespace

double LeastSquares::squares(const Values& values, const QVector<double>& y,
                             const QVector<double>& parameters)
{
    QVector<double> at(y.size());
    values(parameters.constData(), at.data());
    double sum = 0;
    for (int i = 0; i < y.size(); ++i)
        sum += (at[i] - y[i]) * (at[i] - y[i]);
    return sum;
}

LeastSquares::Minimum LeastSquares::minimise(const Values& values, const QVector<double>& y,
                                             const QVector<double>& start, int mostIterations)
{
    Minimum minimum;
    minimum.parameters = start;
    minimum.ssr = squares(values, y, start);
    minimum.errors = QVector<double>(start.size(), std::numeric_limits<double>::quiet_NaN());
    if (start.isEmpty() || y.size() < start.size() || !std::isfinite(minimum.ssr))
        return minimum;

    const size_t points = size_t(y.size());
    const Workspace work = workspaceFor(points, size_t(start.size()));
    Problem problem{values, y, {}, QVector<double>(start.size()), QVector<double>(start.size())};
    for (QVector<double>& at : problem.atPoints)
        at.resize(y.size());
    gsl_multifit_nlinear_fdf system{};
    system.f = residuals;
    system.df = derivatives;
    system.n = points;
    system.p = size_t(start.size());
    system.params = &problem;
    const gsl_vector_const_view first = gsl_vector_const_view_array(start.constData(), size_t(start.size()));
    if (!work || gsl_multifit_nlinear_init(&first.vector, &system, work.get()) != GSL_SUCCESS)
        return minimum;
    minimum.isConverged = iterate(work.get(), mostIterations);
    const gsl_vector* const found = gsl_multifit_nlinear_position(work.get());
    std::copy(found->data, found->data + found->size, minimum.parameters.begin());
    minimum.ssr = squares(values, y, minimum.parameters);
    minimum.errors = standardErrors(work.get(), y.size(), minimum.ssr);
    return minimum;
}

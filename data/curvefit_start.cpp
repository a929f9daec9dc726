#include "data/curvefit_start.h"

#include "data/leastsquares.h"

#include <gsl/gsl_multifit.h>

#include <QtMath>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <memory>
#include <numeric>

namespace {

using Columns = QVector<QVector<double>>;

constexpr int mostForScan = 600; // points that a scan looks at
constexpr int bestOfScan = 3;    // of its places
constexpr double powerRange = 8; // exponents that are tried, on both sides of 0
constexpr double powerStep = 0.25;
constexpr int formulaTries = 400; // random starts that are judged
constexpr int formulaStarts = 6;  // and those that are followed on a few points
constexpr int formulaEnds = 2;    // and those that are followed on all points
constexpr int formulaPoints = 120;

/// Ordered by x.
struct Points
{
    QVector<double> x;
    QVector<double> y;

    double spanX() const { return x.last() - x.first(); }
};

Points ordered(const QVector<double>& x, const QVector<double>& y)
{
    QVector<int> order(x.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return x[a] < x[b]; });
    Points points;
    for (const int i : order) {
        points.x.append(x[i]);
        points.y.append(y[i]);
    }
    return points;
}

/// Not more than `most` of them, at places without a period that a wave could hide behind.
Points some(const Points& all, int most)
{
    if (all.x.size() <= most)
        return all;
    Points few;
    quint32 state = 12345;
    double place = 0;
    const double step = double(all.x.size()) / most;
    while (place < all.x.size()) {
        state = state * 1664525u + 1013904223u;
        const int i = qMin(int(place + step * (state / 4294967296.0)), all.x.size() - 1);
        few.x.append(all.x[i]);
        few.y.append(all.y[i]);
        place += step;
    }
    return few;
}

/// Coefficients of the columns by linear least squares, and the sum of squares that is left; empty where
/// there is no answer.
QVector<double> linearFit(const Columns& columns, const QVector<double>& y, double* ssr = nullptr)
{
    const size_t n = size_t(y.size());
    const size_t p = size_t(columns.size());
    if (n < p)
        return {};
    const std::unique_ptr<gsl_multifit_linear_workspace, decltype(&gsl_multifit_linear_free)> work(
        gsl_multifit_linear_alloc(n, p), &gsl_multifit_linear_free);
    const std::unique_ptr<gsl_matrix, decltype(&gsl_matrix_free)> matrix(gsl_matrix_alloc(n, p),
                                                                         &gsl_matrix_free);
    const std::unique_ptr<gsl_matrix, decltype(&gsl_matrix_free)> covariance(gsl_matrix_alloc(p, p),
                                                                             &gsl_matrix_free);
    for (size_t i = 0; i < n; ++i) {
        for (size_t k = 0; k < p; ++k)
            gsl_matrix_set(matrix.get(), i, k, columns[int(k)][int(i)]);
    }
    const gsl_vector_const_view measured = gsl_vector_const_view_array(y.constData(), n);
    QVector<double> found(columns.size());
    gsl_vector_view result = gsl_vector_view_array(found.data(), p);
    double left = 0;
    gsl_multifit_linear(matrix.get(), &measured.vector, &result.vector, covariance.get(), &left, work.get());
    if (ssr)
        *ssr = left;
    for (const double value : found) {
        if (!std::isfinite(value))
            return {};
    }
    return found;
}

template<typename Function> QVector<double> column(const QVector<double>& x, Function function)
{
    QVector<double> values(x.size());
    std::transform(x.cbegin(), x.cend(), values.begin(), function);
    return values;
}

QVector<double> ones(int n)
{
    return QVector<double>(n, 1.0);
}

/// Of a model that is linear in its parameters, which are found at once.
QVector<QVector<double>> solved(const Columns& columns, const QVector<double>& y)
{
    const QVector<double> found = linearFit(columns, y);
    return {found.isEmpty() ? QVector<double>(columns.size(), 0.0) : found};
}

/// y - y0 = b (integral of y) - b c (x - x0), which is linear: the exponent comes without iteration.
QVector<QVector<double>> exponential(const Points& points)
{
    const double span = points.spanX() > 0 ? points.spanX() : 1;
    Columns columns(3);
    double area = 0;
    for (int i = 0; i < points.x.size(); ++i) {
        if (i > 0)
            area += (points.y[i] + points.y[i - 1]) / 2 * (points.x[i] - points.x[i - 1]) / span;
        columns[0].append(area);
        columns[1].append((points.x[i] - points.x.first()) / span);
        columns[2].append(1);
    }
    const QVector<double> integral = linearFit(columns, points.y);
    QVector<QVector<double>> starts;
    const double guess = integral.isEmpty() ? -1 : integral[0];
    for (const double rate : {guess, -1.0, 1.0, -5.0, 5.0}) {
        // From the end at which it is small, so that no number is too large.
        const double origin = rate > 0 ? points.x.last() : points.x.first();
        const auto shape = [&](double x) { return std::exp(rate * (x - origin) / span); };
        const QVector<double> linear = linearFit({column(points.x, shape), ones(points.x.size())}, points.y);
        if (!linear.isEmpty() && std::isfinite(rate))
            starts.append({linear[0] * std::exp(-rate * origin / span), rate / span, linear[1]});
    }
    return starts;
}

QVector<QVector<double>> power(const Points& all)
{
    const Points points = some(all, mostForScan);
    const double most = points.x.last();
    QVector<double> best;
    double least = std::numeric_limits<double>::infinity();
    for (double exponent = -powerRange; exponent <= powerRange; exponent += powerStep) {
        double left = 0;
        const QVector<double> linear = linearFit(
            {column(points.x, [&](double x) { return std::pow(x / most, exponent); })}, points.y, &left);
        if (!linear.isEmpty() && left < least) {
            least = left;
            best = {linear[0] * std::pow(most, -exponent), exponent};
        }
    }
    return best.isEmpty() ? QVector<QVector<double>>{{1, 1}} : QVector<QVector<double>>{best};
}

/// How strongly the points swing at multiples of `step`, which is an angular frequency.
QVector<double> swings(const Points& points, double step, int count)
{
    const double mean = std::accumulate(points.y.cbegin(), points.y.cend(), 0.0) / points.y.size();
    QVector<std::complex<double>> turned(points.x.size());
    QVector<std::complex<double>> turn(points.x.size());
    for (int i = 0; i < points.x.size(); ++i) {
        turn[i] = std::polar(1.0, step * (points.x[i] - points.x.first()));
        turned[i] = points.y[i] - mean;
    }
    QVector<double> strengths(count);
    for (int k = 0; k < count; ++k) {
        std::complex<double> sum = 0;
        for (int i = 0; i < turned.size(); ++i) {
            turned[i] *= turn[i];
            sum += turned[i];
        }
        strengths[k] = std::norm(sum);
    }
    return strengths;
}

QVector<QVector<double>> sine(const Points& all)
{
    const double span = all.spanX() > 0 ? all.spanX() : 1;
    const double step = 2 * M_PI / span / 4;
    const Points points = some(all, mostForScan);
    const int count = qMin(2 * all.x.size(), 100000); // up to the shortest wave that the points can show
    const QVector<double> strengths = swings(points, step, count);
    QVector<int> places;
    for (int k = 0; k < qMin(8, count); ++k)
        places.append(k); // less than two waves: a strength tells little there
    QVector<int> order(count);
    std::iota(order.begin(), order.end(), 0);
    const int best = qMin(bestOfScan, count);
    std::partial_sort(order.begin(), order.begin() + best, order.end(),
                      [&](int a, int b) { return strengths[a] > strengths[b]; });
    places += order.mid(0, best);

    QVector<QPair<double, QVector<double>>> judged;
    for (const int place : places) {
        const double w = step * (place + 1);
        double left = 0;
        const QVector<double> linear =
            linearFit({column(points.x, [w](double x) { return std::sin(w * x); }),
                       column(points.x, [w](double x) { return std::cos(w * x); }), ones(points.x.size())},
                      points.y, &left);
        if (!linear.isEmpty())
            judged.append(
                {left, {std::hypot(linear[0], linear[1]), w, std::atan2(linear[1], linear[0]), linear[2]}});
    }
    std::sort(judged.begin(), judged.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    QVector<QVector<double>> starts;
    for (const auto& one : judged.mid(0, bestOfScan))
        starts.append(one.second);
    return starts.isEmpty() ? QVector<QVector<double>>{{1, step, 0, 0}} : starts;
}

/// A hill, and a valley.
QVector<QVector<double>> gauss(const Points& points)
{
    QVector<QVector<double>> starts;
    const auto [low, high] = std::minmax_element(points.y.cbegin(), points.y.cend());
    for (const bool isHill : {true, false}) {
        const double ground = isHill ? *low : *high;
        const auto top = isHill ? high : low;
        const double height = *top - ground;
        if (height == 0)
            continue;
        double area = 0;
        for (int i = 1; i < points.x.size(); ++i)
            area += ((points.y[i] + points.y[i - 1]) / 2 - ground) * (points.x[i] - points.x[i - 1]);
        const double centre = points.x[int(top - points.y.cbegin())];
        const double width = qBound(points.spanX() / 1000, area / height / 2.5, points.spanX());
        for (const double scale : {1.0, 0.2})
            starts.append({height, centre, width * scale, ground});
    }
    return starts.isEmpty() ? QVector<QVector<double>>{{0, points.x.first(), 1, points.y.first()}} : starts;
}

/// Nothing is known of the formula: numbers of all sizes are tried on a few of the points, the best of them
/// are followed.
QVector<QVector<double>> anyFormula(const Formula& formula, const Points& all)
{
    const Points points = some(all, formulaPoints);
    const int n = formula.parameters().size();
    const LeastSquares::Values values = [&](const double* p, double* result) {
        for (int i = 0; i < points.x.size(); ++i)
            result[i] = formula.value(&points.x[i], p);
    };
    quint64 state = 88172645463325252ull;
    const auto random = [&state] { // from -1 to 1
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return double(state >> 11) / double(1ull << 52) - 1;
    };
    QVector<QPair<double, QVector<double>>> judged;
    for (int i = 0; i < formulaTries; ++i) {
        QVector<double> start(n, 1.0);
        for (int k = 0; k < n && i > 0; ++k)
            start[k] = (random() < 0.3 ? -1 : 1) * std::pow(10.0, 4 * random());
        const double left = LeastSquares::squares(values, points.y, start);
        if (std::isfinite(left))
            judged.append({left, start});
    }
    std::sort(judged.begin(), judged.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    QVector<LeastSquares::Minimum> followed;
    for (const auto& one : judged.mid(0, formulaStarts)) {
        const LeastSquares::Minimum near = LeastSquares::minimise(values, points.y, one.second, 100);
        if (std::isfinite(near.ssr))
            followed.append(near);
    }
    std::sort(followed.begin(), followed.end(), [](const auto& a, const auto& b) { return a.ssr < b.ssr; });
    QVector<QVector<double>> starts;
    for (const auto& one : followed.mid(0, formulaEnds))
        starts.append(one.parameters);
    return starts.isEmpty() ? QVector<QVector<double>>{QVector<double>(n, 1.0)} : starts;
}

} // namespace

QVector<QVector<double>> CurveFit::startValues(Model model, const ::Formula& formula,
                                               const QVector<double>& x, const QVector<double>& y)
{
    const Points points = ordered(x, y);
    const QVector<double> one = ones(points.x.size());
    switch (model) {
    case Model::Line:
        return solved({points.x, one}, points.y);
    case Model::Parabola:
        return solved({column(points.x, [](double at) { return at * at; }), points.x, one}, points.y);
    case Model::Proportional:
        return solved({points.x}, points.y);
    case Model::Logarithm:
        return solved({one, column(points.x, [](double at) { return std::log(at); })}, points.y);
    case Model::Exponential:
        return exponential(points);
    case Model::Power:
        return power(points);
    case Model::Sine:
        return sine(points);
    case Model::Gauss:
        return gauss(points);
    case Model::Formula:
        return anyFormula(formula, points);
    }
    return {};
}

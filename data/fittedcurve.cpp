#include "data/fittedcurve.h"

#include "data/formula.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace {

using CurveFit::Model;

struct ModelWords
{
    const char* key;
    /// What another unit of y does to each parameter: s scales it, m moves it as well, - leaves it. Without
    /// an m the curve cannot be moved.
    const char* change;
};

/// One row for each Model, in its order.
constexpr ModelWords modelWords[CurveFit::nModels] = {
    {"line", "sm"},      {"parabola", "ssm"}, {"proportional", "s"}, {"exponential", "s-m"}, {"power", "s-"},
    {"logarithm", "ms"}, {"sine", "s--m"},    {"gauss", "s--m"},     {"formula", ""},
};

} // namespace

FittedCurve::Unit FittedCurve::Unit::of(const SensorPtr& sensor)
{
    if (!sensor)
        return {};
    if (!sensor->needAltUnit())
        return {sensor->unitName, 1, 0};
    return {sensor->unitName, sensor->altUnit().factor, sensor->altUnit().offset};
}

double FittedCurve::Unit::from(const Unit& other, double value) const
{
    return isSame(other) ? value : (value - other.offset) / other.factor * factor + offset;
}

FittedCurve::FittedCurve(const CurveFit::Fit& fit, const Unit& x, const Unit& y)
    : curve(fit.curve)
    , errors(fit.errors)
    , r2(fit.r2)
    , rmse(fit.rmse)
    , n(fit.n)
    , x(x)
    , y(y)
{
}

QStringList FittedCurve::names() const
{
    return curve.model == Model::Formula ? Formula(curve.expression).parameters()
                                         : CurveFit::parameterNames(curve.model);
}

QString FittedCurve::formula() const
{
    return curve.model == Model::Formula ? curve.expression : CurveFit::modelFormula(curve.model);
}

bool FittedCurve::isSound() const
{
    const auto isUnit = [](const Unit& unit) {
        return std::isfinite(unit.factor) && unit.factor != 0 && std::isfinite(unit.offset);
    };
    const QVector<double>& numbers = curve.parameters;
    return !isNone() && curve.expression.size() <= longestFormula && isUnit(x) && isUnit(y) &&
           errors.size() == numbers.size() && names().size() == numbers.size() &&
           std::all_of(numbers.cbegin(), numbers.cend(), [](double number) { return std::isfinite(number); });
}

QString FittedCurve::unitOf(int parameter) const
{
    return CurveFit::parameterUnit(curve.model, parameter, x.name, y.name);
}

FittedCurve FittedCurve::in(const Unit& shown) const
{
    const QLatin1String change(modelWords[int(curve.model)].change);
    const double scale = shown.factor / y.factor;
    const double move = shown.offset - y.offset * scale;
    const bool canMove = std::find(change.begin(), change.end(), 'm') != change.end();
    if (shown.isSame(y) || change.size() != curve.parameters.size() || (move != 0 && !canMove))
        return *this;
    FittedCurve other = *this;
    for (int i = 0; i < change.size(); ++i) {
        if (change.data()[i] == '-')
            continue;
        other.curve.parameters[i] *= scale;
        other.errors[i] *= scale;
        if (change.data()[i] == 'm')
            other.curve.parameters[i] += move;
    }
    other.rmse *= scale;
    other.y = shown;
    return other;
}

QVector<double> FittedCurve::values(const QVector<double>& at, const Unit& shownX, const Unit& shownY) const
{
    QVector<double> places = at;
    for (double& place : places)
        place = x.from(shownX, place);
    QVector<double> heights = curve.values(places);
    for (double& height : heights)
        height = shownY.from(y, height);
    return heights;
}

QString FittedCurve::key(Model model)
{
    return QLatin1String(modelWords[int(model)].key);
}

bool FittedCurve::modelOf(const QString& key, Model* model)
{
    for (int i = 0; i < CurveFit::nModels; ++i) {
        if (key == QLatin1String(modelWords[i].key)) {
            *model = Model(i);
            return true;
        }
    }
    return false;
}

bool operator==(const FittedCurve& a, const FittedCurve& b)
{
    const auto all = [](const FittedCurve& c) {
        return std::make_tuple(c.curve.model, c.curve.expression, c.curve.parameters, c.y.name, c.y.factor,
                               c.y.offset, c.x.name, c.x.factor, c.x.offset);
    };
    return all(a) == all(b);
}

#include "data/fittexts.h"

#include "common/common.h"
#include "data/fittedcurve.h"
#include "data/formula.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace {

/// A name alone, and not within another one.
QRegularExpression alone(const QString& name)
{
    return QRegularExpression(QStringLiteral("(?<![A-Za-z_0-9.])%1(?![A-Za-z_0-9(])").arg(name));
}

} // namespace

QString FitTexts::withUnit(const QString& number, const QString& unit)
{
    return unit.isEmpty() ? number : number + QLatin1Char(' ') + unit;
}

QString FitTexts::formula(const FittedCurve& fit, bool isTime)
{
    QString text = fit.formula();
    if (isTime && !fit.names().contains(QStringLiteral("t")))
        text.replace(alone(QStringLiteral("x")), QStringLiteral("t"));
    return text;
}

QString FitTexts::parameter(const FittedCurve& fit, int i)
{
    return withUnit(Common::withError(fit.curve.parameters.value(i), fit.errors.value(i)), fit.unitOf(i));
}

QString FitTexts::r2(const FittedCurve& fit)
{
    constexpr int fewest = 4;
    constexpr int most = 6;
    if (!std::isfinite(fit.r2))
        return QStringLiteral("–");
    const double lacks = 1 - fit.r2;
    const int decimals = lacks > 0 ? int(std::min(9.0, 1 - std::floor(std::log10(lacks)))) : fewest;
    return Common::myToString(fit.r2, 'f', std::clamp(decimals, fewest, most));
}

QString FitTexts::rmse(const FittedCurve& fit)
{
    return withUnit(Common::toSignificant(fit.rmse, 3), fit.y.name);
}

QString FitTexts::lines(const FittedCurve& fit, const QString& name, bool isTime)
{
    QStringList lines{QStringLiteral("%1 = %2").arg(name, formula(fit, isTime))};
    const QStringList names = fit.names();
    for (int i = 0; i < names.size(); ++i)
        lines += QStringLiteral("%1 = %2").arg(names[i], parameter(fit, i));
    lines += QStringLiteral("r² = %1").arg(r2(fit));
    lines += QStringLiteral("RMSE = %1").arg(rmse(fit));
    return lines.join(QLatin1Char('\n'));
}

QString FitTexts::typed(const QString& text, bool isTime)
{
    static const QRegularExpression comma(QStringLiteral("(?<=\\d),(?=\\d)"));
    QString formula = text;
    if (Common::myToString(0.5, 'f', 1).contains(QLatin1Char(',')))
        formula.replace(comma, QStringLiteral("."));
    if (isTime && !Formula(formula).uses(QStringLiteral("x")))
        formula.replace(alone(QStringLiteral("t")), QStringLiteral("x"));
    return formula.trimmed();
}

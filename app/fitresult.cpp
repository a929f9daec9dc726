#include "app/fitresult.h"

#include "common/common.h"
#include "data/fittexts.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

/// A parameter over all groups.
struct Spread
{
    double mean = std::numeric_limits<double>::quiet_NaN();
    double deviation = std::numeric_limits<double>::quiet_NaN(); ///< n - 1
    QString unit;
};

Spread spreadOf(const QVector<FitResult>& results, int parameter)
{
    Spread spread;
    QVector<double> values;
    for (const FitResult& result : results) {
        if (!result.isGood())
            continue;
        const QString unit = result.curve().unitOf(parameter);
        const bool isOther = !values.isEmpty() && (unit != spread.unit);
        if (isOther)
            return {}; // of °C and lux there is no mean
        spread.unit = unit;
        values.append(result.fit.curve.parameters.value(parameter));
    }
    double sum = 0;
    for (const double value : values)
        sum += value;
    if (!values.isEmpty())
        spread.mean = sum / values.size();
    double squares = 0;
    for (const double value : values)
        squares += (value - spread.mean) * (value - spread.mean);
    if (values.size() > 1)
        spread.deviation = std::sqrt(squares / (values.size() - 1));
    return spread;
}

QStringList namesOf(const QVector<FitResult>& results)
{
    const auto good =
        std::find_if(results.cbegin(), results.cend(), [](const FitResult& one) { return one.isGood(); });
    return good == results.cend() ? QStringList() : good->fit.names;
}

} // namespace

QVector<double> FitResult::residuals() const
{
    QVector<double> rest = fit.curve.values(stretch.x);
    for (int i = 0; i < rest.size(); ++i)
        rest[i] = stretch.y[i] - rest[i];
    return rest;
}

ResultTable FitTables::told(const FitResult& result)
{
    ResultTable table{{tr("Name"), tr("Value ± standard error")}, {}};
    if (!result.isGood())
        return table;
    const FittedCurve curve = result.curve();
    for (int i = 0; i < result.fit.names.size(); ++i)
        table.rows.append(QStringList{result.fit.names[i], FitTexts::parameter(curve, i)});
    table.rows.append(QStringList{QStringLiteral("r²"), FitTexts::r2(curve)});
    table.rows.append(QStringList{QStringLiteral("RMSE"), FitTexts::rmse(curve)});
    table.rows.append(QStringList{
        tr("Residual deviation"),
        std::isfinite(result.fit.residualDeviation)
            ? FitTexts::withUnit(Common::toSignificant(result.fit.residualDeviation, 3), curve.y.name)
            : QStringLiteral("–")});
    table.rows.append(QStringList{tr("Number of samples"), QString::number(result.fit.n)});
    return table;
}

ResultTable FitTables::numbers(const FitResult& result)
{
    ResultTable table{{tr("Name"), tr("Value"), tr("Standard error"), tr("Unit")}, {}};
    if (!result.isGood())
        return table;
    const FittedCurve curve = result.curve();
    for (int i = 0; i < result.fit.names.size(); ++i)
        table.rows.append(QStringList{result.fit.names[i], ResultTable::number(curve.curve.parameters[i]),
                                      ResultTable::number(curve.errors[i]), curve.unitOf(i)});
    const auto add = [&table](const QString& name, double value, const QString& unit) {
        table.rows.append(QStringList{name, ResultTable::number(value), QString(), unit});
    };
    add(QStringLiteral("r²"), curve.r2, QString());
    add(QStringLiteral("RMSE"), curve.rmse, curve.y.name);
    add(tr("Residual deviation"), result.fit.residualDeviation, curve.y.name);
    add(tr("Number of samples"), result.fit.n, QString());
    return table;
}

ResultTable FitTables::told(const QVector<FitResult>& results)
{
    const QStringList names = namesOf(results);
    ResultTable table{QStringList{tr("Group"), tr("Sensor")} + names + QStringList{"r²", "RMSE", "n"}, {}};
    for (const FitResult& result : results) {
        QStringList row{result.group, result.channel};
        if (!result.isGood()) {
            table.rows.append(row << result.fit.problem);
            continue;
        }
        for (int i = 0; i < names.size(); ++i)
            row << FitTexts::parameter(result.curve(), i);
        row << FitTexts::r2(result.curve()) << FitTexts::rmse(result.curve())
            << QString::number(result.fit.n);
        table.rows.append(row);
    }
    QStringList mean{tr("Mean ± standard deviation"), QString()};
    for (int i = 0; i < names.size(); ++i) {
        const Spread spread = spreadOf(results, i);
        mean << (std::isfinite(spread.mean)
                     ? FitTexts::withUnit(Common::withError(spread.mean, spread.deviation), spread.unit)
                     : QStringLiteral("–"));
    }
    if (!names.isEmpty())
        table.rows.append(mean << QString() << QString() << QString());
    return table;
}

ResultTable FitTables::numbers(const QVector<FitResult>& results)
{
    const QStringList names = namesOf(results);
    ResultTable table{{tr("Group"), tr("Sensor")}, {}};
    for (const QString& name : names)
        table.header << name << tr("Error of %1").arg(name) << tr("Unit of %1").arg(name);
    table.header << QStringLiteral("r²") << QStringLiteral("RMSE") << QStringLiteral("n");
    for (const FitResult& result : results) {
        QStringList row{result.group, result.channel};
        const FittedCurve curve = result.curve();
        for (int i = 0; result.isGood() && i < names.size(); ++i)
            row << ResultTable::number(curve.curve.parameters[i]) << ResultTable::number(curve.errors[i])
                << curve.unitOf(i);
        if (result.isGood())
            row << ResultTable::number(curve.r2) << ResultTable::number(curve.rmse)
                << QString::number(curve.n);
        table.rows.append(row);
    }
    QStringList means{tr("Mean"), QString()};
    QStringList deviations{tr("Standard deviation"), QString()};
    for (int i = 0; i < names.size(); ++i) {
        const Spread spread = spreadOf(results, i);
        means << ResultTable::number(spread.mean) << QString() << spread.unit;
        deviations << ResultTable::number(spread.deviation) << QString() << spread.unit;
    }
    if (!names.isEmpty())
        table.rows << means << deviations;
    return table;
}

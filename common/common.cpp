#include "common/common.h"

#include "common/settings.h"

#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstdlib>

QString Common::locale;
bool Common::isLocaleRead = false;

namespace {

struct NumberLocale
{
    const char* code;
    QLocale::Language language;
};

// The first row whose code the locale contains decides how numbers are written.
constexpr NumberLocale numberLocales[] = {
    {"ru", QLocale::Russian},    {"es", QLocale::Spanish}, {"az", QLocale::Azerbaijani},
    {"pt", QLocale::Portuguese}, {"pl", QLocale::Polish},
};

QLocale numberLocale()
{
    for (const NumberLocale& row : numberLocales) {
        if (Common::isLocale(QLatin1String(row.code)))
            return QLocale(row.language);
    }
    return QLocale::system();
}

QString superscript(int number)
{
    static const QString signs = QStringLiteral("⁰¹²³⁴⁵⁶⁷⁸⁹");
    QString text = number < 0 ? QStringLiteral("⁻") : QString();
    const QString digits = QString::number(std::abs(number));
    for (const QChar digit : digits)
        text.append(signs.at(digit.digitValue()));
    return text;
}

} // namespace

bool Common::isLocale(const QString& code)
{
    if (!isLocaleRead) {
        locale = Settings::mainStore().value(Settings::language, QStringLiteral("def")).toString();
        if (locale == QLatin1String("def"))
            locale = QLocale::system().name();
        isLocaleRead = true;
    }
    return locale.contains(code);
}

bool Common::isRussian()
{
    return isLocale(QStringLiteral("ru"));
}
bool Common::isAzeri()
{
    return isLocale(QStringLiteral("az"));
}
bool Common::isSpanish()
{
    return isLocale(QStringLiteral("es"));
}
bool Common::isPolish()
{
    return isLocale(QStringLiteral("pl"));
}
bool Common::isPortuguese()
{
    return isLocale(QStringLiteral("pt"));
}

bool Common::isCommaSeparator()
{
    if (isRussian() || isSpanish() || isPortuguese() || isPolish())
        return true;
    // Azeri keeps the comma between columns; any other language follows the decimal sign of its system.
    return !isAzeri() && QLocale::system().decimalPoint() == QLatin1Char(',');
}

QString Common::myToString(double val, char format, int precision)
{
    const QLocale numbers = numberLocale();
    QString text = numbers.toString(val, format, precision);
    return text.remove(numbers.groupSeparator());
}

QString Common::toSignificant(double val, int digits)
{
    constexpr int leastExponent = -4;
    constexpr int mostExponent = 6;
    if (val == 0 || !std::isfinite(val))
        return myToString(val, 'f', 0);
    // Rounding may carry into another digit, so the exponent is that of the rounded number.
    const QStringList parts = QString::number(val, 'e', digits - 1).split(QLatin1Char('e'));
    const int exponent = parts.last().toInt();
    if (exponent >= leastExponent && exponent <= mostExponent)
        return myToString(val, 'f', std::max(0, digits - 1 - exponent));
    return QStringLiteral("%1·10%2").arg(myToString(parts.first().toDouble(), 'f', digits - 1),
                                         superscript(exponent));
}

QString Common::withError(double val, double error)
{
    constexpr double noError = 1e-12; // of the value: what rounding leaves
    constexpr int mostDecimals = 6;
    constexpr int mostExponent = 6;
    constexpr int exactDigits = 6;
    const QString pair = QStringLiteral("%1 ± %2");
    error = std::abs(error);
    if (!std::isfinite(val) || !std::isfinite(error))
        return toSignificant(val);
    if (error <= noError * std::abs(val))
        return pair.arg(toSignificant(val, exactDigits), QStringLiteral("0"));
    const auto exponentOf = [](double number) {
        return QString::number(number, 'e', 1).section(QLatin1Char('e'), 1).toInt();
    };
    const int last = exponentOf(error) - 1; // the place of the last digit that counts
    const int first = std::max(exponentOf(val), last + 1);
    if (-last <= mostDecimals && first <= mostExponent) {
        const double step = std::pow(10.0, std::max(0, last));
        const auto text = [&](double number) {
            return myToString(last > 0 ? std::round(number / step) * step : number, 'f', std::max(0, -last));
        };
        return pair.arg(text(val), text(error));
    }
    const double scale = std::pow(10.0, first);
    return QStringLiteral("(%1)·10%2")
        .arg(pair.arg(myToString(val / scale, 'f', first - last),
                      myToString(error / scale, 'f', first - last)),
             superscript(first));
}

double Common::typedNumber(const QString& text, bool* ok)
{
    const double number = QString(text).replace(QLatin1Char(','), QLatin1Char('.')).toDouble(ok);
    *ok = *ok && std::isfinite(number);
    return *ok ? number : 0;
}

QString Common::unitPer(const QString& unit, const QString& per, int power)
{
    QString bare = unit;
    if (bare.startsWith(QLatin1Char('[')) && bare.endsWith(QLatin1Char(']')))
        bare = bare.mid(1, bare.size() - 2);
    if (power == 0)
        return bare;
    const QString below = bare.contains(QLatin1Char('/')) ? QStringLiteral("(%1)").arg(bare) : bare;
    return QStringLiteral("%1/%2%3").arg(below.isEmpty() ? QStringLiteral("1") : below, per,
                                         power == 1 ? QString() : superscript(power));
}

QString Common::myToStringOptionalQuotes(double val, char format, int precision)
{
    const QString text = myToString(val, format, precision);
    return isCommaSeparator() ? QLatin1Char('"') + text + QLatin1Char('"') : text;
}

void Common::forgetLocale()
{
    isLocaleRead = false;
}

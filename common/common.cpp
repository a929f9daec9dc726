#include "common/common.h"

#include "common/settings.h"

#include <QLocale>

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

QString Common::myToStringOptionalQuotes(double val, char format, int precision)
{
    const QString text = myToString(val, format, precision);
    return isCommaSeparator() ? QLatin1Char('"') + text + QLatin1Char('"') : text;
}

void Common::forgetLocale()
{
    isLocaleRead = false;
}

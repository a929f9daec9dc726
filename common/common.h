#pragma once

#include <QString>

/// Language tests and the one routine that turns a number into text for the user.
class Common
{
public:
    /// True when the locale in force contains `code` (case-sensitive). The locale is the setting "language",
    /// or the system's name when that is "def"; it is read once, so a later change of the setting is not
    /// seen.
    static bool isLocale(const QString& code);
    static bool isRussian();
    static bool isAzeri();
    static bool isSpanish();
    static bool isPolish();
    static bool isPortuguese();

    /// True where spreadsheets separate columns by semicolons because the comma is the decimal sign.
    static bool isCommaSeparator();

    /// `val` in the user's language, without group separators. `format` and `precision` as in
    /// QLocale::toString().
    static QString myToString(double val, char format, int precision);

    /// `val` in the user's language with `digits` digits that count; a whole number keeps all of its own.
    /// Very large and very small ones as "1.234·10⁻⁷".
    static QString toSignificant(double val, int digits = 4);

    /// The same with its standard error, which has two digits that count and decides on those of the value:
    /// "55.23 ± 0.12". Without an error that is known, as toSignificant().
    static QString withError(double val, double error);

    /// The number that a person typed, with a point or a comma; nothing finite gives false in `ok`.
    static double typedNumber(const QString& text, bool* ok);

    /// The unit of a change per `per` ("°C/s", with a power of 2 "°C/s²"; "1/s" without a unit), of power 0
    /// `unit` itself. Brackets that some units stand in fall away.
    static QString unitPer(const QString& unit, const QString& per, int power);

    /// As myToString(), in double quotes where isCommaSeparator() holds.
    static QString myToStringOptionalQuotes(double val, char format, int precision);

    /// Makes the next isLocale() read the setting again. For tests.
    static void forgetLocale();

private:
    static QString locale;
    static bool isLocaleRead;
};

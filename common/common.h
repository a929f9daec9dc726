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

    /// As myToString(), in double quotes where isCommaSeparator() holds.
    static QString myToStringOptionalQuotes(double val, char format, int precision);

    /// Makes the next isLocale() read the setting again. For tests.
    static void forgetLocale();

private:
    static QString locale;
    static bool isLocaleRead;
};

#pragma once

#include <QStringView>

/// Numbers in files: C locale, whatever the user's language, and fast for what fills the files, short fixed
/// decimals.
namespace NumberText {

/// Blanks around are ignored. Anything that is no finite number gives 0, and nothing lies beyond `limit`, so
/// that no axis gets an end that can't be drawn. `isNumber` (null allowed) tells the two zeros apart.
double toDouble(QStringView text, bool* isNumber = nullptr);
constexpr double limit = 1e30;
int toInt(QStringView text, int missing = 0);

/// Longest text of fixed().
constexpr int maxFixed = 400;
/// Writes `value` with `decimals` (up to 16) digits behind the point, correctly rounded. Gives the length.
int fixed(double value, int decimals, char16_t* out);

} // namespace NumberText

#include "persistence/numbertext.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cmath>

namespace {

constexpr double tens[] = {1e0, 1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7, 1e8,
                           1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16};

/// Digits with at most one point. A quotient of two whole numbers that a double holds exactly is rounded
/// once, so it is the nearest double to the text.
bool plainDecimal(QStringView text, double* value)
{
    constexpr int exactDigits = 15;
    const QChar* at = text.begin();
    const bool isNegative = at != text.end() && *at == u'-';
    if (isNegative)
        ++at;
    qint64 whole = 0;
    int digits = 0;
    int decimals = -1;
    for (; at != text.end(); ++at) {
        const ushort c = at->unicode();
        if (c == '.' && decimals < 0) {
            decimals = 0;
        } else if (c >= '0' && c <= '9' && ++digits <= exactDigits) {
            whole = whole * 10 + (c - '0');
            decimals += decimals >= 0 ? 1 : 0;
        } else {
            return false;
        }
    }
    if (digits == 0)
        return false;
    const double magnitude = double(whole) / tens[std::max(decimals, 0)];
    *value = isNegative ? -magnitude : magnitude;
    return true;
}

/// With zeros in front up to `least` digits. Gives the end.
char16_t* putDigits(quint64 number, int least, char16_t* out)
{
    int n = 1;
    for (double limit = 10; n < least || double(number) >= limit; limit *= 10)
        ++n;
    for (char16_t* at = out + n; at != out; number /= 10)
        *--at = char16_t(u'0' + number % 10);
    return out + n;
}

} // namespace

double NumberText::toDouble(QStringView text, bool* isNumber)
{
    double value = 0;
    bool isRead = plainDecimal(text, &value);
    if (!isRead) {
        value = text.toString().toDouble(&isRead);
        isRead = isRead && std::isfinite(value);
    }
    if (isNumber)
        *isNumber = isRead;
    return isRead ? std::clamp(value, -limit, limit) : 0;
}

int NumberText::toInt(QStringView text, int missing)
{
    return text.isNull() ? missing : text.toString().toInt();
}

int NumberText::fixed(double value, int decimals, char16_t* out)
{
    constexpr double exactLimit = 1e15; // whole numbers and their halves are doubles below
    decimals = std::clamp(decimals, 0, int(std::size(tens)) - 1);
    const double scaled = std::fabs(value) * tens[decimals];
    const double tieZone =
        std::max(1e-5, scaled * 3e-16); // near a tie the product's own rounding could decide
    const double whole = std::floor(scaled);
    const double rest = scaled - whole;
    const quint64 digits = scaled < exactLimit ? quint64(whole) + (rest > 0.5 ? 1 : 0) : 0;
    const bool isSure = scaled < exactLimit && std::fabs(rest - 0.5) > tieZone;
    if (!isSure || digits == 0) { // the sign of a rounded-away value is left to the thorough way
        const QByteArray text = QByteArray::number(value, 'f', decimals);
        const int n = std::min(text.size(), maxFixed);
        std::copy_n(text.constData(), n, out);
        return n;
    }
    char16_t* at = out;
    if (value < 0)
        *at++ = u'-';
    const quint64 scale = quint64(tens[decimals]);
    at = putDigits(digits / scale, 1, at);
    if (decimals > 0) {
        *at++ = u'.';
        at = putDigits(digits % scale, decimals, at);
    }
    return int(at - out);
}

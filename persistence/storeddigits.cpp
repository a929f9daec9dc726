#include "persistence/storeddigits.h"

#include <algorithm>
#include <cmath>

#include "persistence/numbertext.h"

namespace {

constexpr int mostDecimals = 16;

/// The sample numbers of the times behind `first`; empty where a time is no rounding of one.
QVector<double> onGrid(const QVector<double>& stored, double first, double rate, int decimals)
{
    const double reach = 0.5 * std::pow(10.0, -decimals) * (1 + 1e-9);
    QVector<double> times;
    times.reserve(stored.size());
    double last = -1e300;
    for (const double time : stored) {
        const double number = std::round((time - first) / rate);
        const double exact = first + number * rate;
        const double noise = 1e-15 * std::fabs(time);
        if (!(std::fabs(exact - time) <= reach + noise) || number <= last)
            return {};
        last = number;
        times.append(exact);
    }
    return times;
}

bool isLike(const QVector<double>& a, const QVector<double>& b, double rate)
{
    constexpr double digits = 1e-10;
    return std::equal(a.cbegin(), a.cend(), b.cbegin(), b.cend(), [rate](double x, double y) {
        return std::fabs(x - y) <= digits * std::max(std::fabs(rate), 1e-3 * std::fabs(x));
    });
}

} // namespace

int StoredDigits::decimals(const QVector<double>& values, int significant)
{
    double peak = 0;
    for (const double value : values)
        peak = std::isfinite(value) ? std::max(peak, std::fabs(value)) : peak;
    if (peak == 0)
        return 0;
    const int most = std::clamp(significant - 1 - int(std::floor(std::log10(peak))), 0, mostDecimals);
    const double reach = 0.5 * std::pow(10.0, -most);
    int needed = 0;
    double scale = 1;
    for (const double value : values) {
        while (needed < most && std::fabs(std::round(value * scale) / scale - value) > reach) {
            ++needed;
            scale = std::pow(10.0, needed);
        }
    }
    return needed;
}

int StoredDigits::decimalsOfTimes(const QVector<double>& times, double rate)
{
    QVector<double> rounded(times.size());
    char16_t text[NumberText::maxFixed];
    for (int decimals = rate < 0.1 ? 6 : 1;; ++decimals) {
        for (int i = 0; i < times.size(); ++i)
            rounded[i] =
                NumberText::toDouble(QStringView(text, NumberText::fixed(times.at(i), decimals, text)));
        if (decimals == mostDecimals || isLike(restored(rounded, rate, decimals), times, rate))
            return decimals;
    }
}

QVector<double> StoredDigits::restored(const QVector<double>& stored, double rate, int decimals)
{
    if (!(rate > 0) || stored.isEmpty())
        return stored;
    for (const double first : {0.0, stored.constFirst()}) {
        const QVector<double> times = onGrid(stored, first, rate, decimals);
        if (!times.isEmpty())
            return times;
    }
    return stored;
}

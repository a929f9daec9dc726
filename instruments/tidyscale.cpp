#include "instruments/tidyscale.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double firstIncrement = 5;
constexpr int triesOfIncrement = 1000;
constexpr int mostTries = 100 * triesOfIncrement;
constexpr double nearly = 1e-9;  // a whole number, but for rounding
constexpr double widest = 1e300; // further apart a step is no number any more

/// The scale with this step that reaches `maximum` from above.
TidyScale reaching(double minimum, double maximum, double step)
{
    double top = maximum < 0 ? minimum - std::fmod(minimum, step) : 0;
    top += std::max(0.0, std::ceil((maximum - top) / step - nearly)) * step;
    return {top - TidyScale::steps * step, top};
}

} // namespace

TidyScale TidyScale::of(double minimum, double maximum)
{
    if (!std::isfinite(minimum) || !std::isfinite(maximum))
        return {};
    minimum = std::clamp(minimum, -widest, widest);
    maximum = std::clamp(maximum, -widest, widest);
    if (minimum > maximum)
        std::swap(minimum, maximum);
    const double least = std::max({std::fabs(minimum), std::fabs(maximum), 1.0}) * 1e-9;
    if (maximum - minimum < least)
        maximum = minimum + std::max(1.0, least);
    const double span = maximum - minimum;
    double increment = firstIncrement;
    while (increment * steps > span)
        increment /= 10;
    double step = std::ceil(span / steps / increment - nearly) * increment;
    TidyScale scale = reaching(minimum, maximum, step);
    // A step grows by one increment; where a thousand of them do not do, by larger ones.
    for (int tries = 1; scale.minimum > minimum && tries < mostTries; ++tries) {
        if (tries % triesOfIncrement == 0)
            increment *= 10;
        step += increment;
        scale = reaching(minimum, maximum, step);
    }
    const double shift = std::floor((minimum - scale.minimum) / step + nearly) * step;
    if (shift > 0)
        return {scale.minimum + shift, scale.maximum + shift};
    return scale;
}

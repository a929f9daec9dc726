#pragma once

#include <limits>

/// Where a channel has no value: a gap.
constexpr double noValue = std::numeric_limits<double>::quiet_NaN();

#pragma once

constexpr int MAX_METERS = 6; ///< of one logger
constexpr int MAX_TYPES = 7;

/// How a meter looks.
enum meterTypes
{
    METER_ANALOG,
    METER_GAUGE,
    METER_THERMO,
    METER_BAR,
    METER_COLOR_RED,
    METER_COLOR_BLUE,
    METER_DIGITAL
};

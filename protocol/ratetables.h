#pragma once

/// Sample periods, and what a rate code on the wire means: that depends on the type and the firmware.
namespace RateTables {

constexpr int count = 10;
constexpr int vortaCount = 6;
constexpr int firstFast = 6; ///< from here on a logger stores a run and does not stream it

// Periods come from the loggers' clock dividers, so 10/Sec is not 0.1 s.
constexpr double seconds[count] = {0,       60,       1,        0.1024,     0.04096,
                                   0.01024, 0.001024, 0.000042, 0.00003944, 0.0000101745};
constexpr double vortaSeconds[vortaCount] = {0, 1, 0.1024, 0.04096, 0.01024, 0.002048};

/// A rate code to an index into `seconds`, always inside it.
short fromCode(short code, int type, int firmware, int smallFirmware);
/// The inverse.
short toCode(short rate, int type, int firmware, int smallFirmware);
/// True when a logger of this type and firmware offers the rate.
bool isOffered(short rate, int type, int firmware, int smallFirmware);
/// A rate brought back into the table: the fastest of this logger stands for all beyond.
short bounded(int rate, int type, int firmware);

} // namespace RateTables

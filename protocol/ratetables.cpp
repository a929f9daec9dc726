#include "protocol/ratetables.h"

#include "protocol/loggermodels.h"

namespace RateTables {

namespace {

constexpr short perSec25 = 4; ///< missing in the oldest type, whose codes close up
constexpr short perSec25000Old = 7;
constexpr short perSec25000 = 8;
constexpr short perSec100000 = 9;

/// The three generations of firmware that number the fast rates differently.
enum class Firmware
{
    Below40,
    From40To402,
    From403
};

Firmware generation(int firmware, int smallFirmware)
{
    const int version = firmware * 100 + smallFirmware;
    if (version < 400)
        return Firmware::Below40;
    return version <= 402 ? Firmware::From40To402 : Firmware::From403;
}

} // namespace

short bounded(int rate, int type, int firmware)
{
    if (rate < 0)
        return 0;
    if (rate < count)
        return static_cast<short>(rate);
    return type == LOGGER_AMBER_OLD || firmware < 4 ? perSec25000Old : perSec100000;
}

short fromCode(short code, int type, int firmware, int smallFirmware)
{
    int rate = code;
    if (type == LOGGER_AMBER_OLD && rate >= perSec25)
        ++rate;
    switch (generation(firmware, smallFirmware)) {
    case Firmware::Below40:
        break;
    case Firmware::From40To402:
        if (rate == perSec25000Old)
            rate = perSec100000;
        break;
    case Firmware::From403:
        if (rate >= firstFast)
            rate += 2;
        break;
    }
    return bounded(rate, type, firmware);
}

short toCode(short rate, int type, int firmware, int smallFirmware)
{
    short code = bounded(rate, type, firmware);
    if (type == LOGGER_AMBER_OLD && code > perSec25)
        --code;
    switch (generation(firmware, smallFirmware)) {
    case Firmware::Below40:
        break;
    case Firmware::From40To402:
        if (code == perSec100000)
            code = perSec25000Old;
        break;
    case Firmware::From403:
        if (code >= perSec25000)
            code -= 2;
        break;
    }
    return code;
}

bool isOffered(short rate, int type, int firmware, int smallFirmware)
{
    if (type == LOGGER_AMBER_OLD)
        return rate != perSec25 && rate != perSec25000 && rate != perSec100000;
    switch (generation(firmware, smallFirmware)) {
    case Firmware::Below40:
        return rate != perSec25000 && rate != perSec100000;
    case Firmware::From40To402:
        return rate != perSec25000Old && rate != perSec25000;
    case Firmware::From403:
        return rate != firstFast && rate != perSec25000Old;
    }
    return false;
}

} // namespace RateTables

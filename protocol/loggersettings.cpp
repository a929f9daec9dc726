#include "protocol/loggersettings.h"

#include <tuple>

namespace {

auto setupOf(const LoggerSettings& s)
{
    return std::tie(s.mask, s.rate, s.samples, s.external[0], s.external[1], s.trigType, s.trigSens,
                    s.trigLevel, s.rangeSens, s.rangeMin, s.vortaRate, s.vortaSamples, s.vortaInvertForce);
}

auto configurationOf(const LoggerSettings& s)
{
    return std::tie(s.sound, s.fahrenheit, s.bluetooth, s.gps, s.hpa, s.language);
}

} // namespace

void LoggerSettings::takeSetup(const LoggerSettings& from)
{
    const LoggerSettings before = *this;
    *this = from;
    takeConfiguration(before);
}

void LoggerSettings::takeConfiguration(const LoggerSettings& from)
{
    sound = from.sound;
    fahrenheit = from.fahrenheit;
    bluetooth = from.bluetooth;
    gps = from.gps;
    hpa = from.hpa;
    language = from.language;
}

bool LoggerSettings::isSameSetup(const LoggerSettings& other) const
{
    return setupOf(*this) == setupOf(other);
}

bool LoggerSettings::isSameConfiguration(const LoggerSettings& other) const
{
    return configurationOf(*this) == configurationOf(other);
}

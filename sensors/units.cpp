#include "sensors/units.h"

#include "common/settings.h"

Units Units::load(const QSettings& store)
{
    const auto isOn = [&store](const char* key, bool preset) {
        return store.value(QLatin1String(key), preset).toBool();
    };
    Units units;
    units.fahrenheit = !isOn(Settings::unitsCelsius, true);
    units.feet = !isOn(Settings::unitsMeter, true);
    units.psi = !isOn(Settings::unitsAirKpa, true);
    units.hpa = isOn(Settings::unitsBaroHpa, false);
    if (!isOn(Settings::unitsKmh, true))
        units.speed = isOn(Settings::unitsMph, true) ? Mph : MetersPerSecond;
    units.wholeDecibels = Settings::isJuniorEdition();
    return units;
}

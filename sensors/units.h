#pragma once

class QSettings;

/// How quantities are shown: the user's choice, and what the edition makes of a sensor. Read once when the
/// program starts and handed to who needs it; in force until it ends, whatever the settings store says by
/// then.
struct Units
{
    enum Speed
    {
        Kmh,
        Mph,
        MetersPerSecond
    };

    bool fahrenheit = false;
    bool feet = false;
    bool psi = false;
    bool hpa = false;
    Speed speed = Kmh;
    bool wholeDecibels = false; ///< the junior edition shows sound without decimals

    static Units load(const QSettings& store);
};

#pragma once

#include <QtGlobal>

/// What a logger records and how it behaves, as a value. As wanted and as reported by the logger it is the
/// same type, never the same object.
struct LoggerSettings
{
    // The logging setup.
    quint16 mask = 0;         ///< bit i: entry i of the logger's sensor list is recorded
    short rate = 2;           ///< index into TembrinData::Rates
    short samples = 1;        ///< index into TembrinData::samplesNames()
    int external[2] = {0, 0}; ///< sensor IDs in sockets 1 and 2, 0 for none or unknown
    short trigType = 0;       ///< index into TembrinData::TrigTypeNames
    short trigSens = 7;       ///< list index
    short trigLevel = 25;
    short rangeSens = 0; ///< list index, 0xFF when off
    short rangeMin = 0;
    short vortaRate = 2;    ///< index into TembrinData::VortaRates, 1 to 5
    short vortaSamples = 0; ///< a number, not an index
    bool vortaInvertForce = false;

    // The configuration.
    bool sound = false;
    bool fahrenheit = false;
    bool bluetooth = false;
    bool gps = false;
    bool hpa = false;
    int language = 0;

    /// Takes over the parts of a logging setup, or those of a configuration, and leaves the others.
    void takeSetup(const LoggerSettings& from);
    void takeConfiguration(const LoggerSettings& from);
    bool isSameSetup(const LoggerSettings& other) const;
    bool isSameConfiguration(const LoggerSettings& other) const;
};

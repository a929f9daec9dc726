#pragma once

#include <QtGlobal>

#include "sensors/units.h"

struct SensorRow;

/// How the force channels of one logger of the force family turn raw steps into newtons.
struct ForceCalibration
{
    int offset = 0; ///< raw
    float gain = 1; ///< raw steps a newton; 0, of a logger that was never calibrated, counts as 1
    bool isInverted = false;
};

/// What kind of sensor something is, by its row of the catalogue: how wide it is on the wire and what its raw
/// words mean. A value that never changes; all results are in the base units of the catalogue.
class SensorKind
{
public:
    static constexpr int mostValues = 4; ///< of one sensor

    /// An ID without a row gives a kind without bytes, whose one value is 0.
    explicit SensorKind(int id = 0, const Units& units = {}, const ForceCalibration& force = {});

    int id() const { return ID; }
    int numBytes() const;
    /// One for each child of a composite, else one.
    int valueCount() const { return values; }
    bool isComposite() const { return values > 1; }
    /// The sensor of a composite's child.
    int childID(int child) const;

    /// Shown in degrees Celsius or Fahrenheit.
    static bool isTemperature(int id);

    /// What one raw word means.
    double convert(quint16 word) const;
    /// One sample of numBytes() bytes into valueCount() values.
    void decode(const unsigned char* bytes, double* into) const;

private:
    double newtons(int steps) const;

    const SensorRow* row;
    int ID;
    int values;
    bool isPressureLimited; ///< air pressure beyond the range counts as its end, but not in PSI
    ForceCalibration force;
};

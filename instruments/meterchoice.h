#pragma once

#include "instruments/metertypes.h"

#include <QString>

#include <array>
#include <optional>
#include <utility>

/// What a meter shows and how: by the table of its logger's model, or as a person chose it.
struct MeterChoice
{
    using Range = std::pair<double, double>;

    int type = METER_DIGITAL;
    int sensorID = 0;
    std::optional<Range> range; ///< in the base unit; none is that of the sensor

    bool operator==(const MeterChoice& other) const
    {
        return type == other.type && sensorID == other.sensorID && range == other.range;
    }
};

/// The six meters of a model without any choice of a person's. Models that are not known have a row too.
std::array<MeterChoice, MAX_METERS> initialMeters(int tembrinType);

/// Choices that last, in the main settings store. `key` names a meter; what was never stored, or can't be
/// read, gives nothing.
namespace MeterStore {
QString keyOf(int tembrinType, int meter);
/// Of the sensor of a group.
QString keyOfGroups(int sensorID);
std::optional<MeterChoice> load(const QString& key);
void save(const QString& key, const MeterChoice& choice);
} // namespace MeterStore

#include "instruments/meterchoice.h"

#include "common/settings.h"
#include "protocol/loggermodels.h"
#include "sensors/sensorids.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace {

struct ModelRow
{
    int types[2]; ///< models, 0 for none
    int sensorIDs[MAX_METERS];
};

// clang-format off
constexpr ModelRow modelRows[] = {
    {{LOGGER_AMBER_OLD, LOGGER_AMBER_UI}, {SENSOR_AMB_TEMP_NTC, SENSOR_LIGHT, SENSOR_SOUND, SENSOR_DISTANCE, SENSOR_HEARTRATE_RATE, SENSOR_EXT_TEMP_NTC}},
    {{LOGGER_AMBER, 0}, {SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT, SENSOR_SOUND, SENSOR_DISTANCE, SENSOR_HEARTRATE_RATE, SENSOR_EXT_TEMP_NTC}},
    {{LOGGER_CEDAR, 0}, {SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT, SENSOR_VOLTAGE, SENSOR_CURRENT, SENSOR_HEARTRATE, SENSOR_EXT_TEMP}},
    {{LOGGER_DUNE, LOGGER_SORREL_BASIC}, {SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT, SENSOR_VOLTAGE, SENSOR_HUMIDITY_ANALOG, SENSOR_PH, SENSOR_EXT_TEMP_NTC}},
    {{LOGGER_EMBER, LOGGER_EMBER_INT}, {SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT, SENSOR_VOLTAGE, SENSOR_CURRENT, SENSOR_MICROPHONE, SENSOR_EXT_TEMP}},
    {{LOGGER_FJORD, LOGGER_GROVE_INT}, {SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT, SENSOR_HUMIDITY_ANALOG, SENSOR_EXT_TEMP_NTC, SENSOR_BAROMETER, SENSOR_TURBIDITY}},
    {{LOGGER_GROVE_INT_2, 0}, {SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT, SENSOR_HUMIDITY_ANALOG, SENSOR_EXT_TEMP_NTC, SENSOR_BAROMETER, SENSOR_PH}},
    {{LOGGER_HEATH_INT_2, 0}, {SENSOR_AMB_TEMP_NTC_CALC, SENSOR_SOUND, SENSOR_HUMIDITY_ANALOG, SENSOR_EXT_TEMP_NTC, SENSOR_BAROMETER, SENSOR_PH}},
    {{LOGGER_HEATH_INT, 0}, {SENSOR_AMB_TEMP_NTC_CALC, SENSOR_ION, SENSOR_DISSOLVED_OXYGEN, SENSOR_EXT_TEMP_NTC, SENSOR_CONDUCTIVITY, SENSOR_AIRPRESSURE}},
    {{LOGGER_VORTA, 0}, {SENSOR_VORTA_FORCE50, SENSOR_VORTA_FORCE5, SENSOR_VORTA_ACC_X, SENSOR_VORTA_ACC_Y, SENSOR_VORTA_FORCE5, SENSOR_VORTA_ACC_Z}},
};
// clang-format on
constexpr ModelRow otherModels = {
    {0, 0},
    {SENSOR_PH, SENSOR_SOUND, SENSOR_HUMIDITY, SENSOR_EXT_TEMP_NTC, SENSOR_BAROMETER, SENSOR_IR_TEMP}};

constexpr int usualTypes[MAX_METERS] = {METER_ANALOG, METER_DIGITAL, METER_THERMO,
                                        METER_GAUGE,  METER_ANALOG,  METER_BAR};
constexpr int vortaTypes[MAX_METERS] = {METER_THERMO, METER_THERMO,  METER_ANALOG,
                                        METER_ANALOG, METER_DIGITAL, METER_ANALOG};

const ModelRow& rowOf(int tembrinType)
{
    const auto* const row =
        std::find_if(std::begin(modelRows), std::end(modelRows), [=](const ModelRow& one) {
            return tembrinType != 0 && (one.types[0] == tembrinType || one.types[1] == tembrinType);
        });
    return row == std::end(modelRows) ? otherModels : *row;
}

} // namespace

std::array<MeterChoice, MAX_METERS> initialMeters(int tembrinType)
{
    const ModelRow& row = rowOf(tembrinType);
    const auto& types = tembrinType == LOGGER_VORTA ? vortaTypes : usualTypes;
    std::array<MeterChoice, MAX_METERS> meters;
    for (int i = 0; i < MAX_METERS; ++i) {
        meters[i].type = types[i];
        meters[i].sensorID = row.sensorIDs[i];
    }
    return meters;
}

QString MeterStore::keyOf(int tembrinType, int meter)
{
    return QStringLiteral("meters/model%1-%2").arg(tembrinType).arg(meter + 1);
}

QString MeterStore::keyOfGroups(int sensorID)
{
    return QStringLiteral("meters/groups-%1").arg(sensorID);
}

std::optional<MeterChoice> MeterStore::load(const QString& key)
{
    const QStringList fields = Settings::mainStore().value(key).toStringList();
    bool isType = false;
    bool isID = false;
    MeterChoice choice;
    choice.type = fields.value(0).toInt(&isType);
    choice.sensorID = fields.value(1).toInt(&isID);
    if (!isType || !isID || choice.type < 0 || choice.type >= MAX_TYPES)
        return std::nullopt;
    bool isMin = false;
    bool isMax = false;
    const MeterChoice::Range range(fields.value(2).toDouble(&isMin), fields.value(3).toDouble(&isMax));
    if (isMin && isMax && std::isfinite(range.first) && std::isfinite(range.second) &&
        range.first != range.second)
        choice.range = range;
    return choice;
}

void MeterStore::save(const QString& key, const MeterChoice& choice)
{
    QStringList fields = {QString::number(choice.type), QString::number(choice.sensorID)};
    if (choice.range) {
        for (const double end : {choice.range->first, choice.range->second})
            fields.append(QString::number(end, 'g', 17));
    }
    Settings::mainStore().setValue(key, fields);
}

#include "virtual/models.h"

#include "sensors/sensorids.h"

namespace {

// clang-format off
constexpr std::array<LoggerModel, 18> models = {{
    {17, "AMBER_OLD", "Amber", false,
        {SENSOR_GPS, SENSOR_AMB_TEMP_NTC, SENSOR_EXT_TEMP_NTC, SENSOR_LIGHT, SENSOR_SOUND, SENSOR_HEARTRATE, SENSOR_DISTANCE},
        {SENSOR_EXT_TEMP_NTC, SENSOR_LIGHT, SENSOR_HEARTRATE}},
    {18, "AMBER", "Amber", true,
        {SENSOR_GPS, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_EXT_TEMP_NTC, SENSOR_LIGHT, SENSOR_SOUND, SENSOR_HEARTRATE, SENSOR_DISTANCE},
        {SENSOR_EXT_TEMP_NTC, SENSOR_LIGHT, SENSOR_DISTANCE}},
    {19, "AMBER_UI", "Amber", false,
        {SENSOR_GPS, SENSOR_AMB_TEMP_NTC, SENSOR_EXT_TEMP_NTC, SENSOR_LIGHT, SENSOR_SOUND, SENSOR_HEARTRATE, SENSOR_DISTANCE, SENSOR_EXTERNAL},
        {SENSOR_EXT_TEMP_NTC, SENSOR_SOUND, SENSOR_DISTANCE}},
    {34, "BIRCH_OLD", "Birch", false,
        {SENSOR_UV, SENSOR_PH, SENSOR_CO, SENSOR_BAROMETER, SENSOR_IR_TEMP, SENSOR_HUMIDITY, SENSOR_GPS, SENSOR_AMB_TEMP, SENSOR_EXT_TEMP, SENSOR_COLORIMETER},
        {SENSOR_PH, SENSOR_HUMIDITY, SENSOR_EXT_TEMP}},
    {35, "BIRCH", "Birch", true,
        {SENSOR_UV, SENSOR_PH, SENSOR_BAROMETER, SENSOR_SOUND, SENSOR_IR_TEMP, SENSOR_HUMIDITY, SENSOR_GPS, SENSOR_AMB_TEMP, SENSOR_EXT_TEMP_NTC, SENSOR_COLORIMETER, SENSOR_TURBIDITY},
        {SENSOR_UV, SENSOR_PH, SENSOR_EXT_TEMP_NTC}},
    {36, "BIRCH_DEMO", "Birch", false,
        {SENSOR_UV, SENSOR_PH, SENSOR_BAROMETER, SENSOR_SOUND, SENSOR_IR_TEMP, SENSOR_HUMIDITY, SENSOR_GPS, SENSOR_AMB_TEMP, SENSOR_EXT_TEMP_NTC, SENSOR_COLORIMETER, SENSOR_TURBIDITY},
        {SENSOR_SOUND, SENSOR_HUMIDITY, SENSOR_COLORIMETER}},
    {37, "BIRCH_2", "", true, {}, {}},
    {51, "CEDAR", "Cedar", true,
        {SENSOR_AIRPRESSURE, SENSOR_VOLTAGE, SENSOR_CURRENT, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT, SENSOR_PH, SENSOR_HEARTRATE, SENSOR_EXT_TEMP, SENSOR_HUMIDITY_ANALOG, SENSOR_GPS, SENSOR_COLORIMETER},
        {SENSOR_AIRPRESSURE, SENSOR_VOLTAGE, SENSOR_CURRENT}},
    {68, "DUNE", "Dune", true,
        {SENSOR_AIRPRESSURE, SENSOR_DISTANCE, SENSOR_VOLTAGE, SENSOR_CURRENT, SENSOR_LIGHT, SENSOR_EXTERNAL, SENSOR_PH, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_EXT_TEMP, SENSOR_HUMIDITY_ANALOG, SENSOR_GPS, SENSOR_SOUND, SENSOR_MICROPHONE},
        {SENSOR_DISTANCE, SENSOR_EXT_TEMP, SENSOR_SOUND}},
    {85, "EMBER", "Ember", true,
        {SENSOR_AIRPRESSURE, SENSOR_VOLTAGE, SENSOR_VOLTAGE_LOW, SENSOR_LIGHT, SENSOR_EXTERNAL, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_EXT_TEMP_NTC, SENSOR_CURRENT, SENSOR_DISTANCE, SENSOR_MICROPHONE, SENSOR_ACCELERATION},
        {SENSOR_VOLTAGE, SENSOR_CURRENT, SENSOR_LIGHT}},
    {86, "EMBER_INT", "Ember", false,
        {SENSOR_AIRPRESSURE, SENSOR_VOLTAGE, SENSOR_VOLTAGE_LOW, SENSOR_LIGHT, SENSOR_EXTERNAL, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_EXT_TEMP_NTC, SENSOR_CURRENT, SENSOR_DISTANCE, SENSOR_MICROPHONE, SENSOR_ACCELERATION, SENSOR_GPS, SENSOR_EXTERNAL_B},
        {SENSOR_DISTANCE, SENSOR_ACCELERATION}},
    {102, "FJORD", "Fjord", true,
        {SENSOR_AIRPRESSURE, SENSOR_BAROMETER, SENSOR_PH, SENSOR_DISSOLVED_OXYGEN, SENSOR_CONDUCTIVITY, SENSOR_LIGHT, SENSOR_EXTERNAL, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_THERMOCOUPLE, SENSOR_HEARTRATE, SENSOR_EXT_TEMP_NTC, SENSOR_HUMIDITY_ANALOG, SENSOR_GPS, SENSOR_COLORIMETER, SENSOR_TURBIDITY},
        {SENSOR_PH, SENSOR_HEARTRATE, SENSOR_EXT_TEMP_NTC}},
    {119, "GROVE_INT", "Grove", true,
        {SENSOR_AIRPRESSURE, SENSOR_BAROMETER, SENSOR_PH, SENSOR_DISSOLVED_OXYGEN, SENSOR_LIGHT, SENSOR_UV, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_IR_TEMP, SENSOR_HUMIDITY_ANALOG, SENSOR_SOUND, SENSOR_EXT_TEMP_NTC, SENSOR_HEARTRATE, SENSOR_TURBIDITY},
        {SENSOR_DISSOLVED_OXYGEN, SENSOR_LIGHT, SENSOR_HUMIDITY_ANALOG, SENSOR_EXT_TEMP_NTC}},
    {136, "HEATH_INT", "Heath", true,
        {SENSOR_AIRPRESSURE, SENSOR_ION, SENSOR_DISSOLVED_OXYGEN, SENSOR_CONDUCTIVITY, SENSOR_EXTERNAL, SENSOR_THERMOCOUPLE, SENSOR_EXTERNAL_B, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_EXT_TEMP_NTC, SENSOR_GPS, SENSOR_COLORIMETER},
        {SENSOR_CONDUCTIVITY, SENSOR_THERMOCOUPLE, SENSOR_EXT_TEMP_NTC}},
    {153, "GROVE_INT_2", "Grove", false,
        {SENSOR_BAROMETER, SENSOR_PH, SENSOR_DISSOLVED_OXYGEN, SENSOR_LIGHT, SENSOR_EXTERNAL, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_HUMIDITY_ANALOG, SENSOR_EXT_TEMP_NTC, SENSOR_HEARTRATE},
        {SENSOR_PH, SENSOR_LIGHT, SENSOR_EXT_TEMP_NTC}},
    {170, "HEATH_INT_2", "Heath", false,
        {SENSOR_BAROMETER, SENSOR_PH, SENSOR_UV, SENSOR_EXTERNAL, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_HUMIDITY_ANALOG, SENSOR_SOUND, SENSOR_EXT_TEMP_NTC, SENSOR_COLORIMETER},
        {SENSOR_UV, SENSOR_SOUND, SENSOR_EXT_TEMP_NTC}},
    {LoggerModel::Sorrel, "SORREL_BASIC", "Sorrel", true, {}, {}},
    {LoggerModel::Vorta, "VORTA", "Vorta", true,
        {SENSOR_VORTA_FORCE50, SENSOR_VORTA_FORCE5, SENSOR_VORTA_ACC_X, SENSOR_VORTA_ACC_Y, SENSOR_VORTA_ACC_Z},
        {SENSOR_VORTA_FORCE5}},
}};
// clang-format on

bool isCalled(const LoggerModel& model, const QString& text)
{
    const QString constant = QString::fromLatin1(model.constant);
    const QString name = QString::fromLatin1(model.name);
    const auto equals = [&text](const QString& other) {
        return text.compare(other, Qt::CaseInsensitive) == 0;
    };
    return equals(constant) || equals(QStringLiteral("LOGGER_") + constant) ||
           (model.isNamesake && !name.isEmpty() && (equals(name) || equals(model.displayName())));
}

} // namespace

QString LoggerModel::displayName() const
{
    QString own = QString::fromLatin1(name);
    if (code == Sorrel || code == Vorta)
        return own;
    return QStringLiteral("Tembrin ") + (own.isEmpty() ? QStringLiteral("0x%1").arg(code, 0, 16) : own);
}

QVector<int> LoggerModel::sensorIds() const
{
    QVector<int> ids;
    for (const short id : sensors) {
        if (id != 0)
            ids.append(id);
    }
    return ids;
}

quint16 LoggerModel::lessonMask() const
{
    quint16 mask = 0;
    const QVector<int> ids = sensorIds();
    for (const short id : lesson) {
        const int slot = id != 0 ? ids.indexOf(id) : -1;
        if (slot >= 0)
            mask |= quint16(1U << slot);
    }
    return mask;
}

const LoggerModel* LoggerModels::find(int code)
{
    for (const LoggerModel& model : models) {
        if (model.code == code)
            return &model;
    }
    return nullptr;
}

const LoggerModel* LoggerModels::find(const QString& text)
{
    const QString wanted = text.trimmed();
    bool isNumber = false;
    const int code = wanted.toInt(&isNumber, 0);
    if (isNumber)
        return find(code);
    for (const LoggerModel& model : models) {
        if (isCalled(model, wanted))
            return &model;
    }
    return nullptr;
}

QVector<const LoggerModel*> LoggerModels::mixture()
{
    QVector<const LoggerModel*> chosen;
    for (const int code : {18, 102, 35, 86, 51, 119, 68, 136})
        chosen.append(find(code));
    return chosen;
}

QStringList LoggerModels::names()
{
    QStringList list;
    for (const LoggerModel& model : models) {
        list.append(QStringLiteral("%1 (%2)").arg(QLatin1String(model.constant)).arg(model.code));
    }
    return list;
}

#include "common/common.h"
#include "common/settings.h"
#include "sensors/calibration.h"
#include "sensors/sensor.h"
#include "sensors/sensorsmaster.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>

namespace {

constexpr double feetPerMeter = 3.2808399;
constexpr double psiPerKpa = 0.1450377;
// Finer than the factor of the other direction; both are what files and displays of the family use.
constexpr double psiPerKpaBack = 0.14503773773020923;
constexpr double mphPerKmh = 0.621371192;
constexpr double mpsPerKmh = 0.277777778;

constexpr int milesPerHour = 1;
constexpr int metersPerSecond = 2;

bool invertForce = false;

// 12 bits at the top of the word, 3.9 mg a step, in g.
double acceleration(quint16 word)
{
    const int bits = word >> 4;
    const int base = bits & 0x800 ? -7987 : 0;
    return (base + 3.9 * (bits & 0x7ff)) / 1000;
}

// The analog input of an external port, in V.
double externalVolts(int val)
{
    return (val * 92.0 / 10000) / 100;
}

double vernier(const SensorRow& row, int val)
{
    const double volts = externalVolts(val);
    switch (row.ID) {
    case VERNIER_CURRENT:
    case VERNIER_FORCE10:
    case VERNIER_FORCE50:
    case VERNIER_PH:
    case VERNIER_VOLTAGE:
        return row.max + volts / 5 * (row.min - row.max);
    default:
        return row.min + volts / 5 * (row.max - row.min);
    }
}

// A raw word whose zero lies at `zero`, in steps of gain / 10000 / divisor.
double centred(int val, int zero, double gain, double divisor)
{
    return ((val - zero) * gain / 10000) / divisor;
}

double heartRate(int val)
{
    return val > 1000 ? 0 : val;
}

double quellmark(int val, int id)
{
    switch (id) {
    case QUELLMARK_CURRENT:
        return centred(val, 27306, 1161, 10);
    case QUELLMARK_RESPIRATION:
        return centred(val, 27306, 805, 10);
    case QUELLMARK_VOLTAGE:
        return centred(val, 27306, 415, 100);
    case QUELLMARK_MAGNETIC10:
        return centred(val, 27306, 458, 100);
    case QUELLMARK_MAGNETIC02:
        return centred(val, 27306, 77, 1000);
    case QUELLMARK_CO2:
        return std::min(5000.0, val * 0.183);
    case QUELLMARK_CURRENT12:
        return centred(val, 27306, 505, 100);
    case QUELLMARK_VOLTAGE30:
        return centred(val, 27306, 119, 10);
    case QUELLMARK_HEARTRATE_WAVE:
    case QUELLMARK_PHOTOGATE:
    case QUELLMARK_PHOTOGATE_HEART:
        return externalVolts(val);
    case QUELLMARK_TEMPERATURE:
        return calibrateQuellmarkTemp(val);
    case QUELLMARK_THERMOCOUPLE:
        return static_cast<qint16>(val) / 10.0;
    case QUELLMARK_HEARTRATE_RATE:
        return heartRate(val);
    default:
        return val / 100.0;
    }
}

double coordinate(const unsigned char* bytes)
{
    const double minutes = qFromBigEndian<quint16>(bytes + 1) / 1000.0;
    const double value = bytes[0] + minutes / 60;
    return bytes[3] == 'S' || bytes[3] == 'W' ? -value : value;
}

QString coordinateText(double value, bool isLatitude)
{
    if (value == 0.0)
        return QStringLiteral("----");
    const char letter = isLatitude ? (value > 0 ? 'N' : 'S') : (value > 0 ? 'E' : 'W');
    const double size = std::abs(value);
    const double degrees = std::floor(size);
    const double minutes = (size - degrees) * 60;
    const double seconds = (minutes - std::floor(minutes)) * 60;
    return QStringLiteral("%1%2%3'%4''%5")
        .arg(QString::number(static_cast<int>(degrees)), QString(QChar(0x00b0)),
             QStringLiteral("%1").arg(static_cast<int>(minutes), 2, 10, QLatin1Char('0')),
             Common::myToString(seconds, 'f', 2), QString(QLatin1Char(letter)));
}

} // namespace

void Sensor::setInvertForce(bool tf)
{
    invertForce = tf;
}

double Sensor::convert(quint16 word, int forID) const
{
    if (isIDVestrel(forID))
        return quellmark(word, forID);
    if (isIDVernier(forID))
        return vernier(row && row->ID == forID ? *row : *sensorRow(forID), word);
    return convertInternal(word, forID);
}

double Sensor::convertInternal(quint16 word, int forID) const
{
    const int val = word;
    switch (forID) {
    case SENSOR_UV:
        return std::max(0.0, (val - 21845) * 458.0 * 150 / 1000000 / 100);
    case SENSOR_PH:
    case SENSOR_CO:
        return val / 1000.0;
    case SENSOR_BAROMETER:
    case SENSOR_HUMIDITY:
    case SENSOR_SOUND:
    case SENSOR_TURBIDITY:
        return val / 10.0;
    case SENSOR_IR_TEMP:
        return val / 50.0 - 273.15;
    case SENSOR_AMB_TEMP:
        return val * 0.01 - 39.7;
    case SENSOR_EXT_TEMP:
        return calibrateExtTemp(val);
    case SENSOR_AMB_TEMP_NTC:
        return calibrateAmbTempNTC(val);
    case SENSOR_EXT_TEMP_NTC:
        return calibrateExtTempNTC(val);
    case SENSOR_LIGHT:
        return calibrateLight(val);
    case SENSOR_HEARTRATE_RATE:
        return heartRate(val);
    case SENSOR_HEARTRATE_WAVE:
        return val * 3.3 / 65536;
    case SENSOR_DISTANCE:
        return val > 10000 ? 0 : val / 1000.0;
    case SENSOR_AIRPRESSURE:
        return needAltUnit() ? val / 10.0 : std::min(val / 10.0, max);
    case SENSOR_VOLTAGE:
        return centred(val, 32768, 1740, 100);
    case SENSOR_CURRENT:
        return centred(val, 32768, 542, 1000);
    case SENSOR_HUMIDITY_ANALOG:
        return centred(std::clamp(val, 12288, 56848), 12288, 224, 10);
    case SENSOR_AMB_TEMP_NTC_CALC:
    case SENSOR_THERMOCOUPLE:
    case SENSOR_ION:
        return static_cast<qint16>(word) / 10.0;
    case SENSOR_EXTERNAL:
    case SENSOR_EXTERNAL_B:
        return externalVolts(val);
    case SENSOR_MICROPHONE:
        return val * 3.3 / 65535;
    case SENSOR_VOLTAGE_LOW:
        return centred(val, 32768, 2840, 10);
    case SENSOR_ACCELERATION_X:
    case SENSOR_ACCELERATION_Y:
    case SENSOR_ACCELERATION_Z:
    case SENSOR_VORTA_ACC_X:
    case SENSOR_VORTA_ACC_Y:
    case SENSOR_VORTA_ACC_Z:
        return acceleration(word);
    case SENSOR_VOLTAGE_SORREL:
        return centred(val, 32768, 1084, 100);
    case SENSOR_CURRENT_SORREL:
        return val * 0.5 / 28558;
    case SENSOR_VORTA_FORCE50:
    case SENSOR_VORTA_FORCE5:
        return force(val);
    default:
        return val / 100.0;
    }
}

double Sensor::force(int val) const
{
    const double newton =
        std::clamp((val - forceOffset) / static_cast<double>(forceGain), min, std::max(min, max));
    return invertForce ? -newton : newton;
}

double Sensor::convert(const unsigned char* bytes, int n, int forID) const
{
    if (forID == SENSOR_GPS_LAT || forID == SENSOR_GPS_LONG)
        return n >= 4 ? coordinate(bytes) : 0;
    return n >= 2 ? qFromBigEndian<quint16>(bytes) / 10.0 : 0;
}

void Sensor::setLastValue(quint16 word)
{
    const double value = convert(word);
    lastValue[0] = convertToAltUnit(value) > max ? 0 : value;
}

void Sensor::setLastValue(const unsigned char* bytes, int n)
{
    if (n < numBytes || numBytes < 2)
        return;
    switch (ID) {
    case SENSOR_GPS:
        lastValue[0] = convert(bytes, 4, SENSOR_GPS_LAT);
        lastValue[1] = convert(bytes + 4, 4, SENSOR_GPS_LONG);
        lastValue[2] = convert(bytes + 8, 2, SENSOR_GPS_SPEED);
        lastValue[3] = convert(bytes + 10, 2, SENSOR_GPS_ANGLE);
        return;
    case SENSOR_COLORIMETER:
    case SENSOR_HEARTRATE:
    case SENSOR_ACCELERATION:
        for (int i = 0; i < row->nSens; ++i) {
            const double value = convert(qFromBigEndian<quint16>(bytes + 2 * i), row->virtualIDs[i]);
            lastValue[i] = ID == SENSOR_COLORIMETER && value > max ? 0 : value;
        }
        return;
    default:
        if (numBytes == 2)
            lastValue[0] = convert(qFromBigEndian<quint16>(bytes));
    }
}

double Sensor::getLastValue(int v, bool clip) const
{
    if (v < 0 || v >= lastValue.size())
        return 0;
    const double value = convertToAltUnit(lastValue.at(v));
    return clip ? cutDown(value) : value;
}

double Sensor::cutDown(double value) const
{
    const double scale = std::pow(10.0, precision);
    return std::floor(value * scale) / scale;
}

QString Sensor::valueToString(double value) const
{
    if (ID == SENSOR_GPS_LAT || ID == SENSOR_GPS_LONG)
        return coordinateText(value, ID == SENSOR_GPS_LAT);
    return Common::myToString(cutDown(value), 'f', static_cast<int>(precision));
}

int Sensor::unitID() const
{
    return ID == SENSOR_SPECIAL && row ? row->ID : ID;
}

bool Sensor::isTemperature() const
{
    switch (unitID()) {
    case SENSOR_IR_TEMP:
    case SENSOR_AMB_TEMP:
    case SENSOR_EXT_TEMP:
    case SENSOR_AMB_TEMP_NTC:
    case SENSOR_EXT_TEMP_NTC:
    case SENSOR_AMB_TEMP_NTC_CALC:
    case QUELLMARK_TEMPERATURE:
        return true;
    default:
        return false;
    }
}

bool Sensor::isDistance() const
{
    return unitID() == SENSOR_DISTANCE;
}

bool Sensor::isAirPressure() const
{
    const int id = unitID();
    return id == SENSOR_AIRPRESSURE || id == SENSOR_BAROMETER_KPA || id == VERNIER_GAS_PRESSURE;
}

bool Sensor::isSpeed() const
{
    return unitID() == SENSOR_GPS_SPEED;
}

bool Sensor::isBarometer() const
{
    return unitID() == SENSOR_BAROMETER;
}

Sensor::AltUnit Sensor::altUnit() const
{
    if (!needAltUnit())
        return {};
    if (isTemperature())
        return {9.0 / 5, isRate ? 0.0 : 32.0};
    return {convertToAltUnit(1), 0};
}

double Sensor::convertToAltUnit(double value) const
{
    if (!needAltUnit())
        return value;
    if (isTemperature())
        return isRate ? value * 9 / 5 : C2F(value);
    if (isDistance())
        return value * feetPerMeter;
    if (isAirPressure())
        return value * psiPerKpa;
    if (isSpeed())
        return value * (alternativeUnit == milesPerHour ? mphPerKmh : mpsPerKmh);
    return value;
}

double Sensor::convertFromAltUnit(double value) const
{
    if (!needAltUnit())
        return value;
    if (isTemperature())
        return (isRate ? value : value - 32) * 5 / 9;
    if (isDistance())
        return value / feetPerMeter;
    if (isAirPressure())
        return value / psiPerKpaBack;
    if (isSpeed())
        return value / (alternativeUnit == milesPerHour ? mphPerKmh : mpsPerKmh);
    return value;
}

void Sensor::applyAltUnit(const QSettings& store)
{
    const auto isSet = [&store](const char* key, bool byDefault) {
        return store.value(QLatin1String(key), byDefault).toBool();
    };
    const auto choose = [this](int unit, const char* text, double demo, int decimals) {
        alternativeUnit = unit;
        unitName = QString::fromUtf8(text);
        demoVal = demo;
        precision = decimals;
    };
    if (isTemperature() && !isSet(Settings::unitsCelsius, true))
        choose(1, "°F", 80, 1);
    else if (isDistance() && !isSet(Settings::unitsMeter, true))
        choose(1, "ft", 5, 2);
    else if (isAirPressure() && !isSet(Settings::unitsAirKpa, true))
        choose(1, "PSI", 15, 2);
    else if (isBarometer() && isSet(Settings::unitsBaroHpa, false))
        choose(1, "hPa", demoVal, 2);
    else if (isSpeed() && !isSet(Settings::unitsKmh, true))
        isSet(Settings::unitsMph, true) ? choose(milesPerHour, "mph", 5, 1)
                                        : choose(metersPerSecond, "m/s", 5, 1);
    if (!needAltUnit())
        return;
    min = minView = convertToAltUnit(min);
    max = maxView = convertToAltUnit(max);
}

#include "sensors/sensorkind.h"

#include <QtEndian>

#include <algorithm>

#include "sensors/calibration.h"
#include "sensors/sensorsmaster.h"

namespace {

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

/// Four bytes: degrees, thousandths of a minute, the letter of the hemisphere.
double coordinate(const unsigned char* bytes)
{
    const double minutes = qFromBigEndian<quint16>(bytes + 1) / 1000.0;
    const double value = bytes[0] + minutes / 60;
    return bytes[3] == 'S' || bytes[3] == 'W' ? -value : value;
}

double internal(quint16 word, int id)
{
    const int val = word;
    switch (id) {
    case SENSOR_UV:
        return std::max(0.0, (val - 21845) * 458.0 * 150 / 1000000 / 100);
    case SENSOR_PH:
    case SENSOR_CO:
        return val / 1000.0;
    case SENSOR_BAROMETER:
    case SENSOR_HUMIDITY:
    case SENSOR_SOUND:
    case SENSOR_TURBIDITY:
    case SENSOR_AIRPRESSURE:
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
    default:
        return val / 100.0;
    }
}

bool isForce(int id)
{
    return id == SENSOR_VORTA_FORCE50 || id == SENSOR_VORTA_FORCE5;
}

double meaning(quint16 word, const SensorRow& row)
{
    if (row.ID >= QUELLMARK_FIRST && row.ID <= QUELLMARK_LAST)
        return quellmark(word, row.ID);
    if (row.ID >= VERNIER_FIRST && row.ID <= VERNIER_LAST)
        return vernier(row, word);
    return internal(word, row.ID);
}

constexpr SensorRow noRow{};

} // namespace

SensorKind::SensorKind(int id, const Units& units, const ForceCalibration& force)
    : row(sensorRow(id))
    , ID(id)
    , isPressureLimited(id == SENSOR_AIRPRESSURE && !units.psi)
    , force(force)
{
    if (!row)
        row = &noRow;
    values = std::max(row->nSens, 1);
}

int SensorKind::numBytes() const
{
    return row->numBytes;
}

int SensorKind::childID(int child) const
{
    return row->virtualIDs[child];
}

bool SensorKind::isTemperature(int id)
{
    switch (id) {
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

double SensorKind::convert(quint16 word) const
{
    if (isForce(ID))
        return newtons(word);
    const double value = meaning(word, *row);
    return isPressureLimited ? std::min(value, row->max) : value;
}

double SensorKind::newtons(int steps) const
{
    const double gain = force.gain == 0.0F ? 1.0 : static_cast<double>(force.gain);
    const double value = std::clamp((steps - force.offset) / gain, row->min, row->max);
    return force.isInverted ? -value : value;
}

void SensorKind::decode(const unsigned char* bytes, double* into) const
{
    switch (ID) {
    case SENSOR_GPS:
        into[0] = coordinate(bytes);
        into[1] = coordinate(bytes + 4);
        into[2] = qFromBigEndian<quint16>(bytes + 8) / 10.0;
        into[3] = qFromBigEndian<quint16>(bytes + 10) / 10.0;
        return;
    case SENSOR_COLORIMETER:
    case SENSOR_HEARTRATE:
    case SENSOR_ACCELERATION:
        for (int i = 0; i < values; ++i) {
            const double value = internal(qFromBigEndian<quint16>(bytes + 2 * i), row->virtualIDs[i]);
            into[i] = ID == SENSOR_COLORIMETER && value > row->max ? 0 : value;
        }
        return;
    default:
        into[0] = row->numBytes == 2 ? convert(qFromBigEndian<quint16>(bytes)) : 0;
    }
}

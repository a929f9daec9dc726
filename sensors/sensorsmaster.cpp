#include "sensors/sensorsmaster.h"

#include <QCoreApplication>

namespace {

// Marks a text for the translator; lupdate finds it with -tr-function-alias QT_TR_NOOP=N_.
#define N_(text) text

struct Catalogue
{
    Q_DECLARE_TR_FUNCTIONS(Sensor)

public:
    static constexpr SensorRow rows[] = {
        // clang-format off
//   ID                           name                          unit                 min       max  gray icon        colour icon            demo  prec curve bytes nSens children
    {SENSOR_UV,                   N_("UV"),                     N_("[UVI]"),         0,     12.5, "UVSens",        N_("UVSens"),          1.5, 2, true,   2, 1, {}},
    {SENSOR_PH,                   N_("pH"),                     N_("[pH]"),          0,       14, "pH",            N_("pHS"),               7, 2, true,   2, 1, {}},
    {SENSOR_CO,                   N_("CO"),                     N_("ppm"),           0,       30, "CO",            N_("CO"),                5, 2, true,   2, 1, {}},
    {SENSOR_BAROMETER,            N_("Barometer"),              N_("mB"),          500,     1150, "Barometer",     N_("Air_Pressure"),   1000, 1, true,   2, 1, {}},
    {SENSOR_IR_TEMP,              N_("IR Temperature"),         N_("°C"),          -70,      380, "IR",            N_("IR"),             22.5, 1, true,   2, 1, {}},
    {SENSOR_HUMIDITY,             N_("Humidity"),               N_("%RH"),           0,      100, "Humidity",      N_("RH"),               50, 1, true,   2, 1, {}},
    {SENSOR_GPS,                  N_("GPS"),                    "",                  0,        0, "GPS",           N_("GPS"),               0, 1, false, 12, 4, {SENSOR_GPS_LAT, SENSOR_GPS_LONG, SENSOR_GPS_SPEED, SENSOR_GPS_ANGLE}},
    {SENSOR_GPS_LAT,              N_("GPS latitude"),           N_("°"),           -90,       90, "GPS",           N_("GPS"),              32, 8, false,  4, 0, {}},
    {SENSOR_GPS_LONG,             N_("GPS longitude"),          N_("°"),          -180,      180, "GPS",           N_("GPS"),              34, 8, false,  4, 0, {}},
    {SENSOR_GPS_SPEED,            N_("GPS speed"),              N_("km/h"),          0,      200, "GPS",           N_("GPS"),              10, 1, true,   2, 0, {}},
    {SENSOR_GPS_ANGLE,            N_("GPS angle"),              N_("°"),             0,      360, "GPS",           N_("GPS"),               0, 1, false,  2, 0, {}},
    {SENSOR_AMB_TEMP,             N_("Amb. Temperature"),       N_("°C"),          -10,       50, "TempInt",       N_("Tmp_int"),          23, 1, true,   2, 1, {}},
    {SENSOR_EXT_TEMP,             N_("Ext. Temperature"),       N_("°C"),          -20,      125, "TempExt",       N_("Tmp_ext"),          30, 1, true,   2, 1, {}},
    {SENSOR_COLORIMETER,          N_("Colorimeter"),            "",                  0,      100, "Colorimeter",   N_("Prisma"),            0, 1, false,  6, 3, {SENSOR_COLORIMETER_R, SENSOR_COLORIMETER_G, SENSOR_COLORIMETER_B}},
    {SENSOR_COLORIMETER_R,        N_("Colorimeter red"),        N_("%T"),            0,      100, "Colorimeter",   N_("Prisma"),           50, 1, true,   2, 0, {}},
    {SENSOR_COLORIMETER_G,        N_("Colorimeter green"),      N_("%T"),            0,      100, "Colorimeter",   N_("Prisma"),           50, 1, true,   2, 0, {}},
    {SENSOR_COLORIMETER_B,        N_("Colorimeter blue"),       N_("%T"),            0,      100, "Colorimeter",   N_("Prisma"),           50, 1, true,   2, 0, {}},
    {SENSOR_AMB_TEMP_NTC,         N_("Amb. Temperature"),       N_("°C"),          -10,       50, "TempInt",       N_("Tmp_int"),          23, 1, true,   2, 1, {}},
    {SENSOR_EXT_TEMP_NTC,         N_("Ext. Temperature"),       N_("°C"),          -20,      125, "TempExt",       N_("Tmp_ext"),          30, 1, true,   2, 1, {}},
    {SENSOR_LIGHT,                N_("Light"),                  N_("lx"),            0,    55000, "LightSens",     N_("LightSens"),     10000, 0, true,   2, 1, {}},
    {SENSOR_SOUND,                N_("Sound"),                  N_("dB"),            0,      100, "mic_dba",       N_("mic_dba"),           1, 1, true,   2, 1, {}},
    {SENSOR_HEARTRATE,            N_("Pulse"),                  "",                  0,      100, "Pulse",         N_("EKGS"),              0, 0, false,  4, 2, {SENSOR_HEARTRATE_RATE, SENSOR_HEARTRATE_WAVE}},
    {SENSOR_HEARTRATE_RATE,       N_("Heart rate"),             N_("bpm"),          30,      200, "Pulse",         N_("EKGS"),             80, 0, true,   2, 1, {}},
    {SENSOR_HEARTRATE_WAVE,       N_("Pulse waveform"),         N_("V"),             0,      3.3, "Pulse",         N_("EKGS"),            1.5, 3, true,   2, 1, {}},
    {SENSOR_DISTANCE,             N_("Distance"),               N_("m"),             0,       10, "Distance",      N_("DIstance"),          2, 3, true,   2, 1, {}},
    {SENSOR_AIRPRESSURE,          N_("Air pressure"),           N_("kPa"),           0,      300, "AirPressure",   N_("Baromatic"),       101, 1, true,   2, 1, {}},
    {SENSOR_VOLTAGE,              N_("Voltage"),                N_("V"),           -30,       30, "Voltage",       N_("VS"),                5, 2, true,   2, 1, {}},
    {SENSOR_CURRENT,              N_("Current"),                N_("A"),            -1,        1, "Current",       N_("CurrentS"),        0.1, 3, true,   2, 1, {}},
    {SENSOR_HUMIDITY_ANALOG,      N_("Humidity"),               N_("%RH"),           0,      100, "Humidity",      N_("RH"),               20, 1, true,   2, 1, {}},
    {SENSOR_AMB_TEMP_NTC_CALC,    N_("Amb. Temperature"),       N_("°C"),          -10,       50, "TempInt",       N_("Tmp_int"),          23, 1, true,   2, 1, {}},
    {SENSOR_TURBIDITY,            N_("Turbidity"),              N_("NTU"),           0,      200, "Turbidity",     N_("TurbidityS"),        5, 1, true,   2, 1, {}},
    {SENSOR_EXTERNAL,             N_("Ext. Analog sensor"),     N_("V"),             0,        5, "General",       N_("General_Input"),     5, 2, true,   2, 1, {}},
    {SENSOR_MICROPHONE,           N_("Microphone"),             N_("V"),             0,      3.3, "mic_v",         N_("mic_v"),             1, 2, true,   2, 1, {}},
    {SENSOR_VOLTAGE_LOW,          N_("Low Voltage"),            N_("mV"),         -500,      500, "Vx10_BW_icon",  N_("V_x10"),           100, 1, true,   2, 1, {}},
    {SENSOR_ACCELERATION,         N_("Acceleration"),           N_("g"),            -8,        8, "Accelerometer", N_("AccelerationS"),     1, 3, false,  6, 3, {SENSOR_ACCELERATION_X, SENSOR_ACCELERATION_Y, SENSOR_ACCELERATION_Z}},
    {SENSOR_ACCELERATION_X,       N_("Acceleration X"),         N_("g"),            -8,        8, "Accelerometer", N_("AccelerationS"),     1, 2, true,   2, 1, {}},
    {SENSOR_ACCELERATION_Y,       N_("Acceleration Y"),         N_("g"),            -8,        8, "Accelerometer", N_("AccelerationS"),     1, 2, true,   2, 1, {}},
    {SENSOR_ACCELERATION_Z,       N_("Acceleration Z"),         N_("g"),            -8,        8, "Accelerometer", N_("AccelerationS"),     1, 2, true,   2, 1, {}},
    {SENSOR_EXTERNAL_B,           N_("Ext. Analog sensor"),     N_("V"),             0,        5, "General",       N_("General_Input"),     5, 2, true,   2, 1, {}},
    {SENSOR_DISSOLVED_OXYGEN,     N_("Dissolved oxygen"),       N_("mg/l"),          0,       25, "Oxygen",        N_("DO2"),             5.2, 2, true,   2, 1, {}},
    {SENSOR_CONDUCTIVITY,         N_("Conductivity"),           N_("mS"),            0,       24, "Conductivity",  N_("CondSens"),         10, 2, true,   2, 1, {}},
    {SENSOR_THERMOCOUPLE,         N_("Thermocouple"),           N_("°C"),         -200,     1350, "Thermocouple",  N_("ThermocoupleS"),    25, 1, true,   2, 1, {}},
    {SENSOR_BAROMETER_KPA,        N_("Barometer"),              N_("kPa"),          50,      115, "Barometer",     N_("Air_Pressure"),    100, 2, true,   2, 1, {}},
    {SENSOR_ION,                  N_("Ion"),                    N_("mV"),         -400,      400, "ION",           N_("ION"),            23.1, 1, true,   2, 1, {}},
    {SENSOR_VOLTAGE_SORREL,       N_("Voltage"),                N_("V"),           -30,       30, "Voltage",       N_("VS"),                5, 2, true,   2, 1, {}},
    {SENSOR_CURRENT_SORREL,       N_("Current"),                N_("A"),             0,        1, "Current",       N_("CurrentS"),        0.1, 3, true,   2, 1, {}},
    {SENSOR_SPECIAL,              "",                           "",                  0,        5, "",              "",                      0, 1, true,   2, 1, {}},
    {QUELLMARK_CURRENT,           N_("Current"),                N_("mA"),         -250,      250, "Current",       N_("CurrentS"),        100, 1, true,   2, 1, {}},
    {QUELLMARK_RESPIRATION,       N_("Respiration"),            N_("L/m"),        -220,      220, "RespirationS",  N_("RespirationS"),    123, 1, true,   2, 1, {}},
    {QUELLMARK_VOLTAGE,           N_("Voltage"),                N_("V"),           -10,       10, "Voltage",       N_("VS"),                5, 2, true,   2, 1, {}},
    {QUELLMARK_MAGNETIC10,        N_("Magnetic Field (10mT)"),  N_("mT"),          -10,       10, "General",       N_("Magnet"),          1.5, 2, true,   2, 1, {}},
    {QUELLMARK_MAGNETIC02,        N_("Magnetic Field (0.2mT)"), N_("mT"),         -0.3,      0.3, "General",       N_("Magnet"),          0.1, 4, true,   2, 1, {}},
    {QUELLMARK_HEARTRATE_WAVE,    N_("Heart rate"),             N_("V"),             0,        5, "Pulse",         N_("EKGS"),              2, 0, true,   2, 1, {}},
    {QUELLMARK_TEMPERATURE,       N_("Temperature"),            N_("°C"),          -10,      110, "TempInt",       N_("Tmp_int"),          23, 1, true,   2, 1, {}},
    {QUELLMARK_CO2,               N_("CO2"),                    N_("ppm"),           0,     5000, "CO2",           N_("CO2"),             123, 0, true,   2, 1, {}},
    {QUELLMARK_CURRENT12,         N_("Current (12mA)"),         N_("mA"),          -12,       12, "Current",       N_("CurrentS"),        1.2, 2, true,   2, 1, {}},
    {QUELLMARK_VOLTAGE30,         N_("Voltage (30V)"),          N_("V"),           -30,       30, "Voltage",       N_("VS"),                5, 1, true,   2, 1, {}},
    {QUELLMARK_THERMOCOUPLE,      N_("Thermocouple"),           N_("°C"),          -50,      950, "Thermocouple",  N_("ThermocoupleS"),    25, 1, true,   2, 1, {}},
    {QUELLMARK_PHOTOGATE,         N_("Photogate"),              N_("V"),             0,        5, "Pulse",         N_("Photogate"),         2, 2, true,   2, 1, {}},
    {QUELLMARK_PHOTOGATE_HEART,   N_("Photogate"),              N_("V"),             0,        5, "Pulse",         N_("Photogate"),         2, 2, true,   2, 1, {}},
    {QUELLMARK_HEARTRATE_RATE,    N_("Heart rate"),             N_("bpm"),          30,      200, "Pulse",         N_("EKGS"),             80, 0, true,   2, 1, {}},
    {SENSOR_VORTA_FORCE50,        N_("Force (50N)"),            N_("N"),           -50,       50, "Force_x10",     N_("Force_x10"),         1, 1, true,   2, 1, {}},
    {SENSOR_VORTA_FORCE5,         N_("Force (5N)"),             N_("N"),            -5,        5, "Force",         N_("Force"),             1, 2, true,   2, 1, {}},
    {SENSOR_VORTA_ACC_X,          N_("Acceleration X"),         N_("g"),            -8,        8, "Accelerometer", N_("AccelerationS"),     1, 2, true,   2, 1, {}},
    {SENSOR_VORTA_ACC_Y,          N_("Acceleration Y"),         N_("g"),            -8,        8, "Accelerometer", N_("AccelerationS"),     1, 2, true,   2, 1, {}},
    {SENSOR_VORTA_ACC_Z,          N_("Acceleration Z"),         N_("g"),            -8,        8, "Accelerometer", N_("AccelerationS"),     1, 2, true,   2, 1, {}},
    {SENSOR_SIM_DISTANCE,         N_("Height"),                 N_("m"),             0,       20, "",              "",                      0, 1, true,   2, 1, {}},
    {SENSOR_SIM_SPEED,            N_("Speed"),                  N_("m/s"),         -20,       20, "",              "",                      0, 1, true,   2, 1, {}},
    {SENSOR_SIM_ENERGY,           N_("Energy"),                 N_("J"),             0,     1000, "",              "",                      0, 1, true,   2, 1, {}},
    {SENSOR_SIM_ANGLE,            N_("Angle"),                  N_("°"),          -180,      180, "",              "",                      0, 1, true,   2, 1, {}},
    {VERNIER_3DACC,               N_("3D Accelerometer"),       N_("m/s^2"),    -76.62,    75.68, "General",       N_("General_Input"),    10, 2, true,   2, 1, {}},
    {VERNIER_ANEMOMETER,          N_("Anemometer"),             N_("m/s"),         -10,       40, "General",       N_("General_Input"),     5, 2, true,   2, 1, {}},
    {VERNIER_BAROMETER,           N_("Barometer"),              N_("atm"),       0.809,    1.194, "General",       N_("General_Input"),     1, 2, true,   2, 1, {}},
    {VERNIER_BLOOD_PRESSURE,      N_("Blood Pressure"),         N_("mm Hg"),         0,   280.55, "General",       N_("General_Input"),    90, 2, true,   2, 1, {}},
    {VERNIER_CHARGE100,           N_("Charge (100nC)"),         N_("nC"),        -82.5,     82.5, "General",       N_("General_Input"),    10, 2, true,   2, 1, {}},
    {VERNIER_CO2_10000,           N_("CO2 (10,000)"),           N_("ppm"),           0,    12500, "General",       N_("General_Input"),   350, 2, true,   2, 1, {}},
    {VERNIER_CO2_100000,          N_("CO2 (100,000)"),          N_("ppm"),           0,   125000, "General",       N_("General_Input"),   350, 2, true,   2, 1, {}},
    {VERNIER_COLORIMETER,         N_("Colorimeter"),            N_("%T"),            0,  142.855, "General",       N_("General_Input"),    34, 2, true,   2, 1, {}},
    {VERNIER_CONDUCTIVITY200,     N_("Conductivity (200uS)"),   N_("μS/cm"),         0,    328.5, "General",       N_("General_Input"),   100, 2, true,   2, 1, {}},
    {VERNIER_CONDUCTIVITY2000,    N_("Conductivity (2000uS)"),  N_("μS/cm"),         0,     4800, "General",       N_("General_Input"),   100, 2, true,   2, 1, {}},
    {VERNIER_CONDUCTIVITY20000,   N_("Conductivity (20000uS)"), N_("μS/cm"),         0,    45000, "General",       N_("General_Input"),   100, 2, true,   2, 1, {}},
    {VERNIER_CURRENT,             N_("Current"),                N_("A"),        -0.625,    0.625, "General",       N_("General_Input"),   0.2, 2, true,   2, 1, {}},
    {VERNIER_DISSOLVED_OXYGEN,    N_("Dissolved Oxygen"),       N_("mg/L"),     -0.327,    0.327, "General",       N_("General_Input"),   0.1, 2, true,   2, 1, {}},
    {VERNIER_EKG,                 N_("EKG"),                    N_("V"),             0,        5, "General",       N_("General_Input"),   1.2, 2, true,   2, 1, {}},
    {VERNIER_ELECTRODE_AMPLIFIER, N_("Electrode Amplifier"),    N_("mV"),     -559.793, 1774.582, "General",       N_("General_Input"),   123, 2, true,   2, 1, {}},
    {VERNIER_FLOW_RATE,           N_("Flow rate"),              N_("m/s"),           0,        5, "General",       N_("General_Input"),   1.2, 2, true,   2, 1, {}},
    {VERNIER_FORCE10,             N_("Force (10N)"),            N_("N"),        -12.25,    12.25, "General",       N_("General_Input"),    10, 2, true,   2, 1, {}},
    {VERNIER_FORCE50,             N_("Force (50N)"),            N_("N"),        -61.25,    61.25, "General",       N_("General_Input"),    10, 2, true,   2, 1, {}},
    {VERNIER_GAS_PRESSURE,        N_("Gas Pressure"),           N_("kPa"),      -25.86,   232.69, "General",       N_("General_Input"),    10, 2, true,   2, 1, {}},
    {VERNIER_LIGHT600,            N_("Light (600)"),            N_("lux"),           0,      770, "General",       N_("General_Input"),   123, 2, true,   2, 1, {}},
    {VERNIER_LIGHT6000,           N_("Light (6000)"),           N_("lux"),           0,     8460, "General",       N_("General_Input"),  1234, 2, true,   2, 1, {}},
    {VERNIER_LIGHT150000,         N_("Light (150000)"),         N_("lux"),           0,   192120, "General",       N_("General_Input"), 12345, 2, true,   2, 1, {}},
    {VERNIER_MAGNETIC_FIELD_03,   N_("Magnetic Field (0.3mT)"), N_("mT"),        -0.32,     0.48, "General",       N_("General_Input"),   0.1, 2, true,   2, 1, {}},
    {VERNIER_MAGNETIC_FIELD_64,   N_("Magnetic Field (6.4mT)"), N_("mT"),       -8.063,    8.062, "General",       N_("General_Input"),   1.2, 2, true,   2, 1, {}},
    {VERNIER_MICROPHONE,          N_("Microphone"),             N_("V"),             0,        5, "General",       N_("General_Input"),   1.2, 2, true,   2, 1, {}},
    {VERNIER_O2_GAS_SENSOR,       N_("O2 Gas sensor"),          N_("%"),             0,  32.8125, "General",       N_("General_Input"),   1.2, 2, true,   2, 1, {}},
    {VERNIER_ORP,                 N_("ORP"),                    N_("mV"),     -559.793, 1774.582, "General",       N_("General_Input"),   123, 2, true,   2, 1, {}},
    {VERNIER_PH,                  N_("pH"),                     N_("pH"),        -5.47,    13.72, "General",       N_("General_Input"),     7, 2, true,   2, 1, {}},
    {VERNIER_PHOTOGATE,           N_("Photogate"),              N_("V"),             0,        5, "General",       N_("General_Input"),   1.2, 2, true,   2, 1, {}},
    {VERNIER_RELATIVE_HUMIDITY,   N_("Relative Humidity"),      N_("%RH"),      -25.81,   126.34, "General",       N_("General_Input"),    50, 2, true,   2, 1, {}},
    {VERNIER_RESPIRATION,         N_("Respiration"),            N_("mm Hg"),         0,     1935, "General",       N_("General_Input"),   123, 2, true,   2, 1, {}},
    {VERNIER_SALINITY,            N_("Salinity"),               N_("ppt"),           0,     81.5, "General",       N_("General_Input"),    40, 2, true,   2, 1, {}},
    {VERNIER_SPIROMETER,          N_("Spirometer"),             N_("L/s"),    -17.9672,  17.9673, "General",       N_("General_Input"),     5, 2, true,   2, 1, {}},
    {VERNIER_SOUND_LEVEL,         N_("Sound Level"),            N_("dB"),            0,      500, "General",       N_("General_Input"),    50, 2, true,   2, 1, {}},
    {VERNIER_SOIL_MOISTURE,       N_("Soil Moisture"),          N_("%"),           -42,      498, "General",       N_("General_Input"),   123, 2, true,   2, 1, {}},
    {VERNIER_UVA,                 N_("UVA"),                    N_("mW/m^2"),        0,    19700, "General",       N_("General_Input"),  1234, 2, true,   2, 1, {}},
    {VERNIER_UVB,                 N_("UVB"),                    N_("mW/m^2"),        0,     1020, "General",       N_("General_Input"),   123, 2, true,   2, 1, {}},
    {VERNIER_VOLTAGE,             N_("Voltage"),                N_("V"),         -6.25,     6.25, "General",       N_("General_Input"),   1.2, 2, true,   2, 1, {}},
    {SENSOR_LAST,                 "",                           "",                  0,        0, "",              "",                      0, 0, false,  0, 0, {}},
    };
    // clang-format on
};

#undef N_

} // namespace

const SensorRow* sensorsMaster()
{
    return Catalogue::rows;
}

const SensorRow* sensorRow(int id)
{
    for (const SensorRow& row : Catalogue::rows) {
        if (row.ID == id && id != SENSOR_LAST)
            return &row;
    }
    return nullptr;
}

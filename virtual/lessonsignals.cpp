#include "virtual/lessonsignals.h"

#include "sensors/sensorids.h"

#include <QtMath>

#include <cmath>

namespace {

enum class Shape
{
    Cooling,   ///< hot at once, then falling towards the surroundings, again and again
    Day,       ///< morning, clouds, evening, night
    Drift,     ///< slow ups and downs
    Pendulum,  ///< a swing that dies down and is pushed anew
    Heart,     ///< one heart beat a cycle
    Exercise,  ///< rest, effort, recovery
    Titration, ///< flat, steep, flat
    Charging,  ///< a capacitor charged and discharged
    Pulses,    ///< the current of the same
    Pump,      ///< strokes of a syringe
    Tone,      ///< an oscillation that swells
    Talk,      ///< irregular bursts
    Steps,     ///< one drop of dye after the other
    Gate,      ///< a card that passes a light beam
};

struct Lesson
{
    int id;
    Shape shape;
    double low;
    double high;
    double seconds; ///< one cycle
    double noise;   ///< in the unit of the value
};

// clang-format off
constexpr Lesson lessons[] = {
    {SENSOR_UV,                  Shape::Day,       0.1,   8,     70,   0.04},
    {SENSOR_PH,                  Shape::Titration, 3.1,   10.9,  64,   0.012},
    {SENSOR_CO,                  Shape::Talk,      1,     14,    18,   0.08},
    {SENSOR_BAROMETER,           Shape::Drift,     1006,  1017,  90,   0.08},
    {SENSOR_IR_TEMP,             Shape::Cooling,   23,    71,    52,   0.15},
    {SENSOR_HUMIDITY,            Shape::Cooling,   41,    88,    47,   0.2},
    {SENSOR_AMB_TEMP,            Shape::Drift,     21.2,  24.8,  110,  0.03},
    {SENSOR_EXT_TEMP,            Shape::Cooling,   22,    79,    75,   0.06},
    {SENSOR_COLORIMETER_R,       Shape::Steps,     18,    93,    50,   0.25},
    {SENSOR_COLORIMETER_G,       Shape::Steps,     41,    95,    50,   0.25},
    {SENSOR_COLORIMETER_B,       Shape::Steps,     64,    97,    50,   0.25},
    {SENSOR_AMB_TEMP_NTC,        Shape::Drift,     21.2,  24.8,  110,  0.03},
    {SENSOR_EXT_TEMP_NTC,        Shape::Cooling,   22,    79,    75,   0.06},
    {SENSOR_LIGHT,               Shape::Day,       40,    21000, 70,   60},
    {SENSOR_SOUND,               Shape::Talk,      57,    94,    7,    0.5},
    {SENSOR_HEARTRATE_RATE,      Shape::Exercise,  66,    151,   80,   0.6},
    {SENSOR_HEARTRATE_WAVE,      Shape::Heart,     0.6,   2.9,   0.82, 0.012},
    {SENSOR_DISTANCE,            Shape::Pendulum,  0.42,  1.34,  1.9,  0.001},
    {SENSOR_AIRPRESSURE,         Shape::Pump,      72,    214,   9,    0.1},
    {SENSOR_VOLTAGE,             Shape::Charging,  0.1,   9.1,   18,   0.01},
    {SENSOR_CURRENT,             Shape::Pulses,    -0.62, 0.62,  18,   0.001},
    {SENSOR_HUMIDITY_ANALOG,     Shape::Cooling,   41,    88,    47,   0.2},
    {SENSOR_AMB_TEMP_NTC_CALC,   Shape::Drift,     21.2,  24.8,  110,  0.03},
    {SENSOR_TURBIDITY,           Shape::Steps,     6,     118,   60,   0.3},
    {SENSOR_EXTERNAL,            Shape::Drift,     0.8,   3.9,   12,   0.005},
    {SENSOR_MICROPHONE,          Shape::Tone,      0.4,   2.9,   0.29, 0.01},
    {SENSOR_VOLTAGE_LOW,         Shape::Pendulum,  -240,  240,   2.6,  0.8},
    {SENSOR_ACCELERATION_X,      Shape::Pendulum,  -1.3,  1.3,   1.9,  0.012},
    {SENSOR_ACCELERATION_Y,      Shape::Pendulum,  -0.6,  0.6,   0.95, 0.012},
    {SENSOR_ACCELERATION_Z,      Shape::Pendulum,  0.7,   1.6,   0.95, 0.012},
    {SENSOR_EXTERNAL_B,          Shape::Drift,     0.5,   4.3,   17,   0.005},
    {SENSOR_DISSOLVED_OXYGEN,    Shape::Exercise,  5.1,   9.4,   66,   0.015},
    {SENSOR_CONDUCTIVITY,        Shape::Steps,     0.4,   12.5,  58,   0.01},
    {SENSOR_THERMOCOUPLE,        Shape::Cooling,   23,    355,   44,   0.3},
    {SENSOR_BAROMETER_KPA,       Shape::Drift,     100.6, 101.7, 90,   0.01},
    {SENSOR_ION,                 Shape::Titration, -130,  210,   62,   0.3},
    {SENSOR_VOLTAGE_SORREL,      Shape::Charging,  0.1,   9.1,   18,   0.01},
    {SENSOR_CURRENT_SORREL,      Shape::Day,       0.02,  0.6,   18,   0.001},
    {QUELLMARK_CURRENT,          Shape::Pulses,    -180,  180,   16,   0.4},
    {QUELLMARK_RESPIRATION,      Shape::Pendulum,  -70,   70,    4.1,  0.8},
    {QUELLMARK_VOLTAGE,          Shape::Charging,  0.1,   8.6,   16,   0.01},
    {QUELLMARK_MAGNETIC10,       Shape::Pendulum,  -7,    7,     3,    0.02},
    {QUELLMARK_MAGNETIC02,       Shape::Drift,     -0.05, 0.05,  20,   0.0006},
    {QUELLMARK_HEARTRATE_WAVE,   Shape::Heart,     0.9,   4.1,   0.82, 0.015},
    {QUELLMARK_TEMPERATURE,      Shape::Cooling,   22,    79,    75,   0.06},
    {QUELLMARK_CO2,              Shape::Exercise,  420,   2300,  72,   5},
    {QUELLMARK_CURRENT12,        Shape::Pulses,    -9,    9,     16,   0.03},
    {QUELLMARK_VOLTAGE30,        Shape::Charging,  0.2,   24,    16,   0.05},
    {QUELLMARK_THERMOCOUPLE,     Shape::Cooling,   23,    355,   44,   0.3},
    {QUELLMARK_PHOTOGATE,        Shape::Gate,      0.1,   4.8,   0.95, 0.005},
    {QUELLMARK_PHOTOGATE_HEART,  Shape::Gate,      0.1,   4.8,   0.95, 0.005},
    {QUELLMARK_HEARTRATE_RATE,   Shape::Exercise,  66,    151,   80,   0.6},
    {VERNIER_3DACC,              Shape::Pendulum,  -12,   12,    1.9,  0.1},
    {VERNIER_ANEMOMETER,         Shape::Talk,      0.5,   9,     8,    0.1},
    {VERNIER_BAROMETER,          Shape::Drift,     0.99,  1.01,  90,   0.0002},
    {VERNIER_BLOOD_PRESSURE,     Shape::Cooling,   62,    175,   30,   0.5},
    {VERNIER_COLORIMETER,        Shape::Steps,     18,    96,    50,   0.2},
    {VERNIER_CO2_10000,          Shape::Exercise,  420,   3900,  72,   8},
    {VERNIER_DISSOLVED_OXYGEN,   Shape::Exercise,  0.05,  0.3,   66,   0.001},
    {VERNIER_EKG,                Shape::Heart,     0.7,   3.9,   0.82, 0.015},
    {VERNIER_FORCE10,            Shape::Pendulum,  -6,    6,     1.9,  0.03},
    {VERNIER_FORCE50,            Shape::Pendulum,  -30,   30,    1.9,  0.1},
    {VERNIER_GAS_PRESSURE,       Shape::Pump,      72,    205,   9,    0.1},
    {VERNIER_LIGHT600,           Shape::Day,       5,     560,   70,   2},
    {VERNIER_LIGHT6000,          Shape::Day,       10,    5200,  70,   10},
    {VERNIER_LIGHT150000,        Shape::Day,       50,    92000, 70,   200},
    {VERNIER_MICROPHONE,         Shape::Tone,      0.8,   4.2,   0.29, 0.01},
    {VERNIER_O2_GAS_SENSOR,      Shape::Cooling,   16.5,  20.9,  70,   0.02},
    {VERNIER_PH,                 Shape::Titration, 3.1,   10.9,  64,   0.02},
    {VERNIER_PHOTOGATE,          Shape::Gate,      0.1,   4.8,   0.95, 0.005},
    {VERNIER_RELATIVE_HUMIDITY,  Shape::Cooling,   41,    88,    47,   0.2},
    {VERNIER_RESPIRATION,        Shape::Pendulum,  740,   800,   4.1,  0.5},
    {VERNIER_SOUND_LEVEL,        Shape::Talk,      57,    94,    7,    0.5},
    {VERNIER_SPIROMETER,         Shape::Pendulum,  -4,    4,     4.1,  0.05},
    {VERNIER_VOLTAGE,            Shape::Charging,  0.1,   5.6,   16,   0.005},
    {VERNIER_CHARGE100,          Shape::Charging,   2,     71,    16,   0.2},
    {VERNIER_CO2_100000,         Shape::Exercise,   900,   42000, 72,   90},
    {VERNIER_CONDUCTIVITY200,    Shape::Steps,      12,    190,   58,   0.4},
    {VERNIER_CONDUCTIVITY2000,   Shape::Steps,      120,   1900,  58,   4},
    {VERNIER_CONDUCTIVITY20000,  Shape::Steps,      900,   18500, 58,   40},
    {VERNIER_CURRENT,            Shape::Pulses,     -0.45, 0.45,  16,   0.001},
    {VERNIER_ELECTRODE_AMPLIFIER,Shape::Titration,  -180,  420,   62,   1},
    {VERNIER_FLOW_RATE,          Shape::Talk,       0.2,   2.9,   12,   0.02},
    {VERNIER_MAGNETIC_FIELD_03,  Shape::Pendulum,   -0.2,  0.2,   3,    0.001},
    {VERNIER_MAGNETIC_FIELD_64,  Shape::Pendulum,   -5,    5,     3,    0.02},
    {VERNIER_ORP,                Shape::Titration,  180,   1050,  62,   1},
    {VERNIER_SALINITY,           Shape::Steps,      4,     36,    58,   0.05},
    {VERNIER_SOIL_MOISTURE,      Shape::Cooling,    9,     46,    80,   0.2},
    {VERNIER_UVA,                Shape::Day,        40,    9200,  70,   15},
    {VERNIER_UVB,                Shape::Day,        4,     480,   70,   1},
    {SENSOR_VORTA_FORCE50,       Shape::Pump,       -4,    34,    2.2,  0.1},
    {SENSOR_VORTA_FORCE5,        Shape::Pendulum,   -3,    3,     1.4,  0.01},
    {SENSOR_VORTA_ACC_X,         Shape::Pendulum,   -1.6,  1.6,   1.4,  0.01},
    {SENSOR_VORTA_ACC_Y,         Shape::Pendulum,   -0.6,  0.6,   0.7,  0.01},
    {SENSOR_VORTA_ACC_Z,         Shape::Pendulum,   0.7,   1.6,   0.7,  0.01},
};
// clang-format on

/// A random number from -1 to 1 that depends on its arguments only.
double hashNoise(quint64 a, quint64 b)
{
    quint64 x = a * 0x9E3779B97F4A7C15ULL + b * 0xBF58476D1CE4E5B9ULL + 0x94D049BB133111EBULL;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ULL;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBULL;
    x ^= x >> 31;
    return double(x >> 11) / double(1ULL << 52) - 1.0;
}

double smoothStep(double x)
{
    const double y = qBound(0.0, x, 1.0);
    return y * y * (3 - 2 * y);
}

/// Random, but without jumps: hills about 1 wide, from -1 to 1.
double hills(quint64 seed, double x)
{
    const double base = std::floor(x);
    const auto at = [seed, base](int i) { return hashNoise(seed, quint64(qint64(base) + i + 1000000)); };
    return at(0) + (at(1) - at(0)) * smoothStep(x - base);
}

double bump(double x, double centre, double width)
{
    return std::exp(-qPow((x - centre) / width, 2));
}

double heart(double x)
{
    return 0.24 + 0.1 * bump(x, 0.18, 0.035) - 0.12 * bump(x, 0.275, 0.012) + 0.74 * bump(x, 0.3, 0.024) -
           0.2 * bump(x, 0.33, 0.014) + 0.2 * bump(x, 0.55, 0.055);
}

double cooling(double cycle, double x)
{
    constexpr double dip = 0.06; // the probe goes back into the hot water
    if (cycle > 0 && x < dip)
        return 1 - 0.97 * std::exp(-5 * x / dip);
    return std::exp(-3.4 * (cycle > 0 ? (x - dip) / (1 - dip) : x));
}

/// The shape between 0 and 1, `x` in cycles.
double shapeAt(Shape shape, double x, quint64 seed)
{
    const double cycle = std::floor(x);
    const double f = x - cycle;
    switch (shape) {
    case Shape::Cooling:
        return cooling(cycle, f);
    case Shape::Day:
        if (f > 0.8)
            return 0;
        return qPow(qSin(M_PI * f / 0.8), 1.3) * (1 - 0.45 * smoothStep(2.5 * hills(seed, x * 17) - 0.6));
    case Shape::Drift:
        return 0.5 + 0.3 * qSin(2 * M_PI * x) + 0.14 * qSin(5.3 * M_PI * x + 1) + 0.05 * hills(seed, x * 23);
    case Shape::Pendulum:
        return 0.5 + 0.5 * qSin(2 * M_PI * x) * std::exp(-1.8 * std::fmod(x, 24) / 24);
    case Shape::Heart:
        return heart(f);
    case Shape::Exercise:
        return f < 0.35 ? 0.04 + 0.9 * (1 - std::exp(-f * 9)) : 0.04 + 0.86 * std::exp(-(f - 0.35) * 5.5);
    case Shape::Titration:
        return f > 0.96 ? (1 - f) / 0.04 : 1 / (1 + std::exp(-22 * (f - 0.5))) * 0.9 + 0.1 * f;
    case Shape::Charging:
        return f < 0.5 ? 1 - std::exp(-f * 10) : std::exp(-(f - 0.5) * 10);
    case Shape::Pulses:
        return f < 0.5 ? 0.5 + 0.5 * std::exp(-f * 10) : 0.5 - 0.5 * std::exp(-(f - 0.5) * 10);
    case Shape::Pump:
        return (1 / (1.45 + qCos(2 * M_PI * x)) - 0.408) / 1.814;
    case Shape::Tone:
        return 0.5 + 0.5 * qSin(2 * M_PI * x) * (0.6 + 0.4 * qSin(0.17 * M_PI * x));
    case Shape::Talk:
        return qPow(0.5 + 0.5 * hills(seed, x * 6), 1.6) * (0.55 + 0.45 * qSin(2 * M_PI * x)) + 0.05;
    case Shape::Steps:
        return 1 - (std::floor(f * 6) + smoothStep((f * 6 - std::floor(f * 6)) * 5)) / 6;
    case Shape::Gate:
        return f < 0.12 ? 0 : 1;
    }
    return 0;
}

const Lesson* lessonOf(int sensorId)
{
    for (const Lesson& lesson : lessons) {
        if (lesson.id == sensorId)
            return &lesson;
    }
    return nullptr;
}

} // namespace

double LessonSignals::lessonTime(double seconds, double period)
{
    constexpr double slowest = 1.0;
    return period > slowest ? seconds * slowest / period : seconds;
}

/// How this logger differs from others, -1 to 1.
double LessonSignals::spread(int sensorId, int what) const
{
    return hashNoise(seed, quint64(sensorId) * 16 + quint64(what));
}

double LessonSignals::value(int sensorId, double seconds) const
{
    if (sensorId >= SENSOR_GPS_LAT && sensorId <= SENSOR_GPS_ANGLE)
        return walk(sensorId, seconds);
    const Lesson* known = lessonOf(sensorId);
    const Lesson lesson = known ? *known : Lesson{sensorId, Shape::Drift, 0, 3, 20, 0.01};
    const bool isFast = lesson.seconds < 5;
    const double pace = 1 + 0.13 * spread(sensorId, 0);
    const double start = (isFast ? 0.5 : 0.03) * (1 + spread(sensorId, 1));
    const double height = 0.93 + 0.07 * spread(sensorId, 2);
    const quint64 own = quint64(seed) * 1000 + quint64(sensorId);
    const double shape = shapeAt(lesson.shape, seconds / lesson.seconds * pace + start, own);
    const double noise = lesson.noise * hashNoise(own, quint64(qRound64(seconds * 1e6)));
    const double floor = (lesson.high - lesson.low) * 0.02 * spread(sensorId, 3);
    return lesson.low + floor + (lesson.high - lesson.low) * height * shape + noise;
}

/// Rounds through a park, on an oval with a waver, at walking pace.
double LessonSignals::walk(int sensorId, double seconds) const
{
    constexpr double metresPerDegree = 111320;
    const double radius = 55 + 20 * spread(SENSOR_GPS, 0);
    const double speed = 1.35 + 0.2 * spread(SENSOR_GPS, 1); // m/s
    const double latitude = 50.0755 + 0.002 * spread(SENSOR_GPS, 2);
    const double longitude = 14.4378 + 0.002 * spread(SENSOR_GPS, 3);
    const double turn = speed * seconds / radius + M_PI * spread(SENSOR_GPS, 4);
    const double waver = 4 * hills(seed, seconds / 9);
    if (sensorId == SENSOR_GPS_LAT)
        return latitude + (radius + waver) * qSin(turn) / metresPerDegree;
    if (sensorId == SENSOR_GPS_LONG)
        return longitude + 1.4 * (radius + waver) * qCos(turn) / metresPerDegree;
    if (sensorId == SENSOR_GPS_SPEED)
        return 3.6 * (speed + 0.3 * hills(seed + 1, seconds / 4));
    const double heading =
        std::fmod(360.0 - qRadiansToDegrees(turn) + 6 * hills(seed + 2, seconds / 3), 360.0);
    return heading < 0 ? heading + 360 : heading;
}

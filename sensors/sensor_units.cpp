#include "sensors/sensor.h"

#include <algorithm>
#include <cmath>

#include "common/common.h"
#include "sensors/sensorkind.h"
#include "sensors/sensorsmaster.h"

namespace {

constexpr double feetPerMeter = 3.2808399;
constexpr double psiPerKpa = 0.1450377;
// Finer than the factor of the other direction; both are what files and displays of the family use.
constexpr double psiPerKpaBack = 0.14503773773020923;
constexpr double mphPerKmh = 0.621371192;
constexpr double mpsPerKmh = 0.277777778;

constexpr int milesPerHour = 1;
constexpr int metersPerSecond = 2;

QString coordinateText(double value, bool isLatitude)
{
    if (value == 0.0)
        return QStringLiteral("----");
    const char letter = isLatitude ? (value > 0 ? 'N' : 'S') : (value > 0 ? 'E' : 'W');
    const double size = std::abs(value);
    int degrees = static_cast<int>(std::floor(size));
    const double rest = (size - degrees) * 60;
    int minutes = static_cast<int>(std::floor(rest));
    double seconds = (rest - minutes) * 60;
    // What rounds to a full minute belongs to the next one.
    if (QString::number(seconds, 'f', 2).startsWith(QLatin1String("60"))) {
        seconds = 0;
        degrees += ++minutes / 60;
        minutes %= 60;
    }
    return QStringLiteral("%1%2%3'%4''%5")
        .arg(QString::number(degrees), QString(QChar(0x00b0)),
             QStringLiteral("%1").arg(minutes, 2, 10, QLatin1Char('0')), Common::myToString(seconds, 'f', 2),
             QString(QLatin1Char(letter)));
}

} // namespace

bool Sensor::isSameQuantity(const Sensor& other) const
{
    const bool isNamedAlike = row && other.row && qstrcmp(row->name, other.row->name) == 0;
    return (ID == other.ID || isNamedAlike) && unitName == other.unitName;
}

double Sensor::shownValue(double base, bool clip) const
{
    const double value = convertToAltUnit(base);
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
    return SensorKind::isTemperature(unitID());
}

QString Sensor::quantity() const
{
    if (!row || unitID() == SENSOR_SPECIAL || isPhotoGate(ID))
        return QString();
    // Units that more than one quantity has: there the kind of sensor tells them apart.
    static const QStringList common{QString(), QStringLiteral("V"), QStringLiteral("mV"), QStringLiteral("°"),
                                    QStringLiteral("%")};
    const QString unit = QString::fromUtf8(row->uname);
    const QString what = isTemperature()         ? QStringLiteral("temperature")
                         : common.contains(unit) ? unit + QString::fromUtf8(row->name)
                                                 : unitName;
    return isRate ? what + QStringLiteral(" a second") : what;
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

void Sensor::applyAltUnit()
{
    const auto choose = [this](int unit, const char* text, double demo, int decimals) {
        alternativeUnit = unit;
        unitName = QString::fromUtf8(text);
        demoVal = demo;
        precision = decimals;
    };
    if (isTemperature() && ownUnits.fahrenheit)
        choose(1, "°F", 80, 1);
    else if (isDistance() && ownUnits.feet)
        choose(1, "ft", 5, 2);
    else if (isAirPressure() && ownUnits.psi)
        choose(1, "PSI", 15, 2);
    else if (isBarometer() && ownUnits.hpa)
        choose(1, "hPa", demoVal, 2);
    else if (isSpeed() && ownUnits.speed == Units::Mph)
        choose(milesPerHour, "mph", 5, 1);
    else if (isSpeed() && ownUnits.speed == Units::MetersPerSecond)
        choose(metersPerSecond, "m/s", 5, 1);
    if (!needAltUnit())
        return;
    min = minView = convertToAltUnit(min);
    max = maxView = convertToAltUnit(max);
}

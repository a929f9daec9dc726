#include <QCoreApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <QtEndian>

#include <cstdio>
#include <cstring>

#include "common/settings.h"
#include "sensors/sensor.h"
#include "sensors/sensorkind.h"
#include "sensors/sensorsmaster.h"

namespace {

// Without arguments: for every catalogue row in order 65536 little-endian doubles, the base-unit values of
// the raw words. With --texts LANGUAGE tab-separated lines: unit set (0 the base units, 1 all alternatives
// with mph, 2 with m/s), ID, raw word, base value, shown value, that back in the base unit, text; for every
// 257th word. Then, with "-" for the word, the texts of some values that are taken as shown ones.
constexpr double shownValues[] = {-1234.5678, -34.5, -1.23, -0.5,    0,     0.05,
                                  1.999999,   23.45, 59.99, 101.325, 179.5, 54321.98};

constexpr ForceCalibration force{32768, 400};

void printValues()
{
    for (const SensorRow* row = sensorsMaster(); row->ID != SENSOR_LAST; ++row) {
        const SensorKind kind(row->ID, {}, force);
        QVector<quint64> values(65536);
        for (int word = 0; word < values.size(); ++word) {
            const double value = kind.convert(static_cast<quint16>(word));
            quint64 bits = 0;
            std::memcpy(&bits, &value, sizeof bits);
            values[word] = qToLittleEndian(bits);
        }
        std::fwrite(values.constData(), sizeof(quint64), static_cast<size_t>(values.size()), stdout);
    }
}

Units unitsOf(int unitSet)
{
    Units units;
    units.fahrenheit = units.feet = units.psi = units.hpa = unitSet != 0;
    units.speed = unitSet == 0 ? Units::Kmh : unitSet == 1 ? Units::Mph : Units::MetersPerSecond;
    return units;
}

void printTexts(int unitSet)
{
    const Units units = unitsOf(unitSet);
    for (const SensorRow* row = sensorsMaster(); row->ID != SENSOR_LAST; ++row) {
        const Sensor sensor(row->ID, units);
        const SensorKind kind(row->ID, units, force);
        for (int word = 0; word < 65536; word += 257) {
            const double value = kind.convert(static_cast<quint16>(word));
            const double shown = sensor.convertToAltUnit(value);
            std::printf("%d\t%d\t%d\t%.17g\t%.17g\t%.17g\t%s\n", unitSet, row->ID, word, value, shown,
                        sensor.convertFromAltUnit(shown), qUtf8Printable(sensor.valueToString(shown)));
        }
        for (const double shown : shownValues)
            std::printf("%d\t%d\t-\t-\t%.17g\t%.17g\t%s\n", unitSet, row->ID, shown,
                        sensor.convertFromAltUnit(shown), qUtf8Printable(sensor.valueToString(shown)));
    }
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication app(argc, argv);
    const QTemporaryDir home;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home.path());

    const QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.isEmpty()) {
        printValues();
    } else {
        Settings::mainStore().setValue(QLatin1String(Settings::language), arguments.last());
        for (int unitSet = 0; unitSet < 3; ++unitSet)
            printTexts(unitSet);
    }
    return std::fflush(stdout) == 0 ? 0 : 1;
}

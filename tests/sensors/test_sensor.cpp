#include <QCoreApplication>
#include <QSet>
#include <QTest>
#include <QTranslator>

#include "common/common.h"
#include "common/settings.h"
#include "sensors/sensor.h"
#include "sensors/sensorkind.h"
#include "sensors/sensorsmaster.h"
#include "tests/common/testsupport.h"

namespace {

/// A language made of marked texts, with a unit that it does not write and an icon of its own.
class MarkingTranslator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* source, const char*, int) const override
    {
        const QString text = QString::fromUtf8(source);
        if (qstrcmp(context, "Sensor") != 0)
            return QString();
        if (text == QLatin1String("[pH]"))
            return QStringLiteral("[pe-ha]");
        if (text == QLatin1String("lx"))
            return QStringLiteral("XXX");
        return text.startsWith(QLatin1Char('%')) ? QString() : QStringLiteral("x") + text;
    }
};

void choose(const char* key, const QVariant& value)
{
    Settings::mainStore().setValue(QLatin1String(key), value);
}

} // namespace

class TestSensor : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        Settings::mainStore().clear();
        Common::forgetLocale();
    }

private Q_SLOTS:
    void catalogueHoldsTogether()
    {
        QSet<int> ids;
        for (const SensorRow* row = sensorsMaster(); row->ID != SENSOR_LAST; ++row) {
            QVERIFY2(!ids.contains(row->ID), row->name);
            ids.insert(row->ID);
            int childBytes = 0;
            for (int i = 0; i < row->nSens && row->nSens > 1; ++i) {
                QVERIFY2(sensorRow(row->virtualIDs[i]), row->name);
                childBytes += sensorRow(row->virtualIDs[i])->numBytes;
            }
            QCOMPARE(row->nSens > 1 ? childBytes : row->numBytes, row->numBytes);
            QVERIFY2(row->min < row->max || row->ID == SENSOR_GPS, row->name);
        }
        QCOMPARE(ids.size(), 108);
    }

    void decodesSamples_data()
    {
        columns<int, QByteArray, QVector<double>>({"id", "bytes", "values"});
        row("position in the south-west", int(SENSOR_GPS), QByteArray::fromHex("227530532375305700FB0E10"),
            QVector<double>{-34.5, -35.5, 25.1, 360});
        row("other letters are positive", int(SENSOR_GPS), QByteArray::fromHex("220000002300004500000000"),
            QVector<double>{34, 35, 0, 0});
        row("a colour beyond full is nothing", int(SENSOR_COLORIMETER), QByteArray::fromHex("271027110000"),
            QVector<double>{100, 0, 0});
        row("pulse", int(SENSOR_HEARTRATE), QByteArray::fromHex("00508000"), QVector<double>{80, 1.65});
        row("acceleration", int(SENSOR_ACCELERATION), QByteArray::fromHex("000080007FF0"),
            QVector<double>{0, -7.987, 7.9833});
        row("a plain value beyond the range stays", int(SENSOR_PH), QByteArray::fromHex("FFFF"),
            QVector<double>{65.535});
    }

    void decodesSamples()
    {
        const auto [id, bytes, values] = fetched<int, QByteArray, QVector<double>>({"id", "bytes", "values"});
        const SensorKind kind(id);
        QCOMPARE(kind.numBytes(), bytes.size());
        QVector<double> decoded(kind.valueCount());
        kind.decode(reinterpret_cast<const unsigned char*>(bytes.constData()), decoded.data());
        QCOMPARE(decoded, values);
    }

    void forceFollowsItsCalibration()
    {
        const SensorKind force(SENSOR_VORTA_FORCE50, {}, {30000, 100});
        QCOMPARE(force.convert(31000), 10.0);
        QCOMPARE(force.convert(0), -50.0);
        QCOMPARE(SensorKind(SENSOR_VORTA_FORCE50, {}, {30000, 100, true}).convert(31000), -10.0);
        // Of a logger that was never calibrated.
        QCOMPARE(SensorKind(SENSOR_VORTA_FORCE50, {}, {30000, 0}).convert(30001), 1.0);
    }

    // The values and texts in these units are the matter of the reference in the other language.
    void rangesAreInTheChosenUnit()
    {
        Units units;
        units.fahrenheit = units.feet = units.psi = units.hpa = true;
        units.speed = Units::Mph;
        const QMap<int, double> maxima{{SENSOR_EXT_TEMP, 257},       {SENSOR_THERMOCOUPLE, 1350},
                                       {SENSOR_DISTANCE, 32.808399}, {VERNIER_GAS_PRESSURE, 33.748822413},
                                       {SENSOR_BAROMETER, 1150},     {SENSOR_GPS_SPEED, 124.2742384}};
        for (auto row = maxima.begin(); row != maxima.end(); ++row) {
            const Sensor sensor(row.key(), units);
            QCOMPARE(sensor.max, row.value());
            QCOMPARE(sensor.maxView, sensor.max);
            const Sensor::AltUnit line = sensor.altUnit();
            QVERIFY(qAbs(23.4 * line.factor + line.offset - sensor.convertToAltUnit(23.4)) < 1e-9);
        }
        QCOMPARE(Sensor(SENSOR_THERMOCOUPLE, units).unitName, QStringLiteral("°C"));
    }

    void namesAndUnits()
    {
        QCOMPARE(Sensor(SENSOR_EXTERNAL_B).getNameWithUnit(false),
                 QStringLiteral("Ext. Analog sensor 2 [V]"));
        QCOMPARE(Sensor(SENSOR_UV).getNameWithUnit(true), QStringLiteral("UV\n[UVI]"));
        QCOMPARE(Sensor(SENSOR_GPS).getNameWithUnit(true), QStringLiteral("GPS"));
        QCOMPARE(Sensor::vernierList().size(), 38);

        MarkingTranslator translator;
        QCoreApplication::installTranslator(&translator);
        QCOMPARE(Sensor(SENSOR_PH).getNameWithUnit(false), QStringLiteral("xpH [pe-ha]"));
        QCOMPARE(Sensor(SENSOR_LIGHT).getNameWithUnit(false), QStringLiteral("xLight"));
        QCOMPARE(Sensor(SENSOR_LIGHT).iconNameColor,
                 QStringLiteral(":sensor/icons/sensorsC/xLightSens_icon.png"));
        QCOMPARE(Sensor(SENSOR_LIGHT).iconNameGray, QStringLiteral(":sensor/icons/sensors/LightSens.ico"));
        QCOMPARE(Sensor(SENSOR_GPS_LAT).iconNameColor, QStringLiteral(":sensor/icons/sensorsC/GPS_icon.png"));
        // The list keeps the language in which it was made.
        QCOMPARE(Sensor::vernierList().constFirst(), QStringLiteral("3D Accelerometer"));
        QCoreApplication::removeTranslator(&translator);
    }

    void soundHasAFixedView()
    {
        choose(Settings::version, "VestrelJunior");
        const Sensor sound(SENSOR_SOUND, Units::load(Settings::mainStore()));
        QCOMPARE(sound.min, 0.0);
        QCOMPARE(sound.minView, 55.0);
        QVERIFY(sound.barUserScale && sound.readSetMinMax);
        QCOMPARE(sound.precision, 0.0);
    }

    void aCoordinateNeverShowsSixtySeconds()
    {
        const Sensor latitude(SENSOR_GPS_LAT);
        QCOMPARE(latitude.valueToString(-34.5), QString::fromUtf8("34°30'0.00''S"));
        QCOMPARE(latitude.valueToString(34.51666666), QString::fromUtf8("34°31'0.00''N"));
        QCOMPARE(latitude.valueToString(34.99999999), QString::fromUtf8("35°00'0.00''N"));
    }

    void unknownSensorIsEmpty()
    {
        const Sensor sensor(44);
        QVERIFY(sensor.name.isEmpty() && sensor.iconNameColor.isEmpty());
        QCOMPARE(sensor.numBytes, 0);
        QCOMPARE(sensor.max, 0.0);
        const SensorKind kind(44);
        double value = 1;
        kind.decode(nullptr, &value);
        QCOMPARE(value, 0.0);
        QCOMPARE(kind.numBytes(), 0);
    }

    void codesOfExternalSensors()
    {
        QCOMPARE(Sensor::codeToID(107), int(QUELLMARK_TEMPERATURE));
        QCOMPARE(Sensor::codeToID(38), int(VERNIER_VOLTAGE));
        QCOMPARE(Sensor::IDToCode(VERNIER_3DACC), 1);
        QCOMPARE(Sensor::IDToCode(QUELLMARK_PHOTOGATE), 112);
        QVERIFY(Sensor::isPhotoGate(QUELLMARK_PHOTOGATE_HEART) && !Sensor::isPhotoGate(VERNIER_PHOTOGATE));
        QCOMPARE(Sensor::vestrelIconForID(5), Sensor::vestrelIconForExt());
    }
};

QTEST_GUILESS_MAIN(TestSensor)
#include "test_sensor.moc"

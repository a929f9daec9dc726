#pragma once

#include <QObject>
#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QVector>

#include "sensors/sensorids.h"

class Sensor;
class QSettings;
struct SensorRow;
/// Several holders (a logger's list, data sets, views) keep one sensor alive.
using SensorPtr = QSharedPointer<Sensor>;
using SensorList = QVector<SensorPtr>;

/// One measurement channel, built from the catalogue by its sensor ID. Every value inside is in the base unit
/// of the catalogue; the user's unit is applied on the way out and taken off on the way in.
class Sensor : public QObject
{
    Q_OBJECT

public:
    /// A straight line from the base unit to the unit on display: shown = base * factor + offset.
    struct AltUnit
    {
        double factor = 1.0;
        double offset = 0.0;
    };

    /// `inLoggerIndex` and `virtualIndex` make this a child of the composite at that place of the logger's
    /// list. An ID without a catalogue row gives empty texts and zero numbers.
    explicit Sensor(int ID, int inLoggerIndex = -1, int virtualIndex = -1);

    /// The name alone without a unit, else "name[unit]" with a line feed or a blank between.
    QString getNameWithUnit(bool newline) const;
    /// With `isClass`, the group's name goes in front where there is one.
    QString nameForLegend(bool isClass) const;
    bool isActive(bool download) const { return download ? downloadActive : active; }

    bool isTemperature() const;
    bool isDistance() const;
    bool isAirPressure() const;
    bool isSpeed() const;
    bool isBarometer() const;
    bool needAltUnit() const { return alternativeUnit > 0; }
    AltUnit altUnit() const;

    /// Becomes the sensor `id` where it stands: name, unit and the choice of unit, range, demo value,
    /// decimals, ID, width on the wire and icon are taken over; what the user set on the channel (view
    /// ranges, active) stays.
    void adoptIdentity(int id);

    void setOffset(int offset) { forceOffset = offset; }
    /// Raw steps a newton; 0, of a logger that was never calibrated, counts as 1.
    void setGain(float gain) { forceGain = gain == 0.0F ? 1.0F : gain; }

    /// A raw word to a value in the base unit, by this sensor's ID or by another.
    double convert(quint16 word) const { return convert(word, ID); }
    double convert(quint16 word, int forID) const;
    /// A field of a position: four bytes for latitude and longitude, two for speed and angle. 0 on too few
    /// bytes.
    double convert(const unsigned char* bytes, int n, int forID) const;

    /// A raw word into lastValue[0]; a result above `max` counts as 0.
    void setLastValue(quint16 word);
    /// One sample of this channel, `n` bytes; composites fill one entry per child. Too few bytes change
    /// nothing.
    void setLastValue(const unsigned char* bytes, int n);
    /// The last value in the unit on display; with `clip` cut down to `precision` decimals. 0 where there is
    /// no `v`.
    double getLastValue(int v, bool clip) const;

    double convertToAltUnit(double value) const;
    double convertFromAltUnit(double value) const;
    /// The text of a value that is in the unit on display: cut down, not rounded, to `precision` decimals.
    QString valueToString(double value) const;

    static double C2F(double value) { return value * 9 / 5 + 32; }

    static int codeToID(int code);
    static int IDToCode(int id);
    static bool isIDVernier(int id);
    static bool isIDVestrel(int id);
    static bool isIDVernierOrExternal(int id);
    static bool isPhotoGate(int id);
    static QStringList vernierList();
    static QString vestrelIconForID(int id);
    static QString vestrelIconForExt();
    /// Turns the sign of the Vorta force channels round, for all sensors.
    static void setInvertForce(bool tf);

    QString name;
    QString unitName;
    QStringList virtualSensorsNames; ///< one entry per child of a composite, as are the six lists below
    QStringList virtualSensorsUnits;
    QVector<int> virtualSensorIDs;
    QVector<int> virtualDemoVals;
    QVector<int> virtualSensorPrec;
    QVector<double> virtualSensorsMin;
    QVector<double> virtualSensorsMax;

    double min = 0; ///< physical range, in the unit on display
    double max = 0;
    double minView = 0; ///< range of the channel's axis, in the unit on display
    double maxView = 0;
    double classMinView = 0; ///< common range in class views
    double classMaxView = 0;
    double mapMin = 0; ///< colour range of the map
    double mapMax = 0;
    double barUserMin = 0; ///< range of the bar graph fixed by the user
    double barUserMax = 0;
    bool barUserScale = false;
    bool readSetMinMax = false;      ///< minView, maxView were set and do not follow the data
    bool readClassMinMax = false;    ///< a class range is in force
    bool readClassSetMinMax = false; ///< a user set the class range
    double demoVal = 0;
    double precision = 0; ///< decimals on display, a whole number

    int ID = 0;
    bool showCurve = false;
    bool hasVirtual = false; ///< a composite
    bool isVirtual = false;  ///< a child, or a special curve
    int inLoggerIndex = -1;  ///< place of the composite parent in the logger's list
    int virtualIndex = -1;   ///< place among the parent's children
    bool active = false;
    bool downloadActive = false;
    QVector<double> lastValue; ///< base unit; one entry per child, one for a plain channel
    int numBytes = 0;          ///< bytes of one sample on the wire
    QString iconNameGray;
    QString iconNameColor;
    QString iconNameColorActive;
    int forceOffset = 0;
    float forceGain = 1;
    int specialType = 0;
    bool isRate = false; ///< a change per second, which has a unit but no zero point of its own
    int specialOriginIndex = -1;
    int appendIndex = 0;
    QString groupName;

private:
    void setTexts();
    void setChildren();
    void applyAltUnit(const QSettings& store);
    double convertInternal(quint16 word, int forID) const;
    double force(int val) const;
    /// The ID that decides on the unit: for a derived curve that of the channel it came from.
    int unitID() const;
    double cutDown(double value) const;

    const SensorRow* row = nullptr; ///< null for an ID without one
    int alternativeUnit = 0;        ///< 0 base unit, 1 or 2 an alternative
};

#pragma once

#include <QCoreApplication>
#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QVector>

#include "sensors/sensorids.h"
#include "sensors/units.h"

class Calculation;
class Sensor;
struct SensorRow;
/// Several holders (a logger's list, data sets, views) keep one sensor alive.
using SensorPtr = QSharedPointer<Sensor>;
using SensorList = QVector<SensorPtr>;

/// One measurement channel, built from the catalogue by its sensor ID: what it is called and how it is shown.
/// Samples are kept elsewhere and in the base unit of the catalogue; the user's unit is applied on the way
/// out and taken off on the way in.
class Sensor
{
    Q_DECLARE_TR_FUNCTIONS(Sensor)

public:
    /// A straight line from the base unit to the unit on display: shown = base * factor + offset.
    struct AltUnit
    {
        double factor = 1.0;
        double offset = 0.0;
    };
    struct View
    {
        double min;
        double max;
    };

    /// `inLoggerIndex` and `virtualIndex` make this a child of the composite at that place of the logger's
    /// list. An ID without a catalogue row gives empty texts and zero numbers.
    explicit Sensor(int ID, const Units& units = {}, int inLoggerIndex = -1, int virtualIndex = -1);

    /// The units that this channel was built with.
    const Units& units() const { return ownUnits; }

    /// The name alone without a unit, else "name[unit]" with a line feed or a blank between.
    QString getNameWithUnit(bool newline) const;
    /// With `isClass`, the group's name goes in front where there is one.
    QString nameForLegend(bool isClass) const;

    bool isTemperature() const;
    bool isDistance() const;
    bool isAirPressure() const;
    bool isSpeed() const;
    bool isBarometer() const;
    /// Values of both can stand in one mean; a logger's models have different sensors for one quantity.
    bool isSameQuantity(const Sensor& other) const;
    bool needAltUnit() const { return alternativeUnit > 0; }
    AltUnit altUnit() const;
    /// The view that channels of this ID keep until the user or their values ask for more; null for most.
    static const View* fixedView(int ID);

    /// A value of this channel in the unit on display; with `clip` cut down to `precision` decimals.
    double shownValue(double base, bool clip) const;
    double convertToAltUnit(double value) const;
    double convertFromAltUnit(double value) const;
    /// The text of a value that is in the unit on display: cut down, not rounded, to `precision` decimals.
    QString valueToString(double value) const;

    /// What it measures and in which unit: the same text for channels whose values can be compared. Empty for
    /// one that compares with no other, such as a column of a spreadsheet.
    QString quantity() const;

    static double C2F(double value) { return value * 9 / 5 + 32; }

    static int codeToID(int code);
    static int IDToCode(int id);
    static bool isIDVernier(int id);
    static bool isIDVestrel(int id);
    static bool isIDVernierOrExternal(int id);
    /// What a socket holds by this ID, 0 if no socket can hold it. Code 0, of which nothing is known, reads
    /// as a voltage.
    static int socketID(int id);
    static bool isPhotoGate(int id);
    static QStringList vernierList();
    static QString vestrelIconForID(int id);
    static QString vestrelIconForExt();

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
    int numBytes = 0;        ///< bytes of one sample on the wire
    QString iconNameGray;
    QString iconNameColor;
    QString iconNameColorActive;
    int specialType = 0;
    bool isRate = false; ///< a change per second, which has a unit but no zero point of its own
    int specialOriginIndex = -1;
    QSharedPointer<const Calculation> calculation; ///< of a channel that a formula gives, else null
    int appendIndex = 0;
    QString groupName;

private:
    void setTexts();
    void setChildren();
    void applyAltUnit();
    /// The ID that decides on the unit: for a derived curve that of the channel it came from.
    int unitID() const;
    double cutDown(double value) const;

    const SensorRow* row = nullptr; ///< null for an ID without one
    Units ownUnits;
    int alternativeUnit = 0; ///< 0 base unit, 1 or 2 an alternative
};

#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

#include <limits>

#include "data/calculation.h"
#include "data/fittedcurve.h"
#include "data/prediction.h"
#include "sensors/sensor.h"

class ExpData;

/// What a file holds of one graph: the data set and what is placed on it, in base units, whatever is on
/// display. A value: it costs little to take, shares its samples with the set, and may go to another thread.
struct StoredExperiment
{
    struct Channel
    {
        int place = 0; ///< in the data set
        int sensorID = 0;
        int originID = 0;           ///< of a derived channel: the kind it came from, 0 for all others
        int originPlace = -1;       ///< the same channel's place, where it is known
        int derivedBy = 0;          ///< an ExpData::specialCurve, 0 for what is not derived
        Calculation::Recipe recipe; ///< of a part: how a formula gives it; without origins for none
        bool isRate = false;
        QString unit; ///< in base units; empty: that of the kind
        bool isNamed = false;
        QString name;    ///< with its group's
        QString group;   ///< empty, too, where only the whole name is known
        QString ownName; ///< without the group
        double minView = 0;
        double maxView = 0;
        bool isRangeFixed = false; ///< by hand
        bool barUseScale = false;
        double barMinView = 0;
        double barMaxView = 0;
        int curveMode = -1;
        bool isOut = false; ///< a group that does not count in the average of the class
        int leftPad = 0;
        int decimals = 0; ///< that files have of its values
        QVector<double> samples;
    };

    struct Marker
    {
        int type = 0; ///< a markerType
        int iSens = 0;
        double x = 0;
        double y = 0;
        int xOffset = 0;
        int yOffset = 0;
        double linX0 = 0;
        double linX1 = 0;
        double a = 0;
        double b = 0;
        double c = 0;
        double r = 0;
        FittedCurve fit; ///< of a fit that has more than a, b and c; in its own units
        QString text;
        bool isBubble = false;
        bool isLocked = false;
        bool isPic = false;
        QByteArray picture;        ///< the bytes of a picture file
        bool isCompressed = false; ///< JPEG, else PNG
        // Of a part only:
        bool isPlacedByProgram = false; ///< a text that nobody moved
        int xSensor = -1;               ///< the x axis it belongs to
        int onFit = -1;                 ///< the mark in the list whose line a cross stands on
    };

    QString title;
    bool isTitled = false;
    QString view;
    /// A part of a lesson: it says all of its graph, with the digits that were measured. Else it has what
    /// experiment files always had.
    bool isPart = false;
    bool isClass = false; ///< of a part: fixed ranges are those of the class
    double rate = 0;
    int places = 0; ///< of channels, empty ones included
    int activeSens = 0;
    int xyIndex = -1;
    int rightIndex = -1; ///< of a part: the channel with a scale on the right
    int appendIndex = 0;
    QVector<double> times;
    QVector<Channel> channels; ///< in the order of their places
    QVector<Marker> lineMarkers;
    QVector<Marker> barMarkers;
    QVector<Prediction> predictions; ///< of a part only
    QString leftOut;                 ///< one line on what could not be read, empty if nothing

    /// All but title, view and marks. Ranges are those of the channels: for a graph of the class the common
    /// ones.
    static StoredExperiment of(const ExpData& data, bool isPart, bool isClass = false);
    /// Into a set; false, with nothing changed, where the experiment can't be appended.
    bool fill(ExpData* data, bool append) const;
    /// The ranges of the class that were fixed by hand, into the set that it has filled.
    void fixClassRanges(ExpData* data) const;
};

/// Values of marks, fits and ranges, in both directions.
namespace BaseUnit {
/// Of a channel's samples.
QString nameOf(const Sensor& sensor);
/// Where a value may have been on display in another unit it loses the digits that this costs, so that it is
/// the same whatever the unit is. A slope has no zero point.
double of(const SensorPtr& sensor, double shown, bool isSlope = false);
double shown(const SensorPtr& sensor, double base, bool isSlope = false);
} // namespace BaseUnit

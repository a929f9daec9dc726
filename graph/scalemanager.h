#pragma once

#include <QSharedPointer>
#include <QString>
#include <QVector>

#include "sensors/sensor.h"

class ExpData;
class QwtScaleMap;

/// The y range on which one sensor's curve is painted, worked out from the extremes of its data or fixed by
/// hand. All values are in the unit on display.
class oneScale
{
public:
    /// `sensRange` is the sensor's maximum less its minimum; no automatic range goes below `minLimit`.
    oneScale(double dataMin, double dataMax, double sensRange, double minLimit, int groupIndex,
             const QString& groupName, const QString& sensName);

    /// Back to an automatic range without zoom.
    void calcScales();
    /// The automatic range and its part between two fractions; does not change who fixed the range.
    void calcScales(double minZoom, double maxZoom);
    void setZoomScales(double minZoom, double maxZoom);
    /// New extremes; the range follows unless it was fixed by hand.
    void updateScale(double newDataMin, double newDataMax, double zoomMin, double zoomMax);
    /// The part of a margin beside the last extremes that these take, the larger of both; 0 with a range by
    /// hand.
    double marginTaken(double newDataMin, double newDataMax) const;
    /// As updateScale(), with room for more to come on the sides where the data grew: `part` of their span.
    void grow(double newDataMin, double newDataMax, double part, double zoomMin, double zoomMax);
    /// A range from outside. With `isClass` it is a common range and not one fixed by hand.
    void setUserScales(double uMin, double uMax, bool isClass);
    /// The automatic range of a sensor with a view that it keeps is that view, or more where its data are.
    void keepView(const ExpData& data, int iSens);
    bool isUserScale() const { return userScale; }
    /// Full and zoomed range of another scale, whoever fixed it.
    void showAs(const oneScale& other);
    double fullSpan() const { return scaleFullMax - scaleFullMin; }

    double dataMin;
    double dataMax;
    double sensRange;
    double minLimit;
    double scaleFullMin = 0; ///< without zoom
    double scaleFullMax = 0;
    double scaleZoomMin = 0; ///< under the present zoom: what is painted
    double scaleZoomMax = 0;
    int groupIndex; ///< this and the names tell scales apart in a log
    QString groupName;
    QString sensName;
    QString quantity;      ///< scales of one quantity show one range; empty for one by itself
    bool isFilled = false; ///< somebody measured the extremes

private:
    bool userScale = false;
    double marginBelow = 0; ///< between the last extremes and the range of this channel alone
    double marginAbove = 0;
    Sensor::View least{0, 0};
};

/// The y scales of one graph, one per sensor in sensor order. Channels of one quantity and unit share one
/// range: all that they need together, or the one that somebody fixed by hand for one of them.
class scaleManager
{
public:
    /// Builds all scales anew; nobody may hold one across this.
    void setScales(const ExpData* data, bool isClass);
    /// Follows new data and the ranges fixed by hand, which stand in the channels, on the graph of one
    /// logger.
    void updateScales(const ExpData* data);
    /// The same on the graph of the class, which has ranges of its own fixed by hand.
    void updateClassScales(const ExpData* data);
    /// Follows the data of a run in steps: ranges stand still until a channel has taken most of its margin,
    /// then all that are on the move get new ones with some room. An axis does not tremble with each new
    /// extreme, and a whole picture is painted now and then only.
    void growScales(const ExpData* data, bool isClass);
    /// Zooms to a rectangle given in units of sensor `iSens`. All automatic scales zoom by the same
    /// fractions. Nothing happens without such a sensor or when its full range has no width.
    void setZoom(int iSens, double bottom, double top);
    /// Ends the zoom; ranges fixed by hand are shown whole again.
    void setZoomOut();

    /// The range under the present zoom, 0 and 1 for a sensor without a scale.
    double getScaleMin(int iSens) const;
    double getScaleMax(int iSens) const;
    /// Sets a copy of the left axis's map to the sensor's range; leaves it alone without such a scale.
    void fixScaleY(QwtScaleMap* scl, int iSens) const;

    QVector<QSharedPointer<oneScale>> scales;
    bool isOpen = false; ///< a channel without samples has the range of its sensor
    double zoomMin = 0;  ///< the zoom as fractions of a full range
    double zoomMax = 1;

private:
    Sensor::View extremes(const ExpData& data, int i) const;
    void follow(const ExpData* data, bool isClass);
    void takeFixedRange(int i, const Sensor& sensor, bool isClass);
    void share();
    void shareAmong(const QVector<QSharedPointer<oneScale>>& group);
    QVector<QSharedPointer<oneScale>> groupOf(const oneScale& scale) const;
    QSharedPointer<oneScale> fixedFor(int iSens) const;
    void unifyRepeatedScales();

    bool isRepeated = false;
};

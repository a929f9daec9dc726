#pragma once

#include <QPair>
#include <QRectF>

#include "graph/graphparts.h"
#include "graph/markertexts.h"
#include "sensors/sensor.h"

class GraphLegend;
class MarkerLayer;

/// What a kind of graph has and takes.
struct KindTraits
{
    bool hasLegend;
    bool isStyled;     ///< each curve can be a line, points or hidden
    bool hasTimeGrid;  ///< lines at the marks of the x axis
    bool hasRanges;    ///< by hand
    bool takesXSensor; ///< in place of the time
    bool takesCrosses;
    bool takesAnalyses; ///< between two crosses
    bool isTimeInUnit;  ///< x values are in the unit of the axis, not in seconds
    bool hidesByTitle;  ///< a right press there puts the graph away
    MarkerForm markers;
};

/// Curves, bars or a spectrum: what a graph shows of its data, and how its axes go along.
class GraphKind
{
public:
    virtual ~GraphKind() = default;

    /// Anew from the data set.
    virtual void setData() = 0;
    /// Brings axes, scales and pictures up to the data and repaints.
    virtual void update() = 0;
    /// Makes a sensor the active one.
    virtual void showSensor(int iSens) = 0;
    /// The colour of a sensor has changed.
    virtual void showColor(int iSens) = 0;
    /// The range of a sensor that is in force, without zoom.
    virtual QPair<double, double> range(int iSens) const = 0;
    virtual void setUserRange(const SensorPtr& sensor, double min, double max) = 0;
    virtual void setAutomaticRange(const SensorPtr& sensor) = 0;
    /// -1 for the time.
    virtual void setXSensor(int iSens) = 0;
    virtual void zoomIn(const QRectF& rect) = 0;
    virtual void zoomOut() = 0;
    /// Room for a run of `length`, s, while there are no samples; 0: as there always is.
    virtual void makeRoom(double /*length*/) {}
    /// What the scales have to hold is other than it was: other samples, or what stands beside them.
    virtual void follow() { update(); }
    /// Another experiment is going to be shown: no part of the last holds for it.
    virtual void startAnew() {}
    /// The sensor whose colour is meant by a point of the canvas, -1 for none.
    virtual int sensorAt(const QPointF& pos) const = 0;
    /// Its own steps of a new layout are under way, and a picture would be of a middle state.
    virtual bool isBusy() const { return false; }
};

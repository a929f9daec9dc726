#pragma once

#include <memory>

#include "graph/curvesearch.h"
#include "graph/graphkind.h"
#include "graph/livepicture.h"

class AverageBand;
class CurveNames;

/// Curves over time or over another sensor. The x axis of a run grows in steps; each curve has the y scale of
/// its own sensor.
class LineKind : public GraphKind
{
public:
    static constexpr KindTraits traits{true, true, true,  true,  true,
                                       true, true, false, false, MarkerForm::Curve};

    LineKind(const GraphParts& parts, GraphLegend& legend, MarkerLayer& layer);

    ~LineKind() override;

    void setData() override;
    void update() override;
    void showSensor(int iSens) override;
    void showColor(int iSens) override;
    QPair<double, double> range(int iSens) const override;
    void setUserRange(const SensorPtr& sensor, double min, double max) override;
    void setAutomaticRange(const SensorPtr& sensor) override;
    void setXSensor(int iSens) override;
    void zoomIn(const QRectF& rect) override;
    void zoomOut() override;
    void startAnew() override;
    void makeRoom(double length) override;
    void follow() override;
    int sensorAt(const QPointF& pos) const override;

private:
    void updateOverTime();
    void updateOverSensor();
    void updateXRange();
    void updateScales();
    double predictedEnd() const;
    void showWindow();
    void showRoom();
    void leaveXY();
    void endZoom();
    bool showsAll(const QRectF& rect) const;
    void showRangeY();
    void showRight();
    SensorList sharersOf(const SensorPtr& sensor) const;
    void takeFixedRanges();
    void repaint();
    bool outgrewAutoRange() const;
    QString sensorTitle(int iSens) const;

    const GraphParts parts;
    GraphLegend& legend;
    MarkerLayer& layer;
    const CurveSearch search;
    bool isZoomed = false;
    double shownXMax = 0; ///< in seconds or sample numbers, as last set
    bool isXYShown = false;
    double room = 0; ///< s, of a graph without samples; 0 where nothing is expected
    bool isRoomShown = false;
    LivePicture live;
    std::unique_ptr<CurveNames> names; ///< of the class only, as is the next
    std::unique_ptr<AverageBand> band;
};

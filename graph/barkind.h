#pragma once

#include <QPair>

#include <memory>
#include <optional>

#include "graph/graphkind.h"

class QwtInterval;
class ScrollZoomer;
class myPlotHistogram;

/// The samples of the active sensor as bars, and the window that scrolls along them. Its x values are in the
/// unit of the axis.
class BarKind : public GraphKind
{
public:
    static constexpr KindTraits traits{true,  false, false, true,  false,
                                       false, false, true,  false, MarkerForm::Curve};

    BarKind(const GraphParts& parts, GraphLegend& legend, MarkerLayer& layer);
    ~BarKind() override;

    void setData() override;
    void update() override;
    void showSensor(int iSens) override;
    void showColor(int iSens) override;
    QPair<double, double> range(int iSens) const override;
    void setUserRange(const SensorPtr& sensor, double min, double max) override;
    void setAutomaticRange(const SensorPtr& sensor) override;
    void setXSensor(int) override {}
    void zoomIn(const QRectF&) override {} // the scroll bar moves its window
    void zoomOut() override {}
    int sensorAt(const QPointF& pos) const override;
    bool isBusy() const override { return isMoving; }

    /// During a run the window ends at the newest bar, else it begins at the first; it stays where the user
    /// scrolled it to.
    void update(bool isRun);
    void showSensor(int iSens, bool isRun);
    /// The bars take the active sensor's colour.
    void showColor();

private:
    int count() const;
    double xOf(int i) const;
    void moveWindow(const QwtInterval& whole, const QwtInterval& shown);
    void build();
    void scrolled(const QRectF& shown);

    const GraphParts parts;
    GraphLegend& legend;
    MarkerLayer& layer;
    const std::unique_ptr<myPlotHistogram> bars;
    ScrollZoomer* zoomer = nullptr; ///< owned by the canvas
    double width = 0;
    double step = 1;             ///< distance of two samples in units of the axis
    std::optional<double> place; ///< left edge that the user scrolled to, seconds or sample numbers
    int known = 0;               ///< samples at the last update
    bool isMoving = false;
};

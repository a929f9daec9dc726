#pragma once

#include <QCoreApplication>

#include <memory>

#include "graph/graphkind.h"

class FrequencyTip;
class PeakName;

/// The spectrum of a curve. Its data set has a value for each frequency in place of each time. Axes, marks
/// and zoom go along with it, and the highest line is named.
class SpectrumKind : public GraphKind
{
    Q_DECLARE_TR_FUNCTIONS(SpectrumKind)

public:
    static constexpr KindTraits traits{false, false, true,  false, false,
                                       true,  false, false, true,  MarkerForm::Frequency};

    SpectrumKind(const GraphParts& parts, MarkerLayer& layer);
    ~SpectrumKind() override;

    void setData() override;
    void update() override;
    void showSensor(int) override { update(); }
    void showColor(int iSens) override;
    QPair<double, double> range(int /*iSens*/) const override { return {0, 1}; }
    void setUserRange(const SensorPtr&, double, double) override {}
    void setAutomaticRange(const SensorPtr&) override {}
    void setXSensor(int) override {}
    void zoomIn(const QRectF& rect) override;
    void zoomOut() override;
    void startAnew() override { isZoomed = false; }
    int sensorAt(const QPointF&) const override { return -1; }

private:
    void showRanges();
    void namePeak();

    const GraphParts parts;
    MarkerLayer& layer;
    const std::unique_ptr<PeakName> peak;
    FrequencyTip* const tip; ///< owned by the canvas
    bool isZoomed = false;
};

#pragma once

#include "graph/graphkind.h"

/// The spectrum of a curve. It has no curves of its own yet; axes, titles and zoom are there.
class SpectrumKind : public GraphKind
{
public:
    static constexpr KindTraits traits{false, false, true,  false, false,
                                       true,  false, false, true,  MarkerForm::Frequency};

    explicit SpectrumKind(const GraphParts& parts);

    void setData() override {}
    void update() override;
    void showSensor(int) override { update(); }
    void showColor(int) override {}
    QPair<double, double> range() const override { return {0, 1}; }
    void setUserRange(const SensorPtr&, double, double) override {}
    void setAutomaticRange(const SensorPtr&) override {}
    void setXSensor(int) override {}
    void zoomIn(const QRectF& rect) override;
    void zoomOut() override {}
    int sensorAt(const QPointF&) const override { return -1; }

private:
    const GraphParts parts;
};

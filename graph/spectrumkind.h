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
    void setUserRange(const SensorPtr&, double, double) override {}
    void setXSensor(int) override {}
    void zoomIn(const QRectF& rect) override;
    void zoomOut() override {}
    int sensorAt(const QPointF&) const override { return -1; }

private:
    const GraphParts parts;
};

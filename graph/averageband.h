#pragma once

#include <qwt_plot_item.h>

class QPolygonF;
struct GraphParts;

/// How far the groups of the class lie from their average: one standard deviation on both sides of it, behind
/// all curves. A row with a single group has none.
class AverageBand : public QwtPlotItem
{
public:
    /// `parts` is not owned.
    explicit AverageBand(const GraphParts& parts);

    void draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
              const QRectF& canvas) const override;

private:
    struct Column;
    QVector<QPolygonF> shapes(const QwtScaleMap& xMap, const QwtScaleMap& yMap) const;

    const GraphParts& parts;
};

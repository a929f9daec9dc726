#pragma once

#include <QString>

#include <qwt_plot_item.h>

#include "graph/graphparts.h"

/// Names the highest point of a curve on the canvas, beside it.
class PeakName : public QwtPlotItem
{
public:
    explicit PeakName(const GraphParts& parts);

    /// What is said of the point; an empty text says nothing.
    void setPeak(const QPointF& value, const QString& text);
    const QString& text() const { return words; }

    void draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
              const QRectF& canvasRect) const override;

private:
    const GraphParts parts;
    QPointF peak;
    QString words;
};

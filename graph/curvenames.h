#pragma once

#include <QColor>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVector>

#include <qwt_plot_item.h>

#include "graph/graphparts.h"

/// The group's name at the end of each curve of the class: from afar two blues are one, and the legend is far
/// from the curve.
class CurveNames : public QwtPlotItem
{
public:
    explicit CurveNames(const GraphParts& parts);

    struct Name
    {
        QString text;
        QColor color;
        QPointF end; ///< of the curve, in pixels
        QRectF box;
    };

    /// Right of the ends, or left of the canvas's edge where there is no room, one below the other.
    QVector<Name> places(const QwtScaleMap& xMap, const QwtScaleMap& yMap, const QRectF& canvas) const;
    void draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
              const QRectF& canvas) const override;

private:
    QStringList texts() const;
    int lastRow(int i, const QwtScaleMap& xMap) const;
    QFont font() const;

    const GraphParts parts;
};

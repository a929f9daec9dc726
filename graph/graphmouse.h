#pragma once

#include <QObject>
#include <QRectF>

#include "graph/graphkind.h"

class MarkerLayer;
class MarkerMouse;
class QMouseEvent;
class QwtPlotPicker;
class SlopeTool;

/// What the mouse does on title, axes and canvas of a graph, by its mode. Events are observed and passed on.
class GraphMouse : public QObject
{
    Q_OBJECT

public:
    /// Nothing is owned.
    GraphMouse(QwtPlot& plot, const KindTraits& traits, MarkerMouse& markers, SlopeTool& slope);

    void enableZoom(bool tf);
    void enableAnnotate(bool tf);
    void enableMarker(bool tf);
    void enableSlope(bool tf);
    bool isSlopeOn() const { return isSlope; }

    bool eventFilter(QObject* object, QEvent* event) override;

Q_SIGNALS:
    void titlePressed();
    void titleDoubleClicked();
    void titlePressedRight();
    /// A right press on the y axis.
    void rangeAsked();
    /// A right press on the x axis.
    void xAsked(const QPoint& globalPos);
    /// A right press on the canvas, on no marker.
    void colorAsked(const QPointF& pos);
    void noteAsked(const QPointF& pos);
    void zoomedIn(const QRectF& rect);
    void zoomedOut();

private:
    void onTitle(const QEvent& event);
    void onCanvas(const QMouseEvent& event);
    void pressLeft(const QPointF& pos);

    QwtPlot& plot;
    const KindTraits& traits;
    MarkerMouse& markers;
    SlopeTool& slope;
    QwtPlotPicker* const zoomer; ///< owned by the canvas
    bool isZoom = false;
    bool isAnnotate = false;
    bool isMarker = false;
    bool isSlope = false;
};

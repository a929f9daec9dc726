#pragma once

#include <QObject>
#include <QRectF>

#include <functional>
#include <memory>
#include <optional>

#include "graph/graphkind.h"

class EscapeWatch;
class MarkerLayer;
class MarkerMouse;
class QMouseEvent;
class QWheelEvent;
class SlopeTool;
class ZoomPicker;

/// What the mouse does on title, axes and canvas of a graph, by its mode; the wheel zooms about the pointer
/// and the middle button pans in all of them. Events are observed and passed on, but for the Escape that ends
/// a drag.
class GraphMouse : public QObject
{
    Q_OBJECT

public:
    /// Nothing is owned.
    GraphMouse(QwtPlot& plot, const KindTraits& traits, MarkerMouse& markers, SlopeTool& slope);
    ~GraphMouse() override;

    void enableZoom(bool tf);
    void enableAnnotate(bool tf);
    void enableMarker(bool tf);
    void enableSlope(bool tf);
    void enableReading(bool tf);
    void enablePen(bool tf);
    bool isSlopeOn() const { return isSlope; }

    bool eventFilter(QObject* object, QEvent* event) override;

Q_SIGNALS:
    void titlePressed();
    void titleDoubleClicked();
    void titlePressedRight();
    /// On no marker, and no mode is on that a press means something to.
    void groundDoubleClicked();
    /// A right press on the y axis.
    void rangeAsked(int axisID);
    /// A right press on the x axis.
    void xAsked(const QPoint& globalPos);
    /// A right press on the canvas, on no marker.
    void colorAsked(const QPointF& pos);
    /// A press for a cross where the kind of graph takes none.
    void crossRefused();
    void noteAsked(const QPointF& pos);
    /// While the graph is read.
    void pointedAt(const QPointF& pos);
    /// The left button draws; what is not kept was given up.
    void penDown(const QPointF& pos);
    void penMoved(const QPointF& pos);
    void penUp(bool isKept);
    void zoomedIn(const QRectF& rect);
    void zoomedOut();

private:
    void onTitle(const QEvent& event);
    void onCanvas(const QMouseEvent& event);
    void press(const QMouseEvent& event);
    void pressLeft(const QPointF& pos);
    void move(const QPointF& pos);
    void release(Qt::MouseButton button);
    void watchEscape();
    void giveUp();
    void loseMouse();
    void liftPen(bool isKept);
    void onWheel(const QWheelEvent& event);
    void showPixels(const QRectF& area);

    QwtPlot& plot;
    const KindTraits& traits;
    MarkerMouse& markers;
    SlopeTool& slope;
    ZoomPicker* const zoomer; ///< owned by the canvas
    bool isZoom = false;
    bool isAnnotate = false;
    bool isMarker = false;
    bool isSlope = false;
    bool isReading = false;
    bool isPen = false;
    bool isPenDown = false;
    std::unique_ptr<EscapeWatch> escape; ///< while a button is down
    std::optional<QPointF> pannedTo;
};

#pragma once

#include <QList>
#include <QPoint>
#include <QPointF>
#include <QRectF>
#include <QVector>

#include <functional>

class QwtPlot;
class myPlotMarker;

/// Finds places for the texts beside the markers of a graph.
class TextPlaces
{
public:
    /// `markers` is the live list of the graph. Neither is owned. With `isBelow` new texts hang below their
    /// crosses.
    /// `curvePoints` gives points of the curves in pixels, some pixels apart.
    TextPlaces(const QwtPlot& plot, const QList<myPlotMarker*>& markers,
               std::function<QVector<QPointF>()> curvePoints, bool isBelow);

    /// Puts every text at its distance in pixels from its partner or the value that it points at, but not
    /// beyond the canvas. One that nobody moved by hand goes to where it hides no other text and no cross, if
    /// it would otherwise; a new one leans to the middle of the canvas.
    /// When axes or size have changed, it keeps clear of curves as well. `span`, which may be null, is not
    /// among the markers and comes last.
    void putAll(myPlotMarker* span = nullptr);
    /// One text where it wants to be.
    void put(myPlotMarker* text) const;

    /// What the texts were placed for: the x range and the size, then each mark. They keep their places as
    /// long as it is so.
    const QVector<QRectF>& ground() const { return lastGround; }
    void setGround(const QVector<QRectF>& ground) { lastGround = ground; }

    static constexpr int tangentDistance = 100; ///< pixels of a tangent's text from the curve

private:
    void lean(const myPlotMarker& cross, myPlotMarker* text) const;
    /// What is on the canvas already.
    struct Taken
    {
        QVector<QRectF> boxes;
        QVector<QPointF> curves;
        bool isKept = false; ///< nothing has changed since the texts were put
    };

    void putText(myPlotMarker* text, Taken* taken);
    QVector<QRectF> groundFor(const QList<myPlotMarker*>& texts) const;
    double hidden(const Taken& taken, const QRectF& box) const;
    QPoint freeOffset(const myPlotMarker& text, const Taken& taken) const;
    void putAt(myPlotMarker* text, const QPoint& offset) const;
    QRectF boxOf(const myPlotMarker& marker) const;
    QPointF basePixel(const myPlotMarker& text) const;
    QRectF boxAt(const myPlotMarker& text, const QPointF& base, const QPoint& offset) const;
    void flipTangentText(myPlotMarker* text, double y) const;

    const QwtPlot& plot;
    const QList<myPlotMarker*>& markers;
    const std::function<QVector<QPointF>()> curvePoints;
    const bool isBelow;
    QVector<QRectF> lastGround;
};

#pragma once

#include <QList>
#include <QPoint>
#include <QPointF>
#include <QRectF>
#include <QVector>

class QwtPlot;
class myPlotMarker;

/// Finds places for the texts beside the markers of a graph.
class TextPlaces
{
public:
    /// `markers` is the live list of the graph. Neither is owned. With `isBelow` new texts hang below their
    /// crosses.
    TextPlaces(const QwtPlot& plot, const QList<myPlotMarker*>& markers, bool isBelow);

    /// Puts every text at its distance in pixels from its partner or the value that it points at, but not
    /// beyond the canvas. One that nobody moved by hand goes to where it hides no other text and no cross, if
    /// it would otherwise; a new one leans to the middle of the canvas.
    void putAll() const;
    /// One text where it wants to be.
    void put(myPlotMarker* text) const;

    static constexpr int tangentDistance = 100; ///< pixels of a tangent's text from the curve

private:
    void lean(const myPlotMarker& cross, myPlotMarker* text) const;
    QPoint freeOffset(const myPlotMarker& text, const QVector<QRectF>& taken) const;
    void putAt(myPlotMarker* text, const QPoint& offset) const;
    QRectF boxOf(const myPlotMarker& marker) const;
    QPointF basePixel(const myPlotMarker& text) const;
    QRectF boxAt(const myPlotMarker& text, const QPointF& base, const QPoint& offset) const;
    void flipTangentText(myPlotMarker* text, double y) const;

    const QwtPlot& plot;
    const QList<myPlotMarker*>& markers;
    const bool isBelow;
};

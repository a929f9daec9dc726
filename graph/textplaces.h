#pragma once

#include <QList>
#include <QPoint>
#include <QPointF>
#include <QRectF>

class QwtPlot;
class myPlotMarker;

/// Finds places for the texts beside the markers of a graph.
class TextPlaces
{
public:
    /// `markers` is the live list of the graph. Neither is owned.
    TextPlaces(const QwtPlot& plot, const QList<myPlotMarker*>& markers);

    /// Gives a new text a distance from its cross that leads to the middle of the canvas; with `isBelow` it
    /// hangs below in any case.
    void lean(const myPlotMarker& cross, myPlotMarker* text, bool isBelow) const;
    /// Moves a text to where it hides no other text and no cross, if it would otherwise.
    void findRoom(myPlotMarker* text) const;
    /// Puts a text at its distance in pixels from its partner or the value that it points at, but not beyond
    /// the canvas, and shows it.
    void put(myPlotMarker* text) const;

    static constexpr int tangentDistance = 100; ///< pixels of a tangent's text from the curve

private:
    QPointF basePixel(const myPlotMarker& text) const;
    QRectF boxAt(const myPlotMarker& text, const QPointF& base, const QPoint& offset) const;
    void flipTangentText(myPlotMarker* text, double y) const;

    const QwtPlot& plot;
    const QList<myPlotMarker*>& markers;
};

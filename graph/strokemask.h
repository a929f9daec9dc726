#pragma once

#include <QColor>
#include <QImage>
#include <QPolygonF>
#include <QRect>

class QPainter;

/// Draws long polylines with a wide round pen, antialiased: each pixel gets the greatest cover of any
/// segment, so that a curve that crosses itself thousands of times is filled evenly. The engine's own wide
/// pen costs some microseconds a segment, this some hundred nanoseconds for the short ones of a dense curve.
class StrokeMask
{
public:
    /// Of pixels that are drawn to; what lies outside is left out.
    explicit StrokeMask(const QRect& area);

    /// Points are at the middle of pixels.
    void add(const QPolygonF& line, double width);
    void paint(QPainter* painter, const QColor& color) const;

private:
    void addSegment(const QPointF& from, const QPointF& to, double half);

    const QRect area;
    QImage cover; ///< 8 bit
    QRect touched;
};

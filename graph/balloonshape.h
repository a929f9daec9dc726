#pragma once

#include <QPainterPath>
#include <QPointF>
#include <QPolygonF>
#include <QRectF>

/// The outline of a speech balloon: a rounded box with a tail on the side that faces the tip.
namespace BalloonShape {

/// The box with its corners rounded by `radius`, and its tail.
QPainterPath outline(const QRectF& box, const QPointF& tip, double radius);
/// The two ends of the tail's foot and the tip; empty where the line from the middle of the box to the tip
/// passes through no side.
QPolygonF tail(const QRectF& box, const QPointF& tip);

} // namespace BalloonShape

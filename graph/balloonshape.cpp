#include "graph/balloonshape.h"

#include <QLineF>

namespace {

constexpr double footPart = 0.125; // half of the tail's foot, as a part of the side

enum class Side
{
    None,
    Bottom,
    Top,
    Left,
    Right
};

/// A proper crossing: touching at an end does not count, parallels never cross.
bool intersect(const QLineF& a, const QLineF& b)
{
    const QPointF e = a.p2() - a.p1();
    const QPointF f = b.p2() - b.p1();
    const QPointF p(-e.y(), e.x());
    const QPointF q(-f.y(), f.x());
    const double fp = QPointF::dotProduct(f, p);
    const double eq = QPointF::dotProduct(e, q);
    if (fp == 0 || eq == 0)
        return false;
    const double onB = QPointF::dotProduct(a.p1() - b.p1(), p) / fp;
    const double onA = QPointF::dotProduct(b.p1() - a.p1(), q) / eq;
    return onA > 0 && onA < 1 && onB > 0 && onB < 1;
}

Side tailSide(const QRectF& box, const QPointF& tip)
{
    const QLineF way(tip, box.center());
    if (intersect(way, QLineF(box.bottomLeft(), box.bottomRight())))
        return Side::Bottom;
    if (intersect(way, QLineF(box.topLeft(), box.topRight())))
        return Side::Top;
    if (intersect(way, QLineF(box.topLeft(), box.bottomLeft())))
        return Side::Left;
    if (intersect(way, QLineF(box.topRight(), box.bottomRight())))
        return Side::Right;
    return Side::None;
}

/// The tail clockwise round the box, empty unless it is on `side`.
QPolygonF tailOn(const QRectF& box, const QPointF& tip, Side side)
{
    const QPointF along(box.width() * footPart, 0);
    const QPointF down(0, box.height() * footPart);
    const QPointF center = box.center();
    switch (side) {
    case Side::Top:
        return QPolygonF(
            {QPointF(center.x(), box.top()) - along, tip, QPointF(center.x(), box.top()) + along});
    case Side::Right:
        return QPolygonF(
            {QPointF(box.right(), center.y()) - down, tip, QPointF(box.right(), center.y()) + down});
    case Side::Bottom:
        return QPolygonF(
            {QPointF(center.x(), box.bottom()) + along, tip, QPointF(center.x(), box.bottom()) - along});
    case Side::Left:
        return QPolygonF(
            {QPointF(box.left(), center.y()) + down, tip, QPointF(box.left(), center.y()) - down});
    case Side::None:
        break;
    }
    return QPolygonF();
}

} // namespace

QPolygonF BalloonShape::tail(const QRectF& box, const QPointF& tip)
{
    return tailOn(box, tip, tailSide(box, tip));
}

QPainterPath BalloonShape::outline(const QRectF& box, const QPointF& tip, double radius)
{
    const Side side = tailSide(box, tip);
    const QPointF dx(radius, 0);
    const QPointF dy(0, radius);
    QPainterPath path(box.topLeft() + dx);
    const auto walk = [&](Side along, const QPointF& end, const QPointF& corner, const QPointF& next) {
        if (along == side) {
            for (const QPointF& point : tailOn(box, tip, side))
                path.lineTo(point);
        }
        path.lineTo(end);
        path.quadTo(corner, next);
    };
    walk(Side::Top, box.topRight() - dx, box.topRight(), box.topRight() + dy);
    walk(Side::Right, box.bottomRight() - dy, box.bottomRight(), box.bottomRight() - dx);
    walk(Side::Bottom, box.bottomLeft() + dx, box.bottomLeft(), box.bottomLeft() - dy);
    walk(Side::Left, box.topLeft() + dy, box.topLeft(), box.topLeft() + dx);
    path.closeSubpath();
    return path;
}

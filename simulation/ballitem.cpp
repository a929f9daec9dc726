#include "simulation/ballitem.h"

#include <QPainter>

#include <cmath>

ballItem::ballItem()
    : picture(QStringLiteral(":/sim/icons/Simulations/ball-6x6.png"))
{
}

/// When the present flight meets the ground, in its own time.
double ballItem::contact() const
{
    const double a = g / 2;
    return (-v0 - std::sqrt(v0 * v0 - 4 * a * h0)) / (2 * a);
}

double ballItem::speedAfter(double contactTime) const
{
    return -(v0 + g * contactTime) * std::sqrt(energyRatio);
}

double ballItem::height(double t)
{
    const double dt = lastT = t - t0;
    h = h0 + v0 * dt + g * dt * dt / 2;
    v = v0 + g * dt;
    energy = -g * h + v * v / 2;
    if (h > 0)
        return h;
    const double contactTime = contact();
    v0 = speedAfter(contactTime);
    h0 = 0;
    t0 += contactTime;
    lastT = t - t0;
    h = v0 * lastT + g * lastT * lastT / 2;
    if (h < 0) {
        // It lies still from now on, else a change of gravity would find it at the end of a long fall.
        h = v = energy = h0 = v0 = lastT = 0;
        t0 = t;
    }
    return h;
}

void ballItem::gravityChanged(double val)
{
    v0 += g * lastT;
    h0 = h;
    t0 += lastT;
    lastT = 0;
    g = -val;
}

double ballItem::heightAhead(double ahead) const
{
    const double dt = lastT + ahead;
    const double free = h0 + v0 * dt + g * dt * dt / 2;
    if (free > 0)
        return free;
    const double contactTime = contact();
    const double since = dt - contactTime;
    return qMax(0.0, speedAfter(contactTime) * since + g * since * since / 2);
}

QRectF ballItem::boundingRect() const
{
    return QRectF(-dim / 2.0, -dim / 2.0, dim, dim);
}

void ballItem::paint(QPainter* painter, const QStyleOptionGraphicsItem* /*option*/, QWidget* /*widget*/)
{
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->drawPixmap(boundingRect(), picture, QRectF(picture.rect()));
}

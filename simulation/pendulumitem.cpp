#include "simulation/pendulumitem.h"

#include "simulation/simulconstants.h"

#include <QLinearGradient>
#include <QPainter>

#include <cmath>

namespace {

constexpr double fullCircle = 2 * PI;
constexpr double radians = fullCircle / 360;
constexpr double poleInLengths = 1.5;
constexpr double poleWidth = 0.16; // the next in units of `dim`
constexpr double abovePivot = 0.1;
constexpr double poleEnds = 0.5; // beyond its length
constexpr double corner = 0.05;
constexpr double pivotWidth = 0.08;

double wrapped(double angle)
{
    if (angle > 180)
        return angle - 360;
    return angle < -180 ? angle + 360 : angle;
}

} // namespace

pendulumItem::pendulumItem()
    : bob(QStringLiteral(":/sim/icons/Simulations/Pendulum.png"))
{
    calcT();
}

void pendulumItem::calcT()
{
    T = fullCircle * std::sqrt(L / g);
}

void pendulumItem::calc(double t)
{
    lastT = t;
    if (g <= 0) {
        dPhi *= damp;
        speed = -L * dPhi * (PI / 180);
        Phi = wrapped(Phi + dPhi * SIMUL_DT);
        return;
    }
    Phi0 *= damp;
    const double alpha = fullCircle * t / T + phase;
    Phi = Phi0 * std::cos(alpha);
    const double atAmplitude = g * L * (1 - std::cos(radians * Phi0));
    const double here = g * L * (1 - std::cos(radians * Phi));
    speed = std::sqrt(2 * qMax(0.0, atAmplitude - here));
    lastDirRight = alpha - fullCircle * std::floor(alpha / fullCircle) < PI;
    if (!lastDirRight)
        speed = -speed;
}

void pendulumItem::recalc()
{
    if (g <= 0) {
        dPhi = -speed / L * (180 / PI);
        return;
    }
    calcT();
    if (dPhi != 0) {
        dPhi = 0;
        Phi0 = std::abs(Phi);
    }
    Phi = qBound(-Phi0, Phi, Phi0);
    double angle = Phi0 > 0 ? std::acos(Phi / Phi0) : 0;
    if (!lastDirRight)
        angle = fullCircle - angle;
    phase = angle - fullCircle * lastT / T;
}

double pendulumItem::angleAhead(double ahead) const
{
    if (g <= 0)
        return Phi + dPhi * ahead;
    return Phi0 * std::cos(fullCircle * (lastT + ahead) / T + phase);
}

void pendulumItem::lengthChanged()
{
    prepareGeometryChange();
    update();
}

double pendulumItem::poleLength() const
{
    return poleInLengths * L * dim;
}

QRectF pendulumItem::boundingRect() const
{
    return QRectF(-dim / 2.0, -abovePivot * dim, dim, 4.2 * dim);
}

void pendulumItem::paint(QPainter* painter, const QStyleOptionGraphicsItem* /*option*/, QWidget* /*widget*/)
{
    painter->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const QRectF pole(-poleWidth / 2 * dim, -abovePivot * dim, poleWidth * dim,
                      poleLength() + poleEnds * dim);
    QLinearGradient metal(pole.topLeft(), pole.topRight());
    metal.setColorAt(0, Qt::black);
    metal.setColorAt(0.15, QColor(40, 40, 40));
    metal.setColorAt(0.5, QColor(60, 60, 60));
    metal.setColorAt(0.65, QColor(40, 40, 40));
    metal.setColorAt(1, Qt::black);
    painter->setPen(Qt::NoPen);
    painter->setBrush(metal);
    painter->drawRoundedRect(pole, corner * dim, corner * dim);
    painter->setBrush(Qt::lightGray);
    painter->drawEllipse(QPointF(0, 0), pivotWidth / 2 * dim, pivotWidth / 2 * dim);
    painter->drawPixmap(QRectF(-dim / 2.0, poleLength(), dim, dim), bob, QRectF(bob.rect()));
}

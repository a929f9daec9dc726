#pragma once

#include <QGraphicsItem>
#include <QPixmap>

/// A ball that falls from a height, bounces and comes to rest. Between two bounces it is on a flight that is
/// known in closed form, so a step may be as long as it likes. Metres, seconds, joules per kilogram.
class ballItem : public QGraphicsItem
{
public:
    ballItem();

    /// The height at time `t`, which is not before the last one; a contact with the ground begins another
    /// flight. Speed and energy of that moment stand in `v` and `energy`; in the step of a contact they are
    /// those of the flight that it ended.
    double height(double t);
    /// Another gravity, `val` > 0 downwards: height and speed go on from the last step.
    void gravityChanged(double val);
    /// Where the ball is `ahead` seconds after the last step; changes nothing.
    double heightAhead(double ahead) const;

    QRectF boundingRect() const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

    int dim = 40;   ///< units of the scene
    double h0 = 10; ///< where the present flight began,
    double v0 = 0;  ///< how fast,
    double t0 = 0;  ///< and when
    double h = 10;
    double v = 0;
    double g = -9.8;  ///< negative: downwards
    double lastT = 0; ///< since t0
    double energy = 0;
    double energyRatio = 0.9; ///< what a bounce leaves of the energy

private:
    double contact() const;
    double speedAfter(double contactTime) const;

    QPixmap picture;
};

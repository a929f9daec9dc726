#pragma once

#include <QGraphicsItem>
#include <QPixmap>

/// A pendulum on a stiff rod, of small swings however far it swings: the angle is a damped cosine. Without
/// gravity it goes round. Angles in degrees, to the left positive as on the screen; metres, seconds.
class pendulumItem : public QGraphicsItem
{
public:
    pendulumItem();

    /// The period of the present length and gravity.
    void calcT();
    /// A step to time `t`; `Phi` and `speed` are those of it.
    void calc(double t);
    /// After a change of gravity or length: the bob goes on from where it is, to the same side. When gravity
    /// is back, where it is becomes the amplitude.
    void recalc();
    /// The angle `ahead` seconds after the last step; changes nothing.
    double angleAhead(double ahead) const;
    /// The length has changed, and with it the picture.
    void lengthChanged();

    QRectF boundingRect() const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

    int dim = 100; ///< units of the scene
    double Phi = 30;
    double Phi0 = 30; ///< the amplitude
    double phase = 0; ///< radians
    double dPhi = 0;  ///< degrees a second, without gravity
    double speed = 0; ///< of the bob
    double T = 0;     ///< the period
    double L = 1.5;
    double g = 9.8;
    double damp = 1; ///< factor on the amplitude, a step
    double lastT = 0;
    bool lastDirRight = true; ///< in the first half of the period

private:
    double poleLength() const;

    QPixmap bob;
};

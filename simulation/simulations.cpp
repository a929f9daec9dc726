#include "simulation/simulations.h"

#include "common/common.h"
#include "sensors/sensorids.h"
#include "simulation/ballitem.h"
#include "simulation/mygraphicsview.h"
#include "simulation/pendulumitem.h"

#include <QLinearGradient>
#include <QPainter>

namespace {

constexpr int msOfFrame = 16;
constexpr int sceneHeight = 750;
constexpr double startHeight = 10; // metres
constexpr double startAngle = 30;
constexpr double ballTop = 120; // scene units at the start height
constexpr double unitsOfMetre = 50;
constexpr int rulerStep = 2; // metres
const QRectF ballScene(-100, 0, 200, sceneHeight);
const QRectF pendulumScene(-300, 0, 600, 800);

QLinearGradient skyOver(bool hasGround)
{
    constexpr double horizon = 0.75;
    QLinearGradient colors(0, 0, 0, sceneHeight);
    colors.setColorAt(0, QColor(96, 187, 255));
    colors.setColorAt(hasGround ? horizon - 0.001 : 1, QColor(251, 253, 255));
    if (hasGround) {
        colors.setColorAt(horizon, QColor(0, 116, 29));
        colors.setColorAt(1, QColor(25, 250, 26));
    }
    return colors;
}

} // namespace

simulations::simulations(QObject* parent)
    : QGraphicsScene(parent)
    , ball(new ballItem)
    , pendulum(new pendulumItem)
{
    view = new myGraphicsView(this);
    clock.setTimerType(Qt::PreciseTimer);
    clock.setInterval(qRound(SIMUL_DT * 1000));
    connect(&clock, &QTimer::timeout, this, &simulations::doTimer);
    frames.setTimerType(Qt::PreciseTimer);
    frames.setInterval(msOfFrame);
    connect(&frames, &QTimer::timeout, this, &simulations::showBetween);
}

simulations::~simulations()
{
    for (QGraphicsItem* item : {static_cast<QGraphicsItem*>(ball), static_cast<QGraphicsItem*>(pendulum)}) {
        if (item->scene() != this)
            delete item;
    }
    if (view && !view->parent())
        delete view;
}

void simulations::setSimulBackground(int sim)
{
    simType = sim;
    setBackgroundBrush(skyOver(sim == SIMUL_FREEFALL));
}

void simulations::setSimulScene()
{
    setRunning(false);
    if (currentItem)
        removeItem(currentItem);
    if (simType == SIMUL_FREEFALL) {
        currentItem = ball;
        ball->h = startHeight;
        ball->v = ball->lastT = 0;
        place(startHeight);
        setSceneRect(ballScene);
    } else {
        currentItem = pendulum;
        pendulum->setPos(0, 300);
        pendulum->Phi0 = pendulum->Phi = startAngle;
        pendulum->dPhi = pendulum->speed = pendulum->lastT = 0;
        pendulum->lastDirRight = true;
        pendulum->setRotation(startAngle);
        setSceneRect(pendulumScene);
    }
    addItem(currentItem);
    t = 0;
    tell();
    view->fit();
}

void simulations::fitView()
{
    view->fitInView(ballScene, Qt::KeepAspectRatio);
}

void simulations::setupSimulation(bool newGraph)
{
    t = 0;
    if (simType == SIMUL_FREEFALL) {
        ball->t0 = 0;
        ball->h0 = startHeight;
        sensors = {SENSOR_SIM_DISTANCE, SENSOR_SIM_SPEED, SENSOR_SIM_ENERGY};
    } else {
        pendulum->phase = 0;
        pendulum->calcT();
        sensors = {SENSOR_SIM_ANGLE, SENSOR_SIM_SPEED};
    }
    if (newGraph)
        Q_EMIT firstSimData(sensors);
}

void simulations::doGravityChanged(double val)
{
    if (simType == SIMUL_FREEFALL) {
        ball->gravityChanged(val);
        return;
    }
    pendulum->g = val;
    pendulum->recalc();
}

void simulations::doEnergyRatioChanged(double val)
{
    ball->energyRatio = val;
}

void simulations::doPendulumLengthChanged()
{
    pendulum->lengthChanged();
    pendulum->recalc();
}

void simulations::setRunning(bool isOn)
{
    running = isOn;
    if (isOn == clock.isActive())
        return;
    if (isOn) {
        clock.start();
        sinceStep.start();
        frames.start();
    } else {
        clock.stop();
        frames.stop();
    }
}

void simulations::doTimer()
{
    if (!running)
        return;
    if (simType == SIMUL_FREEFALL) {
        const double h = ball->height(t);
        place(h);
        values = {h, ball->v, ball->energy};
    } else {
        pendulum->calc(t);
        pendulum->setRotation(pendulum->Phi);
        values = {pendulum->Phi, pendulum->speed};
    }
    sinceStep.start();
    tell();
    const float now = float(t);
    t += SIMUL_DT;
    Q_EMIT newSimData(now, values);
}

void simulations::place(double height)
{
    ball->setPos(0, ballTop + (startHeight - height) * unitsOfMetre);
}

/// What is seen between two steps, which knows nothing of the next change of a slider.
void simulations::showBetween()
{
    if (t <= 0 || !view->isVisible())
        return;
    const double ahead = qMin(double(sinceStep.elapsed()) / 1000, SIMUL_DT);
    if (simType == SIMUL_FREEFALL)
        place(ball->heightAhead(ahead));
    else
        pendulum->setRotation(pendulum->angleAhead(ahead));
}

QStringList simulations::readout() const
{
    const auto number = [](double value, int decimals) { return Common::myToString(value, 'f', decimals); };
    const double shown = qMax(0.0, t - (running || t > 0 ? SIMUL_DT : 0)); // of the last step
    if (simType == SIMUL_FREEFALL)
        return {tr("t = %1 s").arg(number(shown, 2)), tr("h = %1 m").arg(number(ball->h, 2)),
                tr("v = %1 m/s").arg(number(ball->v, 2))};
    const QString period = pendulum->g > 0 ? tr("T = %1 s").arg(number(pendulum->T, 3)) : tr("No gravity");
    return {tr("t = %1 s").arg(number(shown, 2)), tr("φ = %1°").arg(number(pendulum->Phi, 1)),
            tr("v = %1 m/s").arg(number(pendulum->speed, 2)), period};
}

void simulations::tell()
{
    view->setReadout(readout().join(QLatin1Char('\n')));
}

/// With a ruler beside the ball.
void simulations::drawBackground(QPainter* painter, const QRectF& rect)
{
    painter->fillRect(rect, backgroundBrush());
    if (simType != SIMUL_FREEFALL)
        return;
    QFont font = painter->font();
    font.setPixelSize(24);
    font.setBold(true);
    painter->setFont(font);
    painter->setPen(QPen(QColor(20, 40, 70), 2));
    constexpr int left = 48;
    const double half = ball->dim / 2.0; // where it lies its lower edge is on the ground
    for (int metres = 0; metres <= int(startHeight); ++metres) {
        const double y = ballTop + (startHeight - metres) * unitsOfMetre + half;
        const bool isLong = metres % rulerStep == 0;
        painter->drawLine(QPointF(left, y), QPointF(left + (isLong ? 16 : 8), y));
        if (isLong)
            painter->drawText(QPointF(left + 20, y + 8), QString::number(metres));
    }
    const double top = ballTop + half;
    painter->drawLine(QPointF(left, top), QPointF(left, top + startHeight * unitsOfMetre));
}

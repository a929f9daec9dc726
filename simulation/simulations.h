#pragma once

#include <QElapsedTimer>
#include <QGraphicsScene>
#include <QPointer>
#include <QTimer>
#include <QVector>

#include "simulation/simulconstants.h"

class ballItem;
class myGraphicsView;
class pendulumItem;

/// The stage of the two experiments and their clock. Time goes by steps of SIMUL_DT, each of which gives a
/// row of samples: a late timer slows the experiment and changes no result. Between two steps the picture
/// goes on at the pace of the screen.
class simulations : public QGraphicsScene
{
    Q_OBJECT

public:
    explicit simulations(QObject* parent = nullptr);
    ~simulations() override;

    /// Sky and ground of SIMUL_FREEFALL or SIMUL_PENDULUM, which the scene plays from now on.
    void setSimulBackground(int sim);
    /// Puts the body where it begins, at rest.
    void setSimulScene();
    /// Shows the whole of the free fall.
    void fitView();
    /// Time 0; with `newGraph` another set of samples begins.
    void setupSimulation(bool newGraph);
    /// During the experiment too: `val` > 0 downwards, 0 for none.
    void doGravityChanged(double val);
    void doEnergyRatioChanged(double val);
    void doPendulumLengthChanged();
    void setRunning(bool isOn);
    bool isRunning() const { return running; }
    int type() const { return simType; }

    /// Goes with this object unless somebody else has taken it in.
    QPointer<myGraphicsView> view;
    ballItem* ball; ///< the scene owns the one that it shows, and this object the other
    pendulumItem* pendulum;

public Q_SLOTS:
    /// A step; nothing while the experiment does not run.
    void doTimer();

Q_SIGNALS:
    /// A step's values, in the order of the sensors.
    void newSimData(float currentT, const QVector<double>& data);
    /// Another set of samples begins.
    void firstSimData(const QVector<int>& sensorID);

private:
    void showBetween();
    void place(double height);
    QStringList readout() const;
    void tell();
    void drawBackground(QPainter* painter, const QRectF& rect) override;

    bool running = false;
    double t = 0;
    QGraphicsItem* currentItem = nullptr;
    QVector<int> sensors;
    QVector<double> values;
    int simType = SIMUL_FREEFALL;
    QTimer clock;
    QTimer frames;
    QElapsedTimer sinceStep;
};

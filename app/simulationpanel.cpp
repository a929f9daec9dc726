#include "app/simulationpanel.h"

#include "classroom/classrun.h"
#include "classroom/commandqueue.h"
#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"
#include "protocol/tembrinprotocol.h"
#include "sensors/sensorids.h"
#include "simulation/mygraphicsview.h"
#include "simulation/simulations.h"
#include "simulation/simulsetup.h"
#include "simulation/simwebview.h"

#include <QWindow>

namespace {
constexpr int leastText = 13; // pixels
constexpr int mostText = 26;
constexpr int linesInWindow = 48;
} // namespace

SimulationPanel::SimulationPanel(multiConnectionsManager* manager, QSplitter* graphs, QWidget* parent)
    : QSplitter(Qt::Horizontal, parent)
    , manager(manager)
    , scene(new simulations(this))
{
    setObjectName(QStringLiteral("simW"));
    createParts(graphs);
    connectRun();
}

SimulationPanel::~SimulationPanel()
{
    disconnect(&manager->run(), nullptr, this, nullptr);
    setup->destroyViews();
    delete column; // the view of the scene goes before it
}

void SimulationPanel::createParts(QSplitter* graphs)
{
    column = new QSplitter(Qt::Vertical, this);
    column->setObjectName(QStringLiteral("simulationColumn"));
    column->setChildrenCollapsible(false);
    setup = new simulSetup(scene, column, graphs);
    column->addWidget(setup);
    column->addWidget(scene->view);
    for (int i = 0; i < simWebView::pages; ++i)
        column->addWidget(new simWebView(i));
    column->setStretchFactor(1, 1);
    setup->setMayStart([this] { return mayStart(); });
}

void SimulationPanel::connectRun()
{
    ClassRun* const run = &manager->run();
    connect(scene, &simulations::firstSimData, this, &SimulationPanel::simDataFirst);
    connect(scene, &simulations::newSimData, this, &SimulationPanel::simDataReceived);
    connect(setup, &simulSetup::ended, run, &ClassRun::endSimulation);
    connect(run, &ClassRun::simulationEnded, setup, &simulSetup::restart);
    // What is fetched takes the place of the samples.
    connect(&manager->queue(), &CommandQueue::begun, this, [run](ClassJob::Task task) {
        if (task == ClassJob::Task::Download)
            run->endSimulation();
    });
}

bool SimulationPanel::mayStart()
{
    const bool isBusy = manager->isAnyRunning() || !manager->queue().isIdle();
    if (isBusy)
        Q_EMIT told(tr("A simulation can be started when no logger is busy."));
    // One experiment after the other is no loss: it can be played again.
    const SensorPtr& first = manager->dataAt(0)->get1stSensor();
    const bool isPlayed = first && first->ID >= SENSOR_SIM_DISTANCE && first->ID <= SENSOR_SIM_ANGLE;
    return !isBusy && (isPlayed || !mayReplace || mayReplace());
}

void SimulationPanel::choose(int simulation)
{
    current = simulation;
    show();
    setup->setCurrentSimul(simulation);
    fitTexts();
}

void SimulationPanel::closeSimulation()
{
    setup->setCurrentSimul(0); // the graphs come back, and pages go to sleep
    current = 0;
    hide();
}

QString SimulationPanel::nameOfExperiment() const
{
    return current == 0 ? tr("Free fall") : tr("Pendulum");
}

// --- The way of the samples ---

void SimulationPanel::simDataFirst(const QVector<int>& sensorIDs)
{
    SensorList sensors;
    for (const int id : sensorIDs) {
        sensors.append(SensorPtr::create(id, manager->tembrinAt(0)->units));
        sensors.last()->showCurve = true;
    }
    manager->run().beginSimulation(sensors, SIMUL_DT, nameOfExperiment());
    Q_EMIT begun(nameOfExperiment());
}

/// Times of a set are multiples of its period, also where those of a clock that counts on are not.
void SimulationPanel::simDataReceived(float currentT, const QVector<double>& data)
{
    manager->run().takeSimulated(qRound(double(currentT) / SIMUL_DT) * SIMUL_DT, data);
}

// --- Look ---

void SimulationPanel::showEvent(QShowEvent* event)
{
    QSplitter::showEvent(event);
    fitTexts();
}

void SimulationPanel::resizeEvent(QResizeEvent* event)
{
    QSplitter::resizeEvent(event);
    fitTexts();
}

/// As large as the window allows, for the back row.
void SimulationPanel::fitTexts()
{
    setup->setTextHeight(qBound(leastText, window()->height() / linesInWindow, mostText));
}

#include "classroom/multiconnectionsmanager.h"

#include "common/settings.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

#include <QGridLayout>

multiConnectionsManager::multiConnectionsManager(QObject* parent)
    : QObject(parent)
{
    for (int i = 0; i < nMaxTembrins(); ++i) {
        auto* protocol = new TembrinProtocol(i, this);
        protocol->loggerKey = Settings::loggerKey(i);
        protocol->groupKey = Settings::groupKey(i);
        connect(protocol, &TembrinProtocol::loggerDisconnected, this, &multiConnectionsManager::handleLoss);
        connect(protocol->tembrinData, &TembrinData::commandAccepted, this,
                &multiConnectionsManager::commandAccepted);
        connect(protocol->tembrinData, qOverload<int, bool>(&TembrinData::runTerminated), this,
                &multiConnectionsManager::takeEndOfRun);
        connect(protocol->tembrinData, &TembrinData::downloadComplete, this,
                &multiConnectionsManager::takeDownload);
        loggers[i].protocol = protocol;
    }
    setPacing(5000, 100);
    repeatTimer.setSingleShot(true);
    pauseTimer.setSingleShot(true);
    connect(&repeatTimer, &QTimer::timeout, this, &multiConnectionsManager::cmdTimeoutTriggered);
    connect(&pauseTimer, &QTimer::timeout, this, &multiConnectionsManager::sendCommandNow);
}

multiConnectionsManager::~multiConnectionsManager() = default;

void multiConnectionsManager::setPortFactory(const SerialPortFactory& factory)
{
    for (const Logger& logger : loggers)
        logger.protocol->setPortFactory(factory);
}

TembrinData* multiConnectionsManager::tembrinDataAt(int i) const
{
    return tembrinAt(i)->tembrinData;
}

bool multiConnectionsManager::isTembrinConnect(int i) const
{
    return tembrinAt(i)->isConnect;
}

void multiConnectionsManager::setNotConnected(int i)
{
    tembrinAt(i)->isConnect = false;
}

void multiConnectionsManager::release(int i)
{
    tembrinAt(i)->release();
}

QString multiConnectionsManager::loggerName(int i) const
{
    return tembrinAt(i)->loggerName();
}

QString multiConnectionsManager::groupName(int i) const
{
    return tembrinAt(i)->getGroupName();
}

void multiConnectionsManager::sendCommand(int i, commandType cmd)
{
    tembrinAt(i)->sendCommand(cmd);
}

void multiConnectionsManager::sendVortaCommand(int i, commandType cmd)
{
    tembrinAt(i)->sendVortaCommand(cmd);
}

void multiConnectionsManager::sendCommandToFirstLogger(commandType cmd)
{
    const int first = nextConnected(0);
    if (first < nDef)
        sendCommand(first, cmd);
}

QWidget* multiConnectionsManager::widgetOf(int i, int view) const
{
    switch (view) {
    case VIEW_GRAPH:
        return plotAt(i);
    case VIEW_BAR:
        return barAt(i);
    default:
        return nullptr;
    }
}

void multiConnectionsManager::addWidgetByIndex(QGridLayout* layout, int view, int i)
{
    loggers[i].currentView = view;
    QWidget* const chosen = widgetOf(i, view);
    if (!chosen)
        return;
    for (int other : {VIEW_GRAPH, VIEW_BAR}) {
        QWidget* const widget = widgetOf(i, other);
        if (widget && widget != chosen)
            widget->hide();
    }
    const int columns = gridColumns();
    layout->addWidget(chosen, i / columns, i % columns);
    chosen->show();
}

void multiConnectionsManager::addWidget(QGridLayout* layout, int view)
{
    if (isActiveGraphSet())
        addWidgetByIndex(layout, view, activeIndex);
}

SensorList multiConnectionsManager::getSensorsC()
{
    SensorList sensors;
    for (int i = 0; i < nDef; ++i) {
        ExpData* data = dataAt(i);
        const int active = plotAt(i)->getActiveSens();
        data->setSelectedSensor(active < data->getNSens() ? active : 0);
        // A logger without any channel still takes its place.
        SensorPtr sensor = data->getActiveSensor();
        if (!sensor)
            sensor.reset(new Sensor(0));
        sensor->groupName = groupName(i);
        sensors.append(sensor);
    }
    if (sensors.isEmpty())
        return sensors;
    SensorPtr average(new Sensor(sensors.first()->ID, sensors.first()->units()));
    average->active = true;
    average->groupName = tr("Average");
    sensors.append(average);
    return sensors;
}

bool multiConnectionsManager::isAnyRunning() const
{
    for (int i = 0; i < nDef; ++i) {
        if (isTembrinConnect(i) && loggers[i].inRun)
            return true;
    }
    return false;
}

void multiConnectionsManager::resetLastOnline()
{
    for (Logger& logger : loggers)
        logger.lastOnline = 0;
}

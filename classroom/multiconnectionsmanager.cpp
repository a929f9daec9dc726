#include "classroom/multiconnectionsmanager.h"

#include "classroom/classrun.h"
#include "classroom/commandqueue.h"
#include "classroom/loggerconnector.h"
#include "common/settings.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

#include <QGridLayout>

multiConnectionsManager::multiConnectionsManager(QObject* parent)
    : QObject(parent)
{
    createLoggers();
    createFlows();
}

void multiConnectionsManager::createLoggers()
{
    // In force until the program ends; what is chosen meanwhile is for its next start.
    const Units units = Units::load(Settings::mainStore());
    for (int i = 0; i < nMaxTembrins(); ++i) {
        auto* protocol = new TembrinProtocol(i, units, this);
        protocol->loggerKey = Settings::loggerKey(i);
        protocol->groupKey = Settings::groupKey(i);
        loggers[i].protocol = protocol;
    }
}

void multiConnectionsManager::setDefTembrins(int n)
{
    nDef = qBound(0, n, nMaxTembrins());
    loggerConnector->setInUse(nDef);
    commandQueue->setInUse(nDef);
}

multiConnectionsManager::~multiConnectionsManager()
{
    delete loggerConnector; // before the sessions: it waits for the attempts that still open their ports
}

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
    for (int i = 0; i < nDef; ++i) {
        if (isTembrinConnect(i)) {
            sendCommand(i, cmd);
            return;
        }
    }
}

Plot* multiConnectionsManager::viewAt(int i, int view)
{
    Plot*& plot = view == VIEW_BAR ? loggers[i].bar : loggers[i].plot;
    if (!plot && makeView)
        plot = makeView(view, i);
    return plot;
}

QVector<Plot*> multiConnectionsManager::viewsOf(int i) const
{
    QVector<Plot*> built =
        i < 0 ? QVector<Plot*>{classPlot} : QVector<Plot*>{loggers[i].plot, loggers[i].bar};
    built.removeAll(nullptr);
    return built;
}

void multiConnectionsManager::addWidgetByIndex(QGridLayout* layout, int view, int i)
{
    loggers[i].currentView = view;
    if (view != VIEW_GRAPH && view != VIEW_BAR)
        return;
    Plot* const chosen = viewAt(i, view);
    if (!chosen)
        return;
    for (Plot* other : viewsOf(i)) {
        if (other != chosen)
            other->hide();
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

SensorPtr multiConnectionsManager::classChannel(int i) const
{
    // A logger without any channel still takes its place.
    SensorPtr channel = dataAt(i)->ownCopy(dataAt(i)->getActiveSensor());
    // Those who measured it, though another group's logger may have the place now.
    const QString group = dataAt(i)->getXSize() > 0 ? dataAt(i)->getGroupName() : QString();
    channel->groupName = group.isEmpty() ? groupName(i) : group;
    return channel;
}

SensorList multiConnectionsManager::getSensorsC()
{
    SensorList sensors;
    for (int i = 0; i < nDef; ++i)
        sensors.append(classChannel(i));
    if (sensors.isEmpty())
        return sensors;
    SensorPtr average(new Sensor(sensors.first()->ID, sensors.first()->units()));
    average->groupName = tr("Average");
    sensors.append(average);
    return sensors;
}

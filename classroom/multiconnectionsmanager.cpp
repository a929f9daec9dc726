#include "classroom/multiconnectionsmanager.h"

#include "classroom/classrun.h"
#include "classroom/commandqueue.h"
#include "classroom/loggerconnector.h"
#include "classroom/replay.h"
#include "common/settings.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

#include <QGridLayout>
#include <QSplitter>
#include <QVBoxLayout>
#include <QVector>

#include <algorithm>
#include <iterator>

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

QVector<Plot*> multiConnectionsManager::graphsOf(int i) const
{
    QVector<Plot*> graphs = viewsOf(i);
    if (Plot* const spectrum = spectrumAt(i))
        graphs.append(spectrum);
    return graphs;
}

void multiConnectionsManager::createCell(Logger* logger, QWidget* parent)
{
    logger->frame = new QWidget(parent);
    auto* const column = new QVBoxLayout(logger->frame);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    if (QWidget* const head = makeHead ? makeHead(int(logger - loggers)) : nullptr)
        column->addWidget(head);
    logger->cell = new QSplitter(Qt::Horizontal);
    column->addWidget(logger->cell, 1);
    logger->cell->setObjectName(QStringLiteral("cell"));
    logger->cell->setChildrenCollapsible(false);
    logger->graphs = new QSplitter(Qt::Vertical, logger->cell);
    logger->graphs->setChildrenCollapsible(false);
}

void multiConnectionsManager::showPart(Logger* logger, QWidget* Logger::*part, int view, bool tf)
{
    if (tf && !(logger->*part) && makePart) {
        logger->*part = makePart(view, int(logger - loggers));
        logger->cell->addWidget(logger->*part);
        logger->cell->setSizes(QVector<int>(logger->cell->count(), 1000).toList());
    }
    if (logger->*part)
        (logger->*part)->setVisible(tf);
}

void multiConnectionsManager::setCellVisible(int i, bool tf)
{
    if (loggers[i].frame)
        loggers[i].frame->setVisible(tf);
}

void multiConnectionsManager::hideCell(int i)
{
    setCellVisible(i, false);
    for (Plot* plot : viewsOf(i))
        plot->hide();
}

void multiConnectionsManager::addWidgetByIndex(QGridLayout* layout, int view, int i)
{
    constexpr int cellViews[] = {VIEW_GRAPH, VIEW_BAR, VIEW_TABLE, VIEW_TABLE_GRAPH, VIEW_THERMO};
    Logger& logger = loggers[i];
    logger.currentView = view;
    if (std::find(std::begin(cellViews), std::end(cellViews), view) == std::end(cellViews))
        return;
    const bool hasGraph = view == VIEW_GRAPH || view == VIEW_BAR || view == VIEW_TABLE_GRAPH;
    Plot* const chosen = hasGraph ? viewAt(i, view) : nullptr;
    if (hasGraph && !chosen)
        return;
    if (!logger.cell)
        createCell(&logger, layout->parentWidget());
    for (Plot* other : viewsOf(i)) {
        if (other != chosen)
            other->hide();
    }
    if (chosen && chosen->parentWidget() != logger.graphs)
        logger.graphs->addWidget(chosen);
    if (chosen) {
        chosen->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding); // its hint is no minimum
        chosen->show();
    }
    logger.graphs->setVisible(hasGraph);
    showPart(&logger, &Logger::table, VIEW_TABLE, view == VIEW_TABLE || view == VIEW_TABLE_GRAPH);
    showPart(&logger, &Logger::thermometer, VIEW_THERMO, view == VIEW_THERMO);
    const int columns = gridColumns();
    layout->addWidget(logger.frame, i / columns, i % columns);
    logger.frame->show();
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
    const bool isMeasured = dataAt(i)->getXSize() > 0 || played->isOn();
    const QString group = isMeasured ? dataAt(i)->getGroupName() : QString();
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

#pragma once

#include <QLoggingCategory>
#include <QObject>
#include <QTimer>

#include "classroom/views.h"
#include "common/classsize.h"
#include "link/commandtype.h"
#include "link/serialport.h"
#include "sensors/sensor.h"

class ExpData;
class Plot;
class QGridLayout;
class TembrinData;
class TembrinProtocol;

/// What goes to the loggers of a class, and in which order.
Q_DECLARE_LOGGING_CATEGORY(classLog)

/// Everything that there is once per logger: the eight sessions, which it owns, and the data sets, graphs and
/// flags, which the main window gives it. It sends a command to all loggers one after the other. Indices are
/// slots, 0 to 7; those below nDefTembrins() are in use.
class multiConnectionsManager : public QObject
{
    Q_OBJECT

public:
    explicit multiConnectionsManager(QObject* parent = nullptr);
    ~multiConnectionsManager() override;

    // Loggers, in multiconnectionsmanager.cpp

    static constexpr int nMaxTembrins() { return mostLoggers; }
    int nDefTembrins() const { return nDef; }
    void setDefTembrins(int n) { nDef = qBound(0, n, nMaxTembrins()); }
    /// At least one logger is in use.
    bool isInitialized() const { return nDef > 0; }
    /// Which kind of port every logger opens from now on; before the first connection.
    void setPortFactory(const SerialPortFactory& factory);

    TembrinProtocol* tembrinAt(int i) const { return loggers[i].protocol; }
    TembrinData* tembrinDataAt(int i) const;
    bool isTembrinConnect(int i) const;
    void setNotConnected(int i);
    void release(int i);
    QString loggerName(int i) const;
    QString groupName(int i) const;
    void sendCommand(int i, commandType cmd);
    void sendVortaCommand(int i, commandType cmd);
    /// To the first connected logger in use; with none, nothing.
    void sendCommandToFirstLogger(commandType cmd);

    // Data and views of each logger and of the class, not owned

    ExpData* dataAt(int i) const { return loggers[i].data; }
    void setDataAt(int i, ExpData* data) { loggers[i].data = data; }
    ExpData* dataC() const { return classData; }
    void setDataC(ExpData* data) { classData = data; }
    Plot* plotAt(int i) const { return loggers[i].plot; }
    void setPlotAt(int i, Plot* plot) { loggers[i].plot = plot; }
    Plot* barAt(int i) const { return loggers[i].bar; }
    void setBarAt(int i, Plot* bar) { loggers[i].bar = bar; }
    Plot* plotC() const { return classPlot; }
    void setPlotC(Plot* plot) { classPlot = plot; }

    /// -1 makes the class plot the active one.
    void setActivePlot(int i) { activeIndex = i; }
    bool isActive(int i) const { return activeIndex == i; }
    bool isActiveGraphSet() const { return activeIndex >= 0; }
    Plot* getActivePlot() const { return isActiveGraphSet() ? plotAt(activeIndex) : classPlot; }
    /// Of the first logger with none active.
    Plot* getActiveBar() const { return barAt(qMax(0, activeIndex)); }
    ExpData* getActiveData() const { return isActiveGraphSet() ? dataAt(activeIndex) : classData; }
    /// What the active logger's cell shows, a value of `views`; 0 with none active.
    int getCurrentView() const { return isActiveGraphSet() ? loggers[activeIndex].currentView : 0; }
    /// Puts what `view` names into logger i's cell of the grid; a view that is not for cells leaves the cell.
    void addWidgetByIndex(QGridLayout* layout, int view, int i);
    /// The same for the active logger; with none, nothing.
    void addWidget(QGridLayout* layout, int view);
    /// Columns of the grid for the loggers in use.
    int gridColumns() const { return nDef < 4 ? nDef : (nDef + 1) / 2; }

    /// The sensor that each logger in use shows as its active one, in order, and one more for the average.
    /// They are the loggers' own objects, marked with their group's name. Empty with no logger in use.
    SensorList getSensorsC();

    // Flags of each logger

    bool isTryingToConnect(int i) const { return loggers[i].tryingToConnect; }
    void setTryingToConnect(int i, bool tf) { loggers[i].tryingToConnect = tf; }
    int nTries(int i) const { return loggers[i].nTries; }
    void setNTries(int i, int n) { loggers[i].nTries = n; }
    bool isInRun(int i) const { return loggers[i].inRun; }
    void setInRun(int i, bool tf) { loggers[i].inRun = tf; }
    /// A connected logger in use was told to run and has not been seen to stop.
    bool isAnyRunning() const;
    bool isIgnoreOnlineAfterStop(int i) const { return loggers[i].ignoreOnlineAfterStop; }
    void setIgnoreOnlineAfterStop(int i, bool tf) { loggers[i].ignoreOnlineAfterStop = tf; }
    int getLastOnline(int i) const { return loggers[i].lastOnline; }
    void setLastOnline(int i, int n) { loggers[i].lastOnline = n; }
    void resetLastOnline();
    void resetDownloaded() { downloaded = 0; }
    void incDownloaded() { ++downloaded; }
    int numDownloaded() const { return downloaded; }

    // One command to all, in multiconnectionsmanager_commands.cpp

    /// Sends to the connected loggers in use one at a time, the next when the one before has confirmed. A
    /// logger that does not confirm gets the command again; one that is lost is passed over. With nobody
    /// connected nothing happens. A new command takes over from one under way.
    ///
    /// A download goes to those that have something stored. One that fails is asked for again twice, then the
    /// logger is passed over.
    void sendCmdToAll(commandType cmd);
    /// The same way to one stored experiment of one logger, `number` from 1.
    void downloadFrom(int index, int number);
    /// Ends a download under way; what has arrived of it is dropped.
    void cancelDownload();
    /// `cmd` is on its way through the loggers.
    bool isSending(commandType cmd) const { return commandIndex != idle && command == cmd; }
    /// Milliseconds before an unconfirmed command is repeated, and between two loggers or before a repeat.
    void setPacing(int repeatMs, int pauseMs);

public Q_SLOTS:
    void commandAccepted(int index, commandType cmd);
    void sendCommandNow();
    void cmdTimeoutTriggered();

Q_SIGNALS:
    /// Logger `index` has, or no longer has, the current command.
    void setBTComm(int index, bool tf);
    void startSendCommandToAll(commandType cmd);
    /// Logger `index` was lost, or failed too often, before it had carried out the current command.
    void passedOver(int index);
    void doneSendCommandToAll();

private:
    struct Logger
    {
        TembrinProtocol* protocol = nullptr;
        ExpData* data = nullptr;
        Plot* plot = nullptr;
        Plot* bar = nullptr;
        bool tryingToConnect = false;
        bool inRun = false;
        bool ignoreOnlineAfterStop = false;
        int lastOnline = 0;
        int nTries = 0;
        int currentView = VIEW_GRAPH;
    };

    int nextConnected(int from) const;
    int nextServed(int from) const;
    bool isServed(int i) const;
    void begin(commandType cmd, int from, int end);
    QWidget* widgetOf(int i, int view) const;
    void passOn();
    void passOver();
    void handleLoss(int index);
    void takeEndOfRun(int index);
    void takeDownload(int index, bool success);
    void repeatDownload();

    Logger loggers[mostLoggers];
    int nDef = 0;
    ExpData* classData = nullptr;
    Plot* classPlot = nullptr;
    int activeIndex = -1;
    int downloaded = 0;

    static constexpr int idle = -1;
    static constexpr int newest = 0;
    commandType command = CMD_GET_TEMBRIN_STATUS;
    int commandIndex = idle; ///< the logger that the command waits for
    int commandEnd = 0;      ///< the first one that it is not for
    int experiment = newest; ///< to download
    bool isDownloadBad = false;
    int badDownloads = 0; ///< of the present logger
    int pauseMs = 100;
    QTimer repeatTimer;
    QTimer pauseTimer;
};

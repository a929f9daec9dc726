#pragma once

#include <QObject>

#include <functional>

#include "classroom/views.h"
#include "common/classsize.h"
#include "link/commandtype.h"
#include "link/serialport.h"
#include "sensors/sensor.h"

class ClassRun;
class CommandQueue;
class ExpData;
class LoggerConnector;
class Plot;
class QGridLayout;
class QSplitter;
class QWidget;
class Replay;
class TembrinData;
class TembrinProtocol;

/// Everything that there is once per logger: the eight sessions, which it owns, and the data sets and
/// graphs, which the main window gives it. What is done with all of them has objects of its own, which it
/// owns: connecting, the queue of commands, and the run. Indices are slots, 0 to 7; those below
/// nDefTembrins() are in use.
class multiConnectionsManager : public QObject
{
    Q_OBJECT

public:
    explicit multiConnectionsManager(QObject* parent = nullptr);
    ~multiConnectionsManager() override;

    // Loggers, in multiconnectionsmanager.cpp

    static constexpr int nMaxTembrins() { return mostLoggers; }
    int nDefTembrins() const { return nDef; }
    void setDefTembrins(int n);
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
    /// Builds the graph of a logger for a kind of view, VIEW_GRAPH or VIEW_BAR.
    using ViewMaker = std::function<Plot*(int view, int i)>;
    /// Who builds those that nobody set, when they are first asked for: a class of two starts without the
    /// graphs of eight.
    void setViewMaker(const ViewMaker& maker) { makeView = maker; }
    Plot* plotAt(int i) { return viewAt(i, VIEW_GRAPH); }
    void setPlotAt(int i, Plot* plot) { loggers[i].plot = plot; }
    Plot* barAt(int i) { return viewAt(i, VIEW_BAR); }
    void setBarAt(int i, Plot* bar) { loggers[i].bar = bar; }
    /// The graphs of logger i that have been built so far; for -1 that of the class.
    QVector<Plot*> viewsOf(int i) const;
    /// The same, and the spectrum where one was asked for.
    QVector<Plot*> graphsOf(int i) const;
    void setSpectrumAt(int i, Plot* spectrum) { spectra[i + 1] = spectrum; }
    Plot* spectrumAt(int i) const { return spectra[i + 1]; }
    /// Builds what else a cell can show of a logger: for VIEW_TABLE or VIEW_THERMO.
    using PartMaker = std::function<QWidget*(int view, int i)>;
    void setPartMaker(const PartMaker& maker) { makePart = maker; }
    /// Builds what stands above all that a cell shows; null for nothing.
    using HeadMaker = std::function<QWidget*(int i)>;
    void setHeadMaker(const HeadMaker& maker) { makeHead = maker; }
    Plot* plotC() const { return classPlot; }
    void setPlotC(Plot* plot) { classPlot = plot; }

    /// -1 makes the class plot the active one.
    void setActivePlot(int i) { activeIndex = i; }
    int activeGraph() const { return activeIndex; }
    bool isActive(int i) const { return activeIndex == i; }
    bool isActiveGraphSet() const { return activeIndex >= 0; }
    Plot* getActivePlot() { return isActiveGraphSet() ? plotAt(activeIndex) : classPlot; }
    /// Of the first logger with none active.
    Plot* getActiveBar() { return barAt(qMax(0, activeIndex)); }
    ExpData* getActiveData() const { return isActiveGraphSet() ? dataAt(activeIndex) : classData; }
    /// What the active logger's cell shows, a value of `views`; 0 with none active.
    int viewShownBy(int i) const { return loggers[i].currentView; }
    int getCurrentView() const { return isActiveGraphSet() ? loggers[activeIndex].currentView : 0; }
    /// Puts what `view` names into logger i's cell of the grid; a view that is not for cells leaves the cell.
    void addWidgetByIndex(QGridLayout* layout, int view, int i);
    /// The same for the active logger; with none, nothing.
    void addWidget(QGridLayout* layout, int view);
    /// Of a logger that has one.
    void setCellVisible(int i, bool tf);
    /// Takes the cell of logger i away, which addWidgetByIndex() brings back.
    void hideCell(int i);
    /// Columns of the grid for the loggers in use.
    int gridColumns() const { return nDef < 4 ? nDef : (nDef + 1) / 2; }

    /// A channel for each logger in use, in order: like the one that it shows as its active one, marked with
    /// its group's name; and one more for the average. Empty with no logger in use.
    SensorList getSensorsC();
    /// The one of logger i.
    SensorPtr classChannel(int i) const;

    // Flows, each in an object of its own

    LoggerConnector& connector() { return *loggerConnector; }
    CommandQueue& queue() { return *commandQueue; }
    ClassRun& run() { return *classRun; }
    const ClassRun& run() const { return *classRun; }
    /// Of what is on the graphs; off as long as nobody begins it.
    Replay& replay() const { return *played; }

    /// It has told what it is since it was connected.
    bool isRecognized(int i) const;
    /// The logger runs or was told to, whoever started it.
    bool isRunning(int i) const;
    /// A connected logger in use does.
    bool isAnyRunning() const;
    /// The same, or the program plays a simulation: the sets grow.
    bool isMeasuring() const;
    /// Starts all loggers in use; false if there is none to start.
    bool startRun();

    /// Puts a command for all loggers in use into the queue: CMD_START_LOGGING, CMD_STOP_LOGGING,
    /// CMD_TEMBRIN_LOGGING_SETUP, CMD_CONFIGURE_TEMBRIN or CMD_DOWNLOAD_STORED_DATA (their newest
    /// experiments). With nobody to tell nothing happens.
    void sendCmdToAll(commandType cmd);
    /// One stored experiment of one logger, `number` from 1, by the same queue.
    void downloadFrom(int index, int number);
    /// Ends a download at work and those that wait; what has arrived of it is dropped.
    void cancelDownload();
    /// `cmd` is on its way through the loggers, or waits for its turn.
    bool isSending(commandType cmd) const;
    /// Milliseconds before an unconfirmed command is repeated, and between two loggers or before a repeat.
    void setPacing(int repeatMs, int pauseMs);

Q_SIGNALS:
    /// Logger `index` has, or no longer has, the current command.
    void setBTComm(int index, bool tf);
    void startSendCommandToAll(commandType cmd);
    /// Logger `index` did not carry out the current command.
    void passedOver(int index);
    void doneSendCommandToAll();

private:
    struct Logger
    {
        TembrinProtocol* protocol = nullptr;
        ExpData* data = nullptr;
        Plot* plot = nullptr;
        Plot* bar = nullptr;
        QWidget* frame = nullptr;    ///< of the cell with its head
        QSplitter* cell = nullptr;   ///< graphs beside what else is shown of it
        QSplitter* graphs = nullptr; ///< one below the other
        QWidget* table = nullptr;
        QWidget* thermometer = nullptr;
        int currentView = VIEW_GRAPH;
    };

    void createLoggers();
    void createFlows();
    void catchUp(int i);
    Plot* viewAt(int i, int view);
    void createCell(Logger* logger, QWidget* parent);
    void showPart(Logger* logger, QWidget* Logger::*part, int view, bool tf);

    Logger loggers[mostLoggers];
    ViewMaker makeView;
    PartMaker makePart;
    HeadMaker makeHead;
    Plot* spectra[mostLoggers + 1] = {}; ///< that of the class first
    int nDef = 0;
    ExpData* classData = nullptr;
    Plot* classPlot = nullptr;
    int activeIndex = -1;
    LoggerConnector* loggerConnector = nullptr; ///< children of this object, as are the next two
    CommandQueue* commandQueue = nullptr;
    ClassRun* classRun = nullptr;
    Replay* played = nullptr; ///< the same
};

#pragma once

#include <QColor>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QMainWindow>
#include <QPointer>
#include <QVector>

#include <functional>
#include <memory>
#include <vector>

#include "app/iconlist.h"
#include "app/screenfile.h"
#include "classroom/classjob.h"
#include "common/classsize.h"
#include "common/userprompt.h"
#include "graph/plot.h"
#include "link/commandtype.h"
#include "persistence/lesson.h"

class ClassNotices;
class CommandMenu;
class CurveReader;
class ExpData;
class GlobalLabUpload;
class FitDialog;
class GraphTools;
class GroupRanking;
class Indicator;
class KeptRuns;
class LargeGraph;
class MapPane;
class MetersPanel;
class PredictionKeeper;
class QGridLayout;
class QLabel;
class QMenu;
class QPrinter;
class QSplitter;
class QToolBar;
class RefreshClock;
class ReplayBar;
class Report;
class RunLine;
class RunRecorder;
class RunRecovery;
class RunsPanel;
class SelfRun;
class SideViews;
class SimulationPanel;
class StatusLine;
class TembrinProtocol;
class TileWall;
class Tiles;
class UndoSteps;
class globalLab;
class loggerBasicSetup;
class multiConnectionsManager;
class setupLogger;
struct JournalRun;
struct PinnedRun;
struct ReportSource;

/// The window and the flows that run in it.
Q_DECLARE_LOGGING_CATEGORY(appLog)

/// How the class is laid out; the value is the place in the list of layouts.
enum layouts
{
    LAYOUT_MULTI_WINDOWS,
    LAYOUT_MULTI_TOGETHER,
    LAYOUT_MULTI_COMBO,
    LAYOUT_METERS,
    LAYOUT_MAP
};

/// What opening an experiment file does.
enum openModes
{
    OPEN_NEW = 0,   ///< the file takes the place of the class data
    OPEN_APPEND = 2 ///< its channels join those of logger 0
};

/// The one window of the program. It owns the loggers' sessions, their data and their graphs, and carries out
/// what the user asks for. Everything runs on the GUI thread.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// `prompt` answers boxes and dialogs and outlives the window; without one the toolkit's are shown. Half
    /// a second after construction the window begins to connect the loggers in use.
    explicit MainWindow(UserPrompt* prompt = nullptr, QWidget* parent = nullptr);
    ~MainWindow() override;

    // Frame and leaving, in mainwindow.cpp

    /// The file named on the command line, which is opened.
    void setArgumentFile(const QString& fname);
    /// What opening the next experiment file does (openModes); those after it are opened plainly again. No
    /// control of this edition sets it.
    void setOpenMode(int mode) { openMode = mode; }
    /// Who sets up a printer instead of the system's dialog.
    void setPrinterChoice(const std::function<bool(QPrinter*)>& choice) { printerChoice = choice; }
    bool isPanelMode() const { return isPanel; }
    static bool is4K();
    static QColor getAppBackColor();
    static void setAppBackColor(const QColor& color);

    /// Shows Run or else Stop.
    void updateRunStopButton(bool showRun);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private Q_SLOTS:
    void doExit();
    /// To the file of what is on the screen. If that is the one of the command line, the program ends too.
    void doExitAfterCtrlS();

private:
    void readSettings();
    void createLoggers();
    void connectLogger(int index);
    void createStatusBar();
    bool mayLeave();
    bool settleUnsaved(const QString& before, const QString& classQuestion, const QString& groupsQuestion,
                       bool* isAsked);
    quint8 unsavedLoggers() const;
    void showLoggers(quint8 which);
    [[noreturn]] void leave();
    void storeUnit();

    std::unique_ptr<UserPrompt> ownPrompt;
    UserPrompt* prompt;
    multiConnectionsManager* mTembrin = nullptr;
    std::vector<std::unique_ptr<ExpData>> dataSets; ///< one per logger, then the class's
    TembrinProtocol* tembrin = nullptr;             ///< of logger 0
    ExpData* data = nullptr;                        ///< of logger 0
    Indicator* indicator = nullptr;
    QString argumentFile;
    bool isPanel = false;
    bool isJunior = false;
    bool isSimulEnabled = false;

    // Connection, in mainwindow_connection.cpp

private Q_SLOTS:
    void tryConnectAll();
    void tryConnect(int index);
    void disconnectAll();
    void commEstablished(int index);
    void handleDisconnection(int index);
    void showSeeking(int index, bool isOn);
    void bootloadReady(int index, bool isVorta, int ver);
    void deleteFromLogger(int index, bool all);

private:
    void connectConnector();
    QString nameOf(int index) const;
    QString awayText() const;
    void showConnected(int index);
    void showConnecting(int index);
    void showCure();
    void showNotConnected(int index);
    void updateHint();

    QLabel* hint = nullptr; ///< what to press while no logger can be reached

    // Setup of the loggers, in mainwindow_setup.cpp

private Q_SLOTS:
    void doBasicSetup();
    void doSetup();

private:
    void openSetup(int firmwareOf);
    void connectSetupDialog(setupLogger* dialog);

    QPointer<loggerBasicSetup> basicSetupDlg; ///< null unless it is open
    QPointer<setupLogger> advancedSetupDlg;   ///< the same

    // Look, in mainwindow_look.cpp

private Q_SLOTS:
    void useMainDesignValues();
    void useGraphDesignValues();

private:
    void getDesignSettings();
    void setBackground();
    void setMainWindowStyle();

    // Choice of the loggers, in mainwindow_group.cpp

private Q_SLOTS:
    void doSelectMLog();

    // Run and live data, in mainwindow_run.cpp

private Q_SLOTS:
    void doRun();
    void doStopAll();
    void updateActions();
    void showOutcome(const ClassJob& job);
    void clearOutcome(ClassJob::Task task);
    void showNewExperiment(int index);
    void showPlanned(int index);
    void showNewClass();
    void showPhase(int index);
    void showSamples(int index, int samplesWaiting);
    void showEndOfRun();

private:
    void connectFlows();
    void createSelfRun();
    std::function<QString(int)> groupNames() const;
    void countSkipped(double dt);
    QStringList groupsNotSetUp() const;
    QString titleName(int index) const;
    void endLessonName(int index);
    void showBusyTitle();
    void hideBusyTitle();
    void letOthersIn();
    void onlineUpdateSafe();

    RefreshClock* refreshClock = nullptr;
    ClassNotices* notices = nullptr;
    StatusLine* statusLine = nullptr; ///< what is being done, and what came of it
    RunLine* runLine = nullptr;       ///< how the run stands
    SelfRun* selfRun = nullptr;       ///< runs that begin and end by themselves
    QString notStopped;               ///< the last line about a stop
    bool isOnlyStaticClassMode = false;
    QString runTitle; ///< of the class graph, when it shows the last run
    QDateTime runBegun;
    bool isSlowWarning = false;
    int nestCounter = 0;
    int howManySkipped = 0;
    QElapsedTimer sincePump;
    bool isViewNew[mostLoggers] = {}; ///< has samples that are not marked for painting
    quint8 markedLost = 0;            ///< a bit for each logger whose title says that it was lost

    // Runs that an earlier start left unsaved, in mainwindow_recovery.cpp

private Q_SLOTS:
    void restoreRun();

private:
    void createRecovery();
    void showRestored(const JournalRun& run, quint8 groups);

    RunRecorder* recorder = nullptr; ///< keeps the run for the case of a crash
    RunRecovery* recovery = nullptr;

    // Runs that others took the place of, in mainwindow_runs.cpp

private Q_SLOTS:
    void keepPresent();
    void noteInSaving(bool isSaved);
    void keepGroup(int index);
    void keepBefore(int index);
    void showKept(int id);
    void toggleRuns();
    void toggleTiles();

private:
    void createRuns();
    bool isScreenSaved() const;
    QString keptName() const;
    bool settleKept(bool* isAsked);
    void settleMemory();
    /// The pinned runs of the groups go behind their graphs; -1 for the class.
    void showPins();
    void showPins(int index);
    QVector<PinnedRun> pinsOf(int index) const;

    KeptRuns* keptRuns = nullptr;
    RunsPanel* runsPanel = nullptr; ///< null until it is first shown
    QAction* runsAct = nullptr;

    // A run played again, in mainwindow_replay.cpp

private Q_SLOTS:
    void doReplay();
    void replayKept(int id);
    void endReplay();
    void showReplay();
    void showReplayed(int index, bool isLonger);

private:
    void createReplay();

    ReplayBar* replayBar = nullptr; ///< null until it is first shown
    QAction* replayAct = nullptr;

    // Download, in mainwindow_download.cpp

private Q_SLOTS:
    void doDownload2018();
    void doDownload();
    void doSelectExperiment();
    void fetchStoredRuns(quint8 which);
    void fetchGaps(quint8 which);
    void useDownload(int index, bool isOK);
    void showDownloadProgress(int index, int packets, int expected);

private:
    void connectDownload(int index);
    void addDownloadChoice();
    void fillGaps(int index);
    void showFilled(const ClassJob& job);

    quint8 filling = 0; ///< a bit for each logger whose download fills the gaps of its run
    QStringList filledTexts;
    quint8 delivered = 0; ///< a bit for each logger that is in the class after the present download

    // Mouse modes and analyses, in mainwindow_analysis.cpp

private Q_SLOTS:
    void doZoom();
    void doMarker();
    void doAnnotate();
    void doReadCurves();
    void doCrop();
    void doUndo();
    void doRedo();
    void doSlope();
    void doLinRegression();
    void doQuadRegression();
    /// Carries out an item of the list `regression`.
    void doFunctions(int select);

private:
    void createTools();
    void showStatistics();
    void showFit();
    void showRanking();
    void toggleSpectrum();
    QString rateName(double dt) const;
    void showMode();
    void showEdited(int index);
    void addUndoMenu();
    void fillUndoMenu(QMenu* menu);
    void showUndo();

    GraphTools* tools = nullptr;
    CurveReader* reader = nullptr;
    PredictionKeeper* predictions = nullptr;
    SideViews* sideViews = nullptr; ///< spectra and the like
    UndoSteps* steps = nullptr;
    FitDialog* fitDialog = nullptr;  ///< null until it is asked for
    GroupRanking* ranking = nullptr; ///< the same

    // Simulations, in mainwindow_simulation.cpp

    void doSimul(QAction* theAct);
    void openSimulation(const QString& word);
    void createSimulationPanel();
    void showSimulation(const QString& name);
    void shareWithSimulation();
    void closeSimulation();
    void closePage();

    SimulationPanel* simW = nullptr; ///< null until one is chosen
    bool isShareOwn = false;         ///< a person has moved the edge between them

    // Files, in mainwindow_files.cpp

private Q_SLOTS:
    void doRead();
    void doSave();
    void doExcel();
    void doExportImg();
    void doExport(int select);
    void doPrint();
    /// Opens an activity in the desktop's viewer; an archive of activities is unpacked first.
    void doPDF();
    /// Into the class view, which from then on shows the file and no loggers.
    void doReadClass(const QString& fname);
    /// The file of the command line: into the set of logger 0 and the class view.
    void doRead(const QString& fname);

private:
    void openFile(const QString& fname);
    void appendFile(const QString& fname);
    void adjustAppended();
    void doImport(const QString& fname);
    void showClassFile(const QString& fname, const QString& view, bool isWhole);
    void handleOnlyStaticClassMode(bool tf);
    QString getView() const;
    void setView(const QString& view);
    bool askAndSave(QString* reason);
    /// What is written to a file.
    enum class Extent
    {
        Lesson,
        Graph,
        Table
    };
    static Extent extentOf(const QString& fname, const QString& filter);
    QString saveFilters() const;
    bool saveAs(const QString& fname, Extent extent, int index, QString* reason);
    bool saveLesson(const QString& fname, QString* reason);
    UserPrompt::Answer offerToSave(const QString& question);
    void markSaved(int index);
    bool writeExperiment(const QString& fname, int index, QString* reason);
    void showFileName();
    void warnNotWritten(const QString& reason);

    // Other computers, in mainwindow_online.cpp

    void createOnline();
    void doGlobalLab();
    void showGlobalLabError(const QString& msg);
    void GlobalLabSuccess();

    GlobalLabUpload* upload = nullptr; ///< made for the first
    QPointer<globalLab> uploadDialog;

    // The report, in mainwindow_report.cpp

    void doReport();
    ReportSource reportSource();

    Report* report = nullptr; ///< made for the first

    // Activities, in mainwindow_activities.cpp

    void addActivityChoice();
    void unpackActivities();

    // Lessons, in mainwindow_files_lesson.cpp

    bool writeLesson(const QString& fname, QString* reason);
    void openLesson(const QString& fname);
    bool isBusy(const QString& line);
    void tellOfArgument(const QString& fname, bool isRead, const QString& reason);
    bool worked(const std::function<void()>& work);
    Lesson takeLesson() const;
    LessonRun takeRun() const;
    Lesson::Part takePart(int index) const;
    void showLesson(const Lesson& lesson);
    void showRun(const LessonRun& run);
    void showGroupPart(int slot, const Lesson::Part& part);
    void showClassPart(const Lesson::Part& part);

    quint8 savedRunning = 0;              ///< groups that ran on when a lesson was saved last
    bool isSaving = false;                ///< on another thread
    QVector<int>* keptInSaving = nullptr; ///< what gave way while a lesson is written that has all of it
    bool isLeavingAsked = false;          ///< meanwhile
    struct ConnectedGroup
    {
        QString port;
        QString name;
    };
    ConnectedGroup connectedGroups[mostLoggers]; ///< as they were connected last
    quint8 namedByLesson = 0; ///< a bit for each graph named by an opened lesson, or by who measured it
    int openMode = OPEN_NEW;
    ScreenFile screenFile;                        ///< of the set of the class
    std::function<bool(QPrinter*)> printerChoice; ///< empty for the system's dialog

    // Toolbars, views and layouts, in mainwindow_views.cpp and mainwindow_toolbars.cpp

private Q_SLOTS:
    /// Numbers that are no layout show the class.
    void updateLayout(int view);
    /// A row of the list of views.
    void updateView(int row);
    void activePlotChanged(int index);
    /// Of what stands in a cell in place of its graph.
    void tableTitleClicked(int index);
    void choosePlot(int index);

private:
    void createActions();
    void createToolBars();
    void chooseIconSize();
    QToolBar* addBar(const QString& name, const QString& title);
    IconList* addIconList(QToolBar* bar, IconList::Kind kind, const char* name,
                          const QString& accessibleName);
    void fillIconLists();
    QWidget* createSimulationButton();
    void fitToolBars();

    void setupViews();
    void createHint();
    void createMeters();
    void openFirstView(const QString& word);
    Plot* createPlot(ExpData* set, graphtype type, int index);
    Plot* createCell(int view, int index);
    QString titleOf(int index) const;
    void showTitle(int index);
    void takeNewName(int index);
    void setNGraphs();
    void setDisplayForNLoggers(int N);

    void showPane(int layout);
    void updateAll();
    void updateAll(int index);
    /// The graphs of a logger have new data.
    void markViews(int index);
    void updateSens(int index, int iSens);
    void setSelected(int index, int iSens);
    void setSensSelect();
    void showForAll(int sensorID);
    void followSelection(int index);
    void rebuildClass();
    void showLeftOut();

    // Commands in words, in mainwindow_menu.cpp
    void createMenu();
    void createViewMenu();
    void fillMenu(QMenu* menu, IconList* list, const std::function<QKeySequence(int)>& key,
                  const std::function<void(int)>& run);
    void reachByTab();

    // One graph that fills the window, in mainwindow_large.cpp
    void createLargeGraph();
    /// Of a group, or of the class; the one that does gives the room back.
    void enlarge(int index);
    void enlargeChosen();
    /// Esc means one thing at a time.
    void shareEscape();

    // Values in digits, in mainwindow_tiles.cpp
    void createTiles();
    void leaveTiles();

    int iconDim = 72;
    QAction* openAct = nullptr;
    QAction* saveAct = nullptr;
    QAction* printAct = nullptr;
    QAction* zoomAct = nullptr;
    QAction* markerAct = nullptr;
    QAction* annotateAct = nullptr;
    QAction* readAct = nullptr;
    QAction* cropAct = nullptr;
    QAction* undoAct = nullptr;
    QAction* redoAct = nullptr;
    QAction* colabConnectAct = nullptr;
    QAction* basicSetupAct = nullptr;
    QAction* runAct = nullptr;
    QAction* stopAct = nullptr;
    QAction* downloadAct = nullptr;
    QAction* advancedSetupAct = nullptr;
    QAction* exitAct = nullptr;
    QToolBar* fileToolBar = nullptr;
    QToolBar* graphToolBar = nullptr;
    QToolBar* tembrinToolBar = nullptr;
    QToolBar* appToolBar = nullptr;
    IconList* exports = nullptr; ///< the lists are null in panel mode
    IconList* regression = nullptr;
    IconList* layouts = nullptr;
    IconList* views = nullptr;
    QSplitter* mainW = nullptr;
    MetersPanel* newMetersW = nullptr; ///< null until it is first shown
    QSplitter* graphW = nullptr;
    MapPane* mapPane = nullptr;  ///< made when it is first shown
    bool isHeightShared = false; ///< class and cells have been given their first heights
    QWidget* graphGridW = nullptr;
    QGridLayout* graphGridL = nullptr;
    Plot* graph = nullptr;         ///< of the class
    QLabel* cureLine = nullptr;    ///< what keeps loggers away and is cured at this computer
    QLabel* leftOutLine = nullptr; ///< who is not in it
    LargeGraph* largeGraph = nullptr;
    Tiles* tiles = nullptr;
    TileWall* tileWall = nullptr; ///< null until it is first shown
    bool isFullBefore = false;    ///< the window, before the tiles filled it
    QAction* tilesAct = nullptr;
    QAction* valuesAct = nullptr;
    CommandMenu* commands = nullptr; ///< null in panel mode
    QAction* smallAct = nullptr;     ///< Esc, while one graph is large
};

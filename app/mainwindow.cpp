#include "app/mainwindow.h"

#include "app/classnotices.h"
#include "app/messageboxprompt.h"
#include "app/refreshclock.h"
#include "app/runline.h"
#include "app/runrecorder.h"
#include "app/runrecovery.h"
#include "classroom/classrun.h"
#include "classroom/commandqueue.h"
#include "classroom/loggerconnector.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/screenflags.h"
#include "common/settings.h"
#include "common/userprompt.h"
#include "data/derivedcurve.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "instruments/indicator.h"
#include "instruments/pageview.h"
#include "instruments/statusline.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "setup/unitgroups.h"

#include <QAction>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QShortcut>
#include <QStatusBar>
#include <QThreadPool>

#include <cstdio>
#include <cstdlib>

Q_LOGGING_CATEGORY(appLog, "pellandra.app", QtInfoMsg)

namespace {
constexpr int msBeforeConnecting = 500;
constexpr int msForThreads = 500; // at the end, for each port that is just being opened and for files
constexpr int wideScreen = 3000;  // above it icons double
constexpr int statusBarMargin = 6;
} // namespace

MainWindow::MainWindow(UserPrompt* userPrompt, QWidget* parent)
    : QMainWindow(parent)
    , ownPrompt(userPrompt ? nullptr : new MessageBoxPrompt)
    , prompt(userPrompt ? userPrompt : ownPrompt.get())
    , refreshClock(new RefreshClock(this))
{
    setObjectName(QStringLiteral("mainWindow"));
    readSettings();
    getDesignSettings();
    chooseIconSize();
    setBackground(); // before there are parts, each of which would be styled twice
    showFileName();
    createLoggers();
    createActions();
    if (isPanel)
        setWindowState(Qt::WindowFullScreen);
    else
        createToolBars();
    createStatusBar();
    createTools();
    connectConnector();
    connectFlows();
    createRecovery();
    unpackActivities();
    createOnline();
    setupViews();
    if (isPanel)
        connect(new QShortcut(QKeySequence::Save, this), &QShortcut::activated, this,
                &MainWindow::doExitAfterCtrlS);
    else
        createMenu();
    setAcceptDrops(true);
    installEventFilter(this);
    QTimer::singleShot(msBeforeConnecting, this, &MainWindow::tryConnectAll);
}

MainWindow::~MainWindow()
{
    // The graphs read the data sets, and the sessions report to the window: both go before its members.
    mTembrin->disconnect(this);
    delete takeCentralWidget();
    mTembrin->run().disconnect(this);
    mTembrin->run().disconnect(runLine);
    mTembrin->run().disconnect(recorder);
    mTembrin->queue().disconnect(this);
    mTembrin->connector().disconnect(this);
    for (int i = 0; i < mTembrin->nMaxTembrins(); ++i) {
        mTembrin->tembrinAt(i)->disconnect(this);
        mTembrin->tembrinDataAt(i)->disconnect(this);
    }
    delete mTembrin;
}

bool MainWindow::is4K()
{
    return ScreenFlags::is4K();
}

void MainWindow::readSettings()
{
    QSettings store = Settings::mainStore();
    const QString version =
        store.value(QLatin1String(Settings::version), QStringLiteral("Kormelin")).toString();
    isPanel = store.value(QLatin1String(Settings::vestrelPanel), false).toBool();
    isSimulEnabled = store.value(QLatin1String(Settings::simulations), true).toBool();
    qCInfo(appLog, "edition %s, panel mode %s", qPrintable(version), isPanel ? "on" : "off");
    ScreenFlags::set4K(QGuiApplication::primaryScreen()->size().width() > wideScreen);
}

void MainWindow::createLoggers()
{
    mTembrin = new multiConnectionsManager(this);
    for (int i = 0; i < mTembrin->nMaxTembrins(); ++i) {
        connectLogger(i);
        connectDownload(i);
        dataSets.push_back(std::make_unique<ExpData>(mTembrin->tembrinAt(i)));
        mTembrin->setDataAt(i, dataSets.back().get());
    }
    dataSets.push_back(std::make_unique<ExpData>(mTembrin->tembrinAt(0)->units));
    mTembrin->setDataC(dataSets.back().get());
    const int window = Settings::mainStore().value(Settings::derivWindow, 0).toInt();
    for (const auto& set : dataSets)
        set->derivWindow = qBound(DerivedCurve::leastWindow - 2, window, DerivedCurve::mostWindow);
    tembrin = mTembrin->tembrinAt(0);
    data = mTembrin->dataAt(0);
}

void MainWindow::connectLogger(int index)
{
    TembrinProtocol* logger = mTembrin->tembrinAt(index);
    const TembrinData* state = logger->tembrinData;
    connect(state, &TembrinData::communicationEstablished, this, &MainWindow::commEstablished);
    connect(state, &TembrinData::temperatureChangeWarning, this, [this](int i) { notices->noteUnit(i); });
    connect(state, qOverload<int, int>(&TembrinData::runTerminated), this,
            [this](int i, int reason) { notices->noteRefusal(i, reason); });
    connect(logger, &TembrinProtocol::loggerDisconnected, this, &MainWindow::handleDisconnection);
}

void MainWindow::createStatusBar()
{
    indicator = new Indicator(prompt, this);
    indicator->isJunior = isJunior;
    connect(indicator, &Indicator::tryToConnect, this, &MainWindow::tryConnect);
    connect(indicator, &Indicator::deleteFromLogger, this, &MainWindow::deleteFromLogger);
    connect(indicator, &Indicator::message, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    connect(mTembrin, &multiConnectionsManager::setBTComm, indicator, &Indicator::setBTComm);
    statusBar()->setObjectName(QStringLiteral("statusBar"));
    statusLine = new StatusLine;
    runLine = new RunLine(&mTembrin->run(), groupNames());
    notices = new ClassNotices(mTembrin, prompt, this);
    connect(notices, &ClassNotices::line, statusLine, &StatusLine::setOutcome);
    // The graphs keep their height when the line comes and goes.
    statusBar()->setMinimumHeight(statusLine->minimumSizeHint().height() + statusBarMargin);
    statusBar()->addPermanentWidget(statusLine);
    statusBar()->addPermanentWidget(runLine);
    statusBar()->addPermanentWidget(indicator);
}

bool MainWindow::eventFilter(QObject* object, QEvent* event)
{
    if (object == this && event->type() == QEvent::Resize) {
        fitToolBars();
        // When what is in the window has its new size.
        QMetaObject::invokeMethod(this, &MainWindow::shareWithSimulation, Qt::QueuedConnection);
    }
    return QMainWindow::eventFilter(object, event);
}

// --- Leaving ---

/// Logger sets whose samples or marks are in no file, a bit each.
quint8 MainWindow::unsavedLoggers() const
{
    quint8 which = 0;
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i) {
        const ExpData* set = mTembrin->dataAt(i);
        if (set->isNeedSave() && set->getXSize() > 0)
            which |= quint8(1u << i);
    }
    return which;
}

/// Brings what loggers measured before a file was opened, or at another rate than the class, to the screen.
void MainWindow::showLoggers(quint8 which)
{
    ClassSet& classSet = mTembrin->run().classSet();
    if (!isOnlyStaticClassMode && (which & ~classSet.memberBits()) == 0)
        return;
    // What a logger kept of an earlier run is no part of the last one, and gets a turn of its own.
    const quint8 ofRun = isOnlyStaticClassMode ? which & classSet.releasedBits() : 0;
    handleOnlyStaticClassMode(false);
    graph->setMarkers();
    classSet.rebuild(ofRun != 0 ? ofRun : which);
    graph->updateTitle(runTitle);
    mTembrin->dataC()->makeUniformScales();
    updateAll(-1);
    updateLayout(LAYOUT_MULTI_TOGETHER);
}

/// Asks what to do with unsaved changes; true when they are saved or given up.
bool MainWindow::settleUnsaved(const QString& before, const QString& classQuestion,
                               const QString& groupsQuestion, bool* isAsked)
{
    const ClassSet& classSet = mTembrin->run().classSet();
    quint8 settled = 0; // a run goes on meanwhile, and would ask without end
    if (mTembrin->dataC()->isNeedSave()) {
        *isAsked = true;
        const UserPrompt::Answer answer = offerToSave(before + classQuestion);
        if (answer == UserPrompt::Answer::Cancel)
            return false;
        for (int i = 0; i < mTembrin->nDefTembrins(); ++i) {
            // With the class what it is made of is given up; a lesson has both, as far as a run has come.
            const bool isGivenUp = answer == UserPrompt::Answer::No && classSet.isMember(i);
            if (isGivenUp || (answer == UserPrompt::Answer::Yes && savedRunning >> i & 1))
                settled |= quint8(1u << i);
        }
    }
    while (const quint8 which = unsavedLoggers() & quint8(~settled)) {
        *isAsked = true;
        showLoggers(which);
        if (offerToSave(before + groupsQuestion) == UserPrompt::Answer::Cancel)
            return false;
        settled |= which;
    }
    return true;
}

/// Asks what to do with unsaved changes; true when the person wants to leave.
bool MainWindow::mayLeave()
{
    const bool isRunning = mTembrin->isAnyRunning();
    const QString goesOn =
        isRunning ? tr("A run is going on; the loggers go on with it when you leave.") + QLatin1String("\n\n")
                  : QString();
    bool isAsked = false;
    if (!settleUnsaved(
            goesOn, tr("Do you want to save experiment and annotations before leaving?"),
            tr("What the loggers measured is in no file yet. Do you want to save it before leaving?"),
            &isAsked) ||
        !settleKept(&isAsked))
        return false;
    return isAsked || !isRunning ||
           prompt->confirm(this, tr("Run going on"), goesOn + tr("Leave all the same?"));
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    event->ignore();
    doExit();
}

void MainWindow::doExit()
{
    endReplay();
    isLeavingAsked = isSaving; // then when the file is whole
    if (!isSaving && mayLeave())
        leave();
}

void MainWindow::doExitAfterCtrlS()
{
    endReplay();
    const QString fname = screenFile.target(*mTembrin->dataC());
    QString reason;
    if (fname.isEmpty())
        doSave();
    else if (!saveAs(fname, extentOf(fname, QString()), -1, &reason))
        warnNotWritten(reason);
    else if (fname == argumentFile && mayLeave())
        leave();
}

void MainWindow::leave()
{
    storeUnit();
    recorder->leave();
    hide();
    bool isQuiet = recovery->finish(msForThreads); // before the run ends, which looks again
    disconnectAll();
    isQuiet = mTembrin->connector().waitForAttempts(msForThreads) && isQuiet;
    isQuiet = QThreadPool::globalInstance()->waitForDone(msForThreads) && isQuiet;
    qDeleteAll(findChildren<PageView*>());        // their processes end well
    if (!isQuiet || PageView::isEngineLoaded()) { // exit() would take away what a thread still uses
        Settings::mainStore().sync();
        std::fflush(nullptr);
        std::_Exit(0);
    }
    std::exit(0);
}

/// The next start then agrees with the loggers on the unit.
void MainWindow::storeUnit()
{
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i) {
        if (mTembrin->isRecognized(i) && !mTembrin->tembrinDataAt(i)->isVorta()) {
            UnitGroups::agreeWith(*mTembrin->tembrinAt(i));
            return;
        }
    }
}

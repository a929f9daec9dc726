#include "app/mainwindow.h"

#include "app/messageboxprompt.h"
#include "app/refreshclock.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/screenflags.h"
#include "common/settings.h"
#include "common/userprompt.h"
#include "data/expdata.h"
#include "instruments/indicator.h"
#include "link/connectthread.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "setup/unitgroups.h"

#include <QAction>
#include <QComboBox>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QShortcut>
#include <QStatusBar>

#include <cstdlib>

Q_LOGGING_CATEGORY(appLog, "pellandra.app", QtInfoMsg)

namespace {
constexpr int msBeforeConnecting = 500;
constexpr int wideScreen = 3000; // above it icons double
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
    setWindowTitle(QStringLiteral("Pellandra %1").arg(QLatin1String(PELLANDRA_VERSION)));
    createLoggers();
    createTimers();
    createShortcuts();
    createActions();
    if (isPanel)
        setWindowState(Qt::WindowFullScreen);
    else
        createToolBars();
    createStatusBar();
    setupViews();
    setBackground();
    setAcceptDrops(true);
    installEventFilter(this);
    QTimer::singleShot(msBeforeConnecting, this, &MainWindow::tryConnectAll);
}

MainWindow::~MainWindow()
{
    for (ConnectThread* attempt : findChildren<ConnectThread*>())
        attempt->wait();
    // The graphs read the data sets, and the sessions report to the window: both go before its members.
    delete takeCentralWidget();
    for (int i = 0; i < mTembrin->nMaxTembrins(); ++i)
        mTembrin->tembrinAt(i)->disconnect(this);
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
    isSimulEnabled = store.value(QLatin1String(Settings::simulations), false).toBool();
    qCInfo(appLog, "edition %s, panel mode %s", qPrintable(version), isPanel ? "on" : "off");
    ScreenFlags::set4K(QGuiApplication::primaryScreen()->size().width() > wideScreen);
}

void MainWindow::createLoggers()
{
    mTembrin = new multiConnectionsManager(this);
    connect(mTembrin, &multiConnectionsManager::startSendCommandToAll, this,
            qOverload<commandType>(&MainWindow::sendingCommandToAllLoggers));
    connect(mTembrin, &multiConnectionsManager::doneSendCommandToAll, this,
            qOverload<>(&MainWindow::sendingCommandToAllLoggers));
    connect(mTembrin, &multiConnectionsManager::passedOver, this, [this](int index) {
        if (mTembrin->isSending(CMD_DOWNLOAD_STORED_DATA))
            passedOver.append(index);
    });
    for (int i = 0; i < mTembrin->nMaxTembrins(); ++i) {
        connectLogger(i);
        connectDownload(i);
        dataSets.push_back(std::make_unique<ExpData>(mTembrin->tembrinAt(i)));
        mTembrin->setDataAt(i, dataSets.back().get());
    }
    dataSets.push_back(std::make_unique<ExpData>(mTembrin->tembrinAt(0)->units));
    mTembrin->setDataC(dataSets.back().get());
    tembrin = mTembrin->tembrinAt(0);
    data = mTembrin->dataAt(0);
}

void MainWindow::connectLogger(int index)
{
    TembrinProtocol* logger = mTembrin->tembrinAt(index);
    const TembrinData* state = logger->tembrinData;
    connect(state, qOverload<int, short, QVector<QVector<double>>, int>(&TembrinData::onlineReceived), this,
            &MainWindow::onlineReceived);
    connect(state, &TembrinData::commandAccepted, this, &MainWindow::commandAccepted);
    connect(state, qOverload<int, bool>(&TembrinData::runTerminated), this,
            qOverload<int, bool>(&MainWindow::doStop));
    connect(state, qOverload<int, int>(&TembrinData::runTerminated), this,
            qOverload<int, int>(&MainWindow::doStop));
    connect(state, &TembrinData::loggerTypeChanged, this, &MainWindow::loggerTypeChanged);
    connect(state, &TembrinData::loggerMode, this, &MainWindow::handleLoggerMode);
    connect(state, &TembrinData::communicationEstablished, this, &MainWindow::commEstablished);
    connect(state, &TembrinData::temperatureChangeWarning, this, &MainWindow::showTemperatureChangeWarning);
    connect(logger, &TembrinProtocol::loggerDisconnected, this, &MainWindow::handleDisconnection);
    connect(logger, &TembrinProtocol::openDone, this, &MainWindow::connectionResult);
}

// A series of connections or starts goes on by a timer, so that the window is never inside a wait.
void MainWindow::createTimers()
{
    for (QTimer* timer : {&connectTimer, &startTimer}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
    }
    connect(&connectTimer, &QTimer::timeout, this, &MainWindow::connectNextLogger);
    connect(&startTimer, &QTimer::timeout, this, &MainWindow::startNextLogger);
}

void MainWindow::createShortcuts()
{
    auto* saveAndLeave = new QShortcut(QKeySequence(QStringLiteral("Ctrl+S")), this);
    connect(saveAndLeave, &QShortcut::activated, this, &MainWindow::doExitAfterCtrlS);
}

void MainWindow::createStatusBar()
{
    indicator = new Indicator(prompt, this);
    indicator->isJunior = isJunior;
    connect(indicator, &Indicator::tryToConnect, this, qOverload<int>(&MainWindow::tryConnect));
    connect(indicator, &Indicator::deleteFromLogger, this, &MainWindow::deleteFromLogger);
    connect(indicator, &Indicator::message, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    connect(mTembrin, &multiConnectionsManager::setBTComm, indicator, &Indicator::setBTComm);
    statusBar()->setObjectName(QStringLiteral("statusBar"));
    statusBar()->addPermanentWidget(indicator);
}

bool MainWindow::eventFilter(QObject* object, QEvent* event)
{
    if (object == this && event->type() == QEvent::Resize)
        fitToolBars();
    auto* list = qobject_cast<QComboBox*>(object);
    if (list && list->isEnabled() && isPressOnIcon(event)) {
        if (event->type() == QEvent::MouseButtonPress)
            Q_EMIT list->activated(list->currentIndex());
        return true;
    }
    return QMainWindow::eventFilter(object, event);
}

/// Asks what to do with unsaved changes; true when nothing is left to save.
bool MainWindow::mayLeave(bool withCancel)
{
    ExpData* classSet = mTembrin->dataC();
    while (data->isNeedSave() || classSet->isNeedSave()) {
        switch (prompt->question(this, tr("Changes not saved"),
                                 tr("Do you want to save experiment and annotations before leaving?"),
                                 withCancel)) {
        case UserPrompt::Answer::Yes:
            doSave();
            break;
        case UserPrompt::Answer::No:
            data->setNeedSave(false);
            classSet->setNeedSave(false);
            break;
        case UserPrompt::Answer::Cancel:
            return false;
        }
    }
    return true;
}

void MainWindow::doExit()
{
    if (mayLeave(true))
        leave();
}

void MainWindow::doExitFromX()
{
    mayLeave(false);
    leave();
}

void MainWindow::doExitAfterCtrlS()
{
    if (argumentFile.isEmpty() || doSave(argumentFile))
        leave();
}

void MainWindow::leave()
{
    UnitGroups::agreeWith(*tembrin);
    disconnectAll();
    std::exit(0);
}

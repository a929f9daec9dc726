#include "app/mainwindow.h"

#include "classroom/multiconnectionsmanager.h"
#include "common/settings.h"
#include "graph/plot.h"
#include "instruments/indicator.h"
#include "link/connectthread.h"
#include "link/portlistener.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

#include <QAction>
#include <QFileInfo>
#include <QLabel>
#include <QStatusBar>

namespace {

constexpr int msBetweenAttempts = 100;
constexpr int furtherAttempts = 10;
const QString noPort = QStringLiteral("COMxx");

} // namespace

void MainWindow::tryConnectAll()
{
    updateHint();
    nextToConnect = 0;
    connectNextLogger();
}

void MainWindow::connectNextLogger()
{
    connectTimer.stop();
    if (nextToConnect >= mTembrin->nDefTembrins())
        return;
    const int index = nextToConnect++;
    connectTimer.start(msBetweenAttempts);
    mTembrin->setNTries(index, 0);
    tryConnect(index);
}

void MainWindow::tryConnect(int index)
{
    // A retry may be due when the class has become smaller.
    if (index >= mTembrin->nDefTembrins() || mTembrin->isTryingToConnect(index))
        return;
    mTembrin->setTryingToConnect(index, true);
    if (mTembrin->isTembrinConnect(index)) {
        mTembrin->setNotConnected(index);
        mTembrin->release(index);
    }
    advancedSetupAct->setEnabled(false);
    statusBar()->showMessage(tr("Trying to connect to Tembrin, please wait.."));
    (new ConnectThread(mTembrin->tembrinAt(index), this))->start();
}

void MainWindow::tryConnect(int index, int msDelay)
{
    QTimer::singleShot(msDelay, this, [this, index] { tryConnect(index); });
}

void MainWindow::disconnectAll()
{
    connectTimer.stop();
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i) {
        if (!mTembrin->isTembrinConnect(i))
            continue;
        mTembrin->setNotConnected(i);
        mTembrin->release(i);
    }
}

void MainWindow::connectionResult(int index)
{
    advancedSetupAct->setEnabled(true);
    mTembrin->setTryingToConnect(index, false);
    if (mTembrin->isTembrinConnect(index))
        takeConnected(index);
    else
        retryConnect(index);
    if (!mTembrin->isTembrinConnect(index))
        updateIconsConnection(index);
}

// A port that no paired device is known for goes by its own name.
QString MainWindow::nameOf(int index) const
{
    const QString name = mTembrin->loggerName(index);
    return name.isEmpty() ? QFileInfo(mTembrin->tembrinAt(index)->portName).fileName() : name;
}

void MainWindow::takeConnected(int index)
{
    TembrinProtocol* logger = mTembrin->tembrinAt(index);
    const QString name = nameOf(index);
    statusBar()->showMessage(tr("Connected to %1 (Bluetooth)").arg(name));
    indicator->setToolTipsMsg(index, tr("%1 (Bluetooth)").arg(name));
    indicator->setLoggerDetails(index, name, logger->getGroupName());
    // Makes the listener and the talker, so it belongs on this thread and not on the one that opened the
    // port.
    logger->init();
    if (logger->listener)
        connect(logger->listener, &PortListener::bootloadReady, this, &MainWindow::bootloadReady);
    logger->tembrinData->setVorta(false);
    logger->sendCommand(CMD_GET_ALL_SENSORS_ID);
    logger->sendVortaCommand(CMD_VORTA_GET_STATUS);
    for (Plot* plot : {mTembrin->plotAt(index), mTembrin->barAt(index)})
        plot->updateTitle(logger->getGroupName());
}

void MainWindow::retryConnect(int index)
{
    statusBar()->showMessage(
        tr("Not connected (tried BT port %1)").arg(mTembrin->tembrinAt(index)->portName));
    indicator->setToolTipsMsg(index, tr("Not connected"));
    const int tries = mTembrin->nTries(index);
    if (tries < furtherAttempts) {
        mTembrin->setNTries(index, tries + 1);
        tryConnect(index, msBetweenAttempts);
        return;
    }
    mTembrin->setNTries(index, 0);
    qCInfo(appLog, "logger %d: not connected after %d attempts on port %s", index + 1, tries + 1,
           qPrintable(mTembrin->tembrinAt(index)->portName));
}

void MainWindow::commEstablished(int index)
{
    mTembrin->sendCommand(index, CMD_SET_DATE_AND_TIME);
    updateIconsConnection(index);
}

void MainWindow::handleDisconnection(int index)
{
    statusBar()->showMessage(passedOverText());
    mTembrin->tembrinDataAt(index)->setLoggerRecognized(false);
    mTembrin->tembrinDataAt(index)->setGotSensorList(false);
    indicator->setToolTipsMsg(index, tr("Not connected"));
    if (mTembrin->isInRun(index))
        doStop(index, false);
    else if (isRun)
        endRun(index);
    updateIconsConnection(index);
}

void MainWindow::loggerTypeChanged()
{
    for (int i = 0; i < mTembrin->nMaxTembrins(); ++i)
        setSelected(i, 0);
    updateClassData();
}

void MainWindow::bootloadReady(bool isVorta, int ver)
{
    if (tembrin->ignoreOneBootLoaderReady) {
        tembrin->ignoreOneBootLoaderReady = false;
        return;
    }
    tembrin->isBootLoader = true;
    tembrin->blVersion = ver;
    qCInfo(appLog, "a firmware loader answers, %s, version %d", isVorta ? "Vorta" : "Tembrin", ver);
}

void MainWindow::deleteFromLogger(int index, bool all)
{
    mTembrin->tembrinAt(index)->deleteFromLogger(all);
}

void MainWindow::updateIconsConnection(int index)
{
    const bool isConnect = mTembrin->isTembrinConnect(index);
    indicator->setBT(index, isConnect);
    if (isConnect)
        updateIconsConnection(true);
}

void MainWindow::updateIconsConnection(bool tf)
{
    for (QAction* action : {downloadAct, runAct, stopAct, basicSetupAct})
        action->setEnabled(tf);
}

void MainWindow::updateHint()
{
    QSettings store = Settings::mainStore();
    bool hasPort = false;
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i) {
        const QString port = store.value(Settings::loggerKey(i), noPort).toString();
        hasPort = hasPort || (!port.isEmpty() && port != noPort);
    }
    hint->setVisible(!hasPort);
}

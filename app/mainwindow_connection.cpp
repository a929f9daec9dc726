#include "app/mainwindow.h"

#include "app/simulationpanel.h"
#include "classroom/classrun.h"
#include "classroom/failuretexts.h"
#include "classroom/loggerconnector.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/settings.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "instruments/indicator.h"
#include "instruments/statusline.h"
#include "link/portlistener.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "setup/setuplogger.h"

#include <QAction>
#include <QApplication>
#include <QFileInfo>
#include <QLabel>
#include <QSplitter>
#include <QStatusBar>
#include <QTimer>

#include <utility>

namespace {
constexpr int msConnected = 10000; // once all are there, that is no news for long
constexpr int msBeforeCancel = 1000;
const QString noPort = QStringLiteral("COMxx");
} // namespace

void MainWindow::connectConnector()
{
    LoggerConnector* connector = &mTembrin->connector();
    connect(connector, &LoggerConnector::opening, this, &MainWindow::showConnecting);
    connect(connector, &LoggerConnector::opened, this, &MainWindow::showConnected);
    connect(connector, &LoggerConnector::failed, this, &MainWindow::showNotConnected);
    connect(connector, &LoggerConnector::seeking, this, &MainWindow::showSeeking);
    connect(connector, &LoggerConnector::silent, this, [this](int index) {
        statusLine->setOutcome(tr("%1 is connected and does not answer.").arg(mTembrin->groupName(index)));
    });
}

void MainWindow::tryConnectAll()
{
    updateHint();
    mTembrin->connector().connectAll();
}

void MainWindow::tryConnect(int index)
{
    // A radio calls for many seconds, and the person may know better; a double click is none of that.
    if (mTembrin->connector().msOpening(index) >= msBeforeCancel)
        mTembrin->connector().cancel(index);
    else
        mTembrin->connector().connectLogger(index);
}

void MainWindow::disconnectAll()
{
    mTembrin->connector().disconnectAll();
}

// A port that no paired device is known for goes by its own name.
QString MainWindow::nameOf(int index) const
{
    const QString name = mTembrin->loggerName(index);
    return name.isEmpty() ? QFileInfo(mTembrin->tembrinAt(index)->portName).fileName() : name;
}

/// Which groups nobody talks to at present, and why; empty if there is none.
QString MainWindow::awayText() const
{
    QStringList called;
    QVector<PortFailure> failures;
    QVector<QStringList> groups; // of each failure
    QString port;
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i) {
        const LoggerConnector::State state = mTembrin->connector().state(i);
        if (state == LoggerConnector::State::Opening)
            called.append(mTembrin->groupName(i));
        if (state != LoggerConnector::State::Idle && state != LoggerConnector::State::Waiting)
            continue;
        const TembrinProtocol* const logger = mTembrin->tembrinAt(i);
        int place = failures.indexOf(logger->failure);
        if (place < 0) {
            place = failures.size();
            failures.append(logger->failure);
            groups.append(QStringList());
            port = logger->portName;
        }
        groups[place].append(mTembrin->groupName(i));
    }
    QStringList parts;
    for (int i = 0; i < failures.size(); ++i) {
        const QString why = FailureTexts::reason(failures[i], port);
        const QString names = groups[i].join(QStringLiteral(", "));
        parts.append(why.isEmpty() ? names : tr("%1 (%2)").arg(names, why));
    }
    QString text =
        parts.isEmpty() ? QString() : tr("Not connected: %1").arg(parts.join(QStringLiteral(", ")));
    if (!called.isEmpty())
        text = (tr("Connecting: %1").arg(called.join(QStringLiteral(", "))) + QStringLiteral("  ") + text)
                   .trimmed();
    return text;
}

/// What only the person at the computer can put right stands above the graphs, whole, with the command to
/// copy.
void MainWindow::showCure()
{
    QString text;
    for (int i = 0; i < mTembrin->nDefTembrins() && text.isEmpty(); ++i) {
        const LoggerConnector::State state = mTembrin->connector().state(i);
        const TembrinProtocol* const logger = mTembrin->tembrinAt(i);
        if (state == LoggerConnector::State::Idle && FailureTexts::isOfComputer(logger->failure))
            text = tr("%1 is not connected: %2")
                       .arg(mTembrin->groupName(i), FailureTexts::text(logger->failure, logger->portName));
    }
    cureLine->setText(text);
    // A splitter would share the room of the graphs with it.
    if (!text.isEmpty())
        cureLine->setMaximumHeight(qMax(cureLine->heightForWidth(qMax(graphW->width(), 1)), 0));
    cureLine->setVisible(!text.isEmpty());
}

void MainWindow::showConnecting(int index)
{
    advancedSetupAct->setEnabled(false);
    statusBar()->showMessage(tr("Trying to connect to Tembrin, please wait.."));
    indicator->setConnecting(index);
    indicator->setToolTipsMsg(index, tr("Connecting. Click to give up."));
    showCure();
}

void MainWindow::showConnected(int index)
{
    advancedSetupAct->setEnabled(true);
    const QString name = nameOf(index);
    const QString group = mTembrin->groupName(index);
    takeNewName(index);
    const QString away = awayText();
    statusBar()->showMessage(
        (tr("Connected to %1 (Bluetooth)").arg(group) + QStringLiteral("  ") + away).trimmed(),
        away.isEmpty() ? msConnected : 0);
    indicator->setToolTipsMsg(index, tr("%1 (Bluetooth)").arg(name));
    indicator->setLoggerDetails(index, name, group);
    if (const PortListener* listener = mTembrin->tembrinAt(index)->listener)
        connect(listener, &PortListener::bootloadReady, this,
                [this, index](bool isVorta, int ver) { bootloadReady(index, isVorta, ver); });
    showTitle(index);
    showCure();
}

/// What a logger measured for a group goes along when the group gets another name.
void MainWindow::takeNewName(int index)
{
    ConnectedGroup& known = connectedGroups[index];
    const ConnectedGroup now{mTembrin->tembrinAt(index)->portName, mTembrin->groupName(index)};
    const ConnectedGroup before = std::exchange(known, now);
    ExpData* const set = mTembrin->dataAt(index);
    if (set->getXSize() > 0 && before.port != now.port && set->getGroupName() != now.name)
        namedByLesson |= quint8(1u << index); // what another group measured in this place
    if (before.port != now.port || before.name == now.name || set->getGroupName() != before.name)
        return;
    endReplay();
    set->setGroupName(now.name);
    if (isOnlyStaticClassMode)
        return;
    // By their places: two groups may have one name.
    const SensorList& channels = mTembrin->dataC()->getSensors();
    for (int i = 0; i < channels.size(); ++i) {
        const SensorPtr& channel = channels[i];
        const bool isOfGroup =
            channel && (channel->specialType == 0 ? i : channel->specialOriginIndex) == index;
        if (isOfGroup && channel->groupName == before.name)
            channel->groupName = now.name;
    }
    updateAll(-1);
}

void MainWindow::showNotConnected(int index)
{
    advancedSetupAct->setEnabled(true);
    statusBar()->showMessage(awayText());
    const TembrinProtocol* const logger = mTembrin->tembrinAt(index);
    const QString tip = tr("Not connected (tried BT port %1)").arg(logger->portName);
    indicator->setToolTipsMsg(
        index, (tip + QLatin1Char('\n') + FailureTexts::text(logger->failure, logger->portName)).trimmed());
    indicator->setBT(index, false);
    showCure();
}

void MainWindow::commEstablished(int index)
{
    indicator->setBT(index, true);
    updateActions();
}

void MainWindow::handleDisconnection(int index)
{
    statusBar()->showMessage(awayText());
    showSeeking(index, mTembrin->connector().isSought(index));
    updateActions();
}

void MainWindow::showSeeking(int index, bool isOn)
{
    if (mTembrin->isTembrinConnect(index))
        return;
    if (isOn)
        indicator->setSeeking(index);
    else
        indicator->setBT(index, false);
    indicator->setToolTipsMsg(index, isOn ? tr("Connection lost: the logger is being looked for")
                                          : tr("Not connected"));
}

/// Nobody asked for it where no dialog is open: a logger whose firmware is not whole says so when it is
/// there.
void MainWindow::bootloadReady(int index, bool isVorta, int ver)
{
    TembrinProtocol* const logger = mTembrin->tembrinAt(index);
    if (logger->ignoreOneBootLoaderReady) {
        logger->ignoreOneBootLoaderReady = false;
        return;
    }
    logger->isBootLoader = true;
    logger->blVersion = ver;
    qCInfo(appLog, "a firmware loader answers on logger %d, %s, version %d", index,
           isVorta ? "Vorta" : "Tembrin", ver);
    if (advancedSetupDlg)
        return;
    statusLine->setOutcome(tr("%1: the logger waits for its firmware").arg(mTembrin->groupName(index)));
    const bool isAdvanced = Settings::mainStore().value(QLatin1String(Settings::advanced), false).toBool();
    if (isAdvanced && !mTembrin->isAnyRunning() && !QApplication::activeModalWidget())
        QTimer::singleShot(0, this, [this, index] { openSetup(index); });
}

void MainWindow::deleteFromLogger(int index, bool all)
{
    mTembrin->tembrinAt(index)->deleteFromLogger(all);
}

void MainWindow::updateHint()
{
    QSettings store = Settings::mainStore();
    bool hasPort = false;
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i) {
        const QString port = store.value(Settings::loggerKey(i), noPort).toString();
        hasPort = hasPort || (!port.isEmpty() && port != noPort);
    }
    const bool isWithout = simW && !simW->isHidden(); // a simulation needs no logger
    hint->setVisible(!hasPort && !isWithout);
}

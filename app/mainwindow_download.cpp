#include "app/mainwindow.h"

#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "protocol/tembrindata.h"

#include "setup/experimentinfo.h"

#include <QAction>
#include <QMenu>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>

void MainWindow::connectDownload(int index)
{
    const TembrinData* state = mTembrin->tembrinDataAt(index);
    connect(state, &TembrinData::downloadComplete, this, &MainWindow::useDownload);
    connect(state, &TembrinData::donePacket, this,
            [this, index](int packets, int expected) { showDownloadProgress(index, packets, expected); });
}

/// A small arrow on the button leads to the choice of an experiment.
void MainWindow::addDownloadChoice()
{
    auto* button = qobject_cast<QToolButton*>(tembrinToolBar->widgetForAction(downloadAct));
    auto* menu = new QMenu(button);
    menu->setObjectName(QStringLiteral("downloadMenu"));
    QAction* select = menu->addAction(tr("Select experiment"), this, &MainWindow::doSelectExperiment);
    select->setObjectName(QStringLiteral("selectExperimentAct"));
    button->setObjectName(QStringLiteral("downloadButton"));
    button->setMenu(menu);
    button->setPopupMode(QToolButton::MenuButtonPopup);
}

void MainWindow::doDownload2018()
{
    doDownload();
}

void MainWindow::doDownload()
{
    isFastRunEnded = false;
    delivered = 0;
    mTembrin->resetDownloaded();
    handleOnlyStaticClassMode(false);
    mTembrin->sendCmdToAll(CMD_DOWNLOAD_STORED_DATA);
    if (!mTembrin->isSending(CMD_DOWNLOAD_STORED_DATA))
        statusBar()->showMessage(tr("No connected logger has a stored experiment."));
}

void MainWindow::downloadWhenAllStopped()
{
    if (isFastRunEnded && !startTimer.isActive() && !mTembrin->isAnyRunning())
        doDownload();
}

void MainWindow::doSelectExperiment()
{
    if (experimentInfo::loggersWithMemory(*mTembrin).isEmpty()) {
        statusBar()->showMessage(tr("No logger with a memory is connected."));
        return;
    }
    delivered = classMembers; // the others stay in the class
    const QPointer<experimentInfo> dialog = new experimentInfo(mTembrin, 0, this);
    connect(dialog.data(), &experimentInfo::fetchingSameRun, this, [this] { delivered = 0; });
    dialog->exec();
    if (dialog)
        dialog->deleteLater();
}

void MainWindow::useDownload(int index, bool isOK)
{
    Plot* plot = mTembrin->plotAt(index);
    if (isOK) {
        handleOnlyStaticClassMode(false);
        const StoredRun& run = mTembrin->tembrinDataAt(index)->storedRun();
        mTembrin->dataAt(index)->setCardWidth(mTembrin->tembrinDataAt(index)->photoObjW);
        mTembrin->dataAt(index)->takeExperiment(run.channels, run.dt, run.columns);
        plot->setMarkers();
        graph->setMarkers();
        updateAll(index);
        mTembrin->incDownloaded();
        // What an earlier download or run left with a logger that does not deliver stays out of the class.
        delivered |= 1U << index;
        classMembers = delivered;
    }
    updateSens(-1, 0);
    if (isOK)
        mTembrin->dataC()->setNeedSave(true);
    plot->forceDefaultSetScale();
}

void MainWindow::showDownloadProgress(int index, int packets, int expected)
{
    if (!mTembrin->isSending(CMD_DOWNLOAD_STORED_DATA) || expected <= 0)
        return;
    statusBar()->showMessage(tr("Please wait while all Tembrin are %1").arg(tr("downloading")) +
                             tr(": %1, %2 %").arg(mTembrin->groupName(index)).arg(100 * packets / expected));
}

QString MainWindow::passedOverText() const
{
    if (passedOver.isEmpty())
        return QString();
    QStringList names;
    for (int index : passedOver)
        names.append(QStringLiteral("%1 (%2)").arg(nameOf(index), mTembrin->groupName(index)));
    return tr("No experiment could be fetched from %1.").arg(names.join(QStringLiteral(", ")));
}

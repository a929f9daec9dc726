#include "app/mainwindow.h"

#include "app/predictionkeeper.h"
#include "app/runrecorder.h"
#include "classroom/classrun.h"
#include "classroom/commandqueue.h"
#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "instruments/statusline.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "setup/experimentinfo.h"

#include <QAction>
#include <QMenu>
#include <QToolBar>
#include <QToolButton>

#include <utility>

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
    // The arrow goes with the button: both wait while anybody runs or is being told something.
    connect(downloadAct, &QAction::changed, select,
            [this, select] { select->setEnabled(downloadAct->isEnabled()); });
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
    delivered = 0;
    if (!mTembrin->queue().add(ClassJob::Task::Download))
        statusLine->setAdvice(tr("No connected logger has a stored experiment."));
}

/// What a run at a high rate left in the memories. Who streamed in the same run stays in the class.
void MainWindow::fetchStoredRuns(quint8 which)
{
    delivered = mTembrin->run().classSet().memberBits() & quint8(~which);
    if (!mTembrin->queue().add(ClassJob::Task::Download, which))
        statusLine->setAdvice(tr("No connected logger has a stored experiment."));
}

/// What a run lacks because the connection was lost in it, the memory of the logger may have.
void MainWindow::fetchGaps(quint8 which)
{
    if (mTembrin->queue().add(ClassJob::Task::Download, which))
        filling |= which;
}

void MainWindow::fillGaps(int index)
{
    const QString group = mTembrin->groupName(index);
    const int filled = mTembrin->run().fillGaps(index, mTembrin->tembrinDataAt(index)->storedRun());
    if (filled < 0)
        filledTexts.append(tr("%1: the memory of the logger has another run, so the gap stays").arg(group));
    if (filled <= 0)
        return;
    filledTexts.append(
        filled == 1 ? tr("%1: a missing sample came from the memory of the logger").arg(group)
                    : tr("%1: %2 missing samples came from the memory of the logger").arg(group).arg(filled));
    recorder->rewrite(index);
    mTembrin->dataC()->makeUniformScales();
    updateAll(index);
    updateAll(-1);
}

void MainWindow::showFilled(const ClassJob& job)
{
    if (job.task != ClassJob::Task::Download)
        return;
    for (const ClassJob::Step& step : job.steps)
        filling &= quint8(~(1u << step.slot));
    QStringList texts = std::exchange(filledTexts, {});
    if (texts.isEmpty())
        return;
    if (!statusLine->outcome().isEmpty())
        texts.prepend(statusLine->outcome());
    statusLine->setOutcome(texts.join(QStringLiteral("; ")));
    predictions->tellResult(); // with what has come
}

void MainWindow::doSelectExperiment()
{
    if (experimentInfo::loggersWithMemory(*mTembrin).isEmpty()) {
        statusLine->setAdvice(tr("No logger with a memory is connected."));
        return;
    }
    delivered = mTembrin->run().classSet().memberBits(); // the others stay in the class
    const QPointer<experimentInfo> dialog = new experimentInfo(mTembrin, 0, this);
    connect(dialog.data(), &experimentInfo::fetchingSameRun, this, [this] { delivered = 0; });
    dialog->exec();
    if (dialog)
        dialog->deleteLater();
}

void MainWindow::useDownload(int index, bool isOK)
{
    if (!isOK)
        return;
    endReplay();
    if (filling >> index & 1) {
        fillGaps(index);
        return;
    }
    keepBefore(index);
    handleOnlyStaticClassMode(false);
    recorder->replace(index);
    ExpData* set = mTembrin->dataAt(index);
    const StoredRun& stored = mTembrin->tembrinDataAt(index)->storedRun();
    set->takeExperiment(stored.channels, stored.dt, stored.columns);
    set->setGroupName(mTembrin->groupName(index));
    endLessonName(index);
    set->setCardWidth(mTembrin->tembrinAt(index)->photoObjW);
    mTembrin->plotAt(index)->setMarkers();
    updateAll(index);
    setSelected(index, qMax(0, set->getSelectedSensor()));
    // What an earlier download or run left with a logger that does not deliver stays out of the class.
    delivered |= quint8(1u << index);
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i) { // who was started meanwhile goes on in it
        if (mTembrin->isRunning(i))
            delivered |= mTembrin->run().classSet().memberBits() & quint8(1u << i);
    }
    graph->setMarkers();
    mTembrin->run().classSet().rebuild(delivered);
    ExpData* classSet = mTembrin->dataC();
    classSet->makeUniformScales();
    classSet->setXRange();
    classSet->setNeedSave(true);
    updateAll(-1);
    setSelected(-1, 0);
    mTembrin->plotAt(index)->forceDefaultSetScale();
}

void MainWindow::showDownloadProgress(int index, int packets, int expected)
{
    if (!mTembrin->queue().isWorking(ClassJob::Task::Download) || expected <= 0)
        return;
    statusLine->setWaiting(
        tr("Please wait while all Tembrin are %1").arg(tr("downloading")) +
        tr(": %1, %2 %").arg(mTembrin->groupName(index)).arg(qMin(100, 100 * packets / expected)));
}

#include "app/mainwindow.h"

#include "app/runline.h"
#include "app/runrecorder.h"
#include "app/runrecovery.h"
#include "classroom/classrun.h"
#include "classroom/commandqueue.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/userprompt.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "instruments/statusline.h"
#include "protocol/tembrinprotocol.h"

#include <QTimer>

namespace {

constexpr int msBeforeLooking = 1000; // the window and the first words to the loggers go before

SensorList channelsOf(const JournalGroup& group, const Units& units)
{
    SensorList channels;
    for (const JournalChannel& channel : group.channels) {
        const int parent = channel.virtualIndex < 0 ? -1 : channel.inLoggerIndex;
        const SensorPtr sensor = SensorPtr::create(channel.sensorID, units, parent, channel.virtualIndex);
        sensor->inLoggerIndex = channel.inLoggerIndex;
        channels.append(sensor);
    }
    return channels;
}

} // namespace

void MainWindow::createRecovery()
{
    recorder = new RunRecorder(mTembrin, this);
    connect(recorder, &RunRecorder::failed, this,
            [this](const QString& line) { statusLine->setOutcome(line); });
    createRuns();
    recovery = new RunRecovery(this);
    connect(recovery, &RunRecovery::restoreWanted, this, &MainWindow::restoreRun);
    QTimer::singleShot(msBeforeLooking, recovery, &RunRecovery::look);
}

void MainWindow::restoreRun()
{
    const QString busy = tr("A run can be restored when no logger is busy.");
    if (isSaving || isBusy(busy))
        return;
    const FoundJournal journal = recovery->offered();
    JournalRun run;
    QString reason;
    bool isRead = false;
    const auto read = [&] {
        isRead = JournalReader::read(journal.path, JournalReader::What::Samples, &run, &reason);
    };
    if (!worked(read) || isBusy(busy)) // a logger was started with its own key
        return;
    if (!isRead) {
        prompt->warning(this, tr("Run not restored"), reason);
        return;
    }
    quint8 groups = 0;
    for (const JournalExperiment& experiment : run.experiments)
        groups |= quint8(1u << experiment.head.slot);
    keepPresent();
    recorder->adopt(journal, groups);
    showRestored(run, groups);
    recovery->next();
}

void MainWindow::showRestored(const JournalRun& run, quint8 groups)
{
    handleOnlyStaticClassMode(false);
    mTembrin->run().forget();
    runLine->refresh();
    const int needed = run.experiments.constLast().head.slot + 1;
    if (needed > mTembrin->nDefTembrins())
        setDisplayForNLoggers(needed);
    data->setXYIndex(-1);
    for (const JournalExperiment& experiment : run.experiments) {
        const int slot = experiment.head.slot;
        ExpData* const set = mTembrin->dataAt(slot);
        set->setXYIndex(-1);
        set->takeExperiment(channelsOf(experiment.head, mTembrin->tembrinAt(slot)->units),
                            experiment.head.period, experiment.times, experiment.columns);
        set->setGroupName(experiment.head.group);
        set->setCardWidth(experiment.head.cardWidth);
        mTembrin->plotAt(slot)->setMarkers();
        updateAll(slot);
        setSelected(slot, qMax(0, set->getSelectedSensor()));
        mTembrin->plotAt(slot)->forceDefaultSetScale();
    }
    graph->setMarkers();
    mTembrin->run().classSet().rebuild(groups);
    ExpData* const classSet = mTembrin->dataC();
    classSet->makeUniformScales();
    classSet->setXRange();
    classSet->setNeedSave(true);
    updateAll(-1);
    setSelected(-1, 0);
    runBegun = run.begun;
    runTitle = run.begun.toString(QStringLiteral("hh:mm, d-MM-yyyy"));
    graph->updateTitle(runTitle);
    statusLine->setOutcome(
        tr("%1 is restored: %2").arg(RunRecovery::nameOf(run), RunRecovery::extentOf(run)));
}

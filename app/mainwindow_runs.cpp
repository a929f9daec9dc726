// Runs that others took the place of.

#include "app/mainwindow.h"

#include "app/keptruns.h"
#include "app/runspanel.h"
#include "app/undosteps.h"
#include "classroom/classrun.h"
#include "classroom/commandqueue.h"
#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"
#include "graph/pinnedcurves.h"
#include "graph/plot.h"
#include "instruments/statusline.h"
#include "persistence/sampleshelf.h"

#include <QAction>
#include <QFileInfo>
#include <QSplitter>

#include <algorithm>

void MainWindow::createRuns()
{
    keptRuns = new KeptRuns(recorder, this);
    connect(keptRuns, &KeptRuns::told, statusLine, &StatusLine::setAdvice);
    connect(keptRuns, &KeptRuns::doing, steps, &UndoSteps::prepare);
    connect(keptRuns, &KeptRuns::done, steps, &UndoSteps::note);
    connect(keptRuns, &KeptRuns::pinsChanged, this, qOverload<>(&MainWindow::showPins));
    const ClassRun* const run = &mTembrin->run();
    connect(run, &ClassRun::begun, this, &MainWindow::keepPresent);
    connect(run, &ClassRun::groupReplaced, this, &MainWindow::keepGroup);
    createReplay();
}

/// Of an opened file, its name; else the list numbers them.
QString MainWindow::keptName() const
{
    return QFileInfo(screenFile.title()).completeBaseName();
}

/// All samples on the screen are in a file, or can be played again.
bool MainWindow::isScreenSaved() const
{
    const SensorPtr& first = mTembrin->dataAt(0)->get1stSensor();
    const bool isPlayed = first && first->ID >= SENSOR_SIM_DISTANCE && first->ID <= SENSOR_SIM_ANGLE;
    return isPlayed ||
           !((mTembrin->dataC()->isNeedSave() && mTembrin->dataC()->getXSize() > 0) || unsavedLoggers() != 0);
}

/// Something else is about to take the place of what is on the graphs.
void MainWindow::keepPresent()
{
    endReplay();
    const bool isSaved = isScreenSaved();
    keptRuns->keep(takeRun(), isSaved && !keptInSaving, keptName());
    noteInSaving(isSaved);
}

/// What gives way while a lesson is written counts as saved when the file is there, and no sooner.
void MainWindow::noteInSaving(bool isSaved)
{
    if (isSaved && keptInSaving && !keptRuns->all().isEmpty())
        keptInSaving->append(keptRuns->all().constLast().id);
}

void MainWindow::keepGroup(int index)
{
    endReplay();
    LessonRun run = takeRun();
    const auto isOther = [index](const Lesson::Part& part) { return part.slot != index; };
    run.parts.erase(std::remove_if(run.parts.begin(), run.parts.end(), isOther), run.parts.end());
    run.isClassOfFile = false;
    const bool isSaved = !mTembrin->dataAt(index)->isNeedSave();
    keptRuns->keepPart(run, isSaved && !keptInSaving);
    noteInSaving(isSaved);
}

/// What is fetched takes the place of one group after the other; the run before goes into the list once.
void MainWindow::keepBefore(int index)
{
    endReplay();
    LessonRun group;
    group.parts.append(takePart(index));
    if (isOnlyStaticClassMode || keptRuns->shown() != 0 || !keptRuns->holds(group))
        keepPresent();
}

/// While a logger runs its samples would come into the run that is shown, so that has to wait.
void MainWindow::showKept(int id)
{
    const KeptRun* const found = keptRuns->find(id);
    if (!found || id == keptRuns->shown() || isSaving ||
        isBusy(tr("A kept run can be shown when no logger is busy.")))
        return;
    const KeptRun* const awake = keptRuns->wake(id);
    if (!awake)
        return;
    const KeptRun kept = *awake;
    keepPresent();
    showRun(kept.outline);
    keptRuns->noteShown(id);
    for (int i = -1; !kept.isSaved && i < mTembrin->nDefTembrins(); ++i) {
        ExpData* const set = i < 0 ? mTembrin->dataC() : mTembrin->dataAt(i);
        set->setNeedSave(set->getXSize() > 0);
    }
    statusLine->setAdvice(tr("%1 is on the graphs.").arg(kept.outline.name));
}

void MainWindow::toggleRuns()
{
    if (!runsPanel) {
        runsPanel = new RunsPanel(keptRuns);
        connect(runsPanel, &RunsPanel::showWanted, this, &MainWindow::showKept);
        connect(runsPanel, &RunsPanel::replayWanted, this, &MainWindow::replayKept);
        connect(runsPanel, &RunsPanel::closeWanted, runsAct, &QAction::trigger);
        mainW->addWidget(runsPanel);
        mainW->setCollapsible(mainW->indexOf(runsPanel), false);
        mainW->setStretchFactor(mainW->indexOf(graphW), 1);
        runsPanel->hide();
    }
    runsPanel->setVisible(runsPanel->isHidden());
    runsAct->setChecked(!runsPanel->isHidden());
}

void MainWindow::showPins()
{
    for (int i = -1; i < mTembrin->nDefTembrins(); ++i)
        showPins(i);
}

QVector<PinnedRun> MainWindow::pinsOf(int index) const
{
    QVector<PinnedRun> pinned;
    for (const KeptRun* run : keptRuns->pinned()) {
        const Lesson::Part* const part = run->partOf(index, index < 0 ? QString() : titleName(index));
        if (!part)
            continue;
        PinnedRun behind{run->outline.name, part->experiment, {}};
        if (run->shelf) {
            behind.column = [shelf = run->shelf, at = int(part - run->outline.parts.constData())](
                                int channel) { return shelf->column(at, channel); };
        }
        pinned.append(behind);
    }
    return pinned;
}

void MainWindow::showPins(int index)
{
    const QVector<PinnedRun> pinned = pinsOf(index);
    const KeptRun* const shown = keptRuns->find(keptRuns->shown());
    for (Plot* plot : mTembrin->viewsOf(index))
        plot->setPinned(pinned, shown ? shown->outline.name : QString());
}

/// Kept runs that are in no file. A lesson takes all of them.
bool MainWindow::settleKept(bool* isAsked)
{
    while (const int count = keptRuns->unsaved()) {
        *isAsked = true;
        const QString question =
            count == 1
                ? tr("A kept run is in no file yet. A lesson holds the kept runs too. Do you want to save "
                     "it before leaving?")
                : tr("%1 kept runs are in no file yet. A lesson holds the kept runs too. Do you want to "
                     "save it before leaving?")
                      .arg(count);
        const UserPrompt::Answer answer = offerToSave(question);
        if (answer != UserPrompt::Answer::Yes)
            return answer == UserPrompt::Answer::No;
    }
    return true;
}

/// What is in no file goes only where a person wants it. Nobody is asked in the middle of a run.
void MainWindow::settleMemory()
{
    // The loggers go first; the end of what they do asks again.
    const bool isLater = mTembrin->isAnyRunning() || !mTembrin->queue().isIdle() || keptInSaving;
    while (const int id = isLater ? 0 : keptRuns->tooMuch()) {
        const QString text =
            tr("The kept runs take more than %1 MB. %2 is the oldest. Shall it be deleted? It is in no file.")
                .arg(keptRuns->limit() >> 20)
                .arg(keptRuns->find(id)->outline.name);
        if (prompt->confirmForGood(this, tr("Too many runs"), text))
            keptRuns->drop(id);
        else
            keptRuns->stopAsking();
    }
}

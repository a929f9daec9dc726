#include "app/mainwindow.h"

#include "app/keptruns.h"
#include "app/largegraph.h"
#include "app/runline.h"
#include "app/runrecorder.h"
#include "app/undosteps.h"
#include "classroom/classrun.h"
#include "classroom/commandqueue.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/userprompt.h"
#include "common/waits.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "graph/storedmarks.h"
#include "instruments/statusline.h"

#include <QComboBox>
#include <QFileInfo>
#include <QStatusBar>

#include <algorithm>
#include <utility>

namespace {

constexpr int msLessonSaved = 4000; // a line about what was saved

constexpr const char* layoutNames[] = {"individual", "class", "all"};

int layoutNumber(const QString& name)
{
    const auto* found = std::find(std::begin(layoutNames), std::end(layoutNames), name);
    return found == std::end(layoutNames) ? int(LAYOUT_MULTI_COMBO) : int(found - std::begin(layoutNames));
}

constexpr std::pair<const char*, int> viewWords[] = {{"bars", VIEW_BAR},
                                                     {"table", VIEW_TABLE},
                                                     {"table-graph", VIEW_TABLE_GRAPH},
                                                     {"thermometer", VIEW_THERMO}};

QString viewWord(int view)
{
    for (const auto& [word, its] : viewWords) {
        if (its == view)
            return QLatin1String(word);
    }
    return {};
}

int viewOf(const QString& told)
{
    for (const auto& [word, its] : viewWords) {
        if (told == QLatin1String(word))
            return its;
    }
    return VIEW_GRAPH;
}

/// The samples that they began with; ranges are those of what they led to.
void takeSteps(const UndoSteps::History& history, const ExpData& set, Lesson::Part* part)
{
    if (history.steps.size() > LessonFile::mostSteps)
        return;
    part->steps = history.steps;
    part->isRawStored = history.isOfRaw;
    if (!history.isOfRaw)
        return;
    ExpData raw;
    raw.setContent(history.raw);
    raw.setAppendIndex(set.getAppendIndex());
    part->raw = StoredExperiment::of(raw, true, part->isClass);
    part->raw.title = part->experiment.title;
    for (StoredExperiment::Channel& channel : part->raw.channels) {
        channel.isRangeFixed = channel.barUseScale = false;
        channel.minView = channel.maxView = channel.barMinView = channel.barMaxView = 0;
    }
}

/// What the set held before the steps of a part and after each, made again in the set itself.
QVector<ExpData::Content> madeAgain(const Lesson::Part& part, ExpData* set)
{
    if (part.steps.isEmpty())
        return {};
    (part.isRawStored ? part.raw : part.experiment).fill(set, false);
    const QVector<StoredExperiment::Channel>& channels = part.experiment.channels;
    const bool isAnyOut = std::any_of(channels.cbegin(), channels.cend(),
                                      [](const StoredExperiment::Channel& channel) { return channel.isOut; });
    if (part.isRawStored && isAnyOut) { // a group that was taken out since counted in the first average
        QVector<int> outs;
        for (int i = 0; i < channels.size(); ++i) {
            if (channels.at(i).isOut)
                outs.append(i);
        }
        set->takeOut(outs);
        set->updateMean(true);
    }
    const auto* const other = std::find_if(part.steps.cbegin(), part.steps.cend(),
                                           [](const SampleStep& step) { return !step.isAppended(); });
    set->dropDerived(set->getNSens() - int(other - part.steps.cbegin()));
    QVector<ExpData::Content> contents{set->content()};
    for (const SampleStep& step : part.steps) {
        if (!set->make(step))
            return {};
        contents.append(set->content());
    }
    return contents;
}

} // namespace

// --- Save ---

Lesson MainWindow::takeLesson() const
{
    Lesson lesson;
    static_cast<LessonRun&>(lesson) = takeRun();
    const bool areCellsSeen = !graphGridW->isHidden();
    lesson.layout = QLatin1String(layoutNames[graph->isHidden() ? LAYOUT_MULTI_WINDOWS
                                              : areCellsSeen    ? LAYOUT_MULTI_COMBO
                                                                : LAYOUT_MULTI_TOGETHER]);
    lesson.kept = keptRuns->forLesson();
    return lesson;
}

LessonRun MainWindow::takeRun() const
{
    LessonRun run;
    run.begun = runBegun;
    run.isClassOfFile = isOnlyStaticClassMode;
    for (int i = -1; i < mTembrin->nDefTembrins(); ++i)
        run.parts.append(takePart(i));
    return run;
}

Lesson::Part MainWindow::takePart(int index) const
{
    ExpData& set = index < 0 ? *mTembrin->dataC() : *mTembrin->dataAt(index);
    const Plot* const plot = index < 0 ? graph : mTembrin->plotAt(index);
    Lesson::Part part;
    part.isClass = index < 0;
    part.slot = index;
    part.group = index < 0 ? QString() : set.getGroupName();
    if (index >= 0 && (set.getXSize() == 0 || part.group.isEmpty()))
        part.group = titleName(index);
    part.view = index < 0 ? QString() : viewWord(mTembrin->viewShownBy(index));
    part.isInClass = index >= 0 && mTembrin->run().classSet().isMember(index);
    part.isStored = set.getNSens() > 0 && (index < 0 || set.getXSize() > 0 || !plot->markers.isEmpty() ||
                                           !set.predictions.isEmpty());
    if (!part.isStored)
        return part;
    const QVector<int> hints = set.curveModeHint; // those of a file, which the next run has not
    plot->keepCurveModesInData();
    part.experiment = StoredExperiment::of(set, true, index < 0);
    set.curveModeHint = hints;
    part.experiment.title = index < 0 ? plot->title().text() : part.group;
    takeSteps(steps->history(index), set, &part);
    part.experiment.lineMarkers = StoredMarks::of(plot->markers, set, true);
    for (const Plot* bar : index < 0 ? QVector<Plot*>() : mTembrin->viewsOf(index)) {
        if (bar != plot)
            part.experiment.barMarkers = StoredMarks::of(bar->markers, set, true);
    }
    return part;
}

/// The file comes about on another thread: a run goes on meanwhile, and the program waits with leaving.
bool MainWindow::writeLesson(const QString& fname, QString* reason)
{
    const Lesson lesson = takeLesson();
    const QVector<int> kept = keptRuns->ids();
    QVector<ExpData*> marked; // what is done to them meanwhile raises the mark anew
    for (int i = -1; i < mTembrin->nDefTembrins(); ++i) {
        ExpData* const set = i < 0 ? mTembrin->dataC() : mTembrin->dataAt(i);
        if (set->isNeedSave())
            marked.append(set);
        markSaved(i);
        if (i >= 0 && mTembrin->isRunning(i))
            savedRunning |= quint8(1u << i);
    }
    bool isWritten = false;
    QVector<int> meanwhile;
    keptInSaving = &meanwhile;
    isSaving = true;
    statusBar()->showMessage(tr("%1 is being saved.").arg(QFileInfo(fname).fileName()));
    Waits::whileWorking([&] { isWritten = LessonFile::write(fname, lesson, reason); });
    statusBar()->clearMessage();
    isSaving = false;
    keptInSaving = nullptr;
    for (ExpData* set : isWritten ? QVector<ExpData*>() : marked)
        set->setNeedSave(true);
    if (isWritten)
        keptRuns->noteSaved(kept + meanwhile);
    return isWritten;
}

bool MainWindow::saveLesson(const QString& fname, QString* reason)
{
    const QDateTime begun = runBegun;
    const bool isWritten = writeLesson(fname, reason);
    const QString name = QFileInfo(fname).fileName();
    if (isWritten) {
        qCInfo(appLog, "saved %s", qPrintable(fname));
        recorder->noteSaved();
        if (begun == runBegun) // else another run has the screen by now
            screenFile.keep(fname, *mTembrin->dataC(), true);
        showFileName();
        statusBar()->showMessage(savedRunning == 0
                                     ? tr("%1 was saved.").arg(name)
                                     : tr("%1 was saved as far as the run has come; it goes on.").arg(name),
                                 msLessonSaved);
    }
    if (std::exchange(isLeavingAsked, false))
        QMetaObject::invokeMethod(this, &MainWindow::doExit, Qt::QueuedConnection);
    return isWritten;
}

// --- Open ---

/// What is opened would take the place of what is just being measured: then `line` says so.
bool MainWindow::isBusy(const QString& line)
{
    const bool isBusy = mTembrin->isAnyRunning() || !mTembrin->queue().isIdle();
    if (isBusy)
        statusLine->setAdvice(line);
    return isBusy;
}

/// Does it on another thread. False when the person wants to leave instead.
bool MainWindow::worked(const std::function<void()>& work)
{
    isSaving = true;
    Waits::whileWorking(work);
    isSaving = false;
    const bool isLeaving = std::exchange(isLeavingAsked, false);
    if (isLeaving)
        QMetaObject::invokeMethod(this, &MainWindow::doExit, Qt::QueuedConnection);
    return !isLeaving;
}

void MainWindow::openLesson(const QString& fname)
{
    endReplay();
    const QString busy = tr("A lesson can be opened when no logger is busy.");
    if (isBusy(busy))
        return;
    Lesson lesson;
    QString reason;
    bool isRead = false;
    if (!worked([&] { isRead = LessonFile::read(fname, &lesson, &reason); }))
        return;
    if (isRead && isBusy(busy)) // a logger was started with its own key
        return;
    if (isRead) {
        qCInfo(appLog, "opened %s", qPrintable(fname));
        showLesson(lesson);
        screenFile.keep(fname, *mTembrin->dataC(), reason.isEmpty());
        showFileName();
    } else if (screenFile.title() == QFileInfo(fname).fileName()) {
        screenFile.forget(); // it has become something else, which is not written over
        showFileName();
    }
    statusBar()->showMessage(reason);
    if (!reason.isEmpty()) // a line is soon overlooked where groups are missing
        prompt->warning(this, isRead ? tr("File opened in part") : tr("File not opened"), reason);
}

void MainWindow::showLesson(const Lesson& lesson)
{
    keepPresent();
    showRun(lesson);
    updateLayout(layoutNumber(lesson.layout));
    if (views)
        views->setCurrentIndex(mTembrin->getCurrentView());
    if (lesson.isClassOfFile)
        handleOnlyStaticClassMode(true);
    keptRuns->takeLesson(lesson);
}

/// In place of what is on the graphs, which nobody asks about any more.
void MainWindow::showRun(const LessonRun& run)
{
    closePage();
    handleOnlyStaticClassMode(false);
    mTembrin->run().forget();
    runLine->refresh();
    recorder->setAside();
    Lesson::Part classPart;
    Lesson::Part groups[mostLoggers];
    int needed = 0;
    quint8 members = 0;
    for (const Lesson::Part& part : run.parts) {
        (part.isClass ? classPart : groups[part.slot]) = part;
        needed = qMax(needed, part.slot + 1);
        if (part.isInClass)
            members |= quint8(1u << part.slot);
    }
    if (needed > mTembrin->nDefTembrins())
        setDisplayForNLoggers(needed);
    namedByLesson = 0;
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i)
        showGroupPart(i, groups[i]);
    largeGraph->restore();
    runBegun = run.begun;
    showClassPart(classPart);
    mTembrin->run().classSet().restore(members);
    if (!classPart.isStored) // broken: from the groups that could be read
        mTembrin->run().classSet().rebuild(members);
    mTembrin->dataC()->makeUniformScales();
    updateAll(-1);
    if (run.isClassOfFile)
        handleOnlyStaticClassMode(true);
    for (int i = -1; i < mTembrin->nDefTembrins(); ++i)
        (i < 0 ? mTembrin->dataC() : mTembrin->dataAt(i))->setNeedSave(false);
    showPins();
}

/// A slot that the lesson has nothing of is empty.
void MainWindow::showGroupPart(int slot, const Lesson::Part& part)
{
    ExpData* const set = mTembrin->dataAt(slot);
    int lostPictures = 0;
    set->setXYIndex(-1);
    const QVector<ExpData::Content> contents = madeAgain(part, set);
    if (part.isStored)
        part.experiment.fill(set, false);
    else
        set->setDataNewEmpty(set->getSensors(), set->dt);
    set->predictions = part.experiment.predictions;
    const int active = qMax(0, set->getSelectedSensor());
    set->setGroupName(part.group);
    set->setXRange();
    if (!part.group.isEmpty())
        namedByLesson |= quint8(1u << slot);
    if (!part.experiment.barMarkers.isEmpty())
        mTembrin->barAt(slot);
    for (Plot* plot : mTembrin->viewsOf(slot)) {
        const auto& marks =
            plot == mTembrin->plotAt(slot) ? part.experiment.lineMarkers : part.experiment.barMarkers;
        plot->setMarkers();
        plot->setMarkers(StoredMarks::made(marks, part.experiment, 0, &lostPictures));
    }
    steps->restore(slot, contents, part.steps);
    showTitle(slot);
    updateAll(slot);
    setSelected(slot, active);
    mTembrin->plotAt(slot)->forceDefaultSetScale();
    mTembrin->addWidgetByIndex(graphGridL, viewOf(part.view), slot);
}

void MainWindow::showClassPart(const Lesson::Part& part)
{
    ExpData* const set = mTembrin->dataC();
    int lostPictures = 0;
    set->setXYIndex(-1);
    graph->setMarkers();
    runTitle = part.experiment.title;
    graph->updateTitle(runTitle);
    set->predictions = part.experiment.predictions;
    if (!part.isStored)
        return;
    const QVector<ExpData::Content> contents = madeAgain(part, set);
    part.experiment.fill(set, false);
    const int active = qMax(0, set->getSelectedSensor());
    graph->setMarkers(StoredMarks::made(part.experiment.lineMarkers, part.experiment, 0, &lostPictures));
    set->makeUniformScalesAfterOpen();
    part.experiment.fixClassRanges(set);
    set->setXRange();
    steps->restore(-1, contents, part.steps);
    updateAll(-1);
    setSelected(-1, active);
}

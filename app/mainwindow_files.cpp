#include "app/mainwindow.h"

#include "app/graphtools.h"
#include "app/iconlists.h"
#include "app/keptruns.h"
#include "app/runrecorder.h"
#include "app/undosteps.h"
#include "classroom/classrun.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/userprompt.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "graph/scalemanager.h"
#include "persistence/readwrite.h"
#include "protocol/tembrindata.h"
#include "setup/syncdata.h"

#include <QApplication>
#include <QComboBox>
#include <QDateTime>
#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QStatusBar>
#include <QUrl>

#include <utility>

namespace {

constexpr int msSaved = 4000; // a line about what was saved

bool hasEnding(const QString& fname, const char* ending)
{
    return fname.endsWith(QLatin1String(ending), Qt::CaseInsensitive);
}

QString timeHeader(const ExpData& set)
{
    return set.dt > 0 ? MainWindow::tr("Time [s]") : MainWindow::tr("Sample");
}

/// The one file of a drag that can be opened; an empty text for anything else, and while a dialog waits for
/// an answer about what is on the screen.
QString droppedFile(const QMimeData* mime)
{
    if (QApplication::activeModalWidget())
        return QString();
    const QList<QUrl> urls = mime->urls();
    const QString name = urls.size() == 1 ? urls.constFirst().toLocalFile() : QString();
    return hasEnding(name, ".xml") || hasEnding(name, ".csv") || ScreenFile::isLesson(name) ? name
                                                                                            : QString();
}

} // namespace

// --- Open ---

void MainWindow::setArgumentFile(const QString& fname)
{
    argumentFile = fname;
    doRead(fname);
}

void MainWindow::doRead()
{
    const QStringList filters{tr("Lessons, experiments and tables (*.lesson *.xml *.csv)"),
                              tr("Lessons (*.lesson)"), tr("Kormelin data files (*.xml)"),
                              tr("Comma-separated values (*.csv)")};
    const QString fname =
        prompt->openFile(this, tr("Open experiment data"), ReadWrite::getDataPath(QString()),
                         filters.join(QStringLiteral(";;")));
    if (!fname.isEmpty())
        openFile(fname);
}

void MainWindow::openFile(const QString& fname)
{
    endReplay();
    if (isSaving)
        return;
    ReadWrite::setDefaultDataPath(fname);
    if (ScreenFile::isLesson(fname)) {
        openLesson(fname);
        return;
    }
    const bool isAppended = !hasEnding(fname, ".csv") && std::exchange(openMode, OPEN_NEW) == OPEN_APPEND;
    const bool isReplaced = !isAppended || isOnlyStaticClassMode;
    // A run that goes on puts its samples into the same sets, so only the class would give way.
    const bool isOfRun = mTembrin->isMeasuring();
    if (isReplaced && isOfRun && mTembrin->dataC()->isNeedSave() &&
        offerToSave(
            tr("Do you want to save experiment and annotations before another file takes their place?")) ==
            UserPrompt::Answer::Cancel)
        return;
    const LessonRun before = takeRun();
    const bool isSaved = isScreenSaved();
    const QString name = keptName();
    const QVector<double> times = mTembrin->dataC()->getX();
    if (hasEnding(fname, ".csv"))
        doImport(fname);
    else if (isAppended)
        appendFile(fname);
    else
        doReadClass(fname);
    if (!isReplaced || isOfRun || mTembrin->dataC()->getX().constData() == times.constData())
        return;
    keptRuns->keep(before, isSaved, name);
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i)
        mTembrin->dataAt(i)->setNeedSave(false); // the list answers for it
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (!droppedFile(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    const QString fname = droppedFile(event->mimeData());
    if (fname.isEmpty())
        return;
    event->acceptProposedAction();
    openFile(fname);
}

void MainWindow::doReadClass(const QString& fname)
{
    endReplay();
    ExpData* classSet = mTembrin->dataC();
    const int xyIndex = classSet->getXYIndex();
    const bool isLoggerUnsaved = data->isNeedSave();
    classSet->setXYIndex(-1);
    QString reason;
    const QString view = ReadWrite::read(fname, classSet, graph, mTembrin->barAt(0), false, &reason);
    if (view.isEmpty())
        classSet->setXYIndex(xyIndex);
    else
        showClassFile(fname, view, reason.isEmpty());
    data->setNeedSave(isLoggerUnsaved); // the markers of its bars are new, its samples are not
    statusBar()->showMessage(reason);
}

void MainWindow::appendFile(const QString& fname)
{
    if (mTembrin->isMeasuring()) {
        statusBar()->showMessage(tr("An experiment can be appended when no logger is running."));
        return;
    }
    QString reason;
    // The file's markers count its own channels and would stand on the wrong curves here.
    const QString view = ReadWrite::read(fname, data, nullptr, nullptr, true, &reason);
    if (view == QLatin1String(ReadWrite::appendMisfit)) {
        prompt->critical(
            this, tr("Cannot append experiment"),
            tr("Appended experiment's sampling rate should match the current viewed experiment"));
        return;
    }
    statusBar()->showMessage(reason);
    if (view.isEmpty())
        return;
    qCInfo(appLog, "appended %s", qPrintable(fname));
    steps->forget(0);
    steps->forget(-1);
    data->setXYIndex(-1);
    handleOnlyStaticClassMode(false);
    setView(QString()); // where the graph of logger 0 shows
    setSelected(0, 0);
    rebuildClass();
    updateAll();
    adjustAppended();
}

void MainWindow::adjustAppended()
{
    const QPointer<SyncData> dialog = new SyncData(float(data->dt), this);
    connect(dialog.data(), &SyncData::changeSyncValue, this, [this](int dSamples) {
        if (data->getAppendIndex() == 0)
            return; // a run begun on the logger has taken the place of both experiments
        steps->forget(0);
        steps->forget(-1);
        data->shiftLastData(dSamples);
        rebuildClass();
        updateAll();
    });
    dialog->exec();
    if (dialog)
        dialog->deleteLater();
}

void MainWindow::doImport(const QString& fname)
{
    QString reason;
    ExpData* classSet = mTembrin->dataC();
    if (ReadWrite::importCSV(fname, classSet, &reason)) {
        classSet->setXYIndex(-1);
        graph->setMarkers();
        graph->updateTitle(QFileInfo(fname).completeBaseName());
        showClassFile(fname, QString(), false);
    }
    statusBar()->showMessage(reason);
}

void MainWindow::showClassFile(const QString& fname, const QString& view, bool isWhole)
{
    qCInfo(appLog, "opened %s", qPrintable(fname));
    ExpData* classSet = mTembrin->dataC();
    const int active = classSet->activeSensIndex();
    data->setXYIndex(-1);
    setView(view);
    handleOnlyStaticClassMode(true);
    classSet->makeUniformScalesAfterOpen();
    classSet->setXRange();
    updateAll(-1);
    setSelected(-1, active);
    classSet->setNeedSave(false);
    screenFile.keep(fname, *classSet, isWhole);
    showFileName();
}

void MainWindow::doRead(const QString& fname)
{
    endReplay();
    if (ScreenFile::isLesson(fname)) {
        openLesson(fname);
        return;
    }
    QString reason;
    setSelected(0, 0);
    data->setXYIndex(-1);
    const bool isRead = !ReadWrite::read(fname, data, nullptr, nullptr, false, &reason).isEmpty();
    if (!isRead) {
        tellOfArgument(fname, isRead, reason);
        return;
    }
    const int active = data->activeSensIndex();
    updateAll(0);
    setSelected(0, active);
    data->setNeedSave(false);
    // The set holds curves and nothing else; the class view shows the file as it was left.
    doReadClass(fname);
    tellOfArgument(fname, isRead, reason);
}

/// What is wrong with the file that the program was started with. A line would go with the first connection.
void MainWindow::tellOfArgument(const QString& fname, bool isRead, const QString& reason)
{
    if (fname == argumentFile && !reason.isEmpty())
        prompt->warning(this, isRead ? tr("File opened in part") : tr("File not opened"), reason);
}

void MainWindow::handleOnlyStaticClassMode(bool tf)
{
    isOnlyStaticClassMode = tf;
    if (tf) {
        closePage();
        mTembrin->run().classSet().release();
        updateLayout(LAYOUT_MULTI_TOGETHER);
    } else {
        screenFile.forget();
        showFileName();
    }
    if (layouts)
        layouts->setEnabled(!tf);
}

QString MainWindow::getView() const
{
    return graph->isVisible() ? QStringLiteral("Line") : QString();
}

void MainWindow::setView(const QString& view)
{
    constexpr std::pair<const char*, int> numbers[] = {{"Bar", 1}, {"Table", 2}, {"Meters", 4}, {"Map", 5}};
    int number = LAYOUT_MULTI_WINDOWS;
    for (const auto& [word, itsNumber] : numbers) {
        if (!view.contains(QLatin1String(word)))
            continue;
        number = itsNumber;
        break;
    }
    // A file of a program with more views than the layouts of this one shows the loggers.
    if (layouts)
        updateLayout(number <= LAYOUT_MULTI_COMBO ? number : int(LAYOUT_MULTI_WINDOWS));
}

// --- Save ---

void MainWindow::doSave()
{
    if (isSaving)
        return;
    QString reason;
    if (!askAndSave(&reason) && !reason.isEmpty())
        warnNotWritten(reason);
}

/// What each of them holds, too.
QString MainWindow::saveFilters() const
{
    const QString graphName =
        mTembrin->isActiveGraphSet() ? titleOf(mTembrin->activeGraph()) : tr("graph of the class");
    return tr("Lesson: all groups and the class (*.lesson)") + QStringLiteral(";;") +
           tr("This graph alone: %1 (*.xml)").arg(graphName) + QStringLiteral(";;") +
           tr("Table of this graph: %1 (*.csv)").arg(graphName);
}

/// The ending decides, else the filter.
MainWindow::Extent MainWindow::extentOf(const QString& fname, const QString& filter)
{
    if (hasEnding(fname, ".xml"))
        return Extent::Graph;
    if (hasEnding(fname, ".csv"))
        return Extent::Table;
    if (ScreenFile::isLesson(fname))
        return Extent::Lesson;
    if (filter.contains(QLatin1String("*.xml")))
        return Extent::Graph;
    return filter.contains(QLatin1String("*.csv")) ? Extent::Table : Extent::Lesson;
}

/// False, without a reason, when the person cancelled.
bool MainWindow::askAndSave(QString* reason)
{
    const int index = mTembrin->activeGraph();
    const QString now = QDateTime::currentDateTime().toString(QStringLiteral("dd.MM.yyyy_hh.mm.ss"));
    QString filter;
    QString fname =
        prompt->saveFile(this, tr("Save experiment data"),
                         ReadWrite::getDataPath(now + QStringLiteral(".lesson")), saveFilters(), &filter);
    if (fname.isEmpty())
        return false;
    ReadWrite::setDefaultDataPath(fname);
    const Extent extent = extentOf(fname, filter);
    if (extent == Extent::Lesson && !ScreenFile::isLesson(fname))
        fname += QStringLiteral(".lesson");
    return saveAs(fname, extent, index, reason);
}

/// `index` is the graph that a file of one graph holds, -1 for that of the class.
bool MainWindow::saveAs(const QString& fname, Extent extent, int index, QString* reason)
{
    endReplay();
    savedRunning = 0;
    if (extent == Extent::Lesson)
        return saveLesson(fname, reason);
    const ExpData* const set = index < 0 ? mTembrin->dataC() : mTembrin->dataAt(index);
    const bool isTable = extent == Extent::Table;
    const bool isWritten = isTable ? ReadWrite::exportCSV(fname, set, false, timeHeader(*set), reason)
                                   : writeExperiment(fname, index, reason);
    if (!isWritten)
        return false;
    qCInfo(appLog, "saved %s", qPrintable(fname));
    markSaved(index);
    recorder->noteSaved();
    if (!isTable && index < 0)
        screenFile.keep(fname, *set, true);
    showFileName();
    statusBar()->showMessage(tr("%1 was saved.").arg(QFileInfo(fname).fileName()), msSaved);
    return true;
}

bool MainWindow::writeExperiment(const QString& fname, int index, QString* reason)
{
    const Plot* const plot = index < 0 ? graph : mTembrin->plotAt(index);
    const ExpData* const set = index < 0 ? mTembrin->dataC() : mTembrin->dataAt(index);
    plot->keepCurveModesInData();
    return ReadWrite::write(fname, plot->title().text(), set, plot->scaler->scales, plot->markers,
                            mTembrin->barAt(qMax(0, index))->markers, getView(), reason);
}

/// A file has the set of logger `index`, or for -1 that of the class. A run puts more into it.
void MainWindow::markSaved(int index)
{
    const bool isGrowing =
        index < 0 ? mTembrin->isAnyRunning() && !isOnlyStaticClassMode : mTembrin->isRunning(index);
    if (!isGrowing)
        (index < 0 ? mTembrin->dataC() : mTembrin->dataAt(index))->setNeedSave(false);
}

/// Asks until the screen is saved or given up; Cancel when the person wants neither.
UserPrompt::Answer MainWindow::offerToSave(const QString& question)
{
    QString reason; // why the last attempt failed
    for (;;) {
        const QString text = reason.isEmpty() ? question : reason + QLatin1String("\n\n") + question;
        const UserPrompt::Answer answer = prompt->question(this, tr("Changes not saved"), text, true);
        reason.clear();
        if (answer != UserPrompt::Answer::Yes || askAndSave(&reason))
            return answer;
    }
}

void MainWindow::showFileName()
{
    const QString program = QStringLiteral("Pellandra %1").arg(QLatin1String(PELLANDRA_VERSION));
    const QString file = screenFile.title();
    setWindowTitle(file.isEmpty() ? program : file + QStringLiteral(" - ") + program);
}

void MainWindow::warnNotWritten(const QString& reason)
{
    prompt->warning(this, tr("File not saved"), reason);
}

// --- Export and print ---

void MainWindow::doExport(int select)
{
    endReplay();
    switch (exports->itemData(select).toInt()) {
    case EXPORT_EXCEL:
        doExcel();
        break;
    case EXPORT_IMAGE:
        doExportImg();
        break;
    case EXPORT_GLOBALLAB:
        doGlobalLab();
        break;
    case EXPORT_REPORT:
        doReport();
        break;
    }
}

void MainWindow::doExcel()
{
    const ExpData* const set = tools->targetData();
    if (!set)
        return;
    const QString fname =
        prompt->saveFile(this, tr("Save experiment data"), ReadWrite::getDataPath(tr("Experiment.csv")),
                         tr("Export to Excel (*.csv)"), nullptr);
    QString reason;
    if (!fname.isEmpty() && !ReadWrite::exportCSV(fname, set, true, timeHeader(*set), &reason))
        warnNotWritten(reason);
}

void MainWindow::doExportImg()
{
    QString reason;
    Plot* const plot = tools->target();
    if (plot && !ReadWrite::exportDocument(plot, prompt, &reason))
        warnNotWritten(reason);
}

void MainWindow::doPrint()
{
    QString reason;
    Plot* const plot = tools->target();
    if (!plot)
        return;
    const ReadWrite::PrinterChoice choose = printerChoice ? printerChoice : ReadWrite::askForPrinter;
    const bool isPrinted = ReadWrite::print(plot, choose, &reason);
    if (!isPrinted)
        prompt->warning(this, tr("Print"), reason);
}

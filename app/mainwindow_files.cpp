#include "app/mainwindow.h"

#include "app/graphtools.h"
#include "app/iconlists.h"
#include "app/runrecorder.h"
#include "classroom/classrun.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/userprompt.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "graph/scalemanager.h"
#include "persistence/readwrite.h"
#include "protocol/tembrindata.h"
#include "setup/syncdata.h"

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

QString experimentFilter()
{
    return MainWindow::tr("Kormelin data files (*.xml)");
}

QString spreadsheetFilter()
{
    return MainWindow::tr("Export to Excel (*.csv)");
}

QString timeHeader(const ExpData& set)
{
    return set.dt > 0 ? MainWindow::tr("Time [s]") : MainWindow::tr("Sample");
}

/// The one file of a drag that can be opened; an empty text for anything else.
QString droppedFile(const QMimeData* mime)
{
    const QList<QUrl> urls = mime->urls();
    const QString name = urls.size() == 1 ? urls.constFirst().toLocalFile() : QString();
    return hasEnding(name, ".xml") || hasEnding(name, ".csv") ? name : QString();
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
    const QString filters = experimentFilter() + QStringLiteral(";;") + tr("Comma-separated values (*.csv)");
    const QString fname =
        prompt->openFile(this, tr("Open experiment data"), ReadWrite::getDataPath(QString()), filters);
    if (!fname.isEmpty())
        openFile(fname);
}

void MainWindow::openFile(const QString& fname)
{
    ReadWrite::setDefaultDataPath(fname);
    const bool isAppended = !hasEnding(fname, ".csv") && std::exchange(openMode, OPEN_NEW) == OPEN_APPEND;
    const bool isReplaced = !isAppended || isOnlyStaticClassMode;
    if (isReplaced && mTembrin->dataC()->isNeedSave() &&
        !offerToSave(
            tr("Do you want to save experiment and annotations before another file takes their place?")))
        return;
    if (hasEnding(fname, ".csv"))
        doImport(fname);
    else if (isAppended)
        appendFile(fname);
    else
        doReadClass(fname);
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
    if (mTembrin->isAnyRunning()) {
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
    QString reason;
    setSelected(0, 0);
    data->setXYIndex(-1);
    if (ReadWrite::read(fname, data, nullptr, nullptr, false, &reason).isEmpty()) {
        prompt->warning(this, tr("File not opened"), reason); // a line would go with the first connection
        return;
    }
    const int active = data->activeSensIndex();
    updateAll(0);
    setSelected(0, active);
    data->setNeedSave(false);
    // The set holds curves and nothing else; the class view shows the file as it was left.
    doReadClass(fname);
}

void MainWindow::handleOnlyStaticClassMode(bool tf)
{
    isOnlyStaticClassMode = tf;
    if (tf) {
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
    QString reason;
    if (!askAndSave(&reason) && !reason.isEmpty())
        warnNotWritten(reason);
}

/// False, without a reason, when the person cancelled.
bool MainWindow::askAndSave(QString* reason)
{
    const QString now = QDateTime::currentDateTime().toString(QStringLiteral("dd.MM.yyyy_hh.mm.ss"));
    QString filter;
    const QString fname = prompt->saveFile(
        this, tr("Save experiment data"), ReadWrite::getDataPath(now + QStringLiteral(".xml")),
        experimentFilter() + QStringLiteral(";;") + spreadsheetFilter(), &filter);
    if (fname.isEmpty())
        return false;
    ReadWrite::setDefaultDataPath(fname);
    const bool isEndingOpen = !hasEnding(fname, ".xml") && !hasEnding(fname, ".csv");
    const bool isSpreadsheet =
        isEndingOpen ? filter.contains(QLatin1String(".csv")) : hasEnding(fname, ".csv");
    return saveScreen(fname, isSpreadsheet, reason);
}

bool MainWindow::saveScreen(const QString& fname, bool isSpreadsheet, QString* reason)
{
    const ExpData* classSet = mTembrin->dataC();
    const bool isWritten = isSpreadsheet
                               ? ReadWrite::exportCSV(fname, classSet, false, timeHeader(*classSet), reason)
                               : writeExperiment(fname, reason);
    if (!isWritten)
        return false;
    qCInfo(appLog, "saved %s", qPrintable(fname));
    markSaved();
    recorder->noteSaved();
    if (!isSpreadsheet)
        screenFile.keep(fname, *classSet, true);
    showFileName();
    statusBar()->showMessage(tr("%1 was saved.").arg(QFileInfo(fname).fileName()), msSaved);
    return true;
}

bool MainWindow::writeExperiment(const QString& fname, QString* reason)
{
    graph->keepCurveModesInData();
    return ReadWrite::write(fname, graph->title().text(), mTembrin->dataC(), graph->scaler->scales,
                            graph->markers, mTembrin->barAt(0)->markers, getView(), reason);
}

/// The set on the screen, and those of the groups in it. What a file on the screen hides stays unsaved.
void MainWindow::markSaved()
{
    mTembrin->dataC()->setNeedSave(false);
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i) {
        if (mTembrin->run().classSet().isMember(i))
            mTembrin->dataAt(i)->setNeedSave(false);
    }
}

/// Asks until the screen is saved or given up; false when the person wants neither.
bool MainWindow::offerToSave(const QString& question)
{
    QString reason; // why the last attempt failed
    for (;;) {
        const QString text = reason.isEmpty() ? question : reason + QLatin1String("\n\n") + question;
        switch (prompt->question(this, tr("Changes not saved"), text, true)) {
        case UserPrompt::Answer::Yes:
            reason.clear();
            if (askAndSave(&reason))
                return true;
            break;
        case UserPrompt::Answer::No:
            return true;
        case UserPrompt::Answer::Cancel:
            return false;
        }
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
    switch (exports->itemData(select).toInt()) {
    case EXPORT_EXCEL:
        doExcel();
        break;
    case EXPORT_IMAGE:
        doExportImg();
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
                         spreadsheetFilter(), nullptr);
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

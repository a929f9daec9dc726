// Every command in words and with a key.

#include "app/mainwindow.h"

#include "app/commandmenu.h"
#include "app/iconlist.h"
#include "app/iconlists.h"
#include "app/selfrun.h"
#include "classroom/views.h"

#include <QAction>
#include <QKeyEvent>
#include <QMenu>
#include <QToolBar>
#include <QToolButton>

namespace {

struct ListKey
{
    int code;
    const char* key;
};

constexpr ListKey exportKeys[] = {{EXPORT_EXCEL, "Ctrl+E"},
                                  {EXPORT_GLOBALLAB, "Ctrl+Shift+U"},
                                  {EXPORT_IMAGE, "Ctrl+Shift+E"},
                                  {EXPORT_REPORT, "Ctrl+R"}};
constexpr ListKey functionKeys[] = {{REG_SLOPE, "Ctrl+T"},
                                    {REG_LIN, "Ctrl+L"},
                                    {REG_QUAD, "Ctrl+Shift+L"},
                                    {REG_SMOOTH, "Ctrl+Shift+M"},
                                    {REG_DERIVATIVE, "Ctrl+Shift+D"},
                                    {REG_INTEGRAL, "Ctrl+I"},
                                    {REG_STATISTICS, "Ctrl+Shift+I"},
                                    {REG_FFT, "Ctrl+Shift+F"},
                                    {REG_FIT, "Ctrl+F"},
                                    {REG_RANKING, "Ctrl+Shift+G"},
                                    {REG_PREDICT, "F8"},
                                    {REG_UNPREDICT, "Shift+F8"},
                                    {REG_FORMULA, "Ctrl+Shift+C"},
                                    {REG_RIGHT, "Ctrl+Shift+R"}};
constexpr ListKey viewKeys[] = {{VIEW_GRAPH, "Alt+1"},
                                {VIEW_BAR, "Alt+2"},
                                {VIEW_TABLE, "Alt+3"},
                                {VIEW_TABLE_GRAPH, "Alt+4"},
                                {VIEW_THERMO, "Alt+5"}};

template<size_t count> QKeySequence keyOf(const ListKey (&keys)[count], int code)
{
    for (const ListKey& row : keys) {
        if (row.code == code)
            return QKeySequence(QLatin1String(row.key));
    }
    return {};
}

} // namespace

void MainWindow::createMenu()
{
    commands = new CommandMenu(this);
    QMenu* const files = commands->add(QStringLiteral("fileMenu"), tr("&File"));
    files->addAction(openAct);
    commands->command(files, QStringLiteral("activityAct"), tr("Open activity"),
                      QStringLiteral("Ctrl+Shift+O"), [this] { doPDF(); });
    commands->command(files, QStringLiteral("saveNowAct"), tr("Save"), QKeySequence::Save,
                      [this] { doExitAfterCtrlS(); });
    commands->command(files, QStringLiteral("saveAsAct"), tr("Save as..."), QStringLiteral("Ctrl+Shift+S"),
                      [this] {
                          if (saveAct->isEnabled())
                              doSave();
                      });
    const auto addExport = [this](int row) { doExport(row); };
    fillMenu(
        files->addMenu(tr("Export")), exports, [](int code) { return keyOf(exportKeys, code); }, addExport);
    files->addAction(printAct);
    files->addSeparator();
    files->addAction(exitAct);

    QMenu* const graphs = commands->add(QStringLiteral("graphMenu"), tr("&Graph"));
    graphs->addActions({undoAct, redoAct});
    graphs->addSeparator();
    graphs->addActions({zoomAct, markerAct, readAct, annotateAct, cropAct});
    fillMenu(
        graphs->addMenu(tr("Functions")), regression, [](int code) { return keyOf(functionKeys, code); },
        [this](int row) { doFunctions(row); });

    QMenu* const loggers = commands->add(QStringLiteral("loggerMenu"), tr("&Loggers"));
    loggers->addActions({colabConnectAct, basicSetupAct, runAct, stopAct, downloadAct});
    QAction* const byItself = commands->command(loggers, QStringLiteral("selfRunAct"), tr("Run by itself..."),
                                                QStringLiteral("Ctrl+F5"), [this] { selfRun->ask(); });
    byItself->setStatusTip(tr("Run after a countdown or at a level, stop after a time, repeat"));
    if (auto* button = qobject_cast<QToolButton*>(tembrinToolBar->widgetForAction(runAct))) {
        auto* menu = new QMenu(button);
        menu->addAction(byItself);
        button->setMenu(menu);
        button->setPopupMode(QToolButton::MenuButtonPopup);
    }
    commands->command(loggers, QStringLiteral("chooseExperimentAct"), tr("Select experiment"),
                      QStringLiteral("Ctrl+Shift+X"), [this] {
                          if (downloadAct->isEnabled())
                              doSelectExperiment();
                      });
    loggers->addAction(advancedSetupAct);
    createViewMenu();

    QMenu* const help = commands->add(QStringLiteral("helpMenu"), tr("&Help"));
    commands->command(help, QStringLiteral("keysAct"), tr("Keys"), QKeySequence::HelpContents,
                      [this] { commands->showKeys(); });
    reachByTab();
}

void MainWindow::createViewMenu()
{
    QMenu* const shown = commands->add(QStringLiteral("viewMenu"), tr("&View"));
    for (int i = 0; i < layouts->count(); ++i)
        shown->addAction(findChild<QAction*>(QStringLiteral("layoutAct%1").arg(i + 1)));
    shown->addSeparator();
    shown->addActions({runsAct, replayAct, tilesAct, valuesAct});
    shown->addSeparator();
    fillMenu(
        shown, views, [](int code) { return keyOf(viewKeys, code); },
        [this](int row) {
            if (!views->isEnabled())
                return;
            views->setCurrentIndex(row);
            updateView(row);
        });
    QAction* const large = commands->command(shown, QStringLiteral("largeAct"), tr("One graph large"), {},
                                             [this] { enlargeChosen(); });
    CommandMenu::setKeyText(large, tr("Enter, a double click"));
    shown->addAction(smallAct);
    CommandMenu::setKeyText(smallAct, QKeySequence(Qt::Key_Escape).toString(QKeySequence::NativeText));
    if (auto* button = findChild<QToolButton*>(QStringLiteral("simulationButton"))) {
        QMenu* const simulations = shown->addMenu(tr("Simulations"));
        int number = 0;
        for (QAction* action : button->menu()->actions()) {
            if (!action->isSeparator())
                action->setShortcut(QStringLiteral("Ctrl+Alt+%1").arg(number++));
            simulations->addAction(action);
            addAction(action);
        }
    }
}

/// The items of a list of the toolbars.
void MainWindow::fillMenu(QMenu* menu, IconList* list, const std::function<QKeySequence(int)>& key,
                          const std::function<void(int)>& run)
{
    for (int row = 0; row < list->count(); ++row) {
        const QString name = list->itemData(row, Qt::ToolTipRole).toString();
        QAction* const action =
            commands->command(menu, QStringLiteral("%1Act%2").arg(list->objectName()).arg(row + 1), name,
                              key(list->itemData(row).toInt()), [run, row] { run(row); });
        action->setIcon(list->itemIcon(row));
    }
}

/// A person without a mouse gets everywhere.
void MainWindow::reachByTab()
{
    for (const QToolBar* bar : {fileToolBar, graphToolBar, tembrinToolBar, appToolBar}) {
        for (QToolButton* button : bar->findChildren<QToolButton*>()) {
            if (!button->objectName().startsWith(QLatin1String("qt_")))
                button->setFocusPolicy(Qt::TabFocus);
        }
    }
}

/// What no control wanted comes here.
void MainWindow::keyPressEvent(QKeyEvent* event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isEnter || event->isAutoRepeat())
        QMainWindow::keyPressEvent(event);
    else if (auto* button = qobject_cast<QToolButton*>(focusWidget()))
        button->click();
    else
        enlargeChosen();
}

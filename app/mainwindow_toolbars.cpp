#include "app/mainwindow.h"

#include "app/graphtools.h"
#include "app/iconlist.h"
#include "app/iconlists.h"
#include "app/lazyicon.h"
#include "classroom/views.h"
#include "common/common.h"
#include "common/settings.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QMenu>
#include <QScreen>
#include <QStandardItemModel>
#include <QToolBar>
#include <QToolButton>

namespace {

constexpr int smallScreen = 1300;  // below it icons are smaller
constexpr int narrowScreen = 1450; // below it Exit stays off the toolbar

struct ListItem
{
    const char* name;
    const char* icon;
    int code;
};

constexpr ListItem exportItems[] = {
    {QT_TRANSLATE_NOOP("MainWindow", "Export data to Excel"), ":/icons/2018P2/Excel.png", EXPORT_EXCEL},
    {QT_TRANSLATE_NOOP("MainWindow", "Export data to GlobalLab"), ":/icons/GlobalLab/Upload.png",
     EXPORT_GLOBALLAB},
    {QT_TRANSLATE_NOOP("MainWindow", "Save image"), ":/icons/2018P2/Exporting.png", EXPORT_IMAGE},
    {QT_TRANSLATE_NOOP("MainWindow", "Report of the lesson"), ":/icons/2018P2/Report.png", EXPORT_REPORT},
};

constexpr ListItem regressionItems[] = {
    {QT_TRANSLATE_NOOP("MainWindow", "Slope"), ":/icons/2018P2/Slope.png", REG_SLOPE},
    {QT_TRANSLATE_NOOP("MainWindow", "Linear regression"), ":/icons/2018P2/LinReg.png", REG_LIN},
    {QT_TRANSLATE_NOOP("MainWindow", "Quadratic regression"), ":/icons/2018P2/QuadReg.png", REG_QUAD},
    {QT_TRANSLATE_NOOP("MainWindow", "Fit a curve"), ":/icons/Fit.png", REG_FIT},
    {QT_TRANSLATE_NOOP("MainWindow", "Smooth"), ":/icons/2018P2/Smooth.png", REG_SMOOTH},
    {QT_TRANSLATE_NOOP("MainWindow", "Derivative"), ":/icons/2018P2/Derivative.png", REG_DERIVATIVE},
    {QT_TRANSLATE_NOOP("MainWindow", "Integral"), ":/icons/2018P2/Integral.png", REG_INTEGRAL},
    {QT_TRANSLATE_NOOP("MainWindow", "Predict"), ":/icons/2018P2/Predict.png", REG_PREDICT},
    {QT_TRANSLATE_NOOP("MainWindow", "Remove predictions"), ":/icons/2018P2/Unpredict.png", REG_UNPREDICT},
    {QT_TRANSLATE_NOOP("MainWindow", "Statistics"), ":/icons/2018P2/ViewBar.png", REG_STATISTICS},
    {QT_TRANSLATE_NOOP("MainWindow", "Spectrum"), ":/icons/2018P2/Spectrum.png", REG_FFT},
    {QT_TRANSLATE_NOOP("MainWindow", "Channel by a formula"), ":/icons/Calculate.png", REG_FORMULA},
    {QT_TRANSLATE_NOOP("MainWindow", "Scale on the right"), ":/icons/RightScale.png", REG_RIGHT},
    {QT_TRANSLATE_NOOP("MainWindow", "Sort the groups"), ":/icons/Ranking.png", REG_RANKING},
};

constexpr ListItem layoutItems[] = {
    {QT_TRANSLATE_NOOP("MainWindow", "Individual view"), ":/icons/2018P2/ViewColabMulti.png",
     LAYOUT_MULTI_WINDOWS},
    {QT_TRANSLATE_NOOP("MainWindow", "Combined view"), ":/icons/2018P2/ViewColabClass.png",
     LAYOUT_MULTI_TOGETHER},
    {QT_TRANSLATE_NOOP("MainWindow", "View all"), ":/icons/2018P2/ViewColabCombo.png", LAYOUT_MULTI_COMBO},
    {QT_TRANSLATE_NOOP("MainWindow", "Meters"), ":/icons/ViewMeters.png", LAYOUT_METERS},
    {QT_TRANSLATE_NOOP("MainWindow", "Map"), ":/icons/2018P2/ViewMap.png", LAYOUT_MAP},
};

constexpr ListItem viewItems[] = {
    {QT_TRANSLATE_NOOP("MainWindow", "Graph view"), ":/icons/2018P2/ViewGraph.png", VIEW_GRAPH},
    {QT_TRANSLATE_NOOP("MainWindow", "Bar view"), ":/icons/2018P2/ViewBar.png", VIEW_BAR},
    {QT_TRANSLATE_NOOP("MainWindow", "Table view"), ":/icons/2018P2/ViewTable.png", VIEW_TABLE},
    {QT_TRANSLATE_NOOP("MainWindow", "Table and graph"), ":/icons/2018P2/ViewTableGraph.png",
     VIEW_TABLE_GRAPH},
    {QT_TRANSLATE_NOOP("MainWindow", "Thermometer"), ":/icons/2018P2/ViewThermometer.png", VIEW_THERMO},
};

// The place in the menu is an action's number; the second place is the separator.
constexpr const char* simulationNames[] = {
    QT_TRANSLATE_NOOP("MainWindow", "None"),
    nullptr,
    QT_TRANSLATE_NOOP("MainWindow", "Free fall"),
    QT_TRANSLATE_NOOP("MainWindow", "Pendulum"),
    QT_TRANSLATE_NOOP("MainWindow", "Volume-Pressure relationship"),
    QT_TRANSLATE_NOOP("MainWindow", "Pressure Equilibrium"),
    QT_TRANSLATE_NOOP("MainWindow", "Molecular View of a Liquid"),
    QT_TRANSLATE_NOOP("MainWindow", "Diffusion of a Drop"),
    QT_TRANSLATE_NOOP("MainWindow", "Hydrogen Bonds"),
};

void addItem(IconList* list, const ListItem& item)
{
    list->addPicture(MainWindow::tr(item.name), lazyIcon(QLatin1String(item.icon)), item.code);
}

} // namespace

void MainWindow::createActions()
{
    struct Row
    {
        QAction* MainWindow::*member;
        const char* name;
        const char* text;
        const char* icon;
        void (MainWindow::*slot)();
        const char* statusTip;
        QList<QKeySequence> keys;
        bool isLook = false; ///< changes nothing, and needs nothing but what is shown
    };
    // clang-format off
    const Row rows[] = {
        {&MainWindow::openAct, "openAct", QT_TR_NOOP("&Open"), "Open", &MainWindow::doRead, "", {QKeySequence::Open}},
        {&MainWindow::saveAct, "saveAct", QT_TR_NOOP("Save"), "Save", &MainWindow::doSave,
         QT_TR_NOOP("Save current experiment"), {}},
        {&MainWindow::printAct, "printAct", QT_TR_NOOP("&Print"), "Print", &MainWindow::doPrint,
         QT_TR_NOOP("Print current experiment"), {QKeySequence::Print}},
        {&MainWindow::zoomAct, "zoomAct", QT_TR_NOOP("&Zoom"), "Zoom", &MainWindow::doZoom,
         QT_TR_NOOP("Zoom to rectangle selected with mouse"), {QKeySequence::ZoomIn}, true},
        {&MainWindow::markerAct, "markerAct", QT_TR_NOOP("&Marker"), "Marker",
         &MainWindow::doMarker,
         QT_TR_NOOP("Set/remove up to 2 markers on graph"), {QStringLiteral("Ctrl+M")}},
        {&MainWindow::annotateAct, "annotateAct", QT_TR_NOOP("&Annotate"), "Annotate",
         &MainWindow::doAnnotate,
         QT_TR_NOOP("Add annotations to graph"), {QStringLiteral("Ctrl+N")}},
        {&MainWindow::readAct, "readAct", QT_TR_NOOP("Read"), "Read", &MainWindow::doReadCurves,
         QT_TR_NOOP("Read all curves at one time"), {Qt::Key_F7}, true},
        {&MainWindow::cropAct, "cropAct", QT_TR_NOOP("&Crop"), "Crop", &MainWindow::doCrop,
         QT_TR_NOOP("Crop graph"), {QStringLiteral("Ctrl+K")}},
        {&MainWindow::undoAct, "undoAct", QT_TR_NOOP("Undo"), "Undo", &MainWindow::doUndo,
         QT_TR_NOOP("Take back what was done to a graph last"), {QStringLiteral("Ctrl+Z")}},
        {&MainWindow::redoAct, "redoAct", QT_TR_NOOP("Redo"), "Undo", &MainWindow::doRedo,
         QT_TR_NOOP("Do again what was taken back"), {QStringLiteral("Ctrl+Shift+Z"), QStringLiteral("Ctrl+Y")}},
        {&MainWindow::colabConnectAct, "colabConnectAct", QT_TR_NOOP("Connect"), "ColabConnect",
         &MainWindow::doSelectMLog, "", {QStringLiteral("Ctrl+G")}},
        {&MainWindow::basicSetupAct, "basicSetupAct", QT_TR_NOOP("Setup"), "Setup", &MainWindow::doBasicSetup,
         QT_TR_NOOP("Setup Tembrin"), {QStringLiteral("Ctrl+U")}},
        {&MainWindow::runAct, "runAct", QT_TR_NOOP("&Run"), "Run", &MainWindow::doRun, "", {Qt::Key_F5}},
        {&MainWindow::stopAct, "stopAct", QT_TR_NOOP("Stop"), "Stop", &MainWindow::doStopAll,
         QT_TR_NOOP("Stop Tembrin Run"), {Qt::Key_Escape, QStringLiteral("Shift+F5")}},
        {&MainWindow::downloadAct, "downloadAct", QT_TR_NOOP("Download"), "Download",
         &MainWindow::doDownload2018, "", {QStringLiteral("Ctrl+D")}},
        {&MainWindow::runsAct, "runsAct", QT_TR_NOOP("Runs"), "Runs", &MainWindow::toggleRuns,
         QT_TR_NOOP("Show the list of the runs before this one"), {Qt::Key_F6}, true},
        {&MainWindow::replayAct, "replayAct", QT_TR_NOOP("Replay"), "", &MainWindow::doReplay,
         QT_TR_NOOP("Play the run on the graphs again, or end that"), {QStringLiteral("Shift+F6")}, true},
        {&MainWindow::tilesAct, "tilesAct", QT_TR_NOOP("Values only"), "", &MainWindow::toggleTiles,
         QT_TR_NOOP("Show nothing but what each group measures"), {Qt::Key_F11}, true},
        {&MainWindow::advancedSetupAct, "advancedSetupAct", QT_TR_NOOP("&Configuration"), "Pref", &MainWindow::doSetup,
         QT_TR_NOOP("Set Tembrin's configuration"), {QStringLiteral("Ctrl+,")}},
        {&MainWindow::exitAct, "exitAct", QT_TR_NOOP("&Exit"), "Exit", &MainWindow::doExit,
         QT_TR_NOOP("Exit software"), {QStringLiteral("Ctrl+Q")}},
    };
    // clang-format on
    for (const Row& row : rows) {
        const QIcon icon =
            *row.icon ? lazyIcon(QStringLiteral(":/icons/2018P2/%1.png").arg(QLatin1String(row.icon)))
                      : QIcon();
        auto* action = new QAction(icon, tr(row.text), this);
        action->setObjectName(QLatin1String(row.name));
        action->setStatusTip(*row.statusTip ? tr(row.statusTip) : QString());
        action->setShortcuts(row.keys);
        if (!row.isLook)
            connect(action, &QAction::triggered, this, &MainWindow::endReplay); // before it does its work
        connect(action, &QAction::triggered, this, row.slot);
        addAction(action); // so that the keys work without a toolbar too
        this->*row.member = action;
    }
    for (QAction* mode : {zoomAct, markerAct, annotateAct, readAct, runsAct, replayAct, tilesAct})
        mode->setCheckable(true);
}

void MainWindow::chooseIconSize()
{
    const int width = QGuiApplication::primaryScreen()->size().width();
    if (width < smallScreen)
        iconDim = iconDim * 3 / 4;
    if (is4K())
        iconDim *= 2;
}

void MainWindow::createToolBars()
{
    fileToolBar = addBar(QStringLiteral("fileToolBar"), tr("File"));
    graphToolBar = addBar(QStringLiteral("graphToolBar"), tr("Graph"));
    tembrinToolBar = addBar(QStringLiteral("tembrinToolBar"), tr("Tembrin"));
    appToolBar = addBar(QStringLiteral("appToolBar"), tr("Application"));

    fileToolBar->addActions({openAct, saveAct});
    if (isSimulEnabled)
        fileToolBar->addWidget(createSimulationButton());
    exports = addIconList(fileToolBar, IconList::Kind::Button, "exports", tr("Export"));
    fileToolBar->addAction(printAct);
    graphToolBar->addActions({zoomAct, markerAct, readAct, annotateAct, cropAct, undoAct});
    regression = addIconList(graphToolBar, IconList::Kind::Button, "regression", tr("Functions"));
    tembrinToolBar->addActions(
        {colabConnectAct, basicSetupAct, runAct, stopAct, runsAct, downloadAct, advancedSetupAct});
    stopAct->setVisible(false);
    addDownloadChoice();
    addActivityChoice();
    layouts = addIconList(appToolBar, IconList::Kind::State, "layouts", tr("Layout"));
    views = addIconList(appToolBar, IconList::Kind::State, "views", tr("View"));
    if (QGuiApplication::primaryScreen()->size().width() >= narrowScreen)
        appToolBar->addAction(exitAct);
    fillIconLists();
}

QToolBar* MainWindow::addBar(const QString& name, const QString& title)
{
    QToolBar* bar = addToolBar(title);
    bar->setObjectName(name);
    bar->setIconSize(QSize(iconDim, iconDim));
    bar->setContextMenuPolicy(Qt::PreventContextMenu);
    return bar;
}

IconList* MainWindow::addIconList(QToolBar* bar, IconList::Kind kind, const char* name,
                                  const QString& accessibleName)
{
    auto* list = new IconList(kind, iconDim, bar);
    list->setObjectName(QLatin1String(name));
    list->setAccessibleName(accessibleName);
    list->setToolTip(accessibleName);
    bar->addWidget(list);
    return list;
}

void MainWindow::fillIconLists()
{
    for (const ListItem& item : exportItems) {
        if (item.code != EXPORT_GLOBALLAB || Common::isRussian())
            addItem(exports, item);
    }
    const int globalLab = exports->findData(EXPORT_GLOBALLAB);
    const bool hasServer = !Settings::mainStore().value(QStringLiteral("GlobalLab/url")).toString().isEmpty();
    if (globalLab >= 0)
        qobject_cast<QStandardItemModel*>(exports->model())->item(globalLab)->setEnabled(hasServer);
    for (const ListItem& item : regressionItems)
        addItem(regression, item);
    for (const ListItem& item : layoutItems)
        addItem(layouts, item);
    for (const ListItem& item : viewItems)
        addItem(views, item);
    views->setEnabled(false);
    connect(layouts, qOverload<int>(&QComboBox::currentIndexChanged), this,
            [this](int i) { updateLayout(layouts->itemData(i).toInt()); });
    connect(layouts, qOverload<int>(&QComboBox::activated), this, &MainWindow::closePage);
    connect(exports, qOverload<int>(&QComboBox::activated), this, &MainWindow::doExport);
    connect(regression, qOverload<int>(&QComboBox::activated), this, &MainWindow::doFunctions);
    connect(views, qOverload<int>(&QComboBox::activated), this, &MainWindow::updateView);
    for (int i = 0; i < layouts->count(); ++i) {
        auto* choose = new QAction(layouts->itemData(i, Qt::ToolTipRole).toString(), this);
        choose->setObjectName(QStringLiteral("layoutAct%1").arg(i + 1));
        choose->setShortcut(QStringLiteral("Ctrl+%1").arg(i + 1));
        connect(choose, &QAction::triggered, this, [this, i] {
            if (!layouts->isEnabled())
                return;
            closePage();
            updateLayout(layouts->itemData(i).toInt());
        });
        addAction(choose);
    }
}

QWidget* MainWindow::createSimulationButton()
{
    auto* button = new QToolButton;
    button->setObjectName(QStringLiteral("simulationButton"));
    button->setAccessibleName(tr("Simulations"));
    button->setToolTip(tr("Simulations"));
    button->setIcon(lazyIcon(QStringLiteral(":/icons/2018P2/Simulation.png")));
    button->setPopupMode(QToolButton::InstantPopup);
    auto* menu = new QMenu(button);
    auto* choice = new QActionGroup(menu);
    int number = 0;
    for (const char* name : simulationNames) {
        QAction* action = name ? menu->addAction(tr(name)) : menu->addSeparator();
        action->setData(number);
        action->setCheckable(name != nullptr);
        action->setChecked(number == 0);
        if (name)
            choice->addAction(action);
        ++number;
    }
    connect(menu, &QMenu::triggered, this, &MainWindow::doSimul);
    button->setMenu(menu);
    return button;
}

// On a window too narrow for one row the loggers' and the application's bars go to a second one.
void MainWindow::fitToolBars()
{
    if (!fileToolBar)
        return;
    int needed = 0;
    for (const QToolBar* bar : {fileToolBar, graphToolBar, tembrinToolBar, appToolBar})
        needed += bar->sizeHint().width();
    const bool isBroken = toolBarBreak(tembrinToolBar);
    if (needed > width() && !isBroken)
        insertToolBarBreak(tembrinToolBar);
    else if (needed <= width() && isBroken)
        removeToolBarBreak(tembrinToolBar);
}

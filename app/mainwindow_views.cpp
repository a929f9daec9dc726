#include "app/mainwindow.h"

#include "app/graphtools.h"
#include "app/largegraph.h"
#include "app/mappane.h"
#include "app/meterspanel.h"
#include "app/refreshclock.h"
#include "app/sideviews.h"
#include "app/tilewall.h"
#include "app/undosteps.h"
#include "classroom/classrun.h"
#include "classroom/multiconnectionsmanager.h"
#include "classroom/replay.h"
#include "common/settings.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "instruments/indicator.h"
#include "protocol/tembrinprotocol.h"
#include "setup/setuplogger.h"

#include <QAction>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSplitter>

namespace {
constexpr int defaultLoggers = 4;
constexpr int cureMargin = 8;
} // namespace

void MainWindow::setupViews()
{
    mainW = new QSplitter(Qt::Horizontal);
    mainW->setObjectName(QStringLiteral("mainW"));
    graphW = new QSplitter(Qt::Vertical, mainW);
    graphW->setObjectName(QStringLiteral("graphW"));
    graphGridW = new QWidget;
    graphGridW->setObjectName(QStringLiteral("graphGridW"));
    graphGridL = new QGridLayout(graphGridW);
    graphGridL->setContentsMargins(0, 0, 0, 0);

    mTembrin->setViewMaker([this](int view, int index) { return createCell(view, index); });
    mTembrin->setPartMaker([this](int view, int index) { return sideViews->make(view, index); });
    graph = createPlot(mTembrin->dataC(), GRAPH_LINE, -1);
    mTembrin->setPlotC(graph);
    createLargeGraph();
    createTiles();
    createHint();
    cureLine = new QLabel;
    cureLine->setObjectName(QStringLiteral("cureLine"));
    cureLine->setWordWrap(true);
    cureLine->setMargin(cureMargin);
    cureLine->setTextInteractionFlags(Qt::TextSelectableByMouse);
    cureLine->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Maximum);
    cureLine->hide();
    leftOutLine = new QLabel;
    leftOutLine->setObjectName(QStringLiteral("leftOutLine"));
    leftOutLine->setWordWrap(true);
    leftOutLine->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Maximum);
    leftOutLine->hide();
    graphW->addWidget(hint);
    graphW->addWidget(cureLine);
    graphW->addWidget(leftOutLine);
    graphW->addWidget(graph);
    graphW->addWidget(graphGridW);
    graphW->setChildrenCollapsible(false);

    setCentralWidget(mainW);
    // Else the first list of the toolbars has it, and the keys of a person who only looks change the layout.
    mainW->setFocusPolicy(Qt::StrongFocus);
    mainW->setFocus();
    setDisplayForNLoggers(
        Settings::mainStore().value(QLatin1String(Settings::numDefined), defaultLoggers).toInt());
    openFirstView(isPanel ? QStringLiteral("meters") : qEnvironmentVariable("PELLANDRA_VIEW"));
}

/// What the window opens on; a word that is none means the graphs.
void MainWindow::openFirstView(const QString& word)
{
    const std::pair<const char*, int> words[] = {{"meters", LAYOUT_METERS}, {"map", LAYOUT_MAP}};
    int layout = LAYOUT_MULTI_WINDOWS;
    for (const auto& [name, its] : words) {
        if (word == QLatin1String(name))
            layout = its;
    }
    updateLayout(layout);
    openSimulation(word);
    const std::pair<const char*, int> cellWords[] = {
        {"table", VIEW_TABLE}, {"table-graph", VIEW_TABLE_GRAPH}, {"thermometer", VIEW_THERMO}};
    for (const auto& [name, its] : cellWords) {
        for (int i = 0; i < mTembrin->nDefTembrins() && word == QLatin1String(name); ++i)
            mTembrin->addWidgetByIndex(graphGridL, its, i);
    }
}

void MainWindow::createMeters()
{
    newMetersW = new MetersPanel(mTembrin, iconDim,
                                 [this] { return !advancedSetupDlg && !mTembrin->replay().isOn(); });
    newMetersW->follow(mTembrin->activeGraph());
    connect(newMetersW, &MetersPanel::groupChosen, this, &MainWindow::activePlotChanged);
    mainW->insertWidget(0, newMetersW);
}

/// A graph of a logger, when it is first shown or asked for: it then catches up with what the others know.
Plot* MainWindow::createCell(int view, int index)
{
    const bool isBar = view == VIEW_BAR;
    ExpData* const set = mTembrin->dataAt(index);
    Plot* const plot = createPlot(set, isBar ? GRAPH_BAR : GRAPH_LINE, index);
    plot->setParent(graphGridW);
    plot->hide();
    plot->updateTitle(titleOf(index));
    plot->updateSens(qMax(0, set->getSelectedSensor()));
    if (mTembrin->isActive(index))
        plot->setActivePlot(index);
    connect(plot, &Plot::changedActivePlot, this, &MainWindow::activePlotChanged);
    if (!isBar) {
        QMetaObject::invokeMethod(
            this, [this, index] { showPins(index); }, Qt::QueuedConnection);
        return plot;
    }
    connect(plot, &Plot::titleChanged, this, [this](const QString& text) { graph->otherTitleChanged(text); });
    // A logger has one curve on the graph of the class.
    connect(plot, &Plot::colorChanged, this,
            [this, index](int, const QColor& color) { graph->otherColorChanged(index, color); });
    return plot;
}

void MainWindow::createHint()
{
    hint = new QLabel(
        isPanel ? tr("No logger is chosen yet: start Pellandra without panel mode and press Connect.")
                : tr("No logger is chosen yet: press Connect to choose the loggers of your class."));
    hint->setObjectName(QStringLiteral("hint"));
    hint->setAlignment(Qt::AlignCenter);
    hint->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Maximum);
    hint->setWordWrap(true);
    hint->hide();
}

Plot* MainWindow::createPlot(ExpData* set, graphtype type, int index)
{
    auto* plot = new Plot(set, type, isJunior, index);
    if (index < 0) {
        plot->setObjectName(QStringLiteral("Class Curve graph"));
        plot->setAccessibleName(tr("Graph of the class"));
    } else if (type == GRAPH_BAR) {
        plot->setObjectName(QStringLiteral("Bar graph"));
        plot->setAccessibleName(tr("Bar graph of logger %1").arg(index + 1));
    } else {
        plot->setObjectName(QStringLiteral("Curve graph"));
        plot->setAccessibleName(tr("Graph of logger %1").arg(index + 1));
    }
    plot->setUserPrompt(prompt);
    connect(plot, &Plot::changedActiveCurve, this, &MainWindow::updateSens);
    connect(plot, &Plot::shownForAll, this, &MainWindow::showForAll);
    connect(plot, &Plot::enlargeAsked, this, &MainWindow::enlarge);
    tools->watch(plot);
    connect(plot, &Plot::changing, this,
            &MainWindow::endReplay); // before what there is to take back is noted
    steps->watch(plot);
    return plot;
}

void MainWindow::setDisplayForNLoggers(int N)
{
    mTembrin->setDefTembrins(N);
    indicator->setNActive(mTembrin->nDefTembrins());
    setNGraphs();
    if (tileWall)
        tileWall->showGroups(mTembrin->nDefTembrins());
    setSensSelect();
    updateHint();
}

void MainWindow::setNGraphs()
{
    for (int i = 0; i < mTembrin->nMaxTembrins(); ++i) {
        mTembrin->hideCell(i);
    }
    const int columns = mTembrin->gridColumns();
    const int rows = columns == 0 ? 0 : (mTembrin->nDefTembrins() + columns - 1) / columns;
    // Cells of one size, also the empty one of an odd number.
    for (int i = 0; i < mTembrin->nMaxTembrins(); ++i) {
        graphGridL->setColumnStretch(i, i < columns ? 1 : 0);
        graphGridL->setRowStretch(i, i < rows ? 1 : 0);
    }
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i)
        mTembrin->addWidgetByIndex(graphGridL, VIEW_GRAPH, i);
    largeGraph->reset();
    activePlotChanged(-1);
}

// Files name views that are no layout; those show the class.
void MainWindow::updateLayout(int view)
{
    const int layout = view >= 0 && view <= LAYOUT_MAP ? view : int(LAYOUT_MULTI_TOGETHER);
    if (layouts) {
        const QSignalBlocker blocker(layouts);
        layouts->setCurrentIndex(layouts->findData(layout));
    }
    leaveTiles();
    const QRect before = geometry();
    showPane(layout);
    largeGraph->end();
    if (layout <= LAYOUT_MULTI_COMBO) {
        graphGridW->setVisible(layout != LAYOUT_MULTI_TOGETHER);
        graph->setVisible(layout != LAYOUT_MULTI_WINDOWS);
    }
    if (layout == LAYOUT_MULTI_TOGETHER)
        activePlotChanged(-1);
    if (layout == LAYOUT_MULTI_COMBO && !isHeightShared) {
        // By their size hints the class would get a strip. From here on the user's own choice holds.
        const int height = graphW->height();
        QList<int> sizes = graphW->sizes();
        sizes[graphW->indexOf(graph)] = height * 2 / 5;
        sizes[graphW->indexOf(graphGridW)] = height * 3 / 5;
        graphW->setSizes(sizes);
        isHeightShared = true;
    }
    tools->follow();
    showLeftOut();
    setMinimumSize(100, 100);
    if (geometry() != before)
        setGeometry(before);
}

/// The graphs, or what stands in their place. It is made when it is first shown.
void MainWindow::showPane(int layout)
{
    if (layout == LAYOUT_METERS && !newMetersW)
        createMeters();
    if (layout == LAYOUT_MAP && !mapPane) {
        mapPane = new MapPane(mTembrin, prompt);
        mapPane->showGroup(mTembrin->activeGraph());
        mainW->addWidget(mapPane);
    }
    if (newMetersW)
        newMetersW->setVisible(layout == LAYOUT_METERS);
    if (mapPane)
        mapPane->setVisible(layout == LAYOUT_MAP);
    graphW->setVisible(layout <= LAYOUT_MULTI_COMBO);
}

void MainWindow::updateView(int row)
{
    if (!mTembrin->isActiveGraphSet())
        return;
    const int view = views->itemData(row).toInt();
    mTembrin->addWidget(graphGridL, view);
    if (view == VIEW_BAR)
        mTembrin->getActiveBar()->doActivePlotIndicator();
}

void MainWindow::activePlotChanged(int index)
{
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i) {
        for (Plot* plot : mTembrin->viewsOf(i)) {
            if (i == index || mTembrin->isActive(i))
                plot->setActivePlot(index);
        }
    }
    mTembrin->setActivePlot(index);
    if (mapPane)
        mapPane->showGroup(index);
    sideViews->setActive(index);
    tools->follow();
    if (newMetersW)
        newMetersW->follow(index);
    if (!views)
        return;
    views->setCurrentIndex(views->findData(mTembrin->getCurrentView()));
    views->setEnabled(mTembrin->isActiveGraphSet());
}

void MainWindow::tableTitleClicked(int index)
{
    activePlotChanged(mTembrin->isActive(index) ? -1 : index);
}

/// A press in a canvas chooses its graph.
void MainWindow::choosePlot(int index)
{
    if (!mTembrin->isActive(index))
        activePlotChanged(index);
    else
        tools->follow();
}

// --- Bringing the views up to the data ---

void MainWindow::updateAll(int index)
{
    for (Plot* plot : mTembrin->viewsOf(index)) {
        plot->setData();
        plot->updateSens(plot->getActiveSens());
    }
    sideViews->renew(index);
    if (index < 0)
        showLeftOut();
    else if (mapPane)
        mapPane->setStale();
}

void MainWindow::updateAll()
{
    for (int i = 0; i < mTembrin->nMaxTembrins(); ++i)
        updateAll(i);
    updateAll(-1);
}

void MainWindow::markViews(int index)
{
    for (Plot* plot : mTembrin->viewsOf(index))
        refreshClock->mark(plot);
    sideViews->mark(index);
}

void MainWindow::updateSens(int index, int iSens)
{
    mTembrin->replay().aside([&] {
        setSelected(index, iSens);
        if (index >= 0)
            followSelection(index);
    });
}

/// The class shows of each group what its own graph shows as chosen.
void MainWindow::followSelection(int index)
{
    if (isOnlyStaticClassMode)
        return;
    mTembrin->run().classSet().follow(index);
    mTembrin->dataC()->makeUniformScales();
    updateAll(-1);
}

void MainWindow::rebuildClass()
{
    ClassSet& classSet = mTembrin->run().classSet();
    classSet.rebuild(classSet.memberBits() | 1); // the first logger's set is the one that files join
    mTembrin->dataC()->makeUniformScales();
    updateAll(-1);
}

/// One sensor in all graphs that have it, or another that measures the same under its name.
void MainWindow::showForAll(int sensorID)
{
    const Sensor wanted(sensorID, mTembrin->tembrinAt(0)->units);
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i) {
        const ExpData* const set = mTembrin->dataAt(i);
        int at = set->locateSensByID(sensorID);
        for (int k = 0; at < 0 && k < set->getNSens(); ++k) {
            const SensorPtr& sensor = set->getSens(k);
            at = sensor && sensor->name == wanted.name && sensor->isSameQuantity(wanted) ? k : -1;
        }
        if (at >= 0)
            updateSens(i, at);
    }
}

void MainWindow::setSelected(int index, int iSens)
{
    ExpData* set = index < 0 ? mTembrin->dataC() : mTembrin->dataAt(index);
    set->setSelectedSensor(iSens);
    if (index < 0)
        set->makeUniformScales();
    for (Plot* plot : mTembrin->viewsOf(index))
        plot->updateSens(iSens);
    sideViews->renew(index);
}

void MainWindow::setSensSelect()
{
    for (int i = -1; i < mTembrin->nMaxTembrins(); ++i)
        setSelected(i, 0);
}

/// Whose samples come at other times than the class's is not in its graph, and a line beside it says so.
void MainWindow::showLeftOut()
{
    QStringList names;
    for (const int slot : mTembrin->run().classSet().leftOut())
        names.append(mTembrin->groupName(slot));
    leftOutLine->setVisible(!names.isEmpty() && !isOnlyStaticClassMode && graph->isVisible());
    leftOutLine->setText(tr("Not in the graph of the class, because of another rate: %1")
                             .arg(names.join(QStringLiteral(", "))));
}

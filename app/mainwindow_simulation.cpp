#include "app/mainwindow.h"

#include "app/largegraph.h"
#include "app/runline.h"
#include "app/simulationpanel.h"
#include "classroom/classrun.h"
#include "classroom/multiconnectionsmanager.h"
#include "graph/plot.h"
#include "instruments/statusline.h"

#include <QGridLayout>
#include <QMenu>
#include <QSplitter>
#include <QToolButton>

namespace {
constexpr int firstSimulation = 2; // its place in the menu
constexpr int panelPart = 28;      // per cent of the window
constexpr int leastPanel = 400;    // pixels
} // namespace

/// The one that a word names, if it does, when the program opens.
void MainWindow::openSimulation(const QString& word)
{
    static const QStringList words{QStringLiteral("simulation"), QStringLiteral("pendulum"),
                                   QStringLiteral("gas"),        QStringLiteral("vessels"),
                                   QStringLiteral("liquid"),     QStringLiteral("diffusion"),
                                   QStringLiteral("water")};
    const auto* button = findChild<QToolButton*>(QStringLiteral("simulationButton"));
    const int simulation = words.indexOf(word);
    if (button && simulation >= 0)
        doSimul(button->menu()->actions().at(simulation + firstSimulation));
}

void MainWindow::doSimul(QAction* theAct)
{
    endReplay();
    theAct->setChecked(true);
    const int simulation = theAct->data().toInt() - firstSimulation;
    if (simulation < 0) {
        closeSimulation();
        return;
    }
    if (!simW)
        createSimulationPanel();
    if (mTembrin->nDefTembrins() == 0) // its samples need a place
        setDisplayForNLoggers(1);
    if (graphW->isHidden())
        updateLayout(LAYOUT_MULTI_WINDOWS);
    simW->choose(simulation);
    updateHint();
    shareWithSimulation();
}

/// The panel has its part of the window until a person gives it another.
void MainWindow::shareWithSimulation()
{
    if (!simW || simW->isHidden() || simW->isPage() || isShareOwn)
        return;
    const int width = qMax(leastPanel, mainW->width() * panelPart / 100);
    QList<int> sizes = mainW->sizes();
    sizes[mainW->indexOf(simW)] = width;
    sizes[mainW->indexOf(graphW)] = qMax(1, mainW->width() - width);
    mainW->setSizes(sizes);
}

/// When it is first wanted: most lessons do without.
void MainWindow::createSimulationPanel()
{
    simW = new SimulationPanel(mTembrin, graphW);
    simW->hide();
    mainW->addWidget(simW);
    simW->setAsk([this] { return !isSaving; });
    connect(mainW, &QSplitter::splitterMoved, this, [this] { isShareOwn = true; });
    connect(simW, &SimulationPanel::told, statusLine, &StatusLine::setAdvice);
    connect(simW, &SimulationPanel::begun, this, &MainWindow::showSimulation);
    connect(&mTembrin->run(), &ClassRun::begun, largeGraph, [this] { largeGraph->setFirstAlone(false); });
}

/// An experiment has the graph of the first group, and that all the room.
void MainWindow::showSimulation(const QString& name)
{
    namedByLesson |= 1; // the title is that of the set
    for (Plot* plot : mTembrin->viewsOf(0))
        plot->updateTitle(name);
    runLine->refresh();
    largeGraph->setFirstAlone(true);
}

/// What is to be seen on a graph is, even where a page had its place.
void MainWindow::closePage()
{
    if (simW && simW->isPage())
        closeSimulation();
}

void MainWindow::closeSimulation()
{
    if (simW && !simW->isHidden())
        simW->closeSimulation();
    largeGraph->setFirstAlone(false);
    updateHint();
    updateLayout(layouts ? layouts->currentData().toInt() : int(LAYOUT_MULTI_WINDOWS));
    auto* button = findChild<QToolButton*>(QStringLiteral("simulationButton"));
    if (button)
        button->menu()->actions().constFirst()->setChecked(true);
}

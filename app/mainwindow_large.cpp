// One graph that fills the window, so that the back of the room can read it.

#include "app/mainwindow.h"

#include "app/curvereader.h"
#include "app/graphtools.h"
#include "app/iconlist.h"
#include "app/largegraph.h"
#include "app/replaybar.h"
#include "classroom/multiconnectionsmanager.h"
#include "classroom/replay.h"
#include "graph/plot.h"

#include <QAction>
#include <QSplitter>

void MainWindow::createLargeGraph()
{
    largeGraph = new LargeGraph(mTembrin, graphGridL, graph, this);
    connect(largeGraph, &LargeGraph::changed, this, &MainWindow::shareEscape);
    smallAct = new QAction(tr("All graphs"), this);
    smallAct->setObjectName(QStringLiteral("smallAct"));
    smallAct->setEnabled(false);
    connect(smallAct, &QAction::triggered, this, [this] {
        if (tilesAct->isChecked())
            leaveTiles();
        else
            enlarge(largeGraph->shown().value_or(0));
    });
    addAction(smallAct);
}

void MainWindow::enlarge(int index)
{
    if (largeGraph->shown() == index) {
        updateLayout(layouts ? layouts->currentData().toInt() : int(LAYOUT_MULTI_WINDOWS));
        graphW->restoreState(largeGraph->shares());
        return;
    }
    if (!graphW->isVisible() || index >= mTembrin->nDefTembrins())
        return;
    if (index >= 0 && !mTembrin->isActive(index))
        activePlotChanged(index);
    largeGraph->show(index);
    tools->follow();
    showLeftOut();
}

void MainWindow::enlargeChosen()
{
    if (largeGraph->shown())
        enlarge(*largeGraph->shown());
    else if (mTembrin->isActiveGraphSet())
        enlarge(mTembrin->activeGraph());
    else if (!graph->isHidden())
        enlarge(LargeGraph::classGraph);
}

/// One key can't mean two things: while curves are read or predicted, Esc ends that, while a graph is large
/// or tiles fill the window, it brings the others back, then it ends a replay, and stops only after that.
void MainWindow::shareEscape()
{
    const bool isRead =
        (tools->mode() == GraphTools::Mode::Read || tools->mode() == GraphTools::Mode::Predict) &&
        !tilesAct->isChecked();
    const bool isLarge = tilesAct->isChecked() || (largeGraph && largeGraph->shown().has_value());
    const bool isReplayed = mTembrin->replay().isOn() && !isLarge && !isRead;
    const QKeySequence escape(Qt::Key_Escape);
    QList<QKeySequence> stopKeys = stopAct->shortcuts();
    stopKeys.removeAll(escape);
    if (!isLarge && !isRead && !isReplayed)
        stopKeys.prepend(escape);
    stopAct->setShortcuts(stopKeys);
    reader->endAction()->setShortcut(isRead ? escape : QKeySequence());
    if (replayBar)
        replayBar->endAction()->setShortcut(isReplayed ? escape : QKeySequence());
    if (!smallAct)
        return;
    smallAct->setShortcut(isLarge && !isRead ? escape : QKeySequence());
    smallAct->setEnabled(isLarge);
}

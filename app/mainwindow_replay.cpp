// A run that is played again on the graphs.

#include "app/mainwindow.h"

#include "app/graphtools.h"
#include "app/keptruns.h"
#include "app/mappane.h"
#include "app/replaybar.h"
#include "app/selfrun.h"
#include "app/sideviews.h"
#include "classroom/multiconnectionsmanager.h"
#include "classroom/replay.h"
#include "instruments/statusline.h"

#include <QAction>

void MainWindow::createReplay()
{
    Replay* const replay = &mTembrin->replay();
    connect(replay, &Replay::begun, this, &MainWindow::showReplay);
    connect(replay, &Replay::ended, this, &MainWindow::showReplay);
    connect(replay, &Replay::moved, this, &MainWindow::showReplayed);
    connect(keptRuns, &KeptRuns::changed, this, [this] {
        if (replayBar && replayBar->run() != 0 && !keptRuns->find(replayBar->run()))
            endReplay();
    });
}

void MainWindow::doReplay()
{
    Replay& replay = mTembrin->replay();
    if (replay.isOn()) {
        replay.end();
        return;
    }
    replayAct->setChecked(false);
    if (isSaving || isBusy(tr("A run can be replayed when no logger is busy.")))
        return;
    if (mTembrin->isMeasuring() || selfRun->isWaiting()) {
        statusLine->setAdvice(tr("A run can be replayed when none is going on or waited for."));
        return;
    }
    closePage();
    using Mode = GraphTools::Mode;
    for (const Mode mode : {Mode::Marker, Mode::Annotate, Mode::Predict, Mode::Slope}) {
        if (tools->mode() == mode)
            tools->setMode(mode, false); // they work on what is whole
    }
    if (!replay.begin()) {
        statusLine->setAdvice(tr("There is nothing to replay yet: run first, or open a file."));
        return;
    }
    if (!replayBar) {
        replayBar = new ReplayBar(&replay, this);
        addToolBar(Qt::BottomToolBarArea, replayBar);
        addAction(replayBar->endAction());
    }
    const KeptRun* const shown = keptRuns->find(keptRuns->shown());
    replayBar->begin(keptRuns->shown(), shown ? shown->outline.name : keptName());
    showReplay();
}

void MainWindow::replayKept(int id)
{
    endReplay();
    showKept(id);
    if (keptRuns->shown() == id)
        doReplay();
}

/// Before anything that is not only a look: then the whole run is there again.
void MainWindow::endReplay()
{
    mTembrin->replay().end();
}

void MainWindow::showReplay()
{
    replayAct->setChecked(mTembrin->replay().isOn());
    shareEscape();
}

void MainWindow::showReplayed(int index, bool isLonger)
{
    if (isLonger)
        markViews(index);
    else
        sideViews->renew(index);
    if (mapPane && index >= 0)
        mapPane->setStale();
}

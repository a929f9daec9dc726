// What each group measures right now, in digits.

#include "app/mainwindow.h"

#include "app/grouptile.h"
#include "app/replaybar.h"
#include "app/tiles.h"
#include "app/tilewall.h"
#include "app/valuepoll.h"
#include "classroom/multiconnectionsmanager.h"
#include "classroom/replay.h"
#include "common/settings.h"
#include "setup/setuplogger.h"

#include <QAction>
#include <QSplitter>
#include <QToolBar>

void MainWindow::createTiles()
{
    tiles = new Tiles(mTembrin, this);
    mTembrin->setHeadMaker([this](int index) { return tiles->makeLine(index); });
    connect(tiles, &Tiles::pressed, this, &MainWindow::choosePlot);
    auto* const poll = new ValuePoll(
        mTembrin,
        [this] { return tiles->isAnySeen() && !advancedSetupDlg && !isSaving && !mTembrin->replay().isOn(); },
        this);
    valuesAct = new QAction(tr("Values before a run"), this);
    valuesAct->setObjectName(QStringLiteral("valuesAct"));
    valuesAct->setShortcut(QStringLiteral("Shift+F11"));
    valuesAct->setCheckable(true);
    valuesAct->setChecked(Settings::mainStore().value(QLatin1String(Settings::valuesBefore), true).toBool());
    connect(valuesAct, &QAction::toggled, this, [poll](bool isOn) {
        Settings::mainStore().setValue(QLatin1String(Settings::valuesBefore), isOn);
        poll->setOn(isOn);
    });
    addAction(valuesAct);
    poll->setOn(valuesAct->isChecked());
}

/// Nothing but tiles on the whole screen, and back.
void MainWindow::toggleTiles()
{
    if (tileWall && tileWall->isOn()) {
        leaveTiles();
        return;
    }
    if (!tileWall) {
        tileWall = new TileWall(tiles);
        mainW->addWidget(tileWall);
    }
    tileWall->showGroups(mTembrin->nDefTembrins());
    QList<QWidget*> others;
    for (int i = 0; i < mainW->count(); ++i)
        others.append(mainW->widget(i));
    others.append({fileToolBar, graphToolBar, tembrinToolBar, appToolBar}); // those at the bottom stay
    tileWall->enter(others);
    isFullBefore = isFullScreen();
    setWindowState(windowState() | Qt::WindowFullScreen);
    tilesAct->setChecked(true);
    shareEscape();
}

void MainWindow::leaveTiles()
{
    if (!tileWall || !tileWall->isOn())
        return;
    tileWall->leave();
    if (!isFullBefore)
        setWindowState(windowState() & ~Qt::WindowFullScreen);
    tilesAct->setChecked(false);
    mainW->setFocus();
    shareEscape();
}

#include "app/largegraph.h"

#include "classroom/multiconnectionsmanager.h"
#include "graph/plot.h"

#include <QGridLayout>
#include <QSplitter>

LargeGraph::LargeGraph(multiConnectionsManager* manager, QGridLayout* grid, Plot* ofClass, QObject* parent)
    : QObject(parent)
    , manager(manager)
    , grid(grid)
    , ofClass(ofClass)
{
}

void LargeGraph::show(int index)
{
    if (const auto* splitter = qobject_cast<const QSplitter*>(ofClass->parentWidget()); splitter && !large)
        sharesBefore = splitter->saveState();
    large = index;
    arrange();
    ofClass->setVisible(index == classGraph);
    grid->parentWidget()->setVisible(index != classGraph);
    Q_EMIT changed();
}

void LargeGraph::end()
{
    if (!large)
        return;
    large.reset();
    arrange();
    Q_EMIT changed();
}

void LargeGraph::setFirstAlone(bool tf)
{
    if (tf == isFirstAlone)
        return;
    isFirstAlone = tf;
    arrange();
}

void LargeGraph::reset()
{
    isFirstAlone = false;
    if (!large)
        return;
    large.reset();
    Q_EMIT changed();
}

void LargeGraph::restore()
{
    if (large)
        arrange();
}

void LargeGraph::arrange()
{
    const int alone = large && *large >= 0 ? *large : isFirstAlone ? 0 : -1;
    const int columns = qMax(1, manager->gridColumns());
    for (int i = 0; i < manager->nDefTembrins(); ++i) {
        if (alone < 0 || i == alone)
            manager->addWidgetByIndex(grid, manager->viewShownBy(i), i);
        else
            manager->hideCell(i);
        // A row or column that is stretched keeps its room without a cell.
        if (i < columns)
            grid->setColumnStretch(i, alone < 0 || alone % columns == i ? 1 : 0);
        if (i % columns == 0)
            grid->setRowStretch(i / columns, alone < 0 || alone / columns == i / columns ? 1 : 0);
    }
}

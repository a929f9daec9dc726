#include "app/tilewall.h"

#include "app/grouptile.h"
#include "app/tiles.h"

namespace {
constexpr int usualCharacters = 5;   // "101.3"
constexpr double emptyPlaces = 0.85; // of the digits' size is worth a grid without any
} // namespace

TileWall::TileWall(Tiles* tiles, QWidget* parent)
    : QWidget(parent)
    , tiles(tiles)
{
    setObjectName(QStringLiteral("tileWall"));
    setAccessibleName(tr("Values of all groups"));
    setFocusPolicy(Qt::StrongFocus); // keys go to no list of a hidden toolbar
    hide();
}

void TileWall::showGroups(int count)
{
    while (large.size() > count)
        delete large.takeLast();
    while (large.size() < count) {
        auto* const tile = new GroupTile(GroupTile::Form::Large, this);
        tiles->watch(tile, large.size());
        large.append(tile);
        tile->show();
    }
    arrange();
}

/// The columns that give the largest digits.
void TileWall::arrange()
{
    if (large.isEmpty())
        return;
    const int count = large.size();
    int best = 1;
    double bestSize = 0;
    for (int columns = 1; columns <= count; ++columns) {
        const int rows = (count + columns - 1) / columns;
        const QSize cell(width() / columns, height() / rows);
        const double part = count % columns == 0 ? 1 : emptyPlaces;
        const double size = part * GroupTile::digitPixels(cell, usualCharacters);
        if (size > bestSize) {
            bestSize = size;
            best = columns;
        }
    }
    const int rows = (count + best - 1) / best;
    for (int i = 0; i < count; ++i) {
        const int x = i % best;
        const int y = i / best;
        large.at(i)->setGeometry(QRect(QPoint(width() * x / best, height() * y / rows),
                                       QPoint(width() * (x + 1) / best - 1, height() * (y + 1) / rows - 1)));
    }
}

void TileWall::enter(const QList<QWidget*>& others)
{
    for (QWidget* other : others) {
        if (other != this && !other->isHidden()) {
            hidden.append(other);
            other->hide();
        }
    }
    show();
    setFocus();
}

void TileWall::leave()
{
    hide();
    for (const QPointer<QWidget>& other : qAsConst(hidden)) {
        if (other)
            other->show();
    }
    hidden.clear();
}

void TileWall::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    arrange();
}

#include "app/tiles.h"

#include "app/grouptile.h"
#include "classroom/multiconnectionsmanager.h"
#include "classroom/replay.h"

#include <QEvent>
#include <QLayout>

#include <algorithm>

namespace {
constexpr int msInRun = 200; // digits that change faster can't be read
constexpr int msIdle = 500;
constexpr int leastCellHeight = 190; // below it the graph needs all of it
constexpr int leastCellWidth = 130;
constexpr int linePart = 11; // of the cell's height
constexpr int lowestLine = 22;
constexpr int highestLine = 64;
} // namespace

Tiles::Tiles(multiConnectionsManager* manager, QObject* parent)
    : QObject(parent)
    , manager(manager)
    , readings(manager)
{
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this, &Tiles::renew);
    connect(&readings, &GroupReadings::changed, this, [this] {
        if (timer.isActive() && timer.remainingTime() > msInRun)
            timer.start(msInRun);
    });
}

GroupTile* Tiles::makeLine(int slot)
{
    auto* const line = new GroupTile(GroupTile::Form::Line);
    line->hide();
    watch(line, slot);
    line->installEventFilter(this);
    return line;
}

void Tiles::watch(GroupTile* tile, int slot)
{
    entries.append({tile, slot});
    connect(tile, &GroupTile::pressed, this, [this, slot] { Q_EMIT pressed(slot); });
    if (!timer.isActive())
        timer.start(0);
}

bool Tiles::isAnySeen() const
{
    return std::any_of(entries.begin(), entries.end(),
                       [](const Entry& entry) { return entry.tile && entry.tile->isVisible(); });
}

void Tiles::renew()
{
    entries.erase(std::remove_if(entries.begin(), entries.end(), [](const Entry& e) { return !e.tile; }),
                  entries.end());
    for (const Entry& entry : qAsConst(entries)) {
        if (entry.slot < manager->nDefTembrins() && entry.tile->isVisible())
            entry.tile->setReading(readings.reading(entry.slot));
    }
    if (!entries.isEmpty())
        timer.start(manager->isMeasuring() || manager->replay().isOn() ? msInRun : msIdle);
}

bool Tiles::eventFilter(QObject* object, QEvent* event)
{
    if (auto* const line = qobject_cast<GroupTile*>(object)) {
        if (event->type() == QEvent::ParentChange && line->parentWidget())
            line->parentWidget()->installEventFilter(this);
        else if (event->type() == QEvent::Show)
            timer.start(0);
    } else if (event->type() == QEvent::Resize) {
        for (const Entry& entry : qAsConst(entries)) {
            if (entry.tile && entry.tile->parentWidget() == object)
                fit(entry.tile);
        }
    }
    return QObject::eventFilter(object, event);
}

void Tiles::fit(GroupTile* line)
{
    const QSize cell = line->parentWidget()->size();
    line->setFixedHeight(qBound(lowestLine, cell.height() / linePart, highestLine));
    line->setVisible(cell.height() >= leastCellHeight && cell.width() >= leastCellWidth);
    line->parentWidget()->layout()->activate(); // else the graph would be laid out twice
}

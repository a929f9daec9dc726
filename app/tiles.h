#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QVector>

#include "classroom/groupreadings.h"

class GroupTile;
class multiConnectionsManager;

/// The tiles of all groups: one line above each cell where there is room, and others wherever they are made.
/// They are brought up to date a few times a second, those that are seen.
class Tiles : public QObject
{
    Q_OBJECT

public:
    /// `manager` is not owned.
    explicit Tiles(multiConnectionsManager* manager, QObject* parent = nullptr);

    /// A line to stand above the cell of a group; it is there while the cell has room.
    GroupTile* makeLine(int slot);
    /// Follows the group as long as it exists.
    void watch(GroupTile* tile, int slot);
    bool isAnySeen() const;

Q_SIGNALS:
    void pressed(int slot);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    struct Entry
    {
        QPointer<GroupTile> tile;
        int slot = 0;
    };

    void renew();
    static void fit(GroupTile* line);

    multiConnectionsManager* manager;
    GroupReadings readings;
    QVector<Entry> entries;
    QTimer timer;
};

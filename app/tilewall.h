#pragma once

#include <QList>
#include <QPointer>
#include <QVector>
#include <QWidget>

class GroupTile;
class Tiles;

/// Nothing but the tiles of all groups, so large that the back of the room reads them.
class TileWall : public QWidget
{
    Q_OBJECT

public:
    /// `tiles` keeps them up to date; not owned.
    explicit TileWall(Tiles* tiles, QWidget* parent = nullptr);

    void showGroups(int count);

    /// In place of `others`, those that are shown; until leave().
    void enter(const QList<QWidget*>& others);
    /// What was there is there again.
    void leave();
    bool isOn() const { return !isHidden(); }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void arrange();

    Tiles* tiles;
    QVector<GroupTile*> large;
    QVector<QPointer<QWidget>> hidden; ///< while it is on
};

#pragma once

#include <QByteArray>
#include <QObject>

#include <optional>

class Plot;
class QGridLayout;
class QWidget;
class multiConnectionsManager;

/// Decides which cells of the grid are seen: all, the first one alone, or one graph that fills the window.
class LargeGraph : public QObject
{
    Q_OBJECT

public:
    static constexpr int classGraph = -1;

    /// Nothing is owned.
    LargeGraph(multiConnectionsManager* manager, QGridLayout* grid, Plot* ofClass, QObject* parent = nullptr);

    /// Whose graph fills the window, if one does.
    std::optional<int> shown() const { return large; }
    /// How class and cells shared the height before.
    QByteArray shares() const { return sharesBefore; }
    /// The graph of a group, or of the class, gets all the room.
    void show(int index);
    /// All cells again; grid and class are left for the layout to show.
    void end();
    /// The other cells say nothing to what the first one shows.
    void setFirstAlone(bool tf);
    /// The cells were laid out anew, all of them.
    void reset();
    /// The cells were filled anew, and those beside a large graph came into sight.
    void restore();

Q_SIGNALS:
    void changed();

private:
    void arrange();

    multiConnectionsManager* manager;
    QGridLayout* grid;
    Plot* ofClass;
    std::optional<int> large;
    QByteArray sharesBefore;
    bool isFirstAlone = false;
};

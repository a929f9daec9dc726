#pragma once

#include <QAction>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <functional>

#include "graph/readingline.h"

class GraphTools;
class Plot;
class ReadingTable;

/// Reads all curves in sight at one place: a line through every graph that counts the same, and a table
/// beside it. The line keeps its time when axes move on; what the graphs have there is asked again four times
/// a second, so that it follows a run, a file, another layout and whatever else happens without a signal of
/// its own.
class CurveReader : public QObject
{
    Q_OBJECT

public:
    /// `groupName` names the group of a slot. `tools` is not owned.
    CurveReader(GraphTools* tools, std::function<QString(int)> groupName, QObject* parent);
    ~CurveReader() override;

    /// With keys of their own while curves are read: to end it, and the steps of the line.
    QList<QAction*> actions() const { return {end, back, forth}; }
    QAction* endAction() const { return end; }

private:
    void showMode();
    void point(Plot* plot, const QPointF& pos);
    void step(int direction);
    void begin();
    void refresh();
    void hide();
    QVector<Reading> readings(const QList<Plot*>& read) const;
    QAction* addAction(const char* name, const QString& text);

    GraphTools* const tools;
    const std::function<QString(int)> groupName;
    QAction* end = nullptr;
    QAction* back = nullptr;
    QAction* forth = nullptr;
    QTimer again;
    QPointer<ReadingTable> table; ///< of the window; null until curves are read
    QPointer<Plot> pointed;       ///< that the line was put in
    ReadingLine::Axis axis = ReadingLine::Axis::None;
    double at = 0;     ///< on the x axis
    double height = 0; ///< of the pointer, in pixels of the canvas
};

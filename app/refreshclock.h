#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QVector>

class Plot;

/// Paints graphs that have new data, all together, 60 times a second as long as frames are cheap and down to
/// 25 times as they cost more, so that painting takes a quarter of the thread's time. What it left of that it
/// can use up for a while: a run begins with axes that move in every frame. Marking is cheap and
/// never paints; a marked graph is painted within a frame or, while it is hidden, once it is shown. When a
/// frame takes long the frames come further apart, so that painting leaves the thread half of its time.
class RefreshClock : public QObject
{
    Q_OBJECT

public:
    explicit RefreshClock(QObject* parent = nullptr);

    /// The graph has new data.
    void mark(Plot* view);

    /// Milliseconds from one frame to the next, when a frame takes `frameMs`. `hasRest`: painting has taken
    /// less than its part of the time before.
    static int period(double frameMs, bool hasRest = false);

Q_SIGNALS:
    /// A frame is on the screen; it took `ms` milliseconds.
    void painted(int ms);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    struct View
    {
        QPointer<Plot> plot;
        bool due = false;
    };

    View& entry(Plot* view);
    static bool isShown(const Plot* plot);
    void wake();
    void paint();

    QVector<View> plots;
    QTimer timer;
    QElapsedTimer sinceFrame; ///< since the start of the last one
    int wait;                 ///< from that start to the next one, ms
    double costBefore = 0;    ///< of the last frame, ms
    double rest;              ///< what painting has left of its part of the time, ms
};

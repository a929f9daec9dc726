#include "app/refreshclock.h"

#include "graph/plot.h"

#include <QCoreApplication>
#include <QEvent>
#include <QSet>

#include <algorithm>

namespace {
constexpr int quickPeriod = 16;  // 60 a second
constexpr int framePeriod = 40;  // 25 a second
constexpr double shortFrame = 4; // up to it there are quick ones; then painting keeps to its part of the time
constexpr double longFrame = 25; // from here on the frames come further apart
constexpr double paintingPart = 0.25;
constexpr double mostRest = 750;  // ms: three seconds of nothing to paint
constexpr int gatheringTime = 10; // after a quiet time, for samples of other loggers to join the frame
} // namespace

RefreshClock::RefreshClock(QObject* parent)
    : QObject(parent)
    , wait(framePeriod)
    , rest(mostRest)
{
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &RefreshClock::paint);
}

int RefreshClock::period(double frameMs, bool hasRest)
{
    constexpr double forOthers = 1.5; // of a frame's time, with the frame
    if (frameMs > longFrame)
        return int(2 * frameMs);
    if (hasRest)
        return qMax(quickPeriod, int(forOthers * frameMs));
    return qBound(quickPeriod, int(quickPeriod * frameMs / shortFrame), framePeriod);
}

RefreshClock::View& RefreshClock::entry(Plot* view)
{
    for (View& known : plots) {
        if (known.plot == view)
            return known;
    }
    view->installEventFilter(this);
    plots.append({view, false});
    return plots.last();
}

void RefreshClock::mark(Plot* view)
{
    entry(view).due = true;
    if (isShown(view))
        wake();
}

bool RefreshClock::isShown(const Plot* plot)
{
    return plot && plot->isVisible() && !plot->window()->isMinimized();
}

bool RefreshClock::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() == QEvent::Show)
        wake();
    return QObject::eventFilter(object, event);
}

void RefreshClock::wake()
{
    if (timer.isActive())
        return;
    const qint64 passed = sinceFrame.isValid() ? sinceFrame.elapsed() : wait;
    timer.start(int(qMax<qint64>(gatheringTime, wait - passed)));
}

void RefreshClock::paint()
{
    const double gained = sinceFrame.isValid() ? paintingPart * double(sinceFrame.elapsed()) : 0;
    sinceFrame.start();
    QSet<QWidget*> windows;
    for (View& view : plots) {
        if (!view.due || !isShown(view.plot))
            continue;
        view.due = false;
        view.plot->Update();
        windows.insert(view.plot->window());
    }
    if (windows.isEmpty())
        return;
    // Painted now and not whenever the queue is empty: a stream of samples would keep pushing it back.
    for (QWidget* window : qAsConst(windows))
        QCoreApplication::sendPostedEvents(window, QEvent::UpdateRequest);
    const double ms = double(sinceFrame.nsecsElapsed()) * 1e-6;
    // One frame that laid out its axes does not make the next ones rare; one that held up the thread does.
    rest = qBound(0.0, rest + gained - ms, mostRest);
    wait = period(ms > longFrame ? ms : std::min(ms, costBefore), rest > 0);
    costBefore = ms;
    Q_EMIT painted(int(ms));
}

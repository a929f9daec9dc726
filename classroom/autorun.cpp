#include "classroom/autorun.h"

#include <cmath>

namespace {

constexpr int secondsBetween = 2; // of runs that begin at once, so that a person can step in

int secondsLeft(qint64 ms)
{
    return ms > 0 ? int((ms + 999) / 1000) : 0;
}

} // namespace

AutoRun::AutoRun(const World& world, QObject* parent)
    : QObject(parent)
    , world(world)
{
}

void AutoRun::arm(const AutoRunPlan& wanted, qint64 now)
{
    plan = wanted;
    done = 0;
    wait(now);
    tick(now);
}

void AutoRun::wait(qint64 now)
{
    at = State::Waiting;
    time = from = now;
    isDue = isKnown = false;
    for (bool& before : wasBefore)
        before = false;
    Q_EMIT changed();
}

bool AutoRun::giveUp()
{
    if (!isOn())
        return false;
    const bool isWaiting = at == State::Waiting;
    const int begun = done + (isWaiting ? 0 : 1);
    QString line;
    if (plan.times > 1)
        line = tr("Given up: %1 of %2 runs were made.").arg(begun).arg(plan.times);
    else if (isWaiting)
        line = tr("Given up: no run begins by itself.");
    end(line);
    return true;
}

void AutoRun::end(const QString& line)
{
    at = State::Off;
    Q_EMIT changed();
    if (!line.isEmpty())
        Q_EMIT told(line);
}

void AutoRun::tick(qint64 now)
{
    time = now;
    switch (at) {
    case State::Waiting:
        if (!world.isAnyoneThere()) {
            end(tr("No logger is connected any more, so no run begins by itself."));
            return;
        }
        if (plan.begin == AutoRunPlan::Begin::Level)
            lookAtLevel();
        else if (now >= from + 1000 * qint64(plan.begin == AutoRunPlan::Begin::Countdown ? plan.countdown
                                             : done > 0                                  ? secondsBetween
                                                                                         : 0))
            isDue = true;
        if (isDue && world.isFree())
            begin();
        break;
    case State::Running:
        if (plan.stopAfter > 0 && now - from >= qint64(plan.stopAfter * 1000)) {
            at = State::Stopping;
            world.stop();
        }
        break;
    case State::Stopping:
    case State::Off:
        break;
    }
    Q_EMIT changed();
}

/// All: everybody of whom something is known is beyond it, and somebody was not.
void AutoRun::lookAtLevel()
{
    const bool isForAll = plan.group == AutoRunPlan::allGroups;
    bool isAnyPast = false;
    bool isAnyBefore = false;
    isKnown = false;
    for (int slot = 0; slot < mostLoggers; ++slot) {
        const double value = plan.group < 0 || plan.group == slot ? world.value(slot) : qQNaN();
        if (!std::isfinite(value))
            continue;
        isKnown = true;
        const bool isBeyond = plan.isRising ? value > plan.level : value < plan.level;
        if (!isBeyond)
            wasBefore[slot] = isAnyBefore = true;
        else if (wasBefore[slot])
            isAnyPast = true;
    }
    if (isAnyPast && !(isForAll && isAnyBefore))
        isDue = true;
}

void AutoRun::begin()
{
    world.start();
    if (at == State::Waiting)
        end(tr("The run could not begin by itself."));
}

void AutoRun::noteBegun(qint64 now)
{
    if (!isOn())
        return;
    if (plan.times == 1 && plan.stopAfter <= 0) { // the rest goes as always
        end({});
        return;
    }
    at = State::Running;
    time = from = now;
    isFirst = true;
    Q_EMIT changed();
}

void AutoRun::noteSample(qint64 now)
{
    if (at == State::Running && isFirst)
        from = now;
    isFirst = false;
}

void AutoRun::noteEnded(qint64 now, bool isEmpty)
{
    if (at != State::Running && at != State::Stopping)
        return;
    ++done;
    if (isEmpty)
        end(tr("The run brought no samples, so there is no other."));
    else if (done < plan.times)
        wait(now);
    else
        end(plan.times > 1 ? tr("%1 runs were made.").arg(done) : QString());
}

QString AutoRun::counted() const
{
    return plan.times > 1 ? tr("Run %1 of %2").arg(done + 1).arg(plan.times) : tr("The run");
}

QString AutoRun::text() const
{
    switch (at) {
    case State::Off:
        return {};
    case State::Stopping:
        return tr("%1 is being stopped.").arg(counted());
    case State::Running:
        return plan.stopAfter > 0 ? tr("%1 stops in %2 s.")
                                        .arg(counted())
                                        .arg(secondsLeft(from + qint64(plan.stopAfter * 1000) - time))
                                  : tr("%1 is on.").arg(counted());
    case State::Waiting:
        break;
    }
    if (isDue)
        return tr("%1 begins as soon as nothing else is going on.").arg(counted());
    if (plan.begin == AutoRunPlan::Begin::Level)
        return tr("%1 begins when %2.").arg(counted(), plan.condition) +
               (isKnown ? QString() : QLatin1Char(' ') + tr("No value has come yet."));
    const int seconds = plan.begin == AutoRunPlan::Begin::Countdown ? plan.countdown : secondsBetween;
    return tr("%1 begins in %2 s.").arg(counted()).arg(secondsLeft(from + 1000 * qint64(seconds) - time));
}

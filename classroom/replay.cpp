#include "classroom/replay.h"

#include "classroom/multiconnectionsmanager.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

/// Times of a file may go back; then a row comes when all before it have come.
QVector<double> ascending(QVector<double> times)
{
    if (std::is_sorted(times.cbegin(), times.cend()))
        return times;
    for (int k = 1; k < times.size(); ++k)
        times[k] = qMax(times.at(k), times.at(k - 1));
    return times;
}

PlotState withMarks(const Plot& plot, const PlotState& of)
{
    PlotState state = plot.state();
    state.marks = of.marks;
    state.texts = of.texts;
    return state;
}

} // namespace

Replay::Replay(multiConnectionsManager* manager)
    : QObject(manager)
    , manager(manager)
{
    setObjectName(QStringLiteral("replay"));
}

ExpData* Replay::setOf(const Part& part) const
{
    return part.index < 0 ? manager->dataC() : manager->dataAt(part.index);
}

void Replay::take(const ExpData& set, Part* part)
{
    part->whole = set.content();
    part->times = ascending(part->whole.x);
    part->isFinal = set.finalData;
    part->rows = part->times.size();
}

bool Replay::begin()
{
    end();
    QVector<Part> all;
    double first = std::numeric_limits<double>::infinity();
    double last = -first;
    bool isAnyTimed = false;
    for (int i = -1; i < manager->nDefTembrins(); ++i) {
        Part part;
        part.index = i;
        const ExpData& set = *setOf(part);
        if (set.getXSize() == 0)
            continue;
        take(set, &part);
        first = qMin(first, part.times.constFirst());
        last = qMax(last, part.times.constLast());
        isAnyTimed = isAnyTimed || set.dt > 0;
        all.append(part);
    }
    if (!(first < last))
        return false;
    for (Part& part : all)
        hideMarks(&part);
    parts = all;
    from = at = first;
    to = last;
    hasTimes = isAnyTimed;
    for (Part& part : parts)
        showUntil(&part, at);
    Q_EMIT begun();
    return true;
}

int Replay::rows() const
{
    int most = 0;
    for (const Part& part : parts)
        most = qMax(most, part.rows);
    return most;
}

int Replay::most() const
{
    int rows = 0;
    for (const Part& part : parts)
        rows = qMax(rows, part.times.size());
    return rows;
}

/// They belong to a curve that is not there yet.
void Replay::hideMarks(Part* part)
{
    for (Plot* plot : manager->graphsOf(part->index)) {
        const PlotState state = plot->state();
        if (state.marks.isEmpty())
            continue;
        part->marks.append({plot, state});
        plot->setState(state, withMarks(*plot, {}));
    }
}

void Replay::showMarks(const Part& part)
{
    for (const auto& [plot, state] : part.marks) {
        if (plot)
            plot->setState(plot->state(), withMarks(*plot, state));
    }
}

/// Nobody has put something else in its place.
bool Replay::isOurs(const Part& part) const
{
    const ExpData* const set = setOf(part);
    return set->getXSize() == part.rows && set->dt == part.whole.dt && set->isLike(part.whole);
}

void Replay::showUntil(Part* part, double time)
{
    const auto* const end = std::upper_bound(part->times.cbegin(), part->times.cend(), time);
    const int rows = int(end - part->times.cbegin());
    if (rows == part->rows || !isOurs(*part))
        return;
    const bool isLonger = rows > part->rows;
    setOf(*part)->showFirst(part->whole, rows);
    part->rows = rows;
    for (Plot* plot : isLonger ? QVector<Plot*>() : manager->viewsOf(part->index))
        plot->followAnew();
    Q_EMIT moved(part->index, isLonger);
}

void Replay::moveTo(double time)
{
    at = qBound(from, time, to);
    for (Part& part : parts)
        showUntil(&part, at);
}

void Replay::showWhole(const Part& part)
{
    if (!isOurs(part))
        return;
    ExpData* const set = setOf(part);
    set->showWhole(part.whole);
    set->finalData = part.isFinal;
}

void Replay::end()
{
    const QVector<Part> all = std::exchange(parts, {});
    if (all.isEmpty())
        return;
    for (const Part& part : all) {
        if (!isOurs(part))
            continue;
        showWhole(part);
        for (Plot* plot : manager->viewsOf(part.index))
            plot->followAnew();
        Q_EMIT moved(part.index, false);
        showMarks(part);
    }
    Q_EMIT ended();
}

void Replay::aside(const std::function<void()>& change)
{
    QVector<Part> all = std::exchange(parts, {});
    for (const Part& part : qAsConst(all))
        showWhole(part);
    change();
    for (Part& part : all)
        take(*setOf(part), &part);
    parts = all;
    for (Part& part : parts)
        showUntil(&part, at);
}

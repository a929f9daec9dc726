#include "app/undosteps.h"

#include "classroom/classrun.h"
#include "classroom/multiconnectionsmanager.h"

#include <algorithm>
#include <utility>

namespace {

bool isSameView(const QPair<QPointer<Plot>, PlotState>& a, const QPair<QPointer<Plot>, PlotState>& b)
{
    return a.first == b.first && a.second.marks == b.second.marks && a.second.modes == b.second.modes &&
           a.second.outs == b.second.outs && a.second.activeSens == b.second.activeSens &&
           a.second.xSensor == b.second.xSensor && a.second.right == b.second.right;
}

constexpr int kindsOfRange = 3;
constexpr int noGraph = -2;

/// Where a channel has one of its ranges: its own, that of the class, that of bars.
struct RangePlace
{
    bool& isSet;
    double& min;
    double& max;

    static RangePlace of(Sensor& sensor, int kind)
    {
        if (kind == 0)
            return {sensor.readSetMinMax, sensor.minView, sensor.maxView};
        if (kind == 1)
            return {sensor.readClassSetMinMax, sensor.classMinView, sensor.classMaxView};
        return {sensor.barUserScale, sensor.barUserMin, sensor.barUserMax};
    }
};

QVector<HandRange> rangesOf(const ExpData& set)
{
    QVector<HandRange> ranges;
    for (int i = 0; i < set.getNSens() * kindsOfRange; ++i) {
        const SensorPtr& sensor = set.getSens(i / kindsOfRange);
        HandRange range;
        if (sensor) {
            const RangePlace at = RangePlace::of(*sensor, i % kindsOfRange);
            range = at.isSet ? HandRange{true, at.min, at.max} : HandRange();
        }
        ranges.append(range);
    }
    return ranges;
}

/// An automatic range follows by itself.
void setRanges(const ExpData& set, const QVector<HandRange>& present, const QVector<HandRange>& wanted)
{
    for (int i = 0; i < std::min({set.getNSens() * kindsOfRange, present.size(), wanted.size()}); ++i) {
        const SensorPtr& sensor = set.getSens(i / kindsOfRange);
        if (!sensor || wanted[i] == present[i])
            continue;
        const RangePlace at = RangePlace::of(*sensor, i % kindsOfRange);
        at.isSet = wanted[i].isSet;
        at.min = wanted[i].isSet ? wanted[i].min : at.min;
        at.max = wanted[i].isSet ? wanted[i].max : at.max;
    }
}

} // namespace

bool operator==(const HandRange& a, const HandRange& b)
{
    return a.isSet == b.isSet && a.min == b.min && a.max == b.max;
}

UndoSteps::UndoSteps(multiConnectionsManager* manager, QObject* parent)
    : QObject(parent)
    , manager(manager)
{
}

void UndoSteps::watch(Plot* plot)
{
    const int index = plot->getIndex();
    connect(plot, &Plot::changing, this, [this, index](bool isOfSamples) { begin(index, isOfSamples); });
    connect(plot, &Plot::changed, this, [this, index](const QString& step) { end(index, step); });
    connect(plot, &Plot::begunAnew, this, [this, index] { forget(index); });
}

// --- What a graph is ---

ExpData* UndoSteps::setOf(int index) const
{
    return index < 0 ? manager->dataC() : manager->dataAt(index);
}

UndoSteps::State UndoSteps::stateOf(int index) const
{
    const ExpData* const set = setOf(index);
    State state;
    for (Plot* plot : manager->graphsOf(index))
        state.views.append({plot, plot->state()});
    state.ranges = rangesOf(*set);
    return state;
}

UndoSteps::State UndoSteps::faces() const
{
    State state;
    for (int i = -1; i < manager->nDefTembrins(); ++i) {
        for (Plot* plot : manager->graphsOf(i))
            state.views.append({plot, plot->state()});
    }
    return state;
}

/// All but the samples.
bool UndoSteps::isSameFace(const State& a, const State& b)
{
    // A view that was built in between is as nobody touched it.
    const int views = std::min(a.views.size(), b.views.size());
    return a.ranges == b.ranges &&
           std::equal(a.views.cbegin(), a.views.cbegin() + views, b.views.cbegin(), isSameView);
}

// --- Steps as they are made ---

void UndoSteps::begin(int index, bool isOfSamples)
{
    Open& present = open[index];
    if (present.depth++ == 0)
        present.before = stateOf(index);
    if (!isOfSamples || !present.before)
        return;
    present.isOfSamples = true;
    present.before->content = setOf(index)->content();
    present.channel = qMax(0, setOf(index)->getSelectedSensor());
}

void UndoSteps::end(int index, const QString& name)
{
    const auto found = open.find(index);
    if (found == open.end())
        return;
    if (--found->depth > 0) {
        found->inner = name;
        return;
    }
    const Open past = *found;
    open.erase(found);
    if (!past.before)
        return;
    Step step;
    step.index = index;
    step.name = past.inner.isEmpty() ? name : past.inner;
    step.before = *past.before;
    step.after = stateOf(index);
    step.isOfSamples = past.isOfSamples;
    if (isSameFace(step.before, step.after) &&
        (!step.isOfSamples || setOf(index)->holds(step.before.content)))
        return;
    if (step.isOfSamples) {
        step.after.content = setOf(index)->content();
        step.what = setOf(index)->stepSince(step.before.content, past.channel);
    }
    undone.clear();
    add(step);
}

void UndoSteps::add(const Step& step)
{
    done.append(step);
    if (done.size() > most) {
        const Step first = done.takeFirst();
        if (first.isOfSamples)
            older.append(first);
    }
    Q_EMIT changed();
}

void UndoSteps::prepare()
{
    prepared = faces();
}

void UndoSteps::note(const QString& name, const std::function<bool(bool isBack)>& move)
{
    Step step;
    step.index = noGraph;
    step.name = name;
    step.own = move;
    step.before = std::exchange(prepared, State());
    undone.clear();
    add(step);
}

void UndoSteps::forget(int index)
{
    const auto isOfIt = [index](const Step& step) { return step.index == index; };
    for (QVector<Step>* steps : {&done, &undone, &older})
        steps->erase(std::remove_if(steps->begin(), steps->end(), isOfIt), steps->end());
    if (open.contains(index))
        open[index].before.reset();
    Q_EMIT changed();
}

// --- And as they are kept in a file ---

UndoSteps::History UndoSteps::history(int index) const
{
    History all;
    for (const QVector<Step>* steps : {&older, &done}) {
        for (const Step& step : *steps) {
            if (step.index != index || !step.isOfSamples)
                continue;
            if (!all.isOfRaw && !step.isDerivative()) {
                all.isOfRaw = true;
                all.raw = step.before.content;
            }
            all.steps.append(step.what);
        }
    }
    return all;
}

void UndoSteps::restore(int index, QVector<ExpData::Content> contents, const QVector<SampleStep>& steps)
{
    ExpData* const set = setOf(index);
    ExpData::Content present = set->content();
    if (steps.isEmpty() || contents.size() != steps.size() + 1 || !set->isLike(contents.constLast()) ||
        present.x.size() != contents.constLast().x.size())
        return;
    present.cuts = contents.constLast().cuts; // which stay cut for whoever joins
    set->setContent(present);
    // What is there has the digits of the file, so what follows from it by steps back has them too.
    contents.last() = present;
    for (int i = steps.size() - 1; i >= 0 && steps.at(i).isAppended(); --i)
        contents[i] = contents.at(i + 1).withoutLastChannel();
    for (int i = 0; i < steps.size(); ++i) {
        Step step;
        step.index = index;
        step.name = nameOf(steps.at(i).kind);
        step.before.content = contents.at(i);
        step.after.content = contents.at(i + 1);
        step.before.content.isAveraged = step.after.content.isAveraged = present.isAveraged;
        step.isOfSamples = true;
        step.what = steps.at(i);
        add(step);
    }
}

QString UndoSteps::nameOf(SampleStep::Kind kind)
{
    switch (kind) {
    case SampleStep::Kind::Smooth:
        return tr("Smooth");
    case SampleStep::Kind::Derivative:
        return tr("Derivative");
    case SampleStep::Kind::Edit:
        return tr("Value");
    case SampleStep::Kind::Formula:
        return tr("Channel by formula");
    case SampleStep::Kind::Remove:
        return tr("Remove channel");
    case SampleStep::Kind::Crop:
        break;
    }
    return tr("Crop");
}

// --- And as they are taken back ---

QString UndoSteps::nameOf(const Step& step) const
{
    if (step.own)
        return step.name;
    const QString graph = step.index < 0 ? tr("class") : manager->groupName(step.index);
    return QStringLiteral("%1, %2").arg(step.name, graph);
}

QStringList UndoSteps::names(const QVector<Step>& steps) const
{
    QStringList list;
    for (const Step& step : steps)
        list.prepend(nameOf(step));
    return list;
}

void UndoSteps::undo(int count)
{
    while (count-- > 0 && move(&done, &undone, true)) {
    }
}

void UndoSteps::redo(int count)
{
    while (count-- > 0 && move(&undone, &done, false)) {
    }
}

bool UndoSteps::move(QVector<Step>* from, QVector<Step>* to, bool isBack)
{
    if (from->isEmpty())
        return false;
    Step step = from->constLast();
    const bool isBusy =
        std::any_of(open.cbegin(), open.cend(), [](const Open& one) { return one.before.has_value(); });
    if (isBusy) {
        Q_EMIT told(tr("First let go of the marker, or close the note."));
        return false;
    }
    const bool isOfPast = step.isOfSamples && !step.isDerivative();
    if (isOfPast && manager->isMeasuring()) {
        Q_EMIT told(manager->isAnyRunning()
                        ? tr("%1: that goes when no logger is running.").arg(nameOf(step))
                        : tr("%1: that goes when the simulation has been restarted.").arg(nameOf(step)));
        return false;
    }
    from->removeLast();
    State& present = isBack ? step.after : step.before;
    if (step.own)
        present = faces();
    else
        takeTexts(&present);
    const bool isDone = apply(step, isBack);
    if (isDone)
        to->append(step);
    Q_EMIT changed();
    Q_EMIT told(!isDone  ? tr("%1: that no longer goes, the graph has other samples.").arg(nameOf(step))
                : isBack ? tr("Taken back: %1").arg(nameOf(step))
                         : tr("Done again: %1").arg(nameOf(step)));
    return isDone;
}

/// False, with nothing changed, if the set is not what the step left or found. In the class that is so for
/// a group whose other sensor was chosen since, and which then joins it anew.
bool UndoSteps::applySamples(const Step& step, bool isBack)
{
    ExpData* const set = setOf(step.index);
    const ExpData::Content& expected = (isBack ? step.after : step.before).content;
    if (!set->isLike(expected))
        return false;
    if (step.isDerivative())
        return applyDerivative(step, isBack);
    const QVector<int> others = set->channelsUnlike(expected);
    if (step.index >= 0 && !set->holds(expected))
        return false;
    set->setContent((isBack ? step.before : step.after).content);
    if (step.index < 0)
        joinAgain(others);
    else if (step.what.kind == SampleStep::Kind::Edit)
        joinAgain({step.index});
    return true;
}

/// The program may have found better places since for the texts of the same marks.
void UndoSteps::takeTexts(State* present)
{
    for (auto& [plot, state] : present->views) {
        const PlotState now = plot ? plot->state() : PlotState();
        if (now.marks == state.marks) {
            state.marks = now.marks;
            state.texts = now.texts;
        }
    }
}

/// Where they stood beside the same marks.
void UndoSteps::putTexts(const State& wanted)
{
    for (const auto& [plot, state] : wanted.views) {
        const PlotState now = plot ? plot->state() : PlotState();
        if (!plot || now.marks.isEmpty() || !(now.marks == state.marks))
            continue;
        PlotState moved = now;
        moved.marks = state.marks;
        moved.texts = state.texts;
        plot->setState(now, moved);
    }
}

void UndoSteps::joinAgain(const QVector<int>& slotNumbers)
{
    ClassSet& classSet = manager->run().classSet();
    for (const int slot : slotNumbers) {
        if (classSet.isMember(slot))
            classSet.join(slot);
    }
}

/// The channel alone: the others may have grown since.
bool UndoSteps::applyDerivative(const Step& step, bool isBack)
{
    ExpData* const set = setOf(step.index);
    if (isBack) {
        set->dropDerived(step.before.content.sensors.size());
        return true;
    }
    return set->make(step.what) && set->getNSens() == step.after.content.sensors.size();
}

bool UndoSteps::apply(const Step& step, bool isBack)
{
    if (step.own) {
        if (!step.own(isBack))
            return false;
        putTexts(isBack ? step.before : step.after);
        return true;
    }
    ExpData* const set = setOf(step.index);
    const State& present = isBack ? step.after : step.before;
    const State& wanted = isBack ? step.before : step.after;
    const QVector<HandRange> ranges = rangesOf(*set);
    if (step.isOfSamples && !applySamples(step, isBack))
        return false;
    set->setNeedSave(true);
    if (wanted.views.isEmpty()) // a file knows of no ranges but the present ones
        setRanges(*set, rangesOf(*set), ranges);
    else
        setRanges(*set, present.ranges, wanted.ranges);
    if (step.isOfSamples || !(present.ranges == wanted.ranges))
        Q_EMIT edited(step.index);
    if (step.isOfSamples && step.what.kind == SampleStep::Kind::Edit && step.index >= 0)
        Q_EMIT edited(-1); // the class has its values
    for (const auto& [plot, state] : wanted.views) {
        for (const auto& [other, was] : present.views) {
            if (plot && plot == other)
                plot->setState(was, state);
        }
    }
    return true;
}

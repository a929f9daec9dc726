#include "app/keptruns.h"

#include "app/runpicture.h"
#include "app/runrecorder.h"
#include "data/runaverage.h"
#include "persistence/sampleshelf.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

bool hasSamples(const Lesson::Part& part)
{
    return part.isStored && !part.experiment.times.isEmpty();
}

/// To the digits that a file has.
bool isNear(double a, double b)
{
    constexpr double digits = 1e-9;
    return std::abs(a - b) <= digits * std::max(1.0, std::abs(a)) || (std::isnan(a) && std::isnan(b));
}

/// The same memory: nobody has touched it since. Or else the same numbers, gaps too.
bool isSame(const QVector<double>& a, const QVector<double>& b, bool isByValue)
{
    return a.size() == b.size() && (a.isEmpty() || a.constData() == b.constData() ||
                                    (isByValue && std::equal(a.cbegin(), a.cend(), b.cbegin(), isNear)));
}

bool isSame(const Lesson::Part& a, const Lesson::Part& b, bool isByValue)
{
    const QVector<StoredExperiment::Channel>& ours = a.experiment.channels;
    const QVector<StoredExperiment::Channel>& theirs = b.experiment.channels;
    return a.isClass == b.isClass && a.slot == b.slot &&
           isSame(a.experiment.times, b.experiment.times, isByValue) &&
           std::equal(ours.cbegin(), ours.cend(), theirs.cbegin(), theirs.cend(),
                      [&](const auto& one, const auto& other) {
                          return isSame(one.samples, other.samples, isByValue);
                      });
}

/// The samples of all groups in `run`, and of the class where it has none, are in `other`.
bool isWithin(const LessonRun& run, const LessonRun& other, bool isByValue)
{
    return std::all_of(run.parts.cbegin(), run.parts.cend(), [&](const Lesson::Part& part) {
        return !hasSamples(part) || (part.isClass && !run.isClassOfFile) ||
               std::any_of(other.parts.cbegin(), other.parts.cend(),
                           [&](const Lesson::Part& its) { return isSame(part, its, isByValue); });
    });
}

/// The same bits, where nothing else is left of the other to compare.
bool isWithin(const LessonRun& run, const QVector<SampleShelf::Sums>& sums, const KeptRun& other)
{
    for (int i = 0; i < run.parts.size(); ++i) {
        const Lesson::Part& part = run.parts.at(i);
        bool isFound = !hasSamples(part) || (part.isClass && !run.isClassOfFile);
        for (int at = 0; at < other.outline.parts.size() && !isFound; ++at) {
            const Lesson::Part& its = other.outline.parts.at(at);
            isFound =
                part.isClass == its.isClass && part.slot == its.slot && sums.at(i) == other.shelf->sums(at);
        }
        if (!isFound)
            return false;
    }
    return true;
}

} // namespace

std::optional<LessonRun> KeptRun::whole() const
{
    LessonRun run = outline;
    if (shelf && !shelf->fill(&run))
        return {};
    return run;
}

double KeptRun::duration() const
{
    double last = 0;
    for (const Lesson::Part& part : outline.parts) {
        if (hasSamples(part) && part.experiment.rate > 0)
            last = std::max(last, part.experiment.times.constLast());
    }
    return last;
}

const Lesson::Part* KeptRun::partOf(int index, const QString& group) const
{
    const Lesson::Part* inPlace = nullptr;
    for (const Lesson::Part& part : outline.parts) {
        if (!hasSamples(part) || part.isClass != (index < 0))
            continue;
        if (part.isClass || part.group == group)
            return &part;
        if (part.slot == index && (part.group.isEmpty() || group.isEmpty()))
            inPlace = &part;
    }
    return inPlace;
}

QStringList KeptRun::groups() const
{
    QStringList names;
    for (const Lesson::Part& part : outline.parts) {
        if (!part.isClass && hasSamples(part) && (part.isInClass || outline.isClassOfFile))
            names.append(part.group);
    }
    return names;
}

KeptRuns::KeptRuns(RunRecorder* recorder, QObject* parent)
    : QObject(parent)
    , recorder(recorder)
{
}

int KeptRuns::place(int id) const
{
    const auto* const found =
        std::find_if(runs.cbegin(), runs.cend(), [id](const KeptRun& run) { return run.id == id; });
    return found == runs.cend() ? -1 : int(found - runs.cbegin());
}

const KeptRun* KeptRuns::find(int id) const
{
    const int at = place(id);
    return at < 0 ? nullptr : &runs.at(at);
}

QVector<const KeptRun*> KeptRuns::pinned() const
{
    QVector<const KeptRun*> some;
    for (const KeptRun& run : runs) {
        if (run.outline.isPinned)
            some.append(&run);
    }
    return some;
}

int KeptRuns::unsaved() const
{
    return int(std::count_if(runs.cbegin(), runs.cend(),
                             [this](const KeptRun& run) { return !run.isSaved && run.id != shownId; }));
}

QVector<int> KeptRuns::ids() const
{
    QVector<int> all;
    for (const KeptRun& run : runs)
        all.append(run.id);
    return all;
}

QImage KeptRuns::picture(int id, const QSize& size)
{
    const KeptRun* const run = find(id);
    if (!run)
        return {};
    QImage& image = pictures[id];
    if (image.size() != size)
        image = RunPicture::of(run->whole().value_or(run->outline), size);
    return image;
}

// --- What comes into the list ---

/// The place of the same run, as it was before it went into a file or after; -1 for none.
int KeptRuns::equal(const LessonRun& run) const
{
    const auto* const found = std::find_if(runs.cbegin(), runs.cend(), [&](const KeptRun& own) {
        if (own.outline.begun.toSecsSinceEpoch() != run.begun.toSecsSinceEpoch())
            return false;
        const std::optional<LessonRun> its = own.whole();
        return its && isWithin(run, *its, true) && isWithin(*its, run, true);
    });
    return found == runs.cend() ? -1 : int(found - runs.cbegin());
}

/// The place of one that has all of its samples; -1 for none.
int KeptRuns::holder(const LessonRun& run) const
{
    QVector<SampleShelf::Sums> sums;
    const auto* const found = std::find_if(runs.cbegin(), runs.cend(), [&](const KeptRun& other) {
        if (!other.shelf)
            return isWithin(run, other.outline, false);
        for (int i = sums.size(); i < run.parts.size(); ++i)
            sums.append(SampleShelf::sumsOf(run.parts.at(i).experiment));
        return isWithin(run, sums, other);
    });
    return found == runs.cend() ? -1 : int(found - runs.cbegin());
}

void KeptRuns::keep(const LessonRun& run, bool isSaved, const QString& name)
{
    const QString journal = recorder->keep();
    const int at = place(std::exchange(shownId, 0));
    const int gone = std::exchange(deletedOnScreen, 0);
    const bool isAny = std::any_of(run.parts.cbegin(), run.parts.cend(), hasSamples);
    const int held = isAny ? holder(run) : -1;
    const auto deleted =
        std::find_if(removed.begin(), removed.end(), [gone](const KeptRun& own) { return own.id == gone; });
    if (at >= 0 && isAny)
        replace(&runs[at], run, isSaved, journal);
    else if (isAny && deleted != removed.end())
        replace(&*deleted, run, isSaved, journal); // for whoever takes that back
    else if (held >= 0 && runs.at(held).journal.isEmpty())
        runs[held].journal = journal;
    else if (isAny && held < 0)
        append(run, isSaved, name, journal);
    else
        recorder->refuseKept(journal);
    layDown();
    Q_EMIT changed();
}

/// The run that was shown, with what was changed in it meanwhile.
void KeptRuns::replace(KeptRun* kept, const LessonRun& run, bool isSaved, const QString& journal)
{
    KeptRun& own = *kept;
    const QString itsName = own.outline.name;
    const bool isPinned = own.outline.isPinned;
    own.outline = run;
    own.shelf.reset();
    ++own.change;
    own.outline.name = itsName;
    own.outline.isPinned = isPinned;
    own.isSaved = isSaved;
    own.journal = journal;
    pictures.remove(own.id);
    if (isPinned)
        Q_EMIT pinsChanged();
}

void KeptRuns::keepPart(const LessonRun& run, bool isSaved)
{
    if (holds(run) || std::none_of(run.parts.cbegin(), run.parts.cend(), hasSamples))
        return;
    append(run, isSaved, QString(), QString());
    Q_EMIT changed();
}

void KeptRuns::append(const LessonRun& run, bool isSaved, const QString& name, const QString& journal)
{
    KeptRun own{newId(), run, isSaved, journal, nullptr, 0};
    own.outline.isPinned = false;
    own.outline.name = name.isEmpty() ? tr("Run %1").arg(++lastNumber) : name;
    runs.append(own);
    isAsked = false;
    fitMemory();
}

void KeptRuns::noteShown(int id)
{
    const int at = place(id);
    shownId = at < 0 ? 0 : id;
    deletedOnScreen = 0;
    if (at < 0)
        return;
    quint8 groups = 0;
    for (const Lesson::Part& part : runs.at(at).outline.parts) {
        if (!part.isClass && hasSamples(part))
            groups |= quint8(1u << part.slot);
    }
    recorder->takeKept(std::exchange(runs[at].journal, QString()), groups);
    ++runs[at].change;
    layDown();
    Q_EMIT changed();
}

void KeptRuns::takeLesson(const Lesson& lesson)
{
    const int shown = equal(lesson);
    if (shown >= 0 && runs.at(shown).isSaved)
        shownId = runs.at(shown).id;
    for (const LessonRun& run : lesson.kept) {
        if (equal(run) >= 0)
            continue;
        KeptRun own{newId(), run, true, QString(), nullptr, 0};
        own.outline.isPinned = run.isPinned && pinned().size() < mostPinned;
        runs.append(own);
    }
    fitMemory();
    Q_EMIT changed();
    Q_EMIT pinsChanged();
}

QVector<LessonRun> KeptRuns::forLesson()
{
    QVector<LessonRun> all;
    for (const KeptRun& run : runs) {
        if (run.id == shownId)
            continue;
        if (const std::optional<LessonRun> whole = run.whole())
            all.append(*whole);
        else
            tellUnreadable(run);
    }
    return all;
}

void KeptRuns::noteSaved(const QVector<int>& ids)
{
    for (const int id : ids) {
        const int at = place(id);
        if (at < 0)
            continue;
        runs[at].isSaved = true;
        recorder->removeKept(std::exchange(runs[at].journal, QString()));
    }
    fitMemory();
    Q_EMIT changed();
}

// --- What a person does to it ---

bool KeptRuns::setName(int id, const QString& name)
{
    const int at = place(id);
    if (at < 0)
        return false;
    runs[at].outline.name = name;
    runs[at].isSaved = false;
    Q_EMIT changed();
    Q_EMIT pinsChanged(); // it is named where it is pinned
    return true;
}

void KeptRuns::rename(int id, const QString& name)
{
    const KeptRun* const run = find(id);
    const QString text = name.simplified();
    if (!run || text.isEmpty() || text == run->outline.name)
        return;
    const QString before = run->outline.name;
    Q_EMIT doing();
    setName(id, text);
    Q_EMIT done(tr("Name of %1").arg(text),
                [this, id, before, text](bool isBack) { return setName(id, isBack ? before : text); });
}

bool KeptRuns::setPinned(int id, bool tf)
{
    const int at = place(id);
    if (at < 0)
        return false;
    if (tf && !runs.at(at).outline.isPinned && pinned().size() == mostPinned) {
        Q_EMIT told(tr("Three runs are pinned already: unpin one of them first."));
        return false;
    }
    runs[at].outline.isPinned = tf;
    Q_EMIT changed();
    Q_EMIT pinsChanged();
    return true;
}

void KeptRuns::pin(int id, bool tf)
{
    const KeptRun* const run = find(id);
    if (!run || run->outline.isPinned == tf)
        return;
    Q_EMIT doing();
    if (!setPinned(id, tf))
        return;
    const QString name = find(id)->outline.name;
    Q_EMIT done(tf ? tr("Pin %1").arg(name) : tr("Unpin %1").arg(name),
                [this, id, tf](bool isBack) { return setPinned(id, tf != isBack); });
}

void KeptRuns::average(int first, int second)
{
    const KeptRun* const one = wake(first);
    const KeptRun* const other = wake(second);
    if (!one || !other)
        return;
    LessonRun run = one->outline;
    run.parts.clear();
    for (const Lesson::Part& part : one->outline.parts) {
        const Lesson::Part* const its = other->partOf(part.slot, part.group);
        if (!hasSamples(part) || !its)
            continue;
        Lesson::Part mean = part;
        mean.steps.clear();
        mean.isRawStored = false;
        mean.raw = StoredExperiment();
        mean.experiment = RunAverage::of(part.experiment, its->experiment);
        if (hasSamples(mean))
            run.parts.append(mean);
    }
    if (run.parts.isEmpty()) {
        Q_EMIT told(
            tr("%1 and %2 have no sensor of a group in common.").arg(one->outline.name, other->outline.name));
        return;
    }
    run.name = tr("Average of %1 and %2").arg(one->outline.name, other->outline.name);
    run.isPinned = pinned().size() < mostPinned;
    const int id = newId();
    Q_EMIT doing();
    runs.append({id, run, false, QString(), nullptr, 0});
    fitMemory();
    Q_EMIT changed();
    Q_EMIT pinsChanged();
    Q_EMIT done(run.name,
                [this, id](bool isBack) { return isBack ? takeAway(id) : putBack(id, runs.size()); });
}

bool KeptRuns::takeAway(int id)
{
    const int at = place(id);
    if (at < 0)
        return false;
    if (id == shownId) // what is on the screen stays there
        deletedOnScreen = std::exchange(shownId, 0);
    removed.append(runs.takeAt(at));
    Q_EMIT changed();
    Q_EMIT pinsChanged();
    return true;
}

bool KeptRuns::putBack(int id, int at)
{
    const auto found =
        std::find_if(removed.begin(), removed.end(), [id](const KeptRun& run) { return run.id == id; });
    if (found == removed.end())
        return false;
    KeptRun run = *found;
    removed.erase(found);
    run.outline.isPinned = run.outline.isPinned && pinned().size() < mostPinned;
    runs.insert(std::min(at, runs.size()), run);
    if (id == deletedOnScreen)
        shownId = std::exchange(deletedOnScreen, 0);
    Q_EMIT changed();
    Q_EMIT pinsChanged();
    return true;
}

void KeptRuns::remove(int id)
{
    const int at = place(id);
    if (at < 0)
        return;
    const QString name = runs.at(at).outline.name;
    Q_EMIT doing();
    if (id == shownId)
        Q_EMIT told(tr("%1 is deleted. It stays on the graphs until another run takes its place.").arg(name));
    takeAway(id);
    Q_EMIT done(tr("Delete %1").arg(name),
                [this, id, at](bool isBack) { return isBack ? putBack(id, at) : takeAway(id); });
}

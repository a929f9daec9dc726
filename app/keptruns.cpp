#include "app/keptruns.h"

#include "app/runpicture.h"
#include "app/runrecorder.h"
#include "common/settings.h"
#include "data/runaverage.h"

#include <QSet>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int defaultMemory = 2048; // MB
constexpr qint64 megabyte = 1 << 20;

/// Each once, however many runs have it.
void addSamples(const StoredExperiment& experiment, QSet<const double*>* counted, qint64* bytes)
{
    const auto add = [&](const QVector<double>& samples) {
        if (samples.isEmpty() || counted->contains(samples.constData()))
            return;
        counted->insert(samples.constData());
        *bytes += qint64(samples.size()) * qint64(sizeof(double));
    };
    add(experiment.times);
    for (const StoredExperiment::Channel& channel : experiment.channels)
        add(channel.samples);
}

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

} // namespace

double KeptRun::duration() const
{
    double last = 0;
    for (const Lesson::Part& part : run.parts) {
        if (hasSamples(part) && part.experiment.rate > 0)
            last = std::max(last, part.experiment.times.constLast());
    }
    return last;
}

const Lesson::Part* KeptRun::partOf(int index, const QString& group) const
{
    const Lesson::Part* inPlace = nullptr;
    for (const Lesson::Part& part : run.parts) {
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
    for (const Lesson::Part& part : run.parts) {
        if (!part.isClass && hasSamples(part) && (part.isInClass || run.isClassOfFile))
            names.append(part.group);
    }
    return names;
}

KeptRuns::KeptRuns(RunRecorder* recorder, QObject* parent)
    : QObject(parent)
    , recorder(recorder)
{
}

qint64 KeptRuns::limit()
{
    return qint64(Settings::mainStore().value(Settings::runsMemory, defaultMemory).toInt()) * megabyte;
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
        if (run.run.isPinned)
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

qint64 KeptRuns::size() const
{
    QSet<const double*> counted;
    qint64 bytes = 0;
    for (const QVector<KeptRun>* list : {&runs, &removed}) {
        for (const KeptRun& run : *list) {
            for (const Lesson::Part& part : run.run.parts) {
                addSamples(part.experiment, &counted, &bytes);
                addSamples(part.raw, &counted, &bytes);
            }
        }
    }
    return bytes;
}

QImage KeptRuns::picture(int id, const QSize& size)
{
    const KeptRun* const run = find(id);
    if (!run)
        return {};
    QImage& image = pictures[id];
    if (image.size() != size)
        image = RunPicture::of(run->run, size);
    return image;
}

// --- What comes into the list ---

/// The place of the same run, as it was before it went into a file or after; -1 for none.
int KeptRuns::equal(const LessonRun& run) const
{
    const auto* const found = std::find_if(runs.cbegin(), runs.cend(), [&](const KeptRun& own) {
        return own.run.begun.toSecsSinceEpoch() == run.begun.toSecsSinceEpoch() &&
               isWithin(run, own.run, true) && isWithin(own.run, run, true);
    });
    return found == runs.cend() ? -1 : int(found - runs.cbegin());
}

/// The place of one that has all of its samples; -1 for none.
int KeptRuns::holder(const LessonRun& run) const
{
    const auto* const found = std::find_if(
        runs.cbegin(), runs.cend(), [&](const KeptRun& other) { return isWithin(run, other.run, false); });
    return found == runs.cend() ? -1 : int(found - runs.cbegin());
}

void KeptRuns::keep(const LessonRun& run, bool isSaved, const QString& name)
{
    const QString journal = recorder->keep();
    const int at = place(std::exchange(shownId, 0));
    const bool isAny = std::any_of(run.parts.cbegin(), run.parts.cend(), hasSamples);
    const int held = isAny ? holder(run) : -1;
    if (at >= 0 && isAny)
        replace(at, run, isSaved, journal);
    else if (held >= 0 && runs.at(held).journal.isEmpty())
        runs[held].journal = journal;
    else if (isAny && held < 0)
        append(run, isSaved, name, journal);
    else
        recorder->refuseKept(journal);
    Q_EMIT changed();
}

/// The run that was shown, with what was changed in it meanwhile.
void KeptRuns::replace(int at, const LessonRun& run, bool isSaved, const QString& journal)
{
    KeptRun& own = runs[at];
    const QString itsName = own.run.name;
    const bool isPinned = own.run.isPinned;
    own.run = run;
    own.run.name = itsName;
    own.run.isPinned = isPinned;
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
    KeptRun own{newId(), run, isSaved, journal};
    own.run.isPinned = false;
    own.run.name = name.isEmpty() ? tr("Run %1").arg(++lastNumber) : name;
    runs.append(own);
    isAsked = false;
    fitMemory();
}

void KeptRuns::noteShown(int id)
{
    const int at = place(id);
    shownId = at < 0 ? 0 : id;
    if (at < 0)
        return;
    quint8 groups = 0;
    for (const Lesson::Part& part : runs.at(at).run.parts) {
        if (!part.isClass && hasSamples(part))
            groups |= quint8(1u << part.slot);
    }
    recorder->takeKept(std::exchange(runs[at].journal, QString()), groups);
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
        KeptRun own{newId(), run, true, QString()};
        own.run.isPinned = run.isPinned && pinned().size() < mostPinned;
        runs.append(own);
    }
    fitMemory();
    Q_EMIT changed();
    Q_EMIT pinsChanged();
}

QVector<LessonRun> KeptRuns::forLesson() const
{
    QVector<LessonRun> all;
    for (const KeptRun& run : runs) {
        if (run.id != shownId)
            all.append(run.run);
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
    runs[at].run.name = name;
    runs[at].isSaved = false;
    Q_EMIT changed();
    Q_EMIT pinsChanged(); // it is named where it is pinned
    return true;
}

void KeptRuns::rename(int id, const QString& name)
{
    const KeptRun* const run = find(id);
    const QString text = name.simplified();
    if (!run || text.isEmpty() || text == run->run.name)
        return;
    const QString before = run->run.name;
    setName(id, text);
    Q_EMIT done(tr("Name of %1").arg(text),
                [this, id, before, text](bool isBack) { return setName(id, isBack ? before : text); });
}

bool KeptRuns::setPinned(int id, bool tf)
{
    const int at = place(id);
    if (at < 0)
        return false;
    if (tf && !runs.at(at).run.isPinned && pinned().size() == mostPinned) {
        Q_EMIT told(tr("Three runs are pinned already: unpin one of them first."));
        return false;
    }
    runs[at].run.isPinned = tf;
    Q_EMIT changed();
    Q_EMIT pinsChanged();
    return true;
}

void KeptRuns::pin(int id, bool tf)
{
    const KeptRun* const run = find(id);
    if (!run || run->run.isPinned == tf || !setPinned(id, tf))
        return;
    const QString name = find(id)->run.name;
    Q_EMIT done(tf ? tr("Pin %1").arg(name) : tr("Unpin %1").arg(name),
                [this, id, tf](bool isBack) { return setPinned(id, tf != isBack); });
}

void KeptRuns::average(int first, int second)
{
    const KeptRun* const one = find(first);
    const KeptRun* const other = find(second);
    if (!one || !other)
        return;
    LessonRun run = one->run;
    run.parts.clear();
    for (const Lesson::Part& part : one->run.parts) {
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
        Q_EMIT told(tr("%1 and %2 have no sensor of a group in common.").arg(one->run.name, other->run.name));
        return;
    }
    run.name = tr("Average of %1 and %2").arg(one->run.name, other->run.name);
    run.isPinned = pinned().size() < mostPinned;
    const int id = newId();
    runs.append({id, run, false, QString()});
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
    if (id == shownId)
        shownId = 0; // what is on the screen stays there
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
    run.run.isPinned = run.run.isPinned && pinned().size() < mostPinned;
    runs.insert(std::min(at, runs.size()), run);
    Q_EMIT changed();
    Q_EMIT pinsChanged();
    return true;
}

void KeptRuns::remove(int id)
{
    const int at = place(id);
    if (at < 0)
        return;
    const QString name = runs.at(at).run.name;
    takeAway(id);
    Q_EMIT done(tr("Delete %1").arg(name),
                [this, id, at](bool isBack) { return isBack ? putBack(id, at) : takeAway(id); });
}

// --- Memory ---

/// First what was deleted, then the oldest that is in a file.
void KeptRuns::fitMemory()
{
    const qint64 most = limit();
    while (size() > most) {
        if (!removed.isEmpty()) {
            recorder->refuseKept(removed.takeFirst().journal);
            continue;
        }
        const auto* const oldest = std::find_if(runs.cbegin(), runs.cend(), [this](const KeptRun& run) {
            return run.isSaved && !run.run.isPinned && run.id != shownId;
        });
        if (oldest == runs.cend())
            return;
        Q_EMIT told(tr("%1 is no longer in the list of runs, which is full: it is in its file.")
                        .arg(oldest->run.name));
        drop(oldest->id);
    }
}

int KeptRuns::tooMuch() const
{
    if (isAsked || size() <= limit())
        return 0;
    const auto* const oldest = std::find_if(runs.cbegin(), runs.cend(), [this](const KeptRun& run) {
        return run.id != shownId && !run.run.isPinned;
    });
    return oldest == runs.cend() ? 0 : oldest->id;
}

void KeptRuns::drop(int id)
{
    const int at = place(id);
    if (at < 0)
        return;
    recorder->refuseKept(runs.at(at).journal);
    pictures.remove(id);
    runs.removeAt(at);
    Q_EMIT changed();
}

#include "app/keptruns.h"

#include "app/runrecorder.h"
#include "common/settings.h"
#include "persistence/sampleshelf.h"

#include <QRunnable>
#include <QSet>

#include <algorithm>
#include <utility>

// What the runs take of the memory and of the disk.

namespace {

constexpr int defaultMemory = 2048; // MB
constexpr int defaultLarge = 4;     // MB
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

qint64 bytesOf(const LessonRun& run, QSet<const double*>* counted)
{
    qint64 bytes = 0;
    for (const Lesson::Part& part : run.parts) {
        addSamples(part.experiment, counted, &bytes);
        addSamples(part.raw, counted, &bytes);
    }
    return bytes;
}

/// Lays the samples of a run on a shelf.
class ShelfWriter : public QRunnable
{
public:
    using Done = std::function<void(const std::shared_ptr<const SampleShelf>&)>;

    ShelfWriter(LessonRun run, Done done)
        : samples(std::move(run))
        , done(std::move(done))
    {
    }

    void run() override
    {
        const std::shared_ptr<const SampleShelf> shelf = SampleShelf::of(samples);
        samples = {}; // let go before whoever is told asks for the room
        done(shelf);
    }

private:
    LessonRun samples;
    const Done done;
};

} // namespace

qint64 KeptRuns::large()
{
    return qint64(Settings::mainStore().value(Settings::runsOnDisk, defaultLarge).toInt()) * megabyte;
}

qint64 KeptRuns::limit()
{
    return qint64(Settings::mainStore().value(Settings::runsMemory, defaultMemory).toInt()) * megabyte;
}

qint64 KeptRuns::size() const
{
    QSet<const double*> counted;
    qint64 bytes = 0;
    for (const QVector<KeptRun>* list : {&runs, &removed}) {
        for (const KeptRun& run : *list) {
            bytes += bytesOf(run.outline, &counted);
            if (run.shelf)
                bytes += run.shelf->size();
        }
    }
    return bytes;
}

const KeptRun* KeptRuns::wake(int id)
{
    KeptRun* const run = known(id);
    if (!run || !run->shelf)
        return run;
    if (!run->shelf->fill(&run->outline)) {
        tellUnreadable(*run);
        return nullptr;
    }
    run->shelf.reset();
    ++run->change;
    return run;
}

void KeptRuns::tellUnreadable(const KeptRun& run)
{
    Q_EMIT told(tr("The samples of %1 can't be read from the disk.").arg(run.outline.name));
}

KeptRun* KeptRuns::known(int id)
{
    for (QVector<KeptRun>* list : {&runs, &removed}) {
        const auto found =
            std::find_if(list->begin(), list->end(), [id](const KeptRun& run) { return run.id == id; });
        if (found != list->end())
            return found;
    }
    return nullptr;
}

/// Large runs that are not on the screen.
void KeptRuns::layDown()
{
    const qint64 least = large();
    for (const KeptRun& run : qAsConst(runs)) {
        QSet<const double*> counted;
        const int id = run.id;
        const int change = run.change;
        if (id == shownId || run.shelf || onTheWay.value(id, -1) == change ||
            bytesOf(run.outline, &counted) < least)
            continue;
        onTheWay[id] = change;
        writers.start(
            new ShelfWriter(run.outline, [this, id, change](const std::shared_ptr<const SampleShelf>& shelf) {
                QMetaObject::invokeMethod(
                    this, [this, id, change, shelf] { takeShelf(id, change, shelf); }, Qt::QueuedConnection);
            }));
    }
}

/// What was shown or changed meanwhile stays in memory; so does what the disk did not take.
void KeptRuns::takeShelf(int id, int change, const std::shared_ptr<const SampleShelf>& shelf)
{
    KeptRun* const run = known(id);
    if (!shelf || !run || run->change != change || id == shownId)
        return;
    run->shelf = shelf;
    run->outline = SampleShelf::outlineOf(run->outline);
    if (run->outline.isPinned)
        Q_EMIT pinsChanged(); // the graphs let go of the samples too
}

/// First what was deleted, then the oldest that is in a file.
void KeptRuns::fitMemory()
{
    layDown();
    const qint64 most = limit();
    while (size() > most) {
        if (!removed.isEmpty()) {
            recorder->refuseKept(removed.takeFirst().journal);
            continue;
        }
        const auto* const oldest = std::find_if(runs.cbegin(), runs.cend(), [this](const KeptRun& run) {
            return run.isSaved && !run.outline.isPinned && run.id != shownId;
        });
        if (oldest == runs.cend())
            return;
        Q_EMIT told(tr("%1 is no longer in the list of runs, which is full: it is in its file.")
                        .arg(oldest->outline.name));
        drop(oldest->id);
    }
}

int KeptRuns::tooMuch() const
{
    if (isAsked || size() <= limit())
        return 0;
    const auto* const oldest = std::find_if(runs.cbegin(), runs.cend(), [this](const KeptRun& run) {
        return run.id != shownId && !run.outline.isPinned;
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

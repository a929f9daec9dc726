#pragma once

#include <QHash>
#include <QImage>
#include <QObject>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QThreadPool>
#include <QVector>

#include <functional>
#include <memory>
#include <optional>

#include "persistence/lesson.h"

class RunRecorder;
class SampleShelf;

/// A run that something else took the place of on the screen.
struct KeptRun
{
    int id = 0;
    LessonRun outline;                        ///< the run; without its samples while a shelf has them
    bool isSaved = false;                     ///< all of it is in a file
    QString journal;                          ///< that has it for the case of a crash; empty for none
    std::shared_ptr<const SampleShelf> shelf; ///< where its samples are; null: in the outline
    int change = 0;                           ///< counts what came into it

    /// With its samples, which takes a moment; nothing if the disk does not give them back.
    std::optional<LessonRun> whole() const;
    /// From the first sample of all groups to the last, s; 0 for samples taken by hand.
    double duration() const;
    /// Of the class (-1), or of the group of that name, else of the one in its place; null where it has no
    /// samples.
    const Lesson::Part* partOf(int index, const QString& group) const;
    /// Of those that measured something in it, in their order.
    QStringList groups() const;
};

/// The runs that were on the screen before, and those of an opened lesson, the oldest first. They share
/// their samples with whoever has the same; those of a large one are laid on the disk, by a thread of its
/// own, while it is not on the screen. One of them may be on the screen: then what is done to it there comes
/// back into the list when it leaves the screen.
class KeptRuns : public QObject
{
    Q_OBJECT

public:
    static constexpr int mostPinned = 3;

    /// `recorder` has the journals; not owned.
    explicit KeptRuns(RunRecorder* recorder, QObject* parent = nullptr);

    const QVector<KeptRun>& all() const { return runs; }
    /// Null for one that is not in the list.
    const KeptRun* find(int id) const;
    /// The one on the screen, 0 for none.
    int shown() const { return shownId; }
    QVector<const KeptRun*> pinned() const;
    /// Not counting the one on the screen.
    int unsaved() const;
    /// Bytes that the samples take, in memory and on the disk.
    qint64 size() const;
    /// A picture of its curves, made when it is first asked for.
    QImage picture(int id, const QSize& size);

    /// What is on the screen gives way. Nothing happens if it has no samples, or is all in the list.
    void keep(const LessonRun& run, bool isSaved, const QString& name = QString());
    /// One group of what is on the screen gives way, the others stay; the same otherwise.
    void keepPart(const LessonRun& run, bool isSaved);
    /// All samples of `run` are in the list.
    bool holds(const LessonRun& run) const { return holder(run) >= 0; }
    /// With its samples in memory, for the screen. Null, with a line, if they can't be had.
    const KeptRun* wake(int id);
    /// This one is on the screen from now on, and the last is not.
    void noteShown(int id);
    /// A lesson was opened: its kept runs join the list, but for those that are there already.
    void takeLesson(const Lesson& lesson);
    /// As a lesson takes them, without the one on the screen. One that the disk does not give back is told
    /// of, and left out.
    QVector<LessonRun> forLesson();
    /// Runs that are in a file now.
    void noteSaved(const QVector<int>& ids);
    QVector<int> ids() const;

    // What a person does to the list, which can be taken back

    void rename(int id, const QString& name);
    void remove(int id);
    /// The mean of two as a run of its own, pinned if there is room.
    void average(int first, int second);
    /// Behind the present curves, at most three; else a line says so.
    void pin(int id, bool tf);

    // Memory

    /// The oldest that is in no file, while there is too much to keep; 0 otherwise. A person decides.
    int tooMuch() const;
    /// For good; its journal goes among those that were refused.
    void drop(int id);
    /// Until the next is kept nobody is asked again.
    void stopAsking() { isAsked = true; }
    static qint64 limit();
    /// From this many bytes on a run is laid on the disk.
    static qint64 large();

Q_SIGNALS:
    /// Other runs, names or states.
    void changed();
    void pinsChanged();
    void told(const QString& line);
    /// A step that can be taken back is about to be done, or is not after all; and was done.
    void doing();
    void done(const QString& name, const std::function<bool(bool isBack)>& move);

private:
    int place(int id) const;
    int newId() { return ++lastId; }
    int equal(const LessonRun& run) const;
    int holder(const LessonRun& run) const;
    bool setName(int id, const QString& name);
    bool setPinned(int id, bool tf);
    bool takeAway(int id);
    bool putBack(int id, int at);
    void replace(KeptRun* kept, const LessonRun& run, bool isSaved, const QString& journal);
    void append(const LessonRun& run, bool isSaved, const QString& name, const QString& journal);
    void fitMemory();
    KeptRun* known(int id);
    void layDown();
    void takeShelf(int id, int change, const std::shared_ptr<const SampleShelf>& shelf);
    void tellUnreadable(const KeptRun& run);

    RunRecorder* const recorder;
    QVector<KeptRun> runs;
    QVector<KeptRun> removed; ///< may be put back
    QHash<int, int> onTheWay; ///< to the disk, and at which change
    QHash<int, QImage> pictures;
    int shownId = 0;
    int deletedOnScreen = 0; ///< its samples still are there
    int lastId = 0;
    int lastNumber = 0; ///< of a name
    bool isAsked = false;
    QThreadPool writers; ///< none outlives this
};

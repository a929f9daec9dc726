#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QThread>
#include <QVector>

#include <memory>

#include "persistence/journalformat.h"

class JournalFile;
class QLockFile;

/// Writes the journal of one run after the other on a thread of its own: whoever calls is never held up by a
/// disk. What was added is on the disk, and not only in the system's memory, when the next is written. The
/// first failure ends the journal of that run.
class JournalWriter : public QObject
{
    Q_OBJECT

public:
    explicit JournalWriter(QObject* parent = nullptr);
    /// Writes what is still to write.
    ~JournalWriter() override;

    /// A new journal, after the end of the one before.
    void begin(const QString& path, const QDateTime& begun);
    void add(const JournalGroup& group);
    void add(const QVector<JournalRows>& rows);
    /// The present journal goes: its run is in a file.
    void remove();
    /// It goes among the refused ones.
    void refuse();
    /// It stays where it is, for the next start.
    void end();
    /// It stays where it is and goes on being this program's.
    void keep();
    /// A kept one is the present one again; nothing more is written to it.
    void takeKept(const QString& path);
    /// A kept one goes, or goes among the refused ones.
    void removeKept(const QString& path);
    void refuseKept(const QString& path);
    void refuseAllKept();
    /// A journal of an earlier start becomes the present one; nothing more is written to it.
    void adopt(const QString& path, const std::shared_ptr<QLockFile>& lock);
    /// Waits until all of this is done.
    void finish();

Q_SIGNALS:
    /// No more of this run is kept.
    void failed(const QString& reason);

private:
    template<class Work> void post(Work work);

    QThread thread;
    std::unique_ptr<JournalFile> file; ///< lives on the thread
};

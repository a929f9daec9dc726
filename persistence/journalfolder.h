#pragma once

#include <QDateTime>
#include <QMetaType>
#include <QString>
#include <QVector>

#include <memory>

#include "persistence/journalreader.h"

class QLockFile;

/// A journal that an earlier start of the program left, and nobody else holds as long as this one is there.
struct FoundJournal
{
    QString path;
    JournalRun extent; ///< without samples
    std::shared_ptr<QLockFile> lock;
};

/// The folder of the journals. Each journal has a lock beside it that its program holds: another one that
/// runs at the same time leaves it alone.
namespace JournalFolder {

/// $XDG_STATE_HOME/pellandra, or the like of the system.
QString path();
/// Of a run that began then; no other run of any program has it.
QString nameFor(const QDateTime& begun);
/// The lock of a journal; null, with the reason, where somebody has it or the folder can't be written.
std::shared_ptr<QLockFile> lock(const QString& journal, QString* reason);
/// Journals with samples that nobody holds, the newest first. Those without are removed.
QVector<FoundJournal> find();
/// It is not offered again, and kept a week if it is among the newest five.
bool refuse(const QString& journal);
QString refusedPath();
/// Removes what was refused long ago.
void prune(const QDateTime& now);

constexpr int mostRefused = 5;
constexpr int daysRefused = 7;

} // namespace JournalFolder

Q_DECLARE_METATYPE(FoundJournal)

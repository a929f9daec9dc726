#include "persistence/journalfolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QLockFile>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <QSysInfo>

#include <atomic>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <csignal>
#endif

namespace {

Q_LOGGING_CATEGORY(lcJournal, "pellandra.journal", QtInfoMsg)

const QString pattern = QStringLiteral("*.journal");

std::shared_ptr<QLockFile> lockOf(const QString& journal)
{
    auto lock = std::make_shared<QLockFile>(journal + QStringLiteral(".lock"));
    lock->setStaleLockTime(0); // only that of a program which is no more
    return lock;
}

/// Another program has it. Where the disk is full nobody can lock, and the lock of a program which is no more
/// can't be taken away.
bool isHeld(const QLockFile& lock)
{
    if (lock.error() != QLockFile::LockFailedError)
        return false;
#ifdef Q_OS_UNIX
    qint64 pid = 0;
    QString host;
    QString program;
    if (lock.getLockInfo(&pid, &host, &program) && host == QSysInfo::machineHostName())
        return ::kill(pid_t(pid), 0) == 0 || errno != ESRCH;
#endif
    return true;
}

QString reasonOf(QLockFile::LockError error)
{
    return error == QLockFile::LockFailedError
               ? QCoreApplication::translate("JournalFolder", "Another program has it.")
               : QCoreApplication::translate("JournalFolder", "The folder %1 can't be written.")
                     .arg(JournalFolder::path());
}

} // namespace

QString JournalFolder::path()
{
#ifdef Q_OS_LINUX
    const QString state = qEnvironmentVariable("XDG_STATE_HOME");
    // By its definition a path that is not absolute is to be ignored.
    const QString base =
        QDir::isAbsolutePath(state) ? state : QDir::homePath() + QStringLiteral("/.local/state");
    return base + QStringLiteral("/pellandra");
#else
    return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) +
           QStringLiteral("/journals");
#endif
}

QString JournalFolder::refusedPath()
{
    return path() + QStringLiteral("/refused");
}

QString JournalFolder::nameFor(const QDateTime& begun)
{
    static std::atomic<int> number{0};
    return QStringLiteral("%1/run-%2-%3-%4.journal")
        .arg(path(), begun.toString(QStringLiteral("yyyyMMdd-hhmmss")))
        .arg(QCoreApplication::applicationPid())
        .arg(++number);
}

std::shared_ptr<QLockFile> JournalFolder::lock(const QString& journal, QString* reason)
{
    QDir().mkpath(path());
    auto lock = lockOf(journal);
    if (lock->tryLock(0))
        return lock;
    *reason = reasonOf(lock->error());
    return {};
}

QVector<FoundJournal> JournalFolder::find()
{
    QVector<FoundJournal> found;
    const QDir folder(path());
    for (const QString& name : folder.entryList({pattern}, QDir::Files, QDir::Name | QDir::Reversed)) {
        FoundJournal journal;
        journal.path = folder.filePath(name);
        journal.lock = lockOf(journal.path);
        if (!journal.lock->tryLock(0) && isHeld(*journal.lock))
            continue;
        QString reason;
        if (!JournalReader::read(journal.path, JournalReader::What::Extent, &journal.extent, &reason))
            qCInfo(lcJournal, "%s: %s", qPrintable(name), qPrintable(reason));
        else if (journal.extent.experiments.isEmpty())
            QFile::remove(journal.path); // it had just been begun
        else
            found.append(journal);
    }
    return found;
}

bool JournalFolder::refuse(const QString& journal)
{
    QDir().mkpath(refusedPath());
    const QString kept = QDir(refusedPath()).filePath(QFileInfo(journal).fileName());
    const bool isMoved = QFile::rename(journal, kept);
    if (!isMoved)
        qCInfo(lcJournal, "%s can't be put aside", qPrintable(journal));
    prune(QDateTime::currentDateTime());
    return isMoved;
}

void JournalFolder::prune(const QDateTime& now)
{
    const QDir folder(refusedPath());
    int kept = 0;
    for (const QFileInfo& file : folder.entryInfoList({pattern}, QDir::Files, QDir::Time)) {
        if (kept < mostRefused && file.lastModified().daysTo(now) < daysRefused)
            ++kept;
        else
            QFile::remove(file.filePath());
    }
}

#include "persistence/journalwriter.h"

#include "persistence/journalfolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QLockFile>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#else
#include <io.h>
#endif

namespace {

bool syncFile(QFile& file)
{
#ifdef Q_OS_LINUX
    return ::fdatasync(file.handle()) == 0;
#elif defined(Q_OS_UNIX)
    return ::fsync(file.handle()) == 0;
#else
    return ::_commit(file.handle()) == 0;
#endif
}

/// The name of a new file is on the disk when its folder is.
void syncFolder(const QString& file)
{
#ifdef Q_OS_UNIX
    const int folder = ::open(QFile::encodeName(QFileInfo(file).path()).constData(), O_RDONLY | O_CLOEXEC);
    if (folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
#else
    Q_UNUSED(file)
#endif
}

} // namespace

/// The file itself; everything on the writer's thread.
class JournalFile : public QObject
{
    Q_OBJECT

public:
    void begin(const QString& path, const QDateTime& begun)
    {
        end();
        QString reason;
        lock = JournalFolder::lock(path, &reason);
        file.setFileName(path);
        if (!lock)
            fail(reason);
        else if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered | QIODevice::NewOnly))
            fail(file.errorString());
        else
            write(JournalFormat::head(begun));
        if (file.isOpen())
            syncFolder(path);
    }

    void write(const QByteArray& bytes)
    {
        if (!file.isOpen())
            return;
        if (file.write(bytes) != bytes.size() || !syncFile(file))
            fail(file.error() == QFileDevice::NoError ? tr("The disk is full.") : file.errorString());
    }

    void end()
    {
        file.close();
        lock.reset();
        file.setFileName(QString());
    }

    void remove()
    {
        file.close();
        if (lock)
            file.remove();
        end();
    }

    void refuse()
    {
        file.close();
        if (lock && file.exists())
            JournalFolder::refuse(file.fileName());
        end();
    }

    void adopt(const QString& path, const std::shared_ptr<QLockFile>& itsLock)
    {
        end();
        lock = itsLock;
        file.setFileName(path);
    }

    void keep()
    {
        if (lock)
            kept.insert(file.fileName(), lock);
        end();
    }

    void takeKept(const QString& path) { adopt(path, kept.take(path)); }

    void removeKept(const QString& path)
    {
        if (const auto itsLock = kept.take(path))
            QFile::remove(path);
    }

    void refuseKept(const QString& path)
    {
        if (const auto itsLock = kept.take(path))
            JournalFolder::refuse(path);
    }

    void refuseAllKept()
    {
        for (const QString& path : kept.keys())
            refuseKept(path);
    }

Q_SIGNALS:
    void failed(const QString& reason);

private:
    /// What was written stays: it is better than nothing.
    void fail(const QString& reason)
    {
        file.close();
        Q_EMIT failed(reason);
    }

    QFile file{this};
    std::shared_ptr<QLockFile> lock;
    QHash<QString, std::shared_ptr<QLockFile>> kept;
};

JournalWriter::JournalWriter(QObject* parent)
    : QObject(parent)
    , file(new JournalFile)
{
    thread.setObjectName(QStringLiteral("journal"));
    file->moveToThread(&thread);
    connect(file.get(), &JournalFile::failed, this, &JournalWriter::failed);
}

JournalWriter::~JournalWriter()
{
    finish();
}

/// The thread comes with the first run: a start of the program does not wait for it.
template<class Work> void JournalWriter::post(Work work)
{
    if (!thread.isRunning())
        thread.start();
    QMetaObject::invokeMethod(file.get(), std::move(work), Qt::QueuedConnection);
}

void JournalWriter::begin(const QString& path, const QDateTime& begun)
{
    post([file = file.get(), path, begun] { file->begin(path, begun); });
}

void JournalWriter::add(const JournalGroup& group)
{
    post([file = file.get(), group] { file->write(JournalFormat::block(group)); });
}

void JournalWriter::add(const QVector<JournalRows>& rows)
{
    post([file = file.get(), rows] {
        QByteArray bytes;
        for (const JournalRows& some : rows)
            bytes += JournalFormat::block(some);
        file->write(bytes);
    });
}

void JournalWriter::remove()
{
    post([file = file.get()] { file->remove(); });
}

void JournalWriter::refuse()
{
    post([file = file.get()] { file->refuse(); });
}

void JournalWriter::end()
{
    post([file = file.get()] { file->end(); });
}

void JournalWriter::adopt(const QString& path, const std::shared_ptr<QLockFile>& lock)
{
    post([file = file.get(), path, lock] { file->adopt(path, lock); });
}

void JournalWriter::keep()
{
    post([file = file.get()] { file->keep(); });
}

void JournalWriter::takeKept(const QString& path)
{
    post([file = file.get(), path] { file->takeKept(path); });
}

void JournalWriter::removeKept(const QString& path)
{
    post([file = file.get(), path] { file->removeKept(path); });
}

void JournalWriter::refuseKept(const QString& path)
{
    post([file = file.get(), path] { file->refuseKept(path); });
}

void JournalWriter::refuseAllKept()
{
    post([file = file.get()] { file->refuseAllKept(); });
}

void JournalWriter::finish()
{
    if (!thread.isRunning())
        return;
    QMetaObject::invokeMethod(
        file.get(), [this] { thread.quit(); }, Qt::QueuedConnection);
    thread.wait();
}

#include "journalwriter.moc"

#include "persistence/safefile.h"

#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

SafeFile::Factory& factory()
{
    static SafeFile::Factory current;
    return current;
}

/// Brings the bytes to the disk: some file systems tell only now that it is full.
bool syncToDisk(const QSaveFile& file)
{
#ifdef Q_OS_UNIX
    int result = 0;
    do {
        result = ::fsync(file.handle());
    } while (result != 0 && errno == EINTR);
    // Pipes and some network file systems can't sync, which says nothing about the bytes.
    return result == 0 || errno == EINVAL || errno == ENOSYS || errno == ENOTSUP;
#else
    Q_UNUSED(file)
    return true;
#endif
}

} // namespace

void SafeFile::setFactory(Factory newFactory)
{
    factory() = std::move(newFactory);
}

SafeFile::SafeFile(const QString& filename)
    : filename(filename)
    , file(factory() ? factory()(filename) : std::make_unique<QSaveFile>(filename))
{
    piece.reserve(pieceSize);
    // Unbuffered, so that each write tells what became of its own bytes.
    if (!file->open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        fail(file->errorString());
}

SafeFile::~SafeFile() = default;

bool SafeFile::write(const char* bytes, qint64 size)
{
    while (failure.isEmpty() && size > 0) {
        const int n = int(qMin<qint64>(size, pieceSize - piece.size()));
        piece.append(bytes, n);
        bytes += n;
        size -= n;
        if (piece.size() == pieceSize)
            writePiece();
    }
    return failure.isEmpty();
}

bool SafeFile::writePiece()
{
    if (piece.isEmpty())
        return true;
    const qint64 n = file->write(piece.constData(), piece.size());
    if (n != piece.size() || file->error() != QFileDevice::NoError) {
        const bool isShort = n >= 0 && file->error() == QFileDevice::NoError;
        return fail(isShort ? tr("no space left on the disk") : file->errorString());
    }
    written += n;
    piece.resize(0);
    return true;
}

bool SafeFile::commit()
{
    if (!failure.isEmpty() || !writePiece())
        return false;
    if (!file->flush())
        return fail(file->errorString());
    if (!syncToDisk(*file))
        return fail(qt_error_string(errno));
    if (file->size() != written)
        return fail(tr("%1 of %2 bytes arrived on the disk").arg(file->size()).arg(written));
    return file->commit() || fail(file->errorString());
}

bool SafeFile::fail(const QString& cause)
{
    failure = tr("%1 can't be written: %2").arg(QFileInfo(filename).fileName(), cause);
    file->cancelWriting();
    return false;
}

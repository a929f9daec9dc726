#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

#include <functional>
#include <memory>

class QSaveFile;

/// A file that is written whole or not at all: until commit() succeeds, what stood under the name before
/// stays as it was. Bytes go out in pieces of at most 64 KiB and every result is looked at, because a large
/// write to a full disk may come back short without an error.
class SafeFile
{
    Q_DECLARE_TR_FUNCTIONS(SafeFile)

public:
    using Factory = std::function<std::unique_ptr<QSaveFile>(const QString& filename)>;

    /// Opens for writing; a failure shows in the first write() and in commit().
    explicit SafeFile(const QString& filename);
    ~SafeFile();
    SafeFile(const SafeFile&) = delete;
    SafeFile& operator=(const SafeFile&) = delete;

    /// False from the first failure on.
    bool write(const char* bytes, qint64 size);
    bool write(const QByteArray& bytes) { return write(bytes.constData(), bytes.size()); }
    /// Puts the new file in place of the old one. False leaves the old one.
    bool commit();
    /// One line for the user: what went wrong, empty while nothing did.
    QString reason() const { return failure; }

    static constexpr int pieceSize = 64 * 1024;

    /// Replaces what makes the files, for tests of failing disks; null brings the usual one back.
    static void setFactory(Factory factory);

private:
    bool writePiece();
    bool fail(const QString& cause);

    const QString filename;
    std::unique_ptr<QSaveFile> file;
    QByteArray piece;
    qint64 written = 0;
    QString failure;
};

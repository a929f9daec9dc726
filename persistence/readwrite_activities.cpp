#include "persistence/readwrite.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QRunnable>
#include <QTemporaryDir>
#include <QThreadPool>

#include <archive.h>
#include <archive_entry.h>

#include <memory>

#include "common/settings.h"

namespace {

Q_LOGGING_CATEGORY(lcActivities, "pellandra.activities", QtInfoMsg)

const QString folderKey = QStringLiteral("paths/Activities");
constexpr qint64 maxUnpacked = Q_INT64_C(2) << 30; // bytes
constexpr int maxEntries = 10000;
constexpr size_t blockSize = 65536;

/// Unpacks one archive into an empty folder.
class Unpacker
{
public:
    Unpacker(const QString& archiveName, const QString& folder, bool withFolders)
        : in(archive_read_new(), &archive_read_free)
        , folder(folder)
        , withFolders(withFolders)
    {
        archive_read_support_filter_all(in.get());
        archive_read_support_format_tar(in.get());
        archive_read_support_format_7zip(in.get());
        if (archive_read_open_filename(in.get(), QFile::encodeName(archiveName).constData(), blockSize) !=
            ARCHIVE_OK)
            cause = fault();
    }

    /// The cause of a failure, empty if everything came out.
    QString unpack();

private:
    bool unpackEntry(archive_entry* entry);
    bool copy(const QString& name);
    bool fail(const QString& text);
    QString fault() const;

    const std::unique_ptr<archive, decltype(&archive_read_free)> in;
    const QString folder;
    const bool withFolders;
    qint64 unpacked = 0;
    QString cause;
};

QString Unpacker::fault() const
{
    const char* text = archive_error_string(in.get());
    return text ? QString::fromLocal8Bit(text) : ReadWrite::tr("it is damaged");
}

bool Unpacker::fail(const QString& text)
{
    cause = text;
    return false;
}

QString Unpacker::unpack()
{
    archive_entry* entry = nullptr;
    for (int n = 0; cause.isEmpty(); ++n) {
        const int result = archive_read_next_header(in.get(), &entry);
        if (result == ARCHIVE_EOF)
            return n > 0 ? QString() : ReadWrite::tr("it is empty");
        if (result != ARCHIVE_OK)
            fail(fault());
        else if (n == maxEntries)
            fail(ReadWrite::tr("it holds too many files"));
        else
            unpackEntry(entry);
    }
    return cause;
}

bool Unpacker::unpackEntry(archive_entry* entry)
{
    const char* utf8 = archive_entry_pathname_utf8(entry);
    const char* bytes = archive_entry_pathname(entry);
    const QString name = utf8 ? QString::fromUtf8(utf8) : QFile::decodeName(bytes ? bytes : "");
    const QStringList parts =
        QString(name).replace(QLatin1Char('\\'), QLatin1Char('/')).split(QLatin1Char('/'));
    const bool hasDrive = parts.constFirst().contains(QLatin1Char(':'));
    if (name.isEmpty() || parts.constFirst().isEmpty() || hasDrive || parts.contains(QLatin1String("..")))
        return fail(ReadWrite::tr("it names the file \"%1\" outside of the folder").arg(name));
    // Links, hard ones too, could lead out of the folder; folders come with their files.
    if (archive_entry_filetype(entry) != AE_IFREG || archive_entry_hardlink(entry))
        return true;
    return copy(folder + QLatin1Char('/') + (withFolders ? parts.join(QLatin1Char('/')) : parts.constLast()));
}

bool Unpacker::copy(const QString& name)
{
    QFile out(name);
    if (!QDir().mkpath(QFileInfo(name).path()) || !out.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        return fail(out.errorString());
    for (;;) {
        const void* block = nullptr;
        size_t size = 0;
        la_int64_t offset = 0;
        const int result = archive_read_data_block(in.get(), &block, &size, &offset);
        if (result == ARCHIVE_EOF)
            break;
        if (result != ARCHIVE_OK)
            return fail(fault());
        // The holes of a sparse file count like bytes.
        unpacked += qMax<qint64>(0, offset - out.pos()) + qint64(size);
        if (unpacked > maxUnpacked || offset < 0)
            return fail(ReadWrite::tr("it holds more than 2 GiB"));
        if (!out.seek(offset) || out.write(static_cast<const char*>(block), qint64(size)) != qint64(size))
            return fail(out.errorString());
    }
    return out.flush() || fail(out.errorString());
}

/// Moves what stands in one folder into another, over nothing that is there already.
bool moveContents(const QDir& from, const QDir& to, QString* cause)
{
    const QStringList names = from.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QString& name : names) {
        if (QFileInfo::exists(to.filePath(name))) {
            *cause = ReadWrite::tr("\"%1\" exists already").arg(name);
            return false;
        }
    }
    for (const QString& name : names) {
        if (!QDir().rename(from.filePath(name), to.filePath(name))) {
            *cause = ReadWrite::tr("\"%1\" can't be put into the folder").arg(name);
            return false;
        }
    }
    return true;
}

/// The cause of a failure, empty if the archive's files stand in the folder. An interruption leaves none of
/// them: they come out into a hidden folder of its own first.
QString unpackInto(const QDir& folder, const QString& archiveName)
{
    const QTemporaryDir apart(folder.filePath(QStringLiteral(".unpack-XXXXXX")));
    if (!apart.isValid())
        return apart.errorString();
    // By habit of the packages' makers only tar archives bring folders.
    Unpacker unpacker(folder.filePath(archiveName), apart.path(), archiveName.contains(QLatin1String("tar")));
    QString cause = unpacker.unpack();
    if (cause.isEmpty())
        moveContents(QDir(apart.path()), folder, &cause);
    return cause;
}

class UnpackTask : public QRunnable
{
public:
    explicit UnpackTask(const QStringList& folders)
        : folders(folders)
    {
    }

    void run() override
    {
        for (const QString& folder : folders)
            ReadWrite::unpackIfNeeded(folder);
    }

private:
    const QStringList folders;
};

} // namespace

QString ReadWrite::getDataPath(const QString& file)
{
    const QString folder = getActivityPath();
    if (folder.isEmpty()) // a separator would lead to the root
        return file;
    return file.isEmpty() ? folder : folder + QDir::separator() + file;
}

void ReadWrite::setDefaultDataPath(const QString& fullpath)
{
    QSettings store = Settings::pathsStore();
    store.setValue(folderKey, QFileInfo(fullpath).absolutePath());
}

QString ReadWrite::getActivityPath()
{
    return Settings::pathsStore().value(folderKey, QString()).toString();
}

void ReadWrite::unpackIfNeeded()
{
    QStringList folders{getActivityPath(), getDataPath(QString())};
    folders.removeDuplicates();
    QThreadPool::globalInstance()->start(new UnpackTask(folders));
}

bool ReadWrite::unpackIfNeeded(const QString& path, QString* reason)
{
    if (reason)
        reason->clear();
    const QDir folder(path.isEmpty() ? QCoreApplication::applicationDirPath() : path);
    const QStringList archives =
        folder.entryList({QStringLiteral("*.tar"), QStringLiteral("*.7z")}, QDir::Files, QDir::Name);
    const QStringList known =
        folder.entryList({QStringLiteral("*.pdf"), QStringLiteral("*.xml")}, QDir::Files);
    if (archives.isEmpty() || !known.isEmpty())
        return false;
    const QString& archiveName = archives.constFirst();
    const QString cause = unpackInto(folder, archiveName);
    const QString fullName = folder.filePath(archiveName);
    if (cause.isEmpty()) {
        QFile::remove(fullName);
        return true;
    }
    QFile::rename(fullName, fullName + QStringLiteral(".failed"));
    const QString text = tr("%1 can't be unpacked: %2").arg(archiveName, cause);
    qCWarning(lcActivities, "%s", qPrintable(text));
    if (reason)
        *reason = text;
    return false;
}

void ReadWrite::CheckAndInstallMimio() {}

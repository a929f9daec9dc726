#include "persistence/readwrite.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <archive.h>
#include <archive_entry.h>

#include <memory>

#include "common/settings.h"

namespace {

Q_LOGGING_CATEGORY(lcActivities, "pellandra.activities", QtInfoMsg)

const QString folderKey = QStringLiteral("paths/Activities");
const QString chosenKey = QStringLiteral("paths/ActivityFolder");
constexpr qint64 maxUnpacked = Q_INT64_C(2) << 30; // bytes
constexpr int maxEntries = 10000;
constexpr size_t blockSize = 65536;

/// The name, or one like it that is not taken.
QString freeName(const QString& name)
{
    const QFileInfo info(name);
    const QString ending = info.suffix().isEmpty() ? QString() : QLatin1Char('.') + info.suffix();
    const QString start = name.left(name.size() - ending.size());
    QString own = name;
    for (int n = 2; QFileInfo::exists(own); ++n)
        own = QStringLiteral("%1 (%2)%3").arg(start).arg(n).arg(ending);
    return own;
}

/// Unpacks one archive into an empty folder.
class Unpacker
{
public:
    Unpacker(const QString& archiveName, const QString& folder, bool withFolders,
             const std::function<void(int percent)>& progress)
        : in(archive_read_new(), &archive_read_free)
        , folder(folder)
        , withFolders(withFolders)
        , size(QFileInfo(archiveName).size())
        , progress(progress)
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
    /// What could do harm and was not taken.
    QStringList leftOut() const { return skipped; }

private:
    bool unpackEntry(archive_entry* entry);
    bool takeLink(archive_entry* entry, const QString& name);
    bool copy(const QString& name);
    void tellProgress();
    bool fail(const QString& text);
    QString fault() const;

    const std::unique_ptr<archive, decltype(&archive_read_free)> in;
    const QString folder;
    const bool withFolders;
    const qint64 size;
    const std::function<void(int percent)> progress;
    QStringList skipped;
    int told = -1; ///< percent
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
#ifdef Q_OS_WIN
    const bool hasDrive = parts.constFirst().contains(QLatin1Char(':'));
#else
    constexpr bool hasDrive = false; // a colon is a letter like any other
#endif
    if (name.isEmpty() || parts.constFirst().isEmpty() || hasDrive || parts.contains(QLatin1String("..")))
        return fail(ReadWrite::tr("it names the file \"%1\" outside of the folder").arg(name));
    if (archive_entry_filetype(entry) == AE_IFDIR) // folders come with their files
        return true;
    const QString to =
        folder + QLatin1Char('/') + (withFolders ? parts.join(QLatin1Char('/')) : parts.constLast());
    if (archive_entry_hardlink(entry) || archive_entry_filetype(entry) == AE_IFLNK)
        return takeLink(entry, to);
    if (archive_entry_filetype(entry) == AE_IFREG)
        return copy(freeName(to));
    skipped << name;
    return true;
}

/// A link within the archive to what came before it becomes a file of its own; any other could lead out of
/// the folder.
bool Unpacker::takeLink(archive_entry* entry, const QString& name)
{
    const char* hard = archive_entry_hardlink_utf8(entry);
    const char* soft = archive_entry_symlink_utf8(entry);
    const QString to = QString::fromUtf8(hard ? hard : soft ? soft : "");
    const QString base = hard ? folder : QFileInfo(name).path();
    const QString target = QDir::cleanPath(base + QLatin1Char('/') + to);
    const bool isInside = !to.isEmpty() && !QDir::isAbsolutePath(to) &&
                          target.startsWith(folder + QLatin1Char('/')) && QFileInfo(target).isFile();
    const QString own = freeName(name);
    unpacked += isInside ? QFileInfo(target).size() : 0;
    if (unpacked > maxUnpacked)
        return fail(ReadWrite::tr("it holds more than 2 GiB"));
    if (!isInside || !QDir().mkpath(QFileInfo(own).path()) || !QFile::copy(target, own))
        skipped << QFileInfo(name).fileName();
    return true;
}

void Unpacker::tellProgress()
{
    const int percent = size > 0 ? int(archive_filter_bytes(in.get(), -1) * 100 / size) : 0;
    if (progress && percent > told) {
        told = percent;
        progress(qMin(percent, 100));
    }
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
        tellProgress();
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
        if (!QDir().rename(from.filePath(name), freeName(to.filePath(name)))) {
            *cause = ReadWrite::tr("\"%1\" can't be put into the folder").arg(name);
            return false;
        }
    }
    return true;
}

/// The cause of a failure, empty if the archive's files stand in the folder. An interruption leaves none of
/// them: they come out into a hidden folder of its own first.
QString unpackInto(const QDir& folder, const QString& archiveName, const ReadWrite::Progress& progress,
                   QStringList* leftOut)
{
    const QTemporaryDir apart(folder.filePath(QStringLiteral(".unpack-XXXXXX")));
    if (!apart.isValid())
        return apart.errorString();
    const auto tell = [&](int percent) {
        if (progress)
            progress(archiveName, percent);
    };
    // By habit of the packages' makers only tar archives bring folders.
    Unpacker unpacker(folder.filePath(archiveName), apart.path(), archiveName.contains(QLatin1String("tar")),
                      tell);
    QString cause = unpacker.unpack();
    if (cause.isEmpty())
        moveContents(QDir(apart.path()), folder, &cause);
    *leftOut = unpacker.leftOut();
    return cause;
}

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

QString ReadWrite::activityFolder()
{
    return Settings::pathsStore().value(chosenKey, QString()).toString();
}

void ReadWrite::setActivityFolder(const QString& fullpath)
{
    QSettings store = Settings::pathsStore();
    store.setValue(chosenKey, QFileInfo(fullpath).absolutePath());
}

bool ReadWrite::unpackIfNeeded(const QString& path, QString* reason, const Progress& progress)
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
    QStringList leftOut;
    const QString cause = unpackInto(folder, archiveName, progress, &leftOut);
    const QString fullName = folder.filePath(archiveName);
    if (cause.isEmpty()) {
        if (leftOut.isEmpty())
            QFile::remove(fullName);
        else if (reason)
            *reason = tr("%1 was unpacked but for: %2").arg(archiveName, leftOut.join(QStringLiteral(", ")));
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

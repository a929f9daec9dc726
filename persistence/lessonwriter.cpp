#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <archive.h>
#include <archive_entry.h>
#include <zlib.h>

#include <future>
#include <memory>

#include "persistence/experimentwriter.h"
#include "persistence/lesson.h"
#include "persistence/safefile.h"

namespace {

struct Member
{
    QByteArray bytes;
    QString checksum;
};

Member madeMember(const StoredExperiment& experiment)
{
    Member member;
    const auto sink = [&member](const char* bytes, qint64 size) {
        member.bytes.append(bytes, int(size));
        return true;
    };
    ExperimentWriter::write(sink, experiment);
    const auto* const bytes = reinterpret_cast<const Bytef*>(member.bytes.constData());
    member.checksum = QString::number(crc32(0, bytes, uInt(member.bytes.size())), 16);
    return member;
}

QString fileOf(const Lesson::Part& part)
{
    return part.isClass ? QStringLiteral("class.xml") : QStringLiteral("group-%1.xml").arg(part.slot + 1);
}

QJsonObject described(const Lesson::Part& part, const QString& checksum)
{
    QJsonObject member;
    member["role"] = part.isClass ? "class" : "group";
    if (!part.isClass) {
        member["slot"] = part.slot;
        member["group"] = part.group;
        member["inClass"] = part.isInClass;
    }
    if (!part.isStored)
        return member;
    member["file"] = fileOf(part);
    member["crc32"] = checksum;
    member["title"] = part.experiment.title;
    member["sensor"] = part.experiment.activeSens;
    return member;
}

/// A zip archive on its way into a file.
class Zip
{
public:
    explicit Zip(SafeFile* file)
        : out(archive_write_new(), &archive_write_free)
        , file(file)
    {
        archive_write_set_format_zip(out.get());
        archive_write_set_options(out.get(), "zip:compression=deflate,zip:compression-level=1");
        archive_write_set_bytes_per_block(out.get(), SafeFile::pieceSize);
        archive_write_set_bytes_in_last_block(out.get(), 1);
        isGood = archive_write_open(out.get(), this, nullptr, &Zip::pass, nullptr) == ARCHIVE_OK;
    }

    void add(const QString& name, const QByteArray& bytes)
    {
        constexpr int readable = 0644;
        const std::unique_ptr<archive_entry, decltype(&archive_entry_free)> entry(archive_entry_new(),
                                                                                  &archive_entry_free);
        archive_entry_set_pathname(entry.get(), name.toLatin1().constData());
        archive_entry_set_filetype(entry.get(), AE_IFREG);
        archive_entry_set_perm(entry.get(), readable);
        archive_entry_set_size(entry.get(), bytes.size());
        isGood = isGood && archive_write_header(out.get(), entry.get()) == ARCHIVE_OK &&
                 archive_write_data(out.get(), bytes.constData(), size_t(bytes.size())) == bytes.size() &&
                 archive_write_finish_entry(out.get()) == ARCHIVE_OK;
    }

    bool close() { return isGood && archive_write_close(out.get()) == ARCHIVE_OK; }

private:
    static la_ssize_t pass(archive* out, void* self, const void* bytes, size_t size)
    {
        if (static_cast<Zip*>(self)->file->write(static_cast<const char*>(bytes), qint64(size)))
            return la_ssize_t(size);
        archive_set_error(out, EIO, "the file failed");
        return ARCHIVE_FATAL;
    }

    const std::unique_ptr<archive, decltype(&archive_write_free)> out;
    SafeFile* const file;
    bool isGood = false;
};

QByteArray manifest(const Lesson& lesson, const QJsonArray& members)
{
    QJsonObject run;
    if (lesson.begun.isValid())
        run["time"] = lesson.begun.toString(Qt::ISODate);
    run["members"] = members;
    QJsonObject root;
    root["format"] = "pellandra-lesson";
    root["version"] = LessonFile::version;
    root["layout"] = lesson.layout;
    root["classOfFile"] = lesson.isClassOfFile;
    root["runs"] = QJsonArray{run};
    return QJsonDocument(root).toJson();
}

} // namespace

bool LessonFile::write(const QString& filename, const Lesson& lesson, QString* reason)
{
    SafeFile file(filename);
    QJsonArray members;
    bool isPacked = false;
    {
        Zip zip(&file);
        // Each member is made while the one before it is packed, which takes about as long.
        const auto begin = [&lesson](int i) {
            const bool isAny = i < lesson.parts.size() && lesson.parts.at(i).isStored;
            return isAny ? std::async(std::launch::async, madeMember, lesson.parts.at(i).experiment)
                         : std::future<Member>();
        };
        std::future<Member> next = begin(0);
        for (int i = 0; i < lesson.parts.size(); ++i) {
            const Lesson::Part& part = lesson.parts.at(i);
            const Member member = next.valid() ? next.get() : Member();
            next = begin(i + 1);
            if (part.isStored)
                zip.add(fileOf(part), member.bytes);
            members.append(described(part, member.checksum));
        }
        zip.add(QStringLiteral("manifest.json"), manifest(lesson, members));
        isPacked = zip.close();
    }
    const bool isWritten = isPacked && file.commit();
    *reason = file.reason();
    if (!isWritten && reason->isEmpty())
        *reason = tr("%1 can't be packed").arg(filename);
    return isWritten;
}

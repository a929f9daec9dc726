#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtEndian>

#include <zlib.h>

#include <functional>
#include <future>
#include <initializer_list>

#include "persistence/experimentwriter.h"
#include "persistence/lesson.h"
#include "persistence/safefile.h"

namespace {

/// A file of the archive, packed.
struct Member
{
    QByteArray bytes;
    quint32 size = 0; ///< unpacked
    quint32 sum = 0;
    QString checksum() const { return QString::number(sum, 16); }
};

/// Packs what it is handed. Level 1: these texts get little smaller by more work.
class Packer
{
public:
    Packer()
    {
        constexpr int withoutHeader = -15;
        constexpr int level = 1;
        constexpr int memory = 7; // more would not stay in the processor
        isGood = deflateInit2(&stream, level, Z_DEFLATED, withoutHeader, memory, Z_DEFAULT_STRATEGY) == Z_OK;
    }
    ~Packer() { deflateEnd(&stream); }
    Packer(const Packer&) = delete;
    Packer& operator=(const Packer&) = delete;

    bool add(const char* bytes, qint64 n, int flush = Z_NO_FLUSH)
    {
        auto* const from = reinterpret_cast<Bytef*>(const_cast<char*>(bytes)); // zlib only reads them
        member.sum = quint32(crc32(member.sum, from, uInt(n)));
        member.size += quint32(n);
        isGood = isGood && (total += n) <= LessonFile::mostMember;
        stream.next_in = from;
        stream.avail_in = uInt(n);
        do {
            char packed[pieceSize];
            stream.next_out = reinterpret_cast<Bytef*>(packed);
            stream.avail_out = pieceSize;
            isGood = isGood && deflate(&stream, flush) != Z_STREAM_ERROR;
            member.bytes.append(packed, int(pieceSize - stream.avail_out));
        } while (isGood && stream.avail_out == 0);
        return isGood;
    }
    /// Without bytes where it failed.
    Member done() { return add("", 0, Z_FINISH) ? member : Member(); }

private:
    static constexpr uInt pieceSize = 32 * 1024;
    z_stream stream{};
    qint64 total = 0;
    Member member;
    bool isGood = false;
};

Member packedPart(const StoredExperiment& experiment)
{
    Packer packer;
    ExperimentWriter::write([&packer](const char* bytes, qint64 n) { return packer.add(bytes, n); },
                            experiment);
    return packer.done();
}

/// `run` counts from 0, the one on the graphs.
QString fileOf(int run, const Lesson::Part& part)
{
    const QString name =
        part.isClass ? QStringLiteral("class.xml") : QStringLiteral("group-%1.xml").arg(part.slot + 1);
    return run == 0 ? name : QStringLiteral("run-%1-%2").arg(run + 1).arg(name);
}

QString rawFileOf(int run, const Lesson::Part& part)
{
    return fileOf(run, part).replace(QStringLiteral(".xml"), QStringLiteral("-raw.xml"));
}

QJsonObject described(const Calculation::Recipe& recipe)
{
    QJsonObject origins;
    for (const Calculation::Origin& origin : recipe.origins)
        origins[QString(origin.letter)] = origin.place;
    QJsonObject constants;
    for (const Calculation::Constant& constant : recipe.constants)
        constants[constant.name] = constant.value;
    return {{"step", "formula"},       {"name", recipe.name},       {"unit", recipe.unit},
            {"digits", recipe.digits}, {"formula", recipe.formula}, {"origins", origins},
            {"constants", constants}};
}

QJsonObject described(const SampleStep& step)
{
    if (step.kind == SampleStep::Kind::Formula)
        return described(step.recipe);
    QJsonObject object;
    object["step"] = LessonFile::stepNames[int(step.kind)];
    if (step.kind == SampleStep::Kind::Crop) {
        object["first"] = step.first;
        object["rows"] = step.rows;
    } else if (step.kind == SampleStep::Kind::Edit) {
        object["channel"] = step.channel;
        object["row"] = step.first;
        object["value"] = step.value;
    } else {
        object["channel"] = step.channel;
        object["window"] = step.window;
    }
    return object;
}

/// The one on the graphs first: a program that knows of no others finds it there.
QVector<const LessonRun*> runsOf(const Lesson& lesson)
{
    QVector<const LessonRun*> runs{&lesson};
    for (const LessonRun& run : lesson.kept)
        runs.append(&run);
    return runs;
}

/// The files of the archive but the manifest, each with its experiment.
QVector<QPair<QString, const StoredExperiment*>> filesOf(const Lesson& lesson)
{
    QVector<QPair<QString, const StoredExperiment*>> files;
    const QVector<const LessonRun*> runs = runsOf(lesson);
    for (int run = 0; run < runs.size(); ++run) {
        for (const Lesson::Part& part : runs.at(run)->parts) {
            if (part.isStored)
                files.append({fileOf(run, part), &part.experiment});
            if (part.isStored && part.isRawStored)
                files.append({rawFileOf(run, part), &part.raw});
        }
    }
    return files;
}

QJsonObject described(int run, const Lesson::Part& part, const QHash<QString, QString>& checksums)
{
    QJsonObject member;
    member["role"] = part.isClass ? "class" : "group";
    if (!part.isClass) {
        member["slot"] = part.slot;
        member["group"] = part.group;
        member["inClass"] = part.isInClass;
        if (!part.view.isEmpty())
            member["view"] = part.view;
    }
    if (!part.isStored)
        return member;
    member["file"] = fileOf(run, part);
    member["crc32"] = checksums.value(fileOf(run, part));
    member["title"] = part.experiment.title;
    member["sensor"] = part.experiment.activeSens;
    if (part.isRawStored) {
        member["rawFile"] = rawFileOf(run, part);
        member["rawCrc32"] = checksums.value(rawFileOf(run, part));
    }
    QJsonArray steps;
    for (const SampleStep& step : part.steps)
        steps.append(described(step));
    if (!steps.isEmpty())
        member["steps"] = steps;
    return member;
}

/// A zip archive on its way into a file. It is written here and not by the library that reads it, since that
/// packs one member after the other, on one core.
class Zip
{
public:
    explicit Zip(SafeFile* file)
        : file(file)
    {
    }

    void add(const QString& name, const Member& member)
    {
        isGood = isGood && !member.bytes.isEmpty();
        const QByteArray latin = name.toLatin1();
        const quint32 at = offset;
        write(QByteArray("PK\x03\x04") + head(member, latin) + latin);
        write(member.bytes);
        directory += QByteArray("PK\x01\x02") + little({version}) + head(member, latin) +
                     little({0, 0, 0, 0, 0}) + little(at) + latin;
        ++count;
    }

    bool close()
    {
        const quint32 at = offset;
        write(directory);
        write(QByteArray("PK\x05\x06") + little({0, 0, count, count}) + little(quint32(directory.size())) +
              little(at) + little({0}));
        return isGood;
    }

private:
    static constexpr quint16 version = 20;    // of the format: deflate
    static constexpr quint16 firstDay = 0x21; // 1-1-1980: the time of saving tells nothing

    static QByteArray little(quint32 value)
    {
        QByteArray bytes(4, '\0');
        qToLittleEndian(value, bytes.data());
        return bytes;
    }
    static QByteArray little(std::initializer_list<quint16> values)
    {
        QByteArray bytes;
        for (const quint16 value : values)
            bytes.append(char(value & 0xFF)).append(char(value >> 8));
        return bytes;
    }
    static QByteArray head(const Member& member, const QByteArray& name)
    {
        return little({version, 0, Z_DEFLATED, 0, firstDay}) + little(member.sum) +
               little(quint32(member.bytes.size())) + little(member.size) + little({quint16(name.size()), 0});
    }
    void write(const QByteArray& bytes)
    {
        isGood = file->write(bytes) && isGood && quint64(offset) + quint64(bytes.size()) <= 0xFFFFFFFFU;
        offset += quint32(bytes.size());
    }

    SafeFile* const file;
    QByteArray directory;
    quint32 offset = 0;
    quint16 count = 0;
    bool isGood = true;
};

QJsonObject described(int number, const LessonRun& run, const QHash<QString, QString>& checksums)
{
    QJsonObject object;
    if (run.begun.isValid())
        object["time"] = run.begun.toString(Qt::ISODate);
    if (number > 0) {
        object["name"] = run.name;
        object["pinned"] = run.isPinned;
        object["classOfFile"] = run.isClassOfFile;
    }
    QJsonArray members;
    for (const Lesson::Part& part : run.parts)
        members.append(described(number, part, checksums));
    object["members"] = members;
    return object;
}

QByteArray manifest(const Lesson& lesson, const QHash<QString, QString>& checksums)
{
    QJsonArray runs;
    for (const LessonRun* run : runsOf(lesson))
        runs.append(described(runs.size(), *run, checksums));
    QJsonObject root;
    root["format"] = "pellandra-lesson";
    root["version"] = LessonFile::version;
    root["layout"] = lesson.layout;
    root["classOfFile"] = lesson.isClassOfFile;
    root["runs"] = runs;
    return QJsonDocument(root).toJson();
}

} // namespace

bool LessonFile::write(const QString& filename, const Lesson& lesson, QString* reason)
{
    SafeFile file(filename);
    Zip zip(&file);
    const auto files = filesOf(lesson);
    qint64 unpacked = 0;
    QHash<QString, QString> checksums;
    // Two at a time: more would only take memory.
    const auto begin = [&files](int i) {
        return i < files.size() ? std::async(std::launch::async, packedPart, std::cref(*files.at(i).second))
                                : std::future<Member>();
    };
    std::future<Member> coming[2] = {begin(0), begin(1)};
    for (int i = 0; i < files.size(); ++i) {
        const Member member = coming[i % 2].get();
        unpacked += member.size;
        coming[i % 2] = begin(i + 2);
        zip.add(files.at(i).first, member);
        checksums[files.at(i).first] = member.checksum();
    }
    Packer list;
    const QByteArray text = manifest(lesson, checksums);
    list.add(text.constData(), text.size());
    zip.add(QStringLiteral("manifest.json"), list.done());
    // More than is read again, it must not be said to be saved.
    const bool isWritten = zip.close() && unpacked <= mostUnpacked && file.commit();
    *reason = file.reason();
    if (!isWritten && reason->isEmpty())
        *reason = tr("%1 can't be written: it would be too large").arg(QFileInfo(filename).fileName());
    return isWritten;
}

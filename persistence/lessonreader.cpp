#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <archive.h>
#include <archive_entry.h>
#include <zlib.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <map>
#include <memory>

#include "common/classsize.h"
#include "persistence/experimentreader.h"
#include "persistence/lesson.h"

namespace {

using ArchivePtr = std::unique_ptr<archive, decltype(&archive_read_free)>;

/// One member as it comes out of the archive. It ends in an error where it asks for too much.
class MemberDevice : public QIODevice
{
public:
    MemberDevice(archive* in, std::atomic<qint64>* left)
        : in(in)
        , left(left)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    bool isSequential() const override { return true; }
    /// Reads what nobody asked for. False for a damaged member.
    bool finish()
    {
        QByteArray rest(64 * 1024, '\0');
        while (read(rest.data(), rest.size()) > 0) {
        }
        return !isBroken;
    }
    QString fault() const { return cause; }
    QString checksum() const { return QString::number(sum, 16); }

protected:
    qint64 readData(char* data, qint64 most) override
    {
        const la_ssize_t n = isBroken ? -1 : archive_read_data(in, data, size_t(most));
        if (n < 0)
            return fail(archive_error_string(in));
        if ((*left -= n) < 0)
            return fail("it is too large");
        sum = crc32(sum, reinterpret_cast<const Bytef*>(data), uInt(n));
        return n;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    qint64 fail(const char* text)
    {
        isBroken = true;
        if (cause.isEmpty())
            cause = text ? QString::fromLocal8Bit(text) : LessonFile::tr("it is damaged");
        return -1;
    }

    archive* const in;
    std::atomic<qint64>* const left;
    uLong sum = 0;
    QString cause;
    bool isBroken = false;
};

struct Entry
{
    QByteArray manifest;
    StoredExperiment experiment;
    QString checksum;
    QString fault; ///< empty for one that could be read
};

using Entries = std::map<QString, Entry>;

struct Unpacked
{
    Entries entries;
    QStringList problems;
};

bool isExperimentName(const QString& name)
{
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9_-][A-Za-z0-9._-]{0,99}\\.xml$"));
    return plain.match(name).hasMatch();
}

Entry readEntry(archive* in, const QString& name, std::atomic<qint64>* left)
{
    Entry entry;
    MemberDevice device(in, left);
    if (name == QLatin1String("manifest.json")) {
        entry.manifest = device.read(LessonFile::mostManifest);
        if (!device.finish())
            entry.fault = device.fault();
        return entry;
    }
    QString cause;
    const bool isRead = ExperimentReader::read(&device, &entry.experiment, &cause);
    if (!device.finish())
        entry.fault = device.fault();
    else if (!isRead)
        entry.fault = cause;
    entry.checksum = device.checksum();
    return entry;
}

/// Every `step`-th entry from number `first` on.
Unpacked unpack(const QByteArray& bytes, bool isWhole, int first, int step, std::atomic<qint64>* left)
{
    Unpacked result;
    const ArchivePtr in(archive_read_new(), &archive_read_free);
    if (isWhole)
        archive_read_support_format_zip_seekable(in.get());
    else
        archive_read_support_format_zip_streamable(in.get());
    if (archive_read_open_memory(in.get(), bytes.constData(), size_t(bytes.size())) != ARCHIVE_OK)
        return result;
    archive_entry* header = nullptr;
    const auto isNext = [&] {
        const int result = *left > 0 ? archive_read_next_header(in.get(), &header) : ARCHIVE_EOF;
        return result == ARCHIVE_OK || result == ARCHIVE_WARN;
    };
    for (int n = 0; isNext(); ++n) {
        if (n == LessonFile::mostEntries) {
            result.problems << LessonFile::tr("it holds too many files");
            break;
        }
        if (n % step != first)
            continue;
        const char* utf8 = archive_entry_pathname_utf8(header);
        const QString name = QString::fromUtf8(utf8 ? utf8 : archive_entry_pathname(header));
        if (name != QLatin1String("manifest.json") && !isExperimentName(name)) {
            MemberDevice(in.get(), left).finish();
            result.problems << LessonFile::tr("\"%1\" does not belong to it").arg(name.left(60));
        } else if (result.entries.count(name) > 0) {
            result.problems << LessonFile::tr("%1 is there twice").arg(name);
        } else {
            result.entries[name] = readEntry(in.get(), name, left);
        }
    }
    return result;
}

/// Half of the members on another thread. Without its directory an archive can only be read from the front.
Unpacked unpackAll(const QByteArray& bytes, qint64 most)
{
    std::atomic<qint64> left(most);
    std::future<Unpacked> odd =
        std::async(std::launch::async, [&bytes, &left] { return unpack(bytes, true, 1, 2, &left); });
    Unpacked all = unpack(bytes, true, 0, 2, &left);
    Unpacked others = odd.get();
    for (auto& [name, entry] : others.entries) {
        if (!all.entries.emplace(name, std::move(entry)).second)
            all.problems << LessonFile::tr("%1 is there twice").arg(name);
    }
    all.problems += others.problems;
    if (all.entries.empty()) {
        left = most;
        all = unpack(bytes, false, 0, 1, &left);
        if (!all.entries.empty())
            all.problems << LessonFile::tr("its end is missing");
    }
    if (left <= 0)
        all.problems << LessonFile::tr("it holds too much");
    return all;
}

/// Puts a lesson together from the members and what the manifest says of them.
class Assembly
{
public:
    Assembly(Unpacked* unpacked, Lesson* lesson)
        : entries(unpacked->entries)
        , problems(unpacked->problems)
        , lesson(lesson)
        , run(lesson)
    {
    }

    void assemble();

private:
    void takeRun(const QJsonObject& told, LessonRun* into);
    void takeMember(const QJsonObject& member);
    void takeByNames();
    bool takeFile(const QString& name, const QString& checksum, const Lesson::Part& part,
                  StoredExperiment* experiment);
    void takeSteps(const QJsonArray& steps, Lesson::Part* part);
    bool isTaken(const Lesson::Part& part) const;

    Entries& entries;
    QStringList& problems;
    Lesson* const lesson;
    LessonRun* run; ///< that the next members belong to
};

void Assembly::assemble()
{
    const QJsonObject root =
        QJsonDocument::fromJson(entries[QStringLiteral("manifest.json")].manifest).object();
    const QJsonArray runs = root[QLatin1String("runs")].toArray();
    const QJsonObject first = runs.first().toObject();
    lesson->layout = root[QLatin1String("layout")].toString();
    lesson->isClassOfFile = root[QLatin1String("classOfFile")].toBool();
    if (root[QLatin1String("version")].toInt() > LessonFile::version)
        problems << LessonFile::tr("what a newer program put into it");
    takeRun(first, lesson);
    if (lesson->parts.isEmpty()) {
        problems << LessonFile::tr("the list of its parts");
        takeByNames();
        return;
    }
    for (int i = 1; i < runs.size(); ++i) {
        const QJsonObject told = runs.at(i).toObject();
        LessonRun kept;
        kept.isClassOfFile = told[QLatin1String("classOfFile")].toBool();
        kept.isPinned = told[QLatin1String("pinned")].toBool();
        kept.name = told[QLatin1String("name")].toString().simplified();
        if (kept.name.isEmpty())
            kept.name = LessonFile::tr("Run %1").arg(i);
        takeRun(told, &kept);
        if (std::any_of(kept.parts.cbegin(), kept.parts.cend(),
                        [](const auto& part) { return part.isStored; }))
            lesson->kept.append(kept);
    }
}

void Assembly::takeRun(const QJsonObject& told, LessonRun* into)
{
    run = into;
    run->begun = QDateTime::fromString(told[QLatin1String("time")].toString(), Qt::ISODate);
    const QJsonArray members = told[QLatin1String("members")].toArray();
    for (const auto& member : members)
        takeMember(member.toObject());
}

bool Assembly::isTaken(const Lesson::Part& part) const
{
    return std::any_of(run->parts.cbegin(), run->parts.cend(), [&](const Lesson::Part& other) {
        return other.isClass == part.isClass && other.slot == part.slot;
    });
}

void Assembly::takeMember(const QJsonObject& member)
{
    Lesson::Part part;
    part.isClass = member[QLatin1String("role")].toString() == QLatin1String("class");
    part.slot = part.isClass ? -1 : member[QLatin1String("slot")].toInt(-1);
    part.view = member[QLatin1String("view")].toString();
    part.group = member[QLatin1String("group")].toString();
    part.isInClass = member[QLatin1String("inClass")].toBool();
    const bool isPlace = part.isClass || (part.slot >= 0 && part.slot < mostLoggers);
    if (!isPlace || isTaken(part)) {
        problems << LessonFile::tr("a part without a place");
        return;
    }
    const QString file = member[QLatin1String("file")].toString();
    part.isStored =
        !file.isEmpty() && takeFile(file, member[QLatin1String("crc32")].toString(), part, &part.experiment);
    if (part.isStored)
        takeSteps(member[QLatin1String("steps")].toArray(), &part);
    const bool isRawNeeded = std::any_of(part.steps.cbegin(), part.steps.cend(),
                                         [](const SampleStep& step) { return !step.isAppended(); });
    if (isRawNeeded)
        part.isRawStored = takeFile(member[QLatin1String("rawFile")].toString(),
                                    member[QLatin1String("rawCrc32")].toString(), part, &part.raw);
    if (isRawNeeded && !part.isRawStored)
        part.steps.clear(); // they cannot be taken back
    run->parts.append(part);
}

Calculation::Recipe recipeOf(const QJsonObject& told)
{
    Calculation::Recipe recipe;
    recipe.name = told[QLatin1String("name")].toString();
    recipe.unit = told[QLatin1String("unit")].toString();
    recipe.digits = std::clamp(told[QLatin1String("digits")].toInt(-1), -1, Calculation::mostDigits);
    recipe.formula = told[QLatin1String("formula")].toString();
    const QJsonObject origins = told[QLatin1String("origins")].toObject();
    for (auto it = origins.begin(); it != origins.end(); ++it) {
        if (it.key().size() == 1)
            recipe.origins.append({it.key().at(0), it.value().toInt(-1), 0, QString(), 0});
    }
    const QJsonObject constants = told[QLatin1String("constants")].toObject();
    for (auto it = constants.begin(); it != constants.end(); ++it)
        recipe.constants.append({it.key(), it.value().toDouble()});
    return recipe;
}

/// All of them or none.
void Assembly::takeSteps(const QJsonArray& steps, Lesson::Part* part)
{
    const auto isName = [](const QString& name) {
        return [name](const char* one) { return name == QLatin1String(one); };
    };
    for (const QJsonValue& value : steps) {
        const QJsonObject told = value.toObject();
        const auto* const name =
            std::find_if(std::begin(LessonFile::stepNames), std::end(LessonFile::stepNames),
                         isName(told[QLatin1String("step")].toString()));
        if (name == std::end(LessonFile::stepNames) || part->steps.size() == LessonFile::mostSteps) {
            problems << LessonFile::tr("the steps of %1")
                            .arg(part->isClass ? LessonFile::tr("the class") : part->group);
            part->steps.clear();
            return;
        }
        SampleStep step;
        step.kind = SampleStep::Kind(name - std::begin(LessonFile::stepNames));
        step.channel = told[QLatin1String("channel")].toInt();
        step.window = told[QLatin1String("window")].toInt();
        step.first = told[QLatin1String("first")].toInt();
        step.rows = told[QLatin1String("rows")].toInt();
        if (step.kind == SampleStep::Kind::Edit) {
            step.first = told[QLatin1String("row")].toInt();
            step.value = told[QLatin1String("value")].toDouble();
        }
        if (step.kind == SampleStep::Kind::Formula)
            step.recipe = recipeOf(told);
        part->steps.append(step);
    }
}

bool Assembly::takeFile(const QString& name, const QString& checksum, const Lesson::Part& part,
                        StoredExperiment* experiment)
{
    const QString shown = part.group.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, part.group);
    const auto found = entries.find(name);
    if (found == entries.end() || !isExperimentName(name)) {
        problems << LessonFile::tr("%1 is missing").arg(shown);
        return false;
    }
    const Entry& entry = found->second;
    if (!entry.fault.isEmpty()) {
        problems << LessonFile::tr("%1: %2").arg(shown, entry.fault);
        return false;
    }
    if (!checksum.isEmpty() && checksum != entry.checksum)
        problems << LessonFile::tr("%1 was changed outside of the program").arg(shown);
    if (!entry.experiment.leftOut.isEmpty())
        problems << LessonFile::tr("%1: %2").arg(shown, entry.experiment.leftOut);
    *experiment = entry.experiment;
    experiment->isClass = part.isClass;
    return true;
}

void Assembly::takeByNames()
{
    for (int slot = -1; slot < mostLoggers; ++slot) {
        Lesson::Part part;
        part.isClass = slot < 0;
        part.slot = slot;
        part.isInClass = !part.isClass;
        const QString name =
            part.isClass ? QStringLiteral("class.xml") : QStringLiteral("group-%1.xml").arg(slot + 1);
        if (entries.count(name) == 0)
            continue;
        part.isStored = takeFile(name, QString(), part, &part.experiment);
        part.group = part.isClass ? QString() : part.experiment.title;
        lesson->parts.append(part);
    }
}

} // namespace

bool LessonFile::read(const QByteArray& bytes, Lesson* lesson, QString* reason, qint64 most)
{
    *lesson = Lesson();
    Unpacked unpacked = unpackAll(bytes, most);
    Assembly(&unpacked, lesson).assemble();
    const bool isAny =
        !lesson->kept.isEmpty() || std::any_of(lesson->parts.cbegin(), lesson->parts.cend(),
                                               [](const Lesson::Part& part) { return part.isStored; });
    unpacked.problems.removeDuplicates();
    *reason = unpacked.entries.size() <= 1 && !isAny ? tr("it is no lesson")
                                                     : unpacked.problems.join(QStringLiteral(", "));
    return isAny;
}

bool LessonFile::read(const QString& filename, Lesson* lesson, QString* reason)
{
    const QString name = QFileInfo(filename).fileName();
    const QString cannot = tr("%1 can't be opened: %2").arg(name);
    QFile file(filename);
    if (!file.open(QIODevice::ReadOnly)) {
        *reason = cannot.arg(file.errorString());
        return false;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        *reason = cannot.arg(file.errorString());
        return false;
    }
    QString cause;
    const bool isRead = read(bytes, lesson, &cause);
    if (!isRead)
        *reason = cannot.arg(cause);
    else
        *reason = cause.isEmpty() ? QString()
                                  : tr("%1 was read but for what can't be used of it: %2").arg(name, cause);
    return isRead;
}

#include "virtual/wire.h"

#include <QtEndian>

namespace Wire {

namespace {

constexpr int bySum = 0;   // only the sum tells the end
constexpr int byPage = -1; // the device knows

struct CommandFrame
{
    quint8 start;
    quint8 family;
    quint8 code;
    int length; ///< whole frame, or bySum, byPage
    const char* meaning;
};

// clang-format off
constexpr CommandFrame commandFrames[] = {
    {0x47, 0x14, GetStatus,        4, "get status"},
    {0x47, 0x14, LoggingSetup,    17, "logging setup"},
    {0x47, 0x14, Start,            4, "start"},
    {0x47, 0x14, Stop,             4, "stop"},
    {0x47, 0x14, Download,         5, "download experiment"},
    {0x47, 0x14, ExperimentsTable, 4, "get table of experiments"},
    {0x47, 0x14, NextPacket,       4, "send next packet"},
    {0x47, 0x14, ResendPacket,     4, "resend packet"},
    {0x47, 0x14, StopTransmission, 4, "stop transmission"},
    {0x47, 0x14, Snapshot,         4, "get all sensor values"},
    {0x47, 0x14, DeleteLast,       4, "delete last experiment"},
    {0x47, 0x14, DeleteAll,        4, "delete all experiments"},
    {0x47, 0x14, SensorIds,        4, "get sensor IDs"},
    {0x47, 0x14, SetClock,        10, "set clock"},
    {0x47, 0x14, Configure,        6, "configure"},
    {0x47, 0x14, Calibrate,        6, "calibrate temperature"},
    {0x47, 0x14, Reserved,         4, "reserved"},
    {0x47, 0x14, SelfTest,         4, "self test"},
    {0x47, 0x14, LongCommand,      bySum, "long command"},
    {0x47, 0x16, 0x09,             4, "enter firmware loader"},
    {0x57, 0x16, LoaderReply,       4, "loader: reply"},
    {0x57, 0x16, LoaderWrite,       byPage, "loader: write page"},
    {0x57, 0x16, LoaderRead,        8, "loader: read page"},
    {0x57, 0x16, LoaderWriteEeprom, 22, "loader: write EEPROM"},
    {0x57, 0x16, LoaderReadEeprom,  6, "loader: read EEPROM"},
    {0x57, 0x16, LoaderErase,       4, "loader: erase"},
    {0x57, 0x16, LoaderConfirm,     4, "loader: confirm"},
    {0x57, 0x16, LoaderSums,        4, "loader: checksums"},
    {0x67, 0x24, 0x10,             4, "Vorta: get status"},
    {0x67, 0x24, 0x22,             7, "Vorta: start"},
    {0x67, 0x24, 0x33,             4, "Vorta: stop"},
    {0x67, 0x24, 0x55,             4, "Vorta: get all values"},
    {0x67, 0x24, 0x66,             4, "Vorta: calibrate and test"},
    {0x67, 0x26, 0x09,             4, "Vorta: enter firmware loader"},
};

struct Meaning
{
    quint8 code;
    const char* text;
};

constexpr Meaning events[] = {
    {UserChange, "setting changed on the logger"}, {GetStatus, "as asked"},
    {LoggingSetup, "setup taken"},                 {Start, "run started"},
    {NoBattery, "no run: battery low"},            {NoMemory, "no run: memory full"},
    {NoSensor, "no run: no sensor"},               {Stop, "run stopped"},
    {Download, "download begins"},                 {ExperimentsTable, "table of experiments"},
    {NextPacket, "no packet left"},                {StopTransmission, "transmission stopped"},
    {DeleteLast, "last experiment deleted"},       {DeleteAll, "all experiments deleted"},
    {LongCommand, "long command taken"},           {SetClock, "clock set"},
    {Configure, "configuration taken"},            {Calibrate, "calibrated"},
    {Calibrate + 1, "already calibrated"},         {Calibrate + 2, "calibration too far off"},
    {Calibrate + 3, "calibration out of range"},   {Calibrate + 4, "no calibration during a run"},
};

constexpr Meaning loaderAnswers[] = {
    {LoaderReady, "loader: ready"},
    {LoaderReadyVorta, "loader: ready"},
    {LoaderOk, "loader: done"},
    {LoaderBad, "loader: refused"},
    {LoaderErased, "loader: erased"},
    {LoaderPage, "loader: page"},
    {LoaderEepromPage, "loader: EEPROM page"},
    {LoaderSumsPacket, "loader: checksums"},
};
// clang-format on

const CommandFrame* commandFrame(const QByteArray& bytes)
{
    for (const CommandFrame& row : commandFrames) {
        if (bytes.size() >= 3 && quint8(bytes[0]) == row.start && quint8(bytes[1]) == row.family &&
            quint8(bytes[2]) == row.code)
            return &row;
    }
    return nullptr;
}

bool isStart(const QByteArray& bytes)
{
    const auto first = quint8(bytes[0]);
    if (first != 0x47 && first != 0x57 && first != 0x67)
        return false;
    if (bytes.size() < 2)
        return true;
    for (const CommandFrame& row : commandFrames) {
        if (first == row.start && quint8(bytes[1]) == row.family)
            return bytes.size() < 3 || commandFrame(bytes);
    }
    return false;
}

/// The end of a long command, whose length is not told: where its 16-bit sum comes out.
int longCommandLength(const QByteArray& bytes)
{
    quint16 sum = 0;
    for (int i = 0; i + 2 <= bytes.size(); ++i) {
        if (i >= 4 && quint16(-sum) == read16(bytes, i))
            return i + 2;
        sum = quint16(sum + quint8(bytes[i]));
    }
    return 0;
}

QByteArray withSum(const QByteArray& startBytes, quint8 type, const QByteArray& body)
{
    QByteArray frame = startBytes + char(type) + body;
    quint8 sum = 0;
    for (const char byte : frame)
        sum = quint8(sum + quint8(byte));
    frame += char(-sum);
    return frame;
}

bool isPageGood(const QByteArray& frame)
{
    if (frame.size() != longPageFrame)
        return frame.size() == shortPageFrame && isSumGood(frame);
    quint16 sum = 0;
    for (int i = 0; i + 2 < frame.size(); ++i)
        sum = quint16(sum + quint8(frame[i]));
    return quint16(-sum) == read16(frame, frame.size() - 2);
}

QString describeEvent(quint8 code)
{
    for (const Meaning& event : events) {
        if (event.code == code)
            return QStringLiteral("status: ") + QLatin1String(event.text);
    }
    return QStringLiteral("status");
}

QString describeFromLoader(quint8 code)
{
    for (const Meaning& answer : loaderAnswers) {
        if (answer.code == code)
            return QLatin1String(answer.text);
    }
    return QStringLiteral("unknown");
}

QString describeFromVorta(const QByteArray& frame)
{
    if (quint8(frame[2]) == VortaStatusPacket)
        return describeEvent(quint8(frame[3]));
    return quint8(frame[2]) == VortaSnapshotPacket ? QStringLiteral("snapshot")
                                                   : QStringLiteral("block of samples");
}

QString describeFromLogger(const QByteArray& frame)
{
    const auto number = [&frame](int at) {
        return frame.size() >= at + 2 ? int(qint16(read16(frame, at))) : 0;
    };
    switch (quint8(frame[2])) {
    case DataPlain:
    case DataExternal:
        return QStringLiteral("stored data, packet %1").arg(number(4));
    case InfoPlain:
    case InfoExternal:
        return QStringLiteral("stored experiment %1").arg(quint8(frame[3]));
    case SnapshotPacket:
        return QStringLiteral("snapshot");
    case SensorIdPacket:
        return QStringLiteral("sensor IDs");
    case OnlinePacket:
        return QStringLiteral("sample %1").arg(number(6));
    case ExternalEvent:
        return QStringLiteral("sockets hold %1 and %2").arg(quint8(frame[3])).arg(quint8(frame[4]));
    case SelfTestPacket:
        return QStringLiteral("self test result");
    case StatusPacket:
        return describeEvent(quint8(frame[3]));
    default:
        return QStringLiteral("unknown");
    }
}

} // namespace

QByteArray packet(Packet type, const QByteArray& body)
{
    return withSum("\x2E\x69", type, body);
}

QByteArray vortaPacket(VortaPacket type, const QByteArray& body)
{
    return withSum("\x3E\x79", type, body);
}

QByteArray loaderPacket(LoaderPacket type, const QByteArray& body)
{
    return withSum("\x4C\x79", type, body);
}

bool isLoaderEntry(const QByteArray& frame, bool isVorta)
{
    return frame.startsWith(isVorta ? "\x67\x26\x09" : "\x47\x16\x09");
}

bool isSumGood(const QByteArray& frame)
{
    quint8 sum = 0;
    for (const char byte : frame)
        sum = quint8(sum + quint8(byte));
    return sum == 0;
}

void append16(QByteArray& bytes, int value)
{
    bytes += char(value >> 8);
    bytes += char(value);
}

quint16 read16(const QByteArray& bytes, int at)
{
    return qFromBigEndian<quint16>(bytes.constData() + at);
}

quint32 read32(const QByteArray& bytes, int at)
{
    return qFromBigEndian<quint32>(bytes.constData() + at);
}

quint8 toBcd(int value)
{
    return quint8(((value / 10) << 4) | (value % 10));
}

int fromBcd(quint8 byte)
{
    return (byte >> 4) * 10 + (byte & 0x0F);
}

QByteArray bcdDate(const QDateTime& utc)
{
    const QDate date = utc.date();
    const QTime time = utc.time();
    QByteArray bytes;
    for (const int value :
         {date.day(), date.month(), date.year() - 2000, time.hour(), time.minute(), time.second()})
        bytes += char(toBcd(value));
    return bytes;
}

QDateTime fromBcdDate(const QByteArray& bytes)
{
    const auto at = [&bytes](int i) { return fromBcd(quint8(bytes[i])); };
    return QDateTime(QDate(2000 + at(2), at(1), at(0)), QTime(at(3), at(4), at(5)), Qt::UTC);
}

int readSplit(const QByteArray& bytes, int at)
{
    const int first = quint8(bytes[at]);
    const int high = first < 0x80 ? first : first - 0x100;
    const int low = quint8(bytes[at + 1]);
    return high < 0 && low > 0 ? high * 256 + low - 256 : high * 256 + low;
}

QString describe(const QByteArray& frame, bool isFromLogger)
{
    if (isFromLogger) {
        const bool isVorta = frame.startsWith("\x3E\x79");
        const bool isLoader = frame.startsWith("\x4C\x79");
        if (frame.size() < (isLoader ? 4 : 5) || !(isVorta || isLoader || frame.startsWith("\x2E\x69")))
            return QStringLiteral("no whole packet");
        return (isLoader  ? describeFromLoader(quint8(frame[2]))
                : isVorta ? describeFromVorta(frame)
                          : describeFromLogger(frame)) +
               (isSumGood(frame) ? QString() : QStringLiteral(", in part, in a burst or with a wrong sum"));
    }
    const CommandFrame* row = commandFrame(frame);
    const bool isWhole =
        row &&
        (row->length == bySum ||
         (row->length == byPage ? isPageGood(frame) : frame.size() == row->length && isSumGood(frame)));
    return isWhole ? QString::fromLatin1(row->meaning) : QStringLiteral("junk");
}

bool CommandCutter::next(QByteArray* frame, Kind* kind)
{
    constexpr int longestCommand = 1024;
    if (buffer.isEmpty())
        return false;
    int length = 0;
    if (isStart(buffer)) {
        const CommandFrame* row = commandFrame(buffer);
        if (!row)
            return false;
        length = row->length == bySum    ? longCommandLength(buffer)
                 : row->length == byPage ? pageFrame
                                         : row->length;
        if (length == 0 ? buffer.size() < longestCommand : buffer.size() < length)
            return false;
        const QByteArray head = buffer.left(length);
        const bool isGood =
            row->length == bySum || (row->length == byPage ? isPageGood(head) : isSumGood(head));
        if (length > 0 && isGood) {
            *frame = buffer.left(length);
            *kind = Command;
            buffer.remove(0, length);
            return true;
        }
    }
    length = 1;
    while (length < buffer.size() && !isStart(buffer.mid(length, 3)))
        ++length;
    *frame = buffer.left(length);
    *kind = Junk;
    buffer.remove(0, length);
    return true;
}

} // namespace Wire

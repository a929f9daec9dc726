#include "firmware/firmwareimage.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>

namespace {

enum recordType
{
    TYPE_DATA = 0,
    TYPE_EOF = 1,
    TYPE_SEGMENT = 2,
    TYPE_OFFSET = 4
};

constexpr qint64 longestFile = 16 * 1024 * 1024;
constexpr int flashBegin = 0x1000; // the boot loader is below
constexpr int flashEnd = 0x20000;
constexpr int eepromEnd = 0x400;
constexpr int lastEepromRecord = 0x3F0;
constexpr int brevikBegin = 0x2000;
constexpr int brevikLast = 0x2A700;
constexpr int headBytes = 4; // count, address, type
constexpr int eepromBank = 0xF0;

constexpr int dataTokens = 37;
constexpr int dataLine = 2 + 32; // bytes
constexpr int linesPerString = 8;

int pageSize(bootLoaderMode type)
{
    return type == MODE_EEPROM ? SIZE_EEPROM : type == MODE_BREVIK_FLASH ? SIZE_BREVIK_FLASH : SIZE_FLASH;
}

QString hex(int number)
{
    return QStringLiteral("0x%1").arg(number, 4, 16, QLatin1Char('0'));
}

int byteAt(const QByteArray& bytes, int i)
{
    return uchar(bytes[i]);
}

} // namespace

dataPacket::dataPacket(int start, bootLoaderMode type)
    : start(start)
    , end(start + pageSize(type))
    , data(pageSize(type), char(0xFF))
    , written(pageSize(type), 0)
{
    // A word of the Brevik's memory has three bytes; the fourth reads as 0.
    for (int i = 0; type == MODE_BREVIK_FLASH && i < data.size(); i += 4)
        data[i] = 0;
}

int dataPacket::addData(int address, const QByteArray& bytes)
{
    if (address < start || address >= end)
        return -1;
    const int count = qMin(bytes.size(), end - address);
    data.replace(address - start, count, bytes.left(count));
    std::fill_n(written.begin() + (address - start), count, 1);
    return count;
}

bool dataPacket::differs(int address, const QByteArray& bytes) const
{
    const int at = address - start;
    for (int i = 0; i < bytes.size() && at + i < data.size(); ++i) {
        if (written[at + i] && data[at + i] != bytes[i])
            return true;
    }
    return false;
}

int dataPacket::compare(int address, const QByteArray& bytes) const
{
    return address == start && bytes == data ? 0 : -1;
}

int dataPacket::sum() const
{
    int sum = 0;
    for (int i = 0; i < data.size(); ++i)
        sum += byteAt(data, i);
    return sum;
}

int FirmwareImage::open(const QString& path, bool isHex)
{
    const bool isBrevik =
        isHex && QFileInfo(path).fileName().contains(QLatin1String("brevik"), Qt::CaseInsensitive);
    filename = QFileInfo(path).completeBaseName();
    return !isHex ? readDataFile(path) : isBrevik ? readFileBrevik(path) : readFile(path);
}

int FirmwareImage::readFile(const QString& path)
{
    hexFormat = true;
    brevikFile = false;
    return takeFile(path);
}

int FirmwareImage::readFileBrevik(const QString& path)
{
    hexFormat = true;
    brevikFile = true;
    return takeFile(path);
}

int FirmwareImage::readDataFile(const QString& path)
{
    hexFormat = false;
    brevikFile = false;
    return takeFile(path);
}

int FirmwareImage::takeFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        refuse(tr("The file can't be read: %1").arg(file.errorString()));
        return -1;
    }
    if (file.size() > longestFile) {
        refuse(tr("The file is too long for firmware."));
        return -1;
    }
    return take(file.readAll(), hexFormat, brevikFile);
}

int FirmwareImage::take(const QByteArray& text, bool isHex, bool isBrevik)
{
    clear();
    hexFormat = isHex;
    brevikFile = isBrevik;
    if (!isHex)
        return readData(text);
    if (readHex(text) != 0)
        return -1;
    if (!isBrevik)
        calculateCS();
    return 0;
}

void FirmwareImage::clear()
{
    fileOK = false;
    label.clear();
    flashPackets.clear();
    eepromPackets.clear();
    brevikData.clear();
    brevikLongData.clear();
    flashPlaces.clear();
    eepromPlaces.clear();
    dataPlaces.clear();
    flashCS = eepromCS = 0;
}

bool FirmwareImage::refuse(const QString& reason)
{
    clear();
    label = reason;
    return false;
}

bool FirmwareImage::splitLines(const QByteArray& text, QStringList* lines)
{
    *lines = QString::fromLatin1(text).split(QLatin1Char('\n'));
    while (!lines->isEmpty() && lines->constLast().trimmed().isEmpty())
        lines->removeLast(); // what stands behind the last line feed
    return !lines->isEmpty() || refuse(tr("The file is empty."));
}

// --- Intel HEX ---

/// Count, address (the high byte first), type, data and a byte that makes the sum of all 0 in eight bits.
bool FirmwareImage::readRecord(const QString& text, int line, Record* record)
{
    const QString digits = text.mid(1).trimmed();
    const auto refuseLine = [&](const QString& what) {
        return refuse(tr("Line %1 can't be read: %2 (%3)").arg(line).arg(what, text.trimmed()));
    };
    const bool isDigits = std::all_of(digits.begin(), digits.end(), [](QChar c) {
        return (c >= QLatin1Char('0') && c <= QLatin1Char('9')) ||
               (c.toLower() >= QLatin1Char('a') && c.toLower() <= QLatin1Char('f'));
    });
    if (!isDigits)
        return refuseLine(tr("a character is no digit"));
    if (digits.size() % 2 != 0)
        return refuseLine(tr("half a byte is missing"));
    const QByteArray bytes = QByteArray::fromHex(digits.toLatin1());
    int sum = 0;
    for (int i = 0; i < bytes.size(); ++i)
        sum += byteAt(bytes, i);
    if ((sum & 0xFF) != 0)
        return refuse(tr("Wrong CS in line %1 = %2").arg(line).arg(text.trimmed()));
    if (bytes.size() < headBytes + 1 || bytes.size() < headBytes + byteAt(bytes, 0) + 1)
        return refuseLine(tr("it is shorter than it says"));
    record->line = line;
    record->address = byteAt(bytes, 1) << 8 | byteAt(bytes, 2);
    record->type = byteAt(bytes, 3);
    record->data = bytes.mid(headBytes, byteAt(bytes, 0));
    return true;
}

int FirmwareImage::readHex(const QByteArray& text)
{
    QStringList lines;
    if (!splitLines(text, &lines))
        return -1;
    mode = MODE_FLASH;
    offset = 0;
    for (int line = 0; line < lines.size(); ++line) {
        Record record;
        if (!readRecord(lines[line], line, &record))
            return -1;
        const bool isLast = line == lines.size() - 1;
        if (record.type == TYPE_EOF && !isLast) {
            refuse(tr("Premature EOF in line %1 =%2").arg(line).arg(lines[line].trimmed()));
            return -1;
        }
        if (record.type == TYPE_EOF) {
            label = tr("File OK");
            fileOK = true;
            return 0;
        }
        if (!takeRecord(record))
            return -1;
    }
    refuse(tr("The file has no end: its last record is missing."));
    return -1;
}

bool FirmwareImage::takeRecord(const Record& record)
{
    switch (record.type) {
    case TYPE_OFFSET:
    case TYPE_SEGMENT:
        return takeOffset(record);
    case TYPE_DATA:
        return takeData(record);
    default: // where to start is no matter of memory
        return true;
    }
}

/// The memory that the records after this one are for.
bool FirmwareImage::takeOffset(const Record& record)
{
    if (record.data.size() < 2)
        return refuse(tr("Line %1 can't be read: it is shorter than it says").arg(record.line));
    const int value = byteAt(record.data, 0) << 8 | byteAt(record.data, 1);
    const int flashBanks = brevikFile ? 3 : 2;
    const bootLoaderMode flash = brevikFile ? MODE_BREVIK_FLASH : MODE_FLASH;
    const qint64 base = record.type == TYPE_OFFSET ? qint64(value) << 16 : qint64(value) << 4;
    if (base < qint64(flashBanks) << 16) {
        mode = flash;
        offset = int(base);
    } else {
        mode = !brevikFile && base == qint64(eepromBank) << 16 ? MODE_EEPROM : MODE_IGNORE;
        offset = 0;
    }
    return true;
}

bool FirmwareImage::takeData(const Record& record)
{
    const int address = offset + record.address;
    const int end = address + record.data.size();
    const auto refuseAddress = [&](const QString& what) {
        return refuse(tr("Line %1: the address %2 %3").arg(record.line).arg(hex(address), what));
    };
    if (mode == MODE_IGNORE || record.data.isEmpty())
        return true;
    if (brevikFile) {
        if (mode != MODE_BREVIK_FLASH || address < brevikBegin || address > brevikLast)
            return true;
        return addData(record.line, address, record.data);
    }
    if (mode == MODE_EEPROM) {
        if (address > lastEepromRecord || end > eepromEnd)
            return refuseAddress(tr("is behind the EEPROM."));
        return addData(record.line, address, record.data);
    }
    if (address < flashBegin)
        return refuseAddress(tr("belongs to the boot loader."));
    if (end > flashEnd)
        return refuseAddress(tr("is behind the program memory."));
    return addData(record.line, address, record.data);
}

bool FirmwareImage::addData(int line, int address, const QByteArray& bytes)
{
    for (int done = 0; done < bytes.size();) {
        dataPacket& packet = locatePacket(address + done);
        const QByteArray rest = bytes.mid(done);
        if (packet.differs(address + done, rest))
            return refuse(tr("Line %1 writes other bytes than a line before it at the address %2.")
                              .arg(line)
                              .arg(hex(address)));
        const int count = packet.addData(address + done, rest);
        if (count <= 0)
            return refuse(tr("Line %1: the address %2 is in no page.").arg(line).arg(hex(address)));
        done += count;
    }
    return true;
}

/// The page of an address, a new one if the file has not named it yet.
dataPacket& FirmwareImage::locatePacket(int address)
{
    const bool isEeprom = mode == MODE_EEPROM;
    QVector<dataPacket>& packets = isEeprom ? eepromPackets : flashPackets;
    QHash<int, int>& places = isEeprom ? eepromPlaces : flashPlaces;
    const int size = pageSize(mode);
    const int start = address / size * size;
    const auto found = places.constFind(start);
    if (found != places.constEnd())
        return packets[*found];
    places.insert(start, packets.size());
    packets.append(dataPacket(start, mode));
    return packets.last();
}

void FirmwareImage::calculateCS()
{
    const auto sumOf = [](const QVector<dataPacket>& packets, const QHash<int, int>& places, int begin,
                          int end, int size) {
        int sum = 0;
        for (int address = begin; address < end; address += size) {
            const auto found = places.constFind(address);
            sum += found == places.constEnd() ? size * 0xFF : packets[*found].sum();
        }
        return sum;
    };
    flashCS = sumOf(flashPackets, flashPlaces, flashBegin, flashEnd, SIZE_FLASH);
    eepromCS = sumOf(eepromPackets, eepromPlaces, 0, eepromEnd, SIZE_EEPROM) & 0xFF;
}

// --- Data files ---

int FirmwareImage::readData(const QByteArray& text)
{
    QStringList lines;
    if (!splitLines(text, &lines))
        return -1;
    for (int line = 0; line < lines.size(); ++line) {
        if (!readDataLine(lines[line], line))
            return -1;
    }
    if (brevikData.isEmpty()) {
        refuse(tr("The file has no line of data."));
        return -1;
    }
    joinDataLines();
    label = tr("File OK");
    fileOK = true;
    return 0;
}

bool FirmwareImage::readDataLine(const QString& text, int line)
{
    const QStringList tokens = text.simplified().split(QLatin1Char(' '));
    if (tokens.size() < dataTokens || tokens[0] != QLatin1String(":"))
        return true;
    QByteArray bytes;
    for (int i = 1; i <= dataLine; ++i) {
        bool isByte = false;
        const uint value = tokens[i].toUInt(&isByte, 16);
        if (!isByte || value > 0xFF)
            return refuse(tr("Line %1 can't be read: %2 is no byte").arg(line).arg(tokens[i]));
        bytes.append(char(value));
    }
    const int address = byteAt(bytes, 0) << 8 | byteAt(bytes, 1);
    if (dataPlaces.contains(address))
        return refuse(tr("Line %1 has the address %2 of a line before it.").arg(line).arg(hex(address)));
    dataPlaces.insert(address, brevikData.size());
    brevikData.append(bytes);
    return true;
}

/// From a line and the seven at the next addresses; those that are missing read as erased.
void FirmwareImage::joinDataLines()
{
    QVector<bool> isUsed(brevikData.size(), false);
    for (int i = 0; i < brevikData.size(); ++i) {
        if (isUsed[i])
            continue;
        isUsed[i] = true;
        QByteArray text = brevikData[i];
        const int address = byteAt(text, 0) << 8 | byteAt(text, 1);
        for (int next = 1; next < linesPerString; ++next) {
            const int place = dataPlaces.value(address + next, -1);
            const bool isThere = place >= 0 && !isUsed[place];
            text += isThere ? brevikData[place].mid(2) : QByteArray(dataLine - 2, char(0xFF));
            if (isThere)
                isUsed[place] = true;
        }
        brevikLongData.append(text);
    }
}

#include "virtual/virtualloader.h"

#include "virtual/wire.h"

#include <algorithm>
#include <random>

namespace {

constexpr int usualVersion = 2; // the first that erases and knows sums
constexpr int loaderEnd = 0x1000;
constexpr int flashEnd = 0x20000;
constexpr int brevikBegin = 0x2000;
constexpr int brevikEnd = 0x2A800;
constexpr int eepromEnd = 0x400;
constexpr int eepromInFile = 0xF00000;
constexpr int pageSize = 128;
constexpr int brevikPageSize = 256;
constexpr int eepromPageSize = 16;
constexpr int headOfPage = 3 + 4; // of its frame
constexpr int headOfEeprom = 3 + 2;
constexpr char erased = char(0xFF);

/// A record of Intel HEX.
QByteArray record(int address, int type, const QByteArray& data)
{
    QByteArray bytes(1, char(data.size()));
    Wire::append16(bytes, address);
    bytes += char(type);
    bytes += data;
    int sum = 0;
    for (const char byte : qAsConst(bytes))
        sum += quint8(byte);
    return ':' + (bytes + char(-sum)).toHex().toUpper() + '\n';
}

QByteArray records(const QByteArray& memory, int begin, int inFile)
{
    constexpr int recordSize = 16;
    QByteArray text;
    int bank = -1;
    for (int at = begin; at < memory.size(); at += recordSize) {
        const QByteArray data = memory.mid(at, recordSize);
        if (data.count(erased) == data.size())
            continue;
        const int address = inFile + at;
        if (address >> 16 != bank) {
            bank = address >> 16;
            QByteArray high;
            Wire::append16(high, bank);
            text += record(0, 4, high);
        }
        text += record(address & 0xFFFF, 0, data);
    }
    return text;
}

quint32 sumOf(const QByteArray& memory, int begin)
{
    quint32 sum = 0;
    for (int at = begin; at < memory.size(); ++at)
        sum += quint8(memory[at]);
    return sum;
}

} // namespace

/// A logger comes with software in it: who forgets to erase writes over that.
VirtualLoader::VirtualLoader(Kind kind, quint32 seed)
    : kind(kind)
    , flash(kind == Brevik ? brevikEnd : flashEnd, erased)
    , eeprom(eepromEnd, erased)
{
    std::mt19937 random(seed);
    std::generate(flash.begin() + (kind == Brevik ? brevikBegin : loaderEnd), flash.end(),
                  [&random] { return char(random()); });
}

int VirtualLoader::version() const
{
    return faults.loader > 0 ? int(faults.loader) : usualVersion;
}

bool VirtualLoader::canErase() const
{
    return kind == Brevik || (kind == Tembrin && version() >= usualVersion);
}

int VirtualLoader::pageFrame() const
{
    return kind == Brevik ? headOfPage + brevikPageSize + 2 : headOfPage + pageSize + 1;
}

QByteArray VirtualLoader::programMemory() const
{
    QByteArray bytes = flash;
    const int bad = int(faults.badbyte);
    if (bad > 0 && bad < bytes.size())
        bytes[bad] = char(bytes[bad] ^ 1);
    return bytes;
}

QByteArray VirtualLoader::hex() const
{
    return records(programMemory(), kind == Brevik ? brevikBegin : loaderEnd, 0) +
           records(eeprom, 0, eepromInFile) + record(0, 1, {});
}

QByteArray VirtualLoader::enter()
{
    isEntered = true;
    page = 0;
    lastPlace = 0;
    return announce();
}

QByteArray VirtualLoader::announce() const
{
    if (kind == Vorta)
        return Wire::loaderPacket(Wire::LoaderReadyVorta, QByteArray(1, '\0'));
    return Wire::loaderPacket(Wire::LoaderReady, QByteArray(1, char(version())));
}

QByteArray VirtualLoader::obey(const QByteArray& frame)
{
    if (!frame.startsWith("\x57\x16"))
        return {};
    switch (Wire::LoaderCode(quint8(frame[2]))) {
    case Wire::LoaderReply:
        return announce();
    case Wire::LoaderWrite:
        return writePage(frame);
    case Wire::LoaderRead:
        return readPage(int(Wire::read32(frame, 3)));
    case Wire::LoaderWriteEeprom:
        return writeEeprom(frame);
    case Wire::LoaderReadEeprom:
        return readEeprom(Wire::read16(frame, 3));
    case Wire::LoaderErase:
        return erase();
    case Wire::LoaderConfirm:
        isEntered = false;
        return announce(); // the software's first word is the same
    case Wire::LoaderSums:
        return sums();
    }
    return {};
}

QByteArray VirtualLoader::hearJunk(const QByteArray& bytes) const
{
    return bytes.startsWith("\x57\x16") ? Wire::loaderPacket(Wire::LoaderBad) : QByteArray();
}

QByteArray VirtualLoader::erase()
{
    if (!canErase())
        return Wire::loaderPacket(Wire::LoaderBad);
    const int begin = kind == Brevik ? brevikBegin : loaderEnd;
    std::fill(flash.begin() + begin, flash.end(), erased);
    page = 0;
    lastPlace = 0;
    return Wire::loaderPacket(Wire::LoaderErased);
}

bool VirtualLoader::fails(quint32 place, QByteArray* answer)
{
    if (place != lastPlace)
        ++page;
    lastPlace = place;
    if (page == int(faults.badpage))
        *answer = Wire::loaderPacket(Wire::LoaderBad);
    else if (page == int(faults.restartpage))
        *answer = enter();
    else
        return page == int(faults.silentpage);
    return true;
}

/// Where erasing is a command of its own, writing can only clear bits.
QByteArray VirtualLoader::writePage(const QByteArray& frame)
{
    const int size = kind == Brevik ? brevikPageSize : pageSize;
    const qint64 address = qint64(Wire::read32(frame, 3)) * (kind == Brevik ? 2 : 1);
    const int begin = kind == Brevik ? brevikBegin : loaderEnd;
    QByteArray answer;
    if (address < begin || address + size > flash.size() || address % size != 0)
        return Wire::loaderPacket(Wire::LoaderBad);
    if (fails(quint32(address), &answer))
        return answer;
    for (int i = 0; i < size; ++i) {
        char& cell = flash.data()[int(address) + i];
        cell = canErase() ? char(cell & frame[headOfPage + i]) : frame[headOfPage + i];
    }
    return Wire::loaderPacket(Wire::LoaderOk);
}

QByteArray VirtualLoader::writeEeprom(const QByteArray& frame)
{
    const int address = Wire::read16(frame, 3);
    QByteArray answer;
    if (address + eepromPageSize > eeprom.size())
        return Wire::loaderPacket(Wire::LoaderBad);
    if (fails(quint32(eepromInFile + address), &answer))
        return answer;
    eeprom.replace(address, eepromPageSize, frame.mid(headOfEeprom, eepromPageSize));
    return Wire::loaderPacket(Wire::LoaderOk);
}

QByteArray VirtualLoader::readPage(int address) const
{
    if (address < 0 || address + pageSize > flash.size())
        return Wire::loaderPacket(Wire::LoaderBad);
    QByteArray body;
    Wire::append16(body, address >> 16);
    Wire::append16(body, address);
    return Wire::loaderPacket(Wire::LoaderPage, body + programMemory().mid(address, pageSize));
}

QByteArray VirtualLoader::readEeprom(int address) const
{
    if (address + eepromPageSize > eeprom.size())
        return Wire::loaderPacket(Wire::LoaderBad);
    QByteArray body;
    Wire::append16(body, address);
    return Wire::loaderPacket(Wire::LoaderEepromPage, body + eeprom.mid(address, eepromPageSize));
}

QByteArray VirtualLoader::sums() const
{
    if (!canErase() || kind == Brevik)
        return Wire::loaderPacket(Wire::LoaderBad);
    const quint32 sum = sumOf(programMemory(), loaderEnd);
    QByteArray body(1, char(sumOf(eeprom, 0)));
    Wire::append16(body, int(sum >> 16));
    Wire::append16(body, int(sum & 0xFFFF));
    return Wire::loaderPacket(Wire::LoaderSumsPacket, body);
}

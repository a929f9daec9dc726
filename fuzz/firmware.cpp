// Any bytes that may stand in a firmware file. Sums that only chance would get right are set right, so that
// what is behind them is read too.
#include <QByteArrayList>

#include "firmware/firmwareimage.h"

namespace {

void check(bool isTrue)
{
    if (!isTrue)
        abort();
}

void checkPages(const QVector<dataPacket>& packets, int size)
{
    for (const dataPacket& packet : packets) {
        check(packet.start % size == 0 && packet.end == packet.start + size && packet.data.size() == size);
        check(packet.compare(packet.start, packet.data) == 0 && packet.sum() <= size * 0xFF);
    }
}

void readAll(const QByteArray& text)
{
    FirmwareImage image;
    for (const bool isBrevik : {false, true}) {
        const bool isGood = image.take(text, true, isBrevik) == 0;
        check(isGood == image.fileOK && !image.label.isEmpty());
        check(isGood || (image.flashPackets.isEmpty() && image.eepromPackets.isEmpty()));
        checkPages(image.flashPackets, isBrevik ? SIZE_BREVIK_FLASH : SIZE_FLASH);
        checkPages(image.eepromPackets, SIZE_EEPROM);
        for (const dataPacket& packet : qAsConst(image.flashPackets))
            check(isBrevik || (packet.start >= 0x1000 && packet.end <= 0x20000));
        for (const dataPacket& packet : qAsConst(image.eepromPackets))
            check(packet.start >= 0 && packet.end <= 0x400);
    }
    const bool isGood = image.take(text, false, false) == 0;
    check(isGood == image.fileOK && (isGood || image.brevikLongData.isEmpty()));
    for (const QByteArray& line : qAsConst(image.brevikLongData))
        check(line.size() == 2 + 8 * 32);
}

QByteArray withRightSums(const QByteArray& text)
{
    QByteArrayList lines = text.split('\n');
    for (QByteArray& line : lines) {
        QByteArray bytes = QByteArray::fromHex(line.mid(1));
        if (bytes.isEmpty())
            continue;
        bytes.chop(1);
        int sum = 0;
        for (const char byte : qAsConst(bytes))
            sum += uchar(byte);
        line = ':' + bytes.append(char(-sum)).toHex();
    }
    return lines.join('\n');
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const QByteArray text(reinterpret_cast<const char*>(bytes), int(size));
    readAll(text);
    readAll(withRightSums(text));
    return 0;
}

#include "persistence/journalformat.h"

#include "common/classsize.h"

#include <QDataStream>
#include <QtEndian>

#include <zlib.h>

#include <cmath>
#include <cstring>

namespace {

constexpr char signature[JournalFormat::signatureSize + 1] = "PLNDRJ1\n";
constexpr int frameSize = 8; // the length of what follows, and its sum
constexpr int rowsHead = 7;  // slot, channels and rows
constexpr qint64 mostBytes = 64 * 1024 * 1024;

quint32 sumOf(const uchar* bytes, qint64 size)
{
    return quint32(crc32(0, bytes, uInt(size)));
}

/// A block with its frame still empty.
QByteArray begunBlock(JournalFormat::Kind kind)
{
    QByteArray block(frameSize, '\0');
    block.append(char(kind));
    return block;
}

QByteArray framed(QByteArray block)
{
    auto* const bytes = reinterpret_cast<uchar*>(block.data());
    const int size = block.size() - frameSize;
    qToLittleEndian(quint32(size), bytes);
    qToLittleEndian(sumOf(bytes + frameSize, size), bytes + 4);
    return block;
}

/// What a stream writes, behind the kind.
template<class Write> QByteArray streamed(JournalFormat::Kind kind, const Write& write)
{
    QByteArray payload;
    QDataStream stream(&payload, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_5_15);
    write(stream);
    return framed(begunBlock(kind) + payload);
}

QByteArray payloadOf(const JournalFormat::Block& block)
{
    return QByteArray::fromRawData(reinterpret_cast<const char*>(block.payload), block.size);
}

} // namespace

QByteArray JournalFormat::head(const QDateTime& begun)
{
    return QByteArray(signature, signatureSize) +
           streamed(Kind::Run, [&](QDataStream& stream) { stream << begun.toMSecsSinceEpoch(); });
}

QByteArray JournalFormat::block(const JournalGroup& group)
{
    return streamed(Kind::Group, [&](QDataStream& stream) {
        stream << quint8(group.slot) << qint32(group.loggerType) << group.group << group.logger
               << group.period << group.cardWidth << quint16(group.channels.size());
        for (const JournalChannel& channel : group.channels)
            stream << qint32(channel.sensorID) << qint16(channel.inLoggerIndex)
                   << qint16(channel.virtualIndex);
    });
}

QByteArray JournalFormat::block(const JournalRows& rows)
{
    const int columns = rows.channels + 1;
    const int count = rows.count();
    QByteArray block = begunBlock(Kind::Rows);
    const int head = block.size();
    block.resize(head + rowsHead + 8 * columns * count);
    auto* at = reinterpret_cast<uchar*>(block.data()) + head;
    *at++ = uchar(rows.slot);
    qToLittleEndian(quint16(rows.channels), at);
    qToLittleEndian(quint32(count), at + 2);
    at += 6;
    for (int column = 0; column < columns; ++column) {
        for (int row = 0; row < count; ++row, at += 8)
            qToLittleEndian(rows.values.at(row * columns + column), at);
    }
    return framed(block);
}

bool JournalFormat::isJournal(const uchar* bytes, qint64 size)
{
    return size >= signatureSize && std::memcmp(bytes, signature, signatureSize) == 0;
}

bool JournalFormat::next(const uchar* bytes, qint64 size, qint64* position, Block* block)
{
    const qint64 left = size - *position;
    if (left < frameSize + 1)
        return false;
    const uchar* const at = bytes + *position;
    const qint64 length = qFromLittleEndian<quint32>(at);
    if (length < 1 || length > mostBytes || length > left - frameSize)
        return false;
    if (sumOf(at + frameSize, length) != qFromLittleEndian<quint32>(at + 4))
        return false;
    block->kind = Kind(at[frameSize]);
    block->payload = at + frameSize + 1;
    block->size = int(length - 1);
    *position += frameSize + length;
    return true;
}

bool JournalFormat::read(const Block& block, QDateTime* begun)
{
    QDataStream stream(payloadOf(block));
    stream.setVersion(QDataStream::Qt_5_15);
    qint64 ms = 0;
    stream >> ms;
    *begun = QDateTime::fromMSecsSinceEpoch(ms);
    return stream.status() == QDataStream::Ok && begun->isValid();
}

bool JournalFormat::read(const Block& block, JournalGroup* group)
{
    QDataStream stream(payloadOf(block));
    stream.setVersion(QDataStream::Qt_5_15);
    quint8 slot = 0;
    qint32 loggerType = 0;
    quint16 channels = 0;
    stream >> slot >> loggerType >> group->group >> group->logger >> group->period >> group->cardWidth >>
        channels;
    group->slot = slot;
    group->loggerType = loggerType;
    group->channels.clear();
    for (int i = 0; i < qMin<int>(channels, mostChannels) && stream.status() == QDataStream::Ok; ++i) {
        qint32 sensorID = 0;
        qint16 inLoggerIndex = 0;
        qint16 virtualIndex = 0;
        stream >> sensorID >> inLoggerIndex >> virtualIndex;
        group->channels.append({sensorID, inLoggerIndex, virtualIndex});
    }
    return stream.status() == QDataStream::Ok && slot < mostLoggers && channels <= mostChannels &&
           std::isfinite(group->period) && group->period >= 0 && std::isfinite(group->cardWidth);
}

bool JournalFormat::RowsView::read(const Block& block)
{
    if (block.size < rowsHead)
        return false;
    ownSlot = block.payload[0];
    ownChannels = qFromLittleEndian<quint16>(block.payload + 1);
    const quint32 count = qFromLittleEndian<quint32>(block.payload + 3);
    first = block.payload + rowsHead;
    if (ownSlot >= mostLoggers || ownChannels > mostChannels ||
        quint64(count) * quint64(8 * (ownChannels + 1)) != quint64(block.size - rowsHead))
        return false;
    rows = int(count);
    return true;
}

void JournalFormat::RowsView::copyColumn(int column, double* into) const
{
    qFromLittleEndian<double>(first + qint64(8) * column * rows, rows, into);
}

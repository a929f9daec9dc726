#include "virtual/faultyline.h"

namespace {

constexpr double nsPerMs = 1e6;
constexpr int mostGarbage = 40;
constexpr int longestPause = 60; // ms
constexpr double mostPages = 10000;
constexpr double lastByte = 0x2FFFF;

struct FaultName
{
    const char* name;
    double LineFaults::*field;
    double most;
};

constexpr FaultName faultNames[] = {
    {"late", &LineFaults::late, 60000},
    {"silent", &LineFaults::silent, 100},
    {"garbage", &LineFaults::garbage, 100},
    {"badsum", &LineFaults::badsum, 100},
    {"lose", &LineFaults::lose, 100},
    {"cut", &LineFaults::cut, 100},
    {"burst", &LineFaults::burst, 60000},
    {"loader", &LineFaults::loader, 255},
    {"badpage", &LineFaults::badpage, mostPages},
    {"silentpage", &LineFaults::silentpage, mostPages},
    {"restartpage", &LineFaults::restartpage, mostPages},
    {"badbyte", &LineFaults::badbyte, lastByte},
};

} // namespace

bool LineFaults::set(const QString& name, double value, QString* error)
{
    for (const FaultName& row : faultNames) {
        if (name != QLatin1String(row.name))
            continue;
        if (!(value >= 0 && value <= row.most)) {
            *error = QStringLiteral("%1 takes a number from 0 to %2").arg(name).arg(row.most);
            return false;
        }
        this->*row.field = value;
        return true;
    }
    *error = QStringLiteral("no fault is called \"%1\"; there are %2")
                 .arg(name, names().join(QStringLiteral(", ")));
    return false;
}

QString LineFaults::text() const
{
    QStringList list;
    for (const FaultName& row : faultNames) {
        if (this->*row.field > 0)
            list.append(QStringLiteral("%1=%2").arg(QLatin1String(row.name)).arg(this->*row.field));
    }
    return list.join(QLatin1Char(' '));
}

QStringList LineFaults::names()
{
    QStringList list;
    for (const FaultName& row : faultNames)
        list.append(QString::fromLatin1(row.name));
    return list;
}

bool FaultyLine::happens(double percent)
{
    return percent > 0 && random() % 1000000 < percent * 10000;
}

void FaultyLine::push(qint64 due, const LineWrite& write)
{
    const qint64 before = pieces.empty() ? due : pieces.back().due;
    pieces.push_back({qMax(due, before), write});
}

void FaultyLine::send(const LoggerPackets& packets, qint64 now)
{
    for (const LoggerPacket& packet : packets) {
        const bool isAnswer = packet.run == 0;
        if ((isAnswer && happens(faults.silent)) || happens(faults.lose)) {
            push(now, {packet.bytes, {}, true});
            continue;
        }
        qint64 due = now + (isAnswer ? qint64(faults.late * nsPerMs) : 0);
        QByteArray bytes = packet.bytes;
        if (happens(faults.badsum))
            bytes[bytes.size() - 1] = char(bytes[bytes.size() - 1] + 1 + upTo(200));
        if (happens(faults.garbage)) {
            QByteArray garbage;
            for (int left = 1 + upTo(mostGarbage - 1); left > 0; --left)
                garbage += char(upTo(255));
            push(due, {garbage});
        }
        if (happens(faults.cut) && bytes.size() > 1) {
            const int at = 1 + upTo(bytes.size() - 2);
            push(due, {bytes.left(at)});
            bytes.remove(0, at);
            due += qint64((1 + upTo(longestPause - 1)) * nsPerMs);
        }
        push(due, {bytes, isAnswer ? LoggerPackets() : LoggerPackets{packet}});
    }
}

qint64 FaultyLine::nextDue() const
{
    if (pieces.empty())
        return -1;
    return qMax(pieces.front().due, lastBurst + qint64(faults.burst * nsPerMs));
}

QVector<LineWrite> FaultyLine::take(qint64 now)
{
    QVector<LineWrite> writes;
    if (pieces.empty() || nextDue() > now)
        return writes;
    const bool isBurst = faults.burst > 0;
    while (!pieces.empty() && pieces.front().due <= now) {
        const LineWrite& write = pieces.front().write;
        if (isBurst && !writes.isEmpty() && writes.last().isLost == write.isLost) {
            writes.last().bytes += write.bytes;
            writes.last().completed += write.completed;
        } else {
            writes.append(write);
        }
        pieces.pop_front();
    }
    lastBurst = now;
    return writes;
}

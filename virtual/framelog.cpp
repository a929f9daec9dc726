#include "virtual/framelog.h"

#include "virtual/wire.h"

#include <QDateTime>

namespace {

/// In the order of FrameLog::Fate.
const char* const fates[] = {"", ", lost on the line", ", not sent: nobody listens"};

bool openFile(QFile& file, const QString& path, QString* error)
{
    file.setFileName(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return true;
    *error = QStringLiteral("%1 can't be written: %2").arg(path, file.errorString());
    return false;
}

} // namespace

FrameLog::FrameLog()
{
    constexpr int flushPeriod = 500; // ms
    flushTimer.setInterval(flushPeriod);
    QObject::connect(&flushTimer, &QTimer::timeout, &flushTimer, [this] { flush(); });
}

FrameLog::~FrameLog()
{
    flush();
}

bool FrameLog::openLog(const QString& path, QString* error)
{
    flushTimer.start();
    return openFile(log, path, error);
}

bool FrameLog::openRecord(const QString& path, QString* error)
{
    flushTimer.start();
    return openFile(samples, path, error);
}

void FrameLog::note(int logger, const QString& name, const QByteArray& bytes, bool isFromLogger, Fate fate)
{
    if (!isLogging())
        return;
    line(logger, name,
         QStringLiteral("%1 %2 | %3%4")
             .arg(isFromLogger ? QStringLiteral("->") : QStringLiteral("<-"),
                  QString::fromLatin1(bytes.toHex(' ')).toUpper(), Wire::describe(bytes, isFromLogger),
                  QLatin1String(fates[fate])));
}

void FrameLog::note(int logger, const QString& name, const QString& event)
{
    if (isLogging())
        line(logger, name, QStringLiteral("** ") + event);
}

void FrameLog::line(int logger, const QString& name, const QString& text)
{
    log.write(QStringLiteral("%1 %2 %3 %4\n")
                  .arg(QDateTime::currentDateTime().toString(QStringLiteral("HH:mm:ss.zzz")))
                  .arg(logger + 1)
                  .arg(name, text)
                  .toUtf8());
}

void FrameLog::record(int logger, const LoggerPackets& packets, qint64 time)
{
    if (!samples.isOpen())
        return;
    for (const LoggerPacket& packet : packets) {
        samples.write(QByteArray::number(logger + 1) + ' ' + QByteArray::number(packet.run) + ' ' +
                      QByteArray::number(packet.sample) + ' ' + QByteArray::number(time) + ' ' +
                      packet.sampleBytes.toHex() + '\n');
    }
}

void FrameLog::flush()
{
    for (QFile* file : {&log, &samples}) {
        if (file->isOpen())
            file->flush();
    }
}

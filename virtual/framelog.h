#pragma once

#include "virtual/virtuallogger.h"

#include <QFile>
#include <QString>
#include <QTimer>

/// The two files that a rehearsal leaves: a readable log of all that went over the lines, and a record of the
/// samples for programs. Both are optional; lines reach the disk within a second, and all at the end.
class FrameLog
{
public:
    FrameLog();
    ~FrameLog();

    /// False, with the reason in `error`, if the file can't be written.
    bool openLog(const QString& path, QString* error);
    bool openRecord(const QString& path, QString* error);
    bool isLogging() const { return log.isOpen(); }

    enum Fate
    {
        Sent,
        Lost,   ///< by a fault of the line
        Unheard ///< nobody had the port open
    };

    /// A frame, or what else went over the line in one piece.
    void note(int logger, const QString& name, const QByteArray& bytes, bool isFromLogger, Fate fate);
    void note(int logger, const QString& name, const QString& event);
    /// One line a sample: logger and run (both from 1), sample number, CLOCK_MONOTONIC in ns just before the
    /// write, sample bytes in hexadecimal.
    void record(int logger, const LoggerPackets& samples, qint64 time);

    void flush();

private:
    void line(int logger, const QString& name, const QString& text);

    QFile log;
    QFile samples;
    QTimer flushTimer;
};

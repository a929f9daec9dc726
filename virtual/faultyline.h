#pragma once

#include "virtual/virtuallogger.h"

#include <QString>
#include <QStringList>

#include <deque>
#include <random>

/// What is wrong with a line and the boot loader behind it; all 0 for sound ones. Shares are percent of the
/// packets.
struct LineFaults : LoaderFaults
{
    double late = 0;    ///< ms that each answer takes
    double silent = 0;  ///< share of answers that are never given
    double garbage = 0; ///< share with random bytes in front
    double badsum = 0;  ///< share with a wrong checksum
    double lose = 0;    ///< share of packets lost, samples and answers alike
    double cut = 0;     ///< share cut into two writes with a pause between
    double burst = 0;   ///< ms between two writes, all that came in between in one

    /// Sets the fault of that name. False, with the reason in `error`, if there is none or the value is bad.
    bool set(const QString& name, double value, QString* error);
    QString text() const;
    static QStringList names();
};

/// One write on the port. `completed` are the samples whose last byte is in it. What is lost shows up too,
/// for the log; it is not to be written.
struct LineWrite
{
    QByteArray bytes;
    LoggerPackets completed = {};
    bool isLost = false;
};

/// Carries packets from a logger to its port in order, and does to them what the faults say. Reproducible by
/// its seed.
class FaultyLine
{
public:
    explicit FaultyLine(quint32 seed = 1)
        : random(seed)
    {
    }

    LineFaults faults;

    void send(const LoggerPackets& packets, qint64 now);
    /// The writes that are due.
    QVector<LineWrite> take(qint64 now);
    /// When the next write is due; -1 for never.
    qint64 nextDue() const;
    void clear() { pieces.clear(); }

private:
    struct Piece
    {
        qint64 due;
        LineWrite write;
    };

    bool happens(double percent);
    int upTo(int last) { return int(random() % unsigned(last + 1)); }
    void push(qint64 due, const LineWrite& write);

    std::mt19937 random;
    std::deque<Piece> pieces;
    qint64 lastBurst = 0;
};

#pragma once

#include "virtual/faultyline.h"
#include "virtual/framelog.h"
#include "virtual/virtuallogger.h"
#include "virtual/virtualport.h"

#include <QObject>

#include <memory>
#include <vector>

class QSocketNotifier;

/// The loggers of a class with their lines and ports, driven by one timer of the system on one thread.
class VirtualClass : public QObject
{
    Q_OBJECT

public:
    enum class PortKind
    {
        Terminal,
        Socket ///< for links by the fake Bluetooth service
    };

    explicit VirtualClass(const QVector<LoggerIdentity>& identities, const QString& directory,
                          PortKind kind = PortKind::Terminal, QObject* parent = nullptr);
    ~VirtualClass() override;

    /// Opens all ports. False, with the reason in `error`, if one can't be.
    bool open(QString* error);

    int count() const { return int(places.size()); }
    VirtualPort& port(int index) { return *places[size_t(index)]->port; }
    LineFaults& faults(int index) { return places[size_t(index)]->line.faults; }
    const VirtualLogger& logger(int index) const { return *places[size_t(index)]->logger; }
    FrameLog& log() { return frameLog; }

    /// Lets somebody do something to a logger, and sends what comes of it.
    void act(int index, const std::function<LoggerPackets(VirtualLogger&, qint64)>& action);
    bool putBack(int index, QString* error);
    void pull(int index);

    /// CLOCK_MONOTONIC in nanoseconds: the clock of loggers and records.
    static qint64 now();

private:
    struct Place
    {
        std::unique_ptr<VirtualLogger> logger;
        std::unique_ptr<VirtualPort> port;
        FaultyLine line;
    };

    void addPlace(const LoggerIdentity& identity, std::unique_ptr<VirtualPort> port);
    void send(int index, const LoggerPackets& packets, qint64 time);
    void write(int index, qint64 time);
    void work();
    void setTimer();

    std::vector<std::unique_ptr<Place>> places;
    FrameLog frameLog;
    int timer = -1;
    qint64 timerDue = -1;
    std::unique_ptr<QSocketNotifier> timerNotifier;
};

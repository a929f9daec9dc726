#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>

class QSocketNotifier;

/// Where a logger is reached: a place in the file system, and one partner at a time. While there is none,
/// what is written is lost, as it is on a radio link without a partner.
class VirtualPort : public QObject
{
    Q_OBJECT

public:
    explicit VirtualPort(const QString& place, QObject* parent = nullptr);
    ~VirtualPort() override;

    /// Makes the place. False, with the reason in `error`, if the system refuses.
    virtual bool open(QString* error) = 0;
    /// Hangs up whoever is the partner, and takes the place away.
    virtual void close() = 0;
    virtual bool isOpen() const = 0;

    bool hasPartner() const { return isPartnerThere; }
    const QString& place() const { return where; }

    /// One write() of all of it. What the system does not take at once follows as soon as it does; false when
    /// too much is waiting already, or nobody listens: then nothing of it is sent.
    bool write(const QByteArray& bytes);

Q_SIGNALS:
    void received(const QByteArray& bytes);
    void partnerChanged(bool isThere);

protected:
    /// The descriptor that leads to the partner, which may still have to come.
    void attach(int descriptor);
    /// Closes it.
    void detach();
    virtual void setPartner(bool isThere);
    /// The system's write.
    virtual qint64 put(const char* bytes, qint64 count) = 0;

    static bool reportFailure(const QString& what, QString* error);

    int stream = -1;

private:
    void read();
    void writeWaiting();

    QString where;
    bool isPartnerThere = false;
    QByteArray waiting;
    std::unique_ptr<QSocketNotifier> readNotifier;
    std::unique_ptr<QSocketNotifier> writeNotifier;
};

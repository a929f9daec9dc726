#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

class QSocketNotifier;

/// A pseudo terminal in raw mode, published under a name of its own as a symbolic link. While no program has
/// the other end open, what is written is lost, as it is on a radio link without a partner.
class VirtualPort : public QObject
{
    Q_OBJECT

public:
    explicit VirtualPort(const QString& linkPath, QObject* parent = nullptr);
    ~VirtualPort() override;

    /// Makes the terminal and the link. False, with the reason in `error`, if the system refuses.
    bool open(QString* error);
    /// Hangs up whoever has the other end open, and takes the link away.
    void close();

    bool isOpen() const { return master >= 0; }
    bool hasPartner() const { return isPartnerThere; }
    const QString& linkPath() const { return link; }

    /// One write() of all of it. What the system does not take at once follows as soon as it does; false when
    /// too much is waiting already, or nobody listens: then nothing of it is sent.
    bool write(const QByteArray& bytes);

Q_SIGNALS:
    void received(const QByteArray& bytes);
    void partnerChanged(bool isThere);

private:
    void read();
    void lookForPartner();
    void setPartner(bool isThere);
    void writeWaiting();

    QString link;
    int master = -1;
    bool isPartnerThere = false;
    QByteArray waiting;
    std::unique_ptr<QSocketNotifier> readNotifier;
    std::unique_ptr<QSocketNotifier> writeNotifier;
    QTimer partnerTimer;
};

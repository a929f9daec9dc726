#pragma once

#include <QTimer>

#include "virtual/virtualport.h"

/// A pseudo terminal in raw mode, published under a name of its own as a symbolic link.
class TerminalPort : public VirtualPort
{
    Q_OBJECT

public:
    explicit TerminalPort(const QString& linkPath, QObject* parent = nullptr);
    ~TerminalPort() override;

    bool open(QString* error) override;
    void close() override;
    bool isOpen() const override { return stream >= 0; }

protected:
    void setPartner(bool isThere) override;
    qint64 put(const char* bytes, qint64 count) override;

private:
    void lookForPartner();

    QTimer partnerTimer;
};

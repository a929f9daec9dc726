#pragma once

#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "tests/data/loadedset.h"

/// A logger without a port: what it would send is handed in as bytes.
class FedLogger
{
public:
    explicit FedLogger(const QByteArray& sensorIDs, const Units& units = {})
        : protocol(0, units)
    {
        feed(QByteArray::fromHex("2e6982") + sensorIDs.leftJustified(18, '\0'), &TembrinData::handleSensID);
        feed(summed(QByteArray::fromHex("2e698310230400"), 33), &TembrinData::handleStatus);
        QObject::connect(
            &logger(), qOverload<int, short, QVector<QVector<double>>, int>(&TembrinData::onlineReceived),
            [this](int, short, const QVector<QVector<double>>& rows, int) { lastRow = rows.value(0); });
    }

    TembrinData& logger() { return *protocol.tembrinData; }
    /// The row of the sample that came last.
    const QVector<double>& row() const { return lastRow; }

    void online(quint16 mask, short sample, const QByteArray& values)
    {
        feed(QByteArray::fromHex("2e6984") + char(values.size() + 9) + word(mask) + word(quint16(sample)) +
                 values + '\0',
             &TembrinData::handleOnline);
    }

    /// A download of one packet at rate index `rate`.
    void download(quint16 mask, int rate, int samples, const QByteArray& values)
    {
        feed(summed(QByteArray::fromHex("2e698344230400"), 33), &TembrinData::handleStatus);
        const QByteArray noneLeft = QByteArray::fromHex("2e698346230400");
        feed(summed(QByteArray::fromHex("2e6944000000") + word(mask) + char(rate) + word(quint16(samples)) +
                        QByteArray(6, '\0') + values,
                    767),
             &TembrinData::handleDataPacket);
        feed(summed(noneLeft, 33), &TembrinData::handleStatus);
    }

    static QByteArray word(quint16 w) { return QByteArray(1, char(w >> 8)) + char(w & 0xFF); }

    TembrinProtocol protocol;

private:
    QVector<double> lastRow;

    static QByteArray summed(const QByteArray& bytes, int size)
    {
        quint8 sum = 0;
        for (const char byte : bytes)
            sum = quint8(sum + quint8(byte));
        return bytes.leftJustified(size - 1, '\0') + char(-sum);
    }

    void feed(QByteArray bytes, void (TembrinData::*handler)(unsigned char*, int))
    {
        (logger().*handler)(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size());
    }
};

#pragma once

#include "link/commandtype.h"
#include "link/serialport.h"

#include <QByteArray>
#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <QVector>

#include <functional>

/// Turns commands into frames, each written to the port in one piece. Nothing waits for an answer, and a
/// closed or deleted port swallows the frame. A command that its operation has no frame for writes nothing,
/// and so does one with too few arguments, which the log tells.
class MyPortTalker : public QObject
{
    Q_OBJECT

public:
    /// The port is not owned. `index` is the logger's, 0 to 7.
    MyPortTalker(SerialPort* port, int index, QObject* parent = nullptr);

    /// Commands 1 to 20. CMD_SET_DATE_AND_TIME takes the time from the clock, CMD_CALIBRATE_TEMP tenths of a
    /// degree Celsius (zero or below: back to the default calibration), CMD_CONFIGURE_TEMBRIN five flags and
    /// the language, CMD_TEMBRIN_LOGGING_SETUP ten arguments that begin with the sensor mask.
    void sendCommand(commandType cmd);
    void sendCommand(commandType cmd, const QVector<short>& args);
    /// `data` unchanged in a long frame; `cmd` does not enter it.
    void sendLongCommand(commandType cmd, const QByteArray& data);
    /// Commands 22 to 27.
    void sendVortaCommand(commandType cmd);
    void sendVortaCommand(commandType cmd, const QVector<short>& args);
    /// Commands 28 to 37. EEPROM commands take the low 16 bits of the address.
    void sendBLCommand(commandType cmd);
    void sendBLCommand(commandType cmd, int address);
    void sendBLCommand(commandType cmd, int address, const QByteArray& data);
    /// CMD_BL_WRITE_PROG_MEM_PAGE with 251 bytes or more: the address goes out halved.
    void sendLongPage(commandType cmd, int address, const QByteArray& data);

    enum class Field;

    /// Replaces the clock of CMD_SET_DATE_AND_TIME, which gives the time in UTC.
    void setClock(std::function<QDateTime()> utcNow);

private:
    struct Inputs;
    void sendFrame(commandType cmd, const Inputs& inputs);
    void appendField(QByteArray* frame, Field field, const short* arg, const Inputs& inputs) const;
    void write(const QByteArray& frame);

    QPointer<SerialPort> port;
    int index;
    std::function<QDateTime()> utcNow;
};

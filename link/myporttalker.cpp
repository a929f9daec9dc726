#include "link/myporttalker.h"

#include "link/linklog.h"

#include <QtEndian>

#include <algorithm>
#include <array>

struct MyPortTalker::Inputs
{
    QVector<short> args;
    int address = 0;
    QByteArray data;
};

/// One piece of a frame between its three head bytes and its checksum.
enum class MyPortTalker::Field
{
    None,
    LowByte,     // low byte of the next argument
    Mask,        // next argument as 16 unsigned bits
    SplitWord,   // next argument in the loggers' own two-byte form
    FiveFlags,   // next five arguments, the first in bit 0
    Temperature, // next argument, or all ones for the default calibration
    Clock,       // day, month, year, hour, minute, second in packed decimal
    Address16,
    Address32,
    Data
};

namespace {

using Field = MyPortTalker::Field;
using Fields = std::array<Field, 10>;

struct FrameRow
{
    commandType command;
    std::array<unsigned char, 3> head;
    Fields fields;
};

constexpr Fields nothing{};
constexpr Fields loggingSetup{Field::Mask,    Field::LowByte,   Field::LowByte, Field::LowByte,
                              Field::LowByte, Field::SplitWord, Field::LowByte, Field::LowByte,
                              Field::LowByte, Field::SplitWord};

constexpr FrameRow frameTable[] = {
    {CMD_GET_TEMBRIN_STATUS, {0x47, 0x14, 0x10}, nothing},
    {CMD_TEMBRIN_LOGGING_SETUP, {0x47, 0x14, 0x11}, loggingSetup},
    {CMD_START_LOGGING, {0x47, 0x14, 0x22}, nothing},
    {CMD_STOP_LOGGING, {0x47, 0x14, 0x33}, nothing},
    {CMD_DOWNLOAD_STORED_DATA, {0x47, 0x14, 0x44}, {Field::LowByte}},
    {CMD_GET_EXPERIMENTS_TABLE, {0x47, 0x14, 0x45}, nothing},
    {CMD_SEND_NEXT_PACKET, {0x47, 0x14, 0x46}, nothing},
    {CMD_RESEND_PACKET, {0x47, 0x14, 0x47}, nothing},
    {CMD_STOP_TRANSMISSION, {0x47, 0x14, 0x48}, nothing},
    {CMD_GET_ALL_SENSORS_VALUES, {0x47, 0x14, 0x55}, nothing},
    {CMD_DELETE_LAST_RECORDING, {0x47, 0x14, 0x88}, nothing},
    {CMD_CLEAR_ALL_SAMPLES_MEMORY, {0x47, 0x14, 0x99}, nothing},
    {CMD_GET_ALL_SENSORS_ID, {0x47, 0x14, 0xAA}, nothing},
    {CMD_SET_DATE_AND_TIME, {0x47, 0x14, 0xCC}, {Field::Clock}},
    {CMD_CONFIGURE_TEMBRIN, {0x47, 0x14, 0xDD}, {Field::FiveFlags, Field::LowByte}},
    {CMD_CALIBRATE_TEMP, {0x47, 0x14, 0xE0}, {Field::Temperature}},
    {CMD_RESERVED_A9, {0x47, 0x14, 0xA9}, nothing},
    {CMD_GET_TEST_DATA, {0x47, 0x14, 0xA8}, nothing},
    {CMD_VORTA_START, {0x67, 0x24, 0x22}, {Field::LowByte, Field::SplitWord}},
    {CMD_VORTA_STOP, {0x67, 0x24, 0x33}, nothing},
    {CMD_VORTA_GET_STATUS, {0x67, 0x24, 0x10}, nothing},
    {CMD_VORTA_GET_ALL_SENS_VALUES, {0x67, 0x24, 0x55}, nothing},
    {CMD_VORTA_CALIBRATE_AND_TEST, {0x67, 0x24, 0x66}, nothing},
    {CMD_VORTA_BL_RUN, {0x67, 0x26, 0x09}, nothing},
    {CMD_BL_RUN, {0x47, 0x16, 0x09}, nothing},
    {CMD_BL_ASK_REPLY, {0x57, 0x16, 0x10}, nothing},
    {CMD_BL_WRITE_PROG_MEM_PAGE, {0x57, 0x16, 0x12}, {Field::Address32, Field::Data}},
    {CMD_BL_READ_PROG_MEM_PAGE, {0x57, 0x16, 0x13}, {Field::Address32}},
    {CMD_BL_WRITE_EEPROM_PAGE, {0x57, 0x16, 0x17}, {Field::Address16, Field::Data}},
    {CMD_BL_READ_EEPROM_PAGE, {0x57, 0x16, 0x18}, {Field::Address16}},
    {CMD_BL_CONFIRM, {0x57, 0x16, 0x21}, nothing},
    {CMD_BL_ERASE, {0x57, 0x16, 0x19}, nothing},
    {CMD_BL_REQUEST_CS, {0x57, 0x16, 0x27}, nothing},
    {CMD_BL_SORREL_ERASE, {0x57, 0x16, 0x19}, nothing},
};

int argumentsOf(Field field)
{
    switch (field) {
    case Field::LowByte:
    case Field::Mask:
    case Field::SplitWord:
    case Field::Temperature:
        return 1;
    case Field::FiveFlags:
        return 5;
    case Field::None:
    case Field::Clock:
    case Field::Address16:
    case Field::Address32:
    case Field::Data:
        return 0;
    }
    return 0;
}

template<typename Unsigned> void appendBigEndian(QByteArray& frame, Unsigned value)
{
    char bytes[sizeof(Unsigned)];
    qToBigEndian(value, bytes);
    frame.append(bytes, sizeof bytes);
}

/// Quotient and remainder by 256, both with the sign of the value: not two's complement below zero.
void appendSplitWord(QByteArray& frame, short value)
{
    frame.append(static_cast<char>(value / 256));
    frame.append(static_cast<char>(value % 256));
}

char toBCD(int value)
{
    if (value > 99)
        qCWarning(linkLog) << "WARNING: trying to convert" << value << ">99 to BCD";
    return static_cast<char>((value / 10) * 16 + value % 10);
}

void appendClock(QByteArray& frame, const QDateTime& now)
{
    const QDate date = now.date();
    const QTime time = now.time();
    for (int value :
         {date.day(), date.month(), date.year() - 2000, time.hour(), time.minute(), time.second()})
        frame.append(toBCD(value));
}

void appendFlags(QByteArray& frame, const short* args)
{
    int flags = 0;
    for (int bit = 0; bit < 5; ++bit)
        flags |= (args[bit] ? 1 : 0) << bit;
    frame.append(static_cast<char>(flags));
}

void appendChecksum8(QByteArray& frame)
{
    unsigned sum = 0;
    for (char byte : qAsConst(frame))
        sum += static_cast<unsigned char>(byte);
    frame.append(static_cast<char>(0u - sum));
}

void appendChecksum16(QByteArray& frame)
{
    unsigned sum = 0;
    for (char byte : qAsConst(frame))
        sum += static_cast<unsigned char>(byte);
    appendBigEndian(frame, static_cast<quint16>(0u - sum));
}

QByteArray headOf(unsigned char first, unsigned char second, unsigned char third)
{
    QByteArray frame;
    frame.append(static_cast<char>(first)).append(static_cast<char>(second)).append(static_cast<char>(third));
    return frame;
}

} // namespace

MyPortTalker::MyPortTalker(SerialPort* port, int index, QObject* parent)
    : QObject(parent)
    , port(port)
    , index(index)
    , utcNow(&QDateTime::currentDateTimeUtc)
{
}

void MyPortTalker::setClock(std::function<QDateTime()> newClock)
{
    utcNow = std::move(newClock);
}

void MyPortTalker::sendCommand(commandType cmd)
{
    sendCommand(cmd, {});
}

void MyPortTalker::sendCommand(commandType cmd, const QVector<short>& args)
{
    if (cmd >= CMD_GET_TEMBRIN_STATUS && cmd <= CMD_GET_TEST_DATA)
        sendFrame(cmd, {args, 0, {}});
}

void MyPortTalker::sendLongCommand(commandType, const QByteArray& data)
{
    QByteArray frame = headOf(0x47, 0x14, 0x91) + data;
    appendChecksum16(frame);
    write(frame);
}

void MyPortTalker::sendVortaCommand(commandType cmd)
{
    sendVortaCommand(cmd, {});
}

void MyPortTalker::sendVortaCommand(commandType cmd, const QVector<short>& args)
{
    if (cmd >= CMD_VORTA_START && cmd <= CMD_VORTA_BL_RUN)
        sendFrame(cmd, {args, 0, {}});
}

void MyPortTalker::sendBLCommand(commandType cmd)
{
    sendBLCommand(cmd, 0, {});
}

void MyPortTalker::sendBLCommand(commandType cmd, int address)
{
    sendBLCommand(cmd, address, {});
}

void MyPortTalker::sendBLCommand(commandType cmd, int address, const QByteArray& data)
{
    if (cmd >= CMD_BL_RUN && cmd <= CMD_BL_SORREL_ERASE)
        sendFrame(cmd, {{}, address, data});
}

void MyPortTalker::sendLongPage(commandType cmd, int address, const QByteArray& data)
{
    if (cmd != CMD_BL_WRITE_PROG_MEM_PAGE)
        return;
    QByteArray frame = headOf(0x57, 0x16, 0x12);
    appendBigEndian(frame, static_cast<quint32>(address / 2)); // the loader counts words here
    frame.append(data);
    appendChecksum16(frame);
    write(frame);
}

void MyPortTalker::sendFrame(commandType cmd, const Inputs& inputs)
{
    const auto* row = std::find_if(std::begin(frameTable), std::end(frameTable),
                                   [cmd](const FrameRow& candidate) { return candidate.command == cmd; });
    if (row == std::end(frameTable))
        return;
    int needed = 0;
    for (Field field : row->fields)
        needed += argumentsOf(field);
    if (inputs.args.size() < needed) {
        qCWarning(linkLog) << "logger" << index << ": command" << cmd << "needs" << needed
                           << "arguments, not sent with" << inputs.args.size();
        return;
    }

    QByteArray frame = headOf(row->head[0], row->head[1], row->head[2]);
    const short* arg = inputs.args.constData();
    for (Field field : row->fields) {
        appendField(&frame, field, arg, inputs);
        arg += argumentsOf(field);
    }
    appendChecksum8(frame);
    write(frame);
}

void MyPortTalker::appendField(QByteArray* frame, Field field, const short* arg, const Inputs& inputs) const
{
    switch (field) {
    case Field::None:
        break;
    case Field::LowByte:
        frame->append(static_cast<char>(*arg));
        break;
    case Field::Mask:
        appendBigEndian(*frame, static_cast<quint16>(*arg));
        break;
    case Field::SplitWord:
        appendSplitWord(*frame, *arg);
        break;
    case Field::FiveFlags:
        appendFlags(*frame, arg);
        break;
    case Field::Temperature:
        appendBigEndian(*frame, static_cast<quint16>(*arg > 0 ? *arg : 0xFFFF));
        break;
    case Field::Clock:
        appendClock(*frame, utcNow().toUTC());
        break;
    case Field::Address16:
        appendBigEndian(*frame, static_cast<quint16>(inputs.address));
        break;
    case Field::Address32:
        appendBigEndian(*frame, static_cast<quint32>(inputs.address));
        break;
    case Field::Data:
        frame->append(inputs.data);
        break;
    }
}

void MyPortTalker::write(const QByteArray& frame)
{
    qCDebug(linkLog) << "logger" << index << "<-" << frame.toHex(' ');
    if (port)
        port->write(frame);
}

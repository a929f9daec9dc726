#include "virtual/virtualcommands.h"

#include "sensors/sensorids.h"
#include "virtual/fakeradio.h"
#include "virtual/models.h"
#include "virtual/rates.h"
#include "virtual/virtualclass.h"

#include <QFile>

namespace {

struct CommandRow
{
    const char* name;
    int leastWords; ///< after the logger
    const char* usage;
    const char* meaning;
};

constexpr CommandRow commands[] = {
    {"pull", 0, "pull N", "pull the cable, or walk out of reach: the port is hung up, its link goes"},
    {"put", 0, "put N", "put the cable back: a new port under the old link; or come back"},
    {"plug", 2, "plug N SOCKET ID", "plug sensor ID (101 to 114) into socket 1 or 2"},
    {"unplug", 1, "unplug N SOCKET", "take the sensor out"},
    {"press-start", 0, "press-start N", "start a run with the logger's own key"},
    {"press-stop", 0, "press-stop N", "stop it"},
    {"press", 0, "press N", "take one sample at the Manual rate"},
    {"battery", 1, "battery N empty|good", "the state of the battery"},
    {"memory", 1, "memory N full|free", "the state of the memory"},
    {"rate", 1, "rate N NAME", "choose a rate on the logger"},
    {"samples", 1, "samples N COUNT", "choose the number of samples on the logger"},
    {"fault", 1, "fault N NAME=VALUE ...", "set faults of the line; \"fault N off\" clears them"},
    {"dump", 1, "dump N FILE", "write program memory and EEPROM of one logger as Intel HEX"},
    {"status", 0, "status [N]", "what the loggers are doing"},
    {"service", -1, "service die|start", "the fake Bluetooth service crashes, and is there again"},
    {"help", -1, "help", "this list"},
    {"quit", -1, "quit", "end the program"},
};

const CommandRow* commandRow(const QString& name)
{
    for (const CommandRow& row : commands) {
        if (name == QLatin1String(row.name))
            return &row;
    }
    return nullptr;
}

} // namespace

QString VirtualCommands::help()
{
    QString text = QStringLiteral("N is the number of a logger, or all.\n");
    for (const CommandRow& row : commands)
        text +=
            QStringLiteral("  %1 %2\n").arg(QLatin1String(row.usage), -24).arg(QLatin1String(row.meaning));
    return text.trimmed();
}

QString VirtualCommands::execute(const QString& line)
{
    Words words = line.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words.isEmpty() || words.constFirst().startsWith(QLatin1Char('#')))
        return {};
    const CommandRow* row = commandRow(words.constFirst());
    if (!row)
        return QStringLiteral("error: no command \"%1\"; try help").arg(words.constFirst());
    if (words.constFirst() == QLatin1String("help"))
        return help();
    if (words.constFirst() == QLatin1String("quit")) {
        hasQuit = true;
        return {};
    }
    if (words.constFirst() == QLatin1String("service"))
        return switchService(words.value(1));
    if (words.size() == 1 && words.constFirst() == QLatin1String("status"))
        words.append(QStringLiteral("all"));
    QVector<int> chosen;
    if (words.size() < 2 + row->leastWords || !choose(words[1], &chosen))
        return QStringLiteral("error: usage: %1, N from 1 to %2 or all")
            .arg(QLatin1String(row->usage))
            .arg(loggers.count());
    if (words.constFirst() == QLatin1String("dump") && chosen.size() > 1)
        return QStringLiteral("error: dump takes one logger at a time");
    words.removeAt(1);
    return onEach(chosen, words);
}

bool VirtualCommands::choose(const QString& word, QVector<int>* chosen) const
{
    bool isNumber = false;
    const int number = word.toInt(&isNumber);
    if (isNumber && number >= 1 && number <= loggers.count())
        chosen->append(number - 1);
    for (int index = 0; word == QLatin1String("all") && index < loggers.count(); ++index)
        chosen->append(index);
    return !chosen->isEmpty();
}

QString VirtualCommands::onEach(const QVector<int>& chosen, const Words& words)
{
    QStringList answers;
    for (const int index : chosen) {
        const QString answer = onOne(index, words);
        if (!answer.isEmpty())
            answers.append(answer);
    }
    answers.removeDuplicates();
    return answers.join(QLatin1Char('\n'));
}

QString VirtualCommands::onOne(int index, const Words& words)
{
    const QString& name = words.constFirst();
    const QString& value = words.value(1);
    const auto is = [&name](const char* text) { return name == QLatin1String(text); };
    const auto act = [this, index](LoggerPackets (VirtualLogger::*key)(qint64)) {
        loggers.act(index, [key](VirtualLogger& logger, qint64 now) { return (logger.*key)(now); });
        return QString();
    };
    const auto set = [&](LoggerPackets (VirtualLogger::*setter)(bool, qint64), const char* on,
                         const char* off) {
        if (value != QLatin1String(on) && value != QLatin1String(off))
            return QStringLiteral("error: %1 takes %2 or %3")
                .arg(name, QLatin1String(on), QLatin1String(off));
        const bool isOn = value == QLatin1String(on);
        loggers.act(index, [=](VirtualLogger& logger, qint64 now) { return (logger.*setter)(isOn, now); });
        return QString();
    };
    QString error;
    if (is("pull"))
        loggers.pull(index);
    else if (is("put"))
        return loggers.putBack(index, &error) ? QString() : QStringLiteral("error: ") + error;
    else if (is("plug"))
        return plug(index, value, words.value(2).toInt());
    else if (is("unplug"))
        return plug(index, value, 0);
    else if (is("press-start"))
        return act(&VirtualLogger::pressStart);
    else if (is("press-stop"))
        return act(&VirtualLogger::pressStop);
    else if (is("press"))
        return act(&VirtualLogger::pressSample);
    else if (is("battery"))
        return set(&VirtualLogger::setBatteryEmpty, "empty", "good");
    else if (is("memory"))
        return set(&VirtualLogger::setMemoryFull, "full", "free");
    else if (is("rate"))
        return setRate(index, value);
    else if (is("samples"))
        return setSamples(index, value);
    else if (is("fault"))
        return setFaults(index, words.mid(1));
    else if (is("dump"))
        return dump(index, words.mid(1).join(QLatin1Char(' ')));
    else if (is("status"))
        return QStringLiteral("%1 %2%3 %4")
            .arg(index + 1)
            .arg(loggers.logger(index).summary(),
                 loggers.port(index).isOpen() ? QString() : QStringLiteral(", cable pulled"),
                 loggers.faults(index).text())
            .trimmed();
    return {};
}

QString VirtualCommands::switchService(const QString& word)
{
    QString error;
    if (!radio)
        return QStringLiteral("error: there is no service without --bluetooth");
    if (word == QLatin1String("die"))
        radio->killService();
    else if (word != QLatin1String("start"))
        return QStringLiteral("error: service takes die or start");
    else if (!radio->startService(&error))
        return QStringLiteral("error: ") + error;
    return {};
}

QString VirtualCommands::plug(int index, const QString& socket, int sensorId)
{
    const int place = socket.toInt() - 1;
    const bool isSensor = sensorId == 0 || (sensorId >= QUELLMARK_FIRST && sensorId <= QUELLMARK_LAST);
    if (place < 0 || place > 1 || !isSensor)
        return QStringLiteral("error: sockets are 1 and 2, sensor IDs 101 to 114");
    if (!loggers.logger(index).hasSocket(place))
        return QStringLiteral("error: logger %1 has no socket %2").arg(index + 1).arg(place + 1);
    loggers.act(index, [=](VirtualLogger& logger, qint64) { return logger.plug(place, sensorId); });
    return {};
}

QString VirtualCommands::setFaults(int index, const Words& words)
{
    LineFaults& faults = loggers.faults(index);
    if (words == Words{QStringLiteral("off")}) {
        faults = LineFaults();
        return {};
    }
    QString error;
    for (const QString& word : words) {
        bool isNumber = false;
        const double value = word.section(QLatin1Char('='), 1).toDouble(&isNumber);
        if (!isNumber)
            return QStringLiteral("error: \"%1\" is not of the form NAME=VALUE").arg(word);
        if (!faults.set(word.section(QLatin1Char('='), 0, 0), value, &error))
            return QStringLiteral("error: ") + error;
    }
    return {};
}

QString VirtualCommands::dump(int index, const QString& path)
{
    loggers.act(index, [](VirtualLogger&, qint64) { return LoggerPackets(); }); // it learns of its faults
    const QByteArray text = loggers.logger(index).bootLoader().hex();
    QFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.flush())
        return {};
    return QStringLiteral("error: %1 can't be written: %2").arg(path, file.errorString());
}

QString VirtualCommands::setRate(int index, const QString& name)
{
    const LoggerIdentity& self = loggers.logger(index).identity();
    const int rate = LoggerRates::find(name, self.model->code, self.firmwareMajor, self.firmwareMinor);
    if (rate < 0)
        return QStringLiteral("error: no rate \"%1\" on logger %2").arg(name).arg(index + 1);
    loggers.act(index, [rate](VirtualLogger& logger, qint64 now) { return logger.setRate(rate, now); });
    return {};
}

QString VirtualCommands::setSamples(int index, const QString& text)
{
    const int samples = LoggerRates::sampleIndex(text, loggers.logger(index).identity().model->code);
    if (samples < 0)
        return QStringLiteral("error: no run of \"%1\" samples").arg(text);
    loggers.act(
        index, [samples](VirtualLogger& logger, qint64 now) { return logger.setSamplesIndex(samples, now); });
    return {};
}

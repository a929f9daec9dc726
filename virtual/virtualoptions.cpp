#include "virtual/virtualoptions.h"

#include "common/classsize.h"
#include "sensors/sensorids.h"
#include "virtual/models.h"
#include "virtual/rates.h"

#include <QCommandLineParser>
#include <QDir>

#include <random>
#include <unistd.h>

namespace {

QString defaultDirectory()
{
    const QString runtime = QString::fromLocal8Bit(qgetenv("XDG_RUNTIME_DIR"));
    return runtime.isEmpty() ? QStringLiteral("/tmp/pellandra-%1/loggers").arg(::getuid())
                             : runtime + QStringLiteral("/pellandra/loggers");
}

/// What an option says, checked step by step; the first complaint is kept.
class Reader
{
public:
    explicit Reader(const QCommandLineParser& parser)
        : parser(parser)
    {
    }

    bool isGood() const { return complaint.isEmpty(); }
    const QString& error() const { return complaint; }
    void complain(const QString& option, const QString& text)
    {
        if (isGood())
            complaint = QStringLiteral("--%1: %2").arg(option, text);
    }

    QString text(const QString& option) const { return parser.value(option); }
    QStringList list(const QString& option) const
    {
        QStringList values;
        for (const QString& value : parser.values(option))
            values += value.split(QLatin1Char(','), Qt::SkipEmptyParts);
        return values;
    }
    qint64 number(const QString& option, qint64 least, qint64 most)
    {
        bool isNumber = false;
        const qint64 value = text(option).toLongLong(&isNumber);
        if (!isNumber || value < least || value > most)
            complain(option, QStringLiteral("takes a whole number from %1 to %2").arg(least).arg(most));
        return value;
    }
    /// Splits "N:NAME=VALUE" or "NAME=VALUE"; `logger` counts from 0, -1 for all.
    bool assignment(const QString& option, const QString& text, int count, int* logger, QString* name,
                    QString* value)
    {
        const int colon = text.indexOf(QLatin1Char(':'));
        const int equals = text.indexOf(QLatin1Char('='));
        bool isNumber = true;
        *logger = colon >= 0 ? text.left(colon).toInt(&isNumber) - 1 : -1;
        if (equals <= colon || !isNumber || (colon >= 0 && (*logger < 0 || *logger >= count))) {
            complain(option, QStringLiteral("\"%1\" is not of the form [LOGGER:]NAME=VALUE").arg(text));
            return false;
        }
        *name = text.mid(colon + 1, equals - colon - 1).trimmed();
        *value = text.mid(equals + 1).trimmed();
        return true;
    }

private:
    const QCommandLineParser& parser;
    QString complaint;
};

void addOptions(QCommandLineParser& parser)
{
    const auto add = [&parser](const char* name, const char* text, const char* value,
                               const QString& standard = {}) {
        const QString shown = standard.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(standard);
        parser.addOption({QLatin1String(name), QLatin1String(text) + shown, QLatin1String(value), standard});
    };
    const auto addFlag = [&parser](const char* name, const char* text) {
        parser.addOption({QLatin1String(name), QLatin1String(text)});
    };
    add("count", "How many loggers, 1 to 8.", "N", QStringLiteral("4"));
    add("directory", "Where the links to the ports appear; made if it is not there.", "DIR",
        defaultDirectory());
    addFlag("bluetooth",
            "Links of a fake Bluetooth service on a bus of its own, instead of pseudo terminals.");
    add("adapters", "Bluetooth adapters, among which the loggers are spread, 1 or 2.", "N",
        QStringLiteral("2"));
    add("model",
        "Model: a name such as Birch, a constant such as GROVE_INT_2, or a type code. Several, by commas "
        "or repeated, are dealt out in turn. Default: a mix.",
        "NAME");
    add("firmware", "Firmware version.", "X.YY", QStringLiteral("4.05"));
    add("rate", "Sample rate at the start, such as 10/Sec.", "NAME", QStringLiteral("10/Sec"));
    add("samples",
        "Samples of a run at the start: 10, 100, 1000, 10000 or 30000; for a Vorta logger any number.", "N",
        QStringLiteral("1000"));
    add("sensors", "Sensors that are on at the start: default, all, or sensor IDs by commas.", "LIST",
        QStringLiteral("default"));
    add("seed", "What makes signals, names and faults the same next time.", "S", QStringLiteral("1"));
    add("name-prefix", "What the names of the loggers begin with. Default: Tembrin_, Vorta_ or Sorrel_.",
        "TEXT");
    add("names", "The names themselves, by commas.", "LIST");
    add("plug", "Plugs the sensor ID (101 to 114) into socket 1 or 2, of all loggers or of one.",
        "[LOGGER:]SOCKET=ID");
    add("stored", "Experiments in the memory at the start.", "N", QStringLiteral("0"));
    addFlag("battery-empty", "The loggers refuse to run for their batteries.");
    addFlag("memory-full", "The loggers refuse to run for their memories.");
    add("fault",
        "A fault of the line, of all loggers or of one: late=MS, silent=PERCENT of answers, garbage=PERCENT, "
        "badsum=PERCENT, lose=PERCENT, cut=PERCENT of packets, burst=MS; or of the boot loader: "
        "loader=VERSION, "
        "badpage=N, silentpage=N, restartpage=N, badbyte=ADDRESS.",
        "[LOGGER:]NAME=VALUE");
    add("resend-mode",
        "What a late request for the next packet gets: the same packet once more, or the next.", "same|next",
        QStringLiteral("same"));
    add("log", "Readable log of all frames.", "FILE");
    add("record", "All samples sent, one a line: logger, run, sample, CLOCK_MONOTONIC ns, bytes.", "FILE");
    add("at", "Gives a command so many seconds after the start.", "TIME:COMMAND");
}

QVector<const LoggerModel*> readModels(Reader& reader)
{
    QVector<const LoggerModel*> chosen;
    for (const QString& name : reader.list(QStringLiteral("model"))) {
        const LoggerModel* model = LoggerModels::find(name);
        if (!model)
            reader.complain(QStringLiteral("model"),
                            QStringLiteral("no model \"%1\"; there are %2")
                                .arg(name, LoggerModels::names().join(QStringLiteral(", "))));
        chosen.append(model);
    }
    return chosen.isEmpty() ? LoggerModels::mixture() : chosen;
}

void readFirmware(Reader& reader, LoggerIdentity& identity)
{
    const QStringList parts = reader.text(QStringLiteral("firmware")).split(QLatin1Char('.'));
    bool isMajor = false;
    bool isMinor = false;
    identity.firmwareMajor = parts.value(0).toInt(&isMajor);
    identity.firmwareMinor = parts.value(1).toInt(&isMinor);
    if (parts.size() != 2 || !isMajor || !isMinor || parts[1].size() != 2 || identity.firmwareMajor < 0 ||
        identity.firmwareMajor > 99 || identity.firmwareMinor < 0)
        reader.complain(QStringLiteral("firmware"), QStringLiteral("takes a version such as 4.05"));
}

quint16 readMask(Reader& reader, const LoggerModel& model)
{
    const QString option = QStringLiteral("sensors");
    const QVector<int> ids = model.sensorIds();
    const QStringList wanted = reader.list(option);
    if (wanted == QStringList{QStringLiteral("default")})
        return model.lessonMask();
    if (wanted == QStringList{QStringLiteral("all")})
        return quint16((1U << ids.size()) - 1);
    quint16 mask = 0;
    for (const QString& text : wanted) {
        bool isNumber = false;
        const int id = text.toInt(&isNumber);
        if (!isNumber || id <= 0)
            reader.complain(option,
                            QStringLiteral("\"%1\" is neither default nor all nor a sensor ID").arg(text));
        for (int slot = 0; slot < ids.size(); ++slot) {
            if (ids[slot] == id)
                mask |= quint16(1U << slot);
        }
    }
    return mask;
}

void readSetting(Reader& reader, LoggerIdentity& identity)
{
    const int type = identity.model->code;
    const QString rate = reader.text(QStringLiteral("rate"));
    identity.rate = LoggerRates::find(rate, type, identity.firmwareMajor, identity.firmwareMinor);
    if (identity.rate < 0)
        reader.complain(QStringLiteral("rate"),
                        QStringLiteral("%1 with this firmware has no rate \"%2\"; the rates are %3")
                            .arg(QLatin1String(identity.model->constant), rate,
                                 LoggerRates::names(type, identity.firmwareMajor, identity.firmwareMinor)
                                     .join(QStringLiteral(", "))));
    identity.samplesIndex = LoggerRates::sampleIndex(reader.text(QStringLiteral("samples")), type);
    if (identity.samplesIndex < 0)
        reader.complain(QStringLiteral("samples"), QStringLiteral("takes 10, 100, 1000, 10000 or 30000"));
    identity.mask = readMask(reader, *identity.model);
}

/// Names as they are printed on the devices: a prefix and four digits, no two alike.
QStringList makeNames(Reader& reader, const QVector<const LoggerModel*>& models, int count, quint32 seed)
{
    QStringList names = reader.list(QStringLiteral("names"));
    std::mt19937 random(seed);
    while (names.size() < count) {
        const int code = models[names.size() % models.size()]->code;
        const QString family = code == LoggerModel::Vorta    ? QStringLiteral("Vorta_")
                               : code == LoggerModel::Sorrel ? QStringLiteral("Sorrel_")
                                                             : QStringLiteral("Tembrin_");
        const QString prefix = reader.text(QStringLiteral("name-prefix"));
        const QString name = (prefix.isEmpty() ? family : prefix) +
                             QStringLiteral("%1").arg(100 + random() % 9900, 4, 10, QLatin1Char('0'));
        if (!names.contains(name))
            names.append(name);
    }
    for (const QString& name : names) {
        if (name.contains(QLatin1Char('/')) || names.count(name) > 1)
            reader.complain(QStringLiteral("names"),
                            QStringLiteral("\"%1\" is no name for a link of its own").arg(name));
    }
    return names;
}

void readPlugs(Reader& reader, const QStringList& texts, QVector<LoggerIdentity>& loggers)
{
    for (const QString& text : texts) {
        int logger = -1;
        QString socket;
        QString id;
        if (!reader.assignment(QStringLiteral("plug"), text, loggers.size(), &logger, &socket, &id))
            return;
        const int place = socket.toInt() - 1;
        const int sensor = id.toInt();
        if (place < 0 || place > 1 || sensor < QUELLMARK_FIRST || sensor > QUELLMARK_LAST) {
            reader.complain(QStringLiteral("plug"),
                            QStringLiteral("takes socket 1 or 2 and an ID from 101 to 114"));
            return;
        }
        for (int i = 0; i < loggers.size(); ++i) {
            const int port = place == 0 ? SENSOR_EXTERNAL : SENSOR_EXTERNAL_B;
            const bool hasSocket = loggers[i].model->sensorIds().contains(port);
            if (hasSocket && (logger < 0 || logger == i))
                loggers[i].plugged[place] = sensor;
            else if (logger == i)
                reader.complain(QStringLiteral("plug"),
                                QStringLiteral("logger %1 has no socket %2").arg(i + 1).arg(place + 1));
        }
    }
}

QVector<VirtualOptions::LoggerFault> readFaults(Reader& reader, const QStringList& texts, int count)
{
    const QString option = QStringLiteral("fault");
    QVector<VirtualOptions::LoggerFault> faults;
    for (const QString& text : texts) {
        VirtualOptions::LoggerFault fault;
        QString value;
        if (!reader.assignment(option, text, count, &fault.logger, &fault.name, &value))
            break;
        bool isNumber = false;
        fault.value = value.toDouble(&isNumber);
        LineFaults trial;
        QString error;
        if (!isNumber)
            reader.complain(option, QStringLiteral("\"%1\" is no number").arg(value));
        else if (!trial.set(fault.name, fault.value, &error))
            reader.complain(option, error);
        faults.append(fault);
    }
    return faults;
}

QVector<QPair<double, QString>> readScript(Reader& reader, const QStringList& texts)
{
    QVector<QPair<double, QString>> script;
    for (const QString& text : texts) {
        bool isNumber = false;
        const double time = text.section(QLatin1Char(':'), 0, 0).toDouble(&isNumber);
        if (!isNumber || time < 0 || !text.contains(QLatin1Char(':')))
            reader.complain(QStringLiteral("at"),
                            QStringLiteral("\"%1\" is not of the form SECONDS:COMMAND").arg(text));
        script.append({time, text.section(QLatin1Char(':'), 1)});
    }
    return script;
}

} // namespace

bool VirtualOptions::read(const QStringList& arguments, QString* error)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Virtual Tembrin loggers on pseudo terminals, or on a fake of the Bluetooth service: a class "
        "without\n"
        "hardware.\n\n"
        "Prints the port of each logger, then \"ready\". Reads commands from standard input (\"help\" lists\n"
        "them) and runs until \"quit\", SIGINT or SIGTERM. Loggers count from 1.\n"
        "Ends with 0, with 1 if a port or file can't be had, with 2 if the command line is wrong."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    addOptions(parser);
    if (!parser.parse(arguments)) {
        *error = parser.errorText();
        return false;
    }
    if (parser.isSet(help))
        parser.showHelp();
    if (parser.isSet(version))
        parser.showVersion();

    Reader reader(parser);
    if (!parser.positionalArguments().isEmpty())
        reader.complain(parser.positionalArguments().constFirst(), QStringLiteral("is no option"));
    const int count = int(reader.number(QStringLiteral("count"), 1, mostLoggers));
    const auto seed = quint32(reader.number(QStringLiteral("seed"), 0, 0xFFFFFFFFLL));
    LoggerIdentity common;
    readFirmware(reader, common);
    common.stored = int(reader.number(QStringLiteral("stored"), 0, 255));
    common.isBatteryEmpty = parser.isSet(QStringLiteral("battery-empty"));
    common.isMemoryFull = parser.isSet(QStringLiteral("memory-full"));
    const QString resend = parser.value(QStringLiteral("resend-mode"));
    if (resend != QLatin1String("same") && resend != QLatin1String("next"))
        reader.complain(QStringLiteral("resend-mode"), QStringLiteral("takes same or next"));
    common.resend = resend == QLatin1String("next") ? LoggerIdentity::ResendNext : LoggerIdentity::ResendSame;

    const QVector<const LoggerModel*> models = readModels(reader);
    const QStringList names = reader.isGood() ? makeNames(reader, models, count, seed) : QStringList();
    for (int i = 0; reader.isGood() && i < count; ++i) {
        LoggerIdentity identity = common;
        identity.model = models[i % models.size()];
        identity.name = names[i];
        identity.seed = seed * 64 + quint32(i);
        readSetting(reader, identity);
        loggers.append(identity);
    }
    if (reader.isGood())
        readPlugs(reader, parser.values(QStringLiteral("plug")), loggers);
    faults = readFaults(reader, parser.values(QStringLiteral("fault")), count);
    script = readScript(reader, parser.values(QStringLiteral("at")));
    directory = parser.value(QStringLiteral("directory"));
    const int wantedAdapters = int(reader.number(QStringLiteral("adapters"), 1, 2));
    adapters = parser.isSet(QStringLiteral("bluetooth")) ? wantedAdapters : 0;
    logFile = parser.value(QStringLiteral("log"));
    recordFile = parser.value(QStringLiteral("record"));
    *error = reader.error();
    return reader.isGood();
}

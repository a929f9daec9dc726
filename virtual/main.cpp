#include "virtual/fakeradio.h"
#include "virtual/virtualclass.h"
#include "virtual/virtualcommands.h"
#include "virtual/virtualoptions.h"

#include <QCoreApplication>
#include <QDir>
#include <QLockFile>
#include <QSocketNotifier>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace {

enum ExitCode
{
    ExitGood,
    ExitFailed,
    ExitUsage
};

int signalPipe[2];

void tellSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], &byte, 1);
}

void complain(const QString& text)
{
    std::fprintf(stderr, "virtual-loggers: %s\n", qPrintable(text));
}

void say(const QString& text)
{
    std::printf("%s\n", qPrintable(text));
    std::fflush(stdout);
}

/// Ends the program in an orderly way on the usual signals.
void watchSignals(QCoreApplication& application)
{
    if (::pipe(signalPipe) != 0)
        return;
    auto* notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, &application);
    QObject::connect(notifier, &QSocketNotifier::activated, &application,
                     [] { QCoreApplication::exit(ExitGood); });
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        std::signal(number, tellSignal);
    for (const int number : {SIGPIPE, SIGTTIN})
        std::signal(number, SIG_IGN);
}

void execute(VirtualCommands& commands, const QString& line)
{
    const QString answer = commands.execute(line);
    if (!answer.isEmpty())
        say(answer);
    if (commands.isQuit())
        QCoreApplication::exit(ExitGood);
}

/// Lines of standard input are commands; its end is not the end of the program.
void watchInput(QCoreApplication& application, VirtualCommands& commands)
{
    auto* notifier = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, &application);
    auto waiting = std::make_shared<QByteArray>();
    QObject::connect(notifier, &QSocketNotifier::activated, &application, [notifier, waiting, &commands] {
        char buffer[4096];
        const ssize_t count = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (count <= 0) {
            notifier->setEnabled(false);
            return;
        }
        waiting->append(buffer, int(count));
        for (int end = waiting->indexOf('\n'); end >= 0; end = waiting->indexOf('\n')) {
            execute(commands, QString::fromLocal8Bit(waiting->left(end)));
            waiting->remove(0, end + 1);
        }
    });
}

/// Links and sockets of a run that was killed; terminals may belong to somebody else by now.
void removeStalePorts(const QDir& directory)
{
    for (const QFileInfo& entry : directory.entryInfoList(QDir::Files | QDir::System)) {
        struct stat state = {};
        const bool isKnown = ::lstat(QFile::encodeName(entry.filePath()).constData(), &state) == 0;
        if (entry.isSymLink() ? entry.symLinkTarget().startsWith(QLatin1String("/dev/pts/"))
                              : isKnown && S_ISSOCK(state.st_mode))
            QFile::remove(entry.filePath());
    }
}

/// A line for each port and what is in it.
void tellPorts(VirtualClass& loggers, const FakeRadio* radio)
{
    if (radio)
        say(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS=") + radio->busAddress());
    for (int i = 0; i < loggers.count(); ++i) {
        const VirtualLogger& logger = loggers.logger(i);
        say(QStringLiteral("%1 %2 %3")
                .arg(i + 1)
                .arg(radio ? FakeRadio::addressOf(logger.identity()) : loggers.port(i).place(),
                     logger.summary()));
    }
    say(QStringLiteral("ready"));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("virtual-loggers"));
    QCoreApplication::setApplicationVersion(QStringLiteral(PELLANDRA_VERSION));
    QString error;
    VirtualOptions options;
    if (!options.read(QCoreApplication::arguments(), &error)) {
        complain(error + QStringLiteral("\nTry --help."));
        return ExitUsage;
    }
    watchSignals(application);

    const QDir directory(options.directory);
    if (!directory.mkpath(QStringLiteral("."))) {
        complain(QStringLiteral("the folder %1 can't be made").arg(options.directory));
        return ExitFailed;
    }
    QLockFile lock(directory.filePath(QStringLiteral(".virtual-loggers.lock")));
    lock.setStaleLockTime(0);
    if (!lock.tryLock()) {
        complain(QStringLiteral("%1 is in use by another run or can't be written").arg(options.directory));
        return ExitFailed;
    }
    removeStalePorts(directory);

    std::unique_ptr<FakeRadio> radio;
    if (options.adapters > 0)
        radio = std::make_unique<FakeRadio>(options.loggers, options.adapters, directory.absolutePath());
    VirtualClass loggers(options.loggers, directory.absolutePath(),
                         radio ? VirtualClass::PortKind::Socket : VirtualClass::PortKind::Terminal);
    if ((!options.logFile.isEmpty() && !loggers.log().openLog(options.logFile, &error)) ||
        (!options.recordFile.isEmpty() && !loggers.log().openRecord(options.recordFile, &error)) ||
        !loggers.open(&error) || (radio && !radio->start(&error))) {
        complain(error);
        return ExitFailed;
    }
    for (const VirtualOptions::LoggerFault& fault : options.faults) {
        for (int i = 0; i < loggers.count(); ++i) {
            if (fault.logger < 0 || fault.logger == i)
                loggers.faults(i).set(fault.name, fault.value, &error);
        }
    }
    tellPorts(loggers, radio.get());

    VirtualCommands commands(loggers, radio.get());
    for (const auto& [seconds, command] : options.script)
        QTimer::singleShot(qRound(seconds * 1000), &application,
                           [&, line = command] { execute(commands, line); });
    watchInput(application, commands);
    return QCoreApplication::exec();
}

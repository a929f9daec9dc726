#include "virtual/virtualclass.h"
#include "virtual/virtualoptions.h"

#include <QCoreApplication>
#include <QDir>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
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
    std::signal(SIGPIPE, SIG_IGN);
}

/// Links of a run that was killed point nowhere.
void removeStaleLinks(const QDir& directory)
{
    for (const QFileInfo& entry : directory.entryInfoList(QDir::Files | QDir::System | QDir::Hidden)) {
        if (entry.isSymLink() && !entry.exists())
            QFile::remove(entry.filePath());
    }
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
    removeStaleLinks(directory);

    VirtualClass loggers(options.loggers, directory.absolutePath());
    if ((!options.logFile.isEmpty() && !loggers.log().openLog(options.logFile, &error)) ||
        (!options.recordFile.isEmpty() && !loggers.log().openRecord(options.recordFile, &error)) ||
        !loggers.open(&error)) {
        complain(error);
        return ExitFailed;
    }
    for (const VirtualOptions::LoggerFault& fault : options.faults) {
        for (int i = 0; i < loggers.count(); ++i) {
            if (fault.logger < 0 || fault.logger == i)
                loggers.faults(i).set(fault.name, fault.value, &error);
        }
    }
    for (int i = 0; i < loggers.count(); ++i)
        say(QStringLiteral("%1 %2 %3")
                .arg(i + 1)
                .arg(loggers.port(i).linkPath(), loggers.logger(i).summary()));
    say(QStringLiteral("ready"));
    return QCoreApplication::exec();
}

#include "link/linkedports.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

#include "link/bluezobjects.h"
#include "link/loggernames.h"

namespace {

bool isTerminal(const QString& path)
{
    struct stat status;
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 && S_ISCHR(status.st_mode);
}

/// Where virtual loggers publish their ports.
QString userDirectory()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return runtime.isEmpty() ? QStringLiteral("/tmp/pellandra-%1/loggers").arg(::getuid())
                             : runtime + QStringLiteral("/pellandra/loggers");
}

} // namespace

QVector<LinkPlace> systemLinkPlaces()
{
    QVector<LinkPlace> places{{QStringLiteral("/dev/tembrin"), true}, {QStringLiteral("/dev"), false}};
    // Anybody can make a directory in /tmp: only the user's own counts.
    const QString own = userDirectory();
    if (QFileInfo(own).ownerId() == ::getuid())
        places.append({own, true});
    return places;
}

QVector<LinkedPort> readLinkedPorts(const QVector<LinkPlace>& places)
{
    QVector<LinkedPort> links;
    for (const LinkPlace& place : places) {
        const QDir directory(place.directory);
        for (const QFileInfo& entry : directory.entryInfoList(QDir::System | QDir::Files, QDir::Name)) {
            if (!entry.isSymLink() || !(place.isForLoggers || LoggerNames::isLogger(entry.fileName())) ||
                !isTerminal(entry.filePath()))
                continue;
            const LinkedPort link{entry.absoluteFilePath(), entry.canonicalFilePath()};
            if (std::none_of(links.cbegin(), links.cend(),
                             [&](const LinkedPort& other) { return other.terminal == link.terminal; }))
                links.append(link);
        }
    }
    return links;
}

QString systemTerminals()
{
    return QStringLiteral("/sys/class/tty");
}

QString boundAddress(const QString& port, const QString& terminals)
{
    const QString path = QDir(QStringLiteral("/dev")).filePath(port);
    const QString target = QFileInfo(path).canonicalFilePath(); // empty where nothing is
    const QString terminal = QFileInfo(target.isEmpty() ? path : target).fileName();
    QFile file(QDir(terminals).filePath(terminal + QStringLiteral("/address")));
    const bool isRadio = terminal.startsWith(QLatin1String("rfcomm"));
    return isRadio && file.open(QIODevice::ReadOnly) ? plainAddress(QString::fromLatin1(file.readAll()))
                                                     : QString();
}

void addLinkedPorts(const QVector<LinkedPort>& links,
                    const std::function<QString(const QString& terminal)>& addressOf,
                    QVector<possibleDevice>& devices)
{
    for (const LinkedPort& link : links) {
        const QString address = addressOf(link.terminal);
        const bool isKnown = !address.isEmpty() &&
                             std::any_of(devices.cbegin(), devices.cend(), [&](const possibleDevice& device) {
                                 return device.address == address;
                             });
        if (isKnown)
            continue;
        possibleDevice device;
        device.portName = link.path;
        device.address = address;
        device.name = QFileInfo(link.path).fileName();
        devices.append(device);
    }
}

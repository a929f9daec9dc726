#include "instruments/pairingtool.h"

#include <QDesktopServices>
#include <QOperatingSystemVersion>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <QUrl>

namespace {

struct Panel
{
    const char* program;
    const char* argument; ///< null for none
};

// The first that is installed is taken: GNOME, KDE, and the panel that smaller desktops use.
constexpr Panel panels[] = {
    {"gnome-control-center", "bluetooth"}, {"systemsettings5", "kcm_bluetooth"},
    {"systemsettings", "kcm_bluetooth"},   {"kcmshell5", "bluetooth"},
    {"blueman-manager", nullptr},
};

bool openOnDesktop()
{
    for (const Panel& panel : panels) {
        const QString program = QStandardPaths::findExecutable(QLatin1String(panel.program));
        if (program.isEmpty())
            continue;
        QStringList arguments;
        if (panel.argument)
            arguments << QLatin1String(panel.argument);
        if (QProcess::startDetached(program, arguments))
            return true;
    }
    return false;
}

} // namespace

bool PairingTool::open()
{
    const QOperatingSystemVersion system = QOperatingSystemVersion::current();
    if (system.type() != QOperatingSystemVersion::Windows)
        return openOnDesktop();
    // The wizard came with the system after XP, whose version is 5.
    const bool hasWizard = system.majorVersion() > 5;
    return QDesktopServices::openUrl(
        QUrl(hasWizard ? QStringLiteral("DevicePairingWizard.exe") : QStringLiteral("bthprops.cpl")));
}

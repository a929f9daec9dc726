#include "classroom/failuretexts.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("FailureTexts", text);
}

/// The group of people who may open the device; the usual one where the device does not tell.
QString groupOf(const QString& portName)
{
    const QString group = QFileInfo(QDir(QStringLiteral("/dev")).filePath(portName)).group();
    return group.isEmpty() || group == QLatin1String("root") ? QStringLiteral("dialout") : group;
}

} // namespace

QString FailureTexts::reason(PortFailure failure, const QString& portName)
{
    switch (failure) {
    case PortFailure::None:
    case PortFailure::Cancelled:
    case PortFailure::Other:
        return {};
    case PortFailure::NoPort:
        return portName == QLatin1String("COMxx") ? tr("no logger was chosen")
                                                  : tr("there is no port %1").arg(portName);
    case PortFailure::NoRight:
        return tr("you have no right to open %1").arg(portName);
    case PortFailure::Held:
        return tr("another program uses it");
    case PortFailure::OutOfReach:
        return tr("switched off or out of reach");
    case PortFailure::NotPaired:
        return tr("not paired with this computer");
    case PortFailure::Refused:
        return tr("it refuses the connection");
    case PortFailure::NoAdapter:
        return tr("this computer has no Bluetooth adapter");
    case PortFailure::AdapterOff:
        return tr("Bluetooth is switched off");
    case PortFailure::AdapterFull:
        return tr("seven loggers are on this Bluetooth adapter, it carries no more");
    case PortFailure::NoService:
        return tr("the Bluetooth service is not running");
    case PortFailure::Lost:
        return tr("the connection was lost");
    }
    return {};
}

QString FailureTexts::cure(PortFailure failure, const QString& portName)
{
    switch (failure) {
    case PortFailure::NoRight:
        return tr("Type in a terminal:\nsudo usermod -aG %1 $USER\nand log in again.").arg(groupOf(portName));
    case PortFailure::NoPort:
        return tr("Press Connect and choose the logger.");
    case PortFailure::Held:
        return tr("Close the other program, then click here.");
    case PortFailure::OutOfReach:
        return tr("Switch it on, bring it near, then click here.");
    case PortFailure::NotPaired:
        return tr("Press Connect, then \"Pair a logger...\".");
    case PortFailure::Refused:
        return tr("If another computer is connected to it, disconnect it there. Else remove it in the "
                  "Bluetooth settings and pair it anew.");
    case PortFailure::NoAdapter:
        return tr("Plug one in.");
    case PortFailure::AdapterOff:
        return tr("Switch it on in the Bluetooth settings.");
    case PortFailure::AdapterFull:
        return tr("Plug in a second adapter and pair some of the loggers with it.");
    case PortFailure::NoService:
        return tr("Type in a terminal:\nsudo systemctl enable --now bluetooth");
    case PortFailure::Lost:
        return tr("Click here to try again.");
    case PortFailure::Other:
    case PortFailure::None:
    case PortFailure::Cancelled:
        return {};
    }
    return {};
}

bool FailureTexts::isOfComputer(PortFailure failure)
{
    return failure == PortFailure::NoRight || failure == PortFailure::NoService ||
           failure == PortFailure::NoAdapter || failure == PortFailure::AdapterOff ||
           failure == PortFailure::AdapterFull || failure == PortFailure::NotPaired ||
           failure == PortFailure::Refused;
}

QString FailureTexts::text(PortFailure failure, const QString& portName)
{
    const QString why = reason(failure, portName);
    return why.isEmpty() ? cure(failure, portName) : why + QStringLiteral(". ") + cure(failure, portName);
}

QString FailureTexts::addressText(const QString& address)
{
    QString text = address;
    for (int i = text.size() - 2; i > 0; i -= 2)
        text.insert(i, QLatin1Char(':'));
    return text;
}

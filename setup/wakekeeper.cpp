#include "setup/wakekeeper.h"

#ifdef Q_OS_LINUX
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#elif defined(Q_OS_WIN)
#include <windows.h>
#endif

#ifdef Q_OS_LINUX
namespace {

constexpr int msForAnswer = 300; // the desktop's own service, on this computer

QDBusMessage callOf(const char* method)
{
    return QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("/org/freedesktop/ScreenSaver"),
        QStringLiteral("org.freedesktop.ScreenSaver"), QLatin1String(method));
}

} // namespace
#endif

WakeKeeper::WakeKeeper(const char* reason)
{
#ifdef Q_OS_LINUX
    QDBusMessage call = callOf("Inhibit");
    call.setArguments({QStringLiteral("Pellandra"), QString::fromUtf8(reason)});
    call.setAutoStartService(false);
    const QDBusReply<uint> answer = QDBusConnection::sessionBus().call(call, QDBus::Block, msForAnswer);
    isKept = answer.isValid();
    cookie = isKept ? answer.value() : 0;
#elif defined(Q_OS_WIN)
    Q_UNUSED(reason)
    isKept = SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED | ES_DISPLAY_REQUIRED) != 0;
#else
    Q_UNUSED(reason)
#endif
}

WakeKeeper::~WakeKeeper()
{
#ifdef Q_OS_LINUX
    if (!isKept)
        return;
    QDBusMessage call = callOf("UnInhibit");
    call.setArguments({cookie});
    QDBusConnection::sessionBus().send(call);
#elif defined(Q_OS_WIN)
    if (isKept)
        SetThreadExecutionState(ES_CONTINUOUS);
#endif
}

#include "tests/common/testsupport.h"

#include <QMutexLocker>
#include <QtGlobal>

namespace {
WarningGuard* current = nullptr;
}

WarningGuard::WarningGuard()
{
    current = this;
    previous = qInstallMessageHandler(&WarningGuard::handle);
}

WarningGuard::~WarningGuard()
{
    qInstallMessageHandler(previous);
    current = nullptr;
}

void WarningGuard::expect(const QString& part)
{
    const QMutexLocker lock(&mutex);
    expected.append(part);
}

QStringList WarningGuard::failures() const
{
    const QMutexLocker lock(&mutex);
    return unexpected;
}

void WarningGuard::handle(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (!current)
        return;
    if (type == QtWarningMsg || type == QtCriticalMsg) {
        const QMutexLocker lock(&current->mutex);
        // What the offscreen platform says of windows is no fault of the program's.
        bool known = message.startsWith(QLatin1String("This plugin does not support"));
        for (const QString& part : qAsConst(current->expected))
            known = known || message.contains(part);
        if (!known)
            current->unexpected.append(message);
    }
    if (current->previous)
        current->previous(type, context, message);
}

OwnState::OwnState()
{
    qputenv("XDG_STATE_HOME", folder.path().toLocal8Bit());
}

void GuardedTest::init()
{
    ownState.reset(new OwnState);
    guard.reset(new WarningGuard);
    begin();
}

void GuardedTest::cleanup()
{
    finish();
    ownState.reset();
    const QString failures = guard->failures().join(QLatin1Char('\n'));
    guard.reset();
    QCOMPARE(failures, QString());
}

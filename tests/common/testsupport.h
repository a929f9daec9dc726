#pragma once

#include <QMutex>
#include <QStringList>

/// Turns every warning that a test did not announce into a failure. Create one per test function (or as a
/// member that init() makes and cleanup() ends): failures() is then empty if nothing unexpected was logged.
class WarningGuard
{
public:
    WarningGuard();
    ~WarningGuard();

    /// A warning that contains `part` is expected from now on.
    void expect(const QString& part);
    /// The unexpected warnings so far.
    QStringList failures() const;

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& message);

    mutable QMutex mutex;
    QStringList expected;
    QStringList unexpected;
    QtMessageHandler previous = nullptr;
};

/// Puts a guard into a test class: call at the end of cleanup().
#define VERIFY_NO_WARNINGS(guard) QCOMPARE((guard).failures().join(QLatin1Char('\n')), QString())

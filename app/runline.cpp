#include "app/runline.h"

#include <QLocale>

#include "classroom/classrun.h"
#include "common/classsize.h"

namespace {
constexpr int msBetweenLooks = 500;

QString clockText(qint64 ms)
{
    const qint64 seconds = ms / 1000;
    const QString rest = QStringLiteral("%1:%2")
                             .arg(seconds / 60 % 60, 2, 10, QLatin1Char('0'))
                             .arg(seconds % 60, 2, 10, QLatin1Char('0'));
    return seconds < 3600 ? rest : QStringLiteral("%1:%2").arg(seconds / 3600).arg(rest);
}
} // namespace

RunLine::RunLine(const ClassRun* run, std::function<QString(int)> groupName, QWidget* parent)
    : QLabel(parent)
    , run(run)
    , groupName(std::move(groupName))
{
    setObjectName(QStringLiteral("runLine"));
    timer.setInterval(msBetweenLooks);
    connect(&timer, &QTimer::timeout, this, &RunLine::refresh);
    connect(run, &ClassRun::phaseChanged, this, &RunLine::refresh);
    connect(run, &ClassRun::ended, this, &RunLine::refresh);
}

void RunLine::refresh()
{
    const bool isRunning = run->isAnyRunning() || run->isSimulation();
    if (isRunning && !timer.isActive())
        timer.start();
    else if (!isRunning)
        timer.stop();
    setText(text());
}

QString RunLine::text() const
{
    if (run->samples() == 0 && !run->isAnyRunning() && !run->isSimulation() && run->elapsed() == 0)
        return {};
    // A run that the loggers store brings none before it is fetched.
    const QString samples = run->samples() > 0 ? tr(", %n samples", nullptr, run->samples()) : QString();
    QStringList parts;
    if (run->isAnyRunning())
        parts.append(tr("Running %1%2").arg(clockText(run->elapsed()), samples));
    else if (run->isSimulation())
        parts.append(tr("Simulation %1%2").arg(clockText(run->elapsed()), samples));
    else if (run->isAwaited())
        parts.append(tr("All loggers of the run are away; it goes on when one is back"));
    else if (isStopped)
        parts.append(tr("Stopped after %1%2").arg(clockText(run->elapsed()), samples));
    else
        parts.append(tr("Run ended after %1%2").arg(clockText(run->elapsed()), samples));
    return (parts + awayTexts()).join(QStringLiteral("; "));
}

QStringList RunLine::awayTexts() const
{
    QStringList texts;
    for (int slot = 0; slot < mostLoggers; ++slot) {
        const QDateTime since = run->lostSince(slot);
        if (since.isValid())
            texts.append(
                tr("%1 lost at %2").arg(groupName(slot), since.toString(QStringLiteral("HH:mm:ss"))));
    }
    return texts;
}

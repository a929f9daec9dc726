#include "classroom/jobtexts.h"

#include <QCoreApplication>
#include <QStringList>

using Task = ClassJob::Task;
using Progress = ClassJob::Progress;
using Reason = ClassJob::Reason;

namespace {

QString translated(const char* text)
{
    return QCoreApplication::translate("JobTexts", text);
}

struct TaskRow
{
    Task task;
    const char* doing;
    const char* notDone;
};

constexpr TaskRow taskRows[] = {
    {Task::Start, QT_TRANSLATE_NOOP("JobTexts", "being started"),
     QT_TRANSLATE_NOOP("JobTexts", "Not started: %1.")},
    {Task::Stop, QT_TRANSLATE_NOOP("JobTexts", "being stopped"),
     QT_TRANSLATE_NOOP("JobTexts", "Not stopped: %1.")},
    {Task::Setup, QT_TRANSLATE_NOOP("JobTexts", "being setup"),
     QT_TRANSLATE_NOOP("JobTexts", "Not set up: %1.")},
    {Task::Configure, QT_TRANSLATE_NOOP("JobTexts", "being cofigurated"),
     QT_TRANSLATE_NOOP("JobTexts", "Not configured: %1.")},
    {Task::Download, QT_TRANSLATE_NOOP("JobTexts", "downloading"),
     QT_TRANSLATE_NOOP("JobTexts", "No experiment could be fetched from %1.")},
};

const TaskRow& rowOf(Task task)
{
    for (const TaskRow& row : taskRows) {
        if (row.task == task)
            return row;
    }
    return taskRows[0];
}

QStringList groupsAtWork(const ClassJob& job, const JobTexts::GroupName& groupName)
{
    QStringList names;
    for (const ClassJob::Step& step : job.steps) {
        if (step.progress == Progress::Working)
            names.append(groupName(step.slot));
    }
    return names;
}

} // namespace

QString JobTexts::present(const QVector<ClassJob>& jobs, const GroupName& groupName)
{
    if (jobs.isEmpty())
        return {};
    QString text = translated(QT_TRANSLATE_NOOP("JobTexts", "Please wait while all Tembrin are %1"))
                       .arg(translated(rowOf(jobs.first().task).doing));
    const QStringList names = groupsAtWork(jobs.first(), groupName);
    if (!names.isEmpty())
        text += QStringLiteral(": ") + names.join(QStringLiteral(", "));
    for (int i = 1; i < jobs.size(); ++i)
        text += translated(QT_TRANSLATE_NOOP("JobTexts", "; then %1"))
                    .arg(translated(rowOf(jobs.at(i).task).doing));
    return text;
}

QString JobTexts::outcome(const ClassJob& job, const GroupName& groupName)
{
    QStringList names;
    for (const ClassJob::Step& step : job.steps) {
        if (step.progress != Progress::PassedOver || step.reason == Reason::Cancelled ||
            isRefusal(step.reason))
            continue;
        const QString name = QStringLiteral("%1 (%2)").arg(groupName(step.slot), reason(step.reason));
        if (!names.contains(name))
            names.append(name);
    }
    return names.isEmpty() ? QString()
                           : translated(rowOf(job.task).notDone).arg(names.join(QStringLiteral(", ")));
}

QString JobTexts::reason(Reason reason)
{
    switch (reason) {
    case Reason::None:
        return {};
    case Reason::NotConnected:
        return translated(QT_TRANSLATE_NOOP("JobTexts", "not connected"));
    case Reason::Silent:
        return translated(QT_TRANSLATE_NOOP("JobTexts", "does not answer"));
    case Reason::Lost:
        return translated(QT_TRANSLATE_NOOP("JobTexts", "connection lost"));
    case Reason::Running:
        return translated(QT_TRANSLATE_NOOP("JobTexts", "is running"));
    case Reason::Battery:
        return translated(QT_TRANSLATE_NOOP("JobTexts", "its battery is low"));
    case Reason::Memory:
        return translated(QT_TRANSLATE_NOOP("JobTexts", "its memory is full"));
    case Reason::NoSensor:
        return translated(QT_TRANSLATE_NOOP("JobTexts", "no sensor is selected"));
    case Reason::Failed:
        return translated(QT_TRANSLATE_NOOP("JobTexts", "its data arrived damaged"));
    case Reason::Cancelled:
        return translated(QT_TRANSLATE_NOOP("JobTexts", "cancelled"));
    }
    return {};
}

bool JobTexts::isRefusal(Reason reason)
{
    return reason == Reason::Battery || reason == Reason::Memory || reason == Reason::NoSensor;
}

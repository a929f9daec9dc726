#pragma once

#include <QString>
#include <QVector>

#include <functional>

#include "classroom/classjob.h"

/// What a person reads of the jobs of a class; loggers go by their groups' names.
namespace JobTexts {

using GroupName = std::function<QString(int slot)>;

/// What is being done and to whom, and what waits behind it; empty without jobs.
QString present(const QVector<ClassJob>& jobs, const GroupName& groupName);
/// Who was passed over and why; empty when all confirmed. Loggers that refused to run are not in it: the
/// reason wants something done by a person.
QString outcome(const ClassJob& job, const GroupName& groupName);
/// Why a logger was passed over, in a few words.
QString reason(ClassJob::Reason reason);
/// The logger itself refused to run.
bool isRefusal(ClassJob::Reason reason);

} // namespace JobTexts

#pragma once

#include <QLabel>
#include <QTimer>

#include <functional>

class ClassRun;

/// The line at the bottom that says how the run stands: its time, its samples, who is away, and how it ended.
class RunLine : public QLabel
{
    Q_OBJECT

public:
    /// `run` is not owned and outlives this line. `groupName` names the logger of a slot.
    RunLine(const ClassRun* run, std::function<QString(int)> groupName, QWidget* parent = nullptr);

    /// After a change of the run; while it lasts the line follows the time by itself.
    void refresh();
    /// Somebody pressed Stop: the end that comes is by a person.
    void noteStop() { isStopped = true; }
    void noteStart() { isStopped = false; }

private:
    QString text() const;
    QStringList awayTexts() const;

    const ClassRun* run;
    std::function<QString(int)> groupName;
    bool isStopped = false;
    QTimer timer;
};

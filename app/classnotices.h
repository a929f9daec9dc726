#pragma once

#include <QObject>
#include <QTimer>
#include <QVector>

#include "classroom/classjob.h"

class QWidget;
class UserPrompt;
class multiConnectionsManager;

/// What several loggers say at about the same time and a person must hear: gathered, and told once with the
/// names of the groups. In a box while nobody runs; as a line while somebody does, since a box would cover
/// Stop.
class ClassNotices : public QObject
{
    Q_OBJECT

public:
    /// None is owned; `window` is what boxes stand on.
    ClassNotices(multiConnectionsManager* manager, UserPrompt* prompt, QWidget* window);

    /// A logger did not start, or gave up a run; a value of terminateReason.
    void noteRefusal(int slot, int reason);
    /// A logger works with another temperature unit than the program.
    void noteUnit(int slot);

Q_SIGNALS:
    /// For the line at the bottom.
    void line(const QString& text);

private:
    struct Refusal
    {
        int slot;
        int reason;
    };

    void tellRefusals();
    void tellUnits();
    bool doUnitsAgree() const;
    QString groups(const QVector<int>& slotList) const;

    multiConnectionsManager* manager;
    UserPrompt* prompt;
    QWidget* window;
    QVector<Refusal> refusals;
    QVector<int> otherUnits;
    bool isUnitTold = false; ///< and they have not agreed since
    QTimer refusalTimer;
    QTimer unitTimer;
};

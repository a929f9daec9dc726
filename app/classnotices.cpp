#include "app/classnotices.h"

#include <QCoreApplication>
#include <QWidget>

#include <utility>

#include "classroom/commandqueue.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/userprompt.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

namespace {

constexpr int msToGather = 300;
constexpr int msToGatherUnits = 1000; // loggers of a class come one after the other

struct StopReason
{
    int reason;
    const char* title;
    const char* text;
};

constexpr StopReason stopReasons[] = {
    {TERMINATE_BATTERY, QT_TRANSLATE_NOOP("MainWindow", "Low battery power"),
     QT_TRANSLATE_NOOP("MainWindow", "Can't run requested experiment.\nPlease charge the Tembrin battery.")},
    {TERMINATE_MEMORY, QT_TRANSLATE_NOOP("MainWindow", "Not enough memory"),
     QT_TRANSLATE_NOOP("MainWindow",
                       "Not enough memory for the requested experiment.\nPlease clear Tembrin memory.")},
    {TERMINATE_NOSENS, QT_TRANSLATE_NOOP("MainWindow", "No selected sensors"),
     QT_TRANSLATE_NOOP("MainWindow",
                       "Can't run requested experiment.\nPlease select at least one sensor.\n")},
};

QString windowText(const char* text)
{
    return QCoreApplication::translate("MainWindow", text);
}

} // namespace

ClassNotices::ClassNotices(multiConnectionsManager* manager, UserPrompt* prompt, QWidget* window)
    : QObject(window)
    , manager(manager)
    , prompt(prompt)
    , window(window)
{
    refusalTimer.setSingleShot(true);
    refusalTimer.setInterval(msToGather);
    unitTimer.setSingleShot(true);
    unitTimer.setInterval(msToGatherUnits);
    connect(&refusalTimer, &QTimer::timeout, this, &ClassNotices::tellRefusals);
    connect(&unitTimer, &QTimer::timeout, this, &ClassNotices::tellUnits);
}

QString ClassNotices::groups(const QVector<int>& slotList) const
{
    QStringList names;
    for (const int slot : slotList) {
        if (!names.contains(manager->groupName(slot)))
            names.append(manager->groupName(slot));
    }
    return names.join(QStringLiteral(", "));
}

// --- Runs that the loggers refuse ---

void ClassNotices::noteRefusal(int slot, int reason)
{
    // Two words for the same on the screen.
    refusals.append({slot, reason == TERMINATE_MAXEXP ? int(TERMINATE_MEMORY) : reason});
    refusalTimer.start();
}

void ClassNotices::tellRefusals()
{
    if (manager->queue().has(ClassJob::Task::Start)) {
        refusalTimer.start();
        return;
    }
    const QVector<Refusal> told = std::exchange(refusals, {});
    QString title;
    QStringList texts;
    for (const StopReason& row : stopReasons) {
        QVector<int> slotList;
        for (const Refusal& refusal : told) {
            if (refusal.reason == row.reason)
                slotList.append(refusal.slot);
        }
        if (slotList.isEmpty())
            continue;
        title = title.isEmpty() ? windowText(row.title) : tr("Not all loggers run");
        texts.append(tr("%1: %2").arg(groups(slotList), windowText(row.text).trimmed()));
    }
    if (texts.isEmpty())
        return;
    if (manager->isAnyRunning())
        Q_EMIT line(texts.join(QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char(' ')));
    else
        prompt->warning(window, title, texts.join(QStringLiteral("\n\n")));
}

// --- Temperature units ---

bool ClassNotices::doUnitsAgree() const
{
    for (int slot = 0; slot < manager->nDefTembrins(); ++slot) {
        const TembrinData* state = manager->tembrinDataAt(slot);
        if (manager->isRecognized(slot) && !state->isVorta() &&
            state->reported().fahrenheit != manager->tembrinAt(slot)->units.fahrenheit)
            return false;
    }
    return true;
}

void ClassNotices::noteUnit(int slot)
{
    otherUnits.append(slot);
    unitTimer.start();
}

void ClassNotices::tellUnits()
{
    const QVector<int> told = std::exchange(otherUnits, {});
    if (doUnitsAgree()) {
        isUnitTold = false;
        return;
    }
    const QString text =
        tr("%1: %2").arg(groups(told), windowText("Temperature units has been changed.\n"
                                                  "Please restart Kormelin for the change to take effect."));
    if (isUnitTold || manager->isAnyRunning()) {
        Q_EMIT line(QString(text).replace(QLatin1Char('\n'), QLatin1Char(' ')));
        return;
    }
    // The mark first: the box pumps events, and who comes meanwhile is told of by a line.
    isUnitTold = true;
    prompt->information(window, windowText("Change of temperature units"), text);
}

#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include "classroom/classjob.h"
#include "common/classsize.h"
#include "persistence/journalwriter.h"

struct FoundJournal;
class ExpData;
class multiConnectionsManager;

/// Keeps the run of the class in a journal for as long as it is in no file: a journal for each run, which
/// ends when keep() or setAside() tells that another one begins. The rows wait for a quarter of a
/// second at most before they go to the disk.
class RunRecorder : public QObject
{
    Q_OBJECT

public:
    /// `manager` has the run and the data sets; not owned.
    explicit RunRecorder(multiConnectionsManager* manager, QObject* parent = nullptr);
    /// What is unsaved stays for the next start.
    ~RunRecorder() override;

    /// Something was saved, or the run has ended: the journal goes if all of its run was saved and it is
    /// over.
    void noteSaved();
    /// The set of logger `slot` was put together anew, with what it has now.
    void rewrite(int slot);
    /// What a download brought has taken the place of the group's samples.
    void replace(int slot);
    /// The run on the screen is that of an earlier start.
    void adopt(const FoundJournal& journal, quint8 groups);
    /// Something else takes the place of the run, which is kept: its journal stays. Its name, empty if there
    /// is none.
    QString keep();
    /// A kept run is on the screen again.
    void takeKept(const QString& journal, quint8 groups);
    /// A kept run is in a file, or was given up; an empty name does nothing.
    void removeKept(const QString& journal);
    void refuseKept(const QString& journal);
    /// Something else takes the place of the run. If it is in no file, that was a person's wish; what was
    /// kept of it stays for a while all the same.
    void setAside();
    /// The same at the end of the program.
    void leave();

Q_SIGNALS:
    /// No more of this run is kept; one line for a person.
    void failed(const QString& line);

private:
    void beginGroup(int slot);
    void takeRow(int slot, double time, const QVector<double>& values);
    void writeGroup(int slot);
    void handOver();
    bool isSaved() const;
    void forget();

    multiConnectionsManager* manager;
    JournalWriter writer;
    QVector<JournalRows> waiting;
    QTimer timer;
    QElapsedTimer sinceHandOver;
    QString path; ///< of the journal, while it is open
    bool isOpen = false;
    quint8 written = 0; ///< a bit for each group whose rows the journal has so far
    quint8 inRun = 0;   ///< a bit for each group of its run
};

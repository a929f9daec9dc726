#pragma once

#include <QDialog>
#include <QVector>

#include "classroom/classjob.h"

class ExperimentPage;
class QCheckBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QTabWidget;
class multiConnectionsManager;

/// Shows what is stored in the loggers, a page for each, and fetches the experiment that a person chooses: of
/// one logger, or the same run of all. It stays open, so that another one can be fetched; closing it ends a
/// download under way.
class experimentInfo : public QDialog
{
    Q_OBJECT

public:
    /// Asks all loggers for their tables at once; the page of slot `first` is shown, if it has one.
    explicit experimentInfo(multiConnectionsManager* mTembrin, int first = 0, QWidget* parent = nullptr);

    /// Slots in use whose logger is connected and has a memory.
    static QVector<int> loggersWithMemory(const multiConnectionsManager& mTembrin);

public Q_SLOTS:
    void reject() override;

Q_SIGNALS:
    /// One run of the whole class is being fetched.
    void fetchingSameRun();

private Q_SLOTS:
    void on_pushDownload_clicked();
    /// The outcome of a task for one logger.
    void takeStep(ClassJob::Task task, const ClassJob::Step& step);

private:
    struct Fetch
    {
        ExperimentPage* page;
        int row;
    };

    void addPages(int first);
    void createLayout();
    ExperimentPage* page() const;
    void chosenChanged(ExperimentPage* leader);
    void chooseSameRun(ExperimentPage* leader);
    bool isSameForAll() const;
    void end(int at, const QString& failure);
    int placeOf(int logger) const;
    void showFetching();
    void showOutcome();
    void showProgress(int logger, int val, int total);
    void updateButtons();
    QString groupOf(const ExperimentPage* page) const;

    multiConnectionsManager* mTembrin;
    QVector<ExperimentPage*> pages;
    QTabWidget* tabs;
    QCheckBox* sameRun;
    QLabel* hint;
    QProgressBar* progress;
    QPushButton* pushDownload;
    QPushButton* pushCancel;

    QVector<Fetch> fetching; ///< what is still to come
    int fetchCount = 0;      ///< with what has
    QStringList fetched;     ///< names of what has arrived, and of what could not be had
    QStringList failed;
    bool isChoosing = false; ///< the dialog itself moves the choices
};

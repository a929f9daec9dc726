#include "app/runrecovery.h"

#include <QLabel>
#include <QLockFile>
#include <QLoggingCategory>
#include <QMainWindow>
#include <QPushButton>
#include <QRunnable>
#include <QToolBar>

Q_DECLARE_LOGGING_CATEGORY(appLog)

namespace {

class JournalSearch : public QObject, public QRunnable
{
    Q_OBJECT

public:
    void run() override
    {
        JournalFolder::prune(QDateTime::currentDateTime());
        Q_EMIT found(JournalFolder::find());
    }

Q_SIGNALS:
    void found(const QVector<FoundJournal>& journals);
};

constexpr int textMargin = 8; // pixels left and right of the text

} // namespace

RunRecovery::RunRecovery(QMainWindow* window)
    : QObject(window)
    , window(window)
{
    qRegisterMetaType<QVector<FoundJournal>>();
}

void RunRecovery::look()
{
    if (isFinished)
        return;
    auto* const search = new JournalSearch;
    connect(search, &JournalSearch::found, this, &RunRecovery::take, Qt::QueuedConnection);
    searches.start(search);
}

bool RunRecovery::finish(int ms)
{
    isFinished = true;
    searches.clear();
    return searches.waitForDone(ms);
}

void RunRecovery::take(const QVector<FoundJournal>& found)
{
    journals += found; // what is offered is locked, and not found again
    show();
}

void RunRecovery::next()
{
    journals.removeFirst();
    show();
}

QString RunRecovery::nameOf(const JournalRun& run)
{
    const QString time = run.begun.toString(QStringLiteral("hh:mm"));
    return run.begun.date() == QDate::currentDate()
               ? tr("The run of %1").arg(time)
               : tr("The run of %1, %2").arg(run.begun.toString(QStringLiteral("d-MM-yyyy")), time);
}

QString RunRecovery::durationText(int seconds)
{
    if (seconds < 60)
        return tr("%1 s").arg(seconds);
    if (seconds < 3600)
        return tr("%1 min %2 s").arg(seconds / 60).arg(seconds % 60);
    return tr("%1 h %2 min").arg(seconds / 3600).arg(seconds / 60 % 60);
}

QString RunRecovery::extentOf(const JournalRun& run)
{
    const int count = run.experiments.size();
    const QString groups = count == 1 ? tr("1 group") : tr("%1 groups").arg(count);
    if (run.seconds() > 0)
        return tr("%1, %2").arg(groups, durationText(qRound(run.seconds())));
    int rows = 0; // taken by hand
    for (const JournalExperiment& experiment : run.experiments)
        rows += experiment.rows;
    return tr("%1, %2").arg(groups, rows == 1 ? tr("1 sample") : tr("%1 samples").arg(rows));
}

void RunRecovery::createBar()
{
    bar = new QToolBar(tr("Unsaved run"), window);
    bar->setObjectName(QStringLiteral("recoveryBar"));
    bar->setMovable(false);
    bar->setContextMenuPolicy(Qt::PreventContextMenu);
    text = new QLabel;
    text->setObjectName(QStringLiteral("recoveryText"));
    text->setContentsMargins(textMargin, 0, textMargin, 0);
    bar->addWidget(text);
    const auto addButton = [this](const QString& word, const char* name) {
        auto* const button = new QPushButton(word);
        button->setObjectName(QLatin1String(name));
        button->setAutoDefault(false);
        bar->addWidget(button);
        return button;
    };
    connect(addButton(tr("Restore"), "restoreRun"), &QPushButton::clicked, this, &RunRecovery::restoreWanted);
    connect(addButton(tr("Refuse"), "refuseRun"), &QPushButton::clicked, this, [this] {
        JournalFolder::refuse(offered().path);
        next();
    });
    connect(addButton(tr("Later"), "laterRun"), &QPushButton::clicked, this, [this] {
        postponed.append(offered()); // and so locked
        next();
    });
    window->addToolBar(Qt::BottomToolBarArea, bar);
}

void RunRecovery::show()
{
    if (journals.isEmpty()) {
        if (bar)
            bar->hide();
        return;
    }
    if (!bar)
        createBar();
    const JournalRun& run = offered().extent;
    text->setText(tr("%1 was not saved: %2").arg(nameOf(run), extentOf(run)));
    qCInfo(appLog, "offered: %s", qPrintable(text->text()));
    bar->show();
}

#include "runrecovery.moc"

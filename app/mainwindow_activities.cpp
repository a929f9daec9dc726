#include "app/mainwindow.h"

#include "common/userprompt.h"
#include "persistence/readwrite.h"

#include <QAction>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMenu>
#include <QStatusBar>
#include <QThreadPool>
#include <QToolBar>
#include <QToolButton>
#include <QUrl>

namespace {

constexpr int msUnpacked = 8000; // a line about what was unpacked

/// On the thread pool; the lines come to the window as long as it is there.
class ActivityTask : public QObject, public QRunnable
{
    Q_OBJECT

public:
    explicit ActivityTask(const QString& folder)
        : folder(folder)
    {
    }

    void run() override
    {
        QString reason;
        const auto tell = [this](const QString& archive, int percent) { Q_EMIT progress(archive, percent); };
        const bool isUnpacked = ReadWrite::unpackIfNeeded(folder, &reason, tell);
        Q_EMIT done(isUnpacked, reason);
    }

Q_SIGNALS:
    void progress(const QString& archive, int percent);
    void done(bool isUnpacked, const QString& reason);

private:
    const QString folder;
};

} // namespace

/// A small arrow on Open leads to the activities.
void MainWindow::addActivityChoice()
{
    auto* button = qobject_cast<QToolButton*>(fileToolBar->widgetForAction(openAct));
    auto* menu = new QMenu(button);
    menu->setObjectName(QStringLiteral("openMenu"));
    QAction* select = menu->addAction(tr("Open activity"), this, &MainWindow::doPDF);
    select->setObjectName(QStringLiteral("openActivityAct"));
    button->setObjectName(QStringLiteral("openButton"));
    button->setMenu(menu);
    button->setPopupMode(QToolButton::MenuButtonPopup);
}

void MainWindow::doPDF()
{
    const QString filters =
        tr("Activity files (*.pdf)") + QStringLiteral(";;") + tr("Archives of activities (*.tar *.7z)");
    const QString folder = ReadWrite::activityFolder();
    const QString fname = prompt->openFile(this, tr("Open activity"),
                                           folder.isEmpty() ? ReadWrite::getActivityPath() : folder, filters);
    if (fname.isEmpty())
        return;
    ReadWrite::setActivityFolder(fname);
    if (!fname.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive))
        unpackActivities();
    else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(fname)))
        statusBar()->showMessage(tr("No program of this desktop opens %1.").arg(QFileInfo(fname).fileName()));
}

/// Only in a folder that was chosen for activities.
void MainWindow::unpackActivities()
{
    const QString folder = ReadWrite::activityFolder();
    if (folder.isEmpty())
        return;
    auto* const task = new ActivityTask(folder);
    connect(task, &ActivityTask::progress, this, [this](const QString& archive, int percent) {
        statusBar()->showMessage(tr("Unpacking %1: %2 %").arg(archive).arg(percent));
    });
    connect(task, &ActivityTask::done, this, [this](bool isUnpacked, const QString& reason) {
        if (!reason.isEmpty())
            statusBar()->showMessage(reason);
        else if (isUnpacked)
            statusBar()->showMessage(tr("The activities were unpacked."), msUnpacked);
    });
    QThreadPool::globalInstance()->start(task);
}

#include "mainwindow_activities.moc"

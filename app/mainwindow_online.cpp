#include "app/mainwindow.h"

#include "app/graphtools.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/settings.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "instruments/statusline.h"
#include "online/autoupdate.h"
#include "online/globallab.h"
#include "online/globallabupload.h"

#include <QLabel>
#include <QStatusBar>
#include <QTimer>

namespace {

constexpr int msBeforeAsking = 5000; // the loggers go before
constexpr int msSent = 1000;         // that the person reads
constexpr const char* userKey = "GlobalLab/user";

} // namespace

/// Without an address in the settings nobody is asked anything.
void MainWindow::createOnline()
{
    if (Settings::mainStore().value(QStringLiteral("update/url")).toString().isEmpty())
        return;
    auto* const update = new autoUpdate(QStringLiteral("Pellandra " PELLANDRA_VERSION), this);
    connect(update, &autoUpdate::newerFound, this, [this](const QString& version, const QString& page) {
        auto* const line = new QLabel(
            QStringLiteral("<a href=\"%1\">%2</a>")
                .arg(page.toHtmlEscaped(), tr("Pellandra %1 is there").arg(version).toHtmlEscaped()));
        line->setObjectName(QStringLiteral("updateLine"));
        line->setOpenExternalLinks(true);
        statusBar()->insertPermanentWidget(0, line);
    });
    connect(update, &autoUpdate::checked, update, &QObject::deleteLater);
    QTimer::singleShot(msBeforeAsking, update, &autoUpdate::checkLastVersion);
}

/// What the graph in use shows, as it is now.
void MainWindow::doGlobalLab()
{
    Plot* const plot = tools->target();
    const ExpData* const set = tools->targetData();
    if (!plot || !set || set->getXSize() == 0) {
        statusLine->setOutcome(tr("There is nothing to send yet."));
        return;
    }
    if (upload && upload->isBusy()) { // its answer would be taken for that of another
        statusLine->setOutcome(tr("The experiment before is still being sent."));
        return;
    }
    const QJsonObject experiment = GlobalLabUpload::experimentOf(*set, plot->title().text());
    QSettings store = Settings::mainStore();
    store.remove(QStringLiteral("GlobalLab/pass")); // a password is not kept
    const QUrl url(store.value(QStringLiteral("GlobalLab/url")).toString());
    if (!upload) {
        upload = new GlobalLabUpload(this);
        connect(upload, &GlobalLabUpload::failed, this, &MainWindow::showGlobalLabError);
        connect(upload, &GlobalLabUpload::succeeded, this, &MainWindow::GlobalLabSuccess);
    }
    uploadDialog = new globalLab(store.value(QLatin1String(userKey)).toString(), QString(), this);
    uploadDialog->setAttribute(Qt::WA_DeleteOnClose);
    uploadDialog->launchBrowser = true;
    connect(uploadDialog, &globalLab::globalLabAction, this, [this, url, experiment] {
        uploadDialog->showSending();
        upload->send(url, uploadDialog->username, uploadDialog->password, experiment);
    });
    uploadDialog->open(); // the loggers' samples go on arriving
}

void MainWindow::showGlobalLabError(const QString& msg)
{
    if (uploadDialog)
        uploadDialog->showMessage(msg);
    else // it was closed meanwhile
        statusLine->setOutcome(tr("The experiment was not sent: %1").arg(msg));
}

void MainWindow::GlobalLabSuccess()
{
    if (!uploadDialog) {
        statusLine->setOutcome(tr("The experiment was sent."));
        return;
    }
    Settings::mainStore().setValue(QLatin1String(userKey), uploadDialog->username);
    disconnect(uploadDialog, &globalLab::globalLabAction, nullptr, nullptr);
    uploadDialog->delayedClose(msSent);
}

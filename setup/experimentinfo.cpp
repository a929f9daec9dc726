#include "setup/experimentinfo.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QTabWidget>
#include <QVBoxLayout>

#include "classroom/commandqueue.h"
#include "classroom/jobtexts.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/screenflags.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "setup/dialogtools.h"
#include "setup/experimentpage.h"

namespace {
const QSize tableDialogSize(640, 420);
const QString comma = QStringLiteral(", ");
} // namespace

experimentInfo::experimentInfo(multiConnectionsManager* mTembrin, int first, QWidget* parent)
    : QDialog(parent)
    , mTembrin(mTembrin)
    , tabs(DialogTools::named(new QTabWidget, "tabs", tr("Groups")))
    , sameRun(DialogTools::named(new QCheckBox(tr("The same run for all")), "sameRun"))
    , hint(DialogTools::named(new QLabel, "hint"))
    , progress(DialogTools::named(new QProgressBar, "progressBar", tr("Progress of the download")))
    , pushDownload(DialogTools::named(new QPushButton(tr("Download")), "pushDownload"))
    , pushCancel(DialogTools::named(new QPushButton(tr("Cancel")), "pushCancel"))
{
    setObjectName(QStringLiteral("experimentInfo"));
    setWindowTitle(tr("Select experiment"));
    DialogTools::applyLook(this);
    addPages(first);
    createLayout();
    DialogTools::fitToScreen(this, tableDialogSize * (ScreenFlags::is4K() ? 2 : 1));

    connect(&mTembrin->queue(), &CommandQueue::stepEnded, this, &experimentInfo::takeStep);
    connect(tabs, &QTabWidget::currentChanged, this, &experimentInfo::updateButtons);
    connect(sameRun, &QCheckBox::clicked, this, [this] { chosenChanged(page()); });
    connect(pushDownload, &QPushButton::clicked, this, &experimentInfo::on_pushDownload_clicked);
    connect(pushCancel, &QPushButton::clicked, this, &experimentInfo::reject);
    updateButtons();
}

QVector<int> experimentInfo::loggersWithMemory(const multiConnectionsManager& mTembrin)
{
    QVector<int> loggers;
    for (int i = 0; i < mTembrin.nDefTembrins(); ++i) {
        const TembrinData* state = mTembrin.tembrinDataAt(i);
        if (mTembrin.isTembrinConnect(i) && state->isLoggerRecognized() && !state->isVorta())
            loggers.append(i);
    }
    return loggers;
}

void experimentInfo::addPages(int first)
{
    for (const int i : loggersWithMemory(*mTembrin)) {
        TembrinProtocol* session = mTembrin->tembrinAt(i);
        auto* added = new ExperimentPage(session);
        pages.append(added);
        const int tab = tabs->addTab(added, groupOf(added));
        tabs->setTabToolTip(tab, session->loggerName());
        if (i == first)
            tabs->setCurrentIndex(tab);
        connect(added, &ExperimentPage::chosenChanged, this, [this, added] { chosenChanged(added); });
        connect(added, &ExperimentPage::downloadAsked, this, &experimentInfo::on_pushDownload_clicked);
        connect(session->tembrinData, &TembrinData::donePacket, this,
                [this, i](int val, int total) { showProgress(i, val, total); });
    }
}

void experimentInfo::createLayout()
{
    progress->setRange(0, 100);
    progress->setValue(0);
    hint->setWordWrap(true);
    hint->setText(tr("Choose an experiment and press Download."));
    sameRun->setVisible(pages.size() > 1);
    pushDownload->setDefault(true);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(progress, 1);
    buttons->addWidget(pushDownload);
    buttons->addWidget(pushCancel);
    auto* all = new QVBoxLayout(this);
    all->addWidget(tabs, 1);
    all->addWidget(sameRun);
    all->addWidget(hint);
    all->addLayout(buttons);
}

ExperimentPage* experimentInfo::page() const
{
    return pages.value(tabs->currentIndex());
}

QString experimentInfo::groupOf(const ExperimentPage* of) const
{
    const QString name = mTembrin->groupName(of->index());
    return name.isEmpty() ? tr("Logger %1").arg(of->index() + 1) : name;
}

bool experimentInfo::isSameForAll() const
{
    return sameRun->isChecked();
}

// --- What is chosen ---

void experimentInfo::chosenChanged(ExperimentPage* leader)
{
    if (isChoosing)
        return;
    // A table that comes late takes the run that is already chosen.
    if (isSameForAll() && fetching.isEmpty())
        chooseSameRun(leader == page() || !page() ? leader : page());
    updateButtons();
}

/// In every other page the run that began when the one chosen in `leader` did; who has none is named.
void experimentInfo::chooseSameRun(ExperimentPage* leader)
{
    const QScopedValueRollback<bool> own(isChoosing, true);
    if (!leader || leader->chosen() < 0)
        return;
    const QDateTime start = leader->startOf(leader->chosen());
    QStringList without;
    for (ExperimentPage* other : qAsConst(pages)) {
        if (other == leader)
            continue;
        const int row = other->nearestTo(start);
        other->choose(row);
        if (row < 0)
            without.append(groupOf(other));
    }
    hint->setText(
        without.isEmpty()
            ? tr("All have a run of %1.").arg(leader->nameOf(leader->chosen()))
            : tr("Without a run of %1: %2.").arg(leader->nameOf(leader->chosen()), without.join(comma)));
}

// --- Fetching ---

/// The queue fetches from one logger after the other.
void experimentInfo::on_pushDownload_clicked()
{
    if (!fetching.isEmpty() || !page() || page()->chosen() < 0)
        return;
    for (ExperimentPage* each : qAsConst(pages)) {
        if (each->chosen() >= 0 && (isSameForAll() || each == page()))
            fetching.append({each, each->chosen()});
    }
    fetchCount = fetching.size();
    fetched.clear();
    failed.clear();
    progress->setValue(0);
    showFetching();
    updateButtons();
    if (isSameForAll())
        Q_EMIT fetchingSameRun();
    const QVector<Fetch> all = fetching;
    for (const Fetch& each : all) {
        if (!mTembrin->queue().addDownload(each.page->index(), each.row + 1))
            end(placeOf(each.page->index()), JobTexts::reason(ClassJob::Reason::NotConnected));
    }
}

/// Among what is still to come, -1 if nothing comes from there.
int experimentInfo::placeOf(int logger) const
{
    for (int i = 0; i < fetching.size(); ++i) {
        if (fetching[i].page->index() == logger)
            return i;
    }
    return -1;
}

void experimentInfo::takeStep(ClassJob::Task task, const ClassJob::Step& step)
{
    const int at = placeOf(step.slot);
    if (task != ClassJob::Task::Download || at < 0 || fetching[at].row + 1 != step.experiment)
        return;
    const bool isGood = step.progress == ClassJob::Progress::Confirmed;
    end(at, isGood ? QString() : JobTexts::reason(step.reason));
}

/// Nothing more comes of this: all is well, or `failure` says why not.
void experimentInfo::end(int at, const QString& failure)
{
    const Fetch done = fetching.takeAt(at);
    if (failure.isEmpty())
        fetched.append(tr("%1 (%2)", "date and time of an experiment (group)")
                           .arg(done.page->nameOf(done.row), groupOf(done.page)));
    else
        failed.append(tr("%1 (%2)", "group (reason)").arg(groupOf(done.page), failure));
    if (fetching.isEmpty())
        showOutcome();
    else
        showFetching();
    updateButtons();
}

void experimentInfo::showFetching()
{
    QStringList groups;
    for (const Fetch& each : qAsConst(fetching))
        groups.append(groupOf(each.page));
    hint->setText(tr("Fetching what was chosen from %1.").arg(groups.join(comma)));
}

void experimentInfo::showOutcome()
{
    QStringList lines;
    if (!fetched.isEmpty())
        lines.append(tr("On the graph now: %1.").arg(fetched.join(comma)));
    if (!failed.isEmpty())
        lines.append(tr("Could not be fetched: %1.").arg(failed.join(comma)));
    hint->setText(lines.join(QLatin1Char('\n')));
    progress->setValue(fetched.isEmpty() ? 0 : progress->maximum());
}

void experimentInfo::showProgress(int logger, int val, int total)
{
    if (placeOf(logger) < 0 || total <= 0)
        return;
    const int done = fetchCount - fetching.size();
    const double part = qBound(0.0, double(val) / total, 1.0);
    progress->setValue(int(progress->maximum() * (done + part) / fetchCount));
}

void experimentInfo::reject()
{
    if (!fetching.isEmpty()) {
        fetching.clear();
        mTembrin->cancelDownload();
    }
    QDialog::reject();
}

void experimentInfo::updateButtons()
{
    const bool isFetching = !fetching.isEmpty();
    const ExperimentPage* shown = page();
    sameRun->setEnabled(!isFetching);
    pushDownload->setText(isSameForAll() ? tr("Download for all") : tr("Download"));
    pushDownload->setEnabled(!isFetching && shown && shown->chosen() >= 0);
    pushCancel->setText(!isFetching && !fetched.isEmpty() ? tr("Close") : tr("Cancel"));
}

#include "setup/experimentinfo.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "classroom/multiconnectionsmanager.h"
#include "common/screenflags.h"
#include "protocol/tembrindata.h"
#include "setup/dialogtools.h"

namespace {

constexpr int iconSize = 32;
constexpr int iconGap = 5;
constexpr int columnGap = 20;
const QSize tableDialogSize(640, 420);
constexpr int msForTable = 2500; ///< the longest table takes about a second on the line
constexpr int mostQuestions = 3;

enum column
{
    COLUMN_DATE,
    COLUMN_TIME,
    COLUMN_RATE,
    COLUMN_SAMPLES,
    COLUMN_SENSORS,
    COLUMNS
};

int scale()
{
    return ScreenFlags::is4K() ? 2 : 1;
}

} // namespace

experimentInfo::experimentInfo(multiConnectionsManager* mTembrin, int index, QWidget* parent)
    : QDialog(parent)
    , mTembrin(mTembrin)
    , logger(mTembrin->tembrinDataAt(index))
    , index(index)
    , table(DialogTools::named(new QTableWidget(0, COLUMNS, this), "tableExperiments",
                               tr("Experiments stored in the logger")))
    , hint(DialogTools::named(new QLabel(this), "hint"))
    , progress(DialogTools::named(new QProgressBar(this), "progressBar", tr("Progress of the download")))
    , pushDownload(DialogTools::named(new QPushButton(tr("Download"), this), "pushDownload"))
    , pushCancel(DialogTools::named(new QPushButton(tr("Cancel"), this), "pushCancel"))
{
    setObjectName(QStringLiteral("experimentInfo"));
    setWindowTitle(tr("Select experiment"));
    DialogTools::applyLook(this);
    createTable();
    createLayout();
    DialogTools::fitToScreen(this, tableDialogSize * scale());

    connect(logger, &TembrinData::gotExperimentInfo, this, &experimentInfo::fillTable);
    connect(logger, &TembrinData::donePacket, this, &experimentInfo::showProgress);
    connect(mTembrin, &multiConnectionsManager::passedOver, this, &experimentInfo::handlePassedOver);
    connect(mTembrin, &multiConnectionsManager::doneSendCommandToAll, this, &experimentInfo::handleDone);
    connect(pushDownload, &QPushButton::clicked, this, &experimentInfo::on_pushDownload_clicked);
    connect(pushCancel, &QPushButton::clicked, this, &experimentInfo::reject);
    tableTimer.setSingleShot(true);
    tableTimer.setInterval(msForTable);
    connect(&tableTimer, &QTimer::timeout, this, &experimentInfo::askForTable);
    askForTable();
}

void experimentInfo::createTable()
{
    table->setHorizontalHeaderLabels({tr("Date"), tr("Time"), tr("Rate"), tr("Samples"), tr("Sensors")});
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setShowGrid(false);
    table->setTabKeyNavigation(false);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setHighlightSections(false);
    table->horizontalHeader()->setStretchLastSection(true);
    table->horizontalHeaderItem(COLUMN_SENSORS)->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    connect(table, &QTableWidget::itemSelectionChanged, this, &experimentInfo::updateButtons);
    connect(table, &QTableWidget::cellDoubleClicked, this, &experimentInfo::on_pushDownload_clicked);
}

void experimentInfo::createLayout()
{
    progress->setRange(0, 100);
    progress->setValue(0);
    hint->setWordWrap(true);
    pushDownload->setDefault(true);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(progress, 1);
    buttons->addWidget(pushDownload);
    buttons->addWidget(pushCancel);
    auto* all = new QVBoxLayout(this);
    all->addWidget(table, 1);
    all->addWidget(hint);
    all->addLayout(buttons);
}

void experimentInfo::askForTable()
{
    updateButtons();
    if (logger->numExperiments <= 0) {
        hint->setText(tr("No experiment is stored in this logger."));
        return;
    }
    if (tableQuestions == mostQuestions) {
        hint->setText(tr("The logger does not tell what is stored in it. Close this window and try again."));
        return;
    }
    ++tableQuestions;
    hint->setText(tr("Please wait while the logger tells what is stored in it."));
    mTembrin->sendCommand(index, CMD_GET_EXPERIMENTS_TABLE);
    tableTimer.start();
}

void experimentInfo::fillTable()
{
    tableTimer.stop();
    table->setRowCount(0);
    table->setIconSize(QSize(0, 0)); // grows with the strips
    for (const expInfo& experiment : qAsConst(logger->expList))
        addRow(experiment);
    table->resizeColumnsToContents();
    for (int i = 0; i < COLUMN_SENSORS; ++i)
        table->setColumnWidth(i, table->columnWidth(i) + columnGap * scale());
    table->selectRow(table->rowCount() - 1);
    table->scrollToBottom();
    table->setFocus();
    hint->setText(tr("Choose an experiment and press Download."));
}

void experimentInfo::addRow(const expInfo& experiment)
{
    const int row = table->rowCount();
    table->insertRow(row);
    const QLocale locale;
    const QString texts[COLUMNS] = {
        locale.toString(experiment.datetime.date(), QLocale::ShortFormat),
        experiment.datetime.time().toString(QStringLiteral("HH:mm:ss")),
        experiment.rate,
        QString::number(experiment.samples),
        QString(),
    };
    for (int i = 0; i < COLUMNS; ++i) {
        auto* item = new QTableWidgetItem(texts[i]);
        item->setTextAlignment(i == COLUMN_SENSORS ? Qt::AlignVCenter | Qt::AlignLeft : Qt::AlignCenter);
        table->setItem(row, i, item);
    }
    QTableWidgetItem* sensors = table->item(row, COLUMN_SENSORS);
    const QPixmap strip = iconStrip(experiment.iconNames);
    QIcon icon(strip);
    icon.addPixmap(strip, QIcon::Selected); // without the tint of the selection
    sensors->setIcon(icon);
    table->setIconSize(table->iconSize().expandedTo(strip.size()));
    sensors->setData(Qt::AccessibleTextRole, experiment.sensNames);
    sensors->setToolTip(experiment.sensNames);
    table->setRowHeight(row, (iconSize + 2 * iconGap) * scale());
}

QPixmap experimentInfo::iconStrip(const QStringList& iconNames) const
{
    const int size = iconSize * scale();
    const int step = size + iconGap * scale();
    QPixmap strip(qMax(1, step * iconNames.size()), size);
    strip.fill(Qt::transparent);
    QPainter painter(&strip);
    for (int i = 0; i < iconNames.size(); ++i)
        QIcon(iconNames.at(i)).paint(&painter, i * step, 0, size, size);
    return strip;
}

void experimentInfo::on_pushDownload_clicked()
{
    const int row = table->currentRow();
    if (fetching >= 0 || row < 0)
        return;
    fetching = row;
    progress->setValue(0);
    mTembrin->downloadFrom(index, row + 1);
    if (mTembrin->isSending(CMD_DOWNLOAD_STORED_DATA)) {
        hint->setText(tr("Fetching the experiment of %1.").arg(nameOf(row)));
    } else {
        fetching = -1;
        hint->setText(tr("The logger is not connected."));
    }
    updateButtons();
}

void experimentInfo::showProgress(int val, int total)
{
    if (fetching >= 0 && total > 0)
        progress->setValue(100 * val / total);
}

void experimentInfo::handlePassedOver(int loggerIndex)
{
    if (fetching < 0 || loggerIndex != index)
        return;
    hint->setText(tr("The experiment of %1 could not be fetched.").arg(nameOf(fetching)));
    progress->setValue(0);
    fetching = -1;
}

void experimentInfo::handleDone()
{
    if (fetching >= 0)
        hint->setText(tr("The experiment of %1 is on the graph now.").arg(nameOf(fetching)));
    fetching = -1;
    updateButtons();
}

void experimentInfo::reject()
{
    if (fetching >= 0) {
        fetching = -1;
        mTembrin->cancelDownload();
    }
    QDialog::reject();
}

void experimentInfo::updateButtons()
{
    pushDownload->setEnabled(fetching < 0 && !table->selectedItems().isEmpty());
}

QString experimentInfo::nameOf(int row) const
{
    return tr("%1, %2", "date, time")
        .arg(table->item(row, COLUMN_DATE)->text(), table->item(row, COLUMN_TIME)->text());
}

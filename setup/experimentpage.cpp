#include "setup/experimentpage.h"

#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QTableWidget>
#include <QVBoxLayout>

#include "common/screenflags.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "setup/dialogtools.h"

namespace {

constexpr int iconSize = 32;
constexpr int iconGap = 5;
constexpr int columnGap = 20;
constexpr int msForTable = 2500; ///< the longest table takes about a second on the line
constexpr int mostQuestions = 3;
constexpr qint64 sameRunSeconds = 5 * 60; ///< a class does not start at one instant, nor do its clocks agree

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

ExperimentPage::ExperimentPage(TembrinProtocol* session, QWidget* parent)
    : QWidget(parent)
    , session(session)
    , table(DialogTools::named(new QTableWidget(0, COLUMNS), "tableExperiments",
                               tr("Experiments stored in the logger")))
    , hint(DialogTools::named(new QLabel, "pageHint"))
{
    setObjectName(QStringLiteral("experiments%1").arg(session->index + 1));
    createTable();
    hint->setWordWrap(true);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(table, 1);
    layout->addWidget(hint);
    connect(session->tembrinData, &TembrinData::gotExperimentInfo, this, &ExperimentPage::fillTable);
    tableTimer.setSingleShot(true);
    tableTimer.setInterval(msForTable);
    connect(&tableTimer, &QTimer::timeout, this, &ExperimentPage::askForTable);
    askForTable();
}

void ExperimentPage::createTable()
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
    connect(table, &QTableWidget::itemSelectionChanged, this, &ExperimentPage::chosenChanged);
    connect(table, &QTableWidget::cellDoubleClicked, this, &ExperimentPage::downloadAsked);
}

int ExperimentPage::index() const
{
    return session->index;
}

void ExperimentPage::askForTable()
{
    if (session->tembrinData->numExperiments() <= 0) {
        hint->setText(tr("No experiment is stored in this logger."));
        return;
    }
    if (tableQuestions == mostQuestions) {
        hint->setText(tr("The logger does not tell what is stored in it. Close this window and try again."));
        return;
    }
    ++tableQuestions;
    hint->setText(tr("Please wait while the logger tells what is stored in it."));
    session->sendCommand(CMD_GET_EXPERIMENTS_TABLE);
    tableTimer.start();
}

void ExperimentPage::fillTable()
{
    tableTimer.stop();
    experiments = session->tembrinData->expList();
    table->setRowCount(0);
    table->setIconSize(QSize(0, 0)); // grows with the strips
    for (const expInfo& experiment : qAsConst(experiments))
        addRow(experiment);
    table->resizeColumnsToContents();
    for (int i = 0; i < COLUMN_SENSORS; ++i)
        table->setColumnWidth(i, table->columnWidth(i) + columnGap * scale());
    table->scrollToBottom();
    if (isVisible())
        table->setFocus();
    hint->hide();
    choose(table->rowCount() - 1);
}

void ExperimentPage::addRow(const expInfo& experiment)
{
    const int row = table->rowCount();
    table->insertRow(row);
    const QString texts[COLUMNS] = {
        QLocale().toString(experiment.datetime.date(), QLocale::ShortFormat),
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

QPixmap ExperimentPage::iconStrip(const QStringList& iconNames)
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

int ExperimentPage::chosen() const
{
    return table->selectedItems().isEmpty() ? -1 : table->currentRow();
}

void ExperimentPage::choose(int row)
{
    if (row < 0) {
        table->clearSelection();
        return;
    }
    table->selectRow(row);
    table->scrollToItem(table->item(row, 0));
}

QDateTime ExperimentPage::startOf(int row) const
{
    return experiments.value(row).datetime;
}

int ExperimentPage::nearestTo(const QDateTime& start) const
{
    int nearest = -1;
    qint64 least = sameRunSeconds + 1;
    for (int i = 0; i < experiments.size(); ++i) {
        const qint64 apart = qAbs(start.secsTo(experiments[i].datetime));
        if (apart < least) {
            least = apart;
            nearest = i;
        }
    }
    return nearest;
}

QString ExperimentPage::nameOf(int row) const
{
    return tr("%1, %2", "date, time")
        .arg(table->item(row, COLUMN_DATE)->text(), table->item(row, COLUMN_TIME)->text());
}

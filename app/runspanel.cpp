#include "app/runspanel.h"

#include "app/keptruns.h"
#include "app/runrecovery.h"

#include <QAbstractListModel>
#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QPixmap>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int shownGroups = 2; // by name
constexpr int pictureLines = 4;

QString groupsText(const QStringList& groups)
{
    return groups.size() > shownGroups ? RunsPanel::tr("%1 groups").arg(groups.size())
                                       : groups.join(QStringLiteral(", "));
}

QString stateText(const KeptRun& run, bool isShown)
{
    QStringList states;
    if (isShown)
        states.append(RunsPanel::tr("on the graphs"));
    if (run.outline.isPinned)
        states.append(RunsPanel::tr("pinned"));
    if (!run.isSaved && !isShown)
        states.append(RunsPanel::tr("not saved"));
    return states.join(QStringLiteral(", "));
}

QString timeText(const KeptRun& run)
{
    QStringList parts;
    if (run.outline.begun.isValid())
        parts.append(run.outline.begun.toString(QStringLiteral("hh:mm")));
    if (run.duration() > 0)
        parts.append(RunRecovery::durationText(qRound(run.duration())));
    return parts.join(QStringLiteral(", "));
}

/// The newest first.
class RunsModel : public QAbstractListModel
{
public:
    RunsModel(KeptRuns* runs, const QSize& picture, QObject* parent)
        : QAbstractListModel(parent)
        , runs(runs)
        , picture(picture)
    {
        known = ids();
        connect(runs, &KeptRuns::changed, this, &RunsModel::follow);
    }

    int rowCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : known.size();
    }
    int idAt(int row) const { return known.value(row); }

    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        return QAbstractListModel::flags(index) | Qt::ItemIsEditable;
    }

    QVariant data(const QModelIndex& index, int role) const override
    {
        const KeptRun* const run = runs->find(idAt(index.row()));
        if (!run)
            return {};
        const bool isShown = runs->shown() == run->id;
        switch (role) {
        case Qt::DisplayRole:
        case Qt::ToolTipRole:
        case Qt::AccessibleTextRole: {
            QStringList lines{run->outline.name, timeText(*run), groupsText(run->groups()),
                              stateText(*run, isShown)};
            lines.removeAll(QString());
            return lines.join('\n');
        }
        case Qt::EditRole:
            return run->outline.name;
        case Qt::DecorationRole:
            return QPixmap::fromImage(runs->picture(run->id, picture));
        case Qt::FontRole: {
            QFont font;
            font.setBold(isShown);
            return font;
        }
        default:
            return {};
        }
    }

    bool setData(const QModelIndex& index, const QVariant& value, int role) override
    {
        if (role == Qt::EditRole)
            runs->rename(idAt(index.row()), value.toString());
        return role == Qt::EditRole;
    }

private:
    QVector<int> ids() const
    {
        QVector<int> newestFirst = runs->ids();
        std::reverse(newestFirst.begin(), newestFirst.end());
        return newestFirst;
    }

    /// What is chosen stays chosen while others come and go.
    void follow()
    {
        const QVector<int> now = ids();
        for (int row = known.size() - 1; row >= 0; --row) {
            if (now.contains(known.at(row)))
                continue;
            beginRemoveRows({}, row, row);
            known.removeAt(row);
            endRemoveRows();
        }
        for (int row = 0; row < now.size(); ++row) {
            if (known.contains(now.at(row)))
                continue;
            beginInsertRows({}, row, row);
            known.insert(row, now.at(row));
            endInsertRows();
        }
        if (!known.isEmpty())
            Q_EMIT dataChanged(index(0), index(known.size() - 1));
    }

    KeptRuns* const runs;
    const QSize picture;
    QVector<int> known;
};

} // namespace

RunsPanel::RunsPanel(KeptRuns* runs, QWidget* parent)
    : QFrame(parent)
    , runs(runs)
{
    setObjectName(QStringLiteral("runsPanel"));
    setAccessibleName(tr("Runs"));
    setFrameShape(QFrame::StyledPanel);
    createList();
    empty = new QLabel(tr("A run that another one takes the place of is kept here."));
    empty->setObjectName(QStringLiteral("runsEmpty"));
    empty->setWordWrap(true);
    empty->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(createTitle());
    layout->addWidget(list, 1);
    layout->addWidget(empty, 1);
    layout->addWidget(createButtons());
    connect(runs, &KeptRuns::changed, this, &RunsPanel::showState);
    showState();
}

QWidget* RunsPanel::createTitle()
{
    auto* const row = new QWidget;
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* const title = new QLabel(tr("Runs"));
    title->setObjectName(QStringLiteral("runsTitle"));
    title->setBuddy(list);
    auto* const close = new QToolButton;
    close->setObjectName(QStringLiteral("closeRuns"));
    close->setAutoRaise(true);
    close->setText(QStringLiteral("\u00d7"));
    close->setAccessibleName(tr("Hide the list of runs"));
    close->setToolTip(close->accessibleName());
    connect(close, &QToolButton::clicked, this, &RunsPanel::closeWanted);
    layout->addWidget(title, 1);
    layout->addWidget(close);
    return row;
}

void RunsPanel::createList()
{
    list = new QListView;
    list->setObjectName(QStringLiteral("runsList"));
    list->setAccessibleName(tr("Kept runs"));
    const int height = pictureLines * list->fontMetrics().height();
    const QSize picture(height * 4 / 3, height);
    list->setIconSize(picture);
    list->setModel(new RunsModel(runs, picture, list));
    list->setWordWrap(true);
    list->setTextElideMode(Qt::ElideRight);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setVerticalScrollMode(QListView::ScrollPerPixel);
    list->setResizeMode(QListView::Adjust);
    list->setEditTriggers(QListView::EditKeyPressed);
    list->setContextMenuPolicy(Qt::CustomContextMenu);
    list->setMinimumWidth(picture.width() + 9 * list->fontMetrics().averageCharWidth());
    list->installEventFilter(this);
    list->setSelectionMode(QListView::ExtendedSelection);
    const auto show = [this](const QModelIndex& index) {
        if (QApplication::keyboardModifiers() == Qt::NoModifier) // else another one is chosen as well
            Q_EMIT showWanted(static_cast<const RunsModel*>(list->model())->idAt(index.row()));
    };
    connect(list, &QListView::clicked, this, show);
    connect(list, &QListView::customContextMenuRequested, this, &RunsPanel::openMenu);
    connect(list->selectionModel(), &QItemSelectionModel::currentChanged, this, &RunsPanel::showState);
    connect(list->selectionModel(), &QItemSelectionModel::selectionChanged, this, &RunsPanel::showState);
}

QToolButton* RunsPanel::addButton(QWidget* row, const QString& text, const char* name)
{
    auto* const button = new QToolButton;
    button->setObjectName(QLatin1String(name));
    button->setText(text);
    row->layout()->addWidget(button);
    return button;
}

QWidget* RunsPanel::createButtons()
{
    auto* const rows = new QWidget;
    auto* const both = new QVBoxLayout(rows);
    both->setContentsMargins(0, 0, 0, 0);
    both->setSpacing(0);
    const auto addRow = [both] {
        auto* const row = new QWidget;
        auto* const layout = new QHBoxLayout(row);
        layout->setContentsMargins(0, 0, 0, 0);
        both->addWidget(row);
        return row;
    };
    QWidget* const row = addRow();
    pinButton = addButton(row, tr("Pin"), "pinRun");
    pinButton->setCheckable(true);
    pinButton->setToolTip(tr("Show it as pale curves behind the present ones"));
    renameButton = addButton(row, tr("Rename"), "renameRun");
    deleteButton = addButton(row, tr("Delete"), "deleteRun");
    QWidget* const ofTwo = addRow();
    compareButton = addButton(ofTwo, tr("Compare"), "compareRuns");
    compareButton->setToolTip(
        tr("Choose two runs with Ctrl: the later one comes on the graphs, the other one behind it"));
    averageButton = addButton(ofTwo, tr("Average"), "averageRuns");
    averageButton->setToolTip(tr("Choose two runs with Ctrl: their average becomes a run of its own"));
    replayButton = addButton(addRow(), tr("Replay"), "replayRun");
    replayButton->setToolTip(tr("Play it again on the graphs"));
    connect(replayButton, &QToolButton::clicked, this, [this] { Q_EMIT replayWanted(current()); });
    connect(compareButton, &QToolButton::clicked, this, &RunsPanel::compare);
    connect(averageButton, &QToolButton::clicked, this, &RunsPanel::average);
    connect(pinButton, &QToolButton::clicked, this, &RunsPanel::pin);
    connect(renameButton, &QToolButton::clicked, this, &RunsPanel::rename);
    connect(deleteButton, &QToolButton::clicked, this, &RunsPanel::remove);
    return rows;
}

int RunsPanel::current() const
{
    const QModelIndex index = list->currentIndex();
    return index.isValid() ? static_cast<const RunsModel*>(list->model())->idAt(index.row()) : 0;
}

/// The older first.
QVector<int> RunsPanel::chosen() const
{
    QVector<int> ids;
    for (const QModelIndex& index : list->selectionModel()->selectedIndexes())
        ids.append(static_cast<const RunsModel*>(list->model())->idAt(index.row()));
    std::sort(ids.begin(), ids.end());
    return ids;
}

void RunsPanel::compare()
{
    const QVector<int> two = chosen();
    if (two.size() != 2)
        return;
    runs->pin(two.first(), true);
    Q_EMIT showWanted(two.last());
}

void RunsPanel::average()
{
    const QVector<int> two = chosen();
    if (two.size() == 2)
        runs->average(two.first(), two.last());
}

void RunsPanel::showState()
{
    const KeptRun* const run = runs->find(current());
    list->setVisible(!runs->all().isEmpty());
    empty->setVisible(runs->all().isEmpty());
    const bool areTwo = chosen().size() == 2;
    for (QToolButton* button : {pinButton, renameButton, deleteButton, replayButton}) {
        if (button)
            button->setEnabled(run && !areTwo);
    }
    for (QToolButton* button : {compareButton, averageButton}) {
        if (button)
            button->setEnabled(areTwo);
    }
    if (pinButton)
        pinButton->setChecked(run && run->outline.isPinned);
}

/// Enter and Space show the chosen one, Delete takes it out of the list.
bool RunsPanel::eventFilter(QObject* object, QEvent* event)
{
    if (object == list && event->type() == QEvent::KeyPress && current() != 0) {
        const int key = static_cast<const QKeyEvent*>(event)->key();
        const bool isShow = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space;
        if (isShow)
            Q_EMIT showWanted(current());
        else if (key == Qt::Key_Delete)
            remove();
        if (isShow || key == Qt::Key_Delete)
            return true;
    }
    return QFrame::eventFilter(object, event);
}

void RunsPanel::openMenu(const QPoint& pos)
{
    const KeptRun* const run = runs->find(current());
    if (!run || !list->indexAt(pos).isValid())
        return;
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const bool isPinned = run->outline.isPinned;
    menu->addAction(tr("Show on the graphs"), this, [this] { Q_EMIT showWanted(current()); });
    menu->addAction(tr("Replay"), this, [this] { Q_EMIT replayWanted(current()); });
    menu->addAction(isPinned ? tr("Unpin") : tr("Pin"), this, [this, isPinned] { pin(!isPinned); });
    menu->addAction(tr("Rename"), this, &RunsPanel::rename);
    menu->addAction(tr("Delete"), this, &RunsPanel::remove);
    menu->popup(list->viewport()->mapToGlobal(pos));
}

void RunsPanel::rename()
{
    if (list->currentIndex().isValid())
        list->edit(list->currentIndex());
}

void RunsPanel::remove()
{
    runs->remove(current());
}

void RunsPanel::pin(bool tf)
{
    runs->pin(current(), tf);
    showState(); // where it was refused
}

#include "classroom/selectmanyloggers.h"

#include "classroom/classlog.h"

#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>

#include <algorithm>

#include "classroom/multiconnectionsmanager.h"
#include "common/settings.h"
#include "protocol/tembrinprotocol.h"

namespace {

const QString noPort = QStringLiteral("COMxx");
const QString letters = QStringLiteral("ABCDEFGH");
const QSize usualSize(549, 271);
constexpr double textSizes[] = {1.2, 1.0}; // to the usual one, best first: it is read on a projector, too
constexpr int listChars = 34;              // a group name and a device name in one line
constexpr int leastChars = 18;             // on a small screen
constexpr int leastRows = 4;
constexpr int itemPadding = 4; // pixels above and below a text
constexpr int hintLines = 3;   // of the longest one

QString groupWord()
{
    return selectManyLoggers::tr("Group");
}

/// Nothing, or the word for a group and one character: a name that may be given anew.
bool isAutomatic(const QString& name)
{
    const QString start = groupWord() + QLatin1Char(' ');
    return name.isEmpty() || (name.size() == start.size() + 1 && name.startsWith(start, Qt::CaseInsensitive));
}

QString displayText(const possibleDevice& device)
{
    return device.groupName.isEmpty() ? device.name
                                      : QStringLiteral("%1 (%2)").arg(device.groupName, device.name);
}

/// The group name in a line that was typed over: without what names the device.
QString groupNameIn(QString line)
{
    static const QRegularExpression brackets(QStringLiteral("\\(.*\\)"));
    static const QRegularExpression device(QStringLiteral("Tembrin_.{4}"));
    return line.remove(brackets).remove(device).trimmed();
}

QString toolTipOf(const possibleDevice& device)
{
    if (!device.portName.isEmpty())
        return selectManyLoggers::tr("Port: %1").arg(device.portName);
    QString address = device.address;
    for (int i = address.size() - 2; i > 0; i -= 2)
        address.insert(i, QLatin1Char(':'));
    return selectManyLoggers::tr("Paired, but no serial port is bound to it, so it can't be opened.\n"
                                 "An administrator binds one with: rfcomm bind rfcomm0 %1")
        .arg(address);
}

void showIn(QListWidgetItem* item, const possibleDevice& device, const QString& text, int rowHeight,
            bool isEditable)
{
    Qt::ItemFlags flags = Qt::ItemNeverHasChildren;
    if (!device.portName.isEmpty())
        flags |= Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (isEditable)
        flags |= Qt::ItemIsEditable;
    item->setFlags(flags);
    item->setText(text);
    item->setSizeHint(QSize(0, rowHeight));
    item->setToolTip(toolTipOf(device));
    item->setData(Qt::AccessibleDescriptionRole, toolTipOf(device));
}

/// As many rows as there are devices. The rows that stay are kept, and with them an editor on one of them.
void setRows(QListWidget* list, int count)
{
    while (list->count() > count)
        delete list->takeItem(list->count() - 1);
    while (list->count() < count)
        list->addItem(new QListWidgetItem);
}

} // namespace

selectManyLoggers::selectManyLoggers(multiConnectionsManager* mTembrin,
                                     const QVector<possibleDevice>& devList, QWidget* parent)
    : QDialog(parent)
    , mTembrin(mTembrin)
    , listPaired(createList(QStringLiteral("listPaired"), tr("Unused paired loggers")))
    , listUsed(createList(QStringLiteral("listUsed"), tr("Used loggers")))
    , pushAdd(
          createButton(QStringLiteral("pushAdd"), tr("--> Add -->"), &selectManyLoggers::on_pushAdd_clicked))
    , pushRemove(createButton(QStringLiteral("pushRemove"), tr("<-- remove <--"),
                              &selectManyLoggers::on_pushRemove_clicked))
    , pushButton_Save(createButton(QStringLiteral("pushButton_Save"), tr("Save"),
                                   &selectManyLoggers::on_pushButton_Save_clicked))
    , pushButton_Connect(createButton(QStringLiteral("pushButton_Connect"), tr("Connect"),
                                      &selectManyLoggers::on_pushButton_Connect_clicked))
    , pushButton(
          createButton(QStringLiteral("pushButton"), tr("Cancel"), &selectManyLoggers::on_pushButton_clicked))
    , hint(new QLabel(this))
{
    setObjectName(QStringLiteral("selectManyLoggers"));
    setWindowTitle(tr("Dialog"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    pushAdd->setAccessibleName(tr("Add to the used loggers"));
    pushRemove->setAccessibleName(tr("Remove from the used loggers"));
    pushButton_Connect->setDefault(true);
    hint->setObjectName(QStringLiteral("hint"));
    hint->setWordWrap(true);
    hint->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    createLayout();
    fitToScreen();

    listPaired->setEditTriggers(QAbstractItemView::NoEditTriggers);
    connect(listUsed->itemDelegate(), &QAbstractItemDelegate::closeEditor, this,
            &selectManyLoggers::ListWidgetEditEnd);
    for (QListWidget* list : {listPaired, listUsed})
        connect(list, &QListWidget::itemSelectionChanged, this, &selectManyLoggers::updateButtons);
    sortOut(devList);
    refresh();
    listPaired->setFocus();
}

selectManyLoggers::~selectManyLoggers()
{
    // An open editor reports its end when the lists go, and they go after the members of this class.
    listUsed->itemDelegate()->disconnect(this);
    listPaired->disconnect(this);
    listUsed->disconnect(this);
}

QListWidget* selectManyLoggers::createList(const QString& name, const QString& title)
{
    auto* list = new QListWidget(this);
    list->setObjectName(name);
    list->setAccessibleName(title);
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    list->setDragDropMode(QAbstractItemView::NoDragDrop);
    return list;
}

QPushButton* selectManyLoggers::createButton(const QString& name, const QString& text,
                                             void (selectManyLoggers::*slot)())
{
    auto* button = new QPushButton(text, this);
    button->setObjectName(name);
    connect(button, &QPushButton::clicked, this, slot);
    return button;
}

/// Of one character in a row of a list.
QSize selectManyLoggers::rowSize() const
{
    const QFontMetrics metrics = listUsed->fontMetrics();
    return {metrics.averageCharWidth(), metrics.height() + 2 * itemPadding};
}

void selectManyLoggers::createLayout()
{
    auto* between = new QVBoxLayout;
    between->addStretch();
    between->addWidget(pushAdd);
    between->addWidget(pushRemove);
    between->addStretch();

    auto* below = new QHBoxLayout;
    below->addStretch();
    for (QPushButton* button : {pushButton_Connect, pushButton_Save, pushButton})
        below->addWidget(button);

    auto* all = new QGridLayout(this);
    int column = 0;
    for (QListWidget* list : {listPaired, listUsed}) {
        auto* title = new QLabel(list->accessibleName(), this);
        title->setBuddy(list);
        title->setWordWrap(true);
        all->addWidget(title, 0, column);
        all->addWidget(list, 1, column);
        all->setColumnStretch(column, 1);
        column += 2;
    }
    all->addLayout(between, 1, 1);
    all->addWidget(hint, 2, 0, 1, 3);
    all->addLayout(below, 3, 0, 1, 3);
    all->setRowStretch(1, 1);

    QWidget* order[] = {listPaired,         pushAdd,         pushRemove, listUsed,
                        pushButton_Connect, pushButton_Save, pushButton};
    for (int i = 1; i < int(std::size(order)); ++i)
        setTabOrder(order[i - 1], order[i]);
}

// The text is large where the screen has room for it.
void selectManyLoggers::fitToScreen()
{
    const QSize most = screen()->availableSize();
    const QFont usual = font();
    for (const double textSize : textSizes) {
        QFont larger = usual;
        larger.setPointSizeF(QFontInfo(usual).pointSizeF() * textSize);
        takeFont(larger);
        // All that a class can have at one look.
        const QSize row = rowSize();
        const QSize more(2 * row.width() * (listChars - leastChars),
                         row.height() * (mTembrin->nMaxTembrins() - leastRows));
        const QSize wanted = usualSize.expandedTo(minimumSizeHint() + more);
        resize(wanted.boundedTo(most));
        if (size() == wanted)
            break;
    }
}

void selectManyLoggers::takeFont(const QFont& font)
{
    // Given to each: a style sheet ends the inheritance.
    for (QWidget* child : findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        child->setFont(font);
    QFont bold = font;
    bold.setBold(true);
    for (QLabel* label : findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (label->buddy())
            label->setFont(bold);
    }
    const QSize row = rowSize();
    for (QListWidget* list : {listPaired, listUsed})
        list->setMinimumSize(row.width() * leastChars, row.height() * leastRows);
    // Kept free, so that nothing moves when the text changes.
    hint->setMinimumHeight(hint->fontMetrics().lineSpacing() * hintLines);
    layout()->invalidate();
}

void selectManyLoggers::sortOut(const QVector<possibleDevice>& devList)
{
    const QSettings store = Settings::mainStore();
    const int slots = mTembrin->nMaxTembrins();
    for (possibleDevice device : devList) {
        int slot = 0;
        while (slot < slots &&
               store.value(mTembrin->tembrinAt(slot)->loggerKey, noPort).toString() != device.portName)
            ++slot;
        if (slot == slots || device.portName.isEmpty() || used.size() == slots) {
            unused.append(device);
            continue;
        }
        device.groupName = store.value(mTembrin->tembrinAt(slot)->groupKey).toString();
        used.append(device);
    }
}

void selectManyLoggers::refresh()
{
    nameGroups();
    setRows(listPaired, unused.size());
    for (int i = 0; i < unused.size(); ++i)
        showIn(listPaired->item(i), unused[i], unused[i].name, rowSize().height(), false);
    setRows(listUsed, used.size());
    for (int i = 0; i < used.size(); ++i)
        showIn(listUsed->item(i), used[i], displayText(used[i]), rowSize().height(), true);
    nTembrins = used.size();
    hint->setText(hintText());
    updateButtons();
}

void selectManyLoggers::nameGroups()
{
    int letter = 0;
    for (possibleDevice& device : used) {
        if (isAutomatic(device.groupName))
            device.groupName = groupWord() + QLatin1Char(' ') + letters[letter++];
    }
}

void selectManyLoggers::updateButtons()
{
    const bool isRoom = used.size() < mTembrin->nMaxTembrins();
    pushAdd->setEnabled(isRoom && !listPaired->selectedItems().isEmpty());
    pushRemove->setEnabled(!listUsed->selectedItems().isEmpty());
}

QString selectManyLoggers::hintText() const
{
    if (unused.isEmpty() && used.isEmpty())
        return tr("No paired logger was found. Pair one in the Bluetooth settings of this computer and open "
                  "this window again, or start the program virtual-loggers to rehearse without one.");
    if (used.size() == mTembrin->nMaxTembrins())
        return tr("%1 loggers are in use, the most that a class can have. Remove one to add another.")
            .arg(used.size());
    const bool hasPortless = std::any_of(unused.cbegin(), unused.cend(), [](const possibleDevice& device) {
        return device.portName.isEmpty();
    });
    if (hasPortless)
        return tr("A grey logger has no serial port yet. Point at it to see what to do.");
    if (used.isEmpty())
        return tr("Choose the loggers of your class on the left and add them.");
    return tr("Double-click a used logger, or press F2, to name its group.");
}

void selectManyLoggers::move(QListWidget* fromList, QVector<possibleDevice>& from, QListWidget* toList,
                             QVector<possibleDevice>& to, int most)
{
    QVector<possibleDevice> kept;
    for (int i = 0; i < from.size(); ++i) {
        if (fromList->item(i)->isSelected() && to.size() < most)
            to.append(from[i]);
        else
            kept.append(from[i]);
    }
    from = kept;
    fromList->clearSelection();
    toList->clearSelection();
    refresh();
}

void selectManyLoggers::on_pushAdd_clicked()
{
    move(listPaired, unused, listUsed, used, mTembrin->nMaxTembrins());
}

void selectManyLoggers::on_pushRemove_clicked()
{
    move(listUsed, used, listPaired, unused, unused.size() + used.size());
}

void selectManyLoggers::ListWidgetEditEnd(QWidget*, QAbstractItemDelegate::EndEditHint)
{
    bool isChanged = false;
    for (int i = 0; i < used.size(); ++i) {
        const QString line = listUsed->item(i)->text();
        if (line == displayText(used[i]))
            continue;
        used[i].groupName = groupNameIn(line);
        isChanged = true;
    }
    if (isChanged)
        refresh();
}

void selectManyLoggers::on_pushButton_Save_clicked()
{
    QSettings store = Settings::mainStore();
    for (int i = 0; i < mTembrin->nMaxTembrins(); ++i) {
        const TembrinProtocol* logger = mTembrin->tembrinAt(i);
        const bool isUsed = i < used.size();
        store.setValue(logger->loggerKey, isUsed ? used[i].portName : noPort);
        store.setValue(logger->groupKey, isUsed ? used[i].groupName : QString());
    }
    store.sync();
    if (store.status() != QSettings::NoError)
        qCWarning(classLog, "the loggers of the class can't be stored in %s", qPrintable(store.fileName()));
}

void selectManyLoggers::on_pushButton_Connect_clicked()
{
    on_pushButton_Save_clicked();
    saved = true;
    done(0);
}

void selectManyLoggers::on_pushButton_clicked()
{
    done(0);
}

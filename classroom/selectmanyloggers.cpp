#include "classroom/selectmanyloggers.h"

#include "classroom/classlog.h"

#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QSet>

#include <algorithm>

#include "classroom/failuretexts.h"
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
constexpr int linksPerAdapter = 7;
constexpr int itemPadding = 4; // pixels above and below a text
constexpr int hintLines = 3;   // of the longest one

bool isSame(const possibleDevice& one, const possibleDevice& other)
{
    return one.address.isEmpty() || other.address.isEmpty() ? one.portName == other.portName
                                                            : one.address == other.address;
}

/// The slot whose settings choose the device, -1 if none does.
int slotChoosing(const multiConnectionsManager& manager, const possibleDevice& device)
{
    const QSettings store = Settings::mainStore();
    for (int slot = 0; slot < manager.nMaxTembrins(); ++slot) {
        const TembrinProtocol* const logger = manager.tembrinAt(slot);
        const possibleDevice chosen{store.value(logger->loggerKey, noPort).toString(),
                                    logger->storedAddress(), QString(), QString(), QString()};
        if (isSame(device, chosen) && !(device.portName.isEmpty() && device.address.isEmpty()))
            return slot;
    }
    return -1;
}

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

bool holds(const QVector<possibleDevice>& devices, const possibleDevice& device)
{
    return std::any_of(devices.cbegin(), devices.cend(),
                       [&](const possibleDevice& other) { return isSame(device, other); });
}

void showIn(QListWidgetItem* item, const possibleDevice& device, const QString& text, const QString& tip,
            int rowHeight, bool isEditable)
{
    Qt::ItemFlags flags = Qt::ItemNeverHasChildren;
    if (!device.portName.isEmpty())
        flags |= Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (isEditable)
        flags |= Qt::ItemIsEditable;
    item->setFlags(flags);
    item->setText(text);
    item->setSizeHint(QSize(0, rowHeight));
    item->setToolTip(tip);
    item->setData(Qt::AccessibleDescriptionRole, tip);
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
    , pushPair(
          createButton(QStringLiteral("pushPair"), tr("Pair a logger..."), &selectManyLoggers::pairingWanted))
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
    radio = mTembrin->tembrinAt(0)->bluetooth();
    present = devList;
    sortOut(devList);
    keepUnreadable();
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
    below->addWidget(pushPair);
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

    QWidget* order[] = {listPaired,         pushAdd,         pushRemove, listUsed, pushPair,
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

int selectManyLoggers::slotOf(const possibleDevice& device) const
{
    return slotChoosing(*mTembrin, device);
}

/// A class that is confirmed without a change keeps its places, and what was measured its names.
QVector<possibleDevice> selectManyLoggers::bySlots(const multiConnectionsManager& manager,
                                                   QVector<possibleDevice> devices)
{
    const auto place = [&](const possibleDevice& device) {
        const int slot = slotChoosing(manager, device);
        return slot < 0 ? manager.nMaxTembrins() : slot;
    };
    std::stable_sort(devices.begin(), devices.end(),
                     [&](const possibleDevice& a, const possibleDevice& b) { return place(a) < place(b); });
    return devices;
}

void selectManyLoggers::sortOut(const QVector<possibleDevice>& devList)
{
    const QSettings store = Settings::mainStore();
    for (possibleDevice device : devList) {
        const int slot = slotOf(device);
        if (slot < 0 || device.portName.isEmpty() || used.size() == mTembrin->nMaxTembrins()) {
            unused.append(device);
            continue;
        }
        device.groupName = store.value(mTembrin->tembrinAt(slot)->groupKey).toString();
        used.append(device);
    }
}

/// While the radio tells nothing, its loggers in use are not gone: saving must not take them out of the
/// class.
void selectManyLoggers::keepUnreadable()
{
    if (radio.hindrance == PortFailure::None)
        return;
    const QSettings store = Settings::mainStore();
    for (int slot = 0; slot < mTembrin->nMaxTembrins() && used.size() < mTembrin->nMaxTembrins(); ++slot) {
        const TembrinProtocol* const logger = mTembrin->tembrinAt(slot);
        possibleDevice device;
        device.address = logger->storedAddress();
        if (device.address.isEmpty() || holds(used, device))
            continue;
        device.portName = store.value(logger->loggerKey, noPort).toString();
        device.name = FailureTexts::addressText(device.address);
        device.groupName = store.value(logger->groupKey).toString();
        used.append(device);
    }
}

void selectManyLoggers::takeDevices(const QVector<possibleDevice>& devList)
{
    radio = mTembrin->tembrinAt(0)->bluetooth();
    QVector<possibleDevice> left;
    for (possibleDevice device : devList) {
        const auto same = [&](const possibleDevice& other) { return isSame(device, other); };
        const auto chosen = std::find_if(used.begin(), used.end(), same);
        if (chosen != used.end()) {
            chosen->name = device.name;
            continue;
        }
        const auto known = std::find_if(unused.cbegin(), unused.cend(), same);
        if (known != unused.cend())
            device.groupName = known->groupName;
        left.append(device);
    }
    present = devList;
    unused = left;
    refresh();
}

void selectManyLoggers::tellNoPairing()
{
    hasNoPairing = true;
    updateHint();
}

/// Why the device can't be reached, as far as that is known without trying, or from the last time it was.
QString selectManyLoggers::reasonOf(const possibleDevice& device) const
{
    if (device.portName.isEmpty())
        return tr("Paired, but this computer has no port for it, so it can't be opened.");
    const bool isRadio = device.portName.contains(QLatin1Char(':')) && !device.address.isEmpty();
    if (isRadio && radio.hindrance != PortFailure::None)
        return FailureTexts::text(radio.hindrance, device.portName);
    if (isRadio && !radio.adaptersOf.contains(device.address))
        return FailureTexts::text(holds(present, device) ? PortFailure::AdapterOff : PortFailure::NotPaired,
                                  device.portName);
    const int slot = slotOf(device);
    if (slot < 0 || mTembrin->isTembrinConnect(slot))
        return {};
    return FailureTexts::text(mTembrin->tembrinAt(slot)->failure, device.portName);
}

QString selectManyLoggers::tipOf(const possibleDevice& device) const
{
    QStringList lines;
    if (!device.address.isEmpty())
        lines += tr("Bluetooth address: %1").arg(FailureTexts::addressText(device.address));
    if (!device.portName.isEmpty() && !device.portName.contains(QLatin1Char(':')))
        lines += tr("Port: %1").arg(device.portName);
    const QStringList adapters = radio.adaptersOf.value(device.address);
    if (!adapters.isEmpty())
        lines += tr("Adapter: %1").arg(adapters.join(QStringLiteral(", ")));
    lines += reasonOf(device);
    lines.removeAll(QString());
    return lines.join(QLatin1Char('\n'));
}

void selectManyLoggers::refresh()
{
    nameGroups();
    setRows(listPaired, unused.size());
    for (int i = 0; i < unused.size(); ++i)
        showIn(listPaired->item(i), unused[i], unused[i].name, tipOf(unused[i]), rowSize().height(), false);
    setRows(listUsed, used.size());
    for (int i = 0; i < used.size(); ++i)
        showIn(listUsed->item(i), used[i], displayText(used[i]), tipOf(used[i]), rowSize().height(), true);
    nTembrins = used.size();
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
    updateHint();
}

void selectManyLoggers::updateHint()
{
    hint->setText(hintText());
}

/// An adapter carries seven links, and a class has eight loggers at most.
bool selectManyLoggers::isOneAdapterForAll() const
{
    QSet<QString> adapters;
    for (const possibleDevice& device : used) {
        const QStringList own = radio.adaptersOf.value(device.address);
        if (own.isEmpty())
            return false;
        adapters.unite(QSet<QString>(own.cbegin(), own.cend()));
    }
    return used.size() > linksPerAdapter && adapters.size() == 1;
}

QString selectManyLoggers::hintText() const
{
    if (hasNoPairing)
        return tr(
            "No Bluetooth settings were found here. Pair the loggers with the tool of your system, such as "
            "bluetoothctl; they appear here by themselves.");
    const QList<QListWidgetItem*> chosen = listUsed->selectedItems() + listPaired->selectedItems();
    if (chosen.size() == 1) {
        const QListWidget* const list = chosen[0]->listWidget();
        const int row = list->row(chosen[0]);
        const QString reason = reasonOf(list == listUsed ? used.value(row) : unused.value(row));
        if (!reason.isEmpty())
            return tr("%1: %2").arg(chosen[0]->text(), reason);
    }
    if (isOneAdapterForAll())
        return tr("Eight loggers need two Bluetooth adapters, since one carries seven. Plug in a second one "
                  "and pair "
                  "some of the loggers with it, or remove one.");
    const bool hasRadio = std::any_of(used.cbegin(), used.cend(),
                                      [](const possibleDevice& device) { return !device.address.isEmpty(); });
    if (radio.hindrance != PortFailure::None && (hasRadio || used.isEmpty())) {
        const QString reason = FailureTexts::text(radio.hindrance, QString());
        const QString text = tr("No Bluetooth logger can be reached: %1").arg(reason);
        return used.isEmpty() && unused.isEmpty()
                   ? text + tr("\nTo rehearse without one, start the program virtual-loggers.")
                   : text;
    }
    if (unused.isEmpty() && used.isEmpty())
        return tr(
            "No paired logger was found. Pair one: it appears here by itself. To rehearse without one, start "
            "the program virtual-loggers.");
    if (used.size() == mTembrin->nMaxTembrins())
        return tr("%1 loggers are in use, the most that a class can have. Remove one to add another.")
            .arg(used.size());
    const bool hasPortless = std::any_of(unused.cbegin(), unused.cend(), [](const possibleDevice& device) {
        return device.portName.isEmpty();
    });
    if (hasPortless)
        return tr("A grey logger has no port on this computer.");
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
        if (isUsed && !used[i].address.isEmpty())
            store.setValue(Settings::addressKey(i), used[i].address);
        else
            store.remove(Settings::addressKey(i));
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

#include "app/commandmenu.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr const char* ownKeyText = "keyText";
constexpr double keysFontScale = 1.15; // it is read from the back of the room, too

QString plain(QString text)
{
    return text.remove(QLatin1Char('&'));
}

void fill(QTreeWidget* list, const QMenuBar* bar)
{
    for (const QAction* title : bar->actions()) {
        auto* group = new QTreeWidgetItem(list, {plain(title->text()), QString()});
        QFont bold = list->font();
        bold.setBold(true);
        group->setFont(0, bold);
        group->setFlags(Qt::ItemIsEnabled);
        QList<QAction*> actions = title->menu()->actions();
        for (int i = 0; i < actions.size(); ++i) {
            QAction* const action = actions[i];
            if (const QMenu* below = action->menu())
                actions += below->actions();
            else if (!action->isSeparator())
                new QTreeWidgetItem(group, {plain(action->text()), CommandMenu::keyText(action)});
        }
    }
    list->expandAll();
}

} // namespace

CommandMenu::CommandMenu(QMainWindow* window)
    : QObject(window)
    , window(window)
    , bar(window->menuBar())
{
    bar->setObjectName(QStringLiteral("menuBar"));
    bar->setNativeMenuBar(false);
    bar->hide();
    qApp->installEventFilter(this);
}

QMenu* CommandMenu::add(const QString& name, const QString& title)
{
    QMenu* const menu = bar->addMenu(title);
    menu->setObjectName(name);
    // A menu that closes because another of the bar opens closes nothing.
    connect(
        menu, &QMenu::aboutToHide, this,
        [this] {
            if (!QApplication::activePopupWidget())
                bar->hide();
        },
        Qt::QueuedConnection);
    return menu;
}

QAction* CommandMenu::command(QMenu* menu, const QString& name, const QString& text, const QKeySequence& key,
                              const std::function<void()>& run)
{
    auto* action = new QAction(text, window);
    action->setObjectName(name);
    action->setShortcut(key);
    connect(action, &QAction::triggered, window, run);
    window->addAction(action); // so that the key works while the bar is hidden
    menu->addAction(action);
    return action;
}

void CommandMenu::setKeyText(QAction* action, const QString& text)
{
    action->setProperty(ownKeyText, text);
}

QString CommandMenu::keyText(const QAction* action)
{
    QStringList keys(action->property(ownKeyText).toString());
    if (!keys.first().isEmpty())
        return keys.first();
    keys.clear();
    for (const QKeySequence& key : action->shortcuts())
        keys += key.toString(QKeySequence::NativeText);
    return keys.join(tr(" or "));
}

/// Alt that is pressed and let go with nothing between is meant for the menu; the keys go to whoever has the
/// focus.
bool CommandMenu::eventFilter(QObject* object, QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyPress: {
        const auto* key = static_cast<const QKeyEvent*>(event);
        if (!key->isAutoRepeat())
            isAltAlone =
                key->key() == Qt::Key_Alt && !(key->modifiers() & ~Qt::KeyboardModifiers(Qt::AltModifier));
        break;
    }
    case QEvent::KeyRelease:
        if (static_cast<const QKeyEvent*>(event)->key() == Qt::Key_Alt && isAltAlone &&
            QApplication::activeWindow() == window) {
            isAltAlone = false;
            toggle();
        }
        break;
    case QEvent::MouseButtonPress:
    case QEvent::ShortcutOverride:
    case QEvent::Wheel:
        if (event->type() != QEvent::ShortcutOverride ||
            static_cast<const QKeyEvent*>(event)->key() != Qt::Key_Alt)
            isAltAlone = false;
        break;
    case QEvent::FocusOut:
        if (object == bar && static_cast<const QFocusEvent*>(event)->reason() != Qt::PopupFocusReason)
            bar->hide();
        break;
    default:
        break;
    }
    return QObject::eventFilter(object, event);
}

void CommandMenu::toggle()
{
    if (bar->isVisible()) {
        bar->hide();
        if (focusBefore)
            focusBefore->setFocus();
        return;
    }
    focusBefore = QApplication::focusWidget();
    bar->show();
    bar->setFocus(Qt::MenuBarFocusReason);
    bar->setActiveAction(bar->actions().value(0));
}

void CommandMenu::showKeys()
{
    if (keys) {
        keys->raise();
        keys->activateWindow();
        return;
    }
    auto* dialog = new QDialog(window);
    keys = dialog;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setObjectName(QStringLiteral("keysDialog"));
    dialog->setWindowTitle(tr("Keys"));
    dialog->setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    auto* list = new QTreeWidget;
    list->setObjectName(QStringLiteral("keysList"));
    list->setAccessibleName(dialog->windowTitle());
    list->setColumnCount(2);
    list->setHeaderLabels({tr("Command"), tr("Key")});
    list->setSelectionMode(QAbstractItemView::NoSelection);
    QFont font = dialog->font();
    font.setPointSizeF(font.pointSizeF() * keysFontScale);
    list->setFont(font);
    fill(list, bar);
    list->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->button(QDialogButtonBox::Close)->setIcon(QIcon());
    connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::close);
    auto* all = new QVBoxLayout(dialog);
    all->addWidget(list);
    all->addWidget(buttons);
    const QSize room = window->screen()->availableSize();
    dialog->resize(qMin(620, room.width()), qMin(900, room.height() * 9 / 10));
    dialog->show();
}

#include "app/iconlist.h"

#include "app/icondelegate.h"

#include <QAbstractItemView>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QWheelEvent>

#include <cmath>

IconList::IconList(Kind kind, int iconDim, QWidget* parent)
    : QComboBox(parent)
    , kind(kind)
    , iconDim(iconDim)
{
    setIconSize(QSize(iconDim, iconDim));
    setItemDelegate(new IconDelegate(iconDim, this));
    setMinimumWidth(iconDim * 3 / 2); // the arrow has room beside the picture at any size
    setFocusPolicy(Qt::TabFocus);
    view()->installEventFilter(this);
}

/// As wide as its words, which the picture of the closed list is not.
void IconList::showPopup()
{
    view()->setMinimumWidth(view()->sizeHintForColumn(0) + 2 * view()->frameWidth());
    QComboBox::showPopup();
}

void IconList::addPicture(const QString& name, const QIcon& picture, int code)
{
    addItem(picture, QString(), code);
    for (const int role : {int(Qt::ToolTipRole), int(Qt::AccessibleTextRole)})
        setItemData(count() - 1, name, role);
}

void IconList::wheelEvent(QWheelEvent* event)
{
    event->accept(); // nor does the toolbar or the window behind it take it for something else
}

void IconList::keyPressEvent(QKeyEvent* event)
{
    const bool opens = event->modifiers() & Qt::AltModifier;
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (opens)
            showPopup();
        else
            moveTo(currentIndex() + (event->key() == Qt::Key_Up ? -1 : 1));
        break;
    case Qt::Key_Home:
    case Qt::Key_PageUp:
        moveTo(0);
        break;
    case Qt::Key_End:
    case Qt::Key_PageDown:
        moveTo(count() - 1);
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        carryOut();
        break;
    case Qt::Key_F4:
        showPopup();
        break;
    default:
        event->ignore(); // the base class would choose by the letters of the items
    }
}

void IconList::mousePressEvent(QMouseEvent* event)
{
    const bool isOnPicture = std::abs(event->x() - iconDim / 2) <= iconDim / 4;
    if (kind == Kind::Button && isOnPicture && event->button() == Qt::LeftButton)
        Q_EMIT activated(currentIndex());
    else
        QComboBox::mousePressEvent(event);
}

void IconList::focusOutEvent(QFocusEvent* event)
{
    if (event->reason() != Qt::PopupFocusReason)
        moveBack();
    QComboBox::focusOutEvent(event);
}

// Space chooses in the open list too; Escape closes it, and is no shortcut meanwhile: it would stop the
// class.
bool IconList::eventFilter(QObject* object, QEvent* event)
{
    if (object == view() && event->type() == QEvent::ShortcutOverride &&
        static_cast<const QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    if (object == view() && event->type() == QEvent::KeyPress &&
        static_cast<const QKeyEvent*>(event)->key() == Qt::Key_Space) {
        QKeyEvent choose(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        QCoreApplication::sendEvent(object, &choose);
        return true;
    }
    return QComboBox::eventFilter(object, event);
}

void IconList::moveTo(int row)
{
    if (row < 0 || row >= count())
        return;
    if (inForce < 0)
        inForce = currentIndex();
    const QSignalBlocker nothingIsChosen(this);
    setCurrentIndex(row);
}

void IconList::carryOut()
{
    const int chosen = currentIndex();
    moveBack();
    setCurrentIndex(chosen);
    Q_EMIT activated(chosen);
}

/// What shows is again what was carried out last.
void IconList::moveBack()
{
    if (inForce < 0)
        return;
    const QSignalBlocker nothingIsChosen(this);
    setCurrentIndex(inForce);
    inForce = -1;
}

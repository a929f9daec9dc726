#include "setup/dialogtools.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QEvent>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

#include <cmath>

namespace {

constexpr double usualPoints = 12; ///< the desktop's text up to this size is no large text

// The main window's sheet gives every list below it the toolbars' look, and the nearer sheet wins.
const QString look = QStringLiteral(R"(
QComboBox {
    color: #1b2733; background-color: #ffffff; border: 1px solid #8b959f; border-radius: 6px; padding: 4px 8px;
}
QComboBox:hover { background-color: #e4eef9; border-color: #1f6fc4; }
QComboBox:focus { background-color: #ffffff; border: 2px solid #1f6fc4; padding: 3px 7px; }
QComboBox:disabled { color: #7b858f; background-color: #e4e7ea; border-color: #b4bcc4; }
QComboBox::drop-down { border: 0px; padding: 0px; width: 28px; }
QComboBox::down-arrow { image: url(:/icons/resources/down-arrow.png); left: 0px; }
QComboBox QAbstractItemView { color: #1b2733; background-color: #ffffff; }
QAbstractItemView::item:selected { color: #1b2733; background-color: #cfe0f4; }
QLineEdit[isWrong="true"] { border: 2px solid #b3261e; background-color: #fdeceb; padding: 3px 5px; }
QLabel[isWarning="true"] { color: #b3261e; }
)");

/// Passes the wheel on to what scrolls, unless the control has the focus.
class WheelGuard : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* object, QEvent* event) override
    {
        const auto* control = qobject_cast<QWidget*>(object);
        if (event->type() != QEvent::Wheel || !control || control->hasFocus())
            return false;
        event->ignore();
        return true;
    }
};

} // namespace

QFormLayout* DialogTools::formIn(QWidget* parent)
{
    auto* form = new QFormLayout(parent);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    return form;
}

QDoubleSpinBox* DialogTools::wholeNumbers(int least, int most, int step)
{
    auto* spin = new QDoubleSpinBox;
    spin->setDecimals(0);
    spin->setRange(least, most);
    spin->setSingleStep(step);
    return spin;
}

QSpinBox* DialogTools::counter(int least, int most, int start)
{
    auto* spin = new QSpinBox;
    spin->setRange(least, most);
    spin->setValue(start);
    return spin;
}

QPushButton* DialogTools::button(const QString& text, const char* name)
{
    auto* made = named(new QPushButton(text), name);
    made->setAutoDefault(false);
    return made;
}

QFont DialogTools::sized(QFont font, int points)
{
    font.setPointSizeF(points * qMax(1.0, QFontInfo(QApplication::font()).pointSizeF() / usualPoints));
    return font;
}

void DialogTools::applyLook(QDialog* dialog)
{
    dialog->setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    dialog->setStyleSheet(look);
}

QScrollArea* DialogTools::scrolled(QWidget* content)
{
    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidgetResizable(true);
    area->setWidget(content);
    area->viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);
    return area;
}

void DialogTools::keepFromWheel(QWidget* parent)
{
    auto* guard = new WheelGuard(parent);
    for (QWidget* control : parent->findChildren<QWidget*>()) {
        if (!qobject_cast<QComboBox*>(control) && !qobject_cast<QAbstractSpinBox*>(control))
            continue;
        control->setFocusPolicy(Qt::StrongFocus);
        control->installEventFilter(guard);
    }
}

void DialogTools::fitToScreen(QDialog* dialog, const QSize& usual, const QVector<QScrollArea*>& areas)
{
    for (QWidget* child : dialog->findChildren<QWidget*>())
        child->ensurePolished(); // the style sheet decides on sizes
    int hidden = 0;
    for (QScrollArea* area : areas) {
        const QSize content = area->widget()->sizeHint();
        area->setMinimumWidth(content.width() + area->verticalScrollBar()->sizeHint().width());
        hidden = qMax(hidden, content.height() - area->sizeHint().height());
    }
    const QSize most = dialog->screen()->availableSize();
    const QSize whole = dialog->sizeHint() + QSize(0, hidden);
    dialog->resize(usual.expandedTo(whole).boundedTo(most));
}

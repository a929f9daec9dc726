#pragma once

#include <QFont>
#include <QFormLayout>
#include <QSize>
#include <QString>
#include <QVector>

class QDialog;
class QDoubleSpinBox;
class QPushButton;
class QScrollArea;
class QSpinBox;
class QWidget;

/// What the setup dialogs share: names, fonts, look and the way to the screen.
namespace DialogTools {

/// Gives a control the name by which scripts find it and, where it shows no text, the name it is read out by.
template<typename Control>
Control* named(Control* control, const char* name, const QString& spoken = QString())
{
    control->setObjectName(QLatin1String(name));
    if (!spoken.isEmpty())
        control->setAccessibleName(spoken);
    return control;
}

/// A label and its control in one row; the label is what a screen reader says of the control.
template<typename Control>
Control* addRow(QFormLayout* form, const QString& label, Control* control, const char* name)
{
    named(control, name, label);
    form->addRow(label, control);
    return control;
}

QFormLayout* formIn(QWidget* parent);
QDoubleSpinBox* wholeNumbers(int least, int most, int step);
QSpinBox* counter(int least, int most, int start);
/// A button that the Enter key does not press by itself.
QPushButton* button(const QString& text, const char* name);

/// `font` at so many points, or at more where the desktop's own text is large.
QFont sized(QFont font, int points);

/// Sets lists and fields apart from the dialog's ground, whatever the main window's colours are.
void applyLook(QDialog* dialog);

/// `content` in an area that scrolls up and down where it has no room.
QScrollArea* scrolled(QWidget* content);

/// Lists and number fields in `parent` take the wheel only while they have the focus: somebody who scrolls
/// past one must not change it.
void keepFromWheel(QWidget* parent);

/// At least `usual`, as much as shows the contents of `areas` whole, at most the screen.
void fitToScreen(QDialog* dialog, const QSize& usual, const QVector<QScrollArea*>& areas = {});

} // namespace DialogTools

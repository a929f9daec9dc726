#include "instruments/juniorsensorpallete.h"

#include <QCursor>
#include <QGridLayout>
#include <QIcon>
#include <QToolButton>

namespace {
constexpr int buttonWidth = 76;
constexpr int buttonHeight = 72;
constexpr int buttonIcon = 64;
constexpr int mostInOneColumn = 10;
constexpr int shiftOfTwoColumns = 38;
constexpr int msToLook = 100;
} // namespace

JuniorSensorPallete::JuniorSensorPallete(const SensorList& sensors, const QVector<bool>& active,
                                         QWidget* parent)
    : QDialog(parent, Qt::Popup)
    , grid(new QGridLayout(this))
{
    setObjectName(QStringLiteral("sensorPalette"));
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(0);
    timer.setInterval(msToLook);
    connect(&timer, &QTimer::timeout, this, &JuniorSensorPallete::doTimer);
    updateSens(sensors, active);
}

void JuniorSensorPallete::updateSens(const SensorList& sensors, const QVector<bool>& active)
{
    qDeleteAll(buttons);
    buttons.clear();
    const int columns = sensors.size() > mostInOneColumn ? 2 : 1;
    xShift = columns == 2 ? shiftOfTwoColumns : 0;
    for (int i = 0; i < sensors.size(); ++i) {
        auto* const button = new QToolButton;
        button->setFixedSize(buttonWidth, buttonHeight);
        button->setIconSize(QSize(buttonIcon, buttonIcon));
        button->setCheckable(true);
        button->setChecked(active.value(i));
        if (const SensorPtr& sensor = sensors.at(i)) {
            QIcon icon(sensor->iconNameColor);
            icon.addFile(sensor->iconNameColorActive, {}, QIcon::Normal, QIcon::On);
            button->setIcon(icon);
            button->setToolTip(sensor->name);
            button->setAccessibleName(sensor->name);
            if (sensor->iconNameColor.isEmpty())
                button->setText(sensor->name);
        }
        connect(button, &QToolButton::toggled, this, [this, i](bool on) { Q_EMIT toggled(i, on); });
        grid->addWidget(button, i / columns, i % columns);
        buttons.append(button);
    }
    setFixedSize(columns * buttonWidth, (sensors.size() + columns - 1) / columns * buttonHeight);
}

QVector<bool> JuniorSensorPallete::active() const
{
    QVector<bool> states;
    for (const QToolButton* button : buttons)
        states.append(button->isChecked());
    return states;
}

void JuniorSensorPallete::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    isEntered = false;
    timer.start();
}

void JuniorSensorPallete::doTimer()
{
    const QPoint pointer = QCursor::pos();
    if (geometry().contains(pointer)) {
        isEntered = true;
        return;
    }
    const QRect wide = mainButton.adjusted(-xShift, 0, xShift, 0);
    if (!isEntered && wide.contains(pointer))
        return;
    timer.stop();
    done(0);
}

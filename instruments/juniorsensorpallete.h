#pragma once

#include <QDialog>
#include <QTimer>
#include <QVector>

#include "sensors/sensor.h"

class QGridLayout;
class QToolButton;

/// A popup with a button for each sensor, which goes when the pointer leaves it.
class JuniorSensorPallete : public QDialog
{
    Q_OBJECT

public:
    /// `active` says which buttons are down at first.
    JuniorSensorPallete(const SensorList& sensors, const QVector<bool>& active, QWidget* parent = nullptr);

    void updateSens(const SensorList& sensors, const QVector<bool>& active);
    /// Of the button that it hangs on, in global coordinates: over it the popup waits to be entered.
    void setMainButtonRect(const QRect& rect) { mainButton = rect; }
    /// How far two columns stand out to the left of one.
    int getXShift() const { return xShift; }
    QVector<bool> active() const;

public Q_SLOTS:
    void doTimer();

Q_SIGNALS:
    /// A person has pressed the button of a sensor.
    void toggled(int sensor, bool on);

protected:
    void showEvent(QShowEvent* event) override;

private:
    QGridLayout* const grid;
    QVector<QToolButton*> buttons;
    QTimer timer;
    QRect mainButton;
    int xShift = 0;
    bool isEntered = false;
};

#pragma once

#include <QVector>
#include <QWidget>

#include "classroom/classplan.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QGroupBox;
class TembrinData;

/// What starts a recording, the range that is recorded in small steps, and which of the family's sensors
/// stand in the sockets. Lists of sensors are those of one logger.
class TriggerPage : public QWidget
{
    Q_OBJECT

public:
    explicit TriggerPage(QWidget* parent = nullptr);

    /// True when the trigger shown is another one than before, of the same sensors.
    bool show(const ClassPlan& plan, const TembrinData& logger);
    /// Trigger and range as the controls show them; a list without a choice leaves what was there.
    LoggerSettings trigger(LoggerSettings before) const;
    /// The ID that is chosen for a socket, 0 for none.
    int socketSensor(int socket) const;

Q_SIGNALS:
    void triggerChosen();
    void socketChosen(int socket);

private:
    QGroupBox* createTriggerGroup();
    QGroupBox* createRangeGroup();
    QGroupBox* createSocketGroup();
    void takeEdited();
    void tellTrigger();
    QVector<double> edited() const;

    QComboBox* comboTrigSens = nullptr;
    QComboBox* comboTrigType = nullptr;
    QDoubleSpinBox* spinTrigLevel = nullptr;
    QDoubleSpinBox* spinTrigSamples = nullptr;
    QComboBox* comboDynamicSensor = nullptr;
    QDoubleSpinBox* spinRangeMin = nullptr;
    QCheckBox* boxDynamicActive = nullptr;
    QComboBox* comboBox = nullptr; ///< sensors of socket 1 and 2
    QComboBox* comboBox_2 = nullptr;
    QStringList sensors;        ///< what the two sensor lists show
    QVector<double> lastEdited; ///< what was in the fields when they were last acted on
    bool isFilling = false;     ///< a change is the page's own
};

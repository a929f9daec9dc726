#pragma once

#include <QDialog>

#include "classroom/autorun.h"
#include "sensors/units.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QFormLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QSpinBox;
class multiConnectionsManager;

/// Asks when runs begin and end by themselves. What was chosen last stands there again.
class SelfRunDialog : public QDialog
{
    Q_OBJECT

public:
    /// `manager` has the groups and their sensors; not owned.
    explicit SelfRunDialog(multiConnectionsManager* manager, QWidget* parent = nullptr);

    AutoRunPlan plan() const;
    /// Whose level is watched; 0 for none.
    int sensorID() const;

private:
    QGroupBox* createBegin();
    QWidget* createLevel();
    QGroupBox* createEnd();
    void fillSensors();
    void load();
    void keep() const;
    void showState();
    bool isLevelGood() const;

    multiConnectionsManager* const manager;
    const Units units;
    QRadioButton* atOnce = nullptr;
    QRadioButton* afterCountdown = nullptr;
    QRadioButton* atLevel = nullptr;
    QSpinBox* countdown = nullptr;
    QWidget* levelRow = nullptr;
    QComboBox* sensors = nullptr;
    QComboBox* groups = nullptr;
    QComboBox* direction = nullptr;
    QLineEdit* level = nullptr;
    QLabel* unit = nullptr;
    QCheckBox* stops = nullptr;
    QDoubleSpinBox* stopAfter = nullptr;
    QSpinBox* times = nullptr;
    QPushButton* go = nullptr;
};

#pragma once

#include <QWidget>

#include "link/commandtype.h"
#include "protocol/loggersettings.h"

class QCheckBox;
class QPushButton;
class QSpinBox;
class QVBoxLayout;

/// The wire by hand: single commands to one logger.
class DebugPage : public QWidget
{
    Q_OBJECT

public:
    explicit DebugPage(QWidget* parent = nullptr);

    void show(const LoggerSettings& settings, bool isDrawnOnline);

Q_SIGNALS:
    void command(commandType cmd);
    void vortaCommand(commandType cmd);
    /// A run of a Vorta logger, at its rate 1 to 5.
    void vortaRun(int rate, int samples);
    void drawOnline(bool isOn);

private:
    void createVortaGroup(QVBoxLayout* layout);
    void connectButtons();

    QPushButton* button_setTimeDate;
    QPushButton* button_getStatus;
    QPushButton* buttonSensorsID;
    QSpinBox* rateSpinBox = nullptr;
    QSpinBox* SampleSpinBox_2 = nullptr;
    QPushButton* VortaRunButton;
    QPushButton* VortaStopButton;
    QPushButton* VortaStatusButton;
    QPushButton* VortaSnapButton;
    QCheckBox* drawGraphCheckBox = nullptr;
};

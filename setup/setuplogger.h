#pragma once

#include <QDialog>
#include <QVector>

#include <utility>

#include "sensors/sensor.h"
#include "setup/designvalues.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QGridLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QScrollArea;
class QSpinBox;
class QTabWidget;
class TembrinData;
class TembrinProtocol;
class UserPrompt;
class multiConnectionsManager;

/// What changes seldom: the loggers' sound, GPS and language, the units, smoothing, and the look of the
/// program. Three more pages (trigger and sockets, debugging, calibration) are built and filled too, and
/// shown with the setting "advanced". It shows logger 0 and follows what that reports.
class setupLogger : public QDialog
{
    Q_OBJECT

public:
    /// `prompt` shows boxes and asks for colours; it outlives the dialog.
    explicit setupLogger(UserPrompt* prompt, QWidget* parent = nullptr);

    /// Fills the dialog; once, before it is shown.
    void createAll(multiConnectionsManager* manager);
    /// From logger 0 and the settings to the controls.
    void modifyAll();
    /// The configuration in the controls becomes that of all loggers; the first one gets it now, the others
    /// when the dialog closes.
    void sendConf();

    /// Closing the window in whatever way is the same as Exit.
    void reject() override;

public Q_SLOTS:
    void updateStatus();
    void calib_result(int reason);
    void test_data_result(const QVector<unsigned char>& results);
    void test_vorta_show_results();

Q_SIGNALS:
    /// Which of the family's sensors stand in the two sockets: an ID, 0 for none, -1 for no change.
    void externalSet(int first, int second);
    void useTableDesignValues();
    void useGraphDesignValues();
    void useMainDesignValues();

private Q_SLOTS:
    void on_Exit_clicked();
    void on_saveButton_clicked();
    void on_defaultButton_clicked();
    void on_buttonCalibTemp_clicked();

private:
    // Frame, in setuplogger.cpp
    void createLayout();
    void hidePages();
    void connectControls();
    void fillLists();
    void showUnits();
    void showConfiguration();
    void showTrigger();
    void showSockets();
    void showVorta();

    // Pages, in setuplogger_pages.cpp
    QScrollArea* addPage(const char* name, const QString& title, QWidget* content);
    void createAdvancedPage();
    QGroupBox* createTriggerGroup();
    QGroupBox* createRangeGroup();
    QGroupBox* createSocketGroup();
    void createConfigPage();
    QGroupBox* createLoggerGroup();
    QWidget* createUnitGroups();
    QWidget* createSmoothing();
    void createDebugPage();
    void createCalibrationPage();
    void createSelfTest();

    // Configuration, units, trigger and sockets, in setuplogger_config.cpp
    void connectConfiguration();
    void connectSetup();
    void storeCelsius();
    void storeUnits();
    void somethingChanged();
    void kernelChanged();
    void editingFinished();
    void socketChanged(bool first);
    /// The trigger as the lists show it.
    std::pair<int, int> trigger() const;
    QVector<double> edited() const;

    // Calibration, self test and the wire by hand, in setuplogger_calibration.cpp
    void connectCalibration();
    void connectDebug();
    void startVorta();

    // Design page, in setuplogger_design.cpp
    void createDesignPage();
    QGroupBox* designGroup(const char* name, const QString& title, QGridLayout** grid);
    void addColor(QGridLayout* grid, DesignValues::ColorOf which);
    void addWidth(QGridLayout* grid, DesignValues::WidthOf which);
    QSpinBox* addTextSize(QGridLayout* grid, const char* name, const QString& label, int least, int most);
    void modifyDesignDialog();
    void showNotSaved();
    void showColor(int which);
    void pickColor(int which);
    void tellDesign(DesignValues::Place place);

    UserPrompt* prompt;
    multiConnectionsManager* mTembrin = nullptr;
    TembrinProtocol* tembrin = nullptr; ///< of logger 0
    TembrinData* tembrinData = nullptr;
    SensorList sensors;     ///< what the two sensor lists show
    bool isReady = false;   ///< changes are acted on
    bool isFilling = false; ///< a change is the dialog's own
    bool needToUpdateAll = false;
    bool unitChanged = false;
    const bool isCelsius;
    QVector<double> lastEdited; ///< what was in the fields when they were last acted on

    QTabWidget* tabs = nullptr;
    QScrollArea* tabAdvanced = nullptr;
    QScrollArea* tabConfig = nullptr;
    QScrollArea* tabDebug = nullptr;
    QScrollArea* tabDesign = nullptr;
    QScrollArea* tabCalibration = nullptr;
    QLabel* labelVersions = nullptr;
    QPushButton* Exit = nullptr;

    QComboBox* comboTrigSens = nullptr;
    QComboBox* comboTrigType = nullptr;
    QDoubleSpinBox* spinTrigLevel = nullptr;
    QDoubleSpinBox* spinTrigSamples = nullptr;
    QComboBox* comboDynamicSensor = nullptr;
    QDoubleSpinBox* spinRangeMin = nullptr;
    QCheckBox* boxDynamicActive = nullptr;
    QComboBox* comboBox = nullptr; ///< sensors of socket 1 and 2
    QComboBox* comboBox_2 = nullptr;

    QCheckBox* boxSound = nullptr;
    QCheckBox* boxGPS = nullptr;
    QComboBox* comboLanguage = nullptr;
    QRadioButton* unitsCelsius = nullptr;
    QRadioButton* unitsFahrenheit = nullptr;
    QRadioButton* unitsBaro_mBar = nullptr;
    QRadioButton* unitsBaro_hPa = nullptr;
    QRadioButton* unitsKPA = nullptr;
    QRadioButton* unitsPSI = nullptr;
    QRadioButton* unitsMeters = nullptr;
    QRadioButton* unitsFeet = nullptr;
    QRadioButton* unitsKMH = nullptr;
    QRadioButton* unitsMPH = nullptr;
    QRadioButton* unitsMS = nullptr;
    QSpinBox* smootSpinBox = nullptr;

    QPushButton* button_setTimeDate = nullptr;
    QPushButton* button_getStatus = nullptr;
    QPushButton* buttonSensorsID = nullptr;
    QSpinBox* rateSpinBox = nullptr;
    QSpinBox* SampleSpinBox_2 = nullptr;
    QPushButton* VortaRunButton = nullptr;
    QPushButton* VortaStopButton = nullptr;
    QPushButton* VortaStatusButton = nullptr;
    QPushButton* VortaSnapButton = nullptr;
    QCheckBox* drawGraphCheckBox = nullptr;

    QLabel* currentTemperatureLabel = nullptr;
    QLineEdit* currentTemperatureLineEdit = nullptr;
    QPushButton* buttonCalibTemp = nullptr;
    QPushButton* buttonTempBackDef = nullptr;
    QLabel* calibrationResultText = nullptr;
    QGroupBox* groupSeltTest = nullptr;
    QPushButton* buttonGetTestDataq = nullptr;
    QLabel* testResult = nullptr;
    QPushButton* vortaTestButton = nullptr;

    QPushButton* colorButtons[DesignValues::ColorCount] = {};
    QDoubleSpinBox* widthSpins[DesignValues::WidthCount] = {};
    QSpinBox* titlesSizeSpin = nullptr;
    QSpinBox* valuesSizeSpin = nullptr;
    QPushButton* saveButton = nullptr;
    QPushButton* defaultButton = nullptr;
    QLabel* designHint = nullptr; ///< how long a design lasts
};

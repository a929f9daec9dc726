#pragma once

#include <QDialog>
#include <QList>
#include <QPair>

#include "sensors/sensor.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QScrollArea;
class QVBoxLayout;
class TembrinData;
class TembrinProtocol;
class UserPrompt;
class multiConnectionsManager;

/// Chooses what the next experiment records. It shows the settings of logger 0; a change reaches the first
/// logger at once and all others when the dialog closes. While it is open it follows what logger 0 reports.
class loggerBasicSetup : public QDialog
{
    Q_OBJECT

public:
    /// `prompt` shows the warnings and outlives the dialog.
    explicit loggerBasicSetup(UserPrompt* prompt, QWidget* parent = nullptr);

    /// Fills the dialog; once, before it is shown.
    void createAll(multiConnectionsManager* manager);
    /// From logger 0 to the dialog. Nothing is sent.
    void modifyAll();

    bool dontOpenFlag = false; ///< a change met a running logger, so the dialog must not be shown

    /// Point sizes of titles and values in the next dialogs of this run.
    static int getTitlesSize() { return titlesSize; }
    static void setTitlesSize(int points) { titlesSize = points; }
    static int getTextSize() { return textSize; }
    static void setTextSize(int points) { textSize = points; }

    /// Closing the window in whatever way is the same as Exit.
    void reject() override;

public Q_SLOTS:
    void updateStatus();

private Q_SLOTS:
    void on_Exit_clicked();
    void somethingChanged();
    void somethingChanged(int index);
    void vernierChanged(int index);
    void vernierChanged2(int index);
    void photoGateChanged();

private:
    // Widgets, in loggerbasicsetup.cpp
    void createWidgets();
    void createPhotogate();
    void createLayout();
    void connectControls();
    void fillSensors();
    QWidget* createSensorRow(int i);
    QComboBox* createSocketList(int i);
    void fillLists();
    void setTitleFonts();

    // Between the dialog and the loggers, in loggerbasicsetup_sync.cpp
    bool isBusy() const;
    void refuse();
    bool isSocket(int i) const;
    int socketEntry(int i) const;
    void showSensors();
    void showSocket(int i);
    void showPhotogate();
    void showRate();
    void showVorta();
    void showRunLength();
    void showHint();
    void takePhotogate();
    void takeSetup();
    void takeVorta();
    void keepVortaSensors();
    void plugVernier(bool first, int index);
    /// What the two lists show.
    QPair<int, int> selection() const;

    static int titlesSize;
    static int textSize;

    UserPrompt* prompt;
    multiConnectionsManager* mTembrin = nullptr;
    TembrinProtocol* tembrin = nullptr; ///< of logger 0
    TembrinData* tembrinData = nullptr;
    SensorList sensors;   ///< one row each
    QVector<short> rates; ///< the rate that each entry of comboRate stands for
    bool isVortaShown = false;
    QList<QCheckBox*> sensBoxes;
    QList<QComboBox*> comboBoxes; ///< of socket 1 and 2, null where there is none
    int iconDim = 32;
    bool isReady = false;   ///< changes are acted on
    bool isFilling = false; ///< a change is the dialog's own
    bool needToUpdateAll = false;

    QGroupBox* groupBoxSensors = nullptr;
    QScrollArea* sensorArea = nullptr;
    QVBoxLayout* vboxSensors = nullptr;
    QLabel* labelRate = nullptr;
    QComboBox* comboRate = nullptr;
    QLabel* labelSamples = nullptr;
    QComboBox* comboSamples = nullptr;
    QLabel* runLength = nullptr;
    QCheckBox* invertForceBox = nullptr;
    QGroupBox* photogateGroupBox = nullptr;
    QLabel* gateIcon = nullptr;
    QLabel* diagram = nullptr;
    QLabel* labelCardWidth = nullptr;
    QLineEdit* cardWidthLineEdit = nullptr;
    QLabel* cardWidthUnit = nullptr;
    QLabel* cardWidthHint = nullptr; ///< why the width was not taken
    QLabel* hint = nullptr;          ///< who gets a change, and when
    QPushButton* Exit = nullptr;
};

#pragma once

#include <QDialog>
#include <QList>
#include <QVector>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QScrollArea;
class QVBoxLayout;
class ClassLink;
class TembrinData;
class UserPrompt;
class multiConnectionsManager;

/// Chooses what the next experiment records. It edits one plan for the class, which starts from the settings
/// of the first logger; a change reaches that logger at once and all others when the dialog closes. What was
/// not chosen here follows what the first logger reports.
class loggerBasicSetup : public QDialog
{
    Q_OBJECT

public:
    /// `prompt` shows the warnings and outlives the dialog.
    explicit loggerBasicSetup(UserPrompt* prompt, QWidget* parent = nullptr);

    /// Fills the dialog; once, before it is shown.
    void createAll(multiConnectionsManager* manager);
    /// From the plan to the dialog. Nothing is sent.
    void modifyAll();

    bool dontOpenFlag = false; ///< a logger runs, so the dialog must not be shown

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
    void photoGateChanged();

private:
    /// A line of a list.
    struct Entry
    {
        int value = 0; ///< a rate or a number of samples, as the plan counts them
        QString text;
        QString tip;
        bool operator==(const Entry& other) const;
    };
    using Entries = QVector<Entry>;

    // Widgets, in loggerbasicsetup.cpp
    void createWidgets();
    void createPhotogate();
    void createLayout();
    void connectControls();
    void fillSensors();
    QWidget* createSensorRow(int i);
    QComboBox* createSocketList(int socket);
    void setTitleFonts();

    // Between the dialog and the plan, in loggerbasicsetup_sync.cpp
    bool isRefused();
    int socketEntry(int id) const;
    void showSensors();
    void showSocket(int i);
    void showPhotogate();
    void showLists();
    void fillList(QComboBox* list, Entries* present, const Entries& wanted, int value);
    Entries rateEntries() const;
    Entries sampleEntries() const;
    void ticked(int i, bool isOn);
    void rateChosen(int index);
    void samplesChosen(int index);
    void invertForceChosen(bool isOn);
    void plugVernier(int socket, int index);
    void takePhotogate();
    void planChanged();

    // What the plan means for the class, in loggerbasicsetup_notes.cpp
    void showRunLength();
    QString runLengthOf(int slot) const;
    QString fastNote(const QVector<int>& loggers) const;
    void showHint();

    static int titlesSize;
    static int textSize;

    UserPrompt* prompt;
    multiConnectionsManager* mTembrin = nullptr;
    ClassLink* link = nullptr;
    QVector<int> shownSensors; ///< one row each; the sockets count as such
    Entries rates;             ///< what the two lists show
    Entries sampleCounts;
    QList<QCheckBox*> sensBoxes;
    QList<QComboBox*> comboBoxes; ///< of socket 1 and 2, null where there is none
    int iconDim = 32;
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
    QLabel* warnings = nullptr;      ///< what the plan can't be for some groups
    QLabel* hint = nullptr;          ///< who gets a change, and when
    QPushButton* Exit = nullptr;
};

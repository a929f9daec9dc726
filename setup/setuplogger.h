#pragma once

#include <QDialog>
#include <QVector>

#include <functional>

#include "classroom/classplan.h"

class CalibrationPage;
class ClassLink;
class ConfigPage;
class DebugPage;
class DesignPage;
class ExpData;
class QLabel;
class QPushButton;
class QScrollArea;
class QTabWidget;
class bootLoader;
class TriggerPage;
class UserPrompt;
class multiConnectionsManager;

/// What changes seldom: the loggers' sound, GPS and language, the units, smoothing, and the look of the
/// program. Three more pages (trigger and sockets, debugging, calibration) are built and filled too, and
/// shown with the setting "advanced". It edits one plan for the class, which starts from the first logger and
/// follows it where nothing was chosen.
class setupLogger : public QDialog
{
    Q_OBJECT

public:
    /// `prompt` shows boxes and asks for colours; it outlives the dialog.
    explicit setupLogger(UserPrompt* prompt, QWidget* parent = nullptr);

    /// Fills the dialog; once, before it is shown.
    void createAll(multiConnectionsManager* manager);
    /// From the plan and the settings to the controls.
    void modifyAll();
    /// The configuration in the controls becomes that of all loggers; the first one gets it now, the others
    /// when the dialog closes.
    void sendConf();

    /// Opens on the firmware of a logger; false without the setting "advanced".
    bool showBootLoader(int slot);

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

private:
    void createPages();
    QScrollArea* addPage(const char* name, const QString& title, QWidget* content);
    void createLayout();
    void hidePages();
    void connectPages();
    void connectLogger();

    bool isRefused();
    void configurationChosen(ClassPlan::Field field);
    void unitChosen(bool isOfLoggers);
    void kernelChosen(int size);
    void windowChosen(int size);
    void forAllData(const std::function<void(ExpData*)>& act);
    void triggerChosen();
    void socketChosen(int socket);
    void startVorta(int rate, int samples);

    UserPrompt* prompt;
    multiConnectionsManager* mTembrin = nullptr;
    ClassLink* link = nullptr;
    bool needToUpdateAll = false;
    bool needSocketsAtAll = false;
    bool unitChanged = false;

    TriggerPage* trigger = nullptr;
    ConfigPage* config = nullptr;
    DebugPage* debug = nullptr;
    DesignPage* design = nullptr;
    CalibrationPage* calibration = nullptr;
    bootLoader* firmware = nullptr; ///< null without the setting "advanced"
    QVector<QScrollArea*> advancedPages;
    QTabWidget* tabs = nullptr;
    QLabel* labelVersions = nullptr;
    QPushButton* Exit = nullptr;
};

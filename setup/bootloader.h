#pragma once

#include <QHash>
#include <QPixmap>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <memory>

#include "firmware/burnsession.h"
#include "firmware/firmwareimage.h"

class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QStackedWidget;
class QVBoxLayout;
class UserPrompt;
class WakeKeeper;
class multiConnectionsManager;

/// The firmware panel: behind a password one face with a file, a burn and its progress, behind another one
/// with a button for every step. It works on one logger at a time, which is chosen in it.
class bootLoader : public QWidget
{
    Q_OBJECT

public:
    bootLoader(multiConnectionsManager* manager, UserPrompt* prompt, QWidget* parent = nullptr);
    ~bootLoader() override;

    /// A burn, a write or a verify is under way.
    bool isBusy() const;
    /// Ends what is under way.
    void cancel();
    /// The logger of this slot, unless another one is being worked on.
    void choose(int slot);
    /// The session of the chosen logger.
    BurnSession* session() const { return present; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* createPasswordPage();
    QWidget* createMainPage();
    QWidget* createOldPage();
    QPushButton* addStep(QGridLayout* grid, const QString& text, const char* name, QLabel** label,
                         const std::function<void()>& act);
    void acceptPassword();
    void fillLoggers();
    void listen();
    bool openFile();
    void openOnMainPage();
    void burn();
    void showProgress();
    void showEnd(bool isGood, const QString& words);
    void updateButtons();
    void showIcon();
    QString advice() const;

    multiConnectionsManager* const manager;
    UserPrompt* const prompt;
    std::unique_ptr<WakeKeeper> wake;
    QHash<int, BurnSession*> sessions; ///< of the slots that were chosen
    BurnSession* present = nullptr;
    int slot = -1;
    FirmwareImage image;
    QTimer blink;
    bool animState = false;
    QPixmap On;
    QPixmap Off;

    QComboBox* loggers = nullptr;
    QLabel* icon = nullptr;
    QStackedWidget* faces = nullptr;
    QLineEdit* password = nullptr;
    QPushButton* passwordButton = nullptr;
    QLabel* feedback = nullptr;
    // The simple face
    QPushButton* openButton = nullptr;
    QPushButton* burnButton = nullptr;
    QPushButton* stopButton = nullptr;
    QLabel* fileLabel = nullptr;
    QLabel* burnText = nullptr;
    QLabel* progressText = nullptr;
    QProgressBar* progress = nullptr;
    // The manual face
    QLabel* openLabel = nullptr;
    QLabel* startLabel = nullptr;
    QLabel* writeLabel = nullptr;
    QLabel* verifyLabel = nullptr;
    QVector<QPushButton*> steps;
    QVector<QPushButton*> fileSteps; ///< those that need a file
};

#pragma once

#include <QPixmap>
#include <QString>
#include <QTimer>
#include <QWidget>

#include "common/classsize.h"

class QLabel;
class UserPrompt;

/// The row of icons at the end of the status bar: one per logger slot that shows whether the logger is
/// connected and busy, and one that opens the pairing of the operating system. It keeps nothing of the
/// loggers but what it was last told.
class Indicator : public QWidget
{
    Q_OBJECT

public:
    static constexpr int nBT = mostLoggers;

    enum class State
    {
        Empty,   ///< the slot is not in use
        Off,     ///< in use, not connected
        Seeking, ///< lost, and looked for
        Connecting,
        On,  ///< connected
        Comm ///< connected and holding the current command
    };

    /// `prompt` asks before something is deleted; not owned, outlives this widget.
    explicit Indicator(UserPrompt* prompt, QWidget* parent = nullptr);

    /// Of a logger's icon, pixels.
    static int iconHeight();

    /// No slot is in use.
    void setNoComm();
    /// Slots below `N` are in use and not connected; the others are hidden.
    void setNActive(int N);
    void setBT(int index, bool tf);
    void setBTComm(int index, bool tf);
    void setSeeking(int index) { setState(index, State::Seeking); }
    void setConnecting(int index) { setState(index, State::Connecting); }
    void setToolTipsMsg(int index, const QString& msg);
    /// The names that the warning before a deletion tells.
    void setLoggerDetails(int index, const QString& loggerName, const QString& groupName);
    State state(int index) const { return slots_[index].state; }
    bool isConnected(int index) const
    {
        return slots_[index].state == State::On || slots_[index].state == State::Comm;
    }

    bool isJunior = false;

Q_SIGNALS:
    void tryToConnect(int index);
    void deleteFromLogger(int index, bool all);
    /// A sentence for the status bar.
    void message(const QString& text);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    struct Slot
    {
        QLabel* icon = nullptr;
        State state = State::Empty;
        QString loggerName;
        QString groupName;
    };

    void loadPictures();
    void createRow();
    void setState(int index, State state);
    void showBlink();
    int slotOf(const QObject* object) const;
    void confirmDelete(int index);
    void openPairing();

    UserPrompt* prompt;
    Slot slots_[nBT];
    QTimer blink; ///< of those that are looked for or called
    bool isLit = false;
    QLabel* pair = nullptr;
    QPixmap BTOn;
    QPixmap BTOff;
    QPixmap BTEmpty;
    QPixmap BTPair;
    QPixmap BTComm;
};

#pragma once

#include <QKeySequence>
#include <QObject>
#include <QPointer>

#include <functional>

class QAction;
class QMainWindow;
class QMenu;
class QMenuBar;

/// The menu bar with every command in words. It is hidden until a person presses Alt, and goes when she has
/// chosen or given up.
class CommandMenu : public QObject
{
    Q_OBJECT

public:
    explicit CommandMenu(QMainWindow* window);

    /// A menu at the end of the bar.
    QMenu* add(const QString& name, const QString& title);
    /// A command that no button has, with its key; the key counts in the whole window.
    QAction* command(QMenu* menu, const QString& name, const QString& text, const QKeySequence& key,
                     const std::function<void()>& run);
    /// A key that no action has, for the list of keys only: "Enter".
    static void setKeyText(QAction* action, const QString& text);
    /// The keys of an action as they are told to a person.
    static QString keyText(const QAction* action);
    void showKeys();

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void toggle();

    QMainWindow* window;
    QMenuBar* bar;
    bool isAltAlone = false; ///< it is down, and nothing else has been pressed since
    QPointer<QWidget> keys;
    QPointer<QWidget> focusBefore;
};

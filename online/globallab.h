#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

constexpr int GLOBALLAB_SEND = 1;

/// Asks with which name and password an experiment is sent, and tells how that went.
class globalLab : public QDialog
{
    Q_OBJECT

public:
    globalLab(const QString& user, const QString& pass, QWidget* parent = nullptr);

    /// Something went wrong: the person may try again.
    void showMessage(const QString& msg);
    /// It is on its way.
    void showSending();
    /// It has arrived: says so, opens the project's page if that is wanted, and closes after `ms`.
    void delayedClose(int ms);

    QString username;
    QString password;
    bool launchBrowser = false;

Q_SIGNALS:
    void globalLabAction(int mode);

private:
    void send();

    QLineEdit* usernameLineEdit;
    QLineEdit* passwordLineEdit;
    QLabel* labelStatus;
    QPushButton* doGlobalLab;
};

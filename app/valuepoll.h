#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

class multiConnectionsManager;

/// Asks the loggers of an idle class what they measure, each every two seconds and one after the other.
/// Whatever else there is to do for a logger goes first, and no question waits for its turn.
class ValuePoll : public QObject
{
    Q_OBJECT

public:
    /// `mayAsk`: whether the answers are wanted at present. `manager` is not owned.
    ValuePoll(multiConnectionsManager* manager, std::function<bool()> mayAsk, QObject* parent = nullptr);

    void setOn(bool isOn);

private:
    void askNext();

    multiConnectionsManager* manager;
    const std::function<bool()> mayAsk;
    int next = 0;
    QTimer timer;
};

#pragma once

#include <QColor>
#include <QObject>
#include <QPair>
#include <QPoint>
#include <QString>

#include "sensors/sensor.h"

class ExpData;
class QWidget;
class UserPrompt;

/// What a person is asked about a graph: its title, a colour, a range, the sensor on its x axis. Each answer
/// is a signal; a question that is cancelled gives none.
class GraphDialogs : public QObject
{
    Q_OBJECT

public:
    /// `parent` is where boxes stand; nothing is owned.
    GraphDialogs(QWidget& parent, ExpData& data);

    /// Without one every question counts as cancelled.
    void setPrompt(UserPrompt* newPrompt) { prompt = newPrompt; }

    void askForTitle(const QString& present);
    void askForColor(int iSens, const QColor& present);
    void askForRange(int iSens, const QPair<double, double>& inForce);
    /// A menu of time and all sensors; nothing with fewer than two.
    void askForX(const QPoint& globalPos);

Q_SIGNALS:
    void titleChosen(const QString& text);
    void colorChosen(int iSens, const QColor& color);
    void rangeChosen(const SensorPtr& sensor, double min, double max);
    void rangeReleased(const SensorPtr& sensor);
    /// -1 for the time.
    void xChosen(int iSens);

private:
    QWidget& parent;
    ExpData& data;
    UserPrompt* prompt = nullptr;
};

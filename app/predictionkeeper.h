#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

#include "data/prediction.h"

class ExpData;
class multiConnectionsManager;

/// What groups and the class predict: drawn lines go into their sets, and how far the curves are from them is
/// told while a run goes on and when it has ended.
class PredictionKeeper : public QObject
{
    Q_OBJECT

public:
    /// `manager` has the graphs and their sets; not owned. `groupName` names the group of a slot.
    PredictionKeeper(multiConnectionsManager* manager, std::function<QString(int)> groupName,
                     QObject* parent);

    void take(int index, const Prediction& drawn);
    /// Of all graphs, as one step.
    void removeAll();
    /// How far the curves are from what was predicted, as they are now; nothing without predictions.
    void tellResult();

Q_SIGNALS:
    void told(const QString& line);
    /// The best first, at the end of a run.
    void resultTold(const QString& line);
    /// A step that can be taken back is about to be done, or is not after all; and was done.
    void doing();
    void done(const QString& name, const std::function<bool(bool isBack)>& move);

private:
    ExpData* setOf(int index) const;
    QString nameOf(int index) const;
    void show(int index, const QVector<Prediction>& predictions);
    void note(const QString& name, const QVector<QVector<Prediction>>& before);
    QVector<QVector<Prediction>> all() const;
    void renew();

    multiConnectionsManager* const manager;
    const std::function<QString(int)> groupName;
    QTimer again;
};

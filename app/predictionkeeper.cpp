#include "app/predictionkeeper.h"

#include "classroom/classrun.h"
#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"
#include "graph/plot.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
constexpr int msBetweenDistances = 1000;
}

PredictionKeeper::PredictionKeeper(multiConnectionsManager* manager, std::function<QString(int)> groupName,
                                   QObject* parent)
    : QObject(parent)
    , manager(manager)
    , groupName(std::move(groupName))
{
    // Samples come, go and change in many ways, each without a word to whoever only reads them.
    again.setInterval(msBetweenDistances);
    connect(&again, &QTimer::timeout, this, &PredictionKeeper::renew);
    again.start();
    connect(&manager->run(), &ClassRun::ended, this, &PredictionKeeper::tellResult);
}

ExpData* PredictionKeeper::setOf(int index) const
{
    return index < 0 ? manager->dataC() : manager->dataAt(index);
}

QString PredictionKeeper::nameOf(int index) const
{
    return index < 0 ? tr("class") : groupName(index);
}

/// The class first, then all places.
QVector<QVector<Prediction>> PredictionKeeper::all() const
{
    QVector<QVector<Prediction>> predictions;
    for (int i = -1; i < manager->nMaxTembrins(); ++i)
        predictions.append(setOf(i)->predictions);
    return predictions;
}

void PredictionKeeper::show(int index, const QVector<Prediction>& predictions)
{
    ExpData* const set = setOf(index);
    if (set->predictions == predictions)
        return;
    set->predictions = predictions;
    if (set->getXSize() > 0)
        set->setNeedSave(true);
    for (Plot* plot : manager->graphsOf(index))
        plot->showPredictions();
}

/// Another run that was shown meanwhile has predictions of its own, which no step of before touches.
void PredictionKeeper::note(const QString& name, const QVector<QVector<Prediction>>& before)
{
    Q_EMIT done(name, [this, name, before, after = all()](bool isBack) {
        const QVector<QVector<Prediction>>& wanted = isBack ? before : after;
        const QVector<QVector<Prediction>>& known = isBack ? after : before;
        for (int i = 0; i < known.size(); ++i) {
            if (known.at(i) != wanted.at(i) && setOf(i - 1)->predictions != known.at(i)) {
                Q_EMIT told(tr("%1: another run is on the graphs by now.").arg(name));
                return false;
            }
        }
        for (int i = 0; i < known.size(); ++i) {
            if (known.at(i) != wanted.at(i))
                show(i - 1, wanted.at(i));
        }
        return true;
    });
}

void PredictionKeeper::take(int index, const Prediction& drawn)
{
    const QVector<QVector<Prediction>> before = all();
    QVector<Prediction> predictions = setOf(index)->predictions;
    const auto own = std::find_if(predictions.begin(), predictions.end(),
                                  [&](const Prediction& other) { return other.isOfSame(drawn); });
    if (own != predictions.end())
        *own = drawn;
    else if (!drawn.points.isEmpty())
        predictions.append(drawn);
    Q_EMIT doing();
    show(index, predictions);
    if (before != all())
        note(tr("Prediction, %1").arg(nameOf(index)), before);
}

void PredictionKeeper::removeAll()
{
    const QVector<QVector<Prediction>> before = all();
    Q_EMIT doing();
    for (int i = 0; i < before.size(); ++i)
        show(i - 1, {});
    if (before != all())
        note(tr("Remove predictions"), before);
    else
        Q_EMIT told(tr("There is no prediction on a graph."));
}

void PredictionKeeper::renew()
{
    for (int i = -1; i < manager->nMaxTembrins(); ++i) {
        for (Plot* plot : setOf(i)->predictions.isEmpty() ? QVector<Plot*>() : manager->graphsOf(i))
            plot->renewDeviations();
    }
}

/// Of each group what it chose to see; deviations in different units are not compared, so each unit is sorted
/// by itself.
void PredictionKeeper::tellResult()
{
    struct Result
    {
        QString unit;
        double mean;
        QString text;
    };
    renew();
    QVector<Result> results;
    for (int i = -1; i < manager->nDefTembrins(); ++i) {
        const ExpData& set = *setOf(i);
        for (const Prediction& prediction : set.predictions) {
            const QString text = Predictions::deviationText(set, prediction, i < 0);
            if (!text.isEmpty())
                results.append({set.getSens(Predictions::channelOf(set, prediction))->unitName,
                                Predictions::meanDeviation(set, prediction, i < 0),
                                QStringLiteral("%1 %2").arg(nameOf(i), text)});
        }
    }
    std::stable_sort(results.begin(), results.end(), [](const Result& a, const Result& b) {
        return a.unit != b.unit ? a.unit < b.unit : a.mean < b.mean;
    });
    QStringList texts;
    for (const Result& result : qAsConst(results))
        texts.append(result.text);
    if (!texts.isEmpty())
        Q_EMIT resultTold(
            tr("Away from the prediction on average: %1").arg(texts.join(QStringLiteral(", "))));
}

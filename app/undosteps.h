#pragma once

#include <QHash>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>

#include "data/expdata.h"
#include "graph/plot.h"

class multiConnectionsManager;

/// A range of a channel that somebody set by hand.
struct HandRange
{
    bool isSet = false;
    double min = 0;
    double max = 0;
};
bool operator==(const HandRange& a, const HandRange& b);

/// What a person did to the graphs, step by step, to take it back and to do it again. A step is what one
/// graph was before it and after it, and touches nothing but what it changed: samples that came since stay.
/// It goes when its graph begins anew, so it is a list of its own and no stack that knows only its end.
class UndoSteps : public QObject
{
    Q_OBJECT

public:
    static constexpr int most = 50;

    /// `manager` has the graphs and their sets; not owned.
    explicit UndoSteps(multiConnectionsManager* manager, QObject* parent = nullptr);

    /// What is done on this graph counts from now on.
    void watch(Plot* plot);

    /// What can be taken back and done again, the next first, each with its group.
    QStringList doneNames() const { return names(done); }
    QStringList undoneNames() const { return names(undone); }

    /// All that was done to the samples of a graph, also before the last steps, and where it began.
    struct History
    {
        QVector<SampleStep> steps;
        bool isOfRaw = false; ///< more than derived channels
        ExpData::Content raw; ///< before the first that is more
    };
    History history(int index) const;
    /// A set that came from a file holds what `steps` made of the first of `contents`, one more than steps.
    void restore(int index, QVector<ExpData::Content> contents, const QVector<SampleStep>& steps);
    /// Something that is of no graph is about to be done: texts on the graphs may get other places by it.
    void prepare();
    /// It was done. `move` takes it back (true) or does it again; false where that
    /// no longer goes.
    void note(const QString& name, const std::function<bool(bool isBack)>& move);
    /// Other samples come into the set: nothing that was done to it before can be taken back.
    void forget(int index);

public Q_SLOTS:
    /// The last `count` steps; stops at one that does not go.
    void undo(int count = 1);
    void redo(int count = 1);

Q_SIGNALS:
    /// Other steps can be taken back or done again.
    void changed();
    /// What was done, or why not.
    void told(const QString& text);
    /// The set of a logger, or of the class (-1), has other samples, channels or ranges.
    void edited(int index);

private:
    /// One graph, in all its views.
    struct State
    {
        QVector<QPair<QPointer<Plot>, PlotState>> views;
        QVector<HandRange> ranges; ///< three for each channel: its own, that of the class, that of bars
        ExpData::Content content;  ///< only of a step that changes it: a run would copy what is shared
    };
    struct Step
    {
        int index = 0;
        QString name;
        State before;
        State after;
        bool isOfSamples = false;
        SampleStep what;                      ///< of samples
        std::function<bool(bool isBack)> own; ///< of no graph
        bool isDerivative() const { return before.content.sensors.size() < after.content.sensors.size(); }
    };
    /// A change that has begun; another one can begin within it.
    struct Open
    {
        int depth = 0;
        std::optional<State> before; ///< none when the graph began anew meanwhile
        bool isOfSamples = false;
        int channel = 0; ///< that was chosen
        QString inner;   ///< what was done within it
    };

    void begin(int index, bool isOfSamples);
    void add(const Step& step);
    void end(int index, const QString& name);
    bool move(QVector<Step>* from, QVector<Step>* to, bool isBack);
    bool apply(const Step& step, bool isBack);
    bool applySamples(const Step& step, bool isBack);
    bool applyDerivative(const Step& step, bool isBack);
    static void takeTexts(State* present);
    void joinAgain(const QVector<int>& slotNumbers);

    ExpData* setOf(int index) const;
    State stateOf(int index) const;
    /// Marks and places of texts of all graphs.
    State faces() const;
    static void putTexts(const State& wanted);
    static bool isSameFace(const State& a, const State& b);
    QStringList names(const QVector<Step>& steps) const;
    QString nameOf(const Step& step) const;
    static QString nameOf(SampleStep::Kind kind);

    multiConnectionsManager* const manager;
    QVector<Step> done;
    QVector<Step> older; ///< those of samples that are too far back to be taken back
    QVector<Step> undone;
    QHash<int, Open> open;
    State prepared; ///< before what is about to be done
};

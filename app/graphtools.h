#pragma once

#include <QHash>
#include <QObject>
#include <QPointer>

#include <functional>

#include "data/calculation.h"

class ExpData;
class Plot;
class multiConnectionsManager;
struct Prediction;

/// The tools of the graphs: the mouse modes, of which one is on at a time and on all graphs, and the analyses
/// and commands that go to one graph. That is the graph that the user sees and means: the only one that
/// shows, else the chosen one, else the one with the crosses, else the one last pressed in.
class GraphTools : public QObject
{
    Q_OBJECT

public:
    enum class Mode
    {
        None,
        Zoom,
        Marker,
        Annotate,
        Read,    ///< a line through all graphs, with the values of all curves
        Predict, ///< the pointer is a pen
        Slope    ///< a tangent at the pointer, on the graph that the tools go to
    };

    explicit GraphTools(multiConnectionsManager* manager, QObject* parent = nullptr);

    /// A new graph takes the mode that is on, and its presses are seen from now on.
    void watch(Plot* plot);

    /// Null if it cannot be told which one; then a line says what to do.
    Plot* target();
    /// The same without a line.
    Plot* seen() const;
    /// Those in sight, the class first.
    QList<Plot*> shownPlots() const;
    ExpData* dataOf(const Plot* plot) const;
    /// The data set of the target; null as that.
    ExpData* targetData();

    Mode mode() const { return present; }
    /// Ends every other mode. Slope mode needs a graph with at least three samples.
    void setMode(Mode mode, bool tf);
    /// Another graph was chosen or another layout shows: the tangent goes to the graph that the tools go to.
    void follow();

    void crop();
    /// Degree 1 or 2.
    void fit(int degree);
    void smooth();
    void addDerivative();
    /// A channel that a formula gives, behind those of a graph. False where one of its channels is missing.
    bool addCalculated(int index, const Calculation::Recipe& recipe);
    /// The last channel of a graph, which a formula gives.
    void removeCalculated(int index);
    void addIntegral();

Q_SIGNALS:
    void modeChanged();
    /// A press in the canvas of a graph: its index, -1 for that of the class.
    void pressed(int index);
    /// The pointer is here in the canvas of a graph that is read.
    void pointedAt(Plot* plot, const QPointF& pos);
    void predictionDrawn(int index, const Prediction& prediction);
    /// Why nothing was done, or what to do.
    void told(const QString& text);
    /// How far the two crosses of the graph that the tools go to are apart; empty without them.
    void distanceTold(const QString& text);
    /// The set of a logger, or of the class (-1), has other samples or channels.
    void edited(int index);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void tellDistance();
    void forEachPlot(const std::function<void(Plot*)>& visit) const;
    bool isSpectrum(const Plot* plot) const;
    double plannedLength(int index) const;
    bool turn(Plot* plot, Mode mode, bool tf);

    multiConnectionsManager* const manager;
    Mode present = Mode::None;
    QHash<const Plot*, QString> distances;
    QPointer<Plot> sloped;      ///< has the tangent
    QPointer<Plot> lastPressed; ///< in its canvas
};

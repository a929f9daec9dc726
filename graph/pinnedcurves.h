#pragma once

#include <QPixmap>
#include <QString>
#include <QVector>

#include <functional>
#include <memory>

#include <qwt_plot_item.h>

#include "data/storedexperiment.h"

class CurvePainter;
struct GraphParts;

/// A run behind the present curves of a graph. It shares its samples, or asks for them when they are drawn.
struct PinnedRun
{
    QString name;
    StoredExperiment experiment;
    /// Where the experiment has none: those of a channel, by its number in the list, or the times (-1).
    std::function<QVector<double>(int channel)> column;
};

/// Draws runs pale behind the curves of a graph over time: of each curve in sight the same sensor (in the
/// class of the same group), through its scale and in its unit, from the same time zero. On the screen they
/// are a picture that stands until something other than the present samples changes, so that a frame of a run
/// costs what it did.
class PinnedCurves : public QwtPlotItem
{
public:
    /// `parts` is not owned.
    explicit PinnedCurves(const GraphParts& parts);
    ~PinnedCurves() override;

    /// `present` names what is on the graph, where that has a name.
    void setRuns(const QVector<PinnedRun>& pinned, const QString& present);
    bool isEmpty() const { return runs.isEmpty(); }
    /// As myPlotCurve::setThinned().
    void setThinned(bool tf) { isThinned = tf; }

    /// What the pinned runs have at a time where a curve of the graph is looked at, in the unit on display.
    struct Value
    {
        QString name;
        double value = 0;
    };
    QVector<Value> valuesAt(int curve, double time) const;

    void draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
              const QRectF& canvasRect) const override;

private:
    /// A channel of a run behind a curve.
    struct Match
    {
        int run = 0;
        int curve = 0;
        int channel = 0; ///< of the run
    };

    QVector<Match> matches() const;
    StoredExperiment loaded(const Match& match) const;
    QVector<double> key(const QwtScaleMap& xMap, const QRectF& canvasRect, double ratio) const;
    void render(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap, const QRectF& canvasRect,
                double ratio) const;
    void stroke(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                const QRectF& canvasRect) const;
    void drawNames(QPainter* painter, const QRectF& canvasRect, const QColor& ground) const;
    static QColor colorOf(int run, const QColor& of, const QColor& ground);
    QwtScaleMap scaleOf(int curve, const QwtScaleMap& yMap) const;

    const GraphParts& parts;
    const std::unique_ptr<CurvePainter> columns;
    QVector<PinnedRun> runs;
    QString presentName;
    bool isThinned = false;
    mutable QPixmap picture;
    mutable QVector<double> pictureKey;
};

#pragma once

#include <QColor>
#include <QPixmap>
#include <QRectF>
#include <QStringList>
#include <QVector>

#include <optional>

#include <qwt_plot_item.h>

#include "data/prediction.h"

class QwtScaleMap;
struct GraphParts;

/// Draws what was predicted of the curves in sight behind them, dashed, each through the scale of its sensor,
/// with how far the curve lies from it. On the screen the lines are a picture that stands until something
/// other than the present samples changes, so that a frame of a run costs what it did.
class PredictedCurves : public QwtPlotItem
{
public:
    /// `parts` is not owned.
    explicit PredictedCurves(const GraphParts& parts);

    /// Other lines. True where there are some or were.
    bool renew();
    /// How far the curves lie from them; the part of the canvas that tells something else now.
    QRect renewTexts();

    // A pen on the active curve's scale, in place of what is there

    void begin(const QPointF& pos);
    void move(const QPointF& pos);
    /// What is drawn now; nothing without a pen.
    std::optional<Prediction> end();
    bool isDrawing() const { return stroke.has_value(); }

    void draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
              const QRectF& canvasRect) const override;

private:
    QVector<Prediction> present() const;
    std::optional<QPointF> pointAt(const QPointF& pos) const;
    int channelOf(const Prediction& prediction) const;
    bool isShown(int channel) const;
    QwtScaleMap scaleOf(int channel, const QwtScaleMap& yMap) const;
    QColor colorOf(int channel, const QColor& ground) const;
    QVector<double> key(const QwtScaleMap& xMap, const QRectF& canvasRect, double ratio) const;
    void drawLines(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap, const QColor& ground,
                   double width) const;
    void drawTexts(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                   const QRectF& canvasRect, const QColor& ground) const;
    QRectF textBox(const QFont& font, const QString& text, const QPointF& end,
                   const QRectF& canvasRect) const;

    const GraphParts& parts;
    std::optional<Prediction> stroke;
    std::optional<QPointF> lastPoint; ///< of the stroke
    QStringList texts;                ///< beside the lines
    int change = 0;
    bool hasAny = false;
    mutable QPixmap picture;
    mutable QVector<double> pictureKey;
    mutable QRectF textsBox; ///< where they stood last
};

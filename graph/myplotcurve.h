#pragma once

#include <QColor>
#include <QObject>
#include <QVector>

#include <qwt_plot_curve.h>

class CurvePainter;
class ExpData;
class scaleManager;

enum curveMode
{
    CURVE_LINE,
    CURVE_SYMBOL,
    CURVE_HIDDEN
};

/// One sensor's curve. It draws straight from the data set, through the scale of its sensor instead of that
/// of the visible axis. On the screen the cost of a time curve follows the width of the canvas; on any other
/// device, such as a printer or a picture file, every sample is drawn.
class myPlotCurve : public QObject, public QwtPlotCurve
{
    Q_OBJECT

public:
    /// None of the three is owned. `painter` is shared by the curves of one graph.
    myPlotCurve(ExpData* data, scaleManager* scaler, int iData, CurvePainter* painter);

    /// Line, symbols, hidden, line; gives the new mode.
    int rotateMode();
    void setMode(int newMode);
    int getMode() const { return mode; }
    void hide() { setMode(CURVE_HIDDEN); }
    void show() { setMode(CURVE_LINE); }
    bool isLine() const { return mode == CURVE_LINE; }
    bool isSymbol() const { return mode == CURVE_SYMBOL; }
    bool isShown() const { return mode != CURVE_HIDDEN; }

    /// Which channel it shows, in a form that outlives the curve.
    void setChannel(const QString& key) { channel = key; }
    const QString& getChannel() const { return channel; }

    void setColor(const QColor& newColor);
    /// A colour that the graph gave and may change again.
    void setOwnColor(const QColor& newColor) { color = newColor; }
    QColor getColor() const { return color; }
    /// The colour was chosen and stays.
    bool isUserColor() const { return userColorSet; }
    /// What goes around the curve in any case; without one it gets a casing where its colour does not stand
    /// out from the ground.
    void setCasing(const QColor& always) { fixedCasing = always; }

    /// Where every sample would be drawn, only those that can be told apart.
    void setThinned(bool tf) { isThinned = tf; }

    /// The curve's value at a time, in the unit on display.
    double getYForX(double x) const;

    void drawSeries(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                    const QRectF& canvasRect, int from, int to) const override;
    QwtGraphic legendIcon(int index, const QSizeF& size) const override;

protected:
    void drawCurve(QPainter* painter, int style, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                   const QRectF& canvasRect, int from, int to) const override;
    void drawSymbols(QPainter* painter, const QwtSymbol& symbol, const QwtScaleMap& xMap,
                     const QwtScaleMap& yMap, const QRectF& canvasRect, int from, int to) const override;

private:
    struct Stretch
    {
        int from;
        int to; ///< included
    };

    QVector<Stretch> stretches(int from, int to) const;
    double longestLine() const;
    bool paintsByColumns(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap) const;
    Stretch inSight(const QwtScaleMap& xMap, int from, int to) const;
    QColor casingOn(const QPainter* painter) const;
    QPointF place(int i, const QwtScaleMap& xMap, const QwtScaleMap& yMap) const;
    void paintColumns(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                      const QRectF& canvasRect, int from, int to) const;
    void strokeLines(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                     const QRectF& canvasRect, int from, int to) const;
    static void drawLine(QPainter* painter, const QPolygonF& line, const QPen& pen);
    void strokeDense(QPainter* painter, const QVector<QPolygonF>& lines, const QRectF& canvasRect) const;
    void drawPoints(QPainter* painter, const QVector<QPointF>& places) const;

    ExpData* const data;
    scaleManager* const scaler;
    CurvePainter* const columns;
    const int iData;
    int mode = CURVE_LINE;
    QString channel;
    QColor color;
    bool userColorSet = false;
    QColor fixedCasing;
    bool isThinned = false;
};

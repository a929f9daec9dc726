#pragma once

#include <limits>

#include <QObject>
#include <QPixmap>
#include <QPointer>
#include <QSize>
#include <QString>

#include <qwt_plot_marker.h>
#include <qwt_scale_map.h>
#include <qwt_text.h>

#include "data/fittedcurve.h"
#include "graph/myplotcurve.h"

class scaleManager;

/// Kinds of things that a user places on a graph.
enum markerType
{
    MARKER_ANNOTATE,      ///< free text or balloon
    MARKER_X,             ///< a cross on a curve
    MARKER_X_GHOST,       ///< a cross that is dragged with no curve in reach
    MARKER_TANGENT,       ///< the line of slope mode
    MARKER_REGRESSION,    ///< a fitted curve
    MARKER_FLOATING_TEXT, ///< a text box with a line to its partner
    MARKER_BUBBLE_TIP,    ///< no item is of this kind
    MARKER_FFT,           ///< no item is of this kind
    MARKER_INTEGRAL,      ///< the hatched area
    MARKER_LAST
};

/// The untranslated name of a kind, empty for those that have none.
QString markerTypeName(int type);

/// One item placed on a graph. Its y values are in the unit on display and follow the scale of its own
/// sensor, not the visible axis. A cross, regression, integral or tangent and its text are two items that
/// point at each other.
class myPlotMarker : public QObject, public QwtPlotMarker
{
    Q_OBJECT

public:
    /// `scaler` is that of the graph, not owned.
    myPlotMarker(int iSens, scaleManager* scaler, markerType type);
    /// For a reader of files; the graph hands over its scales when it takes the marker.
    myPlotMarker(int iSens, markerType type);

    void setScaler(scaleManager* newScaler) { scaler = newScaler; }
    void draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
              const QRectF& canvasRect) const override;

    void setShown(bool tf) { shown = tf; }
    /// Shown if the marker belongs to `activeSens`.
    void setShown(int activeSens) { shown = iSens == activeSens; }
    bool isShown() const { return shown; }
    void setBubble(bool tf) { bubble = tf; }
    bool isBubble() const { return bubble; }
    /// The picture of a balloon; a null one takes it away.
    void setPic(const QPixmap& picture);
    bool isPic() const { return bubPic; }
    const QPixmap& getPic() const { return pic; }
    /// A locked cross is not drawn and no longer moves.
    void lock();
    bool isLocked() const { return locked; }

    /// The label as plain text, in the font that the kind is written in.
    void setText(const QString& text);
    /// The height of texts; crosses go along.
    void setTextPixels(int pixels);
    /// The size of the canvas, which no text is too wide for; 0 for any width.
    void setRoom(const QSize& canvas);
    void setCross(const QColor& color);
    /// Of a fit; `shownX` and `shownY` are the units on display.
    void setFit(const FittedCurve& curve, const FittedCurve::Unit& shownX, const FittedCurve::Unit& shownY);
    /// The fitted curve at x.
    double calcRegValue(double x) const;
    /// The marker's place on the canvas of the graph it is attached to, in pixels.
    QPointF pixelPos() const;
    /// The left axis's map turned to the scale of this marker's sensor.
    QwtScaleMap ownMap(const QwtScaleMap& yMap) const;
    /// The box of an annotation or floating text round its place `pos` in pixels, picture included.
    QRectF hotBox(const QPointF& pos) const;
    /// The outline of the balloon round `pos` without its tail.
    QRectF balloonRect(const QPointF& pos) const;
    /// The tip of the balloon round `pos`, in pixels.
    QPointF balloonTip(const QPointF& pos) const;
    /// How far `pos` is from the tip of the balloon, in pixels of the canvas; `tip` gets the tip.
    double distToBubbleTip(QPointF pos, QPointF* tip) const;
    /// Moves the tip of the balloon to a point of the canvas.
    void fixBalloonOffset(QPointF newTip);
    /// Whether `point` lies in the tail that a balloon `rect` points at `tip` with.
    static bool isInTriangle(QRectF rect, QPointF tip, QPointF point);

    static constexpr int textDistance = 50; ///< pixels of a text from what it tells about
    /// Position of a text whose place is worked out when it is shown.
    static constexpr double notPlaced = std::numeric_limits<double>::quiet_NaN();
    static constexpr int BUBBLE_MARGIN = 8;
    static constexpr int BUBBLE_IMAGE = 100; ///< longer side of a picture, pixels

    int iSens;                        ///< sensor whose scale places the marker
    int iReg = -1;                    ///< index in Plot::markers of the regression that a cross lies on
    markerType type;                  ///< a cross changes between MARKER_X and MARKER_X_GHOST
    const QString typeName;           ///< untranslated name of the kind it was made as
    QByteArray pictureFile;           ///< JPEG that its picture came from, empty for unknown
    int xSensor = -1;                 ///< what the x axis showed when it was placed, -1 for the time
    QString channel;                  ///< what its curve showed when it was placed, empty for unknown
    bool isPlacedByHand = false;      ///< a text that a person moved
    QPointer<myPlotMarker> connectTo; ///< the partner; null for a text that points at a value
    double pointToXVal = 0;
    double pointToYVal = 0;
    QPointer<myPlotCurve> curve; ///< integral: gives height and colour
    int xOffset = 0;             ///< pixels from the partner, or of an annotation's balloon tip
    int yOffset = 0;
    double linX0 = 0; ///< span of a regression or integral
    double linX1 = 0;
    double a = 0; ///< y = a x² + b x + c
    double b = 0;
    double c = 0;
    double r = 0;
    FittedCurve fit; ///< of a regression; one with its parameters is drawn and told in place of a, b, c
    FittedCurve::Unit fitX; ///< what the axes count in, where the fit is
    FittedCurve::Unit fitY;
    double integral = 0;
    double slope = 0;
    scaleManager* scaler = nullptr;

private:
    QSizeF pictureSize() const;
    QPointF anchor() const;
    QPointF onCanvas(const QPointF& pos, const QRectF& canvas) const;
    void wrapLabel();
    QSizeF textSize() const { return shownText.textSize(); }
    QFont textFont() const;
    double growth() const;

    // myplotmarker_draw.cpp; `map` is that of the marker's own sensor
    void drawPointer(QPainter* painter, const QPointF& pos, const QwtScaleMap& xMap,
                     const QwtScaleMap& map) const;
    void drawTextBox(QPainter* painter, const QPointF& pos) const;
    void drawBalloon(QPainter* painter, const QPointF& pos, const QPointF& tip) const;
    void drawTangent(QPainter* painter, const QPointF& pos, const QwtScaleMap& xMap, const QwtScaleMap& map,
                     const QRectF& canvasRect) const;
    void drawIntegral(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& map,
                      const QRectF& canvasRect) const;
    QPolygonF fitLine(double fromPixel, double toPixel, const QwtScaleMap& xMap,
                      const QwtScaleMap& map) const;
    void drawRegression(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& map,
                        const QRectF& canvasRect, const QColor& ground) const;
    bool isSubjectIn(const QwtScaleMap& xMap, const QwtScaleMap& map, const QRectF& canvas) const;
    void drawCross(QPainter* painter, const QPointF& pos, const QColor& ground) const;

    bool shown = true;
    int textPixels = 14;
    bool bubble = false;
    bool bubPic = false;
    bool locked = false;
    QPixmap pic;
    QSize room;
    QwtText shownText; ///< the label in lines that have room
};

#pragma once

#include <QColor>
#include <QFont>
#include <QList>
#include <QPointer>
#include <QString>
#include <QVector>

#include <memory>
#include <optional>

#include <qwt_plot.h>

#include "graph/myplotmarker.h"
#include "graph/nearcurve.h"
#include "sensors/sensor.h"

class CurvePainter;
class ExpData;
class QMouseEvent;
class QwtInterval;
class QwtLegend;
class QwtPlotGrid;
class QwtPlotPicker;
class ScrollZoomer;
class TimeScaleDraw;
class UserPrompt;
class myPlotCurve;
class myPlotHistogram;
class scaleManager;

enum graphtype
{
    GRAPH_LINE,
    GRAPH_BAR,
    GRAPH_FFT
};

/// The graph widget: all curves share the canvas and the x axis, each is painted through the y scale of its
/// own sensor, and the left axis shows the scale of the active sensor. It reads its data set when it is told
/// to and keeps nothing of it.
class Plot : public QwtPlot
{
    Q_OBJECT

public:
    /// `data` is not owned and outlives the graph. `index` is the logger's slot, or -1 for a graph of the
    /// class.
    Plot(ExpData* data, graphtype type, bool isJunior, int index, QWidget* parent = nullptr);
    ~Plot() override;

    /// Who asks the user; without one a question counts as cancelled. Not owned.
    void setUserPrompt(UserPrompt* prompt) { userPrompt = prompt; }

    // Look, in plot.cpp

    void setGrid(bool shown);
    /// `size` is not used: the language decides on the font. A text without room ends in an ellipsis and is
    /// the axis' tool tip.
    void setAxisTitleAndSize(int axisID, const QString& text, int size);
    void updateTitle(const QString& text);
    /// The title gives way to the busy text until restoreTitle().
    void setTempTitle();
    void restoreTitle();
    void updateXAxisVisibility(bool shown);
    /// `index` is the slot of the chosen graph, -1 for none.
    void setActivePlot(int index);
    /// Canvas colour of a chosen or not chosen graph of a logger.
    void doActivePlotIndicator();
    /// Reapplies the shared colours and grid lines.
    void setDesign();
    /// True before, false after printing.
    void setForPrint(bool tf);
    /// Around the canvas: dark texts for paper, or what can be read on the window's ground.
    void setTextsForPaper(bool tf);
    /// Brings the left edges and the widths of two graphs that stand one over the other together.
    static void alignGraphs(QwtPlot* main, QwtPlot* fft);

    /// White is easier to read on it than black.
    static bool isDark(const QColor& ground);
    /// The window's ground, which titles, axes and legends stand on.
    static void setSurroundings(const QColor& color) { surroundings = color; }
    static void setBackgroundColor(const QColor& color) { backgroundColor = color; }
    static void setActivePlotColor(const QColor& color) { backgroundColorActive = color; }
    static void setMajGridColor(const QColor& color) { majGridColor = color; }
    static void setMinGridColor(const QColor& color) { minGridColor = color; }
    static void setMajGridW(double width) { majGridW = width; }
    static void setMinGridW(double width) { minGridW = width; }
    static QColor getBackgroundColor() { return backgroundColor; }
    static QColor getActivePlotColor() { return backgroundColorActive; }
    static QColor getMajGridColor() { return majGridColor; }
    static QColor getMinGridColor() { return minGridColor; }
    static double getMajGridW() { return majGridW; }
    static double getMinGridW() { return minGridW; }

    // Curves and scales, in plot_update.cpp

    /// Rebuilds the curves of a line graph from the data set; other kinds have none. A curve whose place has
    /// the same channel as before (sensor and group) keeps its mode and colour, unless a file says another.
    void setData();
    /// Brings axes and scales up to the data and repaints; what the live path calls.
    void Update();
    void updateSens(int iSens);
    int getActiveSens() const { return activeSens; }
    /// IDs of the sensors whose curves are not hidden, in curve order.
    QVector<int> getShownSensIDs() const;
    /// The active curve, null where there is none.
    myPlotCurve* getCurve() const { return getCurve(activeSens); }
    myPlotCurve* getCurve(int iSens) const { return curves.value(iSens); }
    QPen getCurvePen(int iSens) const;
    /// Notes how every curve is shown in the data set, for a file.
    void keepCurveModesInData() const;
    /// The active sensor's view range becomes its scale.
    void forceDefaultSetScale();
    int getIndex() const { return index; }

    // Bars, in plot_bar.cpp; for graphs of that type

    /// Makes the legend entries anew from the data set. Colours that the user gave stay.
    void setBarData();
    /// The bars take the active sensor's colour.
    void setBarColor();
    /// Brings the bars up to the data. During a run the window ends at the newest bar, else it begins at the
    /// first; it stays where the user scrolled it to.
    void updateBarData(bool isRun);
    /// Makes `iSens` the shown sensor.
    void updateBarSens(int iSens, bool isRun);

    // Mouse modes, in plot_mouse.cpp

    void enableZoom(bool tf);
    void enableAnnotate(bool tf);
    void enableMarker(bool tf);
    void enableSlope(bool tf);

    // What the user places, in plot_markers.cpp

    /// Takes all markers away.
    void setMarkers();
    /// Takes the markers of a file in place of those shown, and owns them from now on. `list` is in stored
    /// order, a cross or regression directly before its text, with y values in the base unit. A cross or
    /// regression without a text gets a new one; a text without a partner is dropped.
    void setMarkers(const QList<myPlotMarker*>& list);
    /// An annotation at a point of the canvas, and the dialog for it.
    void newAnnotation(const QPointF pos);
    /// A cross with its text on the curve of a sensor, or on the regression at `iReg` of the markers (-1 for
    /// none). Refused beyond the second one.
    void newMarker(int iSens, int iReg, double xVal, double yVal);
    /// Removes a marker together with its partner.
    void removeMarker(myPlotMarker* marker);
    /// The same after a question. Does nothing for the tangent and for a text without a partner.
    void verifyAndRemoveMarker(int mark);
    /// Fixes a cross for good: it disappears, its text stays. Does nothing for any other kind.
    void lockMarker(myPlotMarker* marker, bool needConfirm);
    static QString markerName(int type, bool translate);
    /// The translated name in the form that fits into a sentence.
    static QString markerNameComp(int type);
    /// -1 for an unknown name.
    static int markerIndex(const QString& name, bool translate);

    QList<myPlotMarker*> markers;     ///< owned; in order of creation, pairs side by side, graphic first
    QList<myPlotMarker*> curveMarker; ///< the at most two crosses that can move, in order of creation

    // Analyses between the two crosses, in plot_analysis.cpp; without two they do nothing

    /// After a question cuts the data to the span of the crosses. The views are not updated.
    void doCrop();
    /// Degree 1 or 2.
    void doRegression(int degree);
    void doIntegral();
    /// Texts of what passed photogates; nothing where nothing did.
    void doPhotoSpeed(int iSens);
    void doPhotoAccel(int iSens1, int iSens2);

    const std::unique_ptr<scaleManager> scaler;

public Q_SLOTS:
    void replot() override;
    /// As setDesign(), for a change of the design while the program runs.
    void doUseDesignValues();
    void otherTitleChanged(const QString& text);
    void otherColorChanged(int iSens, const QColor& color);

Q_SIGNALS:
    /// The user picked a curve; the receiver answers with updateSens().
    void changedActiveCurve(int index, int iSens);
    /// A press on the title: this graph's index, or -1 if it was the chosen one.
    void changedActivePlot(int index);
    void titleChanged(const QString& text);
    void colorChanged(int iSens, const QColor& color);
    /// The user wants to see the sensor of a legend entry on the graphs of all groups.
    void shownForAll(int sensorID);
    /// The distance of the two crosses, as a text.
    void twoMarkersUpdated(const QString& statusText);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void drawItems(QPainter* painter, const QRectF& canvasRect,
                   const QwtScaleMap maps[axisCnt]) const override;

private Q_SLOTS:
    void zoomIn(const QRectF& rect);
    void zoomOut();
    void handleLegend(const QVariant& itemInfo, int pos);
    void changeMarkerText(const QString& text, int index);
    void changeBubble(bool tf, int index);
    void setBubbleImage(const QPixmap& pic, int index);

private:
    /// Where a pointer is nearest to a visible curve or regression line.
    struct NearPoint
    {
        int iSens = -1; ///< -1: none in reach
        int iReg = -1;  ///< index of the regression among the markers
        double bestX = 0;
        double bestY = 0;
        double dist = 0; ///< pixels
    };

    /// What an axis was last told to show.
    struct AxisRange
    {
        bool isFixed = false;
        double from = 0;
        double to = 0;
    };

    // plot.cpp
    void createCanvas();
    void createGrid();
    void createLegend();
    void createAxes();
    void createZoomer();
    void watchMouse();
    void setGridShown(bool shown);
    void applyDesign();
    QColor legendColor(int i) const;
    void fitTexts();
    void fitLegend();

    /// How the user sees a curve, to go over to the next one of the same channel.
    struct CurveLook
    {
        QString channel;
        int mode = 0;
        QColor color;
    };

    // plot_update.cpp
    void dropCurves();
    QVector<CurveLook> looks() const;
    QString channelKey(int i) const;
    void addCurve(int i, const CurveLook& before);
    bool isHiddenAtFirst(int i) const;
    void updateT();
    void updateXY();
    void updateXRange();
    void updateScales();
    void updateTimeUnit();
    void renewTicks();
    void leaveXY();
    void refresh();
    void setAxisRange(int axisID, double from, double to);
    void setAxisAuto(int axisID);
    bool outgrewAutoRange() const;
    void setAxisText(int axisID, const QString& text);
    QString timeTitle() const;
    QString sensorTitle(int iSens) const;
    void setXYIndex(int sel);

    // plot_bar.cpp
    void createBars();
    void addBarEntry(int i, const QColor& color);
    void setBarEntryPen(int i);
    int barCount() const;
    double barX(int i) const;
    QPair<double, double> barRange() const;
    void moveBarWindow(const QwtInterval& whole, const QwtInterval& shown);
    void buildBars();
    void barsScrolled(const QRectF& shown);

    // plot_legend.cpp
    void watchLegendItem(myPlotCurve* curve);
    void setCurvePen(int i);
    void designCurve(int i);
    QString legendName(int i) const;
    QColor curveColor(int i) const;
    void handleLegendRight(int item);
    void rightPressLegend(QObject* object, const QMouseEvent* event);
    void openLegendMenu(int item, const QPoint& globalPos);
    void renewAverageName();
    void selectColor(int iSens);

    // plot_mouse.cpp
    void mouseOnTitle(QEvent* event);
    void mouseOnCanvas(QEvent* event);
    void selectColorAt(const QPointF& pos);
    void toggleChosen();
    void changeTitle();
    void setScale();
    void applyUserScale(const SensorPtr& sensor, double newMin, double newMax);
    void setXYGraph(const QPoint& globalPos);
    void chooseXSensor(int sel);

    // plot_markers.cpp
    void addMarker(myPlotMarker* marker);
    void addPair(myPlotMarker* graphic, int xOffset, int yOffset);
    void dropMarker(myPlotMarker* marker);
    void clearMarkers();
    myPlotMarker* subjectOf(myPlotMarker* marker) const;
    QList<myPlotMarker*> pairedUp(const QList<myPlotMarker*>& list);
    void takeStored(myPlotMarker* marker);
    static void setCross(myPlotMarker* marker, markerType kind);
    void skip2ndMarker(myPlotMarker* cross);
    void putOnCurve(myPlotMarker* marker, int iSens) const;
    void followCurves();
    void showMarkersWithCurves();
    void repaintMarkers();

    // plot_textplaces.cpp
    void leanToMiddle(const myPlotMarker* cross, myPlotMarker* text) const;
    QPointF basePixel(const myPlotMarker& text) const;
    QRectF boxAt(const myPlotMarker& text, const QPointF& base, const QPoint& offset) const;
    void findRoom(myPlotMarker* text) const;
    void setFloatingMarkerPosition(myPlotMarker* text);
    void flipTangentText(myPlotMarker* text, double y) const;
    void placeTexts(bool all);
    void addValueText(myPlotMarker* text, int xOffset, int yOffset);

    // plot_markertexts.cpp
    void setPartnerText(myPlotMarker* text);
    void setTexts();
    void setMarkerText(myPlotMarker* text);
    void setRegressionText(myPlotMarker* text, double a, double b, double c, double r);
    void setIntegralText(myPlotMarker* text, double integral);
    void setPhotoSpeedText(myPlotMarker* text);
    void setPhotoAccelText(myPlotMarker* text);
    void setDerivText();
    QString nameOf(int iSens) const;
    QString valueText(int iSens, double value) const;
    QString unitOf(int iSens) const;

    // plot_markermouse.cpp
    void pressMarker(const QPointF& pos);
    bool rightPressMarker(const QMouseEvent* event);
    void doubleClickMarker(const QPointF& pos);
    void dragMarker(const QPointF& pos);
    void releaseMarker();
    void openMarkerMenu(myPlotMarker* marker, const QPoint& globalPos);
    void moveMarker(int iMark, const QPointF& pos);
    void moveMarkerX(myPlotMarker* cross, const QPointF& pos);
    void editMarker(int iMark);
    int isInMarker(const QPointF pos, bool* isTip) const;
    NearPoint isNearCurve(const QPointF& pos, bool regression) const;
    NearPoint isNearCurve(const QPointF& pos, bool regression, int onlyThisSens, double hot) const;
    NearPoint isNearCurveXY(const QPointF& pos) const;
    NearPoint pointByAxes(const QPointF& pos) const;
    static void takeNearer(const std::optional<NearCurve::Hit>& hit, int iSens, int iReg, NearPoint* best);
    void searchRegressions(const QPointF& pos, double hot, NearPoint* best) const;
    NearCurve::Maps mapsOf(int iSens) const;

    // plot_analysis.cpp
    void finishAnalysis(myPlotMarker* result);
    void addPhotogateTexts();
    void newDeriv();
    void dropDeriv();
    void updateSlope(const QPoint pos);
    void showSlope();
    void moveDeriv(int iSens);

    ExpData* const data;
    const graphtype type;
    const int index;
    UserPrompt* userPrompt = nullptr;

    const std::unique_ptr<CurvePainter> columnPainter;
    QVector<myPlotCurve*> curves; ///< one per sensor, in sensor order
    const QFont titleFont;        ///< the largest that titles take
    const QFont axisTitleFont;
    QString axisTexts[axisCnt]; ///< the axis titles in full
    QwtPlotGrid* grid = nullptr;
    QwtPlotPicker* zoomer = nullptr;
    TimeScaleDraw* myTimeScale = nullptr; ///< owned by the bottom axis
    QwtLegend* legendView = nullptr;
    QVector<QPointer<QWidget>> legendItems; ///< legend entries in curve order

    int activeSens = 0;
    int nSens = 0;
    int hasColorimeter = -1; ///< index of the red channel
    int curveWidth = 2;
    int curveWidthAct = 4;

    AxisRange ranges[axisCnt];
    bool xAuto = false;
    bool usingZoom = false;
    double shownXMin = 0; ///< in seconds or sample numbers, as last set
    double shownXMax = 0;
    bool isXYShown = false;

    bool isZoom = false;
    bool isAnnotate = false;
    bool isMarker = false;
    bool isSlope = false;
    bool isActive = false;
    QColor textColor; ///< of titles, axes and legend
    QString realTitle;

    myPlotMarker* slope = nullptr;                ///< the tangent while slope mode is on; owned
    static constexpr int slopeTextDistance = 100; ///< pixels of its text from the curve
    int selectedMarker = -1;                      ///< the marker that is dragged
    bool balloonTip = false;                      ///< it is dragged by the tip of its balloon
    bool hasUnplacedTexts = false;                ///< texts wait for the axes to be known

    std::unique_ptr<myPlotHistogram> hist; ///< of a bar graph, as all in this group
    ScrollZoomer* barZoomer = nullptr;
    double barWidth = 0;
    double barTStep = 1;            ///< distance of two samples in units of the axis
    std::optional<double> barPlace; ///< left edge that the user scrolled to, seconds or sample numbers
    int barsKnown = 0;              ///< samples at the last update
    bool isBarWindowMoving = false;

    bool axesChanged = true; ///< the next refresh() has to lay out the axes too

    static QColor majGridColor;
    static QColor minGridColor;
    static QColor surroundings;
    static QColor backgroundColor;
    static QColor backgroundColorActive;
    static double majGridW;
    static double minGridW;
};

#pragma once

#include <QColor>
#include <QFont>
#include <QMutex>
#include <QPointer>
#include <QString>
#include <QVector>

#include <functional>
#include <memory>

#include <qwt_plot.h>

#include "sensors/sensor.h"

class CurvePainter;
class ExpData;
class QwtLegend;
class QwtPlotGrid;
class QwtPlotPicker;
class TimeScaleDraw;
class UserPrompt;
class myPlotCurve;
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
    /// `size` is not used: the language decides on the font.
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
    /// Brings the left edges and the widths of two graphs that stand one over the other together.
    static void alignGraphs(QwtPlot* main, QwtPlot* fft);

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

    /// Rebuilds the curves of a line graph from the data set; other kinds have none.
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

    // Mouse modes, in plot_mouse.cpp

    void enableZoom(bool tf);
    void enableAnnotate(bool tf);
    void enableMarker(bool tf);
    void enableSlope(bool tf);

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

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void drawItems(QPainter* painter, const QRectF& canvasRect,
                   const QwtScaleMap maps[axisCnt]) const override;

private Q_SLOTS:
    void zoomIn(const QRectF& rect);
    void zoomOut();
    void handleLegend(const QVariant& itemInfo, int pos);

private:
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

    // plot_update.cpp
    void dropCurves();
    void addCurve(int i);
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

    // plot_legend.cpp
    void watchLegendItem(myPlotCurve* curve);
    void setCurvePen(int i);
    void designCurve(int i);
    QString legendName(int i) const;
    QColor curveColor(int i) const;
    void handleLegendRight(int item);
    void selectColor(int iSens);

    // plot_mouse.cpp
    void mouseOnTitle(QEvent* event);
    void mouseOnCanvas(QEvent* event);
    void toggleChosen();
    void changeTitle();
    void setScale();
    void applyUserScale(const SensorPtr& sensor, double newMin, double newMax);
    void setXYGraph(const QPoint& globalPos);
    void chooseXSensor(int sel);
    void forEachSegment(int i, double atPixel, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                        const std::function<void(QPointF, QPointF)>& visit) const;
    void forEachXYSegment(int i, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                          const std::function<void(QPointF, QPointF)>& visit) const;
    int nearCurve(const QPointF& pos, double* distance) const;

    ExpData* const data;
    const graphtype type;
    const int index;
    UserPrompt* userPrompt = nullptr;

    const std::unique_ptr<CurvePainter> columnPainter;
    QVector<myPlotCurve*> curves; ///< one per sensor, in sensor order
    const QFont titleFont;        ///< the largest that titles take
    const QFont axisTitleFont;
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
    QString realTitle;

    bool axesChanged = true;           ///< the next refresh() has to lay out the axes too
    QMutex myMutex{QMutex::Recursive}; ///< a layout inside a replot can ask for the next

    static QColor majGridColor;
    static QColor minGridColor;
    static QColor backgroundColor;
    static QColor backgroundColorActive;
    static double majGridW;
    static double minGridW;
};

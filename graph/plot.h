#pragma once

#include <QColor>
#include <QFont>
#include <QList>
#include <QPen>
#include <QString>
#include <QVector>

#include <functional>
#include <memory>

#include <qwt_plot.h>

#include "graph/graphdesign.h"
#include "graph/myplotmarker.h"
#include "graph/placedmarks.h"

struct Stretch;
class BarKind;
class ExpData;
class GraphAxes;
class GraphCurves;
class GraphDialogs;
class GraphKind;
class GraphLegend;
class GraphMouse;
class MarkerEditor;
class MarkerLayer;
class MarkerMouse;
class PinnedCurves;
class PredictedCurves;
class QwtPlotGrid;
class ReadingLine;
class SlopeTool;
class UserPrompt;
class myPlotCurve;
class scaleManager;
struct GraphParts;
struct KindTraits;
struct PinnedRun;
struct Prediction;
struct Reading;

/// What a person did to one graph alone, as a value.
struct PlotState
{
    PlacedMarks marks;
    QVector<int> modes; ///< of the curves
    QVector<int> outs;  ///< groups that do not count in the average
    int activeSens = 0;
    int xSensor = -1;
    int right = -1;   ///< the channel with a scale on the right
    int standIn = -1; ///< of the active curve, which is on the x axis
    int stoodInFor = 0;
    TextLayout texts;
};

enum graphtype
{
    GRAPH_LINE,
    GRAPH_BAR,
    GRAPH_FFT
};

/// The graph widget: all curves share the canvas and the x axis, each is painted through the y scale of its
/// own sensor, and the left axis shows the scale of the active sensor. It reads its data set when it is told
/// to and keeps nothing of it. The work is done by its parts; this is the face that they have to the window.
class Plot : public QwtPlot
{
    Q_OBJECT

    // Parts; one may use those above it. Curves and markers draw from the scales, so these go last.
public:
    const std::unique_ptr<scaleManager> scaler;

private:
    ExpData& data;
    const int index;
    const KindTraits& traits;
    const std::unique_ptr<GraphAxes> axes;
    const std::unique_ptr<GraphCurves> curves;
    const std::unique_ptr<const GraphParts> parts;
    const std::unique_ptr<MarkerLayer> layer;
    const std::unique_ptr<SlopeTool> slope;
    const std::unique_ptr<MarkerEditor> editor;
    const std::unique_ptr<MarkerMouse> markerMouse;
    const std::unique_ptr<GraphDialogs> dialogs;
    std::unique_ptr<GraphLegend> legendPart; ///< null for a graph that has none
    std::unique_ptr<GraphKind> kind;
    std::unique_ptr<PinnedCurves> pinned;       ///< null until there are some
    std::unique_ptr<PredictedCurves> predicted; ///< null where the kind has none
    std::unique_ptr<ReadingLine> reader;        ///< null unless its mode is on
    BarKind* bars = nullptr;                    ///< the kind, of a bar graph
    std::unique_ptr<GraphMouse> mouse;

public:
    /// `data` is not owned and outlives the graph. `index` is the logger's slot, or -1 for a graph of the
    /// class.
    Plot(ExpData* data, graphtype type, bool isJunior, int index, QWidget* parent = nullptr);
    ~Plot() override;

    /// Who asks the user; without one a question counts as cancelled. Not owned.
    void setUserPrompt(UserPrompt* prompt);
    int getIndex() const { return index; }

    // Look

    void setGrid(bool shown);
    /// `size` is not used: the language decides on the font. A text without room ends in an ellipsis and is
    /// the axis' tool tip.
    void setAxisTitleAndSize(int axisID, const QString& text, int size);
    void updateTitle(const QString& text);
    /// The title gives way to the busy text until restoreTitle().
    void setTempTitle();
    void restoreTitle();
    /// The texts follow the size: were it the other way too, a larger cell would grow at the cost of others.
    QSize sizeHint() const override { return {400, 300}; }
    QSize minimumSizeHint() const override { return {80, 60}; }
    void updateXAxisVisibility(bool shown);
    /// `index` is the slot of the chosen graph, -1 for none.
    void setActivePlot(int index);
    /// Canvas colour of a chosen or not chosen graph of a logger.
    void doActivePlotIndicator();
    /// Reapplies the shared colours and grid lines.
    void setDesign() { doUseDesignValues(); }
    /// True before, false after printing.
    void setForPrint(bool tf);
    /// Around the canvas: dark texts for paper, or what can be read on the window's ground.
    void setTextsForPaper(bool tf);
    /// On paper and in files: of a curve whose samples crowd what can be seen of it, instead of every sample.
    void setThinned(bool tf);
    /// Brings the left edges and the widths of two graphs that stand one over the other together.
    static void alignGraphs(QwtPlot* main, QwtPlot* fft);

    /// White is easier to read on it than black.
    static bool isDark(const QColor& ground) { return GraphDesign::isDark(ground); }
    /// The window's ground, which titles, axes and legends stand on.
    static void setSurroundings(const QColor& color) { GraphDesign::surroundings = color; }
    static void setBackgroundColor(const QColor& color) { GraphDesign::setBackground(color); }
    static void setActivePlotColor(const QColor& color) { GraphDesign::backgroundActive = color; }
    static void setMajGridColor(const QColor& color) { GraphDesign::majGrid = color; }
    static void setMinGridColor(const QColor& color) { GraphDesign::minGrid = color; }
    static void setMajGridW(double width) { GraphDesign::majGridWidth = width; }
    static void setMinGridW(double width) { GraphDesign::minGridWidth = width; }
    static QColor getBackgroundColor() { return GraphDesign::background; }
    static QColor getActivePlotColor() { return GraphDesign::backgroundActive; }
    static QColor getMajGridColor() { return GraphDesign::majGrid; }
    static QColor getMinGridColor() { return GraphDesign::minGrid; }
    static double getMajGridW() { return GraphDesign::majGridWidth; }
    static double getMinGridW() { return GraphDesign::minGridWidth; }

    // Curves and scales

    /// Rebuilds the curves or the bars from the data set. A curve whose place has the
    /// same channel as before (sensor and group) keeps its mode and colour, unless a file says another.
    void setData();
    /// Brings axes and scales up to the data and repaints; what the live path calls.
    void Update();
    void updateSens(int iSens);
    int getActiveSens() const;
    /// IDs of the sensors whose curves are not hidden, in curve order.
    QVector<int> getShownSensIDs() const;
    /// The active curve, null where there is none.
    myPlotCurve* getCurve() const { return getCurve(getActiveSens()); }
    myPlotCurve* getCurve(int iSens) const;
    QPen getCurvePen(int iSens) const;
    /// Notes how every curve is shown in the data set, for a file.
    void keepCurveModesInData() const;
    /// The scale of the next curve that has one of its own stands on the right; after the last, none.
    void showNextRight();
    /// The set has other samples of the same channels, maybe fewer: scales and axes begin anew.
    void followAnew();
    /// Brings the scales up to data that were loaded: ranges fixed by hand hold, all others follow the data.
    void forceDefaultSetScale();

    /// Runs behind the present curves; a graph of another kind has none.
    void setPinned(const QVector<PinnedRun>& runs, const QString& present = QString());

    /// The set has other predictions.
    void showPredictions();
    /// How far the curves are from them may be other than it was; costs little, and repaints what changed.
    void renewDeviations();

    // Bars; other kinds have none

    /// Makes the legend entries anew from the data set. Colours that the user gave stay.
    void setBarData();
    /// The bars take the active sensor's colour.
    void setBarColor();
    /// Brings the bars up to the data. During a run the window ends at the newest bar, else it begins at the
    /// first; it stays where the user scrolled it to.
    void updateBarData(bool isRun);
    /// Makes `iSens` the shown sensor.
    void updateBarSens(int iSens, bool isRun);

    // Mouse modes

    void enableZoom(bool tf);
    void enableAnnotate(bool tf);
    void enableMarker(bool tf);
    void enableSlope(bool tf);
    void enableReading(bool tf);
    /// The pointer is a pen. A graph without samples gets room for a run of `length`, s.
    void enablePredicting(bool tf, double length);
    /// The line at which the graph is read; null unless that mode is on, and for bars.
    ReadingLine* reading() const { return reader.get(); }
    /// Of curves in sight and of pinned runs, at a place of the line and the height of the pointer.
    QVector<Reading> readings(double x, double pixelY) const;

    // What the user places

    /// Takes all markers away, and ends the zoom: another experiment begins.
    void setMarkers();
    /// Takes the markers of a file in place of those shown, and owns them from now on. `list` is in stored
    /// order, a cross or regression directly before its text, with y values in the base unit. A cross or
    /// regression without a text gets a new one; a text without a partner is dropped.
    void setMarkers(const QList<myPlotMarker*>& list);
    PlotState state() const;
    /// What of `wanted` is not as in `present` is brought about.
    void setState(const PlotState& present, const PlotState& wanted);
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

    const QList<myPlotMarker*>& markers;     ///< in order of creation, pairs side by side, graphic first
    const QList<myPlotMarker*>& curveMarker; ///< the at most two crosses that can move, in order of creation

    // Analyses between the two crosses; without two they do nothing

    /// After a question cuts the data to the span of the crosses. The views are not updated.
    void doCrop();
    /// Degree 1 or 2.
    void doRegression(int degree);
    void doIntegral();
    /// What a fit or statistics are of: the curve that both crosses stand on, between them; else all of the
    /// active curve, between the crosses if there are two. Of a graph without curves there is none.
    Stretch stretch() const;
    /// Shows a fit that somebody tries, without a text; one without numbers takes it away.
    void previewFit(const FittedCurve& fit, int iSens, double from, double to);
    /// Puts a fit beside what is there.
    void addFit(const FittedCurve& fit, int iSens, double from, double to);

public Q_SLOTS:
    void replot() override;
    /// As setDesign(), for a change of the design while the program runs.
    void doUseDesignValues();
    void otherTitleChanged(const QString& text) { updateTitle(text); }
    void otherColorChanged(int iSens, const QColor& color);

Q_SIGNALS:
    /// The user picked a curve; the receiver answers with updateSens().
    void changedActiveCurve(int index, int iSens);
    /// A press on the title: this graph's index, or -1 if it was the chosen one.
    void changedActivePlot(int index);
    /// The pointer is here on the canvas, while the graph can be read.
    void pointedAt(const QPointF& pos);
    /// A line was drawn for the active sensor.
    void predictionDrawn(const Prediction& prediction);
    /// A double click on nothing but the ground.
    void enlargeAsked(int index);
    void titleChanged(const QString& text);
    void colorChanged(int iSens, const QColor& color);
    /// The user wants to see the sensor of a legend entry on the graphs of all groups.
    void shownForAll(int sensorID);
    /// A spectrum: a right press on the title, and one on the canvas.
    void putAway();
    void choiceAsked(const QPoint& globalPos);
    /// The distance of the two crosses, as a text; empty when there are no longer two.
    void twoMarkersUpdated(const QString& statusText);
    /// Why the graph does not do what was asked of it.
    void told(const QString& text);
    /// A person begins to change something that can be taken back, and has done it, maybe much later. What
    /// was given up ends too, maybe without a name. A step of samples changes what the set holds.
    void changing(bool isOfSamples = false);
    void changed(const QString& step);
    /// Another experiment is going to be shown: nothing that was done before can be taken back.
    void begunAnew();

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void drawItems(QPainter* painter, const QRectF& canvasRect,
                   const QwtScaleMap maps[axisCnt]) const override;

private:
    void createCanvas();
    void createGrid();
    void createKind(graphtype type);
    void connectLegend();
    void connectMouse();
    void connectDialogs();
    void connectPen();
    void change(const QString& step, const std::function<void()>& how);
    void rotateMode(int i);
    void setRight(int i);
    void applyDesign();
    void fitTexts();
    void pickCurve(const QString& name);
    void toggleChosen();
    void refuseAnalysis();
    void showAnyCurve();
    void setXSensor(int iSens);
    void count(int i, bool tf);
    void showCounted();

    const QFont titleFont; ///< the largest that the title takes
    QwtPlotGrid* grid = nullptr;
    int standIn = -1; ///< active while `stoodInFor` is on the x axis; -1 for none
    int stoodInFor = -1;
    QString realTitle; ///< while the busy text stands in its place
    bool isActive = false;
    bool isSized = false;
};

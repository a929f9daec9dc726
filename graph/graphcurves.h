#pragma once

#include <QColor>
#include <QHash>
#include <QPen>
#include <QSize>
#include <QString>
#include <QVector>

#include <memory>

class CurvePainter;
class ExpData;
class GraphAxes;
class QwtPlot;
class myPlotCurve;
class scaleManager;

/// The curves of one graph, one for each sensor in sensor order, and how they look. On a bar graph they are
/// never drawn: each holds its sensor's place in the legend and its colour.
class GraphCurves
{
public:
    /// None of what is handed in is owned. `index` is below 0 for a graph of the class.
    GraphCurves(QwtPlot& plot, ExpData& data, scaleManager& scaler, GraphAxes& axes, int index);
    ~GraphCurves();

    int size() const { return curves.size(); }
    /// Null outside the list.
    myPlotCurve* at(int i) const { return curves.value(i); }
    myPlotCurve* active() const { return at(activeSens); }
    int activeIndex() const { return activeSens; }
    /// A sensor that the data do not have becomes the first; one whose kind is not shown, the first shown.
    void setActive(int i);

    /// Anew from the data. A channel (sensor and group) and a group of the class keep their mode and colour
    /// until a new run or a file that says another.
    void rebuild();
    /// The same for a bar graph, where colours stay with their places.
    void rebuildEntries();

    /// The sensor that all groups show, which the axis names instead of the legend; else empty.
    QString commonSensor() const;
    /// As the legend names it.
    QString name(int i) const;
    QPen pen(int i) const;
    void setColor(int i, const QColor& color);
    /// Line, points, hidden, line.
    void rotateMode(int i);
    void setMode(int i, int mode);
    /// Pen, symbol and whether it is drawn.
    void design(int i);
    void designAll();
    void designPens();
    /// Of the names in the legend, and the ground that the average is drawn on.
    void setInk(const QColor& ink, const QColor& faint, const QColor& ground);
    /// Groups come and go in a run: the average names how many it is over, and goes when it mixes quantities.
    void renewAverage();
    QVector<int> shownIDs() const;
    /// It is in sight, and its scale is another than that of the active one.
    bool hasOwnScale(int i) const;
    /// Notes how every curve is shown in the data set, for a file.
    void keepModesInData() const;

    /// The time axis is cut into pixel columns once for all curves of a picture, and anew for the next.
    void forgetColumns();

private:
    /// How the user sees a curve, to go over to the next one of the same channel.
    struct Look
    {
        QString channel;
        int mode = 0;
        QColor color;
    };

    void drop();
    void keepLooks();
    const Look* lookOf(int i) const;
    QString channelKey(int i) const;
    void add(int i);
    bool isHiddenAtFirst(int i) const;
    QColor colorOf(int i) const;
    bool isAverage(int i) const;
    bool isOut(int i) const;
    QVector<qreal> dashesOf(int i) const;
    QColor inkOf(int i) const;
    double penWidth(int i) const;
    QSize legendIconSize() const;
    void setPen(int i);
    void setEntryPen(int i);

    QwtPlot& plot;
    ExpData& data;
    scaleManager& scaler;
    GraphAxes& axes;
    const int index;
    const std::unique_ptr<CurvePainter> columnPainter;
    QVector<myPlotCurve*> curves;
    QVector<QString> groups;    ///< of the curves, empty where a curve is not that of a group
    QVector<Look> before;       ///< of the curves that are replaced, by place
    QHash<QString, Look> looks; ///< by channel and by group, since the run began
    int activeSens = 0;
    int width = 2;
    int widthActive = 4;
    QColor ink;
    QColor faint; ///< of hidden curves
    QColor ground{Qt::white};
    bool isLegendOnly = false;
    bool isAverageMixed = false; ///< when it was looked at last
    bool hasAverageLook = false; ///< it becomes one with its first value
};

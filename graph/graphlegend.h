#pragma once

#include <QObject>
#include <QPointer>
#include <QVector>
#include <QWidget>

class ExpData;
class GraphCurves;
class QMouseEvent;
class QwtLegend;
class QwtPlot;

/// The legend of a graph and what the mouse does on it.
class GraphLegend : public QObject
{
    Q_OBJECT

public:
    /// With `isStyled` a right press changes how a curve is shown. None of the three is owned.
    GraphLegend(QwtPlot& plot, const ExpData& data, const GraphCurves& curves, bool isStyled);

    /// After the curves were made anew.
    void watchEntries();
    /// A font for the present size and names.
    void fit();

    bool eventFilter(QObject* object, QEvent* event) override;

Q_SIGNALS:
    /// A left click on the entry with this name.
    void picked(const QString& name);
    /// A right press on an entry.
    void pressedRight(int i);
    /// The user wants to see a sensor on the graphs of all groups.
    void shownForAll(int sensorID);
    /// A group of the class is to count in the average, or not.
    void countChosen(int i, bool isCounted);
    /// A curve's scale is to stand on the right, or no longer.
    void rightChosen(int i, bool isRight);

private:
    void rightPress(QObject* object, const QMouseEvent* event);
    void openMenu(int i, const QPoint& globalPos);

    QwtPlot& plot;
    const ExpData& data;
    const GraphCurves& curves;
    const bool isStyled;
    QwtLegend* const view;            ///< owned by the graph
    QVector<QPointer<QWidget>> items; ///< in curve order
};

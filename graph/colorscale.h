#pragma once

#include <QColor>
#include <QVector>

#include <qwt_color_map.h>
#include <qwt_interval.h>
#include <qwt_plot.h>

class Sensor;

/// From dark blue over cyan and yellow to dark red.
class ColorMap : public QwtLinearColorMap
{
public:
    ColorMap();
};

/// The colours of the values on the map with their range, as a bar; and the colours of curves.
class ColorScale : public QwtPlot
{
    Q_OBJECT

public:
    explicit ColorScale(QWidget* parent = nullptr);

    /// The bar shows this sensor in the range that its map has, which may be a reversed one.
    void setSensor(Sensor* sensor);
    /// The range where more than one group is shown.
    void setInterval(const QwtInterval& range);
    QwtInterval getInterval() const { return interval; }
    /// Asks for another range and gives it to the sensor's map and axis; false if it was not changed.
    bool setRangeMenu();

    /// Colours are held to this many steps of the range.
    static constexpr int bins = 120;
    /// The colour in the middle of a step; what lies below or above the range has the first or the last.
    static QColor binColor(int bin);

    /// The colour of the curve at `index`; after twelve they repeat, after eight in the palette of
    /// colour-blind viewers.
    static QColor myColors(int index);
    /// The average of the class: dark on a light casing, so that it is seen from afar among all others, and
    /// the other way round on a dark ground.
    static QColor averageColor(const QColor& ground = Qt::white);
    static QColor averageCasing(const QColor& ground = Qt::white);

    /// Eight colours that stay apart in protan, deutan and tritan vision, in place of the usual ones. Graphs
    /// take it up when their design is set.
    static void setColorBlindPalette(bool on);
    static bool isColorBlindPalette();
    static constexpr int colorBlindColors = 8;

    /// How the curve at `index` of curves in these colours is drawn, so that none is taken for one before it:
    /// no dashes for the first of a colour, then a pattern in widths of the pen.
    static QVector<qreal> dashes(const QVector<QColor>& colors, int index);
    /// The same for data with a colorimeter, whose red, green and blue channels stand in a row from
    /// `colorimeterAt` and take their own colours.
    static QColor myColorsForColorimeter(int index, int colorimeterAt);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// A right click on the bar; `pos` on the screen.
    void scaleNeedsSensorMenu(QPoint pos);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showRange();

    QwtInterval interval{4.0, 15.0};
    Sensor* sensor = nullptr; ///< not owned; only while it is shown
};

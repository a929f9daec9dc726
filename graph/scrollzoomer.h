#pragma once

#include <QPointer>

#include <qwt_plot_zoomer.h>

class ScrollBar;

/// Shows a window of a larger plot and scroll bars at the top and the right of the canvas to move it. The
/// window is set by zoom() and setZoomBase(); a mouse press on the canvas does not zoom.
class ScrollZoomer : public QwtPlotZoomer
{
    Q_OBJECT

public:
    explicit ScrollZoomer(QWidget* canvas);

    /// When the bar of a direction shows; as needed at the start.
    void setScrollBarMode(Qt::Orientation o, Qt::ScrollBarPolicy mode);
    /// Null until the bar was needed for the first time.
    ScrollBar* scrollBar(Qt::Orientation o) const;
    /// Fills the gap between two bars; owned by the canvas from then on.
    void setCornerWidget(QWidget* widget);

    bool eventFilter(QObject* object, QEvent* event) override;

protected:
    void rescale() override;

private Q_SLOTS:
    void scrollBarMoved(Qt::Orientation o, double min, double max);

private:
    struct ScrollData
    {
        QPointer<ScrollBar> bar;
        Qt::ScrollBarPolicy mode = Qt::ScrollBarAsNeeded;
    };

    ScrollData& scrollData(Qt::Orientation o) { return o == Qt::Horizontal ? horizontal : vertical; }
    bool needScrollBar(Qt::Orientation o) const;
    void enterZoom();
    void leaveZoom();
    void updateScrollBars();
    void updateScrollBar(Qt::Orientation o);
    void showScrollBar(Qt::Orientation o, bool shown);
    void layoutScrollBars(const QRect& area);

    ScrollData horizontal;
    ScrollData vertical;
    QPointer<QWidget> cornerWidget;
    bool inZoom = false;
    bool alignCanvas[4] = {}; ///< the layout's flags from before the zoom, by axis
};

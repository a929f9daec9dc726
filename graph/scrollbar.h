#pragma once

#include <QScrollBar>

/// A scroll bar over a range of numbers: it shows which window of a base range is in view.
class ScrollBar : public QScrollBar
{
    Q_OBJECT

public:
    explicit ScrollBar(Qt::Orientation orientation, QWidget* parent = nullptr);

    /// An inverted bar belongs to an axis that runs against the usual direction.
    void setInverted(bool on);
    bool isInverted() const { return inverted; }
    double minBase() const { return baseMin; }
    double maxBase() const { return baseMax; }
    double minWindow() const { return windowAt(value()).first; }
    double maxWindow() const { return windowAt(value()).second; }

public Q_SLOTS:
    /// The whole range; the window stays where it is.
    void setBase(double min, double max);
    /// The window in view. Emits nothing.
    void moveSlider(double min, double max);

Q_SIGNALS:
    /// The user drags the slider; the window it stands for.
    void sliderMoved(Qt::Orientation orientation, double min, double max);
    void valueChanged(Qt::Orientation orientation, double min, double max);

private:
    QPair<double, double> windowAt(int position) const;
    void catchValueChanged(int position);
    void catchSliderMoved(int position);

    bool inverted = false;
    double baseMin = 0;
    double baseMax = 1;
};

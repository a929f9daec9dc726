#pragma once

#include <QFont>
#include <QPixmap>
#include <QString>
#include <QWidget>

#include "instruments/tidyscale.h"

/// A widget with a background that is painted once for each size and look.
class WidgetWithBackground : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    /// The background is painted anew, and the widget.
    void updateWithBackground();

protected:
    /// Of a property that is seen.
    template<class Value> void change(Value* property, const Value& to)
    {
        if (*property == to)
            return;
        *property = to;
        updateWithBackground();
    }
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    virtual void paintBackground(QPainter& painter) = 0;
    const QPixmap& background();

private:
    QPixmap pixmap;
    bool isStale = true;
};

/// An instrument that shows one value on a tidy scale.
class AbstractMeter : public WidgetWithBackground
{
    Q_OBJECT

public:
    using WidgetWithBackground::WidgetWithBackground;

    /// Ignored unless the maximum stays above the minimum.
    void setMinimum(double wanted);
    void setMaximum(double wanted);
    /// Both at once; ignored as they are.
    void setRange(double newMinimum, double newMaximum);
    void setValue(double newValue);
    void setPrefix(const QString& text);
    void setSuffix(const QString& text);
    double getValue() const { return value; }
    const TidyScale& scale() const { return scaled; }
    /// The value with what stands around it; "----" for one that is no number.
    virtual QString valueText() const = 0;

protected:
    double minimum = 0;
    double maximum = 1;
    TidyScale scaled;
    double value = 0;
    double nominal = 0.25;
    double critical = 0.75;
    double valueOffset = 0; ///< of the text, downwards; 0 for no text
    double digitOffset = 0; ///< of the numbers of the scale, to the right; 0 for none
    QFont digitFont;
    QFont valueFont;
    QString prefix;
    QString suffix;
};

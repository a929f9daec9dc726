#pragma once

#include <QCoreApplication>
#include <QWidget>

#include "classroom/groupreadings.h"

/// A group's value in large digits: in one line above what its cell shows, or as large as there is room. It
/// paints only when something else is to be told.
class GroupTile : public QWidget
{
    Q_OBJECT

public:
    enum class Form
    {
        Line, ///< value, and what fits of the rest
        Large ///< with the group's name; to be read from the back of the room
    };

    explicit GroupTile(Form form, QWidget* parent = nullptr);

    void setReading(const GroupReading& newReading);
    const GroupReading& reading() const { return told; }
    /// What is told beside the value: rate, losses, age, link and battery.
    QStringList details() const;
    /// Of the digits that a large one of this size can show, at most.
    static int digitPixels(const QSize& size, int characters);

Q_SIGNALS:
    void pressed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    struct Look;

    Look look() const;
    void paintLine(QPainter* painter) const;
    void paintLarge(QPainter* painter) const;
    static double paintDigits(QPainter* painter, const QFont& font, const QString& digits, double right,
                              double baseline);
    static double widthOf(const QFont& font, const QString& digits);

    const Form form;
    GroupReading told;
};

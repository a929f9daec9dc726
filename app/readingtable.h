#pragma once

#include <QString>
#include <QVector>
#include <QWidget>

#include "graph/readingline.h"

/// What the curves have at one place, as a table over the graphs: group, sensor, value and unit. It takes no
/// press and hides nothing that is not below it.
class ReadingTable : public QWidget
{
    Q_OBJECT

public:
    explicit ReadingTable(QWidget* parent);

    /// `place` is where they are read, `kind` how values come about.
    void show(const QString& place, const QString& kind, const QVector<Reading>& readings);
    /// As lines, a tab between the cells.
    QString text() const;
    /// Beside `line`, a point of the parent, at the side that has room.
    void putBeside(const QPoint& line);

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    enum Column
    {
        Group,
        Name,
        Value,
        Unit,
        columnCount
    };
    QString cell(int row, int column) const;
    QRect room() const;
    void measure();

    QString place;
    QString kind;
    QVector<Reading> rows;
    int widths[columnCount] = {};
    int rowsOfBlock = 0; ///< more stand beside
};

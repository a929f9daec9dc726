#include "app/readingtable.h"

#include "graph/graphdesign.h"

#include <QEvent>
#include <QMainWindow>
#include <QPainter>
#include <QStringList>

#include <algorithm>

namespace {

constexpr int tableMargin = 6; // pixels round the table
constexpr int tableGap = 10;   // between columns
constexpr int swatch = 12;     // of a curve's colour
constexpr int rounding = 2;    // pixels that a text may be wider than it says
constexpr int besideLine = 8;  // pixels
constexpr int longest = 16;    // heights of a text, for group and sensor

bool isSame(const Reading& a, const Reading& b)
{
    return a.group == b.group && a.name == b.name && a.value == b.value && a.unit == b.unit &&
           a.color == b.color && a.isPinned == b.isPinned;
}

} // namespace

ReadingTable::ReadingTable(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("readingTable"));
    setAccessibleName(tr("Values of all curves"));
    // It is not called opaque, though it is: below such a widget Qt forgets to paint it again when a canvas
    // gets another size.
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void ReadingTable::show(const QString& newPlace, const QString& newKind, const QVector<Reading>& readings)
{
    const bool isOld = place == newPlace && kind == newKind &&
                       std::equal(rows.cbegin(), rows.cend(), readings.cbegin(), readings.cend(), isSame);
    if (!isOld) {
        place = newPlace;
        kind = newKind;
        rows = readings;
        measure();
        setAccessibleDescription(text());
        update();
    }
    setVisible(true);
}

/// A group's name stands where its rows begin.
QString ReadingTable::cell(int row, int column) const
{
    const Reading& reading = rows.at(row);
    const bool isBegun = row % qMax(1, rowsOfBlock) > 0 && rows.at(row - 1).group == reading.group;
    switch (column) {
    case Group:
        return isBegun ? QString() : reading.group;
    case Name:
        return reading.isPinned ? QStringLiteral("– ") + reading.name : reading.name;
    case Value:
        return reading.value.isEmpty() ? QStringLiteral("–") : reading.value;
    default:
        return reading.unit;
    }
}

QString ReadingTable::text() const
{
    QStringList lines{place};
    for (const Reading& row : rows)
        lines.append(QStringList{row.group, row.name, row.value, row.unit}.join(QLatin1Char('\t')));
    lines.append(kind);
    return lines.join(QLatin1Char('\n'));
}

/// Toolbars and status bar stay free.
QRect ReadingTable::room() const
{
    const auto* const window = qobject_cast<const QMainWindow*>(parentWidget());
    return window && window->centralWidget() ? window->centralWidget()->geometry() : parentWidget()->rect();
}

void ReadingTable::measure()
{
    const QFontMetrics metrics(font());
    const int height = metrics.height();
    const int free = room().height() - 2 * tableMargin - 2 * height;
    rowsOfBlock = qBound(1, free / height, qMax(1, rows.size()));
    const int blocks = qMax(1, (rows.size() + rowsOfBlock - 1) / rowsOfBlock);
    int blockWidth = swatch + tableGap;
    for (int column = 0; column < columnCount; ++column) {
        widths[column] = 0;
        for (int row = 0; row < rows.size(); ++row)
            widths[column] = qMax(widths[column], metrics.horizontalAdvance(cell(row, column)));
        if (column == Group || column == Name)
            widths[column] = qMin(widths[column], longest * height);
        if (widths[column] > 0)
            widths[column] += rounding;
        blockWidth += widths[column] > 0 ? widths[column] + tableGap : 0;
    }
    const int lines = qMax(metrics.horizontalAdvance(place), metrics.horizontalAdvance(kind));
    resize(2 * tableMargin + qMax(lines, blocks * blockWidth - tableGap),
           2 * tableMargin + (rowsOfBlock + 2) * height);
}

void ReadingTable::putBeside(const QPoint& line)
{
    const QRect free = room();
    const bool isRight = line.x() + besideLine + width() <= free.right();
    const int left = isRight ? line.x() + besideLine : line.x() - besideLine - width();
    const int lowest = qMax(free.top(), free.bottom() + 1 - height());
    move(qMax(free.left(), left), qBound(free.top(), line.y() - height() / 2, lowest));
    raise();
}

void ReadingTable::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        measure();
}

void ReadingTable::paintEvent(QPaintEvent*)
{
    const QColor ground = GraphDesign::background;
    const QColor ink = GraphDesign::inkOn(ground);
    const QFontMetrics metrics(font());
    const int height = metrics.height();
    QPainter painter(this);
    painter.fillRect(rect(), ground);
    painter.setPen(GraphDesign::mixed(ink, ground, 0.5));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    painter.setPen(ink);
    QFont bold = font();
    bold.setBold(true);
    painter.setFont(bold);
    painter.drawText(tableMargin, tableMargin + metrics.ascent(), place);
    painter.setFont(font());
    int blockWidth = swatch + tableGap;
    for (const int width : widths)
        blockWidth += width > 0 ? width + tableGap : 0;
    for (int row = 0; row < rows.size(); ++row) {
        int x = tableMargin + row / rowsOfBlock * blockWidth;
        const int top = tableMargin + (row % rowsOfBlock + 1) * height;
        const int thick = qMax(2, height / 6);
        painter.fillRect(x, top + height / 2 - thick / 2, swatch, thick,
                         rows.at(row).isPinned ? GraphDesign::mixed(rows.at(row).color, ground, 0.5)
                                               : rows.at(row).color);
        x += swatch + tableGap;
        for (int column = 0; column < columnCount; ++column) {
            const int align = column == Value ? Qt::AlignRight : Qt::AlignLeft;
            painter.drawText(QRect(x, top, widths[column], height), align | Qt::AlignVCenter,
                             metrics.elidedText(cell(row, column), Qt::ElideRight, widths[column]));
            x += widths[column] > 0 ? widths[column] + tableGap : 0;
        }
    }
    painter.setPen(GraphDesign::faintOn(ground));
    painter.drawText(tableMargin, tableMargin + (rowsOfBlock + 1) * height + metrics.ascent(), kind);
}

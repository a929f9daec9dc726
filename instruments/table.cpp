#include "instruments/table.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>

#include <algorithm>

#include "data/expdata.h"
#include "graph/graphdesign.h"

namespace {

constexpr int msOfPicture = 100;
constexpr int besideText = 16; // pixels
const QString chosenMark = QStringLiteral(" *");
const QString widestNumber = QStringLiteral("-00000.00");

} // namespace

Table::Table(ExpData* data, int index, QWidget* parent)
    : QTableView(parent)
    , set(data)
    , index(index)
    , rows(new TableModel(data, this))
{
    setObjectName(QStringLiteral("table"));
    setAccessibleName(tr("Table of logger %1").arg(index + 1));
    setModel(rows);
    setWordWrap(false);
    setVerticalScrollMode(ScrollPerItem);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setMinimumSectionSize(1);
    horizontalHeader()->setHighlightSections(false);
    pace.setSingleShot(true);
    pace.setInterval(msOfPicture);
    connect(&pace, &QTimer::timeout, this, &Table::catchUp);
    connect(rows, &TableModel::refused, this, &Table::refused);
    connect(rows, &TableModel::typed, this, [this](int iSens, int row, double value) {
        Q_EMIT typed(this->index, iSens, row, value);
        Q_EMIT tableEdited();
    });
    changeTitleColor();
    setData();
}

/// Other values of as many samples are read where the person was.
void Table::setData()
{
    isDue = false;
    const bool isAlike = known == rows->samples();
    const QModelIndex at = currentIndex();
    const QPoint seen(horizontalScrollBar()->value(), verticalScrollBar()->value());
    known = rows->samples();
    rows->reset();
    fitColumns();
    if (isAlike) {
        updateGeometries();
        setCurrentIndex(rows->index(at.row(), at.column()));
        horizontalScrollBar()->setValue(seen.x());
        verticalScrollBar()->setValue(seen.y());
    }
    rows->setMarked(rowsOf(marks));
}

// A table out of sight catches up when it is shown.
void Table::follow()
{
    isDue = true;
    if (isVisible() && !pace.isActive())
        pace.start();
}

void Table::catchUp()
{
    if (!isDue || !isVisible())
        return;
    isDue = false;
    const bool isAtEnd = isEndSeen();
    const int before = rows->columnCount();
    rows->follow();
    if (before != rows->columnCount())
        fitColumns();
    if (isAtEnd)
        showEnd();
    rows->setMarked(rowsOf(marks));
}

void Table::showEvent(QShowEvent* event)
{
    QTableView::showEvent(event);
    fitRows();
    catchUp();
    if (!set->finalData && set->getXSize() > 0)
        showEnd(); // what a run brings
}

/// Who has scrolled away from the newest samples reads others.
bool Table::isEndSeen() const
{
    const int lowest = rowAt(viewport()->height() - 1);
    return lowest < 0 || lowest >= known - 1;
}

void Table::showEnd()
{
    known = rows->samples();
    updateGeometries(); // the scroll bar knows of new rows only later
    if (known > 0)
        scrollTo(rows->index(known - 1, std::max(0, columnAt(0))), PositionAtBottom);
}

void Table::resizeEvent(QResizeEvent* event)
{
    QTableView::resizeEvent(event);
    fitRows();
}

// Read from the back of the room where the table is large.
void Table::fitRows()
{
    constexpr double rowOfText = 1.9;
    constexpr int smallest = 12;
    const int pixels = std::max(smallest, GraphFonts::textPixels(height()));
    if (textPixels == pixels)
        return;
    textPixels = pixels;
    changeTitleColor();
    verticalHeader()->setDefaultSectionSize(int(rowOfText * pixels));
    fitColumns();
}

void Table::fitColumns()
{
    const QFontMetrics metrics(GraphFonts::inPixels(font(), textPixels));
    for (int column = 0; column < rows->columnCount(); ++column) {
        const QString header = rows->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        int width = metrics.horizontalAdvance(widestNumber);
        for (const QString& line : header.split(QLatin1Char('\n')))
            width = std::max(width, metrics.horizontalAdvance(line));
        setColumnWidth(column, width + besideText);
    }
}

QVector<int> Table::rowsOf(const QVector<double>& times) const
{
    QVector<int> list;
    for (const double time : times)
        list.append(rows->rowAt(time));
    return list;
}

void Table::markTimes(const QVector<double>& times)
{
    if (marks == times)
        return;
    // Of two the one that was moved.
    const QVector<int> marked = rowsOf(times);
    int shown = marked.value(marked.size() - 1, -1);
    if (marks.size() == times.size() && !times.isEmpty() && marks.last() == times.last())
        shown = marked.first();
    marks = times;
    rows->setMarked(marked);
    if (shown >= 0)
        scrollTo(rows->index(shown, qMax(0, columnAt(0))));
}

// --- Title and colours ---

void Table::setTitle(ClickableLabel* label)
{
    title = label;
    doActiveTableIndicator();
}

void Table::setActiveTable(int id)
{
    isActive = id == index;
    doActiveTableIndicator();
}

void Table::doActiveTableIndicator()
{
    if (!title)
        return;
    QString text = title->text();
    const bool hasMark = text.endsWith(chosenMark);
    if (isActive && index >= 0 && !hasMark)
        title->setText(text + chosenMark);
    else if (!isActive && hasMark)
        title->setText(text.left(text.size() - chosenMark.size()));
}

void Table::changeTitleColor()
{
    const QColor color = TableDesign::getTitleColor();
    const QColor ink = GraphDesign::inkOn(color);
    const QString rgb = QStringLiteral("rgb(%1,%2,%3)");
    setStyleSheet(QStringLiteral("QHeaderView::section{background-color:%1;color:%2}"
                                 "QTableView{background-color:transparent;}"
                                 "QTableView,QHeaderView{font-size:%3px;}"
                                 "QAbstractScrollArea::corner{background:transparent;border:none;}")
                      .arg(rgb.arg(color.red()).arg(color.green()).arg(color.blue()),
                           rgb.arg(ink.red()).arg(ink.green()).arg(ink.blue()))
                      .arg(textPixels));
}

void Table::setDesign()
{
    changeTitleColor();
    setData();
}

// --- Clipboard ---

void Table::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy))
        copy();
    else
        QTableView::keyPressEvent(event);
}

QString Table::copiedText() const
{
    const QItemSelection chosen = selectionModel()->selection();
    QItemSelectionRange range(rows->index(0, 0),
                              rows->index(std::max(0, rows->samples() - 1), rows->columnCount() - 1));
    if (!chosen.isEmpty())
        range = QItemSelectionRange(rows->index(chosen.first().top(), chosen.first().left()),
                                    rows->index(chosen.first().bottom(), chosen.first().right()));
    QString text;
    const auto add = [&](const QString& cell, int column) {
        text += QString(cell).replace(QLatin1Char('\n'), QLatin1Char(' ')) +
                QLatin1Char(column < range.right() ? '\t' : '\n');
    };
    for (int column = range.left(); column <= range.right(); ++column)
        add(rows->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString(), column);
    for (int row = range.top(); row <= std::min(range.bottom(), rows->samples() - 1); ++row) {
        for (int column = range.left(); column <= range.right(); ++column)
            add(rows->index(row, column).data().toString(), column);
    }
    return text;
}

void Table::copy() const
{
    QGuiApplication::clipboard()->setText(copiedText());
}

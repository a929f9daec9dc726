#include "app/resulttable.h"

#include "common/common.h"
#include "common/userprompt.h"
#include "persistence/readwrite.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QHeaderView>
#include <QTableWidget>

#include <cmath>

QString ResultTable::number(double value)
{
    constexpr int digits = 8;
    if (!std::isfinite(value))
        return {};
    QString text = QString::number(value, 'g', digits);
    if (Common::myToString(0.5, 'f', 1).contains(QLatin1Char(',')))
        text.replace(QLatin1Char('.'), QLatin1Char(','));
    return text;
}

void ResultTable::show(QTableWidget* table) const
{
    table->clear();
    table->clearSpans();
    table->setColumnCount(header.size());
    table->setRowCount(rows.size());
    table->setHorizontalHeaderLabels(header);
    for (int row = 0; row < rows.size(); ++row) {
        for (int column = 0; column < rows[row].size(); ++column)
            table->setItem(row, column, new QTableWidgetItem(rows[row][column]));
        if (rows[row].size() < header.size() && !rows[row].isEmpty()) // the last text has the rest of the row
            table->setSpan(row, rows[row].size() - 1, 1, header.size() - rows[row].size() + 1);
    }
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table->horizontalHeader()->setStretchLastSection(true);
}

void ResultTable::copy() const
{
    QString text = header.join(QLatin1Char('\t')) + QLatin1Char('\n');
    for (const QStringList& row : rows)
        text += row.join(QLatin1Char('\t')) + QLatin1Char('\n');
    QGuiApplication::clipboard()->setText(text);
}

void ResultTable::save(QWidget* parent, UserPrompt* prompt, const QString& name) const
{
    const QString title = QCoreApplication::translate("ResultTable", "Export the table");
    const QString file =
        prompt->saveFile(parent, title, ReadWrite::getDataPath(name),
                         QCoreApplication::translate("ResultTable", "Table (*.csv)"), nullptr);
    QString reason;
    if (!file.isEmpty() && !ReadWrite::exportTable(file, QVector<QStringList>{header} + rows, &reason))
        prompt->warning(parent, title, reason);
}

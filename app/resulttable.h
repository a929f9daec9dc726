#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

class QTableWidget;
class QWidget;
class UserPrompt;

/// Results in rows and columns, to be read, copied and exported.
struct ResultTable
{
    QStringList header;
    QVector<QStringList> rows;

    /// For a spreadsheet: with the language's decimal sign and nothing else; empty for what is no number.
    static QString number(double value);
    void show(QTableWidget* table) const;
    /// Columns parted by tabs, the header first.
    void copy() const;
    /// Asks for a file and writes it; a failure is told in a box.
    void save(QWidget* parent, UserPrompt* prompt, const QString& name) const;
};

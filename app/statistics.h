#pragma once

#include <QDialog>
#include <QVector>

#include "app/resulttable.h"

class QCheckBox;
class QGridLayout;
class QLabel;
class QPushButton;
class QTableWidget;
class QWidget;
class UserPrompt;
struct RangeStatistics;
struct Subject;

/// Minimum, average and the like of one channel or of those of all groups, over a range. They can be copied
/// as a text and exported.
class statistics : public QDialog
{
    Q_OBJECT

public:
    /// `prompt` asks for the file of an export; not owned.
    explicit statistics(UserPrompt* prompt, QWidget* parent = nullptr);

    /// Values in the unit on display; `rate` is the rate in words, `range` that of the times, empty for all.
    void update(const QString& sensName, const RangeStatistics& values, const QString& rate,
                const QString& range);
    /// What stands in place of it for all groups.
    void setGroups(const ResultTable& told, const ResultTable& numbers);

    /// One row for each, in words and as pure numbers.
    static ResultTable told(const QVector<Subject>& subjects, const QVector<RangeStatistics>& values);
    static ResultTable numbers(const QVector<Subject>& subjects, const QVector<RangeStatistics>& values);

private:
    void addField(QGridLayout* grid, const QString& label, const char* name);
    void createButtons(QWidget* parent);
    void showForAll(bool tf);
    void copy() const;
    void save();

    UserPrompt* const prompt;
    QLabel* title;
    QLabel* rangeText;
    QWidget* one;
    QCheckBox* forAll;
    QTableWidget* table;
    QVector<QLabel*> labels;
    QVector<QLabel*> values;
    ResultTable ofOne;
    ResultTable ofGroups;
};

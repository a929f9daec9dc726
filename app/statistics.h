#pragma once

#include <QDialog>
#include <QVector>

class QGridLayout;
class QLabel;

/// Minimum, average and the like of one channel, which can be copied as a text.
class statistics : public QDialog
{
    Q_OBJECT

public:
    explicit statistics(QWidget* parent = nullptr);

    /// Values in the unit on display; `rate` is the rate in words.
    void update(const QString& sensName, double min, double max, double avg, double stdv, int nSamp,
                const QString& rate);

private:
    void addField(QGridLayout* grid, const QString& label, const char* name);
    void copy() const;

    QLabel* title;
    QVector<QLabel*> labels;
    QVector<QLabel*> values;
};

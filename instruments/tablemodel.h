#pragma once

#include <QAbstractTableModel>

class ExpData;

/// The samples of a data set as a table: a row for each sample, a column for the time or the number and one
/// for each channel. Nothing of them is kept here. There are spare rows below the last sample.
class TableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    static constexpr int EMPTY_TABLE_SIZE = 50;
    static constexpr int spareRows = 5;

    /// Not owned.
    explicit TableModel(ExpData* data, QObject* parent = nullptr);

    /// Everything anew.
    void reset();
    /// Rows that came, and values in those that there were; anew when rows or channels went.
    void follow();
    /// The row of the sample nearest to a time, -1 without any.
    int rowAt(double time) const;
    int samples() const;
    /// Rows that stand out.
    void setMarked(const QVector<int>& rows);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// A number in the user's language and unit. What is none, or in a row without a sample, is refused.
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

Q_SIGNALS:
    /// A person has typed another value, in base units; the receiver puts it into the set.
    void typed(int iSens, int row, double value);
    void refused(const QString& why);

private:
    QString timeText(int row) const;
    QString valueText(int iSens, int row) const;
    bool hasSample(int iSens, int row) const;

    ExpData* const set;
    QVector<int> marked;
    int rows = 0;
    int channels = 0;
};

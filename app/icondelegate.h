#pragma once

#include <QStyledItemDelegate>

/// Rows of a list that shows icons only: each a little higher than its icon, which stands in the middle.
class IconDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit IconDelegate(int iconDim, QObject* parent = nullptr);

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

private:
    int iconDim;
};

#pragma once

#include <QStyledItemDelegate>

/// Rows of an opened list: the icon, and beside it the words that the closed list has as its tip.
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

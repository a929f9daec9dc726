#include "app/icondelegate.h"

IconDelegate::IconDelegate(int iconDim, QObject* parent)
    : QStyledItemDelegate(parent)
    , iconDim(iconDim)
{
}

QSize IconDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const
{
    return {iconDim, iconDim * 5 / 4};
}

void IconDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    // An icon stands in the middle of its decoration, and that begins at the left edge of the row.
    option->decorationSize.setWidth((option->rect.width() + iconDim) / 2 + 5);
}

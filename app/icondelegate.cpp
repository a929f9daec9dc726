#include "app/icondelegate.h"

#include <QFontMetrics>

namespace {
constexpr int margin = 8;
constexpr double wordScale = 1.25; // large pictures, words that go with them

QFont larger(QFont font)
{
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * wordScale);
    else
        font.setPixelSize(int(font.pixelSize() * wordScale));
    return font;
}
} // namespace

IconDelegate::IconDelegate(int iconDim, QObject* parent)
    : QStyledItemDelegate(parent)
    , iconDim(iconDim)
{
}

QSize IconDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const QFontMetrics metrics(larger(option.font));
    const int words = metrics.horizontalAdvance(index.data(Qt::ToolTipRole).toString());
    return {iconDim + words + 3 * margin, iconDim * 9 / 8};
}

void IconDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    // The item itself has no text: the closed list is a picture.
    option->text = index.data(Qt::ToolTipRole).toString();
    option->font = larger(option->font);
    option->features |= QStyleOptionViewItem::HasDisplay;
    option->decorationSize = QSize(iconDim, iconDim);
    option->decorationAlignment = Qt::AlignCenter;
    option->displayAlignment = Qt::AlignLeft | Qt::AlignVCenter;
}

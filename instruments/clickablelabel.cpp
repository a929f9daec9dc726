#include "instruments/clickablelabel.h"

#include <QPainter>
#include <QStyle>

#include "graph/graphdesign.h"

ClickableLabel::ClickableLabel(int id, const QString& text, QWidget* parent)
    : QLabel(text, parent)
    , id(id)
{
}

void ClickableLabel::mousePressEvent(QMouseEvent* /*event*/)
{
    Q_EMIT clicked(id);
}

void ClickableLabel::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setFont(GraphFonts::fitted(font(), text(), width()));
    const QString shown = painter.fontMetrics().elidedText(text(), Qt::ElideRight, width());
    style()->drawItemText(&painter, rect(), int(alignment()), palette(), isEnabled(), shown,
                          foregroundRole());
}

#include "instruments/statusline.h"

#include <QEvent>
#include <QFontMetrics>
#include <QPainter>

namespace {

constexpr int margin = 4;
constexpr int between = 12; ///< pixels from what is going on to how the last thing ended
constexpr int leastWidth = 80;
constexpr int msToRead = 10000;

/// Widths are rounded and a text is cut by what it is to a fraction: one pixel more, or the end of a line
/// that has all the room goes.
int widthOf(const QString& text, const QFont& font)
{
    return text.isEmpty() ? 0 : QFontMetrics(font).horizontalAdvance(text) + 1;
}

/// A line has no room for a second one.
QString flat(const QString& text)
{
    return text.simplified();
}

} // namespace

StatusLine::StatusLine(QWidget* parent)
    : QFrame(parent)
{
    setObjectName(QStringLiteral("statusLine"));
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    setVisible(false);
    adviceTime.setSingleShot(true);
    adviceTime.setInterval(msToRead);
    connect(&adviceTime, &QTimer::timeout, this, [this] { setOutcome(QString()); });
}

void StatusLine::setWaiting(const QString& text)
{
    show(&waitingText, flat(text));
}

void StatusLine::setOutcome(const QString& text)
{
    adviceTime.stop();
    show(&outcomeText, flat(text));
}

void StatusLine::setAdvice(const QString& text)
{
    setOutcome(text);
    if (!text.isEmpty())
        adviceTime.start();
}

void StatusLine::endAdvice()
{
    if (adviceTime.isActive())
        setOutcome(QString());
}

void StatusLine::setMeasured(const QString& text)
{
    show(&measuredText, flat(text));
}

void StatusLine::show(QString* part, const QString& text)
{
    if (*part == text)
        return;
    *part = text;
    setToolTip(this->text());
    setAccessibleName(this->text());
    setVisible(!this->text().isEmpty());
    updateGeometry();
    update();
}

QString StatusLine::text() const
{
    QStringList parts{waitingText, outcomeText, measuredText};
    parts.removeAll(QString());
    return parts.join(QStringLiteral(" · "));
}

QFont StatusLine::boldFont() const
{
    QFont bold = font();
    bold.setBold(true);
    return bold;
}

std::array<std::pair<QString, QFont>, 3> StatusLine::parts() const
{
    return {{{waitingText, boldFont()}, {outcomeText, font()}, {measuredText, font()}}};
}

QSize StatusLine::sizeHint() const
{
    int width = 2 * margin - between;
    for (const auto& [text, look] : parts())
        width += text.isEmpty() ? 0 : widthOf(text, look) + between;
    return {qMin(width, window()->width() * 2 / 3), QFontMetrics(boldFont()).height() + margin};
}

QSize StatusLine::minimumSizeHint() const
{
    return {qMin(leastWidth, sizeHint().width()), sizeHint().height()};
}

void StatusLine::paintEvent(QPaintEvent* event)
{
    QFrame::paintEvent(event);
    QPainter painter(this);
    QRect room = contentsRect().adjusted(margin, 0, -margin, 0);
    for (const auto& [text, look] : parts()) {
        if (text.isEmpty() || room.width() <= 0)
            continue;
        painter.setFont(look);
        const QFontMetrics metrics(look);
        painter.drawText(room, Qt::AlignVCenter | Qt::AlignLeft,
                         metrics.elidedText(text, Qt::ElideRight, room.width()));
        room.setLeft(room.left() + widthOf(text, look) + between);
    }
}

void StatusLine::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        updateGeometry();
    QFrame::changeEvent(event);
}

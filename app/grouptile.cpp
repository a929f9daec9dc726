#include "app/grouptile.h"

#include "common/common.h"
#include "graph/graphdesign.h"

#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace {

constexpr int secondsUntilAge = 3; // a younger value is of now
constexpr double unitPart = 0.6;   // of the height of the digits
constexpr double largeUnitPart = 0.45;
constexpr double headPart = 0.17; // of a large tile, as is the next
constexpr double footPart = 0.13;
constexpr double largestDigits = 0.62;
constexpr double widthOfDigit = 0.66; // of its height, about
constexpr double tileMargin = 0.04;   // of a large tile's lower side
constexpr double afterUnit = 0.35;    // of the unit's height

QFont sized(QFont font, double pixels, bool isBold = false)
{
    font.setPixelSize(std::max(1, int(pixels)));
    font.setBold(isBold);
    return font;
}

QString ageText(int seconds)
{
    if (seconds < 60)
        return GroupTile::tr("%1 s ago").arg(seconds);
    return seconds < 3600 ? GroupTile::tr("%1 min ago").arg(seconds / 60)
                          : GroupTile::tr("%1 h ago").arg(seconds / 3600);
}

QString rateText(double perSecond)
{
    return perSecond < 0.95 ? GroupTile::tr("%1/min").arg(Common::toSignificant(perSecond * 60, 2))
                            : GroupTile::tr("%1/s").arg(Common::toSignificant(perSecond, 2));
}

} // namespace

struct GroupTile::Look
{
    QColor ink;
    QColor pale;
    QColor warning;
    QString digits;
    QString unit;
};

GroupTile::GroupTile(Form form, QWidget* parent)
    : QWidget(parent)
    , form(form)
{
    setObjectName(form == Form::Line ? QStringLiteral("tile") : QStringLiteral("largeTile"));
    // An ignored height would give a line none.
    setSizePolicy(QSizePolicy::Ignored, form == Form::Line ? QSizePolicy::Fixed : QSizePolicy::Ignored);
}

void GroupTile::setReading(const GroupReading& newReading)
{
    if (newReading == told)
        return;
    told = newReading;
    const QString value = told.digits.isEmpty() ? tr("nothing measured yet")
                                                : QStringLiteral("%1 %2").arg(told.digits, told.unit);
    setAccessibleName(tr("%1, %2: %3").arg(told.group, told.channel, value));
    setToolTip(QStringLiteral("%1: %2").arg(told.channel, value) + QLatin1Char('\n') +
               details().join(QStringLiteral(", ")));
    update();
}

QStringList GroupTile::details() const
{
    QStringList texts;
    switch (told.link) {
    case GroupReading::Link::Off:
        texts.append(tr("not connected"));
        break;
    case GroupReading::Link::Connecting:
        texts.append(tr("connecting"));
        break;
    case GroupReading::Link::Sought:
        texts.append(tr("connection lost"));
        break;
    case GroupReading::Link::Replayed:
        texts.append(tr("replay"));
        break;
    case GroupReading::Link::On:
        break;
    }
    if (told.isBatteryLow)
        texts.append(tr("battery low"));
    if (told.age >= secondsUntilAge)
        texts.append(ageText(told.age));
    if (told.perSecond > 0)
        texts.append(rateText(told.perSecond));
    if (told.lost > 0)
        texts.append(tr("%n lost", "samples", told.lost));
    return texts;
}

GroupTile::Look GroupTile::look() const
{
    const QColor ground = GraphDesign::surroundings;
    Look look;
    look.ink = GraphDesign::inkOn(ground);
    look.pale = GraphDesign::faintOn(ground);
    look.warning = GraphDesign::readableOn(QColor(0xd4, 0, 0), ground);
    look.digits = told.digits.isEmpty() ? QStringLiteral("\u2013") : told.digits;
    look.unit = told.digits.isEmpty() ? QString() : told.unit;
    return look;
}

double GroupTile::widthOf(const QFont& font, const QString& digits)
{
    const QFontMetricsF metrics(font);
    double widest = 0;
    for (char16_t c = u'0'; c <= u'9'; ++c)
        widest = std::max(widest, metrics.horizontalAdvance(QChar(c)));
    double width = 0;
    for (const QChar c : digits)
        width += c.isDigit() ? widest : metrics.horizontalAdvance(c);
    return width;
}

/// Each digit in a room of the same width, so that none moves when another changes. Where they begin.
double GroupTile::paintDigits(QPainter* painter, const QFont& font, const QString& digits, double right,
                              double baseline)
{
    painter->setFont(font);
    const QFontMetricsF metrics(font);
    for (int i = digits.size() - 1; i >= 0; --i) {
        const QString c(digits.at(i));
        const double room = widthOf(font, c);
        painter->drawText(QPointF(right - room + (room - metrics.horizontalAdvance(c)) / 2, baseline), c);
        right -= room;
    }
    return right;
}

void GroupTile::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    if (form == Form::Line)
        paintLine(&painter);
    else
        paintLarge(&painter);
}

/// The value at the left, its unit always in the same place behind it, and at the right what fits of the
/// rest.
void GroupTile::paintLine(QPainter* painter) const
{
    const Look colors = look();
    const QFont digitFont = sized(font(), height() * 0.82, true);
    const QFont unitFont = sized(font(), height() * unitPart);
    const double baseline = height() * 0.82;
    const double left = height() * 0.3;
    const double right = left + widthOf(digitFont, told.digits.isEmpty() ? colors.digits : told.widest);
    painter->setPen(told.isOld ? colors.pale : colors.ink);
    paintDigits(painter, digitFont, colors.digits, right, baseline);
    const QFontMetricsF unitMetrics(unitFont);
    painter->setFont(unitFont);
    const double unitAt = right + height() * unitPart * afterUnit;
    painter->drawText(QPointF(unitAt, baseline), colors.unit);

    const double from = unitAt + unitMetrics.horizontalAdvance(colors.unit) + left;
    const QFont restFont = sized(font(), qBound(11.0, height() * 0.45, 20.0));
    const QFontMetricsF metrics(restFont);
    QStringList texts = details();
    const QString separator = QStringLiteral(" \u00b7 ");
    while (texts.size() > 1 && metrics.horizontalAdvance(texts.join(separator)) > width() - from - left)
        texts.removeLast();
    const QRectF room(from, 0, std::max(0.0, width() - from - left), height());
    const bool isWarning = told.link == GroupReading::Link::Sought || told.isBatteryLow;
    painter->setFont(restFont);
    painter->setPen(isWarning ? colors.warning : colors.ink);
    painter->drawText(room, Qt::AlignRight | Qt::AlignVCenter,
                      metrics.elidedText(texts.join(separator), Qt::ElideRight, room.width()));
}

int GroupTile::digitPixels(const QSize& size, int characters)
{
    const double byWidth = size.width() * 0.92 / (widthOfDigit * (std::max(3, characters) + 1.5));
    return int(std::min(byWidth, size.height() * largestDigits));
}

/// Name and channel above, rate and age below, and between them the value as large as it fits.
void GroupTile::paintLarge(QPainter* painter) const
{
    const Look colors = look();
    const QRectF frame = QRectF(rect()).adjusted(2, 2, -2, -2);
    const double side = std::min(frame.width(), frame.height()) * tileMargin;
    painter->setPen(GraphDesign::mixed(colors.ink, GraphDesign::surroundings, 0.6));
    painter->drawRect(frame);
    const QRectF inner = frame.adjusted(side, side / 2, -side, -side / 2);

    const double headHeight = std::min(inner.height() * headPart, inner.width() * 0.12);
    const QRectF head(inner.left(), inner.top(), inner.width(), headHeight);
    const QFont nameFont = sized(font(), headHeight * 0.72, true);
    const QFont channelFont = sized(font(), headHeight * 0.6);
    painter->setPen(colors.ink);
    painter->setFont(nameFont);
    const QString name = QFontMetricsF(nameFont).elidedText(told.group, Qt::ElideRight, inner.width() * 0.6);
    painter->drawText(head, Qt::AlignLeft | Qt::AlignVCenter, name);
    const double nameWidth = QFontMetricsF(nameFont).horizontalAdvance(name) + side;
    painter->setFont(channelFont);
    painter->drawText(
        head, Qt::AlignRight | Qt::AlignVCenter,
        QFontMetricsF(channelFont).elidedText(told.channel, Qt::ElideRight, inner.width() - nameWidth));

    const double footHeight = std::min(inner.height() * footPart, inner.width() * 0.09);
    const QRectF foot(inner.left(), inner.bottom() - footHeight, inner.width(), footHeight);
    const QFont footFont = sized(font(), footHeight * 0.75);
    painter->setFont(footFont);
    painter->setPen(told.link == GroupReading::Link::Sought || told.isBatteryLow ? colors.warning
                                                                                 : colors.ink);
    painter->drawText(foot, Qt::AlignCenter,
                      QFontMetricsF(footFont).elidedText(details().join(QStringLiteral("   ")),
                                                         Qt::ElideRight, foot.width()));

    const QRectF middle(inner.left(), head.bottom(), inner.width(), foot.top() - head.bottom());
    double pixels = middle.height() * 0.9;
    const QString widest = told.digits.isEmpty() ? colors.digits : told.widest;
    const auto widthAt = [&](double size) {
        const double unit = QFontMetricsF(sized(font(), size * largeUnitPart)).horizontalAdvance(colors.unit);
        return widthOf(sized(font(), size, true), widest) + unit + size * largeUnitPart * afterUnit;
    };
    pixels = std::min(pixels, pixels * middle.width() / std::max(1.0, widthAt(pixels)) * 0.98);
    const QFont digitFont = sized(font(), pixels, true);
    const QFont unitFont = sized(font(), pixels * largeUnitPart);
    const QFontMetricsF metrics(digitFont);
    const double baseline = middle.center().y() + metrics.capHeight() / 2;
    const double right = middle.center().x() - widthAt(pixels) / 2 + widthOf(digitFont, widest);
    painter->setPen(told.isOld ? colors.pale : colors.ink);
    paintDigits(painter, digitFont, colors.digits, right, baseline);
    painter->setFont(unitFont);
    painter->drawText(QPointF(right + pixels * largeUnitPart * afterUnit, baseline), colors.unit);
}

void GroupTile::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        Q_EMIT pressed();
}

#include "instruments/thermometer.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

#include "common/common.h"
#include "graph/graphdesign.h"

namespace {

// All in the space that the meter is painted in.
constexpr double tubeHalf = 12;
constexpr double tubeTop = 12;
constexpr double tubeHeight = 270;
constexpr double lowestTick = 252;
constexpr double tickStep = 7;
constexpr int tickCount = 33;
constexpr double columnHalf = 8;
constexpr double columnBottom = 262;
constexpr double columnScale = 224;
constexpr double columnFoot = 10;
constexpr double leastColumn = 5;
constexpr double mostColumn = 241;
const QRectF bulb(-16, 257.5, 32, 20);
constexpr double pictureSize = 64;
constexpr double pictureTop = 32;
constexpr double underPicture = 80;
constexpr int mostMeterDecimals = 4;
constexpr double noThreshold = 99999;
constexpr double manyDigits = 9999;

} // namespace

ThermoMeter::ThermoMeter(bool junior, QWidget* parent)
    : AbstractMeter(parent)
    , isJunior(junior)
{
    setWindowTitle(tr("Analog Thermometer"));
    setObjectName(QStringLiteral("thermometer"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    resize(200, 200);
    setMaximum(100);
    nominal = -noThreshold;
    critical = noThreshold;
    valueOffset = junior ? 280 : 270;
    digitOffset = 15;
    suffix = QStringLiteral(" [C]");
    if (junior) {
        valueFont.setPixelSize(12);
        digitFont.setPixelSize(15);
    } else {
        valueFont.setPointSize(15);
        digitFont.setPointSize(18);
    }
}

void ThermoMeter::showSensor(const SensorPtr& sensor)
{
    if (!sensor)
        return;
    if (isJunior) {
        const QPixmap icon(sensor->iconNameColor);
        setPixmap(&icon);
    }
    setDigitSmall(std::max(std::fabs(sensor->min), std::fabs(sensor->max)) > manyDigits);
    setPrecision(std::min(int(sensor->precision), mostMeterDecimals));
    setHeat(sensor->isTemperature());
    setRange(sensor->min, sensor->max);
    setSuffix(QLatin1Char(' ') + sensor->unitName);
    setAccessibleName(sensor->name);
}

void ThermoMeter::setPrecision(int decimals)
{
    change(&precision, std::clamp(decimals, 0, mostMeterDecimals));
}

void ThermoMeter::setHeat(bool tf)
{
    change(&isHeat, tf);
}

void ThermoMeter::setPixmap(const QPixmap* newPicture)
{
    picture = newPicture ? *newPicture : QPixmap();
    updateWithBackground();
}

void ThermoMeter::setDigitSmall(bool tf)
{
    change(&isDigitSmall, tf);
}

QString ThermoMeter::valueText() const
{
    const QString number =
        std::isfinite(value) ? Common::myToString(value, 'f', precision) : QStringLiteral("----");
    return prefix + number + suffix;
}

double ThermoMeter::fillHeight() const
{
    const double part = (value - scaled.minimum) / (scaled.maximum - scaled.minimum);
    return std::isfinite(part) ? std::clamp(part * columnScale + columnFoot, leastColumn, mostColumn)
                               : leastColumn;
}

QColor ThermoMeter::ink() const
{
    return GraphDesign::inkOn(GraphDesign::surroundings);
}

void ThermoMeter::toMeterSpace(QPainter& painter) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(width() / 2.0, 0);
    // Stretched a little, never so much that texts leave a narrow cell.
    constexpr double widthNeeded = 190;
    const double across = std::min(height() / (isJunior ? 378.0 : 300.0), width() / widthNeeded);
    painter.scale(across, height() / (isJunior ? 387.0 : 307.0));
    if (isJunior)
        painter.translate(0, underPicture);
}

void ThermoMeter::paintBackground(QPainter& painter)
{
    toMeterSpace(painter);
    if (isJunior && !picture.isNull())
        painter.drawPixmap(QRectF(-pictureSize / 2, pictureTop - underPicture, pictureSize, pictureSize),
                           picture, picture.rect());
    paintGlass(painter);
    paintTicks(painter);
}

void ThermoMeter::paintGlass(QPainter& painter) const
{
    const QColor tint = isHeat ? QColor(0, 150, 255) : QColor(115, 115, 115);
    constexpr int densest = 170;
    QLinearGradient gradient(0, tubeTop, 0, tubeTop + tubeHeight);
    QColor strong = tint;
    strong.setAlpha(densest);
    gradient.setColorAt(0, QColor(255, 255, 255, 0));
    gradient.setColorAt(1, strong);
    QPainterPath outline;
    if (isHeat) {
        QPainterPath tube;
        tube.addRoundedRect(-tubeHalf, tubeTop, 2 * tubeHalf, lowestTick + tickStep - tubeTop, tubeHalf,
                            tubeHalf);
        QPainterPath bowl;
        bowl.addEllipse(bulb.adjusted(-5, -5, 5, 5));
        outline = tube.united(bowl);
    } else {
        outline.addRect(-tubeHalf, tubeTop, 2 * tubeHalf, tubeHeight);
    }
    painter.setPen(QPen(tint.darker(), 1));
    painter.setBrush(gradient);
    painter.drawPath(outline);
}

void ThermoMeter::paintTicks(QPainter& painter) const
{
    for (int i = 0; i < tickCount; ++i) {
        const bool isLong = i % 4 == 0;
        const double length = isLong ? 19 : i % 2 == 0 ? 12 : 8;
        const double y = lowestTick - i * tickStep;
        painter.setPen(QPen(ink(), isLong ? 1 : i % 2 == 0 ? 0.75 : 0.5));
        painter.drawLine(QLineF(-tubeHalf, y, -tubeHalf + length, y));
    }
    if (digitOffset == 0)
        return;
    QFont font = digitFont;
    if (isDigitSmall) {
        constexpr double smaller = 0.65;
        if (font.pixelSize() > 0)
            font.setPixelSize(int(smaller * font.pixelSize()));
        else
            font.setPointSizeF(smaller * font.pointSizeF());
    }
    painter.setFont(font);
    painter.setPen(ink());
    const double lineHeight = painter.fontMetrics().height();
    for (int i = 0; i <= TidyScale::steps; ++i) {
        const double number = scaled.minimum + i * (scaled.maximum - scaled.minimum) / TidyScale::steps;
        const double y = lowestTick - 4 * i * tickStep;
        painter.drawText(QRectF(digitOffset, y - lineHeight / 2, 200, lineHeight),
                         Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("%L1").arg(number, 0, 'g', 7));
    }
}

void ThermoMeter::paintEvent(QPaintEvent*)
{
    const QPixmap& behind = background();
    QPainter painter(this);
    painter.save();
    toMeterSpace(painter);
    paintValue(painter);
    if (std::isfinite(value))
        paintColumn(painter);
    painter.restore();
    painter.drawPixmap(0, 0, behind);
    if (!std::isfinite(value))
        return;
    // Through the tinted glass alone red would be purple.
    constexpr double gleam = 0.6;
    painter.setOpacity(gleam);
    toMeterSpace(painter);
    paintColumn(painter);
}

void ThermoMeter::paintValue(QPainter& painter) const
{
    if (valueOffset == 0)
        return;
    constexpr int room = 180;
    QFont font = valueFont;
    font.setBold(true);
    painter.setFont(GraphFonts::fitted(font, valueText(), room));
    painter.setPen(value >= critical ? QColor(Qt::red) : ink());
    const double lineHeight = painter.fontMetrics().height();
    painter.drawText(QRectF(-room / 2.0, valueOffset + lineHeight / 2, room, lineHeight), Qt::AlignCenter,
                     valueText());
}

void ThermoMeter::paintColumn(QPainter& painter) const
{
    constexpr int paler = 170;
    constexpr double barFoot = 20.5; // that a bar reaches deeper than a column over its bulb
    const double height = fillHeight();
    const QColor red(Qt::red);
    QLinearGradient gradient(-columnHalf, 0, columnHalf, 0);
    gradient.setColorAt(0, red.lighter(paler));
    gradient.setColorAt(1, red);
    painter.setPen(Qt::NoPen);
    painter.setBrush(gradient);
    painter.drawRect(
        QRectF(-columnHalf, columnBottom - height, 2 * columnHalf, height + (isHeat ? 0 : barFoot)));
    if (isHeat)
        painter.drawEllipse(bulb);
}

Thermo::Thermo(int type, const SensorPtr& sensor, QWidget* parent)
    : QwtThermo(parent)
{
    const bool isLab = type == THERMO_TYPE_LAB;
    setOrientation(isLab ? Qt::Horizontal : Qt::Vertical);
    setScalePosition(isLab ? LeadingScale : TrailingScale);
    setPipeWidth(isLab ? 20 : 40);
    setBorderWidth(isLab ? 5 : 20);
    if (isLab)
        setFixedHeight(60);
    setFillBrush(Qt::blue);
    setScale(-12.69, 95.11);
    setValue(20);
    updateSens(sensor);
}

void Thermo::updateSens(const SensorPtr& sensor)
{
    if (sensor && sensor->max > sensor->min)
        setScale(sensor->min, sensor->max);
}

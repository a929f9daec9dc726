#include "graph/graphcurves.h"

#include <algorithm>

#include <qwt_plot.h>
#include <qwt_symbol.h>
#include <qwt_text.h>

#include "common/settings.h"
#include "data/expdata.h"
#include "graph/colorscale.h"
#include "graph/curvepainter.h"
#include "graph/graphaxes.h"
#include "graph/graphdesign.h"
#include "graph/myplotcurve.h"

namespace {

constexpr int symbolSize = 10;
const QString groupEnd = QStringLiteral(" - "); // of a group's name before that of its sensor
constexpr double curvesZ = 20;                  // as the plot library has it
constexpr double averageZ = 21;

int idOf(const SensorPtr& sensor)
{
    return sensor ? sensor->ID : -1;
}

bool isHiddenKind(int id)
{
    return id == SENSOR_GPS_LAT || id == SENSOR_GPS_LONG || id == SENSOR_GPS_ANGLE ||
           id == SENSOR_SIM_ENERGY || id == SENSOR_SIM_SPEED;
}

} // namespace

GraphCurves::GraphCurves(QwtPlot& plot, ExpData& data, scaleManager& scaler, GraphAxes& axes, int index)
    : plot(plot)
    , data(data)
    , scaler(scaler)
    , axes(axes)
    , index(index)
    , columnPainter(std::make_unique<CurvePainter>())
{
    const QSettings store = Settings::mainStore();
    width = store.value(Settings::curveWidth, width).toInt();
    widthActive = store.value(Settings::curveWidthActive, widthActive).toInt();
}

GraphCurves::~GraphCurves()
{
    drop();
}

void GraphCurves::drop()
{
    for (myPlotCurve* curve : qAsConst(curves)) {
        curve->detach();
        delete curve;
    }
    curves.clear();
}

void GraphCurves::setActive(int i)
{
    activeSens = i >= 0 && i < data.getNSens() ? i : 0;
    const auto isSeen = [](const myPlotCurve* curve) { return curve->isShown(); };
    if (isLegendOnly || activeSens >= curves.size() || isSeen(curves[activeSens]) ||
        !isHiddenAtFirst(activeSens))
        return;
    const auto first = std::find_if(curves.cbegin(), curves.cend(), isSeen);
    if (first != curves.cend())
        activeSens = int(first - curves.cbegin());
}

void GraphCurves::rebuild()
{
    keepLooks();
    drop();
    for (int i = 0; i < data.getNSens(); ++i)
        add(i);
    renewAverage();
    setActive(activeSens);
    for (int i = 0; i < curves.size(); ++i)
        setPen(i);
}

void GraphCurves::rebuildEntries()
{
    QVector<QColor> before;
    for (const myPlotCurve* curve : qAsConst(curves))
        before.append(curve->isUserColor() ? curve->getColor() : QColor());
    isLegendOnly = true;
    drop();
    setActive(activeSens);
    for (int i = 0; i < data.getNSens(); ++i) {
        auto* entry = new myPlotCurve(&data, &scaler, i, columnPainter.get());
        curves.append(entry);
        if (before.value(i).isValid())
            entry->setColor(before[i]);
        else
            entry->setOwnColor(ColorScale::myColors(i));
        setEntryPen(i);
        QwtText title(name(i), QwtText::PlainText);
        title.setColor(ink);
        entry->setTitle(title);
        entry->setLegendAttribute(QwtPlotCurve::LegendShowLine, true);
        entry->setVisible(false);
        entry->attach(&plot);
        entry->setLegendIconSize(legendIconSize());
    }
}

void GraphCurves::keepLooks()
{
    before.clear();
    // A new run begins with what stands at its places; whatever else the user styled is past.
    if (data.getXSize() == 0)
        looks.clear();
    for (int i = 0; i < curves.size(); ++i) {
        const Look look{curves[i]->getChannel(), curves[i]->getMode(),
                        curves[i]->isUserColor() ? curves[i]->getColor() : QColor()};
        before.append(look);
        if (data.getXSize() == 0)
            continue;
        looks.insert(look.channel, look);
        if (!groups.value(i).isEmpty())
            looks.insert(groups[i], look);
    }
    groups.clear();
}

/// The look of the same channel at the same place, at another place, or of the same group.
const GraphCurves::Look* GraphCurves::lookOf(int i) const
{
    const QString key = channelKey(i);
    if (i < before.size() && before[i].channel == key)
        return &before[i];
    for (const QString& from : {key, groups.value(i)}) {
        const auto found = looks.constFind(from);
        if (!from.isEmpty() && found != looks.constEnd())
            return &*found;
    }
    return nullptr;
}

QString GraphCurves::channelKey(int i) const
{
    const SensorPtr& sensor = data.getSens(i);
    if (!sensor)
        return QString();
    return QStringLiteral("%1 %2 %3 %4 %5")
        .arg(sensor->ID)
        .arg(sensor->specialType)
        .arg(sensor->specialOriginIndex)
        .arg(sensor->groupName, sensor->calculation ? sensor->name : QString());
}

void GraphCurves::add(int i)
{
    auto* curve = new myPlotCurve(&data, &scaler, i, columnPainter.get());
    curves.append(curve);
    // In the class a group stays itself when it shows another sensor.
    const SensorPtr& sensor = data.getSens(i);
    groups.append(index < 0 && sensor && sensor->specialType == 0 ? sensor->groupName : QString());
    curve->setChannel(channelKey(i));
    if (isHiddenAtFirst(i))
        curve->hide();
    if (const Look* look = lookOf(i)) {
        curve->setMode(look->mode);
        if (look->color.isValid())
            curve->setColor(look->color);
    }
    const int hint = data.curveModeHint.value(i, -1);
    if (hint >= 0)
        curve->setMode(hint);
    design(i);
    curve->setZ(index < 0 && i == data.meanIndex() ? averageZ : curvesZ);
    curve->attach(&plot);
}

// The average of the class says something only for sensors of one kind.
bool GraphCurves::isHiddenAtFirst(int i) const
{
    const SensorPtr& sensor = data.getSens(i);
    return isHiddenKind(idOf(sensor)) || (index < 0 && i == data.meanIndex() && sensor &&
                                          !sensor->groupName.isEmpty() && !data.isOfOneKind());
}

// The channels of a file have their groups in their names.
QString GraphCurves::commonSensor() const
{
    const int mean = data.meanIndex();
    if (index >= 0 || mean < 1)
        return QString();
    QString common;
    for (int i = 0; i <= mean; ++i) {
        const SensorPtr& sensor = data.getSens(i);
        const QString full = sensor ? sensor->nameForLegend(true) : QString();
        const int at = full.indexOf(groupEnd);
        const QString rest = at > 0 ? full.mid(at + groupEnd.size()) : QString();
        if (rest.isEmpty() || (i > 0 && rest != common))
            return QString();
        common = rest;
    }
    return common;
}

QString GraphCurves::name(int i) const
{
    const SensorPtr& sensor = data.getSens(i);
    QString name = sensor ? sensor->nameForLegend(index < 0) : QString();
    if (sensor && sensor->specialType == 0 && !commonSensor().isEmpty())
        name = name.section(groupEnd, 0, 0);
    // The channels of a file have no groups; only the class at work has an average that can lack some.
    if (index >= 0 || i != data.meanIndex() || !sensor || sensor->groupName.isEmpty())
        return name;
    const int groups = data.groupsInAverage();
    if (groups == 0)
        return name;
    return groups > 1 ? QStringLiteral("%1 ± s (%2)").arg(name).arg(groups)
                      : QStringLiteral("%1 (%2)").arg(name).arg(groups);
}

void GraphCurves::renewAverage()
{
    const int mean = data.meanIndex();
    if (index >= 0 || mean < 0 || mean >= curves.size())
        return;
    const bool isMixed = isHiddenAtFirst(mean);
    if (isMixed != isAverageMixed) {
        isAverageMixed = isMixed;
        curves[mean]->setMode(isMixed ? CURVE_HIDDEN : CURVE_LINE);
        design(mean);
    }
    if (curves[mean]->title().text() == name(mean) && isAverage(mean) == hasAverageLook)
        return;
    setPen(mean);
    axes.setDue();
}

// In a repeated run the second half of the curves is the present one and takes the colours of the first.
QColor GraphCurves::colorOf(int i) const
{
    const int half = data.getNSens() / 2;
    if (data.isRepeatMode() && half > 0 && i >= half)
        return colorOf(i - half);
    const int colorimeter = data.hasColorimeter();
    if (colorimeter >= 0)
        return ColorScale::myColorsForColorimeter(i, colorimeter);
    if (curves[i]->isUserColor())
        return curves[i]->getColor();
    return isAverage(i) ? ColorScale::averageColor(ground) : ColorScale::myColors(i);
}

bool GraphCurves::isAverage(int i) const
{
    return index < 0 && data.isAverage(i);
}

bool GraphCurves::isOut(int i) const
{
    return index < 0 && data.isOut(i);
}

QVector<qreal> GraphCurves::dashesOf(int i) const
{
    if (data.isRepeatMode())
        return i < data.getNSens() / 2 ? QVector<qreal>{4, 4} : QVector<qreal>();
    QVector<QColor> colors;
    for (int k = 0; k <= i; ++k)
        colors.append(colorOf(k));
    return ColorScale::dashes(colors, i);
}

QColor GraphCurves::inkOf(int i) const
{
    return isLegendOnly || (curves[i]->isVisible() && !isOut(i)) ? ink : faint;
}

void GraphCurves::setInk(const QColor& newInk, const QColor& newFaint, const QColor& newGround)
{
    ink = newInk;
    faint = newFaint;
    ground = newGround;
    for (int i = 0; i < curves.size(); ++i) {
        QwtText title = curves[i]->title();
        title.setColor(inkOf(i));
        curves[i]->setTitle(title);
        if (isAverage(i))
            design(i);
    }
}

QPen GraphCurves::pen(int i) const
{
    const myPlotCurve* curve = at(i);
    return curve ? curve->pen() : QPen();
}

void GraphCurves::setPen(int i)
{
    myPlotCurve* const curve = curves[i];
    if (i == data.meanIndex())
        hasAverageLook = isAverage(i);
    QwtText title(name(i), QwtText::PlainText);
    title.setColor(inkOf(i));
    if (!curve->isUserColor())
        curve->setOwnColor(colorOf(i)); // the axis shows that of a hidden curve too
    if (curve->isVisible()) {
        constexpr double pale = 0.6; // of a group that does not count
        QPen pen(isOut(i) ? GraphDesign::mixed(colorOf(i), ground, pale) : colorOf(i), penWidth(i));
        const QVector<qreal> dashes = dashesOf(i);
        if (!dashes.isEmpty())
            pen.setDashPattern(dashes);
        curve->setPen(pen);
        curve->setCasing(isAverage(i) ? ColorScale::averageCasing(ground) : QColor());
    } else {
        curve->setPen(QPen(Qt::transparent, 0));
    }
    curve->setTitle(title);
    curve->setLegendIconSize(legendIconSize()); // pen and symbol set a size of their own
}

QSize GraphCurves::legendIconSize() const
{
    constexpr double iconWidth = 1.7; // heights of a text
    constexpr double iconHeight = 0.6;
    const int pixels = GraphFonts::textPixels(plot.height());
    return {int(iconWidth * pixels), int(iconHeight * pixels)};
}

double GraphCurves::penWidth(int i) const
{
    const int own = isAverage(i) ? widthActive + 2 : i == activeSens ? widthActive : width;
    return own * GraphFonts::growth(plot.height());
}

void GraphCurves::setEntryPen(int i)
{
    if (!curves[i]->isUserColor())
        curves[i]->setOwnColor(ColorScale::myColors(i));
    curves[i]->setPen(QPen(curves[i]->getColor(), penWidth(i)));
}

void GraphCurves::designPens()
{
    for (int i = 0; i < curves.size(); ++i) {
        if (isLegendOnly)
            setEntryPen(i);
        else
            setPen(i);
    }
}

void GraphCurves::designAll()
{
    for (int i = 0; i < curves.size(); ++i)
        design(i);
}

void GraphCurves::design(int i)
{
    if (i < 0 || i >= curves.size())
        return;
    if (isLegendOnly) {
        setEntryPen(i);
        return;
    }
    myPlotCurve* const curve = curves[i];
    const bool isXSensor = data.isXYPlot() && data.getXYIndex() == i;
    const bool isSymbol = curve->isSymbol() && !isXSensor;
    const bool isLine = curve->isLine() && !isXSensor;
    curve->setVisible(curve->isShown() && !isXSensor);
    curve->setLegendAttribute(QwtPlotCurve::LegendShowSymbol, isSymbol);
    curve->setLegendAttribute(QwtPlotCurve::LegendShowLine, isLine);
    setPen(i); // gives the symbol its colour
    if (isSymbol) {
        curve->setSymbol(new QwtSymbol(QwtSymbol::Diamond, curve->getColor(), QPen(curve->getColor(), 1),
                                       QSize(symbolSize, symbolSize)));
        curve->setStyle(QwtPlotCurve::NoCurve);
    } else {
        curve->setSymbol(nullptr);
        curve->setStyle(QwtPlotCurve::Lines); // of a hidden one too: its place in the legend is as wide
    }
    curve->setLegendIconSize(legendIconSize()); // as with the pen
    axes.setDue();
}

void GraphCurves::setColor(int i, const QColor& color)
{
    curves[i]->setColor(color);
    design(i);
}

void GraphCurves::rotateMode(int i)
{
    setMode(i, curves[i]->rotateMode());
}

void GraphCurves::setMode(int i, int mode)
{
    curves[i]->setMode(mode);
    if (data.curveModeHint.value(i, -1) >= 0)
        data.curveModeHint[i] = mode; // what the file said is no longer so
    design(i);
}

QVector<int> GraphCurves::shownIDs() const
{
    QVector<int> ids;
    for (int i = 0; i < curves.size(); ++i) {
        if (curves[i]->isShown())
            ids.append(idOf(data.getSens(i)));
    }
    return ids;
}

bool GraphCurves::hasOwnScale(int i) const
{
    const myPlotCurve* const curve = at(i);
    const SensorPtr& sensor = data.getSens(i);
    const SensorPtr& active = data.getSens(activeIndex());
    if (!curve || !curve->isVisible() || !sensor || i == activeIndex())
        return false;
    const QString quantity = sensor->quantity();
    return !active || quantity.isEmpty() || quantity != active->quantity();
}

void GraphCurves::keepModesInData() const
{
    data.curveModeHint.resize(curves.size());
    for (int i = 0; i < curves.size(); ++i)
        data.curveModeHint[i] = curves[i]->getMode();
}

void GraphCurves::forgetColumns()
{
    columnPainter->forget();
}

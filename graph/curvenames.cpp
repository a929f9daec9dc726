#include "graph/curvenames.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QStringList>

#include <algorithm>
#include <cmath>

#include <qwt_plot.h>
#include <qwt_scale_map.h>

#include "data/expdata.h"
#include "graph/graphaxes.h"
#include "graph/graphcurves.h"
#include "graph/graphdesign.h"
#include "graph/myplotcurve.h"
#include "graph/scalemanager.h"

namespace {

constexpr double namesZ = 22;    // over the average
constexpr double fromCurve = 6;  // pixels of a name right of its curve's end
constexpr double toCurve = 16;   // and of one left of it, where one has no room
constexpr double textMargin = 2; // pixels round a text
constexpr double longest = 10;   // heights of a text

/// "Group Ada" and "Group Blaise" are told apart by what follows the word that all begin with.
void dropCommonWords(QStringList* names)
{
    while (names->size() > 1) {
        const QString word = names->first().section(QLatin1Char(' '), 0, 0) + QLatin1Char(' ');
        const bool isCommon = std::all_of(names->cbegin(), names->cend(), [&](const QString& name) {
            return name.startsWith(word) && name.size() > word.size();
        });
        if (!isCommon)
            return;
        for (QString& name : *names)
            name.remove(0, word.size());
    }
}

/// One below the other, together as near to where they want to be as they can: those that would overlap make
/// a block about the middle of their places.
void spread(QVector<CurveNames::Name>* names, const QRectF& canvas)
{
    struct Block
    {
        double sum; ///< of the places, each less the boxes above it
        int count;
    };
    std::stable_sort(names->begin(), names->end(), [](const CurveNames::Name& a, const CurveNames::Name& b) {
        return a.box.top() < b.box.top();
    });
    const double height = names->first().box.height();
    QVector<Block> blocks;
    for (int i = 0; i < names->size(); ++i) {
        Block last{names->at(i).box.top() - i * height, 1};
        while (!blocks.isEmpty() && blocks.last().sum / blocks.last().count > last.sum / last.count) {
            last = {blocks.last().sum + last.sum, blocks.last().count + last.count};
            blocks.removeLast();
        }
        blocks.append(last);
    }
    double top = canvas.top();
    int i = 0;
    for (const Block& block : qAsConst(blocks)) {
        for (int k = 0; k < block.count; ++k, ++i) {
            QRectF& box = (*names)[i].box;
            box.moveTop(std::max(top, block.sum / block.count + i * height));
            top = box.bottom();
        }
    }
    double bottom = canvas.bottom();
    for (auto name = names->rbegin(); name != names->rend(); ++name) {
        name->box.moveBottom(std::min(bottom, name->box.bottom()));
        bottom = name->box.top();
    }
}

} // namespace

CurveNames::CurveNames(const GraphParts& parts)
    : parts(parts)
{
    setZ(namesZ);
    setItemAttribute(Legend, false);
}

QFont CurveNames::font() const
{
    QFont bold;
    bold.setBold(true);
    return GraphFonts::inPixels(bold, GraphFonts::textPixels(parts.plot.height()));
}

QStringList CurveNames::texts() const
{
    QStringList names;
    for (int i = 0; i < parts.curves.size(); ++i) {
        const SensorPtr& sensor = parts.data.getSens(i);
        names.append(sensor && !sensor->groupName.isEmpty() ? sensor->groupName : parts.curves.name(i));
    }
    // The average has a name of its own.
    const int mean = parts.data.meanIndex();
    const QString average = mean >= 0 && mean < names.size() ? names.takeAt(mean) : QString();
    dropCommonWords(&names);
    if (mean >= 0 && mean <= names.size())
        names.insert(mean, average);
    return names;
}

/// The last sample of a curve that is in sight, -1 for none.
int CurveNames::lastRow(int i, const QwtScaleMap& xMap) const
{
    const QVector<double>& x = parts.data.getX();
    const QVector<double>& y = parts.data.getYNoConv(i);
    const auto end = x.cbegin() + std::min(x.size(), y.size());
    int row = int(std::upper_bound(x.cbegin(), end, xMap.s2()) - x.cbegin()) - 1;
    while (row >= 0 && x[row] >= xMap.s1() && std::isnan(y[row]))
        --row;
    return row >= 0 && x[row] >= xMap.s1() ? row : -1;
}

QVector<CurveNames::Name> CurveNames::places(const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                                             const QRectF& canvas) const
{
    QVector<Name> names;
    if (parts.data.isXYPlot() || xMap.s1() > xMap.s2())
        return names;
    const QStringList words = texts();
    const QFontMetricsF metrics(font());
    bool hasRoom = true;
    for (int i = 0; i < parts.curves.size(); ++i) {
        const myPlotCurve* const curve = parts.curves.at(i);
        const int row = curve->isVisible() && !parts.data.isAverage(i) ? lastRow(i, xMap) : -1;
        if (row < 0)
            continue;
        QwtScaleMap map = yMap;
        parts.scaler.fixScaleY(&map, i);
        const QPointF end(xMap.transform(parts.data.getXAt(row)), map.transform(parts.data.getYAt(i, row)));
        const QString word = metrics.elidedText(words[i], Qt::ElideRight, longest * metrics.height());
        QRectF box(0, 0, metrics.horizontalAdvance(word) + 2 * textMargin, metrics.height());
        box.moveCenter(end);
        box.moveLeft(end.x() + fromCurve);
        hasRoom = hasRoom && box.right() <= canvas.right();
        if (canvas.top() <= end.y() && end.y() <= canvas.bottom())
            names.append({word, curve->getColor(), end, box});
    }
    constexpr int fewest = 2;
    if (names.size() < fewest || names.size() * metrics.height() > canvas.height())
        return {};
    for (Name& name : names) { // all on one side
        if (!hasRoom)
            name.box.moveRight(name.end.x() - toCurve);
    }
    spread(&names, canvas.adjusted(0, 0, 0, -parts.axes.innerTitleHeight()));
    return names;
}

void CurveNames::draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                      const QRectF& canvas) const
{
    const QColor ground = GraphDesign::groundOf(painter, plot());
    painter->save();
    painter->setFont(font());
    const QVector<Name> names = places(xMap, yMap, canvas);
    for (const Name& name : names) {
        painter->setPen(GraphDesign::readableOn(name.color, ground));
        const bool isAside = std::abs(name.box.center().y() - name.end.y()) > name.box.height() / 2;
        const double side = name.box.left() > name.end.x() ? name.box.left() : name.box.right();
        if (isAside || side < name.end.x())
            painter->drawLine(name.end, QPointF(side, name.box.center().y()));
    }
    for (const Name& name : names) {
        QColor veil = ground; // a curve that goes on below is still seen
        constexpr int veilAlpha = 215;
        veil.setAlpha(veilAlpha);
        painter->fillRect(name.box, veil);
        painter->setPen(GraphDesign::readableOn(name.color, ground));
        painter->drawText(name.box, Qt::AlignCenter, name.text);
    }
    painter->restore();
}

#include "graph/curvepainter.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QPainter>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr int margin =
    CurvePainter::maxPenWidth / 2 + 1; // columns beside the canvas that a pen reaches into it
constexpr int coreColumns = 8;         // filled in one piece where they have as many rows in common

struct Line
{
    double factor;
    double offset;
    double at(double value) const { return value * factor + offset; }
};

// Stored value to pixel row.
Line rowLine(const QwtScaleMap& yMap, const Sensor::AltUnit& unit)
{
    const double span = yMap.s2() - yMap.s1();
    const double perUnit = span == 0.0 ? 1.0 : (yMap.p2() - yMap.p1()) / span;
    return {unit.factor * perUnit, yMap.p1() + (unit.offset - yMap.s1()) * perUnit};
}

// Extends `low` and `high` by the values from `v` to `end`. A comparison with NaN is false and so passes it
// over, in the vector instructions too if the new value comes first. Two pairs of chains, since each minimum
// waits for the one before; the compiler must not reorder floating-point minima by itself.
void findExtremes(const double* v, const double* end, double& low, double& high)
{
#ifdef __SSE2__
    __m128d low0 = _mm_set1_pd(low), low1 = low0;
    __m128d high0 = _mm_set1_pd(high), high1 = high0;
    for (; end - v >= 4; v += 4) {
        const __m128d a = _mm_loadu_pd(v);
        const __m128d b = _mm_loadu_pd(v + 2);
        low0 = _mm_min_pd(a, low0);
        low1 = _mm_min_pd(b, low1);
        high0 = _mm_max_pd(a, high0);
        high1 = _mm_max_pd(b, high1);
    }
    double lows[2];
    double highs[2];
    _mm_storeu_pd(lows, _mm_min_pd(low0, low1));
    _mm_storeu_pd(highs, _mm_max_pd(high0, high1));
    low = std::min(lows[0], lows[1]);
    high = std::max(highs[0], highs[1]);
#endif
    for (; v < end; ++v) {
        low = *v < low ? *v : low;
        high = *v > high ? *v : high;
    }
}

// The first of the ascending times from `low` on that is not before `time`, probably near `guess`.
int firstNotBefore(const QVector<double>& x, double time, int low, int guess)
{
    int high = guess;
    int reach = 2;
    while (high < x.size() && x[high] < time) {
        low = high + 1;
        high = std::min(low + reach, x.size());
        reach *= 4;
    }
    while (high - reach > low && x[high - reach] >= time) {
        high -= reach;
        reach *= 4;
    }
    low = std::max(low, high - reach);
    return int(std::lower_bound(x.cbegin() + low, x.cbegin() + high, time) - x.cbegin());
}

int firstFinite(const double* y, int from, int to)
{
    while (from < to && !std::isfinite(y[from]))
        ++from;
    return from < to ? from : -1;
}

int lastFinite(const double* y, int from, int to)
{
    while (to > from && !std::isfinite(y[to - 1]))
        --to;
    return to > from ? to - 1 : -1;
}

// Casts are cheaper than floor() and cut the same way above 0.
constexpr int lift = 1 << 20;

int floorRow(double row)
{
    return int(row + lift) - lift;
}

int ceilRow(double row)
{
    return -floorRow(-row);
}

// How much of the rows above `row` an edge leaves free that goes from nothing at `start` to all `ramp` rows
// on.
double coveredAbove(double row, double start, double ramp)
{
    const double past = row - start;
    if (past <= 0)
        return 0;
    return past < ramp ? past * past / (2 * ramp) : past - ramp / 2;
}

double coverOf(int row, double start, double ramp)
{
    return coveredAbove(row + 1, start, ramp) - coveredAbove(row, start, ramp);
}

} // namespace

bool CurvePainter::canPaint(const QwtScaleMap& xMap, const QwtScaleMap& yMap)
{
    return !xMap.transformation() && !yMap.transformation() && xMap.s2() > xMap.s1() && xMap.p2() > xMap.p1();
}

void CurvePainter::setTime(const QVector<double>& x, const QwtScaleMap& xMap, const QRect& onCanvas)
{
    const double key[4] = {xMap.s1(), xMap.s2(), xMap.p1(), xMap.p2()};
    if (times && times == x.constData() && timeCount == x.size() && canvas == onCanvas &&
        std::equal(key, key + 4, mapKey))
        return;
    std::copy(key, key + 4, mapKey);
    canvas = onCanvas;
    times = x.constData();
    timeCount = x.size();
    splitIntoColumns(x, xMap);
}

// Column c holds what a plain line rounds to c: pixel positions from c - 0.5 up to c + 0.5.
void CurvePainter::splitIntoColumns(const QVector<double>& x, const QwtScaleMap& xMap)
{
    firstColumn = canvas.left() - margin;
    columnCount = canvas.width() + 2 * margin;
    starts.resize(columnCount + 1);
    edges.resize(columnCount + 1);
    const double perPixel = (xMap.s2() - xMap.s1()) / (xMap.p2() - xMap.p1());
    const int n = x.size();
    int position = 0;
    int step = 0;
    for (int k = 0; k <= columnCount; ++k) {
        edges[k] = xMap.s1() + (firstColumn + k - 0.5 - xMap.p1()) * perPixel;
        // Samples are nearly evenly spaced, so the next start is about as far on as the last one was.
        const int guess = std::min(position + step, n);
        const int found = firstNotBefore(x, edges[k], position, guess);
        step = k == 0 ? 0 : found - position;
        position = found;
        starts[k] = found;
    }
}

void CurvePainter::cover(const Curve& curve)
{
    lows.fill(infinity, columnCount);
    highs.fill(-infinity, columnCount);
    const double* const y = curve.y;
    int previous = lastFinite(y, curve.from, std::min(starts[0], curve.to));
    int previousColumn = -1;
    bool isLonely = false; // no line leads to `previous` yet
    singles.resize(0);
    for (int k = 0; k < columnCount; ++k) {
        const int from = std::max(starts[k], curve.from);
        const int to = std::min(starts[k + 1], curve.to);
        if (from >= to)
            continue;
        const int first = firstFinite(y, from, to);
        if (first < 0)
            continue;
        const bool isLed = isJoined(curve, previous, first);
        if (isLed)
            coverSegment(y, previous, first, previousColumn, k);
        else if (isLonely)
            singles.append(previous);
        findExtremes(y + first, y + to, lows[k], highs[k]);
        previous = lastFinite(y, first, to);
        previousColumn = k;
        isLonely = !isLed && previous == first;
    }
    const int next = firstFinite(y, std::max(starts[columnCount], curve.from), curve.to);
    if (isJoined(curve, previous, next))
        coverSegment(y, previous, next, previousColumn, columnCount);
    else if (isLonely)
        singles.append(previous);
}

bool CurvePainter::isJoined(const Curve& curve, int i, int j) const
{
    return i >= 0 && j == i + 1 && times[j] - times[i] <= curve.longest;
}

// The line from sample i to sample j passes the left edges of the columns after the one of i, up to that of
// j.
void CurvePainter::coverSegment(const double* y, int i, int j, int fromColumn, int toColumn)
{
    const double slope = (y[j] - y[i]) / (times[j] - times[i]);
    const double least = std::min(y[i], y[j]);
    const double most = std::max(y[i], y[j]);
    for (int k = fromColumn + 1; k <= toColumn; ++k) {
        const double value = std::clamp(y[i] + slope * (edges[k] - times[i]), least, most);
        for (int column : {k - 1, k}) {
            if (column < 0 || column >= columnCount)
                continue;
            lows[column] = std::min(lows[column], value);
            highs[column] = std::max(highs[column], value);
        }
    }
}

// Moves a round pen along the stretches. Neighbouring stretches touch, since they share the value at the
// edge, so what the pen covers of a column is again one stretch.
void CurvePainter::widen(const Curve& curve, const QwtScaleMap& yMap, int penWidth)
{
    const Line row = rowLine(yMap, curve.unit);
    const double above = topLimit();
    const double below = bottomLimit();
    upper.fill(infinity, columnCount);
    lower.fill(-infinity, columnCount);
    for (int k = 0; k < columnCount; ++k) {
        if (!(lows[k] <= highs[k]))
            continue;
        const double a = row.at(lows[k]);
        const double b = row.at(highs[k]);
        upper[k] = std::clamp(std::min(a, b), above, below);
        lower[k] = std::clamp(std::max(a, b), above, below);
    }
    const int count = canvas.width();
    penUpper.fill(infinity, count);
    penLower.fill(-infinity, count);
    for (int o = 0; o < penWidth; ++o) {
        const double offset = o - (penWidth - 1) / 2.0;
        // The middle columns reach the full width, so that a level line is the same everywhere.
        const double beside = std::abs(offset) <= 0.5 ? 0.0 : offset;
        const double radius = std::sqrt(penWidth * penWidth / 4.0 - beside * beside);
        const double* const sourceUpper = upper.constData() + margin + penWidth / 2 - o;
        const double* const sourceLower = lower.constData() + margin + penWidth / 2 - o;
        double* const up = penUpper.data();
        double* const low = penLower.data();
        for (int k = 0; k < count; ++k) {
            up[k] = std::min(up[k], sourceUpper[k] - radius);
            low[k] = std::max(low[k], sourceLower[k] + radius);
        }
    }
    const double middle = penWidth % 2 ? 0.5 : 0.0;
    findCourses();
    ramps.resize(count);
    for (int k = 0; k < count; ++k) {
        ramps[k] = 0;
        if (penUpper[k] > penLower[k])
            continue;
        // An even pen lies half a pixel to the right, as it lies half a pixel down.
        const int at = k + margin;
        const int next = penWidth % 2 ? at : at + 1;
        const double ramp =
            rampAt(at, penWidth / 2) > 0 ? (lower[at] - upper[at] + lower[next] - upper[next]) / 2 : 0;
        if (ramp > 0) { // a slanting line of the pen's width
            const double centre = (upper[at] + lower[at] + upper[next] + lower[next]) / 4;
            const double half = (penWidth * std::sqrt(1 + ramp * ramp) + ramp) / 2;
            penUpper[k] = centre - half;
            penLower[k] = centre + half;
            ramps[k] = ramp;
        }
        penUpper[k] += middle;
        penLower[k] += middle;
        if (penLower[k] - penUpper[k] < penWidth)
            penLower[k] = penUpper[k] + penWidth;
    }
}

// Which way the curve goes from each column to the next: on in one direction where the stretches touch and
// hardly overlap.
void CurvePainter::findCourses()
{
    constexpr double overlap = 0.5; // rows
    courses.resize(columnCount);
    courses[columnCount - 1] = 0;
    for (int i = 0; i + 1 < columnCount; ++i) {
        const bool rises = (lower[i + 1] <= upper[i] + overlap) & (upper[i + 1] <= upper[i]);
        const bool falls = (upper[i + 1] >= lower[i] - overlap) & (lower[i + 1] >= lower[i]);
        const bool isThere = (upper[i] <= lower[i]) & (upper[i + 1] <= lower[i + 1]);
        courses[i] = char(isThere * (rises * Rises + falls * Falls));
    }
}

// How many rows a curve that goes on in one direction rises or falls within a column; 0 where it turns, as
// noise does in every column: there the edges are level.
double CurvePainter::rampAt(int k, int reach) const
{
    const int away = reach + 1;
    if (k < away || k + away >= columnCount)
        return 0;
    char course = courses[k];
    for (int i = k - away; course && i < k + away; ++i)
        course = char(course & courses[i]);
    if (!course || upper[k] <= topLimit() || lower[k] >= bottomLimit())
        return 0;
    return lower[k] - upper[k];
}

void CurvePainter::dash(const Pen& pen)
{
    double whole = 0;
    for (const qreal dash : pen.dashes)
        whole += dash * pen.dashUnit;
    if (!(whole >= 1))
        return;
    for (int k = 0; k < penUpper.size(); ++k) {
        double along = std::fmod(canvas.left() + k, whole); // at the same places in a part of the canvas
        int part = 0;
        while (along >= pen.dashes[part] * pen.dashUnit)
            along -= pen.dashes[part++] * pen.dashUnit;
        if (part % 2) {
            penUpper[k] = infinity;
            penLower[k] = -infinity;
        }
    }
}

// The tip of a spike has nothing beside it that a smooth edge could go on to, and noise is all spikes: whole
// rows do there.
void CurvePainter::roundSpikes(QVector<double>& edge)
{
    constexpr double nearRows = 1;
    double before = infinity;
    double* const out = edge.data();
    const int count = edge.size();
    for (int k = 0; k < count; ++k) {
        const double own = out[k];
        const double after = k + 1 < count ? out[k + 1] : infinity;
        const bool goesOn = (std::abs(own - before) < nearRows) | (std::abs(own - after) < nearRows);
        if (!goesOn && ramps[k] == 0 && std::abs(own) < infinity)
            out[k] = floorRow(own + 0.5);
        before = own;
    }
}

// The rows of each column that are covered in full.
void CurvePainter::findWhole()
{
    const int count = penUpper.size();
    tops.resize(count);
    bottoms.resize(count);
    for (int k = 0; k < count; ++k) {
        tops[k] = bottoms[k] = canvas.top();
        if (penUpper[k] > penLower[k])
            continue;
        constexpr double hair = 0.5 / Spans::levels;
        const int top = std::max(ceilRow(penUpper[k] + ramps[k] - hair), canvas.top());
        const int bottom = std::min(floorRow(penLower[k] - ramps[k] + hair), canvas.bottom() + 1);
        tops[k] = std::min(top, canvas.bottom() + 1);
        bottoms[k] = std::max(bottom, tops[k]);
    }
}

void CurvePainter::Spans::add(int level, int column, int top, int bottom)
{
    QVector<QRect>& rects = level < levels ? part[level] : whole;
    QRect* const last = rects.isEmpty() ? nullptr : &rects.last();
    if (last && last->top() == top && last->bottom() == bottom - 1 && last->right() == column - 1)
        last->setRight(column);
    else
        rects.append(QRect(column, top, 1, bottom - top));
}

void CurvePainter::Spans::clear()
{
    whole.resize(0);
    for (QVector<QRect>& rects : part)
        rects.resize(0);
}

void CurvePainter::Spans::paint(QPainter* painter, const QColor& color) const
{
    painter->setPen(Qt::NoPen);
    painter->setBrush(color);
    painter->drawRects(whole);
    QColor shade = color;
    for (int level = 1; level < levels; ++level) {
        shade.setAlphaF(color.alphaF() * level / levels);
        if (part[level].isEmpty())
            continue;
        painter->setBrush(shade);
        painter->drawRects(part[level]);
    }
}

// First all upper edges and then all lower ones, so that equal neighbours follow each other.
void CurvePainter::collectEdges()
{
    const auto collectRows = [this](int k, int from, int to) {
        const double start = penUpper[k];
        const double end = -penLower[k]; // turned around, the lower edge is an upper one
        int runLevel = 0;
        int runTop = from;
        for (int row = from; row <= to; ++row) {
            int level = 0;
            if (row < to) {
                const double covered = coverOf(row, start, ramps[k]) + coverOf(-row - 1, end, ramps[k]) - 1;
                level = std::clamp(qRound(covered * Spans::levels), 0, Spans::levels);
            }
            if (row > from && level == runLevel && row < to)
                continue;
            if (row > from && runLevel > 0)
                result.add(runLevel, canvas.left() + k, runTop, row);
            runLevel = level;
            runTop = row;
        }
    };
    const int* const top = tops.constData();
    const int* const bottom = bottoms.constData();
    const double* const ramp = ramps.constData();
    const auto isLevel = [=](int k) { return ramp[k] == 0 && top[k] < bottom[k]; };
    for (int k = 0; k < tops.size(); ++k) {
        if (isLevel(k)) {
            const int level = qRound((top[k] - penUpper[k]) * Spans::levels);
            if (level > 0 && top[k] > canvas.top())
                result.add(level, canvas.left() + k, top[k] - 1, top[k]);
        } else if (penUpper[k] <= penLower[k]) {
            collectRows(k, std::max(floorRow(penUpper[k]), canvas.top()), top[k]);
        }
    }
    for (int k = 0; k < tops.size(); ++k) {
        if (isLevel(k)) {
            const int level = qRound((penLower[k] - bottom[k]) * Spans::levels);
            if (level > 0 && bottom[k] <= canvas.bottom())
                result.add(level, canvas.left() + k, bottom[k], bottom[k] + 1);
        } else if (penUpper[k] <= penLower[k]) {
            collectRows(k, bottom[k], std::min(ceilRow(penLower[k]), canvas.bottom() + 1));
        }
    }
}

void CurvePainter::collectColumns(const int* top, const int* bottom, int first, int last)
{
    for (int k = first; k < last;) {
        int next = k + 1;
        while (next < last && top[next] == top[k] && bottom[next] == bottom[k])
            ++next;
        if (top[k] < bottom[k])
            result.whole.append(QRect(canvas.left() + k, top[k], next - k, bottom[k] - top[k]));
        k = next;
    }
}

// Noise covers most rows of a column. There the rows that a group of columns has in common are filled at
// once, which writes whole cache lines, and only the ragged ends column by column.
void CurvePainter::collect()
{
    result.clear();
    const int count = tops.size();
    capTops.resize(count);
    capBottoms.resize(count);
    for (int first = 0; first < count; first += coreColumns) {
        const int last = std::min(first + coreColumns, count);
        const int coreTop = *std::max_element(tops.cbegin() + first, tops.cbegin() + last);
        const int coreBottom = *std::min_element(bottoms.cbegin() + first, bottoms.cbegin() + last);
        if (coreBottom - coreTop < coreColumns) {
            collectColumns(tops.constData(), bottoms.constData(), first, last);
            continue;
        }
        result.whole.append(QRect(canvas.left() + first, coreTop, last - first, coreBottom - coreTop));
        std::fill(capTops.begin() + first, capTops.begin() + last, coreBottom);
        std::fill(capBottoms.begin() + first, capBottoms.begin() + last, coreTop);
        collectColumns(tops.constData(), capBottoms.constData(), first, last);
        collectColumns(capTops.constData(), bottoms.constData(), first, last);
    }
}

const CurvePainter::Spans& CurvePainter::spans(const Curve& curve, const QwtScaleMap& yMap, const Pen& pen)
{
    cover(curve);
    widen(curve, yMap, std::clamp(pen.width, 1, maxPenWidth));
    if (!pen.dashes.isEmpty())
        dash(pen);
    roundSpikes(penUpper);
    roundSpikes(penLower);
    findWhole();
    collect();
    collectEdges();
    return result;
}

const QVector<QPointF>& CurvePainter::symbolPositions(const Curve& curve, const QwtScaleMap& xMap,
                                                      const QwtScaleMap& yMap)
{
    const Line row = rowLine(yMap, curve.unit);
    points.resize(0);
    for (int k = 0; k < columnCount; ++k) {
        const int from = std::max(starts[k], curve.from);
        const int to = std::min(starts[k + 1], curve.to);
        if (to - from <= 2) {
            for (int i = from; i < to; ++i) {
                if (std::isfinite(curve.y[i]))
                    points.append(QPointF(xMap.transform(times[i]), row.at(curve.y[i])));
            }
            continue;
        }
        double low = infinity;
        double high = -infinity;
        findExtremes(curve.y + from, curve.y + to, low, high);
        if (low <= high)
            points << QPointF(firstColumn + k, row.at(low)) << QPointF(firstColumn + k, row.at(high));
    }
    return points;
}

#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QtTest>

#include <cmath>
#include <limits>

#include <qwt_scale_map.h>

#include "graph/curvepainter.h"
#include "tests/common/testsupport.h"

namespace {

const QRect canvas(0, 0, 90, 60);
constexpr int zoom = 5; // of the plain picture, whose aliased lines are rough at their ends

QwtScaleMap makeMap(double p1, double p2, double s1, double s2)
{
    QwtScaleMap map;
    map.setPaintInterval(p1, p2);
    map.setScaleInterval(s1, s2);
    return map;
}

struct Case
{
    QVector<double> x;
    QVector<double> y;
    QwtScaleMap xMap = makeMap(0, 89, 0, 60);
    QwtScaleMap yMap = makeMap(59, 0, -50, 50);
    int from = 0;
    Sensor::AltUnit unit;

    double longest = std::numeric_limits<double>::infinity();

    QVector<QPolygonF> lines() const
    {
        QVector<QPolygonF> result{{}};
        for (int i = from; i < y.size(); ++i) {
            if (std::isnan(y[i]) || (i > 0 && x[i] - x[i - 1] > longest))
                result.append(QPolygonF());
            if (!std::isnan(y[i]))
                result.last() << QPointF(xMap.transform(x[i]),
                                         yMap.transform(y[i] * unit.factor + unit.offset));
        }
        return result;
    }
};

template<typename Value> Case makeCase(int n, Value value, double jitter = 0)
{
    Case c;
    QRandomGenerator random(7);
    double t = 0;
    for (int i = 0; i < n; ++i) {
        c.x << t;
        c.y << value(random, i);
        t += 60.0 / n * (1 + jitter * (random.generateDouble() - 0.5) * 2);
    }
    return c;
}

double noise(QRandomGenerator& random, int)
{
    return random.bounded(100.0) - 50;
}

double spikes(QRandomGenerator&, int i)
{
    return i % 977 == 500 ? 45 : std::sin(i / 900.0) * 20;
}

double wave(QRandomGenerator&, int i)
{
    return 40 * std::sin(i / 3.0);
}

// First and last covered row of a pixel column, (-1, -1) where there is none.
QPair<int, int> covered(const QImage& image, int column, int scale = 1)
{
    QPair<int, int> rows(-1, -1);
    for (int row = 0; row < canvas.height(); ++row) {
        if (qGray(image.pixel(column * scale + scale / 2, row * scale + scale / 2)) < 128) {
            rows.second = row;
            if (rows.first < 0)
                rows.first = row;
        }
    }
    return rows;
}

// What one of the pictures covers just inside an edge may lie just outside in the other.
bool isAlike(QPair<int, int> a, QPair<int, int> b, int tolerance)
{
    if (a.first < 0 || b.first < 0) {
        const auto seen = a.first < 0 ? b : a;
        return seen.first < 0 || seen.second < tolerance || seen.first >= canvas.height() - tolerance;
    }
    return qAbs(a.first - b.first) <= tolerance && qAbs(a.second - b.second) <= tolerance;
}

QImage blank(int scale = 1)
{
    QImage image(canvas.size() * scale, QImage::Format_RGB32);
    image.fill(Qt::white);
    return image;
}

QImage plainPicture(const Case& c, int width)
{
    QImage image = blank(zoom);
    QPainter painter(&image);
    painter.scale(zoom, zoom);
    painter.setPen(QPen(Qt::black, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const double middle = width % 2 ? 0.5 : 0; // of the pixel that the pen is centred on
    for (const QPolygonF& line : c.lines())
        painter.drawPolyline(line.translated(middle, middle));
    return image;
}

const CurvePainter::Spans& spansOf(CurvePainter& painter, const Case& c, const CurvePainter::Pen& pen)
{
    painter.forget();
    painter.setTime(c.x, c.xMap, canvas);
    return painter.spans({c.y.constData(), c.from, c.y.size(), c.unit, c.longest}, c.yMap, pen);
}

QImage spanPicture(const CurvePainter::Spans& spans)
{
    QImage image = blank();
    QPainter painter(&image);
    spans.paint(&painter, Qt::black);
    return image;
}

} // namespace

Q_DECLARE_METATYPE(Case)

class TestCurvePainter : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    void coversWhatALineCovers_data()
    {
        QTest::addColumn<Case>("c");
        row("noise, 33 samples a column", makeCase(3000, noise));
        row("noise, uneven times", makeCase(1000, noise, 0.9));
        row("lone peaks between many samples", makeCase(6000, spikes));
        row("several columns a sample", makeCase(40, wave));
        Case c = makeCase(2, noise);
        c.x[1] = 40;
        row("two samples", c);
        c = makeCase(1500, noise);
        c.from = 850;
        row("leading samples left out", c);
        c = makeCase(900, wave);
        c.yMap = makeMap(59, 0, 50, -50);
        row("scale upside down", c);
        c.unit = {-1.8, 12};
        row("other unit", c);
        c = makeCase(500, wave);
        c.xMap = makeMap(0, 89, 20.03, 20.51);
        row("zoomed in between two samples", c);
        c.yMap = makeMap(59, 0, 12, 17);
        row("values and times outside the canvas", c);
        c = makeCase(600, wave);
        for (int i = 0; i < 600; i += 3)
            c.x[i] = c.x[i / 50 * 50];
        std::sort(c.x.begin(), c.x.end());
        row("vertical jumps", c);
        c = makeCase(1500, noise);
        for (int i : {0, 1, 700, 701, 1499})
            c.y[i] = std::numeric_limits<double>::quiet_NaN();
        std::fill(c.y.begin() + 800, c.y.begin() + 1000, std::numeric_limits<double>::quiet_NaN());
        row("not a number", c);
        c = makeCase(40, wave);
        c.y[12] = c.y[13] = c.y[30] = std::numeric_limits<double>::quiet_NaN();
        for (int i = 20; i < 40; ++i)
            c.x[i] += 7.5;
        c.longest = 7;
        row("broken at gaps of values and of time", c);
        c = makeCase(300, wave);
        c.y.resize(130);
        row("channel shorter than the time", c);
    }

    void coversWhatALineCovers()
    {
        QFETCH(Case, c);
        for (int width : {1, 2, 4}) {
            const int tolerance = 2; // the rim of a round pen, the ends of a slant
            const QImage plain = plainPicture(c, width);
            const QImage fast = spanPicture(spansOf(painter, c, {width, {}}));
            for (int column = 0; column < canvas.width(); ++column) {
                const auto expected = covered(plain, column, zoom);
                const auto actual = covered(fast, column);
                QVERIFY2(isAlike(expected, actual, tolerance),
                         qPrintable(QStringLiteral("width %1, column %2").arg(width).arg(column)));
            }
        }
    }

    void showsOneSample()
    {
        Case c = makeCase(1, [](QRandomGenerator&, int) { return 0.0; });
        c.x[0] = 30.14;
        c.yMap = makeMap(60, 0, -50, 50);
        const QImage dot = spanPicture(spansOf(painter, c, {4, {}}));
        QCOMPARE(covered(dot, 45), qMakePair(28, 31));
        QCOMPARE(covered(dot, 57), qMakePair(-1, -1));
        QCOMPARE(painter.lonely(), QVector<int>({0}));
        c.y[0] = std::numeric_limits<double>::quiet_NaN();
        QVERIFY(spansOf(painter, c, {4, {}}).whole.isEmpty());

        // Of several it names those that no line leads to.
        c = makeCase(12, wave);
        for (int i : {1, 4, 6, 10})
            c.y[i] = std::numeric_limits<double>::quiet_NaN();
        spansOf(painter, c, {4, {}});
        QCOMPARE(painter.lonely(), QVector<int>({0, 5, 11}));
    }

    void dashesLeaveGaps()
    {
        const QImage dashed = spanPicture(spansOf(painter, makeCase(6000, spikes), {2, {4, 4}, 2}));
        for (int column = 0; column < canvas.width(); ++column)
            QCOMPARE(covered(dashed, column).first >= 0, column / 8 % 2 == 0);
    }

    void crowdedSymbolsKeepThePeaks()
    {
        Case c = makeCase(6000, spikes);
        painter.forget();
        painter.setTime(c.x, c.xMap, canvas);
        const auto places = painter.symbolPositions({c.y.constData(), 0, c.y.size(), c.unit}, c.xMap, c.yMap);
        QVERIFY(places.size() <= 2 * (canvas.width() + 2));
        const int peaks = int(std::count_if(places.cbegin(), places.cend(), [&](const QPointF& place) {
            return qAbs(place.y() - c.yMap.transform(45)) < 0.01;
        }));
        QCOMPARE(peaks, 6);
    }

private:
    CurvePainter painter; // kept from case to case, as a graph does from frame to frame
};

QTEST_MAIN(TestCurvePainter)
#include "test_curvepainter.moc"

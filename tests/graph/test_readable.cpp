// What can be told from the back row, read from the pictures themselves.

#include <QImage>
#include <QPainter>

#include <cmath>

#include <qwt_symbol.h>

#include "graph/colorscale.h"
#include "graph/contrast.h"
#include "graph/graphdesign.h"
#include "graph/strokemask.h"
#include "tests/graph/plottest.h"

namespace {

const QVector<QColor> grounds{Qt::white,         QColor("#f0f0f0"), QColor("#808080"), QColor("#4a7a30"),
                              QColor("#203040"), Qt::black,         Qt::yellow};

double linear(int channel)
{
    const double c = channel / 255.0;
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

int display(double c)
{
    c = qBound(0.0, c, 1.0);
    return qRound(255 * (c <= 0.0031308 ? 12.92 * c : 1.055 * std::pow(c, 1 / 2.4) - 0.055));
}

// Full dichromacy by Machado, Oliveira and Fernandes, "A Physiologically-based Model for Simulation of Color
// Vision Deficiency" (2009), on linear RGB.
using Matrix = QVector<double>;
const QVector<Matrix> visions{
    {1, 0, 0, 0, 1, 0, 0, 0, 1},
    {0.152286, 1.052583, -0.204868, 0.114503, 0.786281, 0.099216, -0.003882, -0.048116, 1.051998},
    {0.367322, 0.860646, -0.227968, 0.280085, 0.672501, 0.047413, -0.011820, 0.042940, 0.968881},
    {1.255528, -0.076749, -0.178779, -0.078411, 0.930809, 0.147602, 0.004733, 0.691367, 0.303900}};

QColor seen(const QColor& color, const Matrix& m)
{
    const double rgb[] = {linear(color.red()), linear(color.green()), linear(color.blue())};
    int out[3];
    for (int i = 0; i < 3; ++i)
        out[i] = display(m[3 * i] * rgb[0] + m[3 * i + 1] * rgb[1] + m[3 * i + 2] * rgb[2]);
    return QColor(out[0], out[1], out[2]);
}

// Of everything in a column of the picture.
double greatestContrast(const QImage& picture, int column, const QColor& ground)
{
    double best = 0;
    for (int row = 0; row < picture.height(); ++row)
        best = qMax(best, Contrast::between(picture.pixelColor(column, row), ground));
    return best;
}

} // namespace

class TestReadable : public PlotTest
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { ColorScale::setColorBlindPalette(false); }

    void everyCurveStandsOutFromItsGround_data()
    {
        columns<QString, int, bool>({"how", "samples", "isColorBlind"});
        row("by columns", QStringLiteral("line"), 2000, false);
        row("stroked", QStringLiteral("line"), 12, false);
        row("over a sensor", QStringLiteral("xy"), 500, false);
        row("points", QStringLiteral("points"), 12, false);
        row("on paper", QStringLiteral("paper"), 500, false);
        row("the other palette", QStringLiteral("line"), 2000, true);
    }

    void everyCurveStandsOutFromItsGround()
    {
        const auto [how, samples, isColorBlind] =
            fetched<QString, int, bool>({"how", "samples", "isColorBlind"});
        ColorScale::setColorBlindPalette(isColorBlind);
        QVector<double> rising(samples);
        for (int i = 0; i < samples; ++i)
            rising[i] = i;
        load(data.data(), {SENSOR_LIGHT, SENSOR_PH}, {rising, rising});
        data->finalData = true;
        if (how == QLatin1String("xy"))
            data->setXYIndex(1);
        show({400, 300});
        plot->setGrid(false);
        plot->getCurve(1)->hide();
        for (const QColor& ground : how == QLatin1String("paper") ? QVector<QColor>{Qt::white} : grounds) {
            plot->setCanvasBackground(ground);
            for (int i = 0; i < 13; ++i) {
                const QColor color =
                    i < 12 ? ColorScale::myColors(i) : ground; // the worst that one can choose
                plot->otherColorChanged(0, color);
                QImage picture = plot->canvas()->grab().toImage();
                if (how == QLatin1String("paper")) {
                    picture.fill(Qt::white);
                    QPainter painter(&picture);
                    plot->getCurve(0)->draw(&painter, plot->canvasMap(QwtPlot::xBottom),
                                            plot->canvasMap(QwtPlot::yLeft), picture.rect());
                } else if (how == QLatin1String("points")) {
                    plot->getCurve(0)->setMode(CURVE_SYMBOL);
                    plot->doUseDesignValues();
                    plot->setCanvasBackground(ground);
                    picture = plot->canvas()->grab().toImage();
                }
                const int column = place(0, how == QLatin1String("points") ? 5 : samples / 2, 0).x();
                const double contrast = greatestContrast(picture, column, ground);
                QVERIFY2(contrast >= Contrast::least,
                         qPrintable(
                             QStringLiteral("%1 on %2: %3").arg(color.name(), ground.name()).arg(contrast)));
            }
        }
    }

    void coloursStayApartInEveryVision()
    {
        ColorScale::setColorBlindPalette(true);
        QVector<QColor> colors{ColorScale::averageColor()};
        for (int i = 0; i < ColorScale::colorBlindColors; ++i)
            colors.append(ColorScale::myColors(i));
        double least = 1;
        for (const Matrix& vision : visions) {
            for (int i = 0; i < colors.size(); ++i) {
                for (int k = 0; k < i; ++k)
                    least = qMin(least, Contrast::distance(seen(colors[i], vision), seen(colors[k], vision)));
            }
        }
        QVERIFY2(least > 0.15, qPrintable(QString::number(least)));
        for (int i = 0; i < 24; ++i)
            colors.append(ColorScale::myColors(i));
        QVERIFY(ColorScale::dashes(colors, 8).isEmpty());
        QVERIFY(!ColorScale::dashes(colors, 9).isEmpty());
        QVERIFY(ColorScale::dashes(colors, 9) != ColorScale::dashes(colors, 17));
    }

    void theAverageLiesOnTop()
    {
        data->setDataNewEmpty({SensorPtr::create(SENSOR_PH), SensorPtr::create(SENSOR_PH)}, 1);
        for (int i = 0; i < 50; ++i)
            data->joinSample(0, i, 7);
        show({400, 300}, GRAPH_LINE, -1);
        const QImage picture = plot->canvas()->grab().toImage();
        const QPoint at = place(1, 25, 7);
        QCOMPARE(picture.pixelColor(at), ColorScale::averageColor());
        QCOMPARE(picture.pixelColor(at + QPoint(0, 4)), ColorScale::averageCasing());
    }

    // Both ways to the screen.
    void edgesAreSmooth_data()
    {
        columns<int>({"samples"});
        row("by columns", 2000);
        row("stroked", 3);
    }

    void edgesAreSmooth()
    {
        QFETCH(int, samples);
        QVector<double> slant(samples);
        for (int i = 0; i < samples; ++i)
            slant[i] = 1 + 10.0 * i / (samples - 1);
        load(data.data(), {SENSOR_PH}, {slant}, 100.0 / samples);
        show({500, 400});
        plot->setGrid(false);
        plot->setCanvasBackground(Qt::white);
        plot->otherColorChanged(0, Qt::black);
        const QImage picture = plot->canvas()->grab().toImage();
        // Of a straight line every column has as much ink, and no row begins with a jump.
        double least = 1e9;
        double most = 0;
        for (int column = 50; column < 350; ++column) {
            double ink = 0;
            for (int row = 0; row < picture.height(); ++row)
                ink += 1 - qGray(picture.pixel(column, row)) / 255.0;
            least = qMin(least, ink);
            most = qMax(most, ink);
        }
        QVERIFY2(most - least < 0.35 && least > 3.5,
                 qPrintable(QStringLiteral("%1 to %2").arg(least).arg(most)));
    }

    void denseStrokesAreFilled()
    {
        QImage picture(60, 60, QImage::Format_RGB32);
        picture.fill(Qt::white);
        QPainter painter(&picture);
        StrokeMask mask(picture.rect());
        QPolygonF line;
        for (int i = 0; i < 300; ++i)
            line.append(QPointF(30, 10 + i * 0.1) + QPointF(i % 2, 0) * 1e-3);
        mask.add(line, 9);
        mask.paint(&painter, Qt::black);
        for (int row = 15; row < 35; ++row) {
            for (int column = 26; column <= 34; ++column)
                QCOMPARE(qGray(picture.pixel(column, row)), 0);
            QCOMPARE(qGray(picture.pixel(24, row)), 255);
        }
    }

    // Two peaks within one coordinate show as two where that is two pixels wide.
    void scaledScreensShowTheirOwnPixels()
    {
        QVector<double> peaks(4000, 1.0);
        peaks[2000] = peaks[2012] = 12;
        load(data.data(), {SENSOR_PH}, {peaks}, 0.01);
        show({400, 300});
        plot->setGrid(false);
        plot->getCurve(0)->setPen(QPen(Qt::black, 0.5));
        QImage picture(plot->canvas()->size() * 2, QImage::Format_RGB32);
        picture.setDevicePixelRatio(2);
        picture.fill(Qt::white);
        plot->canvas()->render(&picture);
        const QPoint top = place(0, 20.06, 10) * 2;
        QVector<int> dark;
        for (int column = top.x() - 8; column < top.x() + 8; ++column) {
            if (qGray(picture.pixel(column, top.y())) < 128)
                dark.append(column);
        }
        QCOMPARE(dark.size(), 2);
        QVERIFY(dark[1] - dark[0] > 1);
    }

    void barsTellThatTheirAxisIsCut()
    {
        for (const double base : {0.0, 900.0}) {
            load(data.data(), {base > 0 ? SENSOR_BAROMETER : SENSOR_PH}, {{base + 0.2, base + 9, base + 5}});
            show({400, 300}, GRAPH_BAR);
            const QImage picture = plot->canvas()->grab().toImage();
            const QImage foot = picture.copy(0, picture.height() - 16, picture.width(), 14);
            double contrast = 0; // right of the bars, left of the title of the time
            for (int column = foot.width() / 2; column < foot.width() * 3 / 4; ++column)
                contrast = qMax(contrast, greatestContrast(foot, column, GraphDesign::background));
            QCOMPARE(contrast > 5, base > 0);
        }
    }
};

QTEST_MAIN(TestReadable)
#include "test_readable.moc"

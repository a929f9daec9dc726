// What can be told from the back row, read from the pictures themselves.

#include <QImage>
#include <QPainter>

#include <cmath>

#include <qwt_legend_label.h>
#include <qwt_scale_widget.h>
#include <qwt_symbol.h>
#include <qwt_text_label.h>

#include "graph/colorscale.h"
#include "graph/contrast.h"
#include "graph/curvenames.h"
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

class LayoutCounter : public QObject
{
public:
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::LayoutRequest ? 1 : 0;
        return false;
    }
    int count = 0;
};

} // namespace

class TestReadable : public PlotTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale::c()); }

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

    void everyMarkStandsOutFromItsGround()
    {
        showCurves();
        plot->setGrid(false);
        cross(0, 2);
        cross(0, 8);
        plot->doRegression(1);
        plot->newAnnotation(QPointF(600, 400));
        plot->getCurve(1)->setMode(CURVE_HIDDEN);
        for (myPlotMarker* marker : qAsConst(plot->markers)) {
            if (marker->type == MARKER_FLOATING_TEXT)
                marker->setShown(false);
        }
        GraphDesign::majGrid = GraphDesign::majGridFor(GraphDesign::background);
        GraphDesign::minGrid = GraphDesign::minGridFor(GraphDesign::background);
        for (const QColor& ground : grounds) {
            plot->otherColorChanged(0, ground);
            Plot::setSurroundings(ground);
            Plot::setBackgroundColor(ground);
            plot->doUseDesignValues();
            const QImage picture = plot->canvas()->grab().toImage();
            const auto contrastAt = [&](const QPointF& middle, int reach, const QColor& to) {
                const QRect box(middle.toPoint() - QPoint(reach, reach), QSize(2 * reach, 2 * reach));
                const QImage part = picture.copy(box);
                double best = 0;
                for (int column = 0; column < part.width(); ++column)
                    best = qMax(best, greatestContrast(part, column, to));
                return best;
            };
            const QPointF note = plot->markers.last()->pixelPos();
            const QColor box = picture.pixelColor((note - QPointF(0, 9)).toPoint());
            const double least = qMin(
                qMin(contrastAt(pixel(0, 2) + QPoint(5, 5), 1, ground), contrastAt(pixel(0, 5), 12, ground)),
                qMin(contrastAt(note, 8, box),
                     Contrast::between(plot->getCurve(1)->title().color(), ground)));
            QVERIFY2(least >= Contrast::least,
                     qPrintable(QStringLiteral("%1: %2").arg(ground.name()).arg(least)));
            QVERIFY(Contrast::between(GraphDesign::majGrid, ground) >
                    Contrast::between(GraphDesign::minGrid, ground));
            plot->setPalette(QPalette(ground));
            plot->setAutoFillBackground(true);
            const QImage whole = plot->grab().toImage();
            for (const QWidget* axis :
                 {plot->axisWidget(QwtPlot::yLeft), plot->axisWidget(QwtPlot::xBottom)}) {
                const QImage part = whole.copy(axis->geometry());
                double best = 0;
                for (int column = 0; column < part.width() / 2; ++column) // numbers and title, not the line
                    best = qMax(best, greatestContrast(part, column, ground));
                QVERIFY2(best >= Contrast::least, qPrintable(ground.name()));
            }
        }
    }

    void theAverageLiesOnTop()
    {
        for (const QColor& ground : grounds) {
            Plot::setBackgroundColor(ground);
            checkAverage(ground);
        }
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
        show({500, 500});
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
        QVERIFY2(most - least < 0.5 && least > 3.5,
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

    // Cells of eight loggers and graphs of the class, in windows of 1024, 1920 and 3840 pixels.
    void theCanvasHasItsShare_data()
    {
        columns<QSize, int>({"size", "index"});
        row("cell, 1024", QSize(251, 268), 0);
        row("cell with long names, 1024", QSize(251, 268), 1);
        row("cell, 1920", QSize(478, 475), 0);
        row("cell beside the class, 1024", QSize(251, 143), 0);
        row("cell with long names beside the class, 1024", QSize(251, 143), 1);
        row("cell beside the class, 1920", QSize(478, 290), 1);
        row("class over cells, 1024", QSize(1010, 240), -1);
        row("class over cells, 1920", QSize(1910, 382), -1);
        row("cell, 3840", QSize(955, 1000), 0);
        row("class, 1024", QSize(1010, 570), -1);
        row("class, 1920", QSize(1910, 950), -1);
        row("class, 3840", QSize(3830, 2010), -1);
    }

    void theCanvasHasItsShare()
    {
        const auto [size, index] = fetched<QSize, int>({"size", "index"});
        fill(index);
        PlotTest::show(size, GRAPH_LINE, index);
        QCoreApplication::processEvents();
        const QSize canvas = plot->canvas()->size();
        const double wide = double(canvas.width()) / size.width();
        const double high = double(canvas.height()) / size.height();
        QVERIFY2(wide >= 0.75 && high >= 0.75, qPrintable(QStringLiteral("%1 x %2").arg(wide).arg(high)));
        const double part = double(plot->axisFont(QwtPlot::yLeft).pixelSize()) / size.height();
        QVERIFY2(part > 1.0 / 50 && part < 1.0 / 17, qPrintable(QString::number(part)));
    }

    // At every width between that where the entries go below the title and that where they have room beside
    // it.
    void noEntryIsHidden()
    {
        fill(0);
        PlotTest::show({300, 300});
        const QWidget* const legend = plot->legend();
        for (int width = 220; width < 900; width += 7) {
            plot->resize(width, 300);
            QCoreApplication::processEvents();
            for (const QwtLegendLabel* item : legend->findChildren<QwtLegendLabel*>()) {
                const QRect place(item->mapTo(legend, QPoint()), item->size());
                QVERIFY2(legend->rect().contains(place), qPrintable(QString::number(width)));
            }
        }
    }

    void aGraphThatStandsIsNotLaidOut()
    {
        fill(0);
        for (const QSize& size : {QSize(478, 475), QSize(900, 300)}) {
            PlotTest::show(size);
            for (int i = 0; i < 5; ++i)
                QCoreApplication::processEvents();
            LayoutCounter counter;
            plot->installEventFilter(&counter);
            for (int i = 0; i < 5; ++i)
                QCoreApplication::processEvents();
            QCOMPARE(counter.count, 0);
        }
    }

    void theAxisIsOfTheActiveCurve_data()
    {
        columns<QColor, QColor>({"ground", "curve"});
        for (const QColor& ground : {QColor(0xf0, 0xf0, 0xf0), QColor(0x14, 0x24, 0x34)}) {
            for (const QColor& curve : {QColor(Qt::yellow), QColor(Qt::darkBlue), QColor(Qt::red)})
                QTest::newRow(qPrintable(curve.name() + " on " + ground.name())) << ground << curve;
        }
    }

    void theAxisIsOfTheActiveCurve()
    {
        QFETCH(QColor, ground);
        QFETCH(QColor, curve);
        Plot::setSurroundings(ground);
        fill(0);
        PlotTest::show({600, 400});
        plot->updateSens(1);
        plot->otherColorChanged(1, curve);
        const QColor axis = plot->axisWidget(QwtPlot::yLeft)->palette().color(QPalette::Text);
        QVERIFY(Contrast::between(axis, ground) >= 3);
        // The hue is that of the curve.
        const int turned = std::abs(axis.hslHue() - curve.hslHue());
        QVERIFY2(qMin(turned, 360 - turned) < 25, qPrintable(axis.name()));
    }

    void oneSizeInAllCells()
    {
        fill(0);
        QVector<int> sizes;
        for (const char* name : {"A", "A group with a very long name"}) {
            data->getSens(1)->name = QLatin1String(name);
            PlotTest::show({478, 475});
            plot->updateSens(1);
            plot->newMarker(0, -1, 10, data->interpolateY(0, 10));
            sizes << plot->axisFont(QwtPlot::xBottom).pixelSize()
                  << plot->axisTitle(QwtPlot::yLeft).font().pixelSize()
                  << plot->legend()->findChild<QwtLegendLabel*>()->font().pixelSize()
                  << plot->markers[1]->label().font().pixelSize();
        }
        QCOMPARE(sizes.mid(0, 4), sizes.mid(4));
    }

    void everyCurveOfTheClassHasItsNameAtItsEnd()
    {
        fill(-1);
        PlotTest::show({1000, 500}, GRAPH_LINE, -1);
        plot->getCurve(2)->setMode(CURVE_HIDDEN);
        const CurveNames* names = nullptr;
        for (const QwtPlotItem* item : plot->itemList())
            names = dynamic_cast<const CurveNames*>(item) ? dynamic_cast<const CurveNames*>(item) : names;
        QVERIFY(names);
        for (const bool isFinal : {false, true}) { // with room right of the ends and without
            data->finalData = isFinal;
            plot->Update();
            const QRectF canvas = plot->canvas()->contentsRect();
            QStringList texts;
            QRectF before;
            for (const CurveNames::Name& name :
                 names->places(plot->canvasMap(QwtPlot::xBottom), plot->canvasMap(QwtPlot::yLeft), canvas)) {
                texts.append(name.text);
                QVERIFY(canvas.contains(name.box) && !name.box.intersects(before));
                before = name.box;
            }
            texts.sort();
            QCOMPARE(texts.join(QString()), QStringLiteral("1245678"));
        }
    }

    void theClassNamesTheSensorOnce()
    {
        fill(-1);
        PlotTest::show({1000, 500}, GRAPH_LINE, -1);
        QCOMPARE(plot->getCurve(0)->title().text(), QStringLiteral("Group 1"));
        QVERIFY(plot->axisTitle(QwtPlot::yLeft).text().contains(data->getSens(0)->name));
        data->getSens(1)->name = QStringLiteral("Other");
        plot->setData();
        QVERIFY(plot->getCurve(0)->title().text().contains(data->getSens(0)->name));
    }

protected:
    void finish() override
    {
        Plot::setSurroundings(QColor(0xf0, 0xf0, 0xf0));
        Plot::setBackgroundColor(Qt::white);
        ColorScale::setColorBlindPalette(false);
        PlotTest::finish();
    }

private:
    void checkAverage(const QColor& ground)
    {
        data->setDataNewEmpty({SensorPtr::create(SENSOR_PH), SensorPtr::create(SENSOR_PH)}, 1);
        for (int i = 0; i < 50; ++i)
            data->joinSample(0, i, 7);
        show({400, 300}, GRAPH_LINE, -1);
        const QImage picture = plot->canvas()->grab().toImage();
        const QPoint at = place(1, 25, 7);
        QVERIFY(Contrast::between(picture.pixelColor(at), ground) >= Contrast::least);
        QVERIFY(Contrast::between(picture.pixelColor(at + QPoint(0, 4)), picture.pixelColor(at)) >= 10);
    }

    void fill(int index)
    {
        const int n = index < 0 ? 9 : 3 + index;
        const int ids[] = {SENSOR_UV, SENSOR_PH, SENSOR_EXT_TEMP, SENSOR_CONDUCTIVITY};
        SensorList sensors;
        for (int i = 0; i < n; ++i) {
            sensors.append(SensorPtr::create(index < 0 ? int(SENSOR_LIGHT) : ids[i]));
            if (index < 0)
                sensors.last()->groupName =
                    i < 8 ? QStringLiteral("Group %1").arg(i + 1) : QStringLiteral("Average");
        }
        for (int i = 0; index > 0 && i < n; ++i)
            sensors[i]->name = QStringLiteral("Acceleration %1").arg(i);
        data->setGroupName(index < 0 ? QString() : QStringLiteral("Group Ada"));
        data->setDataNewEmpty(sensors, 0.1, data->getGroupName());
        for (int k = 0; k < 200; ++k) {
            QVector<double> values;
            for (int i = 0; i < n; ++i)
                values << 3 + i + std::sin(0.05 * k + i);
            for (int i = 0; index < 0 && i < 8; ++i)
                data->joinSample(i, 0.1 * k, values[i]);
            if (index >= 0)
                data->addSample(0.1 * k, values);
        }
    }
};

QTEST_MAIN(TestReadable)
#include "test_readable.moc"

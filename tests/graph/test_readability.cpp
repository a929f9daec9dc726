#include <cmath>

#include <qwt_legend_label.h>
#include <qwt_scale_widget.h>
#include <qwt_text_label.h>

#include "graph/contrast.h"
#include "tests/graph/plottest.h"

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

/// What can be seen from the back row.
class TestReadability : public PlotTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale::c()); }

    // Cells of eight loggers and graphs of the class, in windows of 1024, 1920 and 3840 pixels.
    void theCanvasHasItsShare_data()
    {
        columns<QSize, int>({"size", "index"});
        row("cell, 1024", QSize(251, 268), 0);
        row("cell with long names, 1024", QSize(251, 268), 1);
        row("cell, 1920", QSize(478, 475), 0);
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
        keepPicture();
        const QSize canvas = plot->canvas()->size();
        const double wide = double(canvas.width()) / size.width();
        const double high = double(canvas.height()) / size.height();
        QVERIFY2(wide >= 0.75 && high >= 0.75, qPrintable(QStringLiteral("%1 x %2").arg(wide).arg(high)));
        for (const QwtLegendLabel* item : plot->legend()->findChildren<QwtLegendLabel*>())
            QVERIFY2(plot->rect().contains(QRect(item->mapTo(plot.data(), QPoint()), item->size())),
                     qPrintable(item->text().text()));
        const double part = double(plot->axisFont(QwtPlot::yLeft).pixelSize()) / size.height();
        QVERIFY2(part > 1.0 / 50 && part < 1.0 / 18, qPrintable(QString::number(part)));
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
        PlotTest::finish();
    }

private:
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
    void keepPicture()
    {
        const QString folder = qEnvironmentVariable("PELLANDRA_PICTURES");
        if (folder.isEmpty())
            return;
        plot->newMarker(0, -1, 5, data->interpolateY(0, 5));
        plot->newMarker(0, -1, 15, data->interpolateY(0, 15));
        plot->doRegression(1);
        plot->doIntegral();
        plot->setActivePlot(0);
        plot->grab().save(folder + '/' + QString(QTest::currentDataTag()).remove(' ') + ".png");
    }
};

QTEST_MAIN(TestReadability)
#include "test_readability.moc"

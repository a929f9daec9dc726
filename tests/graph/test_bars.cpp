#include <QApplication>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <cmath>

#include <qwt_legend.h>
#include <qwt_plot_histogram.h>
#include <qwt_scale_widget.h>

#include "data/expdata.h"
#include "graph/colorscale.h"
#include "graph/myplotcurve.h"
#include "graph/plot.h"
#include "graph/scalemanager.h"
#include "graph/scrollbar.h"
#include "graph/setrange.h"
#include "tests/common/fakeprompt.h"
#include "tests/common/testsupport.h"

class TestBars : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        guard.reset(new WarningGuard);
        data.reset(new ExpData);
    }
    void cleanup()
    {
        bars.reset();
        VERIFY_NO_WARNINGS(*guard);
        guard.reset();
    }

    void theWindowFitsTheNumberOfBars_data()
    {
        QTest::addColumn<int>("samples");
        QTest::addColumn<double>("dt");
        QTest::addColumn<bool>("isRun");
        QTest::addColumn<double>("from"); // in samples, as the next
        QTest::addColumn<double>("to");
        QTest::addColumn<double>("perUnit");
        QTest::addColumn<QString>("title");
        QTest::addColumn<int>("built");
        const double half = 1.0 / 3;
        QTest::newRow("one") << 1 << 1.0 << true << -half << 10 + half << 1.0 << "Time [s]" << 1;
        QTest::newRow("few") << 5 << 1.0 << true << -half << 10 + half << 1.0 << "Time [s]" << 5;
        QTest::newRow("11") << 11 << 0.1 << false << -half << 20 + half << 10.0 << "Time [s]" << 11;
        QTest::newRow("21") << 21 << 1.0 << true << -half << 40 + half << 1.0 << "Time [s]" << 21;
        QTest::newRow("41") << 41 << 1.0 << true << -half << 40 + half << 1.0 << "Time [s]" << 41;
        QTest::newRow("the newest") << 90 << 1.0 << true << 49 - half << 89 + half << 1.0 << "Time [s]" << 42;
        QTest::newRow("stopped") << 90 << 1.0 << false << -half << 40 + half << 1.0 << "Time [s]" << 42;
        QTest::newRow("minutes") << 101 << 1.0 << true << 60 - half << 100 + half << 60.0 << "Time [min]"
                                 << 42;
        QTest::newRow("manual") << 150 << 0.0 << true << 109 - half << 149 + half << 1.0 << "Sample" << 42;
        QTest::newRow("a long run") << 200000 << 0.01 << false << -half << 40 + half << 6000.0 << "Time [min]"
                                    << 42;
    }

    void theWindowFitsTheNumberOfBars()
    {
        QFETCH(int, samples);
        QFETCH(double, dt);
        QFETCH(double, from);
        QFETCH(double, to);
        QFETCH(double, perUnit);
        fill(samples, dt);
        QFETCH(bool, isRun);
        bars->updateBarData(isRun);
        const QwtInterval shown = bars->axisInterval(QwtPlot::xBottom);
        QCOMPARE(shown.minValue(), from / perUnit);
        QCOMPARE(shown.maxValue(), to / perUnit);
        QTEST(bars->axisTitle(QwtPlot::xBottom).text(), "title");
        QCOMPARE(scrollBar() && scrollBar()->isVisibleTo(bars.data()), samples > 40);

        const QwtPlotHistogram* hist = histogram();
        QTEST(int(hist->dataSize()), "built");
        for (size_t i = 0; i < hist->dataSize(); ++i) {
            const QwtIntervalSample bar = hist->sample(i);
            const double at = (bar.interval.minValue() + bar.interval.maxValue()) / 2 * perUnit;
            QVERIFY(std::abs(at - std::round(at)) < 1e-6);
            QVERIFY(std::abs(bar.interval.width() * perUnit - 2.0 / 3) < 1e-6);
            QCOMPARE(bar.value, data->getYAt(0, int(std::round(at))));
        }
    }

    void aPlaceThatTheUserChoseHolds()
    {
        fill(95, 1);
        bars->updateBarData(true);
        scrollBar()->setValue(scrollBar()->minimum() + (scrollBar()->maximum() - scrollBar()->minimum()) / 2);
        const double place = left();
        QVERIFY(place > 20 && place < 30);
        addSamples(3);
        QCOMPARE(left(), place);
        addSamples(50); // the axis goes over to minutes
        QVERIFY(std::abs(left() * 60 - place) < 1e-6);
        QCOMPARE(histogram()->sample(0).value, data->getYAt(0, int(std::ceil(place - 1))));
        data->finalData = true;
        bars->Update();
        QVERIFY(std::abs(left() * 60 - place) < 1e-6);
        data->finalData = false;
        scrollBar()->setValue(scrollBar()->maximum());
        addSamples(20);
        QVERIFY(std::abs(left() * 60 - (167 - 40 - 1.0 / 3)) < 1e-6);

        scrollBar()->setValue(scrollBar()->minimum());
        data->setDataNewEmpty(data->getSensors(), 1); // a new run begins at its newest bar again
        bars->updateBarData(true);
        QCOMPARE(int(histogram()->dataSize()), 0);
        for (int i = 0; i < 60; ++i)
            data->addSample(i, {1, 2});
        bars->updateBarData(true);
        QVERIFY(std::abs(left() - (59 - 40 - 1.0 / 3)) < 1e-6);
    }

    void barsShowTheSensorThatIsChosen()
    {
        fill(30, 1, 12);
        data->setSelectedSensor(0);
        QSignalSpy chosen(bars.data(), &Plot::changedActiveCurve);
        auto* legend = qobject_cast<QwtLegend*>(bars->legend());
        const auto click = [&](int i) {
            QTest::mouseClick(legend->legendWidget(bars->itemToInfo(bars->getCurve(i))), Qt::LeftButton);
        };
        click(0);
        QCOMPARE(chosen.size(), 0);
        click(1);
        QCOMPARE(chosen.size(), 1);
        QCOMPARE(chosen[0], QVariantList({3, 1}));
        bars->updateBarSens(1, false);
        QCOMPARE(int(histogram()->dataSize()), 12); // its series is shorter
        QCOMPARE(bars->axisTitle(QwtPlot::yLeft).text(), data->getSens(1)->getNameWithUnit(false));
        QCOMPARE(histogram()->brush().color(), ColorScale::myColors(1));
        QCOMPARE(data->getSelectedSensor(), 0); // the class goes on with its own
    }

    void aRangeFixedForBarsIsTheirsAlone()
    {
        fill(30, 1);
        Plot lines(data.data(), GRAPH_LINE, false, 3);
        lines.Update();
        const double lineMin = lines.scaler->getScaleMin(0);
        bars->updateBarData(false);
        QCOMPARE(bars->axisInterval(QwtPlot::yLeft).minValue(), lineMin);
        QTimer::singleShot(0, this, [] {
            auto* dialog = qobject_cast<SetRange*>(QApplication::activeModalWidget());
            const QPair<const char*, double> entries[] = {{"minval", -5}, {"maxval", 25}};
            for (const auto& entry : entries) {
                auto* field = dialog->findChild<QDoubleSpinBox*>(QLatin1String(entry.first));
                field->setValue(entry.second);
                Q_EMIT field->editingFinished();
            }
            dialog->findChild<QPushButton*>(QStringLiteral("buttonReverse"))->click();
            dialog->accept();
        });
        QTest::mousePress(bars->axisWidget(QwtPlot::yLeft), Qt::RightButton);
        const QwtScaleDiv& axis = bars->axisScaleDiv(QwtPlot::yLeft);
        QCOMPARE(axis.lowerBound(), 25.0); // upside down, as asked
        QCOMPARE(axis.upperBound(), -5.0);
        lines.Update();
        QCOMPARE(lines.scaler->getScaleMin(0), lineMin);
    }

    void aRightPressPicksTheColour()
    {
        fill(60, 1);
        FakePrompt prompt;
        prompt.picked = 0xff123456;
        bars->setUserPrompt(&prompt);
        bars->updateBarData(true);
        const double before = left();
        QSignalSpy changed(bars.data(), &Plot::colorChanged);
        QTest::mouseClick(bars->canvas(), Qt::RightButton);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(left(), before);
        bars->setBarData();
        QCOMPARE(histogram()->brush().color(), QColor(0x12, 0x34, 0x56));
        QCOMPARE(bars->getCurvePen(0).color(), QColor(0x12, 0x34, 0x56));
    }

private:
    // Two sensors; the second may have fewer samples.
    void fill(int samples, double dt, int ofSecond = 1)
    {
        QVector<double> t(samples);
        QVector<double> v(samples);
        for (int i = 0; i < samples; ++i) {
            t[i] = i * (dt > 0 ? dt : 1);
            v[i] = 10 + 9 * std::sin(0.3 * i);
        }
        data->setDataNew(2, t, dt);
        data->addSensorData(0, SENSOR_VOLTAGE, v, -1);
        data->addSensorData(1, SENSOR_PH, v.mid(0, ofSecond), -1);
        data->finalData = false;
        bars.reset(new Plot(data.data(), GRAPH_BAR, false, 3));
        bars->resize(600, 400);
        bars->show();
    }
    void addSamples(int count)
    {
        for (int i = 0; i < count; ++i)
            data->addSample(data->getX().last() + 1, {5, 5});
        bars->updateBarData(true);
    }
    const QwtPlotHistogram* histogram() const
    {
        return static_cast<const QwtPlotHistogram*>(bars->itemList(QwtPlotItem::Rtti_PlotHistogram).value(0));
    }
    ScrollBar* scrollBar() const { return bars->findChild<ScrollBar*>(); }
    double left() const { return bars->axisInterval(QwtPlot::xBottom).minValue(); }

    QScopedPointer<WarningGuard> guard;
    QScopedPointer<ExpData> data;
    QScopedPointer<Plot> bars;
};

QTEST_MAIN(TestBars)
#include "test_bars.moc"

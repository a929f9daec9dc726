#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <qwt_plot.h>
#include <qwt_plot_layout.h>

#include "graph/scrollbar.h"
#include "graph/scrollzoomer.h"
#include "graph/setrange.h"
#include "tests/common/testsupport.h"

class TestRangeControls : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    void dialogWritesTheRange()
    {
        SetRange dialog;
        double min = 0;
        double max = 0;
        dialog.Params(0.80951, 1.2, -559.5, 192120, &min, &max); // beyond the usual bounds
        QCOMPARE(min, 0.80951);
        auto* minval = dialog.findChild<QDoubleSpinBox*>(QStringLiteral("minval"));
        auto* maxval = dialog.findChild<QDoubleSpinBox*>(QStringLiteral("maxval"));

        QTest::keyClick(minval, Qt::Key_Tab); // leaving a field untouched does not round it
        Q_EMIT minval->editingFinished();
        QCOMPARE(min, 0.80951);
        maxval->selectAll();
        QTest::keyClicks(maxval, QStringLiteral("1.5"));
        QCOMPARE(max, 1.2);
        QTest::keyClick(maxval, Qt::Key_Return);
        QCOMPARE(max, 1.5);

        dialog.findChild<QPushButton*>(QStringLiteral("buttonReverse"))->click();
        QCOMPARE(min, 1.5);
        QCOMPARE(max, 0.80951);
        QCOMPARE(minval->value(), 1.5);
        dialog.findChild<QPushButton*>(QStringLiteral("buttonDefault"))->click();
        QCOMPARE(max, 192120.0);
        QCOMPARE(minval->value(), -559.5);
        dialog.offerAutomatic();
        QVERIFY(!dialog.isAutomatic());
        dialog.findChild<QPushButton*>(QStringLiteral("buttonAutomatic"))->click();
        QVERIFY(dialog.isAutomatic() && dialog.result() == QDialog::Accepted);
    }

    void windowScrollsAlongTheBars()
    {
        QwtPlot plot;
        plot.resize(400, 300);
        plot.setAxisScale(QwtPlot::xBottom, 0, 40);
        plot.setAxisScale(QwtPlot::yLeft, 0, 10);
        plot.show();
        QVERIFY(QTest::qWaitForWindowExposed(&plot));
        plot.replot();
        ScrollZoomer zoomer(plot.canvas());
        const int margin = plot.plotLayout()->canvasMargin(QwtPlot::xTop);

        const QRectF window(60, 0, 40, 10);
        zoomer.zoom(window);
        zoomer.setZoomBase(QRectF(0, 0, 100, 10));
        ScrollBar* bar = zoomer.scrollBar(Qt::Horizontal);
        QVERIFY(bar && bar->isVisible());
        QVERIFY(!zoomer.scrollBar(Qt::Vertical));
        QCOMPARE(bar->y(), plot.canvas()->contentsRect().top());
        QCOMPARE(bar->width(), plot.canvas()->contentsRect().width());
        QVERIFY(plot.plotLayout()->canvasMargin(QwtPlot::xTop) > margin);
        QCOMPARE(bar->value(), bar->maximum());

        QSignalSpy zoomed(&zoomer, &QwtPlotZoomer::zoomed);
        bar->setValue(bar->minimum());
        QCOMPARE(zoomed.count(), 1);
        QCOMPARE(zoomer.zoomRect(), QRectF(0, 0, 40, 10));
        QCOMPARE(plot.axisInterval(QwtPlot::xBottom).maxValue(), 40.0);

        plot.resize(600, 300);
        QTRY_COMPARE(bar->width(), plot.canvas()->contentsRect().width());

        QTest::mousePress(plot.canvas(), Qt::LeftButton, Qt::NoModifier, {50, 50});
        QVERIFY(!zoomer.isActive()); // no rectangle begins
        QTest::mouseRelease(plot.canvas(), Qt::LeftButton, Qt::NoModifier, {50, 50});

        zoomer.zoom(window);
        zoomer.setZoomBase(zoomer.zoomRect());
        QVERIFY(!bar->isVisible());
        QCOMPARE(plot.plotLayout()->canvasMargin(QwtPlot::xTop), margin);
    }
};

QTEST_MAIN(TestRangeControls)
#include "test_rangecontrols.moc"

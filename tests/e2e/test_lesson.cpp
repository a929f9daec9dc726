#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QFile>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTableWidget>
#include <QTextDocument>

#include "app/iconlists.h"
#include "app/keptruns.h"
#include "app/report.h"
#include "data/curvefit.h"
#include "graph/myplotmarker.h"
#include "graph/plot.h"
#include "graph/scalemanager.h"
#include "tests/e2e/virtualclassbench.h"

/// One lesson from the first run to the file that is opened on another day.
class TestLesson : public VirtualClassBench
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void whatWasSavedOpensAsTheSamePicture()
    {
        start(3, {QStringLiteral("--model"), QStringLiteral("Dune"), QStringLiteral("--seed"),
                  QStringLiteral("3"), QStringLiteral("--samples"), QStringLiteral("100"),
                  QStringLiteral("--rate"), QStringLiteral("25/Sec")});
        connectAll(3);
        run(3, 100);
        QTRY_VERIFY(action("runAct")->isVisible());
        window->findChild<QComboBox*>(QStringLiteral("layouts"))->setCurrentIndex(1);
        picture();
        analyse();
        annotate();
        crop();
        const QImage before = picture();
        const int samples = classData()->getXSize();

        save();
        open();
        QCOMPARE(window->statusBar()->currentMessage(), QString());
        QVERIFY(!classData()->isNeedSave() && !data(0)->isNeedSave());
        QCOMPARE(classData()->getXSize(), samples);
        QCOMPARE(graph()->markers.size(), 3);
        // The file rounds values and packs the picture, so a line may lie a pixel beside the old one.
        const QImage after = picture();
        QCOMPARE(after.size(), before.size());
        const bool isLike = strayPixels(before, after) + strayPixels(after, before) == 0;
        if (!isLike && before.save(QStringLiteral("lesson-before.png")))
            after.save(QStringLiteral("lesson-after.png"));
        QVERIFY2(isLike, "see lesson-before.png and lesson-after.png");
        // From then on nothing changes any more.
        save();
        open();
        QVERIFY(picture() == after);
    }

    /// Cooling water and a pendulum, twice; the first run stands behind the second one, a curve is fitted to
    /// the water of all groups, and the report says what the window said.
    void fromTheFirstRunToTheReport()
    {
        start(3, {QStringLiteral("--model"), QStringLiteral("Dune"), QStringLiteral("--samples"),
                  QStringLiteral("100"), QStringLiteral("--rate"), QStringLiteral("25/Sec")});
        connectAll(3);
        for (int i = 0; i < 2; ++i) {
            run(3, 1);
            QTRY_VERIFY_WITH_TIMEOUT(data(2)->getXSize() == 100 && action("runAct")->isVisible(), 15000);
        }
        auto* const runs = window->findChild<KeptRuns*>();
        QCOMPARE(runs->all().size(), 1);
        runs->pin(runs->ids().constFirst(), true);
        const QStringList parameters = fitTheWater();
        QCOMPARE(parameters.size(), 3);
        for (int i = 0; i < 3; ++i)
            QCOMPARE(manager->plotAt(i)->markers.size(), 2); // a line and its text
        action("undoAct")->trigger();
        action("redoAct")->trigger();
        const QString text = report();
        QVERIFY(text.contains(QStringLiteral("School of the Lake")));
        for (int i = 0; i < 3; ++i) {
            QVERIFY2(text.contains(manager->groupName(i)), qPrintable(text));
            QVERIFY2(text.contains(parameters.at(i)), qPrintable(parameters.at(i) + " in " + text));
        }
    }

private:
    QDialog* dialog(const char* name) const { return window->findChild<QDialog*>(QLatin1String(name)); }
    void choose(const char* list, int code) const
    {
        auto* const box = window->findChild<QComboBox*>(QLatin1String(list));
        Q_EMIT box->activated(box->findData(code));
    }

    /// The first parameter of each group, as the table has it.
    QStringList fitTheWater()
    {
        for (int i = 0; i < 3; ++i) {
            int water = 0;
            while (data(i)->getSens(water)->ID != SENSOR_EXT_TEMP)
                ++water;
            Q_EMIT manager->plotAt(i)->changedActiveCurve(i, water); // as by a click in the legend
        }
        Q_EMIT manager->plotAt(0)->changedActivePlot(0);
        choose("regression", REG_FIT);
        QDialog* const fits = dialog("fitDialog");
        auto* const models = fits->findChild<QComboBox*>(QStringLiteral("model"));
        models->setCurrentIndex(models->findData(int(CurveFit::Model::Exponential)));
        fits->findChild<QCheckBox*>(QStringLiteral("forAll"))->setChecked(true);
        auto* const put = fits->findChild<QPushButton*>(QStringLiteral("put"));
        QStringList firsts;
        const auto look = [&] {
            firsts.clear();
            const auto* const table = fits->findChild<QTableWidget*>(QStringLiteral("results"));
            for (int row = 0; row < 3 && table->item(row, 1); ++row)
                firsts.append(table->item(row, 1)->text());
            return put->isEnabled() && firsts.size() == 3 && !firsts.contains(QString());
        };
        [&] { QTRY_VERIFY(look()); }();
        put->click();
        fits->close();
        return firsts;
    }

    QString report()
    {
        prompt.file = folder->filePath(QStringLiteral("report.html"));
        choose("exports", EXPORT_REPORT);
        QDialog* const ask = dialog("reportDialog");
        ask->findChild<QLineEdit*>(QStringLiteral("school"))->setText(QStringLiteral("School of the Lake"));
        QSignalSpy done(window->findChild<Report*>(), &Report::done);
        ask->accept();
        [&] { QTRY_COMPARE(done.count(), 1); }();
        QFile file(prompt.file);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        QTextDocument document;
        document.setHtml(QString::fromUtf8(file.readAll()));
        return document.toPlainText().simplified();
    }

    Plot* graph() const { return manager->plotC(); }

    void save()
    {
        prompt.file = folder->filePath(QStringLiteral("one.lesson"));
        action("saveAct")->trigger();
    }

    void open()
    {
        window.reset();
        makeWindow();
        window->setArgumentFile(prompt.file);
    }

    /// How many pixels of `a` have no like on or next to their place in `b`.
    static int strayPixels(const QImage& a, const QImage& b)
    {
        int strays = 0;
        for (int y = 1; y < a.height() - 1; ++y) {
            for (int x = 1; x < a.width() - 1; ++x) {
                int best = 255;
                for (int k = 0; k < 9; ++k) {
                    const QRgb p = a.pixel(x, y), q = b.pixel(x - 1 + k % 3, y - 1 + k / 3);
                    best = qMin(best, qMax(qAbs(qRed(p) - qRed(q)),
                                           qMax(qAbs(qGreen(p) - qGreen(q)), qAbs(qBlue(p) - qBlue(q)))));
                }
                strays += best > 24;
            }
        }
        return strays;
    }

    /// Where a sample of the active curve shows.
    QPoint at(int sample) const
    {
        const auto& scale = graph()->scaler;
        const double share = (classData()->getYAt(0, sample) - scale->getScaleMin(0)) /
                             (scale->getScaleMax(0) - scale->getScaleMin(0));
        return QPointF(graph()->transform(QwtPlot::xBottom, classData()->getXAt(sample)),
                       (1 - share) * graph()->canvas()->height())
            .toPoint();
    }

    void analyse()
    {
        QAction* marker = action("markerAct");
        marker->trigger();
        for (int sample : {1, 97})
            QTest::mouseClick(graph()->canvas(), Qt::LeftButton, {}, at(sample));
        marker->trigger();
        QCOMPARE(graph()->curveMarker.size(), 2);
        auto* functions = window->findChild<QComboBox*>(QStringLiteral("regression"));
        for (int code : {REG_LIN, REG_INTEGRAL})
            Q_EMIT functions->activated(functions->findData(code));
        QCOMPARE(graph()->markers.size(), 8); // crosses, line and area, each with its text
    }

    void annotate()
    {
        QImage drawing(120, 80, QImage::Format_RGB32);
        drawing.fill(Qt::darkGreen);
        prompt.file = folder->filePath(QStringLiteral("drawing.png"));
        QVERIFY(drawing.save(prompt.file));
        QAction* annotate = action("annotateAct");
        annotate->trigger();
        QTest::mouseClick(graph()->canvas(), Qt::LeftButton, {}, at(50) + QPoint(0, 120));
        auto* dialog = graph()->findChild<QDialog*>(QStringLiteral("bubbleEdit"));
        QVERIFY(dialog);
        dialog->findChild<QPlainTextEdit*>()->setPlainText(QStringLiteral("What is this?"));
        dialog->findChild<QPushButton*>(QStringLiteral("imageButton"))->click();
        dialog->accept();
        annotate->trigger();
        QVERIFY(graph()->markers.last()->isPic());
    }

    void crop()
    {
        prompt.answer = UserPrompt::Answer::Yes;
        action("cropAct")->trigger();
        QVERIFY2(qAbs(classData()->getXSize() - 96) < 3, "between the crosses");
        graph()->removeMarker(graph()->markers[2]); // an area is not kept in files
        QCOMPARE(graph()->markers.size(), 3);
    }

    /// As it stays once everything is drawn that was due.
    QImage picture() const
    {
        QImage last;
        QImage now;
        do {
            last = now;
            QTest::qWait(60);
            now = graph()->canvas()->grab().toImage();
        } while (now != last);
        return last;
    }
};

int main(int argc, char** argv)
{
    return VirtualClassBench::exec<TestLesson>(argc, argv);
}

#include "test_lesson.moc"

#include <QComboBox>
#include <QDialog>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStatusBar>

#include "app/iconlists.h"
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
        QCOMPARE(data(0)->getXSize(), samples);
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

private:
    Plot* graph() const { return manager->plotC(); }

    void save()
    {
        prompt.file = folder->filePath(QStringLiteral("lesson.xml"));
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

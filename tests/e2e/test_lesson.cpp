#include <QComboBox>
#include <QDialog>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStatusBar>

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
        QTRY_VERIFY(window->findChild<QAction*>(QStringLiteral("runAct"))->isVisible());
        window->findChild<QComboBox*>(QStringLiteral("layouts"))->setCurrentIndex(1);
        picture();
        analyse();
        annotate();
        crop();
        const QImage before = picture();
        const int samples = classData()->getXSize();

        save();
        QVERIFY(!classData()->isNeedSave());
        open();
        QCOMPARE(window->statusBar()->currentMessage(), QString());
        QVERIFY(!classData()->isNeedSave() && !data(0)->isNeedSave());
        QCOMPARE(data(0)->getXSize(), samples);
        QCOMPARE(graph()->markers.size(), 3);
        // The file rounds values and packs the picture, so a line may lie a pixel beside the old one.
        const QImage after = picture();
        QCOMPARE(after.size(), before.size());
        const int strays = strayPixels(before, after) + strayPixels(after, before);
        if (strays > 0) {
            before.save(QStringLiteral("lesson-before.png"));
            after.save(QStringLiteral("lesson-after.png"));
        }
        QVERIFY2(strays == 0, "see lesson-before.png and lesson-after.png");
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
        window->findChild<QAction*>(QStringLiteral("saveAct"))->trigger();
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
        constexpr int like = 24;
        const auto isLike = [](QRgb p, QRgb q) {
            return qAbs(qRed(p) - qRed(q)) < like && qAbs(qGreen(p) - qGreen(q)) < like &&
                   qAbs(qBlue(p) - qBlue(q)) < like;
        };
        int strays = 0;
        for (int y = 1; y < a.height() - 1; ++y) {
            for (int x = 1; x < a.width() - 1; ++x) {
                bool isFound = false;
                for (int k = 0; k < 9 && !isFound; ++k)
                    isFound = isLike(a.pixel(x, y), b.pixel(x - 1 + k % 3, y - 1 + k / 3));
                strays += isFound ? 0 : 1;
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
        QAction* marker = window->findChild<QAction*>(QStringLiteral("markerAct"));
        marker->trigger();
        for (int sample : {1, 97})
            QTest::mouseClick(graph()->canvas(), Qt::LeftButton, {}, at(sample));
        marker->trigger();
        QCOMPARE(graph()->curveMarker.size(), 2);
        auto* functions = window->findChild<QComboBox*>(QStringLiteral("regression"));
        for (int item : {1, 5})
            Q_EMIT functions->activated(item);
        QCOMPARE(graph()->markers.size(), 8); // crosses, line and area, each with its text
    }

    void annotate()
    {
        QImage drawing(120, 80, QImage::Format_RGB32);
        drawing.fill(Qt::darkGreen);
        prompt.file = folder->filePath(QStringLiteral("drawing.png"));
        QVERIFY(drawing.save(prompt.file));
        QAction* annotate = window->findChild<QAction*>(QStringLiteral("annotateAct"));
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
        window->findChild<QAction*>(QStringLiteral("cropAct"))->trigger();
        QVERIFY2(qAbs(classData()->getXSize() - 96) < 3, "between the crosses");
        // The common range still covers what was cut off, but only until the file is opened.
        QVector<double> all;
        for (int i = 0; i < 3; ++i)
            all += classData()->getYNoConv(i);
        const auto [low, high] = std::minmax_element(all.cbegin(), all.cend());
        const auto& extremes = *classData();
        QCOMPARE(*low, *std::min_element(extremes.minY.cbegin(), extremes.minY.cbegin() + 3));
        QCOMPARE(*high, *std::max_element(extremes.maxY.cbegin(), extremes.maxY.cbegin() + 3));
        QCOMPARE(graph()->markers.size(), 5);
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

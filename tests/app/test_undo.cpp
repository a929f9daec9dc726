#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QMenu>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <qwt_legend_label.h>
#include <qwt_scale_widget.h>

#include "app/iconlists.h"
#include "app/keptruns.h"
#include "app/predictionkeeper.h"
#include "app/undosteps.h"
#include "data/stretch.h"
#include "graph/scalemanager.h"
#include "instruments/statusline.h"
#include "instruments/table.h"
#include "persistence/lesson.h"
#include "persistence/readwrite.h"
#include "tests/app/classbench.h"

namespace {

/// What stands in a file of each graph, and how each looks.
struct Shown
{
    QStringList runs;
    QVector<QByteArray> files;
    QVector<QImage> pictures;
};

/// Where the program puts a text depends on what else was on the graph.
QString withoutPlaces(const QByteArray& file)
{
    const auto* const words = reinterpret_cast<const char16_t*>(file.constData());
    static const QRegularExpression places(
        QStringLiteral("(\"floating text\" iSens=\"\\d+\") X=\"[^\"]*\" Y=\"[^\"]*\" xOffset=\"[^\"]*\" "
                       "yOffset=\"[^\"]*\""));
    return QString::fromUtf16(words, file.size() / 2).replace(places, QStringLiteral("\\1"));
}

void clickRight(QWidget* widget)
{
    QTest::mouseClick(widget, Qt::RightButton, {}, widget->rect().center());
}

} // namespace

/// Taking back and doing again, on the real window.
class TestUndo : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        bench.reset(new ClassBench(2));
        for (short n = 0; n < 40; ++n) {
            bench->sample(0, n, n * n * 0.1);
            bench->sample(1, n, 2.0 + n);
        }
        bench->prompt.answer = UserPrompt::Answer::Yes;
        bench->action("layoutAct3")->trigger();
        bench->action("markerAct")->trigger();
        choose(0);
        bench->window->activateWindow();
        QTRY_VERIFY(bench->window->isActiveWindow());
        steps = bench->window->findChild<UndoSteps*>();
    }
    void finish() override { bench.reset(); }

    void stop()
    {
        bench->tellEnd(0);
        bench->tellEnd(1);
        QVERIFY(!bench->manager->isAnyRunning());
        bench->data(-1)->setXRange();
        plot(-1)->setData();
        settle();
    }

    Plot* plot(int i) const { return bench->manager->viewsOf(i).first(); }
    int count() const { return steps->doneNames().size(); }
    QString told() const { return bench->window->findChild<StatusLine*>()->outcome(); }
    void function(regressionCode code)
    {
        auto* const list = bench->window->findChild<QComboBox*>(QStringLiteral("regression"));
        Q_EMIT list->activated(list->findData(code));
    }
    void settle()
    {
        for (int i : {-1, 0, 1, -1, 0}) {
            plot(i)->Update();
            QCoreApplication::processEvents(); // a legend of other lines changes the size of the canvas
        }
    }
    void choose(int i)
    {
        Q_EMIT bench->manager->plotAt(0)->changedActivePlot(i);
        current = plot(i);
    }

    QPoint onCurve(double x) const
    {
        QwtScaleMap map = current->canvasMap(QwtPlot::yLeft);
        current->scaler->fixScaleY(&map, 0);
        return QPointF(current->transform(QwtPlot::xBottom, x),
                       map.transform(bench->data(current->getIndex())->interpolateY(0, x)))
            .toPoint();
    }
    void place(double x) { QTest::mouseClick(current->canvas(), Qt::LeftButton, {}, onCurve(x)); }
    myPlotMarker* some(int number) const
    {
        return current->markers.isEmpty() ? nullptr : current->markers[number % current->markers.size()];
    }
    void drag(myPlotMarker* marker, const QPoint& way, bool isLetGo = true)
    {
        const QPoint from = marker->pixelPos().toPoint();
        QTest::mousePress(current->canvas(), Qt::LeftButton, {}, from);
        QMouseEvent move(QEvent::MouseMove, from + way, Qt::NoButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(current->canvas(), &move);
        if (isLetGo)
            QTest::mouseRelease(current->canvas(), Qt::LeftButton, {}, from + way);
    }
    QDialog* openNote()
    {
        current->newAnnotation(QPointF(120, 80));
        auto* const dialog = current->findChild<QDialog*>(QStringLiteral("bubbleEdit"));
        dialog->findChild<QPlainTextEdit*>()->setPlainText(QStringLiteral("Here it boils"));
        return dialog;
    }
    void setRange()
    {
        QTimer::singleShot(0, [] {
            auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            auto* const top = dialog->findChild<QDoubleSpinBox*>(QStringLiteral("maxval"));
            top->setValue(top->value() * 1.5 + 1);
            Q_EMIT top->editingFinished();
            dialog->accept();
        });
        clickRight(current->axisWidget(QwtPlot::yLeft));
    }
    void setX(int number)
    {
        clickRight(current->axisWidget(QwtPlot::xBottom));
        QMenu* const menu = current->findChildren<QMenu*>(QStringLiteral("xAxisMenu")).last();
        const QList<QAction*> choices = menu->actions();
        choices[number % 2 ? 0 : 2 + number % (choices.size() - 2)]->trigger();
        menu->close();
    }

    /// A group of the class, by the legend's menu.
    void tickOut(int group)
    {
        choose(-1);
        for (QwtLegendLabel* label : current->findChildren<QwtLegendLabel*>()) {
            if (!label->text().text().startsWith(QStringLiteral("Group %1").arg(QChar('A' + group))))
                continue;
            QTest::mouseClick(label, Qt::RightButton, Qt::ShiftModifier);
            auto* const menu = current->findChild<QMenu*>(QStringLiteral("legendMenu"));
            menu->findChild<QAction*>(QStringLiteral("countAct"))->trigger();
            menu->close();
            return;
        }
    }
    void changeRuns(int number)
    {
        const QVector<int> ids = runs().ids();
        const int id = ids.isEmpty() ? 0 : ids.at(number % ids.size());
        if (!id)
            return;
        switch (number % 5) {
        case 0:
            runs().rename(id, QStringLiteral("Water %1").arg(number));
            break;
        case 1:
            runs().remove(id);
            break;
        case 2:
            runs().average(ids.constFirst(), ids.constLast());
            break;
        default:
            runs().pin(id, !runs().find(id)->outline.isPinned);
        }
    }
    /// Two more runs of both groups.
    void runAgain()
    {
        for (int round = 1; round <= 2; ++round) {
            for (short n = 0; n < 40; ++n) {
                bench->sample(0, n, n * n * 0.1 + round);
                bench->sample(1, n, 2.0 + n * round);
            }
            stop();
        }
        QCOMPARE(runs().all().size(), 2);
    }
    KeptRuns& runs() const { return *bench->window->findChild<KeptRuns*>(); }

    void change(int kind, int number)
    {
        myPlotMarker* const marker = some(number);
        switch (kind) {
        case 0:
        case 1:
            place(bench->data(current->getIndex())->getMaxX() * (number % 100) / 100);
            break;
        case 2:
            if (marker)
                drag(marker, QPoint(number % 60 - 30, number % 30 - 15));
            break;
        case 3:
            if (marker)
                current->verifyAndRemoveMarker(number % current->markers.size());
            break;
        case 4:
            if (marker && number % 3 == 0)
                current->lockMarker(marker, false);
            break;
        case 5:
            openNote()->accept();
            break;
        case 6:
            bench->action("cropAct")->trigger();
            break;
        case 7:
            setRange();
            break;
        case 8:
            setX(number);
            break;
        case 9:
            clickRight(current->findChildren<QwtLegendLabel*>()[0]);
            break;
        case 15: {
            const Stretch stretch = current->stretch();
            const CurveFit::Fit fit = CurveFit::fit(CurveFit::Model::Parabola, stretch.x, stretch.y);
            if (fit.isGood())
                current->addFit({fit, stretch.xUnit, stretch.yUnit}, stretch.iSens, stretch.from, stretch.to);
            break;
        }
        case 16:
            if (!bench->data(-1)->getSens(0)->name.contains(QStringLiteral("smooth")))
                tickOut(number % 2);
            break;
        case 17: {
            Prediction line = Predictions::about(*bench->data(current->getIndex()), 0);
            line.draw({0, double(number % 100)}, {1.0 + number % 20, 40});
            if (number % 4 > 0)
                bench->window->findChild<PredictionKeeper*>()->take(current->getIndex(), line);
            else
                function(REG_UNPREDICT);
            break;
        }
        case 18:
        case 19:
            changeRuns(number);
            break;
        default:
            for (const auto code : {REG_LIN, REG_QUAD, REG_SMOOTH, REG_DERIVATIVE, REG_INTEGRAL}) {
                if (kind-- == 10)
                    function(code);
            }
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    Shown shown()
    {
        choose(-1);
        settle();
        Shown now;
        for (const KeptRun& run : runs().all())
            now.runs << run.outline.name + QString::number(run.outline.isPinned);
        for (int i : {-1, 0}) {
            plot(i)->showPredictions(); // how far off they are is told anew each second
            plot(i)->keepCurveModesInData();
            const QString file = folder.filePath(QStringLiteral("x.xml"));
            const bool isWritten = ReadWrite::write(file, QString(), bench->data(i), plot(i)->scaler->scales,
                                                    plot(i)->markers, {}, QString());
            QFile in(file);
            now.files << (isWritten && in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray());
            now.pictures << plot(i)->grab().toImage();
        }
        return now;
    }

    /// Empty when all is the same; else what is not, and where its pictures are.
    static QString difference(const Shown& now, const Shown& then)
    {
        QString text = now.runs == then.runs ? QString() : QStringLiteral(" runs ") + now.runs.join(',');
        for (int i = 0; i < now.files.size(); ++i) {
            if (withoutPlaces(now.files[i]) != withoutPlaces(then.files[i]))
                text += QStringLiteral(" file %1").arg(i);
            if (now.files[i] != then.files[i] || now.pictures[i] == then.pictures[i])
                continue;
            const QString path = QDir::temp().filePath(QLatin1String(QTest::currentDataTag()));
            now.pictures[i].save(path + QStringLiteral("-now.png"));
            then.pictures[i].save(path + QStringLiteral("-then.png"));
            text += QStringLiteral(" picture %1: %2").arg(i).arg(path);
        }
        return text;
    }

    QTemporaryDir folder;
    QScopedPointer<ClassBench> bench;
    UndoSteps* steps = nullptr;
    Plot* current = nullptr;

private Q_SLOTS:
    void stepsGoBackAndForth_data()
    {
        columns<int>({"seed"});
        for (int seed = 1; seed <= 8; ++seed)
            row(qPrintable(QString::number(seed)), seed);
    }

    void stepsGoBackAndForth()
    {
        const auto [seed] = fetched<int>({"seed"});
        constexpr int wanted = 20;
        constexpr int kinds = 20;
        stop();
        runAgain();
        QRandomGenerator dice{quint32(seed)};
        QVector<Shown> states{shown()};
        for (int tries = 0; count() < wanted && tries < 300; ++tries) {
            choose(dice.bounded(2) - 1);
            const int before = count();
            const int kind = dice.bounded(kinds);
            change(kind, dice.bounded(1000));
            QVERIFY2(count() <= before + 1, qPrintable(QString::number(kind)));
            if (count() == before)
                continue;
            states.append(shown());
        }
        QCOMPARE(count(), wanted);
        for (int round = 0; round < 2; ++round) {
            bench->window->activateWindow();
            QTRY_VERIFY(bench->window->isActiveWindow());
            for (int i = wanted - 1; i >= 0; --i) {
                QTest::keyClick(bench->window.data(), Qt::Key_Z, Qt::ControlModifier);
                QCOMPARE(difference(shown(), states[i]), QString());
            }
            QCOMPARE(count(), 0);
            for (int i = 1; i <= wanted; ++i) {
                QTest::keyClick(bench->window.data(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
                QCOMPARE(difference(shown(), states[i]), QString());
            }
        }
    }

    /// What cannot be taken back now is told, and stays for later or goes with the run that it was of.
    void waitsForWhatLasts_data()
    {
        columns<QString, int>({"what", "laterSteps"});
        row("note", QStringLiteral("note"), 2);
        row("drag", QStringLiteral("drag"), 2);
        row("drag that the layout ends", QStringLiteral("layout"), 1);
        row("note when a run begins", QStringLiteral("note, run"), 0);
        row("drag when a run begins", QStringLiteral("drag, run"), 0);
    }

    void waitsForWhatLasts()
    {
        const auto [what, laterSteps] = fetched<QString, int>({"what", "laterSteps"});
        stop();
        place(10);
        QCOMPARE(count(), 1);
        QPointer<QDialog> note;
        const QPoint way(60, 0);
        const QPoint from = some(0)->pixelPos().toPoint();
        if (what.startsWith(QStringLiteral("note")))
            note = openNote();
        else
            drag(some(0), way, false);
        steps->undo();
        QCOMPARE(count(), 1);
        QVERIFY(told().contains(QStringLiteral("First")));
        if (what.contains(QStringLiteral("run"))) {
            bench->tell(0, {{7, 1}, {9, 1}});
            bench->sample(0, 0, 1);
            QVERIFY(bench->manager->isAnyRunning());
        }
        if (what == QStringLiteral("layout"))
            bench->action("layoutAct2")->trigger();
        else if (note)
            note->accept();
        else
            QTest::mouseRelease(current->canvas(), Qt::LeftButton, {}, from + way);
        QCOMPARE(count(), laterSteps);
        steps->undo(laterSteps);
        QCOMPARE(count(), 0);
        QVERIFY(current->markers.isEmpty());
    }

    void theRightAxisComesAndGoes()
    {
        const auto isOn = [this] { return current->axisEnabled(QwtPlot::yRight); };
        function(REG_RIGHT);
        QVERIFY(isOn() && count() == 1);
        bench->sample(0, 40, 7);
        steps->undo();
        QVERIFY(!isOn());
        steps->redo();
        QVERIFY(isOn());
        function(REG_RIGHT); // there is no further sensor
        QVERIFY(!isOn() && count() == 2);
        steps->undo();
        QVERIFY(isOn());
    }

    void aRunGoesOn()
    {
        ExpData* const set = bench->data(0);
        function(REG_DERIVATIVE);
        const int channels = set->getNSens();
        place(10);
        bench->sample(0, 40, 7);
        steps->undo(2);
        QCOMPARE(set->getNSens(), channels - 1);
        QCOMPARE(set->getXSize(), 41);
        steps->redo(2);
        QCOMPARE(set->getNSens(), channels);
        QCOMPARE(set->getYSize(channels - 1), 41);
        QCOMPARE(current->curveMarker.size(), 1);
    }

    void whatNeedsThePastWaitsForTheEndOfTheRun()
    {
        stop();
        choose(1);
        const QVector<QVector<double>> measured = bench->data(1)->getData();
        function(REG_SMOOTH);
        bench->tell(0, {{7, 1}, {9, 1}});
        bench->sample(0, 0, 1);
        steps->undo();
        QCOMPARE(count(), 1);
        QVERIFY(told().contains(QStringLiteral("no logger is running")));
        bench->tellEnd(0);
        steps->undo();
        QCOMPARE(bench->data(1)->getData(), measured);
        QCOMPARE(steps->undoneNames().size(), 1);
        place(10);
        QCOMPARE(steps->undoneNames().size(), 0);
    }

    void aCropWhileAMarkerIsHeldIsOneStep()
    {
        stop();
        place(10);
        place(20);
        const int rows = bench->data(0)->getXSize();
        const double before = some(0)->xValue();
        drag(some(0), QPoint(20, 0), false);
        QVERIFY(some(0)->xValue() != before);
        bench->action("cropAct")->trigger();
        QTest::mouseRelease(current->canvas(), Qt::LeftButton);
        QCOMPARE(count(), 3);
        QVERIFY(steps->doneNames().first().startsWith(QStringLiteral("Crop")));
        steps->undo();
        QCOMPARE(bench->data(0)->getXSize(), rows);
        QCOMPARE(current->curveMarker.size(), 2);
        QCOMPARE(some(0)->xValue(), before);
    }

    void theClassKeepsWhatWasChosenSince()
    {
        stop();
        choose(-1);
        place(10);
        place(20);
        ExpData* const set = bench->data(-1);
        const int rows = set->getXSize();
        bench->action("cropAct")->trigger();
        QVERIFY(set->getXSize() < rows);
        const QString first = set->getSens(0)->name;
        Q_EMIT plot(0)->changedActiveCurve(0, 1);
        QVERIFY(set->getSens(0)->name != first);
        steps->undo();
        QCOMPARE(set->getXSize(), rows);
        QVERIFY(set->getSens(0)->name != first);
        QCOMPARE(set->getYNoConv(0), bench->data(0)->getYNoConv(1));
        QCOMPARE(set->getYNoConv(1), bench->data(1)->getYNoConv(0));
    }

    /// The class has what the group has, before and after.
    void aLessonKeepsAValueThatWasTyped()
    {
        stop();
        choose(0);
        const auto values = [this] {
            return QVector<double>{bench->data(0)->getYNoConvAt(0, 7), bench->data(-1)->getYNoConvAt(0, 7)};
        };
        const QVector<double> measured = values();
        auto* const views = bench->window->findChild<QComboBox*>(QStringLiteral("views"));
        Q_EMIT views->activated(views->findData(VIEW_TABLE));
        QAbstractItemModel* const rows = bench->window->findChild<Table*>()->model();
        rows->setData(rows->index(7, 1), QStringLiteral("3.25"));
        QCOMPARE(values(), (QVector<double>{3.25, 3.25}));
        bench->prompt.file = folder.filePath(QStringLiteral("typed.lesson"));
        bench->prompt.filter = QStringLiteral("(*.lesson)");
        bench->action("saveAct")->trigger();
        const QString file = bench->prompt.file;
        finish();
        begin();
        stop();
        bench->prompt.answer = UserPrompt::Answer::No;
        bench->prompt.file = file;
        bench->action("openAct")->trigger();
        QTRY_COMPARE(count(), 1);
        QCOMPARE(values(), (QVector<double>{3.25, 3.25}));
        steps->undo();
        QCOMPARE(values(), measured);
        steps->redo();
        QCOMPARE(values(), (QVector<double>{3.25, 3.25}));
    }

    /// What was done before a lesson was saved is taken back after it was opened, also in another window.
    void aLessonKeepsItsSteps()
    {
        stop();
        QVector<QVector<QVector<double>>> measured;
        for (int i : {-1, 0}) {
            choose(i);
            measured.append(bench->data(i)->getData());
            place(10);
            function(REG_DERIVATIVE);
            function(REG_SMOOTH);
            place(30);
            bench->action("cropAct")->trigger();
            function(REG_DERIVATIVE);
            setRange();
        }
        Shown states[4];
        QByteArray files[2];
        for (int round = 0; round < 2; ++round) {
            bench->prompt.file = folder.filePath(QStringLiteral("%1.lesson").arg(round));
            bench->prompt.filter = QStringLiteral("(*.lesson)");
            bench->action("saveAct")->trigger();
            QFile file(bench->prompt.file);
            QVERIFY(file.open(QIODevice::ReadOnly));
            files[round] = file.readAll();
            if (round == 0) {
                finish();
                begin();
                stop();
                bench->prompt.answer = UserPrompt::Answer::No; // what this window measured may go
            }
            bench->prompt.file = file.fileName();
            bench->action("openAct")->trigger();
            QTRY_COMPARE(count(), 8);
            auto* const kept = bench->window->findChild<KeptRuns*>(); // what gave way to it
            for (const int id : kept->ids())
                kept->drop(id);
            states[2 * round] = shown();
            steps->undo(8);
            QCOMPARE(count(), 0);
            for (int i : {0, -1})
                QCOMPARE(bench->data(i)->getData(), measured[i + 1]);
            QVERIFY(bench->data(0)->getSens(0)->readSetMinMax); // no step of samples
            states[2 * round + 1] = shown();
            steps->redo(8);
            QCOMPARE(count(), 8);
        }
        QCOMPARE(files[1], files[0]);
        const int rows = bench->data(-1)->getXSize();
        Q_EMIT plot(0)->changedActiveCurve(0, 1);
        QCOMPARE(bench->data(-1)->getXSize(), rows); // cut also for who joins anew
        Lesson lesson;
        QString reason;
        QVERIFY(LessonFile::read(files[0], &lesson, &reason) && reason.isEmpty());
        lesson.parts.first().isRawStored = false;
        QVERIFY(LessonFile::write(bench->prompt.file, lesson, &reason));
        QVERIFY(LessonFile::read(bench->prompt.file, &lesson, &reason) && !reason.isEmpty());
        QVERIFY(lesson.parts.first().isStored && lesson.parts.first().steps.isEmpty());
        QCOMPARE(difference(states[2], states[0]), QString());
        QCOMPARE(difference(states[3], states[1]), QString());
    }

    void fiftyStepsShareTheirSamples()
    {
        stop();
        choose(0);
        ExpData* const set = bench->data(0);
        const QVector<double> measured = set->getYNoConv(0);
        const double* const other = set->getYNoConv(1).constData();
        for (int i = 0; i <= UndoSteps::most; ++i)
            function(REG_SMOOTH);
        QCOMPARE(count(), UndoSteps::most);
        QCOMPARE(set->getYNoConv(1).constData(), other);
        steps->undo(UndoSteps::most);
        QCOMPARE(count(), 0);
        QVERIFY(set->getYNoConv(0) != measured); // the first of 51 stays
        QCOMPARE(set->getYNoConv(1).constData(), other);
    }
};

QTEST_MAIN(TestUndo)
#include "test_undo.moc"

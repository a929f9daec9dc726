#include <QAction>
#include <QComboBox>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QPrinter>
#include <QPushButton>
#include <QSlider>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTimer>

#include "persistence/readwrite.h"
#include "setup/syncdata.h"
#include "tests/app/classbench.h"

/// The commands that read and write files, on the real window.
class TestFiles : public GuardedTest
{
    Q_OBJECT

public Q_SLOTS:
    void launch(const QUrl& url) { launched = url.toLocalFile(); }

private:
    void begin() override
    {
        folder.reset(new QTemporaryDir);
        bench.reset(new ClassBench(2));
        for (short n = 0; n < 20; ++n) {
            bench->sample(0, n, 1 + n);
            bench->sample(1, n, 2 + n);
        }
    }

    void endRun()
    {
        for (int i : {0, 1})
            Q_EMIT bench->logger(i)->runTerminated(i, false);
    }

    void finish() override { bench.reset(); }

private Q_SLOTS:
    void savingEndsTheNeedToSave_data()
    {
        columns<QString, QString, bool, QByteArray>({"name", "filter", "isSaved", "start"});
        row("experiment", "a.xml", "(*.xml)", true, QByteArray("\xFF\xFE<\0", 4));
        row("spreadsheet", "a.csv", "(*.csv)", true, QByteArray("\xEF\xBB\xBFTime [s],"));
        row("the ending decides", "a.xml", "(*.csv)", true, QByteArray("\xFF\xFE<\0", 4));
        row("no such folder", "none/a.xml", "(*.xml)", false, QByteArray());
        row("spreadsheet nowhere", "none/a.csv", "(*.csv)", false, QByteArray());
        row("cancelled", "", "(*.xml)", false, QByteArray());
    }

    void savingEndsTheNeedToSave()
    {
        const auto [name, filter, isSaved] = fetched<QString, QString, bool>({"name", "filter", "isSaved"});
        ReadWrite::setDefaultDataPath(path("x.xml"));
        if (isSaved) // else there is more to come
            endRun();
        bench->prompt.file = name.isEmpty() ? QString() : path(name);
        bench->prompt.filter = filter;
        bench->action("saveAct")->trigger();
        const QRegularExpression offer(
            QStringLiteral("^%1/\\d\\d\\.\\d\\d\\.\\d{4}_\\d\\d(\\.\\d\\d){2}\\.lesson$")
                .arg(folder->path()));
        QVERIFY2(offer.match(bench->prompt.offered).hasMatch(), qPrintable(bench->prompt.offered));
        QCOMPARE(bench->data(-1)->isNeedSave(), !isSaved);
        QVERIFY(bench->data(0)->isNeedSave()); // a file of the class has one channel of it
        QCOMPARE(bench->prompt.asked.filter(QStringLiteral("File not saved|")).size(),
                 !isSaved && !name.isEmpty() ? 1 : 0);
        QFETCH(QByteArray, start);
        QFile file(path(name));
        QCOMPARE(file.open(QIODevice::ReadOnly), isSaved);
        if (isSaved) {
            QVERIFY(file.read(40).startsWith(start));
            QCOMPARE(bench->window->windowTitle().startsWith(name + " - "), name.endsWith(".xml"));
            QVERIFY(bench->window->statusBar()->currentMessage().contains(name));
        }
        bench->prompt.asked.clear();
        QStringList& asked = bench->prompt.asked;
        if (isSaved) {
            QVERIFY(!bench->window->close());
            QCOMPARE(asked.size(), 1);
            QVERIFY(asked[0].startsWith("Changes not saved|What the loggers measured is in no file yet"));
            return;
        }
        bench->data(0)->setNeedSave(false);                // the class set asks all the same
        bench->prompt.answers = {UserPrompt::Answer::Yes}; // without an end, if that did not do
        QVERIFY(!bench->window->close() && bench->window->isVisible());
        QCOMPARE(asked.size(), 3);
        QVERIFY(asked[0].startsWith("Changes not saved|A run is going on; the loggers go on"));
        QVERIFY(asked[0].endsWith("Do you want to save experiment and annotations before leaving?"));
        QCOMPARE(asked[2].contains("a." + QFileInfo(name).suffix() + " can't be written"), !name.isEmpty());
    }

    void aSetKnowsItsFile_data()
    {
        // written: by Ctrl+S; x.xml where a name had to be chosen
        columns<QString, QString, QString, QString>({"argument", "dropped", "written", "asked"});
        row("of the command line", "a.xml", "", "a.xml", "What the loggers measured");
        row("opened later", "a.xml", "b.xml", "b.xml", "");
        row("opened alone", "", "b.xml", "b.xml", "");
        row("of no file", "", "", "x.xml", "Save experiment data|");
        row("saved before", "", "save", "b.xml", "");
        row("could not be read", "plain.xml", "", "x.xml", "File not opened|plain.xml can't be opened");
        row("could be read in parts", "part.xml", "", "x.xml", "File opened in part|part.xml was read but");
        row("table", "", "t.csv", "x.xml", "Save experiment data|");
        row("run after it", "a.xml", "run", "x.xml", "Save experiment data|");
    }

    void aSetKnowsItsFile()
    {
        const auto [argument, dropped, written, asked] =
            fetched<QString, QString, QString, QString>({"argument", "dropped", "written", "asked"});
        QVERIFY(ReadWrite::write(path("a.xml"), "T", bench->data(-1), {}, {}, {}, "Line"));
        QByteArray part = contents("a.xml");
        part.replace(QByteArray("D\0a\0t\0a\0I\0n\0d\0e\0x\0=\0\"\0001", 24),
                     QByteArray("D\0a\0t\0a\0I\0n\0d\0e\0x\0=\0\"\0009", 24));
        const std::pair<const char*, QByteArray> files[] = {{"b.xml", contents("a.xml")},
                                                            {"plain.xml", "plain"},
                                                            {"part.xml", part},
                                                            {"t.csv", "Time [s],UV [UVI]\n0,7\n1,8\n"}};
        for (const auto& [name, text] : files) {
            QFile file(path(name));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        }
        bench->sample(0, 20, 21);
        if (!argument.isEmpty())
            bench->window->setArgumentFile(path(argument));
        bench->prompt.answer = UserPrompt::Answer::No; // to save the run first
        if (dropped == "run")
            bench->action("runAct")->trigger();
        else if (dropped == "save")
            save(path("b.xml"));
        else if (!dropped.isEmpty())
            drop(path(dropped));
        bench->prompt.answer = UserPrompt::Answer::Cancel;
        bench->prompt.file = path("x.xml");
        bench->manager->plotC()->updateTitle("Changed");
        bench->action("saveNowAct")->trigger();
        for (const char* name : {"a.xml", "b.xml", "plain.xml", "part.xml", "t.csv", "x.xml"})
            QCOMPARE(QString::fromUtf16(reinterpret_cast<const char16_t*>(contents(name).constData()))
                         .contains("Changed"),
                     written == name);
        QVERIFY2(bench->prompt.asked.join('\n').contains(asked), qPrintable(bench->prompt.asked.join('\n')));
        QVERIFY(bench->window->isVisible());
    }

    void aRunBehindAFileIsNotLost()
    {
        save(path("a.xml"));
        bench->sample(0, 20, 21);
        drop(path("a.xml"));
        QCOMPARE(bench->data(-1)->getXSize(), 21); // cancelled
        bench->prompt.answer = UserPrompt::Answer::No;
        drop(path("a.xml"));
        QCOMPARE(bench->data(-1)->getXSize(), 20);
        save(path("b.xml"));
        bench->prompt.answer = UserPrompt::Answer::Cancel;
        bench->action("exitAct")->trigger();
        QVERIFY(bench->prompt.asked.last().contains("What the loggers measured"));
        QCOMPARE(bench->data(-1)->getXSize(), 21); // it shows what it asks about
    }

    void openingAFile_data()
    {
        columns<QString, QByteArray, int, QString>({"name", "text", "samples", "said"});
        row("experiment", "a.xml", QByteArray(), 20, "");
        row("spreadsheet", "a.CSV", QByteArray("Time [s],UV [UVI]\n0,7\n1,8\n2,9\n"), 3, "");
        row("not xml", "a.xml", QByteArray("plain"), 0, "a.xml can't be opened: ");
        row("bad line", "a.csv", QByteArray("Time [s],UV [UVI]\n0,7\n1\n"), 0, "line 3");
        row("no file", "none.xml", QByteArray(), 0, "none.xml can't be opened: ");
        row("another kind", "a.txt", QByteArray("0,7"), 0, "");
    }

    void openingAFile()
    {
        const auto [name, text, samples, said] =
            fetched<QString, QByteArray, int, QString>({"name", "text", "samples", "said"});
        bench->manager->plotC()->getCurve(1)->hide();
        save(path("a.xml"));
        bench->manager->plotC()->getCurve(1)->show();
        if (!text.isEmpty()) {
            QFile file(path(name));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        }
        bench->sample(0, 20, 21); // there is something to lose
        bench->prompt.answer = UserPrompt::Answer::No;
        drop(path(name));
        QCOMPARE(bench->prompt.asked.size(), name.endsWith("txt") ? 1 : 2);
        const bool isOpened = samples > 0;
        QCOMPARE(bench->data(-1)->getXSize(), isOpened ? samples : 21);
        QCOMPARE(bench->data(-1)->isNeedSave(), !isOpened);
        QCOMPARE(layoutList()->isEnabled(), !isOpened);
        QCOMPARE(bench->manager->plotC()->isVisible(), isOpened);
        const QString status = bench->window->statusBar()->currentMessage();
        QVERIFY2(status.contains(said) && (isOpened ? status.isEmpty() : true), qPrintable(status));
        if (!isOpened)
            return;
        if (text.isEmpty()) // the file knows which curve was hidden
            QVERIFY(!bench->manager->plotC()->getCurve(1)->isShown());
        bench->sample(0, 21, 22); // the run goes on, without a trace in the file
        Q_EMIT bench->manager->plotAt(0)->changedActiveCurve(0, 1);
        QCOMPARE(bench->data(-1)->getXSize(), samples);
        bench->action("runAct")->trigger();
        QVERIFY(layoutList()->isEnabled());
    }

    void anAppendedExperimentSlides()
    {
        save(path("a.xml"));
        endRun();
        ExpData* set = bench->data(0);
        const int before = set->getNSens();
        QVector<int> pads;
        const auto append = [&] {
            bench->window->setOpenMode(OPEN_APPEND);
            drop(path("a.xml"));
        };
        QTimer::singleShot(0, this, [&] {
            auto* dialog = qobject_cast<SyncData*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            drop(path("a.xml")); // the dialog is about what is on the screen
            QVERIFY(layoutList()->isEnabled());
            for (int shift : {5, 2, -3}) {
                dialog->findChild<QSlider*>()->setValue(shift);
                pads << set->getLeftPad(before) << set->getLeftPad(0) << set->getXSize();
            }
            dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::RestoreDefaults)->click();
            pads << set->getLeftPad(0);
            dialog->accept();
        });
        append();
        QCOMPARE(pads, QVector<int>({5, 0, 25, 2, 0, 22, 0, 3, 23, 0}));
        QCOMPARE(set->getNSens(), before + 3); // two loggers and their average
        set->dt *= 2;
        append();
        QVERIFY(bench->prompt.asked.last().startsWith(QLatin1String("Cannot append experiment|")));
        QCOMPARE(set->getNSens(), before + 3);
        drop(path("a.xml")); // plainly again
        QVERIFY(!layoutList()->isEnabled());
        const std::tuple<float, const char*, int> sliders[] = {{0.0005F, "100 samples", 100},
                                                               {0.01F, "2 sec", 200},
                                                               {0.04F, "4 sec", 100},
                                                               {60.0F, "100 samples", 100}};
        for (const auto& [dt, end, samples] : sliders) {
            const SyncData dialog(dt);
            QCOMPARE(dialog.findChild<QLabel*>("labelRight")->text(), QString(end));
            QCOMPARE(dialog.findChild<QSlider*>()->maximum(), samples);
        }
    }

    void exportsAndPrintTakeTheGraphThatIsSeen()
    {
        QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "launch");
        bench->prompt.file = path("sheet.csv");
        for (int chosen : {-1, 1}) {
            layoutList()->setCurrentIndex(chosen < 0 ? 1 : 0);
            Q_EMIT bench->manager->plotAt(0)->changedActivePlot(chosen);
            choose(0);
            QCOMPARE(QFileInfo(launched), QFileInfo(path("sheet.csv")));
            QFile file(launched);
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(file.readLine().count(','), bench->data(chosen)->getNSens());
        }
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));

        bench->prompt.file = path("image.png");
        Q_EMIT bench->manager->plotAt(0)->changedActivePlot(-1);
        choose(1);
        QVERIFY(!QFile::exists(path("image.png"))); // of which of the cells?
        QTest::mouseClick(bench->manager->plotAt(1)->canvas(), Qt::LeftButton);
        choose(1);
        QVERIFY(!QImage(path("image.png")).isNull());
        bench->prompt.file = path("none/image.png");
        choose(1);
        QVERIFY(bench->prompt.asked.last().startsWith(QLatin1String("File not saved|")));

        bench->window->setPrinterChoice([this](QPrinter* printer) {
            printer->setOutputFileName(path("page.pdf"));
            return true;
        });
        bench->action("printAct")->trigger();
        QVERIFY(QFileInfo(path("page.pdf")).size() > 0);
    }

private:
    QString path(const QString& name) const { return folder->filePath(name); }
    QByteArray contents(const char* name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QComboBox* layoutList() const { return bench->window->findChild<QComboBox*>(QStringLiteral("layouts")); }
    void choose(int item)
    {
        Q_EMIT bench->window->findChild<QComboBox*>(QStringLiteral("exports"))->activated(item);
    }

    void save(const QString& name)
    {
        bench->prompt.file = name;
        bench->prompt.filter = QStringLiteral("(*.xml)");
        bench->action("saveAct")->trigger();
    }

    void drop(const QString& name)
    {
        QMimeData mime;
        mime.setUrls({QUrl::fromLocalFile(name)});
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(bench->window.data(), &enter);
        QDropEvent event(QPointF(10, 10), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(bench->window.data(), &event);
    }

    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<ClassBench> bench;
    QString launched;
};

QTEST_MAIN(TestFiles)
#include "test_files.moc"

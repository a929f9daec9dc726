#include <QAction>
#include <QComboBox>
#include <QGridLayout>
#include <QMenuBar>
#include <QSet>
#include <QStatusBar>
#include <QTest>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>

#include <qwt_text_label.h>

#include "tests/app/classbench.h"

class TestViews : public GuardedTest
{
    Q_OBJECT

private:
    void finish() override { QApplication::setFont(usualFont); }

private Q_SLOTS:
    void eachCellKeepsItsView()
    {
        ClassBench bench(3);
        auto* views = bench.window->findChild<QComboBox*>(QStringLiteral("views"));
        auto* grid = bench.window->findChild<QWidget*>(QStringLiteral("graphGridW"));
        const auto shows = [&](int i) {
            return QPair<bool, bool>(bench.manager->plotAt(i)->isVisibleTo(grid),
                                     bench.manager->barAt(i)->isVisibleTo(grid));
        };
        const QPair<bool, bool> line{true, false};
        const QPair<bool, bool> bars{false, true};
        QVERIFY(!views->isEnabled());
        QTest::mouseClick(bench.manager->plotAt(1)->titleLabel(), Qt::LeftButton);
        QVERIFY(views->isEnabled());
        choose(views, QStringLiteral("Bar view"));
        QCOMPARE(shows(0), line);
        QCOMPARE(shows(1), bars);
        QCOMPARE(bench.manager->getActiveBar(), bench.manager->barAt(1));

        bench.action("layoutAct2")->trigger(); // no cell to be seen
        QVERIFY(!views->isEnabled());
        bench.action("layoutAct3")->trigger();
        QCOMPARE(shows(1), bars);
        QTest::mouseClick(bench.manager->barAt(1)->titleLabel(), Qt::LeftButton);
        QCOMPARE(views->currentIndex(), int(VIEW_BAR));
        choose(views, QStringLiteral("Graph view"));
        QCOMPARE(shows(1), line);
    }

    void oneGraphFillsTheWindow()
    {
        ClassBench bench(3);
        MainWindow* const window = bench.window.get();
        auto* grid = window->findChild<QWidget*>(QStringLiteral("graphGridW"));
        Plot* const ofClass = bench.manager->plotC();
        const auto seen = [&] {
            QString all;
            for (int i = 0; i < 3; ++i) {
                if (bench.manager->plotAt(i)->isVisibleTo(window))
                    all += QString::number(i);
            }
            return all + (ofClass->isVisibleTo(window) ? "c" : "");
        };
        const auto doubleClick = [](Plot* plot) {
            const QPoint ground = plot->canvas()->rect().center();
            QTest::mouseDClick(plot->canvas(), Qt::LeftButton, Qt::NoModifier, ground);
        };
        bench.action("layoutAct3")->trigger();
        QCOMPARE(seen(), QStringLiteral("012c"));
        const QSize small = bench.manager->plotAt(2)->size();
        doubleClick(bench.manager->plotAt(2));
        QCOMPARE(seen(), QStringLiteral("2"));
        QTRY_VERIFY(bench.manager->plotAt(2)->width() > grid->width() * 9 / 10);
        QVERIFY(bench.manager->plotAt(2)->height() > grid->height() * 9 / 10);
        QVERIFY(bench.manager->isActive(2));
        QTest::keyClick(window, Qt::Key_Escape);
        QCOMPARE(seen(), QStringLiteral("012c"));
        QTRY_VERIFY(std::abs(bench.manager->plotAt(2)->height() - small.height()) < 10);
        QCOMPARE(bench.manager->plotAt(2)->width(), small.width());
        QTest::keyClick(window, Qt::Key_Return);
        QCOMPARE(seen(), QStringLiteral("2"));
        doubleClick(bench.manager->plotAt(2));
        QCOMPARE(seen(), QStringLiteral("012c"));
        doubleClick(ofClass);
        QCOMPARE(seen(), QStringLiteral("c"));
        bench.action("layoutAct1")->trigger(); // another layout ends it
        QCOMPARE(seen(), QStringLiteral("012"));
        // A double click that a mode means something by is none.
        bench.action("markerAct")->trigger();
        doubleClick(bench.manager->plotAt(1));
        QCOMPARE(seen(), QStringLiteral("012"));
        bench.action("markerAct")->trigger();
        QVERIFY(bench.action("stopAct")->shortcuts().contains(QKeySequence(Qt::Key_Escape)));
        doubleClick(bench.manager->plotAt(1));
        QVERIFY(!bench.action("stopAct")->shortcuts().contains(QKeySequence(Qt::Key_Escape)));
    }

    void everyCommandStandsInTheMenuAndHasAKey()
    {
        ClassBench bench(2);
        auto* bar = bench.window->findChild<QMenuBar*>(QStringLiteral("menuBar"));
        QVERIFY(QTest::qWaitForWindowActive(bench.window.get()));
        QVERIFY(!bar->isVisible());
        QTest::keyClick(bench.window.get(), Qt::Key_Alt); // both press and release
        QTRY_VERIFY(bar->isVisible());
        QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
        bench.window->setFocus();
        QTRY_VERIFY(!bar->isVisible());
        QTest::keyPress(bench.window.get(), Qt::Key_Alt);
        QTest::keyClick(bench.window.get(), Qt::Key_X, Qt::AltModifier);
        QTest::keyRelease(bench.window.get(), Qt::Key_Alt);
        QVERIFY(!bar->isVisible());

        bench.action("keysAct")->trigger();
        auto* list = bench.window->findChild<QTreeWidget*>(QStringLiteral("keysList"));
        QSet<QString> told;
        int commands = 0;
        for (QTreeWidgetItemIterator item(list); *item; ++item) {
            if (!(*item)->parent())
                continue;
            ++commands;
            QVERIFY2(!(*item)->text(1).isEmpty(), qPrintable((*item)->text(0)));
            told.insert((*item)->text(0));
        }
        QVERIFY2(commands >= 40, QByteArray::number(commands));
        for (const char* word :
             {"Run", "Stop", "Connect", "Derivative", "Map", "Thermometer", "Undo", "Print"})
            QVERIFY2(told.contains(word), word);
        for (const QToolBar* tools : bench.window->findChildren<QToolBar*>()) {
            for (const QAction* action : tools->actions()) {
                const QString text = QString(action->text()).remove('&');
                QVERIFY2(text.isEmpty() || action->isSeparator() || told.contains(text), qPrintable(text));
            }
        }
    }

    void noTwoActionsShareAKey()
    {
        ClassBench bench(1);
        QSet<QKeySequence> keys;
        for (const QAction* action : bench.window->actions()) {
            for (const QKeySequence& key : action->shortcuts()) {
                QVERIFY2(!keys.contains(key), qPrintable(key.toString()));
                keys.insert(key);
            }
        }
        for (const char* key : {"F5", "Esc", "Shift+F5", "Ctrl+1", "Ctrl+2", "Ctrl+3"})
            QVERIFY2(keys.contains(QKeySequence(QLatin1String(key))), key);
    }

    // What has no room on its bar is in the menu that the bar's end opens.
    void aNarrowWindowLosesNoTool()
    {
        ClassBench bench(1);
        bench.window->resize(620, 600);
        QTRY_COMPARE(bench.window->width(), 620);
        QCOMPARE(faultOfToolBars(bench), QString());
        for (const QToolBar* bar : bench.window->findChildren<QToolBar*>())
            QVERIFY(bench.window->rect().contains(bar->geometry()));
    }

    void nothingOverlapsOrIsCut_data()
    {
        columns<QSize, int>({"size", "fontFactor"});
        for (const QSize& size : {QSize(1024, 700), QSize(1920, 1080), QSize(3840, 2160)}) {
            for (int factor : {1, 2})
                QTest::addRow("%d wide, text x %d", size.width(), factor) << size << factor;
        }
    }

    void nothingOverlapsOrIsCut()
    {
        QFETCH(QSize, size);
        QFETCH(int, fontFactor);
        QFont font = usualFont;
        font.setPointSizeF(usualFont.pointSizeF() * fontFactor);
        QApplication::setFont(font);
        ClassBench bench(8);
        bench.window->resize(size);
        auto* grid = bench.window->findChild<QWidget*>(QStringLiteral("graphGridW"));
        for (int i : {0, 5})
            bench.manager->addWidgetByIndex(qobject_cast<QGridLayout*>(grid->layout()), VIEW_BAR, i);
        for (const char* layout : {"layoutAct1", "layoutAct2", "layoutAct3"}) {
            bench.action(layout)->trigger();
            QTest::qWait(50);
            QCOMPARE(bench.window->size(), size);
            QCOMPARE(faultOfToolBars(bench), QString());
            QVector<const QWidget*> parents{bench.window.data(), bench.window->statusBar(),
                                            grid->parentWidget(), grid};
            for (const Plot* plot : bench.window->findChildren<Plot*>()) {
                if (!plot->isVisible())
                    continue;
                parents.append(plot);
                QVERIFY2(plot->canvas()->width() >= 60 && plot->canvas()->height() >= 40,
                         qPrintable(plot->accessibleName()));
            }
            for (const QWidget* parent : qAsConst(parents))
                QCOMPARE(faultAmongChildren(parent), QString());
        }
    }

private:
    static void choose(QComboBox* list, const QString& name)
    {
        const int row = list->findData(name, Qt::ToolTipRole);
        list->setCurrentIndex(row);
        Q_EMIT list->activated(row);
    }

    static QString faultOfToolBars(const ClassBench& bench)
    {
        for (QToolBar* bar : bench.window->findChildren<QToolBar*>()) {
            const auto* more = bar->findChild<QToolButton*>(QStringLiteral("qt_toolbar_ext_button"));
            for (QAction* action : bar->actions()) {
                const QWidget* item = bar->widgetForAction(action);
                const bool isInside = item->isVisible() && bar->rect().contains(item->geometry());
                if (!isInside && action->isVisible() && !(more && more->isVisible()))
                    return action->objectName() + item->objectName() + QStringLiteral(" is out of reach");
            }
        }
        return QString();
    }

    static QString faultAmongChildren(const QWidget* parent)
    {
        QVector<const QWidget*> seen;
        for (const QObject* object : parent->children()) {
            const auto* child = qobject_cast<const QWidget*>(object);
            if (!child || !child->isVisible() || child->isWindow() || child->size().isEmpty() ||
                child->inherits("QSplitterHandle") || child->inherits("QSizeGrip"))
                continue;
            const QString name = QLatin1String(child->metaObject()->className()) + child->objectName();
            if (!parent->rect().contains(child->geometry()))
                return name + QStringLiteral(" is cut");
            for (const QWidget* other : qAsConst(seen)) {
                // The scales of a graph share its corners.
                const bool areScales = child->inherits("QwtScaleWidget") && other->inherits("QwtScaleWidget");
                if (!areScales && other->geometry().intersects(child->geometry()))
                    return name + QStringLiteral(" lies on ") + other->objectName();
            }
            seen.append(child);
        }
        return QString();
    }

    const QFont usualFont = QApplication::font();
};

QTEST_MAIN(TestViews)
#include "test_views.moc"

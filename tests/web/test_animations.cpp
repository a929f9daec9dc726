#include <QApplication>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTest>

#include "instruments/pageview.h"
#include "simulation/simwebview.h"
#include "tests/common/testsupport.h"

namespace {
constexpr int msToLoad = 30000; // the first page starts the engine
}

/// The pages of the animations in the real engine.
class TestAnimations : public GuardedTest
{
    Q_OBJECT

    QScopedPointer<simWebView> view;
    QString title;
    int questions = 0;

    PageView* page() const { return view->findChild<PageView*>(); }
    /// What a piece of script gives, by way of the title, which has to be another one each time.
    QString asked(const QString& script)
    {
        const QString mark = QStringLiteral("%1=").arg(++questions);
        page()->call(QStringLiteral("eval"),
                     {QStringLiteral("document.title = '%1' + (%2)").arg(mark, script)});
        return QTest::qWaitFor([&] { return title.startsWith(mark); }) ? title.mid(mark.size()) : QString();
    }

private Q_SLOTS:
    void aPageRunsByItselfAndSleepsWhenHidden_data()
    {
        columns<int, QString>({"index", "name"});
        row("volume and pressure", 0, QStringLiteral("Volume and pressure of a gas"));
        row("pressure equilibrium", 1, QStringLiteral("Pressure equilibrium of two vessels"));
        row("liquid", 2, QStringLiteral("Molecules of a liquid"));
        row("diffusion", 3, QStringLiteral("Diffusion of a drop"));
        row("hydrogen bonds", 4, QStringLiteral("Hydrogen bonds of water"));
    }

    void aPageRunsByItselfAndSleepsWhenHidden()
    {
        QFETCH(int, index);
        QFETCH(QString, name);
        view.reset(new simWebView(index));
        view->resize(1024, 560);
        view->show();
        QVERIFY(!page()); // nothing is loaded before it is wanted
        view->createPageIfNeeded();
        PageView* const first = page();
        connect(first, &PageView::titleChanged, this, [this](const QString& text) { title = text; });
        QSignalSpy loads(first, &PageView::pageLoaded);
        QTRY_COMPARE_WITH_TIMEOUT(loads.count(), 1, msToLoad);
        view->createPageIfNeeded();
        QCOMPARE(page(), first);
        QTRY_COMPARE(title, name);

        // It moves and reads off, without a number that is none.
        const QString readings = QStringLiteral(
            "[...document.querySelectorAll('output')].map((one) => one.textContent).join('|')");
        const QString before = asked(readings);
        QTRY_VERIFY(asked(readings) != before || index == 1); // closed vessels keep their pressure
        QTRY_VERIFY(!asked(readings).contains(QStringLiteral("NaN")));
        QCOMPARE(asked(QStringLiteral("document.documentElement.scrollHeight <= innerHeight && "
                                      "document.documentElement.scrollWidth <= innerWidth")),
                 QStringLiteral("true"));

        // Words come as they are, and the sign in numbers with them.
        const QString words = QStringLiteral("Pr\u00fcfung \"<b>\" & 'so'");
        first->call(QStringLiteral("setTexts"),
                    {QJsonObject{{QStringLiteral("pause"), words},
                                 {QStringLiteral("decimal"), QStringLiteral(",")}}});
        QCOMPARE(asked(QStringLiteral("document.getElementById('pause').textContent")), words);
        QVERIFY(!asked(readings).contains(QLatin1Char('.')));

        // The keyboard pauses; what is hidden asks for no pictures.
        QApplication::setActiveWindow(view.data());
        view->setFocus();
        QTRY_VERIFY(QApplication::focusWidget());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QTRY_COMPARE(asked(QStringLiteral("document.getElementById('pause').textContent")),
                     QStringLiteral("Continue"));
        asked(QStringLiteral(
            "window.seen = 0, (function count() { seen++; requestAnimationFrame(count); })()"));
        QTRY_VERIFY(asked(QStringLiteral("seen")).toInt() > 5);
        view->hide();
        QTRY_COMPARE(asked(QStringLiteral("document.visibilityState")), QStringLiteral("hidden"));
        const int seen = asked(QStringLiteral("seen")).toInt();
        for (int i = 0; i < 20; ++i)
            QVERIFY(asked(QStringLiteral("seen")).toInt() <= seen + 1);
        QCOMPARE(first->errors(), 0);
        view->destroyPage();
        QVERIFY(!page());
    }
};

QTEST_MAIN(TestAnimations)
#include "test_animations.moc"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include "instruments/pageview.h"
#include "tests/common/testsupport.h"

namespace {
constexpr int msToLoad = 30000; // the first page starts the engine
}

class TestPageView : public GuardedTest
{
    Q_OBJECT

private:
    // A page that gives back what it hears as its title.
    void begin() override
    {
        folder.reset(new QTemporaryDir);
        write("<!DOCTYPE html><meta charset='utf-8'><title>here</title><body>");
        view.reset(new PageView(page()));
        view->resize(400, 300);
    }
    void finish() override { view.reset(); }

    QString page() const { return folder->filePath(QStringLiteral("page.html")); }
    void write(const QByteArray& start) const
    {
        QFile file(page());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(start +
                   "<script>var heard = [];"
                   "function say(...words) { heard.push(words.join('|')); document.title = heard.join(';'); }"
                   "</script>");
    }
    template<class Part> Part* part(const char* name) const
    {
        return view->findChild<Part*>(QLatin1String(name));
    }
    void pressLoadAgain() const { QTest::mouseClick(part<QPushButton>("loadAgain"), Qt::LeftButton); }

    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<PageView> view;

private Q_SLOTS:
    // First, since the engine stays once it is there.
    void aMissingEngineIsToldAndLookedForAgain()
    {
        QSignalSpy failures(view.data(), &PageView::failed);
        PageView::setEngineFile(folder->filePath(QStringLiteral("nothing.so")));
        view->call(QStringLiteral("say"), {QStringLiteral("lost")});
        view->show();
        QCOMPARE(failures.count(), 1);
        QVERIFY(part<QLabel>("pageFailure")->isVisible());
        QVERIFY(part<QLabel>("pageFailure")->text().contains(QStringLiteral("pellandra-web")));
        PageView::setEngineFile(QString());
        pressLoadAgain();
        QTRY_VERIFY_WITH_TIMEOUT(view->isLoaded(), msToLoad);
        QVERIFY(!part<QLabel>("pageFailure")->isVisible());
        QVERIFY(part<QWidget>("web page")->isVisible());
    }

    void callsWaitForThePageAndArriveWholeAndInOrder()
    {
        const QString name = QStringLiteral("O'Neill \"</script><b>\\ \u2028 µ");
        QString last;
        connect(view.data(), &PageView::titleChanged, this, [&last](const QString& title) { last = title; });
        connect(view.data(), &PageView::pageLoaded, this,
                [this] { view->call(QStringLiteral("say"), {QStringLiteral("loaded")}); });
        view->call(QStringLiteral("say"), {QStringLiteral("forgotten")});
        view->clearCalls();
        view->call(QStringLiteral("say"), {name, 1.5, true});
        view->call(QStringLiteral("say"), QJsonArray{QJsonValue(QJsonArray{1, 2}), 3});
        view->show();
        view->call(QStringLiteral("say"));
        QTRY_VERIFY_WITH_TIMEOUT(view->isLoaded(), msToLoad);
        view->call(QStringLiteral("say"), {QStringLiteral("last")});
        QTRY_COMPARE(last, QStringLiteral("loaded;%1|1.5|true;1,2|3;;last").arg(name));
        QCOMPARE(view->errors(), 0);
    }

    void aPageThatIsNotThereIsToldAndComesWhenItIs()
    {
        QVERIFY(QFile::remove(page()));
        QSignalSpy failures(view.data(), &PageView::failed);
        view->show();
        QCOMPARE(failures.count(), 1);
        QVERIFY(part<QLabel>("pageFailure")->text().contains(page()));
        write("<!DOCTYPE html>");
        pressLoadAgain();
        QTRY_VERIFY_WITH_TIMEOUT(view->isLoaded(), msToLoad);
    }

    // What ends a page in the middle ends nothing else.
    void aPageThatDiesIsToldAndCanBeLoadedAgain()
    {
        QSignalSpy loads(view.data(), &PageView::pageLoaded);
        QSignalSpy failures(view.data(), &PageView::failed);
        QString last;
        connect(view.data(), &PageView::titleChanged, this, [&last](const QString& title) { last = title; });
        view->show();
        QTRY_COMPARE_WITH_TIMEOUT(loads.count(), 1, msToLoad);
        part<QWidget>("web page")->setProperty("url", QUrl(QStringLiteral("chrome://crash")));
        QTRY_COMPARE_WITH_TIMEOUT(failures.count(), 1, msToLoad);
        QVERIFY(part<QLabel>("pageFailure")->isVisible());
        view->call(QStringLiteral("say"), {QStringLiteral("to nobody")});
        pressLoadAgain();
        view->call(QStringLiteral("say"), {QStringLiteral("back")});
        QTRY_COMPARE_WITH_TIMEOUT(loads.count(), 2, msToLoad);
        QTRY_COMPARE(last, QStringLiteral("back"));
        QVERIFY(!part<QLabel>("pageFailure")->isVisible());
    }

    void anErrorOfThePageIsLoggedAndThePageStays()
    {
        guard->expect(QStringLiteral("nowhere is not defined"));
        view->show();
        QTRY_VERIFY_WITH_TIMEOUT(view->isLoaded(), msToLoad);
        view->call(QStringLiteral("nowhere"));
        QTRY_COMPARE(view->errors(), 1);
        QVERIFY(view->isLoaded());
    }

    // A link or a script leads nowhere: the page stays what the program talks to.
    void aPageCantBeLeft()
    {
        QString last;
        connect(view.data(), &PageView::titleChanged, this, [&last](const QString& title) { last = title; });
        view->show();
        QTRY_VERIFY_WITH_TIMEOUT(view->isLoaded(), msToLoad);
        view->call(QStringLiteral("location.assign"), {QStringLiteral("http://localhost:9/elsewhere")});
        view->call(QStringLiteral("say"), {QStringLiteral("still here")});
        QTRY_COMPARE(last, QStringLiteral("still here"));
        QVERIFY(view->isLoaded());
    }
};

QTEST_MAIN(TestPageView)
#include "test_pageview.moc"

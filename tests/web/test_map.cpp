#include <QElapsedTimer>
#include <QImage>
#include <QJsonDocument>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTest>

#include <cmath>

#include "app/mappane.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/settings.h"
#include "data/expdata.h"
#include "graph/colorscale.h"
#include "instruments/gmap.h"
#include "sensors/sensorids.h"
#include "tests/common/fakeprompt.h"
#include "tests/common/testsupport.h"

namespace {

constexpr int msToLoad = 30000; // the first page starts the engine
constexpr double school = 50.0755;
constexpr double degree = 111195.08; // metres on the sphere that the way is measured on

} // namespace

/// The map in the real engine, with data sets that no logger has.
class TestMap : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        manager.reset(new multiConnectionsManager);
        sets.clear();
        for (int i = 0; i < manager->nMaxTembrins(); ++i) {
            sets.push_back(std::make_unique<ExpData>());
            manager->setDataAt(i, sets.back().get());
        }
    }
    void finish() override
    {
        pane.reset();
        manager.reset();
    }

    /// A walk to the north, `step` degrees a second, and the temperature on it.
    void walk(int group, int rows, double step)
    {
        SensorList channels;
        for (const int id : {SENSOR_GPS_LAT, SENSOR_GPS_LONG, SENSOR_AMB_TEMP})
            channels.append(SensorPtr::create(id, Units()));
        QVector<QVector<double>> columns(3);
        for (int i = 0; i < rows; ++i) {
            columns[0].append(school + i * step);
            columns[1].append(14.4 + 0.001 * group);
            columns[2].append(10 + 20.0 * i / rows);
        }
        sets[size_t(group)]->takeExperiment(channels, 1.0, columns);
        sets[size_t(group)]->setSelectedSensor(2);
    }
    void show()
    {
        pane.reset(new MapPane(manager.data(), &prompt));
        pane->resize(1200, 800);
        pane->show();
        map = pane->findChild<GMap*>();
        connect(map, &PageView::titleChanged, this, [this](const QString& title) {
            if (title.startsWith(QLatin1Char('{')))
                state = QJsonDocument::fromJson(title.toUtf8()).object();
        });
        QTRY_VERIFY_WITH_TIMEOUT(map->isLoaded(), msToLoad);
    }
    void script(const QString& text) { map->call(QStringLiteral("eval"), {text}); }
    QJsonObject look()
    {
        state = QJsonObject();
        script(QStringLiteral("document.title = ''; document.title = JSON.stringify(mapState());"));
        return QTest::qWaitFor([this] { return !state.isEmpty(); }, 5000) ? state : QJsonObject();
    }
    bool showsMarks(int n)
    {
        return QTest::qWaitFor([=] { return look().value(QLatin1String("marks")).toInt() == n; }, 10000);
    }

    FakePrompt prompt;
    QScopedPointer<multiConnectionsManager> manager;
    std::vector<std::unique_ptr<ExpData>> sets;
    QScopedPointer<MapPane> pane;
    GMap* map = nullptr;
    QJsonObject state;

private Q_SLOTS:
    void aTrackLeavesOutWhatIsNoFixAndKnowsItsLength()
    {
        const double none = qQNaN();
        const QVector<QVector<double>> columns = {{0, 10, 10, none, 91, 0, 10}, {0, 20, 21, 5, 5, 3, 21}};
        ExpData data;
        data.takeExperiment(
            {SensorPtr::create(SENSOR_GPS_LAT, Units()), SensorPtr::create(SENSOR_GPS_LONG, Units())}, 2.0,
            columns);
        GpsTrack track;
        QCOMPARE(track.extend(data), 4);
        QCOMPARE(track.rows, (QVector<int>{1, 2, 5, 6}));
        QCOMPARE(track.extend(data), 0);
        // A degree of longitude at 10 degrees, there to the equator and back.
        const double there = std::acos(std::cos(qDegreesToRadians(10.0)) * std::cos(qDegreesToRadians(18.0)));
        const double expected =
            degree * std::cos(qDegreesToRadians(10.0)) + 2 * qRadiansToDegrees(there) * degree;
        QVERIFY2(std::abs(track.metres() / expected - 1) < 1e-5, qPrintable(QString::number(track.metres())));
        QCOMPARE(track.seconds(), 10.0);
    }

    void theScaleHasItsColoursAndKeepsOffThoseBeyond()
    {
        QCOMPARE(ColorScale::binColor(-1), ColorScale::binColor(0));
        QCOMPARE(ColorScale::binColor(120), ColorScale::binColor(119));
        QVERIFY(ColorScale::binColor(119).red() > 120 && ColorScale::binColor(119).blue() < 10);
        QVERIFY(ColorScale::binColor(47).green() > 245); // just below cyan
    }

    void allGroupsAreShownUntilOneIsChosenAndARunIsFollowed()
    {
        walk(0, 100, 1e-6);
        walk(3, 50, 1e-5);
        show();
        QVERIFY(showsMarks(150));
        const QJsonObject before = look();
        QVERIFY(std::abs(before.value(QLatin1String("lat")).toDouble() - school) < 0.001);
        pane->showGroup(3);
        QVERIFY(showsMarks(50));
        // A new sample far away: only it goes over, and the map shows it.
        sets[3]->addSample(51, {school + 0.05, 14.4, 90});
        QVERIFY(showsMarks(51));
        QVERIFY(QTest::qWaitFor([&] { return look().value(QLatin1String("lat")).toDouble() > school + 0.01; },
                                5000));
        QCOMPARE(pane->findChild<ColorScale*>()->getInterval().maxValue(), 90.0);
        // All of it stays in view in a smaller window.
        const double zoom = look().value(QLatin1String("zoom")).toDouble();
        pane->resize(500, 300);
        QVERIFY(QTest::qWaitFor([&] { return look().value(QLatin1String("zoom")).toDouble() < zoom; }, 5000));
        QCOMPARE(map->errors(), 0);
    }

    void withoutAPositionWordsTellWhatToDo()
    {
        show();
        QTRY_VERIFY(
            pane->findChild<QLabel*>(QStringLiteral("mapLine"))->text().contains(QStringLiteral("GPS")));
        QVERIFY(std::abs(look().value(QLatin1String("lat")).toDouble() - 32.0865) < 0.001);
    }

    void aLongTrackIsThereSoonAndPansWithoutStalls()
    {
        walk(0, 30000, 1e-6);
        show();
        QElapsedTimer clock;
        clock.start();
        pane->setStale();
        QVERIFY(showsMarks(30000));
        QVERIFY2(clock.elapsed() < 2000, qPrintable(QString::number(clock.elapsed())));
        script(QStringLiteral("for (let i = 0; i < 20; ++i) Open(50.07 + i / 1000, 14.4);"));
        const QJsonObject after = look();
        QVERIFY2(after.value(QLatin1String("ms")).toDouble() < 100,
                 QJsonDocument(after).toJson(QJsonDocument::Compact));
    }

    void whatIsNoNumberAndNamesWithMarkupHarmNothing()
    {
        walk(0, 10, 1e-5);
        for (int row = 0; row < 5; ++row)
            sets[0]->replaceYVal(2, row, qQNaN());
        sets[0]->replaceYVal(0, 9, qQNaN());
        Settings::mainStore().setValue(Settings::groupKey(0), QStringLiteral("O'Neill \"<b>"));
        show();
        QVERIFY(showsMarks(9));
        QCOMPARE(map->errors(), 0);
        Settings::mainStore().remove(Settings::groupKey(0));
    }

    void aPictureIsLaidUnderByTwoPoints()
    {
        walk(0, 100, 1e-5);
        show();
        QVERIFY(showsMarks(100));
        QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("school & yard.png"));
        QImage picture(400, 200, QImage::Format_RGB32);
        picture.fill(Qt::magenta);
        QVERIFY(picture.save(file));
        QVector<double> place;
        connect(map, &GMap::picturePlaced, this, [&](const QVector<double>& told) { place = told; });
        prompt.file = file;
        pane->findChild<QPushButton*>(QStringLiteral("mapPicture"))
            ->menu()
            ->actions()
            .constFirst()
            ->trigger();
        const auto press = [this](const char* where, int x, int y) {
            script(QStringLiteral("{const r = %1.getBoundingClientRect();"
                                  "for (const type of ['mousedown', 'mouseup', 'click'])"
                                  "%1.dispatchEvent(new MouseEvent(type, {bubbles: true, "
                                  "clientX: r.left + %2, clientY: r.top + %3, view: window}));}")
                       .arg(QLatin1String(where))
                       .arg(x)
                       .arg(y));
        };
        QVERIFY(QTest::qWaitFor([&] { return look().value(QLatin1String("placing")).toBool(); }, 5000));
        script(QStringLiteral("window.p = document.getElementById('placingPicture');"
                              "window.m = document.getElementById('map');"));
        QTest::qWait(200); // the picture's size
        press("p", 100, 50);
        press("m", 200, 300);
        press("p", 300, 50);
        press("m", 200, 500); // turned by a right angle, in its own size
        QTRY_COMPARE(place.size(), 4);
        QVERIFY(std::abs(place[0]) < std::abs(place[1]) * 1e-6 && place[1] > 0);
        QVERIFY(look().value(QLatin1String("picture")).toBool());
        // The next map has it too.
        show();
        QVERIFY(QTest::qWaitFor([&] { return look().value(QLatin1String("picture")).toBool(); }, 5000));
        Settings::mainStore().remove(QStringLiteral("maps"));
    }
};

QTEST_MAIN(TestMap)
#include "test_map.moc"

// How soon 30,000 marks stand on the map, and what a drag of it costs.

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

#include "app/mappane.h"
#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"
#include "instruments/gmap.h"
#include "sensors/sensorids.h"

namespace {

constexpr int marks = 30000;
constexpr int drags = 30;
constexpr int patience = 30000; // ms

/// What the page says of itself.
class Look
{
public:
    explicit Look(GMap* map)
        : map(map)
    {
        QObject::connect(map, &PageView::titleChanged, &loop, [this](const QString& title) {
            said = QJsonDocument::fromJson(title.toUtf8()).object();
            if (!said.isEmpty())
                loop.quit();
        });
    }
    QJsonObject take(const QString& before = QString())
    {
        said = QJsonObject();
        QTimer::singleShot(patience, &loop, &QEventLoop::quit);
        map->call(
            QStringLiteral("eval"),
            {before + QStringLiteral("document.title = ''; document.title = JSON.stringify(mapState());")});
        loop.exec();
        return said;
    }

private:
    GMap* map;
    QEventLoop loop;
    QJsonObject said;
};

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    multiConnectionsManager manager;
    std::vector<std::unique_ptr<ExpData>> sets;
    for (int i = 0; i < manager.nMaxTembrins(); ++i) {
        sets.push_back(std::make_unique<ExpData>());
        manager.setDataAt(i, sets.back().get());
    }
    SensorList channels;
    for (const int id : {SENSOR_GPS_LAT, SENSOR_GPS_LONG, SENSOR_AMB_TEMP})
        channels.append(SensorPtr::create(id, Units()));
    QVector<QVector<double>> columns(3);
    for (int i = 0; i < marks; ++i) {
        columns[0].append(50 + 0.01 * std::sin(i * 0.0013));
        columns[1].append(14 + 0.01 * std::cos(i * 0.0017));
        columns[2].append(20 + 10 * std::sin(i * 0.001));
    }
    sets[0]->takeExperiment(channels, 0.1, columns);
    sets[0]->setSelectedSensor(2);
    MapPane pane(&manager, nullptr);
    pane.resize(1900, 950);
    QElapsedTimer clock;
    clock.start();
    pane.show();
    auto* const map = pane.findChild<GMap*>();
    QEventLoop loop;
    QObject::connect(map, &PageView::pageLoaded, &loop, &QEventLoop::quit);
    QTimer::singleShot(patience, &loop, &QEventLoop::quit);
    loop.exec();
    std::printf("page there (engine started)     %6lld ms\n", clock.restart());
    Look look(map);
    while (look.take().value(QLatin1String("marks")).toInt() < marks && clock.elapsed() < patience)
        application.processEvents(QEventLoop::WaitForMoreEvents);
    std::printf("%d marks on the map          %6lld ms\n", marks, clock.elapsed());
    double worst = 0;
    for (int i = 0; i < drags; ++i) {
        const QJsonObject said = look.take(QStringLiteral("Open(%1, 14);").arg(50 + 0.0002 * i, 0, 'f', 5));
        worst = std::max(worst, said.value(QLatin1String("ms")).toDouble(1e9));
    }
    std::printf("drawn anew after a drag, worst  %6.1f ms\n", worst);
    return 0;
}

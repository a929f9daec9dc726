#include "app/mappane.h"

#include "classroom/multiconnectionsmanager.h"
#include "common/settings.h"
#include "common/userprompt.h"
#include "data/expdata.h"
#include "graph/colorscale.h"
#include "instruments/gmap.h"
#include "sensors/sensorids.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QPushButton>
#include <QSplitter>

#include <cmath>

namespace {

constexpr int msBetweenMaps = 500;
constexpr double barFont = 1.3; // of the window's font

struct Place
{
    const char* name;
    float latitude;
    float longitude;
};

constexpr Place places[] = {
    {"Moscow", 55.752222F, 37.625F},
    {"Tel-Aviv", 32.086517F, 34.789983F},
    {"Istanbul", 41.005269F, 28.97725F},
    {"Ra'anana", 32.185208F, 34.8716F},
};
constexpr const char* usualPlace = "Tel-Aviv";

QString distanceText(double metres)
{
    const QLocale locale;
    return metres < 1000 ? MapPane::tr("%1 m").arg(locale.toString(metres, 'f', 0))
                         : MapPane::tr("%1 km").arg(locale.toString(metres / 1000, 'f', 2));
}

QVector<double> numbersOf(const QString& text)
{
    QVector<double> numbers;
    for (const QString& part : text.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        numbers.append(part.toDouble());
    return numbers;
}

} // namespace

MapPane::MapPane(multiConnectionsManager* manager, UserPrompt* prompt, QWidget* parent)
    : QWidget(parent)
    , manager(manager)
    , prompt(prompt)
    , gmap(new GMap)
    , scale(new ColorScale)
{
    setObjectName(QStringLiteral("mapPane"));
    auto* const mapW = new QSplitter(Qt::Horizontal);
    mapW->setObjectName(QStringLiteral("mapW"));
    mapW->addWidget(gmap);
    mapW->addWidget(scale);
    mapW->setStretchFactor(0, 10);
    mapW->setStretchFactor(1, 0);
    mapW->setChildrenCollapsible(false);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(createBar());
    column->addWidget(mapW, 1);
    connect(scale, &ColorScale::scaleNeedsSensorMenu, this, &MapPane::doScaleSensorMenu);
    connect(gmap, &PageView::pageLoaded, this, &MapPane::tellPage);
    connect(gmap, &GMap::picturePlaced, this, &MapPane::usePlace);
    timer.setInterval(msBetweenMaps);
    connect(&timer, &QTimer::timeout, this, &MapPane::refresh);
}

QPushButton* MapPane::addButton(QWidget* bar, const QString& text, const char* name)
{
    auto* const button = new QPushButton(text);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false);
    bar->layout()->addWidget(button);
    return button;
}

QWidget* MapPane::createBar()
{
    auto* const bar = new QWidget;
    auto* const row = new QHBoxLayout(bar);
    row->setContentsMargins(6, 4, 6, 4);
    QPushButton* const sensors = addButton(bar, tr("Sensor"), "mapSensor");
    auto* const sensorMenu = new QMenu(sensors);
    connect(sensorMenu, &QMenu::aboutToShow, this, [this, sensorMenu] { fillSensorMenu(sensorMenu); });
    sensors->setMenu(sensorMenu);
    routeButton = addButton(bar, tr("Route"), "mapRoute");
    routeButton->setCheckable(true);
    routeButton->setToolTip(tr("The way as a line instead of a mark for each sample"));
    connect(routeButton, &QPushButton::toggled, this, [this](bool isOn) {
        gmap->viewRoute(isOn);
        setStale();
    });
    QPushButton* const fit = addButton(bar, tr("Show all"), "mapFit");
    fit->setToolTip(tr("Shows the whole way"));
    connect(fit, &QPushButton::clicked, gmap, &GMap::setBounds);
    QPushButton* const ground = addButton(bar, tr("Picture"), "mapPicture");
    auto* const groundMenu = new QMenu(ground);
    groundMenu->addAction(tr("Lay a picture under the map…"), this, &MapPane::choosePicture);
    groundMenu->addAction(tr("Take the picture away"), this, [this] {
        pictureFile.clear();
        usePlace({});
        gmap->setPicture(QString(), {});
    });
    ground->setMenu(groundMenu);
    line = new QLabel;
    line->setObjectName(QStringLiteral("mapLine"));
    line->setTextFormat(Qt::PlainText);
    line->setWordWrap(true);
    line->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    QFont larger = font();
    larger.setPointSizeF(larger.pointSizeF() * barFont);
    for (QWidget* part : bar->findChildren<QWidget*>())
        part->setFont(larger);
    line->setFont(larger);
    row->addSpacing(12);
    row->addWidget(line, 1);
    return bar;
}

void MapPane::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    timer.start();
    QTimer::singleShot(0, this, &MapPane::refresh);
}

void MapPane::hideEvent(QHideEvent* event)
{
    timer.stop();
    QWidget::hideEvent(event);
}

/// A page that has just come knows nothing.
void MapPane::tellPage()
{
    const QSettings store = Settings::mainStore();
    gmap->setTiles(store.value(QStringLiteral("maps/tiles")).toString(),
                   store.value(QStringLiteral("maps/attribution")).toString());
    pictureFile = store.value(QStringLiteral("maps/picture")).toString();
    gmap->setPicture(pictureFile, numbersOf(store.value(QStringLiteral("maps/pictureAt")).toString()));
    setMap();
    setStale();
}

/// Where the map is while nobody has a position.
void MapPane::setMap()
{
    const QString wanted =
        Settings::mainStore().value(QStringLiteral("lastLocation"), QLatin1String(usualPlace)).toString();
    for (const Place& place : places) {
        if (wanted == QLatin1String(place.name))
            gmap->setCenter(place.latitude, place.longitude);
    }
}

void MapPane::showGroup(int index)
{
    if (index == chosen)
        return;
    chosen = index;
    wantedChannel = -1;
    setStale();
}

void MapPane::setStale()
{
    isStale = true;
    if (isVisible())
        QTimer::singleShot(0, this, &MapPane::refresh);
}

void MapPane::setMapData(int iSens)
{
    wantedChannel = iSens;
    byHand = QwtInterval();
    setStale();
}

// --- The samples ---

QVector<int> MapPane::groupsWithPosition() const
{
    QVector<int> groups;
    for (int i = 0; i < manager->nMaxTembrins(); ++i) {
        if ((chosen < 0 || i == chosen) && GpsTrack::isIn(*manager->dataAt(i)) &&
            manager->dataAt(i)->getXSize() > 0)
            groups.append(i);
    }
    return groups;
}

/// Since the last look.
bool MapPane::isGrownOnly(const QVector<int>& groups) const
{
    return !isStale && groups == shown && std::all_of(groups.begin(), groups.end(), [this](int group) {
        return tracks[group].rowsRead() <= manager->dataAt(group)->getXSize();
    });
}

/// That of the sensor that is shown; -1 if the group has none. Of itself a position has no colour.
int MapPane::channelFor(int group) const
{
    const ExpData& data = *manager->dataAt(group);
    if (sensor)
        return data.locateSensByID(sensor->ID);
    int channel = wantedChannel < 0 ? data.getSelectedSensor() : wantedChannel;
    const auto isPosition = [&](int i) {
        const SensorPtr& one = data.getSens(i);
        return !one || one->ID == SENSOR_GPS_LAT || one->ID == SENSOR_GPS_LONG;
    };
    for (int i = 0; wantedChannel < 0 && isPosition(channel) && i < data.getNSens(); ++i)
        channel = i;
    return channel;
}

MapTrack MapPane::newPart(int group)
{
    const ExpData& data = *manager->dataAt(group);
    GpsTrack& track = tracks[group];
    const int before = track.size();
    track.extend(data);
    MapTrack part;
    part.group = group;
    part.name = manager->groupName(group);
    part.note = wayText(track);
    part.isRoute = gmap->isRoute();
    part.color = ColorScale::myColors(group);
    part.latitudes = track.latitudes.mid(before);
    part.longitudes = track.longitudes.mid(before);
    const int channel = channelFor(group);
    const SensorPtr& own = data.getSens(channel);
    const QLocale locale;
    for (int i = before; i < track.size(); ++i) {
        const int row = track.rows[i];
        const double value = own && row < data.getYSize(channel) ? data.getYAt(channel, row) : qQNaN();
        part.values.append(value);
        part.titles.append(std::isfinite(value)
                               ? tr("%1 %2").arg(locale.toString(value, 'f', own->precision), own->unitName)
                               : QStringLiteral("----"));
    }
    return part;
}

void MapPane::refresh()
{
    if (!isVisible() || !gmap->isLoaded())
        return;
    const QVector<int> groups = groupsWithPosition();
    const bool isGrown = isGrownOnly(groups);
    if (!isGrown) {
        gmap->clean();
        tracks.clear();
        colored = QwtInterval();
        sensor.reset();
        if (!groups.isEmpty())
            sensor = manager->dataAt(groups[0])->getSens(channelFor(groups[0]));
        if (sensor)
            scale->setSensor(sensor.data());
        shown = groups;
        isStale = false;
    }
    QVector<MapTrack> parts;
    for (const int group : groups) {
        const MapTrack part = newPart(group);
        if (!part.latitudes.isEmpty())
            parts.append(part);
    }
    updateScale(groups);
    if (!parts.isEmpty()) {
        gmap->addTracks(parts);
        if (isGrown)
            gmap->follow();
        else
            gmap->setBounds();
    }
    if (!isGrown || !parts.isEmpty())
        showLine(groups);
}

/// The colours are of all groups that are shown.
void MapPane::updateScale(const QVector<int>& groups)
{
    scale->setVisible(sensor && !gmap->isRoute());
    if (!sensor)
        return;
    QwtInterval range = byHand;
    for (const int group : groups) {
        const SensorPtr& own = manager->dataAt(group)->getSens(channelFor(group));
        if (own && !byHand.isValid())
            range |= QwtInterval(own->mapMin, own->mapMax).normalized();
    }
    if (!range.isValid() || range == colored)
        return;
    colored = range;
    scale->setInterval(range);
    QVector<QColor> colors;
    for (int bin = 0; bin < ColorScale::bins; ++bin)
        colors.append(ColorScale::binColor(bin));
    gmap->setColors(range.minValue(), range.maxValue(), colors);
}

/// The way and how fast it was.
QString MapPane::wayText(const GpsTrack& track) const
{
    QString way = distanceText(track.metres());
    if (track.seconds() <= 0)
        return way;
    return tr("%1, mean %2 km/h").arg(way, QLocale().toString(track.meanSpeed() * 3.6, 'f', 1));
}

/// What is missing; the ways themselves stand on the map.
void MapPane::showLine(const QVector<int>& groups)
{
    QStringList missing;
    for (const int group : groups) {
        if (tracks[group].size() == 0)
            missing.append(tr("%1: no fix yet").arg(manager->groupName(group)));
    }
    line->setText(groups.isEmpty()
                      ? tr("No group has measured its position yet: choose GPS in Setup and press Run.")
                      : missing.join(QStringLiteral("   ")));
}

// --- Menus ---

void MapPane::fillSensorMenu(QMenu* menu)
{
    menu->clear();
    const QVector<int> groups = groupsWithPosition();
    if (groups.isEmpty()) {
        menu->addAction(tr("Nothing is measured yet"))->setEnabled(false);
        return;
    }
    const SensorList& sensors = manager->dataAt(groups[0])->getSensors();
    for (int i = 0; i < sensors.size(); ++i) {
        if (!sensors[i])
            continue;
        QAction* const action = menu->addAction(sensors[i]->name, this, [this, i] {
            routeButton->setChecked(false);
            setMapData(i);
        });
        action->setCheckable(true);
        action->setChecked(sensor && sensors[i]->ID == sensor->ID);
    }
    menu->addSeparator();
    menu->addAction(tr("Set Range"), this, [this] {
        if (sensor && scale->setRangeMenu()) {
            byHand = scale->getInterval();
            updateScale(shown);
        }
    });
}

void MapPane::doScaleSensorMenu(QPoint pos)
{
    QMenu menu;
    fillSensorMenu(&menu);
    menu.exec(pos);
}

void MapPane::choosePicture()
{
    const QString file = prompt->openFile(this, tr("Picture for the map"), QString(),
                                          tr("Pictures (*.png *.jpg *.jpeg *.gif *.svg *.webp)"));
    if (file.isEmpty())
        return;
    pictureFile = file;
    gmap->placePicture(file);
}

void MapPane::usePlace(const QVector<double>& place)
{
    QStringList numbers;
    for (const double number : place)
        numbers.append(QString::number(number, 'g', 17));
    QSettings store = Settings::mainStore();
    store.setValue(QStringLiteral("maps/picture"), pictureFile);
    store.setValue(QStringLiteral("maps/pictureAt"), numbers.join(QLatin1Char(' ')));
}

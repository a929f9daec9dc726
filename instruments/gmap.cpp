#include "instruments/gmap.h"

#include <QUrl>

#include <cmath>

namespace {

QJsonArray numbersOf(const QVector<double>& values)
{
    QJsonArray numbers;
    for (const double value : values)
        numbers.append(std::isfinite(value) ? QJsonValue(value) : QJsonValue());
    return numbers;
}

QString addressOf(const QString& file)
{
    return QUrl::fromLocalFile(file).toString(QUrl::FullyEncoded);
}

} // namespace

GMap::GMap(QWidget* parent)
    : PageView(QStringLiteral("html/map/map.html"), parent)
{
    setObjectName(QStringLiteral("gmap"));
    connect(this, &PageView::pageLoaded, this, &GMap::sayTexts);
    connect(this, &PageView::titleChanged, this, &GMap::hear);
}

void GMap::sayTexts()
{
    call(QStringLiteral("setTexts"),
         {QJsonObject{
             {QStringLiteral("north"), tr("N", "north")},
             {QStringLiteral("first"), tr("Press a point of the picture that you can find on the map.")},
             {QStringLiteral("onMap"), tr("Now press the same point on the map.")},
             {QStringLiteral("second"), tr("Press a second point of the picture, far from the first.")},
             {QStringLiteral("onMapAgain"), tr("Now press this one on the map.")},
             {QStringLiteral("end"), tr("Cancel")},
         }});
}

void GMap::setCenter(float Lat, float Long)
{
    call(QStringLiteral("Open"), {double(Lat), double(Long)});
}

void GMap::setBounds()
{
    call(QStringLiteral("setBounds"), {});
}

void GMap::clean()
{
    call(QStringLiteral("cleanPoints"), {});
}

void GMap::addPoint(float Lat, float Long, const QColor& color, const QString& title)
{
    if (Lat == 0 && Long == 0)
        return;
    if (route)
        call(QStringLiteral("AddPointP"), {double(Lat), double(Long)});
    else
        call(QStringLiteral("AddPointM"), {double(Lat), double(Long), color.name(), title});
}

void GMap::addTracks(const QVector<MapTrack>& tracks)
{
    QJsonArray parts;
    for (const MapTrack& track : tracks) {
        parts.append(QJsonObject{{QStringLiteral("group"), track.group},
                                 {QStringLiteral("name"), track.name},
                                 {QStringLiteral("note"), track.note},
                                 {QStringLiteral("shape"), track.group},
                                 {QStringLiteral("isRoute"), track.isRoute},
                                 {QStringLiteral("colour"), track.color.name()},
                                 {QStringLiteral("lat"), numbersOf(track.latitudes)},
                                 {QStringLiteral("lng"), numbersOf(track.longitudes)},
                                 {QStringLiteral("values"), numbersOf(track.values)},
                                 {QStringLiteral("titles"), QJsonArray::fromStringList(track.titles)}});
    }
    call(QStringLiteral("addTracks"), {QJsonValue(parts)});
}

void GMap::setColors(double min, double max, const QVector<QColor>& colors)
{
    QJsonArray names;
    for (const QColor& color : colors)
        names.append(color.name());
    call(QStringLiteral("setColours"), {min, max, names});
}

void GMap::follow()
{
    call(QStringLiteral("follow"), {});
}

void GMap::setTiles(const QString& url, const QString& attribution)
{
    call(QStringLiteral("setTiles"), {url, attribution});
}

void GMap::placePicture(const QString& file)
{
    call(QStringLiteral("placePicture"), {addressOf(file)});
}

void GMap::setPicture(const QString& file, const QVector<double>& place)
{
    const bool isThere = !file.isEmpty() && place.size() == 4;
    call(QStringLiteral("setPicture"), {isThere ? QJsonValue(addressOf(file)) : QJsonValue(),
                                        isThere ? QJsonValue(numbersOf(place)) : QJsonValue()});
}

void GMap::doResize()
{
    call(QStringLiteral("Resize"), {});
}

void GMap::hear(const QString& title)
{
    const QStringList parts = title.split(QLatin1Char(','));
    if (parts.size() != 5 || parts[0] != QLatin1String("picturePlaced"))
        return;
    QVector<double> place;
    for (int i = 1; i < parts.size(); ++i)
        place.append(parts[i].toDouble());
    Q_EMIT picturePlaced(place);
}

#pragma once

#include <QColor>
#include <QJsonArray>
#include <QJsonObject>
#include <QVector>

#include "instruments/pageview.h"

/// One group's way over the map, or the newest part of it.
struct MapTrack
{
    int group = 0; ///< a group that is there already grows
    QString name;  ///< beside its newest mark
    QString note;  ///< under the name
    bool isRoute = false;
    QColor color;              ///< of a route
    QVector<double> latitudes; ///< degrees
    QVector<double> longitudes;
    QVector<double> values; ///< of the sensor that is shown; not a number where it has none
    QStringList titles;     ///< of the tool tips
};

/// The page with the map, as the program sees it. Calls made before the page is there wait for it.
class GMap : public PageView
{
    Q_OBJECT

public:
    explicit GMap(QWidget* parent = nullptr);

    void setCenter(float Lat, float Long);
    /// The view fits the marks.
    void setBounds();
    void clean();
    /// One mark, or one point of a route. A point with both coordinates 0 is no fix and is left out.
    void addPoint(float Lat, float Long, const QColor& color, const QString& title);
    /// All of it in one call.
    void addTracks(const QVector<MapTrack>& tracks);
    /// What the values' colours mean; the marks that are there follow.
    void setColors(double min, double max, const QVector<QColor>& colors);
    /// Shows where the groups are now, if one has left the view.
    void follow();
    void viewRoute(bool isOn) { route = isOn; }
    bool isRoute() const { return route; }
    /// Ground from a server, `url` with {z}, {x} and {y}; an empty one takes it away.
    void setTiles(const QString& url, const QString& attribution);
    /// The person lays a picture under the map by two of its points; picturePlaced() tells where.
    void placePicture(const QString& file);
    /// `place`: four numbers as picturePlaced() gave them; fewer take the picture away.
    void setPicture(const QString& file, const QVector<double>& place);
    void doResize();

Q_SIGNALS:
    /// Turn and scale (a), and shift (b), from pixels of the picture to the world in Mercator's projection
    /// from 0 to 1: {Re a, Im a, Re b, Im b}.
    void picturePlaced(const QVector<double>& place);

private:
    void sayTexts();
    void hear(const QString& title);

    bool route = false;
};

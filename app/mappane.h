#pragma once

#include <QHash>
#include <QTimer>
#include <QWidget>

#include <qwt_interval.h>

#include "data/gpstrack.h"
#include "sensors/sensor.h"

class ColorScale;
class ExpData;
class GMap;
class QLabel;
class QMenu;
class QPushButton;
class UserPrompt;
class multiConnectionsManager;
struct MapTrack;

/// The map with its scale of colours: where the samples of the chosen group were taken, or those of all
/// groups. It follows a run while it is seen.
class MapPane : public QWidget
{
    Q_OBJECT

public:
    MapPane(multiConnectionsManager* manager, UserPrompt* prompt, QWidget* parent = nullptr);

    /// -1 for all groups.
    void showGroup(int index);
    /// Other samples than before, not only more of them.
    void setStale();
    /// The channel whose values give the colours, of the first group that is shown; -1 for its chosen one.
    void setMapData(int iSens);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QWidget* createBar();
    QPushButton* addButton(QWidget* bar, const QString& text, const char* name);
    void fillSensorMenu(QMenu* menu);
    void doScaleSensorMenu(QPoint pos);
    void choosePicture();
    void usePlace(const QVector<double>& place);
    void tellPage();
    void setMap();
    void refresh();
    QVector<int> groupsWithPosition() const;
    bool isGrownOnly(const QVector<int>& groups) const;
    int channelFor(int group) const;
    MapTrack newPart(int group);
    void updateScale(const QVector<int>& groups);
    QString wayText(const GpsTrack& track) const;
    void showLine(const QVector<int>& groups);

    multiConnectionsManager* const manager;
    UserPrompt* const prompt;
    GMap* gmap;
    ColorScale* scale;
    QLabel* line = nullptr;
    QPushButton* routeButton = nullptr;
    QTimer timer;
    int chosen = -1;
    int wantedChannel = -1;
    bool isStale = true;
    SensorPtr sensor; ///< of the scale, kept while it shows it
    QwtInterval colored;
    QwtInterval byHand; ///< invalid while the range follows the data
    QHash<int, GpsTrack> tracks;
    QVector<int> shown;
    QString pictureFile;
};

#pragma once

#include <QHash>
#include <QJsonArray>
#include <QPointer>
#include <QStringList>
#include <QVector>

#include <array>
#include <functional>

#include "instruments/meterchoice.h"
#include "instruments/pageview.h"
#include "sensors/sensor.h"

class TembrinData;
class meterSelect;

/// The meters, a page: up to six of one logger, or one for each group of the class. It tells the page what to
/// show, and asks a person who taps on a meter what it shall be.
class SteelMeter : public PageView
{
    Q_OBJECT

public:
    /// What a logger measured last, in the base unit; not a number where nobody knows.
    using ValueOf = std::function<double(int slot, int sensorID)>;

    struct Group
    {
        int slot;
        QString name;
        SensorPtr sensor; ///< chosen by the group, plain; may be null
    };

    /// The logger that is shown first, not owned.
    SteelMeter(const TembrinData* tembrinData, ValueOf valueOf, QWidget* parent = nullptr);

    /// Another logger, not owned. It has meters of its own.
    void setTembrinData(const TembrinData* data);
    /// The meters of the model, by its table or as a person has chosen them.
    void setInitialSettingForTembrinType(int tembrinType);
    /// One meter for each of these, until a number of meters is chosen again.
    void showGroups(const QVector<Group>& groups);
    bool isOfGroups() const { return areGroups; }
    /// Sends what the page does not know yet of sensors, after sockets, units or names may have changed.
    void describe();
    /// Sends the newest values.
    void setNewValues();
    /// Colours of the page, by the names of its style, such as "--paper".
    void setColors(const QVector<QPair<QString, QColor>>& colors);

public Q_SLOTS:
    void set1Meter() { setMeters(1); }
    void set2Meter() { setMeters(2); }
    void set4Meter() { setMeters(4); }
    void set6Meter() { setMeters(6); }
    /// All meters below each other, as beside a graph.
    void setColumn(bool tf);
    void doResize();

private:
    /// Something to show.
    struct Meter
    {
        int slot = 0;
        int type = 0;
        SensorPtr sensor;               ///< null for none
        MeterChoice::Range range{0, 1}; ///< in the unit on display
        QString caption;
    };

    void htmlLoaded();
    void htmlMessage(const QString& title);
    void setMeters(int n);
    QVector<Meter> metersNow();
    const MeterChoice& choiceForGroups(int sensorID);
    Meter meterOf(int slot, const MeterChoice& choice, const SensorPtr& sensor) const;
    SensorPtr sensorOf(const MeterChoice& choice) const;
    static QJsonArray description(const QVector<Meter>& all);
    static QJsonArray descriptionOf(const Meter& meter);
    void ask(int i, const QPoint& at);
    void take(const meterSelect& dialog);
    void takeForGroups(const meterSelect& dialog);

    const TembrinData* tembrinData;
    const ValueOf valueOf;
    std::array<MeterChoice, MAX_METERS> choices;
    int model = 0; ///< that the choices are of
    int lastN = MAX_METERS;
    bool isColumn = false;
    bool areGroups = false;
    QVector<Group> groups;
    int groupType = METER_DIGITAL;
    QHash<int, MeterChoice> groupChoices; ///< by sensor, as far as they were looked for
    QVector<Meter> shown;
    QVector<QPair<QString, QColor>> pageColors;
    QJsonArray told; ///< what the page knows of the meters
    QStringList captionsTold;
    QPointer<meterSelect> dialog;
};

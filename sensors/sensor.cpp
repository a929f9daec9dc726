#include "sensors/sensor.h"

#include "sensors/sensorsmaster.h"

namespace {

QString translated(const char* text)
{
    return *text ? Sensor::tr(text) : QString();
}

QString displayUnit(const SensorRow& row)
{
    QString unit = translated(row.uname);
    if (unit.startsWith(QLatin1Char('[')))
        unit = unit.mid(1, unit.size() - 2);
    // How a translation says that its language writes no unit here.
    return unit == QLatin1String("XXX") ? QString() : unit;
}

QString iconPath(const QString& format, const QString& iconName)
{
    return iconName.isEmpty() ? QString() : format.arg(iconName);
}

QString colorIconPath(const QString& iconName)
{
    return iconPath(QStringLiteral(":sensor/icons/sensorsC/%1_icon.png"), iconName);
}

// Lists that keep the language in which the first sensor was built.
struct ClassTexts
{
    QStringList vernierNames;
    QStringList quellmarkIcons;
    QString generalIcon;

    ClassTexts()
    {
        for (int id = VERNIER_FIRST; id <= VERNIER_LAST; ++id)
            vernierNames.append(translated(sensorRow(id)->name));
        for (int id = QUELLMARK_FIRST; id <= QUELLMARK_LAST; ++id)
            quellmarkIcons.append(colorIconPath(translated(sensorRow(id)->iconNameColor)));
        generalIcon = colorIconPath(translated(sensorRow(SENSOR_EXTERNAL)->iconNameColor));
    }
};

const ClassTexts& classTexts()
{
    static const ClassTexts texts;
    return texts;
}

} // namespace

Sensor::Sensor(int ID, const Units& units, int inLoggerIndex, int virtualIndex)
    : ID(ID)
    , row(sensorRow(ID))
    , ownUnits(units)
{
    classTexts();
    if (inLoggerIndex >= 0) {
        this->inLoggerIndex = inLoggerIndex;
        this->virtualIndex = virtualIndex;
        isVirtual = true;
    }
    if (!row)
        return;

    setTexts();
    min = minView = row->min;
    max = maxView = row->max;
    demoVal = row->demoVal;
    numBytes = row->numBytes;
    showCurve = row->showCurve;
    precision = ID == SENSOR_SOUND && units.wholeDecibels ? 0 : row->prec;
    setChildren();
    if (const View* fixed = fixedView(ID)) {
        minView = barUserMin = fixed->min;
        maxView = barUserMax = fixed->max;
        barUserScale = true;
        readSetMinMax = true;
    }
    applyAltUnit();
}

const Sensor::View* Sensor::fixedView(int ID)
{
    static constexpr View speechToNoise{55, 100}; // dB
    return ID == SENSOR_SOUND ? &speechToNoise : nullptr;
}

void Sensor::setTexts()
{
    name = translated(row->name);
    if (ID == SENSOR_EXTERNAL_B)
        name += QStringLiteral(" 2");
    unitName = displayUnit(*row);

    const bool isGps = ID >= SENSOR_GPS && ID <= SENSOR_GPS_ANGLE;
    const QString colorName = translated(row->iconNameColor);
    iconNameGray =
        iconPath(QStringLiteral(":sensor/icons/sensors/%1.ico"), QString::fromUtf8(row->iconNameGray));
    iconNameColor = colorIconPath(isGps ? QString::fromUtf8(row->iconNameColor) : colorName);
    iconNameColorActive = iconPath(QStringLiteral(":sensor/icons/sensorsC/%1_active_icon.png"), colorName);
}

void Sensor::setChildren()
{
    hasVirtual = row->nSens > 1;
    if (!hasVirtual)
        return;
    for (int i = 0; i < row->nSens; ++i) {
        const SensorRow& child = *sensorRow(row->virtualIDs[i]);
        virtualSensorIDs.append(child.ID);
        virtualDemoVals.append(static_cast<int>(row->demoVal));
        virtualSensorsNames.append(translated(child.name));
        virtualSensorsUnits.append(translated(child.uname));
        virtualSensorsMin.append(child.min);
        virtualSensorsMax.append(child.max);
        virtualSensorPrec.append(child.prec);
    }
}

QString Sensor::getNameWithUnit(bool newline) const
{
    if (unitName.isEmpty())
        return name;
    const QString gap(QLatin1Char(newline ? '\n' : ' '));
    return tr("%1%2[%3]").arg(name, gap, unitName);
}

QString Sensor::nameForLegend(bool isClass) const
{
    if (groupName.isEmpty() || !isClass)
        return name;
    return groupName + QStringLiteral(" - ") + name;
}

int Sensor::codeToID(int code)
{
    return isIDVestrel(code) ? code : code + VERNIER_CODE;
}

int Sensor::IDToCode(int id)
{
    return isIDVestrel(id) ? id : id - VERNIER_CODE;
}

bool Sensor::isIDVernier(int id)
{
    return id >= VERNIER_FIRST && id <= VERNIER_LAST;
}

bool Sensor::isIDVestrel(int id)
{
    return id >= QUELLMARK_FIRST && id <= QUELLMARK_LAST;
}

bool Sensor::isIDVernierOrExternal(int id)
{
    return isIDVernier(id) || id == SENSOR_EXTERNAL || id == SENSOR_EXTERNAL_B;
}

int Sensor::socketID(int id)
{
    if (id == VERNIER_CODE)
        return VERNIER_VOLTAGE;
    return isIDVernierOrExternal(id) || isIDVestrel(id) ? id : 0;
}

bool Sensor::isPhotoGate(int id)
{
    return id == QUELLMARK_PHOTOGATE || id == QUELLMARK_PHOTOGATE_HEART;
}

QStringList Sensor::vernierList()
{
    return classTexts().vernierNames;
}

QString Sensor::vestrelIconForID(int id)
{
    return isIDVestrel(id) ? classTexts().quellmarkIcons.at(id - QUELLMARK_FIRST) : vestrelIconForExt();
}

QString Sensor::vestrelIconForExt()
{
    return classTexts().generalIcon;
}

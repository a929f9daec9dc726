#include "persistence/experimentwriter.h"

#include <QBuffer>
#include <QPixmap>

#include <algorithm>
#include <cmath>
#include <memory>

#include "data/expdata.h"
#include "graph/myplotmarker.h"
#include "graph/scalemanager.h"
#include "persistence/numbertext.h"
#include "persistence/safefile.h"
#include "persistence/storeddigits.h"
#include "sensors/sensorsmaster.h"

namespace {

/// Markup in UTF-16 on its way into a file, in the escapes of QDomDocument.
class Utf16Xml
{
public:
    explicit Utf16Xml(SafeFile* file)
        : file(file)
        , units(new char16_t[capacity])
    {
        units[size++] = u'\xFEFF';
    }

    template<int n> void raw(const char16_t (&markup)[n]) { put(markup, n - 1); }
    void indent(int level)
    {
        for (int i = 0; i < level; ++i)
            raw(u" ");
    }
    template<int n> void attribute(const char16_t (&name)[n], const QString& value)
    {
        raw(u" ");
        put(name, n - 1);
        raw(u"=\"");
        escape(value, true);
        raw(u"\"");
    }
    template<int n> void attribute(const char16_t (&name)[n], int value)
    {
        attribute(name, QString::number(value));
    }
    template<int n> void attribute(const char16_t (&name)[n], bool value) { attribute(name, int(value)); }
    template<int n> void attribute(const char16_t (&name)[n], double value)
    {
        // As many digits as bring the same double back.
        attribute(name, QString::number(std::isfinite(value) ? value : 0, 'g', 17));
    }
    void text(const QString& value) { escape(value, false); }
    /// A line with one number for each value. A gap has an empty text: this program reads it as a gap, and
    /// others of the family as 0, which they take for a reading that a logger did not have.
    template<int n, int m>
    void list(const char16_t (&before)[n], const QVector<double>& values, int decimals,
              const char16_t (&after)[m])
    {
        for (const double value : values) {
            raw(before);
            makeRoom(NumberText::maxFixed);
            if (std::isfinite(value))
                size += NumberText::fixed(value, decimals, &units[size]);
            raw(after);
        }
    }
    bool flush()
    {
        const bool isWritten = file->write(reinterpret_cast<const char*>(units.get()), qint64(size) * 2);
        size = 0;
        return isWritten;
    }

private:
    void makeRoom(int n)
    {
        if (size + n > capacity)
            flush();
    }
    void put(const char16_t* from, int n)
    {
        for (int done = 0; done < n;) {
            makeRoom(1);
            const int part = qMin(n - done, capacity - size);
            std::copy_n(from + done, part, &units[size]);
            size += part;
            done += part;
        }
    }
    void escape(const QString& value, bool isAttribute);

    static constexpr int capacity = SafeFile::pieceSize / 2;
    SafeFile* const file;
    const std::unique_ptr<char16_t[]> units;
    int size = 0;
};

void Utf16Xml::escape(const QString& value, bool isAttribute)
{
    QChar before[2];
    for (const QChar c : value) {
        const bool endsCData = before[0] == u']' && before[1] == u']';
        if (c == u'<')
            raw(u"&lt;");
        else if (c == u'&')
            raw(u"&amp;");
        else if (c == u'"' && isAttribute)
            raw(u"&quot;");
        else if (c == u'>' && endsCData)
            raw(u"&gt;");
        else if (c == u'\r')
            raw(u"&#xd;");
        else if (c == u'\n' && isAttribute)
            raw(u"&#xa;");
        else if (c == u'\t' && isAttribute)
            raw(u"&#x9;");
        else if (c >= u' ' || c == u'\n' || c == u'\t') { // XML has no other control characters
            const char16_t unit = c.unicode();
            put(&unit, 1);
        }
        before[0] = before[1];
        before[1] = c;
    }
}

bool isStored(const myPlotMarker& marker)
{
    switch (marker.type) {
    case MARKER_ANNOTATE:
    case MARKER_X:
    case MARKER_REGRESSION:
        return true;
    case MARKER_FLOATING_TEXT:
        return marker.connectTo &&
               (marker.connectTo->type == MARKER_X || marker.connectTo->type == MARKER_REGRESSION);
    case MARKER_X_GHOST:
    case MARKER_TANGENT:
    case MARKER_BUBBLE_TIP:
    case MARKER_FFT:
    case MARKER_INTEGRAL:
    case MARKER_LAST:
        return false;
    }
    return false;
}

/// For what has units to choose from, one of its kind; 0 for everything else.
int kindOfUnit(const Sensor& sensor)
{
    if (sensor.isTemperature())
        return SENSOR_AMB_TEMP_NTC;
    if (sensor.isDistance())
        return SENSOR_DISTANCE;
    if (sensor.isAirPressure())
        return SENSOR_AIRPRESSURE;
    if (sensor.isSpeed())
        return SENSOR_GPS_SPEED;
    return sensor.isBarometer() ? SENSOR_BAROMETER : 0;
}

/// A value of a mark, a fit or a range. Where it may have been on display in another unit it is written
/// shorter by what that costs, so that the file is the same whatever the unit is.
double inBase(const SensorPtr& sensor, double shown, bool isSlope = false)
{
    constexpr double step = 1e11; // an offset costs digits behind the point
    if (!sensor || kindOfUnit(*sensor) == 0)
        return shown;
    const bool isOffset = sensor->isTemperature() && !sensor->isRate && !isSlope;
    const Sensor::AltUnit unit = sensor->altUnit();
    double base = sensor->needAltUnit() ? (shown - (isSlope ? 0 : unit.offset)) / unit.factor : shown;
    if (isOffset && std::fabs(base) < step)
        base = std::round(base * step) / step;
    return QString::number(base, 'g', 14).toDouble();
}

/// Of the base unit, in which the values stand, and not of the unit that is on display. Nobody knows the
/// digits of a derived or imported channel beforehand.
int decimalsOfValues(const Sensor& sensor, const QVector<double>& values)
{
    constexpr int significant = 12;
    const SensorRow* row = sensorRow(sensor.ID);
    const int usual = int(row ? row->prec : sensor.precision) + 1;
    return sensor.ID == SENSOR_SPECIAL ? std::max(usual, StoredDigits::decimals(values, significant)) : usual;
}

/// What a derived or imported channel measures, which its ID does not say.
void writeSpecial(Utf16Xml& xml, const Sensor& sensor)
{
    QString unit = sensor.unitName;
    if (const int kind = kindOfUnit(sensor)) {
        const QString shown = Sensor(kind, sensor.units()).unitName;
        unit = Sensor(kind).unitName + unit.mid(shown.size());
        xml.attribute(u"originID", kind);
        xml.attribute(u"isRate", sensor.isRate);
    }
    if (sensor.specialType > 0)
        xml.attribute(u"derived", sensor.specialType);
    xml.attribute(u"unit", unit);
}

void writeRootStart(Utf16Xml& xml, const ExperimentToWrite& experiment)
{
    const ExpData& data = *experiment.data;
    xml.raw(u"<!DOCTYPE ExpData>\n<ExpDataRoot");
    xml.attribute(u"numSensors", data.getNSens());
    xml.attribute(u"numSamples", data.getXSize());
    xml.attribute(u"Rate", data.dt);
    xml.attribute(u"title", experiment.title);
    xml.attribute(u"view", experiment.view);
    xml.attribute(u"activeSens", data.getSelectedSensor());
    xml.attribute(u"XYIndex", data.getXYIndex());
    xml.attribute(u"appendIndex", data.getAppendIndex());
    xml.raw(u">");
    xml.text(experiment.title);
}

// The text before it takes the line feed and the indent of the first element.
void writeTimes(Utf16Xml& xml, const ExpData& data)
{
    if (data.getXSize() == 0) {
        xml.raw(u"<Times/>\n");
        return;
    }
    xml.raw(u"<Times>\n");
    xml.list(u"  <T t=\"", data.getX(), StoredDigits::decimalsOfTimes(data.getX(), data.dt), u"\"/>\n");
    xml.raw(u" </Times>\n");
}

void writeSensor(Utf16Xml& xml, const ExperimentToWrite& experiment, int i)
{
    const ExpData& data = *experiment.data;
    const SensorPtr& sensor = data.getSens(i);
    if (!sensor)
        return;
    const auto scale = experiment.scales.value(i);
    const auto base = [&](double shown) { return inBase(sensor, shown); };
    // Without a scale of its own the bar has the graph's, which is what the channel has after reading.
    const double minView = base(scale ? scale->scaleFullMin : sensor->minView);
    const double maxView = base(scale ? scale->scaleFullMax : sensor->maxView);
    xml.raw(u" <Sensor");
    xml.attribute(u"DataIndex", i);
    xml.attribute(u"SensorID", sensor->ID);
    xml.attribute(u"Name", sensor->nameForLegend(true));
    if (sensor->ID == SENSOR_SPECIAL)
        writeSpecial(xml, *sensor);
    xml.attribute(u"minView", minView);
    xml.attribute(u"maxView", maxView);
    xml.attribute(u"barUseScale", sensor->barUserScale);
    xml.attribute(u"barMinView", sensor->barUserScale ? base(sensor->barUserMin) : minView);
    xml.attribute(u"barMaxView", sensor->barUserScale ? base(sensor->barUserMax) : maxView);
    xml.attribute(u"curveMode", data.curveModeHint.value(i, -1));
    xml.attribute(u"leftPad", data.getLeftPad(i));
    const QVector<double>& samples = data.getYNoConv(i);
    if (samples.isEmpty() || data.isMeaningless(i)) {
        xml.raw(u">\n  <Samples/>\n </Sensor>\n");
        return;
    }
    xml.raw(u">\n  <Samples>\n");
    xml.list(u"   <V v=\"", samples, decimalsOfValues(*sensor, samples), u"\"/>\n");
    xml.raw(u"  </Samples>\n </Sensor>\n");
}

template<int n>
void writeMarker(Utf16Xml& xml, const myPlotMarker& marker, const ExpData& data, const char16_t (&tag)[n])
{
    xml.raw(u"  <");
    xml.raw(tag);
    xml.attribute(u"typeName", marker.typeName);
    xml.attribute(u"iSens", marker.iSens);
    xml.attribute(u"X", marker.xValue());
    const SensorPtr& sensor = data.getSens(marker.iSens);
    xml.attribute(u"Y", inBase(sensor, marker.yValue()));
    xml.attribute(u"xOffset", marker.xOffset);
    xml.attribute(u"yOffset", marker.yOffset);
    xml.attribute(u"x0", marker.linX0);
    xml.attribute(u"x1", marker.linX1);
    // The fitted curve, too, is one of base units: y = a x² + b x + c.
    xml.attribute(u"a", inBase(sensor, marker.a, true));
    xml.attribute(u"b", inBase(sensor, marker.b, true));
    xml.attribute(u"c", marker.type == MARKER_REGRESSION ? inBase(sensor, marker.c) : marker.c);
    xml.attribute(u"Text", marker.label().text());
    xml.attribute(u"bubble", marker.isBubble());
    xml.attribute(u"image", marker.isPic());
    xml.attribute(u"isCompressed", 1);
    xml.attribute(u"locked", marker.isLocked());
    xml.raw(u">\n   <markerTitle>");
    xml.text(marker.label().text());
    xml.raw(u"</markerTitle>");
    if (marker.isPic()) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        marker.getPic().save(&buffer, "JPG");
        xml.text(QString::fromLatin1(bytes.toBase64()));
    } else {
        xml.raw(u"\n  ");
    }
    xml.raw(u"</");
    xml.raw(tag);
    xml.raw(u">\n");
}

template<int n, int m>
void writeMarkers(Utf16Xml& xml, const QList<myPlotMarker*>& markers, const ExpData& data,
                  const char16_t (&listTag)[n], const char16_t (&tag)[m])
{
    bool isEmpty = true;
    xml.raw(u" <");
    xml.raw(listTag);
    for (const myPlotMarker* marker : markers) {
        // A file has one x axis, and says of no mark that it belongs to another.
        if (!isStored(*marker) || marker->xSensor != data.getXYIndex())
            continue;
        if (isEmpty)
            xml.raw(u">\n");
        isEmpty = false;
        writeMarker(xml, *marker, data, tag);
    }
    if (isEmpty) {
        xml.raw(u"/>\n");
        return;
    }
    xml.raw(u" </");
    xml.raw(listTag);
    xml.raw(u">\n");
}

} // namespace

bool ExperimentWriter::write(SafeFile* file, const ExperimentToWrite& experiment)
{
    Utf16Xml xml(file);
    const ExpData& data = *experiment.data;
    writeRootStart(xml, experiment);
    writeTimes(xml, data);
    for (int i = 0; i < data.getNSens(); ++i)
        writeSensor(xml, experiment, i);
    writeMarkers(xml, experiment.markers, data, u"LineMarkers", u"LineMarker");
    writeMarkers(xml, experiment.barMarkers, data, u"BarMarkers", u"BarMarker");
    xml.raw(u"</ExpDataRoot>\n");
    return xml.flush();
}

#include "persistence/experimentwriter.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "data/expdata.h"
#include "graph/myplotmarker.h"
#include "persistence/numbertext.h"
#include "persistence/safefile.h"
#include "persistence/storeddigits.h"
#include "sensors/sensorids.h"

namespace {

using Channel = StoredExperiment::Channel;
using Marker = StoredExperiment::Marker;

/// To five digits of `span`.
double roundedTo5(double value, double span)
{
    const double step = span > 0 ? std::pow(10.0, std::floor(std::log10(span)) - 4) : 0;
    return step > 0 ? QString::number(std::round(value / step) * step, 'g', 12).toDouble() : value;
}

/// Markup in UTF-16 on its way into a file, in the escapes of QDomDocument.
class Utf16Xml
{
public:
    explicit Utf16Xml(const ExperimentWriter::Sink& sink)
        : sink(sink)
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
            makeRoom(n + m + NumberText::maxFixed);
            char16_t* at = std::copy_n(before, n - 1, &units[size]);
            if (std::isfinite(value))
                at += NumberText::fixed(value, decimals, at);
            size = int(std::copy_n(after, m - 1, at) - units.get());
        }
    }
    bool flush()
    {
        isGood = sink(reinterpret_cast<const char*>(units.get()), qint64(size) * 2) && isGood;
        size = 0;
        return isGood;
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
    const ExperimentWriter::Sink& sink;
    bool isGood = true;
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

/// Nobody knows the digits of a derived or imported channel beforehand, and a lesson keeps what was measured.
int decimalsOfValues(const Channel& channel, bool isPart)
{
    constexpr int significant = 12;
    const bool areUsualEnough = !isPart && channel.sensorID != SENSOR_SPECIAL;
    return areUsualEnough ? channel.decimals
                          : std::max(channel.decimals, StoredDigits::decimals(channel.samples, significant));
}

/// What a derived or imported channel measures, which its ID does not say.
void writeSpecial(Utf16Xml& xml, const Channel& channel)
{
    if (channel.originID != 0) {
        xml.attribute(u"originID", channel.originID);
        xml.attribute(u"isRate", channel.isRate);
    }
    if (channel.derivedBy > 0)
        xml.attribute(u"derived", channel.derivedBy);
    xml.attribute(u"unit", channel.unit);
}

/// The range of an automatic axis follows from the values, whatever has been on display.
void writeRange(Utf16Xml& xml, const Channel& channel, bool isPart, int decimals)
{
    double low = channel.minView;
    double high = channel.maxView;
    if (isPart && !channel.isRangeFixed) {
        low = high = 0;
        ExpData::findMinMax(channel.samples, low, high);
        const double scale = std::pow(10.0, decimals);
        low = std::round(low * scale) / scale; // as they come back
        high = std::round(high * scale) / scale;
        const double margin = (high - low) / 10;
        low = roundedTo5(low - margin, high - low);
        high = roundedTo5(high + margin, high - low);
    }
    xml.attribute(u"minView", low);
    xml.attribute(u"maxView", high);
    xml.attribute(u"barUseScale", channel.barUseScale);
    xml.attribute(u"barMinView", channel.barUseScale ? channel.barMinView : low);
    xml.attribute(u"barMaxView", channel.barUseScale ? channel.barMaxView : high);
}

void writeRecipe(Utf16Xml& xml, const Calculation::Recipe& recipe)
{
    QStringList origins;
    for (const Calculation::Origin& origin : recipe.origins)
        origins << origin.letter << QString::number(origin.place);
    QStringList constants;
    for (const Calculation::Constant& constant : recipe.constants)
        constants << constant.name << QString::number(constant.value, 'g', 17);
    xml.attribute(u"formula", recipe.formula);
    xml.attribute(u"origins", origins.join(QLatin1Char(' ')));
    xml.attribute(u"constants", constants.join(QLatin1Char(' ')));
    xml.attribute(u"digits", recipe.digits);
}

void writePart(Utf16Xml& xml, const Channel& channel)
{
    if (channel.isRangeFixed)
        xml.attribute(u"fixedRange", true);
    if (channel.derivedBy > 0 && channel.originPlace >= 0)
        xml.attribute(u"originIndex", channel.originPlace);
    if (!channel.recipe.origins.isEmpty())
        writeRecipe(xml, channel.recipe);
    if (!channel.group.isEmpty())
        xml.attribute(u"group", channel.group);
    if (channel.isOut)
        xml.attribute(u"out", true);
    xml.attribute(u"ownName", channel.ownName);
}

void writeRootStart(Utf16Xml& xml, const StoredExperiment& experiment)
{
    xml.raw(u"<!DOCTYPE ExpData>\n<ExpDataRoot");
    xml.attribute(u"numSensors", experiment.places);
    xml.attribute(u"numSamples", experiment.times.size());
    xml.attribute(u"Rate", experiment.rate);
    xml.attribute(u"title", experiment.title);
    xml.attribute(u"view", experiment.view);
    xml.attribute(u"activeSens", experiment.activeSens);
    xml.attribute(u"XYIndex", experiment.xyIndex);
    xml.attribute(u"appendIndex", experiment.appendIndex);
    if (experiment.rightIndex >= 0)
        xml.attribute(u"rightIndex", experiment.rightIndex);
    if (experiment.isPart)
        xml.attribute(u"part", true);
    xml.raw(u">");
    xml.text(experiment.title);
}

// The text before it takes the line feed and the indent of the first element.
void writeTimes(Utf16Xml& xml, const StoredExperiment& experiment)
{
    const QVector<double>& times = experiment.times;
    if (times.isEmpty()) {
        xml.raw(u"<Times/>\n");
        return;
    }
    xml.raw(u"<Times>\n");
    xml.list(u"  <T t=\"", times, StoredDigits::decimalsOfTimes(times, experiment.rate), u"\"/>\n");
    xml.raw(u" </Times>\n");
}

void writeSensor(Utf16Xml& xml, const Channel& channel, bool isPart)
{
    xml.raw(u" <Sensor");
    xml.attribute(u"DataIndex", channel.place);
    xml.attribute(u"SensorID", channel.sensorID);
    xml.attribute(u"Name", channel.name);
    if (channel.sensorID == SENSOR_SPECIAL)
        writeSpecial(xml, channel);
    const int decimals = decimalsOfValues(channel, isPart);
    writeRange(xml, channel, isPart, decimals);
    xml.attribute(u"curveMode", channel.curveMode);
    xml.attribute(u"leftPad", channel.leftPad);
    if (isPart)
        writePart(xml, channel);
    if (channel.samples.isEmpty()) {
        xml.raw(u">\n  <Samples/>\n </Sensor>\n");
        return;
    }
    xml.raw(u">\n  <Samples>\n");
    xml.list(u"   <V v=\"", channel.samples, decimals, u"\"/>\n");
    xml.raw(u"  </Samples>\n </Sensor>\n");
}

void writePart(Utf16Xml& xml, const Marker& marker)
{
    if (marker.type == MARKER_REGRESSION)
        xml.attribute(u"r", marker.r);
    if (marker.isPlacedByProgram)
        xml.attribute(u"placedByProgram", true);
    if (marker.xSensor >= 0)
        xml.attribute(u"xSensor", marker.xSensor);
    if (marker.onFit >= 0)
        xml.attribute(u"onFit", marker.onFit);
}

QString listed(const QVector<double>& numbers)
{
    QStringList texts;
    for (const double number : numbers)
        texts += std::isfinite(number) ? QString::number(number, 'g', 17) : QStringLiteral("-");
    return texts.join(QLatin1Char(' '));
}

QString listed(const FittedCurve::Unit& unit)
{
    return QStringLiteral("%1 %2").arg(listed({unit.factor, unit.offset}), unit.name).trimmed();
}

void writeFit(Utf16Xml& xml, const FittedCurve& fit)
{
    xml.attribute(u"fit", FittedCurve::key(fit.curve.model));
    if (!fit.curve.expression.isEmpty())
        xml.attribute(u"formula", fit.curve.expression);
    xml.attribute(u"parameters", listed(fit.curve.parameters));
    xml.attribute(u"errors", listed(fit.errors));
    xml.attribute(u"r2", listed({fit.r2}));
    xml.attribute(u"rmse", listed({fit.rmse}));
    xml.attribute(u"n", fit.n);
    xml.attribute(u"unitX", listed(fit.x));
    xml.attribute(u"unitY", listed(fit.y));
}

/// Readers that know no other curves pass over these.
QString typeName(const Marker& marker)
{
    const bool isOther = !marker.fit.isNone() && marker.fit.curve.model != CurveFit::Model::Line &&
                         marker.fit.curve.model != CurveFit::Model::Parabola;
    return isOther ? QStringLiteral("fit") : markerTypeName(marker.type);
}

template<int n> void writeMarker(Utf16Xml& xml, const Marker& marker, bool isPart, const char16_t (&tag)[n])
{
    xml.raw(u"  <");
    xml.raw(tag);
    xml.attribute(u"typeName", typeName(marker));
    xml.attribute(u"iSens", marker.iSens);
    xml.attribute(u"X", marker.x);
    xml.attribute(u"Y", marker.y);
    xml.attribute(u"xOffset", marker.xOffset);
    xml.attribute(u"yOffset", marker.yOffset);
    xml.attribute(u"x0", marker.linX0);
    xml.attribute(u"x1", marker.linX1);
    xml.attribute(u"a", marker.a);
    xml.attribute(u"b", marker.b);
    xml.attribute(u"c", marker.c);
    xml.attribute(u"Text", marker.text);
    xml.attribute(u"bubble", marker.isBubble);
    xml.attribute(u"image", marker.isPic);
    xml.attribute(u"isCompressed", 1);
    xml.attribute(u"locked", marker.isLocked);
    if (isPart)
        writePart(xml, marker);
    if (!marker.fit.isNone())
        writeFit(xml, marker.fit);
    xml.raw(u">\n   <markerTitle>");
    xml.text(marker.text);
    xml.raw(u"</markerTitle>");
    if (marker.isPic)
        xml.text(QString::fromLatin1(marker.picture.toBase64()));
    else
        xml.raw(u"\n  ");
    xml.raw(u"</");
    xml.raw(tag);
    xml.raw(u">\n");
}

/// The height at a time of the curve as the file has it.
double heightAt(const StoredExperiment& experiment, const Channel& channel, double time, double otherwise)
{
    const QVector<double>& times = experiment.times;
    const int n = std::min(times.size(), channel.samples.size());
    const double scale = std::pow(10.0, decimalsOfValues(channel, experiment.isPart));
    const auto value = [&](int i) { return std::round(channel.samples.at(i) * scale) / scale; };
    double height = otherwise;
    if (n == 1 || (n > 1 && time < times.constFirst())) {
        height = value(0);
    } else if (n > 1) {
        const auto above = std::upper_bound(times.cbegin() + 1, times.cbegin() + n, time);
        const int i = std::min(int(above - times.cbegin()), n - 1);
        const double width = times.at(i) - times.at(i - 1);
        const bool isOnSample = width > 0 && time == times.at(i - 1);
        const double part = width > 0 ? (time - times.at(i - 1)) / width : 1;
        height = isOnSample ? value(i - 1) : value(i - 1) + part * (value(i) - value(i - 1));
    }
    return std::isfinite(height) ? height : otherwise;
}

/// Crosses and their texts at the height that their curve has when it comes back. The place of an area
/// follows from its span.
QVector<Marker> settled(const StoredExperiment& experiment)
{
    QVector<Marker> markers = experiment.lineMarkers;
    for (int i = 0; experiment.isPart && i < markers.size(); ++i) {
        Marker& marker = markers[i];
        if (marker.type == MARKER_INTEGRAL)
            marker.y = 0;
        const auto channel =
            std::find_if(experiment.channels.cbegin(), experiment.channels.cend(),
                         [&](const Channel& candidate) { return candidate.place == marker.iSens; });
        if (marker.type == MARKER_X && marker.onFit < 0 && marker.xSensor < 0 &&
            channel != experiment.channels.cend()) {
            const double height = heightAt(experiment, *channel, marker.x, marker.y);
            marker.y = QString::number(height, 'g', 12).toDouble();
        }
        if (marker.type == MARKER_FLOATING_TEXT && i > 0) {
            marker.x = markers.at(i - 1).x;
            marker.y = markers.at(i - 1).y;
        }
    }
    return markers;
}

void writePrediction(Utf16Xml& xml, const Prediction& prediction)
{
    QVector<double> times;
    QVector<double> values;
    for (const QPointF& point : prediction.points) {
        times.append(point.x());
        values.append(point.y());
    }
    xml.raw(u" <Prediction");
    xml.attribute(u"SensorID", prediction.sensorID);
    xml.attribute(u"number", prediction.number);
    xml.attribute(u"times", listed(times));
    xml.attribute(u"values", listed(values));
    xml.raw(u"/>\n");
}

template<int n, int m>
void writeMarkers(Utf16Xml& xml, const QVector<Marker>& markers, bool isPart, const char16_t (&listTag)[n],
                  const char16_t (&tag)[m])
{
    xml.raw(u" <");
    xml.raw(listTag);
    if (markers.isEmpty()) {
        xml.raw(u"/>\n");
        return;
    }
    xml.raw(u">\n");
    for (const Marker& marker : markers)
        writeMarker(xml, marker, isPart, tag);
    xml.raw(u" </");
    xml.raw(listTag);
    xml.raw(u">\n");
}

} // namespace

bool ExperimentWriter::write(const Sink& sink, const StoredExperiment& experiment)
{
    Utf16Xml xml(sink);
    writeRootStart(xml, experiment);
    writeTimes(xml, experiment);
    for (const Channel& channel : experiment.channels)
        writeSensor(xml, channel, experiment.isPart);
    writeMarkers(xml, settled(experiment), experiment.isPart, u"LineMarkers", u"LineMarker");
    writeMarkers(xml, experiment.barMarkers, experiment.isPart, u"BarMarkers", u"BarMarker");
    for (const Prediction& prediction : experiment.predictions)
        writePrediction(xml, prediction);
    xml.raw(u"</ExpDataRoot>\n");
    return xml.flush();
}

#include "persistence/experimentreader.h"

#include <QIODevice>
#include <QMap>

#include <algorithm>
#include <cmath>
#include <limits>

#include "data/expdata.h"
#include "graph/myplotmarker.h"
#include "persistence/numbertext.h"
#include "persistence/storeddigits.h"
#include "persistence/xmlscanner.h"
#include "sensors/sensorsmaster.h"

namespace {

using Marker = StoredExperiment::Marker;
using Channel = StoredExperiment::Channel;

constexpr int digitsOnDisplay = 5;
constexpr int mostPredictions = 64;
constexpr double gap = std::numeric_limits<double>::quiet_NaN();

/// The walk through one document.
class Walk
{
public:
    Walk(QIODevice* device, StoredExperiment* experiment)
        : xml(device)
        , experiment(experiment)
    {
    }

    bool readDocument();
    QString reason() const { return failure.isEmpty() ? xml.reason() : failure; }

private:
    int integer(const char* key, int missing = 0) const
    {
        return NumberText::toInt(xml.attribute(QLatin1String(key)), missing);
    }
    double number(const char* key) const { return NumberText::toDouble(xml.attribute(QLatin1String(key))); }
    bool flag(const char* key) const { return integer(key) == 1; }

    void readRoot();
    void readChildren(bool isRoot);
    void readElement();
    double readValue(QStringView text, double emptyText);
    QVector<double> readValues(const char* key, double emptyText, int* decimals = nullptr);
    void readSensor();
    void readMarker(QVector<Marker>* list);
    void readPrediction();
    void readRecipe(Calculation::Recipe* recipe) const;
    bool readFit(FittedCurve* fit) const;
    void readMarkerContent(Marker* marker);
    void readMarkerTitle(Marker* marker);
    void closeGaps();
    int newPlace(int place) const;
    void moveMarkers(QVector<Marker>* list);
    void tellLeftOut();

    XmlScanner xml;
    StoredExperiment* const experiment;
    int numSensors = 0;
    bool areTimesRead = false;
    QMap<int, Channel> channels; ///< by their place in the file
    QVector<Marker> olderMarkers;
    int lostChannels = 0;
    int lostValues = 0;
    int withoutSamples = 0;
    int lostMarkers = 0;
    QString failure;
};

int decimalsIn(QStringView text)
{
    constexpr int most = 16;
    const int point = int(text.indexOf(u'.'));
    if (text.contains(u'e', Qt::CaseInsensitive))
        return most;
    return point < 0 ? 0 : std::min(most, int(text.size()) - point - 1);
}

bool Walk::readDocument()
{
    if (xml.next() != XmlScanner::StartElement)
        return false;
    if (xml.name() != QLatin1String("ExpDataRoot")) {
        failure = ExperimentReader::tr("it holds no experiment");
        return false;
    }
    readRoot();
    readChildren(true);
    if (xml.next() != XmlScanner::EndOfDocument)
        return false;
    if (channels.isEmpty()) {
        failure = ExperimentReader::tr("it holds no channel that can be read");
        return false;
    }
    if (experiment->lineMarkers.isEmpty())
        experiment->lineMarkers = olderMarkers;
    closeGaps();
    tellLeftOut();
    return true;
}

void Walk::readRoot()
{
    numSensors =
        std::clamp(integer("numSensors", ExperimentReader::maxChannels), 0, ExperimentReader::maxChannels);
    experiment->rate = number("Rate");
    experiment->activeSens = integer("activeSens");
    experiment->xyIndex = integer("XYIndex", -1);
    experiment->rightIndex = integer("rightIndex", -1);
    experiment->appendIndex = std::max(0, integer("appendIndex"));
    const QStringView title = xml.attribute(QLatin1String("title"));
    experiment->isTitled = !title.isNull();
    experiment->title = title.toString();
    experiment->view = xml.attribute(QLatin1String("view")).toString();
    experiment->isPart = flag("part");
}

void Walk::readChildren(bool isRoot)
{
    for (bool isFirst = true;; isFirst = false) {
        switch (xml.next()) {
        case XmlScanner::StartElement:
            readElement();
            break;
        case XmlScanner::Text:
            if (isRoot && isFirst) {
                experiment->title = xml.text().toString();
                experiment->isTitled = true;
            }
            break;
        case XmlScanner::EndElement:
        case XmlScanner::EndOfDocument:
        case XmlScanner::Failed:
            return;
        }
    }
}

void Walk::readElement()
{
    const QStringView name = xml.name();
    if (name == QLatin1String("Times") && !areTimesRead) {
        areTimesRead = true;
        int decimals = 0;
        const QVector<double> stored = readValues("t", 0, &decimals);
        experiment->times = StoredDigits::restored(stored, experiment->rate, decimals);
    } else if (name == QLatin1String("Sensor")) {
        readSensor();
    } else if (name == QLatin1String("LineMarker")) {
        readMarker(&experiment->lineMarkers);
    } else if (name == QLatin1String("BarMarker")) {
        readMarker(&experiment->barMarkers);
    } else if (name == QLatin1String("Prediction")) {
        readPrediction();
    } else if (name == QLatin1String("Marker")) { // in files of older editions
        readMarker(&olderMarkers);
    } else {
        readChildren(false);
    }
}

double Walk::readValue(QStringView text, double emptyText)
{
    if (text.isEmpty() && !text.isNull())
        return emptyText;
    bool isNumber = false;
    const double value = NumberText::toDouble(text, &isNumber);
    lostValues += isNumber ? 0 : 1;
    return isNumber ? value : emptyText;
}

/// One value per child of the element whose start was read; `decimals` gets the most of them.
QVector<double> Walk::readValues(const char* key, double emptyText, int* decimals)
{
    QVector<double> values;
    QStringView text;
    for (;;) {
        switch (xml.next()) {
        case XmlScanner::StartElement:
            text = xml.attribute(QLatin1String(key));
            values.append(readValue(text, emptyText));
            if (decimals)
                *decimals = std::max(*decimals, decimalsIn(text));
            xml.skipElement();
            break;
        case XmlScanner::Text:
            break;
        case XmlScanner::EndElement:
        case XmlScanner::EndOfDocument:
        case XmlScanner::Failed:
            values.squeeze();
            return values;
        }
    }
}

void Walk::readSensor()
{
    const int place = integer("DataIndex", -1);
    Channel channel;
    channel.sensorID = integer("SensorID");
    const bool isPlace = place >= 0 && place < numSensors && !channels.contains(place);
    if (!isPlace || !sensorRow(channel.sensorID)) {
        ++lostChannels;
        xml.skipElement();
        return;
    }
    const QStringView name = xml.attribute(QLatin1String("Name"));
    channel.isNamed = !name.isNull();
    channel.name = name.toString();
    channel.unit = xml.attribute(QLatin1String("unit")).toString();
    channel.isRate = flag("isRate");
    channel.derivedBy = std::clamp(integer("derived"), 0, int(ExpData::CURVE_FORMULA));
    channel.originID = channel.sensorID == SENSOR_SPECIAL ? integer("originID") : 0;
    channel.minView = number("minView");
    channel.maxView = number("maxView");
    channel.barUseScale = flag("barUseScale");
    channel.barMinView = number("barMinView");
    channel.barMaxView = number("barMaxView");
    channel.curveMode = integer("curveMode", -1);
    channel.isRangeFixed = flag("fixedRange");
    channel.isOut = flag("out");
    channel.originPlace = integer("originIndex", -1);
    channel.group = xml.attribute(QLatin1String("group")).toString();
    channel.ownName = xml.attribute(QLatin1String("ownName")).toString();
    channel.leftPad = integer("leftPad");
    if (channel.derivedBy == ExpData::CURVE_FORMULA)
        readRecipe(&channel.recipe);
    bool isFirst = true;
    for (;; isFirst = false) {
        const XmlScanner::Token token = xml.next();
        if (token == XmlScanner::StartElement && isFirst)
            channel.samples = readValues("v", gap);
        else if (token == XmlScanner::StartElement)
            xml.skipElement();
        else if (token != XmlScanner::Text)
            break;
    }
    withoutSamples += isFirst ? 1 : 0;
    if (channel.sensorID == SENSOR_SPECIAL)
        channel.decimals = StoredDigits::decimals(channel.samples, digitsOnDisplay);
    channel.leftPad = std::clamp(channel.leftPad, 0, channel.samples.size());
    channels.insert(place, channel);
}

/// Numbers that a fit may have lie beyond those of an axis.
QVector<double> numbersIn(const QString& text)
{
    QVector<double> numbers;
    for (const QString& part : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        bool isNumber = false;
        const double number = part.toDouble(&isNumber);
        numbers.append(isNumber ? number : gap);
    }
    return numbers;
}

FittedCurve::Unit unitIn(const QString& text)
{
    const QVector<double> numbers = numbersIn(text.section(QLatin1Char(' '), 0, 1));
    return {text.section(QLatin1Char(' '), 2), numbers.value(0), numbers.value(1)};
}

/// Letters and names, each with its number.
void Walk::readRecipe(Calculation::Recipe* recipe) const
{
    recipe->formula = xml.attribute(QLatin1String("formula")).toString();
    recipe->digits = std::clamp(integer("digits", -1), -1, Calculation::mostDigits);
    const QStringList origins =
        xml.attribute(QLatin1String("origins")).toString().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (int i = 0; i + 1 < std::min(origins.size(), 2 * Calculation::mostOrigins); i += 2)
        recipe->origins.append({origins.at(i).at(0), origins.at(i + 1).toInt(), 0, QString(), 0});
    const QStringList constants =
        xml.attribute(QLatin1String("constants")).toString().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (int i = 0; i + 1 < std::min(constants.size(), 2 * Formula::mostParameters); i += 2)
        recipe->constants.append({constants.at(i), constants.at(i + 1).toDouble()});
}

/// Points go on in time; what does not ends a line that somebody changed.
void Walk::readPrediction()
{
    Prediction prediction;
    prediction.sensorID = integer("SensorID");
    prediction.number = integer("number");
    const QVector<double> times = numbersIn(xml.attribute(QLatin1String("times")).toString());
    const QVector<double> values = numbersIn(xml.attribute(QLatin1String("values")).toString());
    xml.skipElement();
    const int count = std::min({times.size(), values.size(), Prediction::mostPoints});
    for (int i = 0; i < count && std::isfinite(times.at(i)) && std::isfinite(values.at(i)); ++i) {
        if (i > 0 && times.at(i) <= times.at(i - 1))
            break;
        prediction.points.append({times.at(i), values.at(i)});
    }
    const bool isFirst = std::none_of(experiment->predictions.cbegin(), experiment->predictions.cend(),
                                      [&](const Prediction& other) { return other.isOfSame(prediction); });
    if (isFirst && !prediction.points.isEmpty() && experiment->predictions.size() < mostPredictions)
        experiment->predictions.append(prediction);
}

/// False where there is one that makes no sense.
bool Walk::readFit(FittedCurve* fit) const
{
    const auto text = [this](const char* key) { return xml.attribute(QLatin1String(key)).toString(); };
    const QString key = text("fit");
    if (key.isEmpty())
        return true;
    if (!FittedCurve::modelOf(key, &fit->curve.model))
        return false;
    fit->curve.expression = text("formula");
    fit->curve.parameters = numbersIn(text("parameters"));
    fit->errors = numbersIn(text("errors"));
    fit->r2 = numbersIn(text("r2")).value(0);
    fit->rmse = numbersIn(text("rmse")).value(0);
    fit->n = integer("n");
    fit->x = unitIn(text("unitX"));
    fit->y = unitIn(text("unitY"));
    return fit->isSound();
}

int typeOf(QStringView typeName)
{
    if (typeName == QLatin1String("fit"))
        return MARKER_REGRESSION;
    int type = 0;
    while (type < MARKER_LAST && (markerTypeName(type).isEmpty() || markerTypeName(type) != typeName))
        ++type;
    return type;
}

void Walk::readMarker(QVector<Marker>* list)
{
    const QStringView typeName = xml.attribute(QLatin1String("typeName"));
    const int type = typeOf(typeName);
    const bool isOtherCurve = typeName == QLatin1String("fit");
    FittedCurve fit;
    const bool isFitSound = readFit(&fit);
    if (type == MARKER_LAST || !isFitSound || (isOtherCurve && fit.isNone()) ||
        list->size() == ExperimentReader::maxMarkers) {
        ++lostMarkers;
        xml.skipElement();
        return;
    }
    Marker marker;
    marker.type = type;
    marker.iSens = integer("iSens");
    marker.x = number("X");
    marker.y = number("Y");
    marker.xOffset = integer("xOffset");
    marker.yOffset = integer("yOffset");
    marker.linX0 = number("x0");
    marker.linX1 = number("x1");
    marker.a = number("a");
    marker.b = number("b");
    marker.c = number("c");
    marker.r = number("r");
    marker.fit = fit;
    marker.isPlacedByProgram = flag("placedByProgram");
    marker.xSensor = integer("xSensor", -1);
    marker.onFit = integer("onFit", -1);
    marker.text = xml.attribute(QLatin1String("Text")).toString();
    marker.isBubble = flag("bubble");
    marker.isLocked = flag("locked");
    marker.isPic = flag("image");
    marker.isCompressed = flag("isCompressed");
    readMarkerContent(&marker);
    list->append(marker);
}

void Walk::readMarkerContent(Marker* marker)
{
    QByteArray lastText;
    for (bool isFirst = true;; isFirst = false) {
        const XmlScanner::Token token = xml.next();
        if (token == XmlScanner::StartElement) {
            lastText.clear();
            if (isFirst)
                readMarkerTitle(marker);
            else
                xml.skipElement();
        } else if (token == XmlScanner::Text) {
            if (marker->isPic)
                lastText = xml.text().toLatin1();
        } else {
            break;
        }
    }
    if (marker->isPic)
        marker->picture = QByteArray::fromBase64(lastText);
}

void Walk::readMarkerTitle(Marker* marker)
{
    for (bool isFirst = true;; isFirst = false) {
        const XmlScanner::Token token = xml.next();
        if (token == XmlScanner::Text && isFirst)
            marker->text = xml.text().toString();
        else if (token == XmlScanner::StartElement)
            xml.skipElement();
        else if (token != XmlScanner::Text)
            break;
    }
}

int Walk::newPlace(int place) const
{
    const auto found = channels.find(place);
    return found == channels.end() ? -1 : int(std::distance(channels.begin(), found));
}

/// A place that no channel could be read for would be an empty slot for everybody; the channels behind it
/// move up, and what names them by their place with them.
void Walk::closeGaps()
{
    experiment->activeSens = std::max(0, newPlace(experiment->activeSens));
    experiment->xyIndex = newPlace(experiment->xyIndex);
    experiment->rightIndex = newPlace(experiment->rightIndex);
    moveMarkers(&experiment->lineMarkers);
    moveMarkers(&experiment->barMarkers);
    for (auto it = channels.begin(); it != channels.end(); ++it) {
        it->place = newPlace(it.key());
        it->originPlace = newPlace(it->originPlace);
        for (Calculation::Origin& origin : it->recipe.origins)
            origin.place = newPlace(origin.place);
    }
    experiment->channels = channels.values().toVector();
    experiment->places = channels.size();
}

void Walk::moveMarkers(QVector<Marker>* list)
{
    QVector<Marker> kept;
    for (Marker marker : qAsConst(*list)) {
        marker.iSens = newPlace(marker.iSens);
        const int axis = marker.xSensor;
        marker.xSensor = newPlace(axis);
        if (marker.iSens < 0 || (axis >= 0 && marker.xSensor < 0))
            ++lostMarkers;
        else
            kept.append(marker);
    }
    *list = kept;
}

void Walk::tellLeftOut()
{
    QStringList parts;
    if (lostChannels > 0)
        parts << ExperimentReader::tr("channels: %1").arg(lostChannels);
    if (lostMarkers > 0)
        parts << ExperimentReader::tr("markers: %1").arg(lostMarkers);
    if (lostValues > 0)
        parts << ExperimentReader::tr("values that are no numbers: %1").arg(lostValues);
    if (withoutSamples > 0)
        parts << ExperimentReader::tr("channels without samples: %1").arg(withoutSamples);
    if (!areTimesRead)
        parts << ExperimentReader::tr("it has no times");
    if (!parts.isEmpty())
        experiment->leftOut = parts.join(QStringLiteral(", "));
}

} // namespace

bool ExperimentReader::read(QIODevice* device, StoredExperiment* experiment, QString* reason)
{
    Walk walk(device, experiment);
    const bool isRead = walk.readDocument();
    if (!isRead && reason)
        *reason = walk.reason();
    return isRead;
}

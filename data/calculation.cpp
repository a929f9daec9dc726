#include "data/calculation.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "data/novalue.h"

namespace {

constexpr char firstLetter = 'A';

/// What tells a channel from those of another kind.
QString kindNameOf(const Sensor& sensor)
{
    return sensor.ID == SENSOR_SPECIAL ? sensor.name : QString();
}

/// The how manieth of its kind a channel is.
int numberOf(const SensorList& channels, int place)
{
    const Sensor& sensor = *channels.at(place);
    return int(std::count_if(channels.cbegin(), channels.cbegin() + place, [&](const SensorPtr& other) {
        return other && other->ID == sensor.ID && kindNameOf(*other) == kindNameOf(sensor);
    }));
}

int placeOf(const Calculation::Origin& origin, const SensorList& channels)
{
    int number = origin.number;
    for (int i = 0; i < std::min(channels.size(), Calculation::mostOrigins); ++i) {
        const SensorPtr& sensor = channels.at(i);
        if (sensor && sensor->ID == origin.sensorID && kindNameOf(*sensor) == origin.name && number-- == 0)
            return i;
    }
    return -1;
}

/// A whole word of a formula.
QRegularExpression word(const QString& text)
{
    return QRegularExpression(QStringLiteral("(?<!\\w)%1(?!\\w)").arg(QRegularExpression::escape(text)),
                              QRegularExpression::CaseInsensitiveOption |
                                  QRegularExpression::UseUnicodePropertiesOption);
}

/// Names of channels, the longest first, since one may be a part of another.
QString withLetters(QString text, const SensorList& channels)
{
    QVector<int> places;
    for (int i = 0; i < std::min(channels.size(), Calculation::mostOrigins); ++i) {
        if (channels.at(i) && channels.at(i)->name.size() > 1)
            places.append(i);
    }
    std::stable_sort(places.begin(), places.end(),
                     [&](int a, int b) { return channels.at(a)->name.size() > channels.at(b)->name.size(); });
    for (const int i : qAsConst(places))
        text.replace(word(channels.at(i)->name), QString(Calculation::letterOf(i)));
    return text;
}

} // namespace

QChar Calculation::letterOf(int place)
{
    return QLatin1Char(char(firstLetter + place));
}

QStringList Calculation::variables()
{
    QStringList all{QStringLiteral("t")};
    for (int i = 0; i < mostOrigins; ++i)
        all.append(QString(letterOf(i)));
    return all;
}

QString Calculation::read(const QString& typed, const SensorList& channels, Recipe* recipe)
{
    recipe->formula = withLetters(typed.trimmed(), channels);
    recipe->origins.clear();
    if (recipe->formula.isEmpty())
        return tr("Type a formula, such as 0.5*m*A^2.");
    const Formula formula(recipe->formula, variables());
    if (!formula.isValid())
        return formula.error();
    for (int i = 0; i < mostOrigins; ++i) {
        if (!formula.uses(QString(letterOf(i))))
            continue;
        const SensorPtr sensor = channels.value(i);
        if (!sensor)
            return tr("There is no channel %1.").arg(letterOf(i));
        recipe->origins.append({letterOf(i), i, sensor->ID, kindNameOf(*sensor), numberOf(channels, i)});
    }
    return recipe->origins.isEmpty() ? tr("The formula needs the letter or the name of a channel.")
                                     : QString();
}

int Calculation::nameOrigins(const SensorList& channels, Recipe* recipe)
{
    int end = 0;
    for (Origin& origin : recipe->origins) {
        const SensorPtr sensor = channels.value(origin.place);
        if (!sensor)
            return std::numeric_limits<int>::max();
        origin.sensorID = sensor->ID;
        origin.name = kindNameOf(*sensor);
        origin.number = numberOf(channels, origin.place);
        end = std::max(end, origin.place + 1);
    }
    return end;
}

QStringList Calculation::constantsOf(const Recipe& recipe)
{
    return Formula(recipe.formula, variables()).parameters();
}

std::optional<Calculation::Recipe> Calculation::placed(const Recipe& recipe, const SensorList& channels)
{
    Recipe other = recipe;
    QString letters = recipe.formula;
    for (Origin& origin : other.origins) {
        origin.place = placeOf(origin, channels);
        if (origin.place < 0)
            return std::nullopt;
    }
    // All at one time, since one may take the letter of the next.
    const QRegularExpression letter(QStringLiteral("(?<!\\w)[A-Z](?!\\w)"));
    for (int from = 0;;) {
        from = letters.indexOf(letter, from);
        if (from < 0)
            break;
        for (const Origin& origin : qAsConst(other.origins)) {
            if (origin.letter == recipe.formula.at(from))
                letters[from] = letterOf(origin.place);
        }
        ++from;
    }
    other.formula = letters;
    for (Origin& origin : other.origins)
        origin.letter = letterOf(origin.place);
    return other;
}

Calculation::Calculation(const Recipe& recipe, int mostPlaces)
    : own(recipe)
    , formula(recipe.formula.size() > longestFormula ? QString() : recipe.formula, variables())
{
    const QStringList names = formula.parameters();
    for (const QString& name : names) {
        const auto found = std::find_if(own.constants.cbegin(), own.constants.cend(),
                                        [&](const Constant& constant) { return constant.name == name; });
        constants.append(found == own.constants.cend() ? noValue : found->value);
    }
    const bool arePlaced = std::all_of(own.origins.cbegin(), own.origins.cend(), [&](const Origin& origin) {
        return origin.place >= 0 && origin.place < std::min(mostPlaces, mostOrigins) &&
               origin.letter == letterOf(origin.place);
    });
    isSound = formula.isValid() && arePlaced && !own.origins.isEmpty();
}

bool Calculation::isOf(int place) const
{
    return std::any_of(own.origins.cbegin(), own.origins.cend(),
                       [place](const Origin& origin) { return origin.place == place; });
}

double Calculation::at(const QVector<double>& times, const QVector<QVector<double>>& columns, int row) const
{
    std::array<double, Formula::mostParameters> values{};
    values[0] = row < times.size() ? times.at(row) : noValue;
    for (const Origin& origin : own.origins) {
        const QVector<double>& column = columns.at(origin.place);
        if (row >= column.size() || std::isnan(column.at(row)))
            return noValue;
        values[size_t(origin.place) + 1] = column.at(row);
    }
    const double value = formula.value(values.data(), constants.constData());
    return std::isfinite(value) ? value : noValue;
}

int Calculation::decimals(double largest) const
{
    constexpr int significant = 4;
    constexpr int most = 6;
    if (own.digits >= 0)
        return std::min(own.digits, mostDigits);
    if (!(largest > 0))
        return 2;
    return std::clamp(significant - 1 - int(std::floor(std::log10(largest))), 0, most);
}

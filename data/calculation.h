#pragma once

#include <QCoreApplication>
#include <QSharedPointer>
#include <QString>
#include <QVector>

#include <optional>

#include "data/formula.h"
#include "sensors/sensor.h"

/// A channel that a formula gives, sample by sample, from others of its set: each is a capital letter in it,
/// `t` is the time in seconds, and every other name is a constant. Values go in and come out in base units.
class Calculation
{
    Q_DECLARE_TR_FUNCTIONS(Calculation)

public:
    static constexpr int mostOrigins = Formula::mostParameters - 1; // and the time
    static constexpr int mostDigits = 9;
    static constexpr int longestFormula = 500; ///< characters

    struct Origin
    {
        QChar letter;
        int place = -1; ///< in the set
        // What finds it in another set: the how manieth of its kind.
        int sensorID = 0;
        QString name; ///< of what no catalogue knows, else empty
        int number = 0;
    };
    struct Constant
    {
        QString name;
        double value = 0;
    };
    /// What a person says.
    struct Recipe
    {
        QString name;
        QString unit;
        int digits = -1; ///< decimals on display; below 0 by the values
        QString formula;
        QVector<Origin> origins;
        QVector<Constant> constants;
    };

    /// The letter of a channel in formulas.
    static QChar letterOf(int place);
    /// The formula with letters in place of the channels' names, and with the origins that it uses. A problem
    /// in words, empty for none; `formula` and `origins` are all that is filled in.
    static QString read(const QString& typed, const SensorList& channels, Recipe* recipe);
    /// Its constants, in the order of their first appearance.
    static QStringList constantsOf(const Recipe& recipe);
    /// Says of each origin what finds it, by its place. The first place beyond all of them, or very far where
    /// one has no channel.
    static int nameOrigins(const SensorList& channels, Recipe* recipe);
    /// The same for another set, which letters its channels by itself; none where one is missing.
    static std::optional<Recipe> placed(const Recipe& recipe, const SensorList& channels);

    /// The places of the recipe hold. Not valid where its formula or a place makes no sense.
    explicit Calculation(const Recipe& recipe, int mostPlaces = mostOrigins);
    bool isValid() const { return isSound; }
    const Recipe& recipe() const { return own; }
    bool isOf(int place) const;
    /// Not a number where an origin has no value, or the formula has none.
    double at(const QVector<double>& times, const QVector<QVector<double>>& columns, int row) const;
    /// Decimals for values up to `largest`.
    int decimals(double largest) const;

private:
    static QStringList variables();

    const Recipe own;
    const Formula formula;
    QVector<double> constants;
    bool isSound = false;
};

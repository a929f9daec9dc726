#include "virtual/rates.h"

#include "virtual/models.h"

#include <QtGlobal>

namespace {

struct Rate
{
    const char* name;
    double seconds;
};

constexpr Rate rates[] = {
    {"Manual", 0},
    {"1/Min", 60},
    {"1/Sec", 1},
    {"10/Sec", 0.1024},
    {"25/Sec", 0.04096},
    {"100/Sec", 0.01024},
    {"1000/Sec", 0.001024},
    {"25000/Sec", 0.000042},
    {"25000/Sec", 0.00003944},
    {"100000/Sec", 0.0000101745},
};
constexpr int lastRate = 9;
constexpr Rate vortaRates[] = {
    {"", 1},
    {"1/Sec", 1},
    {"10/Sec", 0.1024},
    {"25/Sec", 0.04096},
    {"100/Sec", 0.01024},
    {"500/Sec", 0.002048},
};
constexpr int lastVortaRate = 5;
constexpr int mostVortaSamples = 30000;
constexpr int counts[] = {10, 100, 1000, 10000, 30000};
constexpr int typeWithout25 = 17;

/// The three ages of the rate table.
enum class Table
{
    Old,    ///< ends with the slower 25000/Sec
    Middle, ///< 100000/Sec stands in its place
    New     ///< 1000/Sec and the slower 25000/Sec are gone
};

Table tableOf(int major, int minor)
{
    const int version = major * 100 + minor;
    if (version < 400)
        return Table::Old;
    return version <= 402 ? Table::Middle : Table::New;
}

const Rate& rateOf(int rate, int type)
{
    return type == LoggerModel::Vorta ? vortaRates[qBound(1, rate, lastVortaRate)]
                                      : rates[qBound(0, rate, lastRate)];
}

} // namespace

double LoggerRates::period(int rate, int type)
{
    return rateOf(rate, type).seconds;
}

QString LoggerRates::name(int rate, int type)
{
    return QString::fromLatin1(rateOf(rate, type).name);
}

int LoggerRates::find(const QString& name, int type, int major, int minor)
{
    for (int rate = 0; rate <= lastRate; ++rate) {
        if (isKnown(rate, type, major, minor) &&
            name.compare(LoggerRates::name(rate, type), Qt::CaseInsensitive) == 0)
            return rate;
    }
    return -1;
}

QStringList LoggerRates::names(int type, int major, int minor)
{
    QStringList list;
    for (int rate = 0; rate <= lastRate; ++rate) {
        if (isKnown(rate, type, major, minor))
            list.append(name(rate, type));
    }
    return list;
}

/// Whether a logger of that type and firmware has the rate.
bool LoggerRates::isKnown(int rate, int type, int major, int minor)
{
    if (type == LoggerModel::Vorta)
        return rate >= 1 && rate <= lastVortaRate;
    const Table table = tableOf(major, minor);
    if ((table == Table::Old && rate > 7) || (table == Table::Middle && rate == 8))
        return false;
    return fromCode(toCode(rate, type, major, minor), type, major, minor) == rate;
}

int LoggerRates::fromCode(int code, int type, int major, int minor)
{
    int rate = code;
    if (type == typeWithout25 && rate >= 4)
        rate += 1;
    const Table table = tableOf(major, minor);
    if (table == Table::Middle && rate == 7)
        rate = 9;
    if (table == Table::New && rate >= 6)
        rate += 2;
    return qBound(0, rate, lastRate);
}

int LoggerRates::toCode(int rate, int type, int major, int minor)
{
    int code = rate;
    if (type == typeWithout25 && code > 4)
        code -= 1;
    const Table table = tableOf(major, minor);
    if (table == Table::Middle && code == 9)
        code = 7;
    if (table == Table::New && code >= 8)
        code -= 2;
    return code;
}

int LoggerRates::sampleCount(int index, int type)
{
    if (type == LoggerModel::Vorta)
        return index;
    if (index == 3 && type == LoggerModel::Sorrel)
        return 3000;
    return counts[qBound(0, index, 4)];
}

int LoggerRates::sampleIndex(const QString& text, int type)
{
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (!isNumber || number < 0)
        return -1;
    if (type == LoggerModel::Vorta)
        return number <= mostVortaSamples ? number : -1;
    for (int index = 0; index <= 4; ++index) {
        if (number == sampleCount(index, type))
            return index;
    }
    return number <= 4 ? number : -1;
}

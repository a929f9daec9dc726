#include "virtual/rates.h"

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
constexpr int counts[] = {10, 100, 1000, 10000, 30000};
constexpr int typeWithout25 = 17;
constexpr int typeWithShortRuns = 240;

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

} // namespace

double LoggerRates::period(int rate)
{
    return rates[qBound(0, rate, lastRate)].seconds;
}

QString LoggerRates::name(int rate)
{
    return QString::fromLatin1(rates[qBound(0, rate, lastRate)].name);
}

int LoggerRates::find(const QString& name, int type, int major, int minor)
{
    for (int rate = 0; rate <= lastRate; ++rate) {
        const bool isKnown = fromCode(toCode(rate, type, major, minor), type, major, minor) == rate;
        if (isKnown && name.compare(QLatin1String(rates[rate].name), Qt::CaseInsensitive) == 0)
            return rate;
    }
    return -1;
}

QStringList LoggerRates::names()
{
    QStringList list;
    for (const Rate& rate : rates)
        list.append(QString::fromLatin1(rate.name));
    list.removeDuplicates();
    return list;
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
    if (index == 3 && type == typeWithShortRuns)
        return 3000;
    return counts[qBound(0, index, 4)];
}

int LoggerRates::sampleIndex(const QString& text, int type)
{
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (!isNumber || number < 0)
        return -1;
    for (int index = 0; index <= 4; ++index) {
        if (number == sampleCount(index, type))
            return index;
    }
    return number <= 4 ? number : -1;
}

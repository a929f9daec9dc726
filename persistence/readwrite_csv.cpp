#include "persistence/readwrite.h"

#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QTextStream>
#include <QUrl>

#include <cmath>
#include <limits>

#include "common/common.h"
#include "data/expdata.h"
#include "persistence/numbertext.h"
#include "persistence/safefile.h"
#include "persistence/storeddigits.h"

namespace {

Q_LOGGING_CATEGORY(lcFiles, "pellandra.files", QtInfoMsg)

constexpr int maxColumns = 512;
constexpr int maxLine = 64 * 1024; // characters
constexpr int maxQuoted = 20;      // characters of a cell in a message

int timeDecimals(double dt)
{
    if (dt >= 1 || dt == 0)
        return 0;
    if (dt >= 0.1)
        return 1;
    if (dt >= 0.01)
        return 2;
    return dt >= 0.001 ? 3 : 5;
}

/// Nothing in it parts columns or looks like the unit.
QString columnName(const Sensor& sensor, QChar separator)
{
    QString group = sensor.groupName;
    for (const QChar c : {separator, QChar(u'['), QChar(u']'), QChar(u'('), QChar(u')'), QChar(u'"')})
        group.replace(c, u' ');
    const QString name = sensor.getNameWithUnit(false);
    group = group.simplified();
    return group.isEmpty() ? name : group + QStringLiteral(" - ") + name;
}

/// The decimal sign is the language's; digits and minus are those that spreadsheets read.
QString number(double value, int decimals)
{
    static const QChar comma(u',');
    QString text = QString::number(value, 'f', decimals);
    if (Common::myToString(0.5, 'f', 1).contains(comma))
        text.replace(QChar(u'.'), comma);
    return text;
}

/// What shows of a channel; of a derived or imported one at least what its values need.
int decimalsOf(const ExpData& data, int j)
{
    constexpr int significant = 6;
    const SensorPtr& sensor = data.getSens(j);
    const int usual = sensor ? int(sensor->precision) : 0;
    return sensor && sensor->ID == SENSOR_SPECIAL
               ? qMax(usual, StoredDigits::decimals(data.getY(j), significant))
               : usual;
}

QString header(const ExpData& data, const QString& timesec, QChar separator)
{
    QString line = timesec;
    for (int j = 0; j < data.getNSens(); ++j) {
        const SensorPtr& sensor = data.getSens(j);
        line += separator + (sensor ? columnName(*sensor, separator) : QString());
    }
    return line + QLatin1Char('\n');
}

QString dataLine(const ExpData& data, int i, QChar separator, const QVector<int>& columnDecimals)
{
    const int decimals = timeDecimals(data.dt);
    QString line = number(data.getXAt(i), decimals);
    if (decimals > 0)
        line += QLatin1String("00000");
    for (int j = 0; j < data.getNSens(); ++j) {
        const SensorPtr& sensor = data.getSens(j);
        const bool isStored = sensor && i < data.getYSize(j) && !data.isMeaningless(j);
        const double value = data.getYAt(j, i);
        line += separator;
        if (isStored && !std::isfinite(value))
            continue; // a gap is an empty cell
        line += QLatin1Char(' ');
        line += isStored ? number(value, columnDecimals.at(j)) : QStringLiteral("---");
    }
    return line + QLatin1Char('\n');
}

/// A spreadsheet's columns.
struct Columns
{
    QStringList names;
    QStringList units;
    QVector<double> times;
    QVector<QVector<double>> values;
    QString firstLost; ///< the first cell that is no number
    int lost = 0;
};

/// The cause of the refusal of one line, empty if the line is sound.
QString readHeader(const QString& line, Columns* columns)
{
    static const QRegularExpression brackets(QStringLiteral("[\\[\\]()]"));
    const QStringList parts = line.split(QLatin1Char(','), Qt::SkipEmptyParts);
    if (parts.size() < 2)
        return ReadWrite::tr("a column for the time and one for values, parted by a comma, are needed");
    if (parts.size() - 1 > maxColumns)
        return ReadWrite::tr("too many columns");
    for (int i = 1; i < parts.size(); ++i) {
        const QStringList pieces = parts[i].split(brackets, Qt::SkipEmptyParts);
        if (pieces.size() < 2)
            return ReadWrite::tr("column \"%1\" has no unit in brackets").arg(parts[i].simplified().left(40));
        columns->names << pieces[0].simplified();
        columns->units << pieces[1].simplified();
    }
    columns->values.resize(columns->names.size());
    qCDebug(lcFiles) << "sensors=" << columns->names << "units=" << columns->units;
    return {};
}

QString readValues(const QString& line, int lineNumber, Columns* columns)
{
    QVector<QStringRef> parts = line.splitRef(QLatin1Char(','));
    // Commas behind the last column are another program's.
    while (parts.size() > columns->values.size() + 1 && parts.constLast().isEmpty())
        parts.removeLast();
    if (parts.size() != columns->values.size() + 1)
        return ReadWrite::tr("%1 columns instead of %2").arg(parts.size()).arg(columns->values.size() + 1);
    bool isNumber = false;
    columns->times.append(NumberText::toDouble(parts[0], &isNumber));
    if (!isNumber)
        return ReadWrite::tr("\"%1\" is no time").arg(parts[0].trimmed().toString().left(maxQuoted));
    for (int j = 1; j < parts.size(); ++j) {
        const QStringRef cell = parts[j].trimmed();
        const double value = NumberText::toDouble(cell, &isNumber);
        columns->values[j - 1].append(isNumber ? value : std::numeric_limits<double>::quiet_NaN());
        if (isNumber || cell.isEmpty() || cell == QLatin1String("---"))
            continue;
        if (columns->lost++ == 0)
            columns->firstLost = ReadWrite::tr("line %1, column %2: \"%3\" is no number")
                                     .arg(lineNumber)
                                     .arg(j + 1)
                                     .arg(cell.toString().left(maxQuoted));
    }
    return {};
}

/// The cause of the refusal of a table, empty if it is sound.
QString readTable(QIODevice* device, Columns* columns)
{
    QTextStream in(device);
    in.setCodec("UTF-8");
    static const QRegularExpression quoted(QStringLiteral("(^|[,;])\\s*\""));
    QString line;
    int number = 0;
    while (in.readLineInto(&line, maxLine)) {
        ++number;
        QString cause = line.size() >= maxLine ? ReadWrite::tr("too long") : QString();
        if (quoted.match(line).hasMatch())
            cause = ReadWrite::tr("cells in quotation marks can't be read");
        if (cause.isEmpty())
            cause = number == 1 ? readHeader(line, columns) : readValues(line, number, columns);
        if (!cause.isEmpty())
            return ReadWrite::tr("line %1: %2").arg(number).arg(cause);
    }
    qCDebug(lcFiles) << "number of lines=" << number;
    if (columns->times.isEmpty())
        return ReadWrite::tr("there is no line with values");
    return {};
}

} // namespace

bool ReadWrite::exportCSV(const QString& filename, const ExpData* data, bool launch, const QString& timesec,
                          QString* reason)
{
    const bool isSemicolon = Common::isCommaSeparator();
    const QChar separator = isSemicolon ? u';' : u',';
    SafeFile file(filename);
    // A spreadsheet takes "sep=" for a cell when a byte order mark stands before it.
    file.write(isSemicolon ? QByteArray("sep=;\n") : QByteArray("\xEF\xBB\xBF"));
    file.write(header(*data, timesec, separator).toUtf8());
    QVector<int> decimals;
    for (int j = 0; j < data->getNSens(); ++j)
        decimals << decimalsOf(*data, j);
    for (int i = 0; i < data->getXSize(); ++i) {
        if (!file.write(dataLine(*data, i, separator, decimals).toUtf8()))
            break;
    }
    const bool isWritten = file.commit();
    if (reason)
        *reason = file.reason();
    if (isWritten && launch)
        QDesktopServices::openUrl(QUrl(QStringLiteral("file:///%1").arg(filename), QUrl::TolerantMode));
    return isWritten;
}

bool ReadWrite::exportTable(const QString& filename, const QVector<QStringList>& rows, QString* reason)
{
    const bool isSemicolon = Common::isCommaSeparator();
    const QChar separator = isSemicolon ? u';' : u',';
    SafeFile file(filename);
    file.write(isSemicolon ? QByteArray("sep=;\n") : QByteArray("\xEF\xBB\xBF"));
    for (const QStringList& row : rows) {
        QStringList cells = row;
        for (QString& cell : cells) {
            if (cell.contains(separator) || cell.contains(u'"') || cell.contains(u'\n'))
                cell = u'"' + cell.replace(u'"', QLatin1String("\"\"")) + u'"';
        }
        file.write(cells.join(separator).toUtf8() + '\n');
    }
    const bool isWritten = file.commit();
    if (reason)
        *reason = file.reason();
    return isWritten;
}

bool ReadWrite::importCSV(const QString& filename, ExpData* data, QString* reason)
{
    QFile file(filename);
    QString cause;
    const bool isOpen = file.open(QIODevice::ReadOnly);
    const bool isRead = isOpen && importCSV(&file, data, &cause);
    if (!isOpen)
        cause = file.errorString();
    if (reason) {
        const QString name = QFileInfo(filename).fileName();
        const QString what =
            isRead ? tr("%1 was read but for what can't be used of it: %2") : tr("%1 can't be imported: %2");
        *reason = isRead && cause.isEmpty() ? QString() : what.arg(name, cause);
    }
    return isRead;
}

bool ReadWrite::importCSV(QIODevice* device, ExpData* data, QString* cause)
{
    constexpr int digitsOnDisplay = 5;
    Columns columns;
    *cause = readTable(device, &columns);
    if (!cause->isEmpty())
        return false;
    const double dt = columns.times.size() > 1 ? columns.times[1] - columns.times[0] : 1;
    data->setDataNew(columns.names.size(), columns.times, dt);
    for (int i = 0; i < columns.names.size(); ++i) {
        data->addSpecialSensorData(columns.names[i], columns.units[i], i, columns.values[i]);
        Sensor& sensor = *data->getSens(i);
        sensor.precision =
            std::max(sensor.precision, double(StoredDigits::decimals(columns.values[i], digitsOnDisplay)));
    }
    if (columns.lost > 0)
        *cause = columns.lost == 1 ? columns.firstLost
                                   : tr("%1, and %2 more").arg(columns.firstLost).arg(columns.lost - 1);
    return true;
}

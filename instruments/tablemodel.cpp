#include "instruments/tablemodel.h"

#include <QBrush>

#include <algorithm>
#include <cmath>
#include <utility>

#include "common/common.h"
#include "data/expdata.h"
#include "data/storedexperiment.h"
#include "graph/graphdesign.h"
#include "instruments/tabledesign.h"

namespace {

const QString noText = QStringLiteral("----");

/// Of times without an axis that shows them.
int decimalsFor(double dt)
{
    constexpr std::pair<double, int> table[] = {{0.001, 5}, {0.01, 3}, {0.1, 2}, {1, 1}};
    for (const auto& [below, decimals] : table) {
        if (dt > 0 && dt < below)
            return decimals;
    }
    return 0;
}

QColor colourOf(int column)
{
    const bool isOdd = column > 0 && (column - 1) % 2 == 0;
    return isOdd ? TableDesign::getOddColor() : TableDesign::getEvenColor();
}

} // namespace

TableModel::TableModel(ExpData* data, QObject* parent)
    : QAbstractTableModel(parent)
    , set(data)
{
    reset();
}

int TableModel::samples() const
{
    return set->getXSize();
}

void TableModel::reset()
{
    beginResetModel();
    channels = set->getNSens();
    rows = std::max(EMPTY_TABLE_SIZE, samples() + spareRows);
    endResetModel();
}

void TableModel::follow()
{
    const int wanted = std::max(EMPTY_TABLE_SIZE, samples() + spareRows);
    if (channels != set->getNSens() || wanted < rows) {
        reset();
        return;
    }
    if (wanted > rows) {
        beginInsertRows({}, rows, wanted - 1);
        rows = wanted;
        endInsertRows();
    }
    // What is in sight alone is asked for again.
    Q_EMIT dataChanged(index(0, 0), index(rows - 1, channels));
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, channels);
}

int TableModel::rowAt(double time) const
{
    const QVector<double>& x = set->getX();
    if (x.isEmpty())
        return -1;
    const int after = std::min(int(std::lower_bound(x.cbegin(), x.cend(), time) - x.cbegin()), x.size() - 1);
    return after > 0 && time - x.at(after - 1) < x.at(after) - time ? after - 1 : after;
}

void TableModel::setMarked(const QVector<int>& wanted)
{
    if (marked == wanted)
        return;
    marked = wanted;
    Q_EMIT dataChanged(index(0, 0), index(rows - 1, channels));
}

int TableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : rows;
}

int TableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : channels + 1;
}

QString TableModel::timeText(int row) const
{
    if (row >= samples())
        return {};
    return set->timeScaleSet() ? set->getTimeScaleString(row)
                               : Common::myToString(set->getXAt(row), 'f', decimalsFor(set->dt));
}

bool TableModel::hasSample(int iSens, int row) const
{
    return row >= set->getLeftPad(iSens) && row < set->getYSize(iSens) && set->getSens(iSens);
}

QString TableModel::valueText(int iSens, int row) const
{
    if (row >= samples())
        return {};
    const double value = set->getYAt(iSens, row);
    return hasSample(iSens, row) && !std::isnan(value) ? set->getSens(iSens)->valueToString(value) : noText;
}

QVariant TableModel::data(const QModelIndex& index, int role) const
{
    const int column = index.column();
    const bool isMarked = marked.contains(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return column == 0 ? timeText(index.row()) : valueText(column - 1, index.row());
    case Qt::EditRole:
        return column > 0 && hasSample(column - 1, index.row()) ? valueText(column - 1, index.row())
                                                                : QVariant();
    case Qt::BackgroundRole:
        return isMarked ? QBrush(GraphDesign::inkOn(colourOf(column))) : QBrush(colourOf(column));
    case Qt::ForegroundRole:
        return isMarked ? QBrush(colourOf(column)) : QBrush(GraphDesign::inkOn(colourOf(column)));
    case Qt::TextAlignmentRole:
        return int(Qt::AlignRight | Qt::AlignVCenter);
    default:
        return {};
    }
}

QVariant TableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Vertical)
        return role == Qt::DisplayRole ? QVariant(section + 1) : QVariant();
    switch (role) {
    case Qt::DisplayRole: {
        if (section == 0)
            return set->dt > 0 ? tr("Time\n[%1]").arg(set->getTimeScaleUnitName()) : tr("Sample");
        const SensorPtr& sensor = set->getSens(section - 1);
        return sensor ? sensor->getNameWithUnit(true) : QString();
    }
    case Qt::BackgroundRole:
        return QBrush(TableDesign::getTitleColor());
    case Qt::ForegroundRole:
        return QBrush(GraphDesign::inkOn(TableDesign::getTitleColor()));
    default:
        return {};
    }
}

Qt::ItemFlags TableModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags usual = QAbstractTableModel::flags(index);
    return index.column() > 0 ? usual | Qt::ItemIsEditable : usual;
}

bool TableModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    const int iSens = index.column() - 1;
    const QString text = value.toString().trimmed();
    if (role != Qt::EditRole || iSens < 0 || text == valueText(iSens, index.row()))
        return false; // what was only looked at stays as it is to the last digit
    const SensorPtr& sensor = set->getSens(iSens);
    if (!hasSample(iSens, index.row())) {
        Q_EMIT refused(tr("There is no sample in this row."));
        return false;
    }
    if (sensor->specialType != 0) {
        Q_EMIT refused(tr("%1 is calculated from another curve; change a value of that.").arg(sensor->name));
        return false;
    }
    bool isNumber = false;
    const double number = Common::typedNumber(text, &isNumber);
    if (!isNumber) {
        Q_EMIT refused(tr("\"%1\" is no number; the value stays as it was.").arg(text));
        return false;
    }
    Q_EMIT typed(iSens, index.row(), BaseUnit::of(sensor, number));
    return true;
}

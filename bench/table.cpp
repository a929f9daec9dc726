// What the table of a group costs: 30,000 samples of 16 channels. Prints a table, and ends with 0 unless a
// row is missing.

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QTextStream>

#include <algorithm>
#include <cmath>
#include <functional>

#include "data/expdata.h"
#include "instruments/table.h"

namespace {

constexpr int samples = 30000;
constexpr int channels = 16;
constexpr int turns = 9;

double median(const std::function<void()>& work)
{
    QVector<double> times;
    for (int i = 0; i < turns; ++i) {
        QElapsedTimer watch;
        watch.start();
        work();
        times.append(double(watch.nsecsElapsed()) * 1e-6);
    }
    std::sort(times.begin(), times.end());
    return times.at(turns / 2);
}

void fill(ExpData* data)
{
    SensorList sensors;
    for (int i = 0; i < channels; ++i)
        sensors.append(SensorPtr::create(SENSOR_LIGHT));
    data->setDataNewEmpty(sensors, 0.1);
    for (int i = 0; i < samples; ++i)
        data->addSample(i * 0.1, QVector<double>(channels, 500 + 400 * std::sin(i * 0.001)));
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    ExpData data;
    fill(&data);
    Table table(&data, 0);
    table.resize(1600, 900);
    table.show();
    const auto paint = [&] { table.viewport()->grab(); };
    paint();
    QTextStream out(stdout);
    out.setRealNumberNotation(QTextStream::FixedNotation);
    out.setRealNumberPrecision(2);
    out << "table of 30,000 x 16, median of 9, ms\n";
    out << "rebuild                " << median([&] { table.setData(); }) << '\n';
    out << "rebuild and paint      " << median([&] {
        table.setData();
        paint();
    }) << '\n';
    int row = 0;
    out << "scroll by a page       " << median([&] {
        row = (row + 3000) % samples;
        table.verticalScrollBar()->setValue(row);
        paint();
    }) << '\n';
    table.scrollToBottom();
    auto* const rows = qobject_cast<TableModel*>(table.model());
    int more = samples;
    out << "a row that comes live  " << median([&] {
        data.addSample(more * 0.1, QVector<double>(channels, 1.0));
        ++more;
        rows->follow();
        table.scrollToBottom();
        paint();
    }) << '\n';
    out.flush();
    return rows->rowCount() == more + TableModel::spareRows ? 0 : 1;
}

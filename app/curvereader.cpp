#include "app/curvereader.h"

#include "app/graphtools.h"
#include "app/readingtable.h"
#include "graph/plot.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int msBetween = 250; // digits that change faster can't be read

ReadingLine::Axis axisOf(const Plot* plot)
{
    return plot->reading() ? plot->reading()->axis() : ReadingLine::Axis::None;
}

} // namespace

CurveReader::CurveReader(GraphTools* tools, std::function<QString(int)> groupName, QObject* parent)
    : QObject(parent)
    , tools(tools)
    , groupName(std::move(groupName))
{
    end = addAction("endReadingAct", tr("Stop reading or predicting"));
    connect(end, &QAction::triggered, this, [this] { this->tools->setMode(this->tools->mode(), false); });
    back = addAction("readBackAct", tr("Read one step earlier"));
    forth = addAction("readForthAct", tr("Read one step later"));
    back->setShortcut(QStringLiteral("Ctrl+Left"));
    forth->setShortcut(QStringLiteral("Ctrl+Right"));
    connect(back, &QAction::triggered, this, [this] { step(-1); });
    connect(forth, &QAction::triggered, this, [this] { step(1); });
    again.setInterval(msBetween);
    connect(&again, &QTimer::timeout, this, &CurveReader::refresh);
    connect(tools, &GraphTools::modeChanged, this, &CurveReader::showMode);
    connect(tools, &GraphTools::pointedAt, this, &CurveReader::point);
}

CurveReader::~CurveReader() = default;

QAction* CurveReader::addAction(const char* name, const QString& text)
{
    auto* const action = new QAction(text, this);
    action->setObjectName(QLatin1String(name));
    action->setEnabled(false);
    return action;
}

void CurveReader::showMode()
{
    const bool isOn = tools->mode() == GraphTools::Mode::Read;
    for (QAction* action : actions())
        action->setEnabled(isOn);
    if (tools->mode() == GraphTools::Mode::Predict) // which the same key ends
        end->setEnabled(true);
    if (isOn == again.isActive())
        return;
    if (isOn) {
        again.start();
        begin();
    } else {
        again.stop();
        hide();
    }
}

/// Whoever has no mouse begins in the middle of a graph.
void CurveReader::begin()
{
    pointed.clear();
    for (Plot* plot : tools->shownPlots()) {
        if (axisOf(plot) == ReadingLine::Axis::None || (pointed && plot != tools->seen()))
            continue;
        const QPointF middle = QRectF(plot->canvas()->contentsRect()).center();
        pointed = plot;
        axis = axisOf(plot);
        at = plot->reading()->xAt(middle.x());
        height = middle.y();
    }
    refresh();
}

void CurveReader::point(Plot* plot, const QPointF& pos)
{
    if (axisOf(plot) == ReadingLine::Axis::None)
        return;
    pointed = plot;
    axis = axisOf(plot);
    at = plot->reading()->xAt(pos.x());
    height = pos.y();
    refresh();
}

void CurveReader::step(int direction)
{
    if (!pointed || axisOf(pointed) != axis)
        return;
    const ReadingLine& line = *pointed->reading();
    at = line.xAt(line.pixelOf(at + direction * line.step()));
    refresh();
}

void CurveReader::refresh()
{
    const QList<Plot*> shown = tools->shownPlots();
    const auto isRead = [this](Plot* plot) {
        return axisOf(plot) == axis && (axis != ReadingLine::Axis::Own || plot == pointed);
    };
    // A graph that is gone leaves the line to one that counts the same; one that counts other things begins
    // anew.
    if (!pointed || !shown.contains(pointed) || !isRead(pointed)) {
        const auto next = std::find_if(shown.cbegin(), shown.cend(), [&](Plot* plot) {
            return axis != ReadingLine::Axis::None && axis != ReadingLine::Axis::Own && isRead(plot);
        });
        const bool isAny = std::any_of(shown.cbegin(), shown.cend(), [](const Plot* plot) {
            return axisOf(plot) != ReadingLine::Axis::None;
        });
        if (next == shown.cend() && isAny) {
            begin();
            return;
        }
        pointed = next == shown.cend() ? nullptr : *next;
    }
    QList<Plot*> read;
    for (Plot* plot : shown) {
        if (pointed && axis != ReadingLine::Axis::None && isRead(plot)) {
            read.append(plot);
            plot->reading()->show(at);
        } else if (plot->reading()) {
            plot->reading()->hide();
        }
    }
    if (read.isEmpty()) {
        hide();
        return;
    }
    if (!table)
        table = new ReadingTable(pointed->window());
    table->show(pointed->reading()->placeText(at),
                axis == ReadingLine::Axis::Time ? tr("On a straight line between two samples")
                                                : tr("Of the nearest sample"),
                readings(read));
    const QWidget* const canvas = pointed->canvas();
    const double pixel = qBound(0.0, pointed->reading()->pixelOf(at), double(canvas->width()));
    table->putBeside(canvas->mapTo(canvas->window(), QPoint(int(pixel), int(height))));
}

/// What the class shows of a group that has its own graph in sight is told once.
QVector<Reading> CurveReader::readings(const QList<Plot*>& read) const
{
    QVector<Reading> ofGroups;
    QVector<Reading> ofClass;
    for (const Plot* plot : read) {
        const int index = plot->getIndex();
        for (Reading reading : plot->readings(at, height)) {
            if (index >= 0)
                reading.group = groupName(index);
            (index < 0 ? ofClass : ofGroups).append(reading);
        }
    }
    const auto isToldBefore = [told = ofGroups](const Reading& reading) {
        return std::any_of(told.cbegin(), told.cend(), [&](const Reading& other) {
            return other.group == reading.group && other.name == reading.name && other.unit == reading.unit;
        });
    };
    for (const Reading& reading : qAsConst(ofClass)) {
        if (!isToldBefore(reading))
            ofGroups.append(reading);
    }
    return ofGroups;
}

void CurveReader::hide()
{
    for (Plot* plot : tools->shownPlots()) {
        if (plot->reading())
            plot->reading()->hide();
    }
    if (table)
        table->hide();
}

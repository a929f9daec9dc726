#include "graph/graphdialogs.h"

#include <QAction>
#include <QMenu>
#include <QPointer>

#include "common/userprompt.h"
#include "data/expdata.h"
#include "graph/setrange.h"

GraphDialogs::GraphDialogs(QWidget& parent, ExpData& data)
    : parent(parent)
    , data(data)
{
}

void GraphDialogs::askForTitle(const QString& present)
{
    if (!prompt)
        return;
    const QPointer<GraphDialogs> alive(this);
    const auto answer = prompt->text(&parent, tr("Edit graph title"), tr("Graph title:"), present);
    if (!alive || !answer || answer->isEmpty())
        return;
    data.setNeedSave(true);
    Q_EMIT titleChosen(*answer);
}

void GraphDialogs::askForColor(int iSens, const QColor& present)
{
    const SensorPtr& sensor = data.getSens(iSens);
    if (!sensor || !prompt)
        return;
    const QPointer<GraphDialogs> alive(this);
    const auto answer = prompt->color(&parent, tr("Select color for %1").arg(sensor->name), present.rgba());
    if (!answer || !alive)
        return;
    data.setNeedSave(true);
    Q_EMIT colorChosen(iSens, QColor::fromRgba(*answer));
}

void GraphDialogs::askForRange(int iSens, const QPair<double, double>& inForce)
{
    const SensorPtr sensor = data.getSens(iSens);
    if (!sensor)
        return;
    double newMin = 0;
    double newMax = 0;
    const QPointer<GraphDialogs> alive(this);
    const QPointer<SetRange> dialog = new SetRange(&parent);
    dialog->sensName(tr("%1 Sensor").arg(sensor->name));
    dialog->Params(inForce.first, inForce.second, sensor->min, sensor->max, &newMin, &newMax);
    dialog->offerAutomatic();
    const bool accepted = dialog->exec() == QDialog::Accepted;
    const bool isAutomatic = dialog && dialog->isAutomatic();
    if (dialog)
        dialog->deleteLater();
    if (!alive || !accepted)
        return;
    data.setNeedSave(true);
    if (isAutomatic)
        Q_EMIT rangeReleased(sensor);
    else
        Q_EMIT rangeChosen(sensor, newMin, newMax);
}

void GraphDialogs::askForX(const QPoint& globalPos)
{
    if (data.getNSens() < 2)
        return;
    auto* menu = new QMenu(&parent);
    menu->setObjectName(QStringLiteral("xAxisMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const auto addChoice = [&](const QString& text, int sel) {
        QAction* const choice = menu->addAction(text);
        choice->setData(sel);
        choice->setCheckable(true);
        choice->setChecked(data.getXYIndex() == sel);
    };
    addChoice(tr("Time"), -1);
    menu->addSeparator();
    for (int i = 0; i < data.getNSens(); ++i)
        addChoice(data.getSens(i)->nameForLegend(true), i);
    // The data can have changed while the menu stood open.
    connect(menu, &QMenu::triggered, this, [this](const QAction* choice) {
        const int sel = choice->data().toInt();
        if (sel < data.getNSens())
            Q_EMIT xChosen(sel);
    });
    menu->popup(globalPos);
}

#include "graph/markereditor.h"

#include <QAction>
#include <QMenu>
#include <QPointer>

#include <algorithm>

#include "common/userprompt.h"
#include "data/expdata.h"
#include "graph/bubbleedit.h"
#include "graph/markerlayer.h"

MarkerEditor::MarkerEditor(QWidget& parent, ExpData& data, MarkerLayer& layer)
    : parent(parent)
    , data(data)
    , layer(layer)
{
}

// The graph can go while the question stands.
bool MarkerEditor::isAgreed(const QString& title, const QString& text)
{
    const QPointer<MarkerEditor> alive(this);
    return prompt && prompt->question(&parent, title, text, false) == UserPrompt::Answer::Yes && alive;
}

void MarkerEditor::askToRemove(myPlotMarker* marker)
{
    const QPointer<myPlotMarker> subject = MarkerLayer::subjectOf(marker);
    if (!subject || subject->type == MARKER_TANGENT)
        return;
    const QString name = MarkerTexts::kindNameInSentence(subject->type);
    if (isAgreed(tr("Delete %1").arg(name), tr("Do you want to remove this %1?").arg(name)) && subject) {
        Q_EMIT layer.changing();
        layer.remove(subject);
        Q_EMIT layer.changed(tr("Delete %1").arg(name));
    }
}

void MarkerEditor::lock(myPlotMarker* marker, bool needConfirm)
{
    const QPointer<myPlotMarker> subject = MarkerLayer::subjectOf(marker);
    if (!subject || subject->isLocked() || subject->type != MARKER_X)
        return;
    const QString name = MarkerTexts::kindNameInSentence(subject->type);
    if (needConfirm && !isAgreed(tr("Lock %1").arg(name), tr("Do you want to lock this %1?").arg(name)))
        return;
    if (!subject)
        return;
    Q_EMIT layer.changing();
    layer.lock(subject);
    Q_EMIT layer.changed(tr("Lock %1").arg(name));
}

void MarkerEditor::askToCrop()
{
    const QList<myPlotMarker*>& crosses = layer.movable();
    if (crosses.size() < 2)
        return;
    const bool agreed = isAgreed(
        tr("Confirm crop"), tr("Are you sure you want to crop?\nAll data outside the markers will be lost."));
    // Samples go on arriving while the question stands, and a new run takes the markers away.
    if (!agreed || crosses.size() < 2)
        return;
    const double x0 = std::min(crosses[0]->xValue(), crosses[1]->xValue());
    const double x1 = std::max(crosses[0]->xValue(), crosses[1]->xValue());
    Q_EMIT layer.changing(true);
    data.doCrop(x0, x1);
    layer.cropTo(x0, x1);
    Q_EMIT layer.changed(tr("Crop"));
}

void MarkerEditor::edit(myPlotMarker* note)
{
    Q_EMIT layer.changing();
    connect(openEditor(note), &QDialog::finished, this, [this] {
        Q_EMIT layer.changed(tr("Edit %1").arg(MarkerTexts::kindNameInSentence(MARKER_ANNOTATE)));
    });
}

void MarkerEditor::editNew(const QPointF& pos)
{
    Q_EMIT layer.changing();
    myPlotMarker* const note = layer.addNote(pos);
    const QPointer<myPlotMarker> alive(note);
    connect(openEditor(note), &QDialog::finished, this,
            [this, alive, before = note->label().text()](int how) {
                const QString text = alive ? alive->label().text().trimmed() : QString();
                const bool isGivenUp = how == QDialog::Rejected && text == before;
                if (alive && !alive->isPic() && (text.isEmpty() || isGivenUp))
                    layer.remove(alive);
                Q_EMIT layer.changed(tr("Add %1").arg(MarkerTexts::kindNameInSentence(MARKER_ANNOTATE)));
            });
}

// A note that goes takes its dialog with it, which then says no more.
BubbleEdit* MarkerEditor::openEditor(myPlotMarker* note)
{
    data.setNeedSave(true);
    const auto place = [this, note] { return layer.all().indexOf(note); };
    auto* dialog = new BubbleEdit(note->label().text(), place, note->isBubble(), prompt, &parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setModal(true);
    const auto repaint = [this] { layer.repaint(); };
    connect(dialog, &BubbleEdit::textChanged, note, [=](const QString& text) {
        note->setText(text);
        repaint();
    });
    connect(dialog, &BubbleEdit::bubbleChanged, note, [=](bool tf) {
        note->setBubble(tf);
        repaint();
    });
    connect(dialog, &BubbleEdit::imageChanged, note, [=](const QPixmap& pic) {
        note->setPic(pic);
        repaint();
    });
    connect(note, &QObject::destroyed, dialog, &QDialog::reject);
    dialog->show();
    return dialog;
}

void MarkerEditor::openMenu(myPlotMarker* marker, const QPoint& globalPos)
{
    const myPlotMarker* const subject = MarkerLayer::subjectOf(marker);
    if (!subject || subject->type == MARKER_TANGENT)
        return;
    auto* menu = new QMenu(&parent);
    menu->setObjectName(QStringLiteral("markerMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const QString name = MarkerTexts::kindName(MARKER_X);
    const QPointer<myPlotMarker> target(marker);
    QAction* const remove = menu->addAction(tr("Delete %1").arg(name));
    remove->setObjectName(QStringLiteral("deleteMarker"));
    connect(remove, &QAction::triggered, this, [=] { askToRemove(target); });
    QAction* const lockIt = menu->addAction(tr("Lock %1").arg(name));
    lockIt->setObjectName(QStringLiteral("lockMarker"));
    lockIt->setEnabled(subject->type == MARKER_X && !subject->isLocked());
    connect(lockIt, &QAction::triggered, this, [=] { lock(target, false); });
    menu->popup(globalPos);
}

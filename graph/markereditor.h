#pragma once

#include <QObject>
#include <QPoint>
#include <QPointF>

#include <functional>

class BubbleEdit;
class ExpData;
class MarkerLayer;
class QWidget;
class UserPrompt;
class myPlotMarker;

/// What a person is asked about markers: questions, menus and the dialog of a note.
class MarkerEditor : public QObject
{
    Q_OBJECT

public:
    /// `parent` is where boxes stand; nothing is owned.
    MarkerEditor(QWidget& parent, ExpData& data, MarkerLayer& layer);

    /// Without one a question counts as cancelled.
    void setPrompt(UserPrompt* newPrompt) { prompt = newPrompt; }

    /// Nothing for the tangent and for a text without a partner.
    void askToRemove(myPlotMarker* marker);
    /// Nothing for what is no cross, or locked.
    void lock(myPlotMarker* marker, bool needConfirm);
    void askToCrop();
    void edit(myPlotMarker* note);
    /// A note at a point of the canvas, which goes again when nothing is written in it.
    void editNew(const QPointF& pos);
    void openMenu(myPlotMarker* marker, const QPoint& globalPos);

private:
    BubbleEdit* openEditor(myPlotMarker* note);
    bool isAgreed(const QString& title, const QString& text);

    QWidget& parent;
    ExpData& data;
    MarkerLayer& layer;
    UserPrompt* prompt = nullptr;
};

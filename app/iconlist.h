#pragma once

#include <QComboBox>

/// A list of a toolbar that shows a picture; its items have a name beside theirs. An item is carried
/// out when a person chooses it: by a click in the open list, or with Return or Space. The keys that move
/// through the closed list only move, and the wheel does nothing, so that every item can be reached without
/// those before it being carried out.
class IconList : public QComboBox
{
    Q_OBJECT

public:
    enum class Kind
    {
        State, ///< shows what is in force; a press opens the list
        Button ///< a press on the picture repeats the present item, one on the arrow beside it opens the list
    };

    IconList(Kind kind, int iconDim, QWidget* parent = nullptr);

    void showPopup() override;
    void addPicture(const QString& name, const QIcon& picture, int code);

protected:
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void moveTo(int row);
    void carryOut();
    void moveBack();

    const Kind kind;
    const int iconDim;
    int inForce = -1; ///< the item that the keys moved away from; -1 while they have not
};

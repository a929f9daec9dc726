#pragma once

#include <QDialog>
#include <QPixmap>
#include <QPointer>

#include <functional>

class QCheckBox;
class QPlainTextEdit;
class UserPrompt;

/// Edits an annotation. Every change is told at once, so that it shows on the graph; closing the dialog takes
/// nothing back.
class BubbleEdit : public QDialog
{
    Q_OBJECT

public:
    /// `place` tells where the annotation stands among the markers now, -1 when it is gone: others in front
    /// of it may go while the dialog is open. It comes with every signal. `prompt` asks for the picture file;
    /// without one the button does nothing. Not owned.
    BubbleEdit(const QString& text, std::function<int()> place, bool isBubble, UserPrompt* prompt,
               QWidget* parent = nullptr);

Q_SIGNALS:
    void textChanged(QString text, int index);
    void bubbleChanged(bool tf, int index);
    void imageChanged(QPixmap pic, int index);

private:
    void chooseImage();

    const std::function<int()> place;
    UserPrompt* const prompt;
    QPlainTextEdit* textEdit;
    QCheckBox* boxBalloon;
};

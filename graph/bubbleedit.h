#pragma once

#include <QDialog>
#include <QPixmap>
#include <QPointer>

class QCheckBox;
class QPlainTextEdit;
class UserPrompt;

/// Edits an annotation. Every change is told at once, so that it shows on the graph; closing the dialog takes
/// nothing back.
class BubbleEdit : public QDialog
{
    Q_OBJECT

public:
    /// `index` is the annotation's place among the markers and comes with every signal. `prompt` asks for the
    /// picture file; without one the button does nothing. Not owned.
    BubbleEdit(const QString& text, int index, bool isBubble, UserPrompt* prompt, QWidget* parent = nullptr);

Q_SIGNALS:
    void textChanged(QString text, int index);
    void bubbleChanged(bool tf, int index);
    void imageChanged(QPixmap pic, int index);

private:
    void chooseImage();

    const int index;
    UserPrompt* const prompt;
    QPlainTextEdit* textEdit;
    QCheckBox* boxBalloon;
};

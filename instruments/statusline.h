#pragma once

#include <QFrame>
#include <QTimer>

#include <array>
#include <utility>

/// One line that tells what the class waits for and how the last thing ended. Unlike the temporary texts of a
/// status bar it stays until it is no longer true: nothing but a call changes it. It takes the room of its
/// text, up to two thirds of the window, and is hidden while it has nothing to say; what does not fit is cut
/// with an ellipsis and read in full in its tip.
class StatusLine : public QFrame
{
    Q_OBJECT

public:
    explicit StatusLine(QWidget* parent = nullptr);

    /// What is going on, in bold; empty when nothing is.
    void setWaiting(const QString& text);
    /// How it ended, behind what is going on; empty for no news.
    void setOutcome(const QString& text);
    /// Why nothing was done, or what to do: an outcome that goes by itself when there was time to read it.
    void setAdvice(const QString& text);
    /// What it advised was done, or something else was.
    void endAdvice();
    /// What is measured on the graph that is meant, behind the outcome; empty for nothing.
    void setMeasured(const QString& text);
    QString waiting() const { return waitingText; }
    QString outcome() const { return outcomeText; }
    QString measured() const { return measuredText; }
    /// All that is told.
    QString text() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void show(QString* part, const QString& text);
    QFont boldFont() const;
    std::array<std::pair<QString, QFont>, 3> parts() const;

    QString waitingText;
    QString outcomeText;
    QString measuredText;
    QTimer adviceTime;
};

#pragma once

#include <QLabel>

/// A label that says when it is pressed, and which one it is. Its text is as large as it has room.
class ClickableLabel : public QLabel
{
    Q_OBJECT

public:
    explicit ClickableLabel(int id, const QString& text = QString(), QWidget* parent = nullptr);

Q_SIGNALS:
    void clicked(int id);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    const int id;
};

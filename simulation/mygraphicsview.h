#pragma once

#include <QGraphicsView>

class QLabel;

/// Shows a scene as large as it fits, and in a corner what is measured in it.
class myGraphicsView : public QGraphicsView
{
    Q_OBJECT

public:
    explicit myGraphicsView(QGraphicsScene* scene, QWidget* parent = nullptr);

    /// The whole scene, also after it has become another one.
    void fit();
    /// One line for each value, large enough for the back row.
    void setReadout(const QString& text);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QLabel* readout;
};

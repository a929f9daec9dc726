#include "simulation/mygraphicsview.h"

#include <QLabel>
#include <QResizeEvent>

namespace {
constexpr int smallestText = 15; // pixels
constexpr int largestText = 44;
constexpr int linesInView = 16; // of the readout's size
constexpr int margin = 8;
} // namespace

myGraphicsView::myGraphicsView(QGraphicsScene* scene, QWidget* parent)
    : QGraphicsView(scene, parent)
    , readout(new QLabel(this))
{
    setObjectName(QStringLiteral("simulationView"));
    setAccessibleName(tr("Picture of the simulation"));
    setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setMinimumHeight(120);
    readout->setObjectName(QStringLiteral("simulationReadout"));
    readout->setAttribute(Qt::WA_TransparentForMouseEvents);
    readout->setStyleSheet(QStringLiteral("background: transparent; color: rgb(20, 40, 70);"));
    readout->move(margin, margin);
}

void myGraphicsView::setReadout(const QString& text)
{
    readout->setText(text);
    readout->adjustSize();
}

void myGraphicsView::fit()
{
    fitInView(sceneRect(), Qt::KeepAspectRatio);
}

void myGraphicsView::resizeEvent(QResizeEvent* event)
{
    QGraphicsView::resizeEvent(event);
    fit();
    QFont font = readout->font();
    font.setPixelSize(qBound(smallestText, qMin(height(), width()) / linesInView, largestText));
    font.setBold(true);
    readout->setFont(font);
    readout->adjustSize();
}

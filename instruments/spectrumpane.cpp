#include "instruments/spectrumpane.h"

#include <QActionGroup>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

#include "common/common.h"
#include "data/expdata.h"
#include "data/qfouriertransformer.h"
#include "graph/plot.h"

SpectrumPane::SpectrumPane(Plot* graph, ExpData* source, QWidget* parent)
    : QWidget(parent)
    , graph(graph)
    , source(source)
    , lines(std::make_unique<ExpData>())
    , shown(new Plot(lines.get(), GRAPH_FFT, false, graph->getIndex()))
{
    setObjectName(QStringLiteral("spectrumPane"));
    shown->setObjectName(QStringLiteral("Spectrum graph"));
    shown->setAccessibleName(tr("Spectrum"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    createHeader();
    createMenu();
    column->addWidget(shown, 1);
    connect(shown, &Plot::putAway, this, [this] { setOpen(false); });
    connect(shown, &Plot::choiceAsked, menu, [this](const QPoint& at) { menu->popup(at); });
    connect(graph, &Plot::changed, this, [this] {
        if (isVisible())
            renew(); // the crosses may have moved
    });
    connect(graph, &Plot::begunAnew, shown, qOverload<>(&Plot::setMarkers));
    graph->installEventFilter(this);
    hide();
}

SpectrumPane::~SpectrumPane()
{
    delete shown; // it reads the lines
}

void SpectrumPane::createHeader()
{
    auto* row = new QHBoxLayout;
    row->setContentsMargins(6, 2, 6, 0);
    note = new QLabel;
    note->setObjectName(QStringLiteral("spectrumNote"));
    note->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    choice = new QPushButton;
    choice->setObjectName(QStringLiteral("spectrumChoice"));
    choice->setToolTip(tr("What the spectrum shows"));
    auto* close = new QPushButton(tr("Close"));
    close->setObjectName(QStringLiteral("closeSpectrum"));
    close->setToolTip(tr("Put the spectrum away"));
    connect(close, &QPushButton::clicked, this, [this] { setOpen(false); });
    row->addWidget(note, 1);
    row->addWidget(choice);
    row->addWidget(close);
    static_cast<QVBoxLayout*>(layout())->addLayout(row);
}

void SpectrumPane::createMenu()
{
    menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("spectrumMenu"));
    auto* kinds = new QActionGroup(menu);
    for (const FFTData::Kind each : {FFTData::Kind::Amplitude, FFTData::Kind::Cosine, FFTData::Kind::Power}) {
        QAction* const action = kinds->addAction(menu->addAction(kindName(each), this, [this, each] {
            kind = each;
            renew();
        }));
        action->setCheckable(true);
        action->setChecked(each == kind);
    }
    menu->addSeparator();
    auto* windows = new QActionGroup(menu);
    const QPair<QString, QString> names[] = {{QString(), tr("No window")},
                                             {QStringLiteral("Hann"), tr("Hann window")},
                                             {QStringLiteral("Hamming"), tr("Hamming window")}};
    for (const auto& [name, text] : names) {
        QAction* const action = windows->addAction(menu->addAction(text, this, [this, name = name] {
            window = name;
            renew();
        }));
        action->setCheckable(true);
        action->setChecked(name == window);
    }
    choice->setMenu(menu);
}

QString SpectrumPane::kindName(FFTData::Kind of) const
{
    switch (of) {
    case FFTData::Kind::Amplitude:
        return tr("Amplitude");
    case FFTData::Kind::Cosine:
        return tr("Cosine part");
    case FFTData::Kind::Power:
        break;
    }
    return tr("Power in dB");
}

QString SpectrumPane::unitOf(const QString& unit) const
{
    return kind == FFTData::Kind::Power ? QStringLiteral("dB") : unit;
}

void SpectrumPane::setOpen(bool tf)
{
    isWanted = tf;
    setVisible(tf && !graph->isHidden());
}

bool SpectrumPane::eventFilter(QObject* object, QEvent* event)
{
    if (object == graph && (event->type() == QEvent::ShowToParent || event->type() == QEvent::HideToParent))
        setVisible(isWanted && event->type() == QEvent::ShowToParent);
    return QWidget::eventFilter(object, event);
}

void SpectrumPane::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    renew();
    Q_EMIT appeared(true);
}

void SpectrumPane::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    if (isHidden()) // and not the window
        Q_EMIT appeared(false);
}

std::optional<SpectrumPane::Stretch> SpectrumPane::stretch() const
{
    const int active = graph->getActiveSens();
    if (source->getYSize(active) == 0)
        return std::nullopt;
    if (graph->curveMarker.size() < 2 || source->isXYPlot())
        return Stretch{active, 0, 0};
    const myPlotMarker& first = *graph->curveMarker.at(0);
    const double x1 = first.xValue();
    const double x2 = graph->curveMarker.at(1)->xValue();
    if (x1 == x2 || first.iReg >= 0)
        return Stretch{active, 0, 0};
    return Stretch{first.iSens, std::min(x1, x2), std::max(x1, x2)};
}

void SpectrumPane::renew()
{
    choice->setText(kindName(kind));
    const auto of = stretch();
    const bool isDone = of && source->fft(of->iSens, of->from, of->to, window) &&
                        source->fftData->transformSize() >= fewestSamples;
    if (isDone)
        showLines(*of);
    else
        showNothing();
}

void SpectrumPane::showLines(const Stretch& of)
{
    const FFTData& spectrum = *source->fftData;
    const SensorPtr& sensor = source->getSens(of.iSens);
    const QString name = sensor ? sensor->nameForLegend(graph->getIndex() < 0) : QString();
    lines->setDataNew(1, spectrum.frequencies(), spectrum.resolution());
    lines->addSpecialSensorData(kindName(kind), unitOf(sensor ? sensor->unitName : QString()), 0,
                                spectrum.lines(kind));
    lines->setXRange();
    const QString title = tr("Spectrum (FFT) of %1").arg(name);
    if (shown->title().text() != title)
        shown->updateTitle(title);
    shown->setData();
    if (graph->getCurve(of.iSens) && shown->getCurvePen(0).color() != graph->getCurve(of.iSens)->getColor())
        shown->otherColorChanged(0, graph->getCurve(of.iSens)->getColor());
    note->setText(noteOf(of));
    note->setToolTip(note->text());
}

QString SpectrumPane::noteOf(const Stretch& of) const
{
    const FFTData& spectrum = *source->fftData;
    QString text = of.from == of.to
                       ? tr("%n samples from the middle of the curve", nullptr, spectrum.transformSize())
                       : tr("%n samples between the markers", nullptr, spectrum.transformSize());
    text +=
        QStringLiteral("; ") + tr("a line each %1 Hz").arg(Common::toSignificant(spectrum.resolution(), 3));
    if (!window.isEmpty())
        text += QStringLiteral("; ") + tr("%1 window").arg(window);
    if (spectrum.bridged > 0)
        text += QStringLiteral("; ") +
                tr("%n missing samples bridged by straight lines", nullptr, spectrum.bridged);
    return text;
}

void SpectrumPane::showNothing()
{
    if (lines->getXSize() > 0 || shown->title().text().isEmpty()) {
        lines->setDataNewEmpty();
        shown->setData();
    }
    shown->updateTitle(tr("Spectrum (FFT)"));
    note->setText(source->dt > 0
                      ? tr("A spectrum needs at least %n samples, and more that are there than are missing.",
                           nullptr, fewestSamples)
                      : tr("A spectrum needs times; these samples were taken by hand."));
    note->setToolTip(note->text());
}

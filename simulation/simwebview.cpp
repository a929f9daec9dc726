#include "simulation/simwebview.h"

#include "instruments/pageview.h"
#include "simulation/simtexts.h"

#include <QVBoxLayout>

namespace {
constexpr const char* pageNames[simWebView::pages] = {"VolumePressure", "PressureEquilibrium",
                                                      "MoleculesLiquid", "Diffusion", "HydrogenBonds"};
}

simWebView::simWebView(int i, QWidget* parent)
    : QWidget(parent)
    , indexOfPage(qBound(0, i, pages - 1))
{
    setObjectName(QLatin1String(pageNames[indexOfPage]));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
}

void simWebView::createPageIfNeeded()
{
    if (isPageCreated)
        return;
    isPageCreated = true;
    loadHtml(QLatin1String(pageNames[indexOfPage]));
}

void simWebView::loadHtml(const QString& htmlFile)
{
    delete page;
    page = new PageView(QStringLiteral("html/Sim/%1.html").arg(htmlFile), this);
    setFocusProxy(page);
    connect(page, &PageView::pageLoaded, this, [this] {
        page->call(QStringLiteral("setTexts"), {SimTexts::ofPage(indexOfPage)});
        if (isVisible())
            setFocus(); // its keys work at once
    });
    layout()->addWidget(page);
}

void simWebView::destroyPage()
{
    delete page;
    page = nullptr;
}

#pragma once

#include "instruments/pageengine.h"

#include <QObject>

class QWebEngineProfile;

/// The plug-in. Pages are drawn without the graphics card, so that they look the same on every machine and
/// nothing has to be prepared before the program's window.
class WebPages : public QObject, public PageEngine
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID PageEngine_iid)
    Q_INTERFACES(PageEngine)

public:
    WebPages();

    QString refusal() const override;
    std::unique_ptr<PageSurface> create(QWidget* parent, PageListener* listener) override;

private:
    QWebEngineProfile* profile = nullptr; ///< made with the first page; leaves nothing on the disk
};

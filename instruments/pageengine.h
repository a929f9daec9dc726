#pragma once

#include <QString>
#include <QtPlugin>

#include <memory>

class QJsonArray;
class QUrl;
class QWidget;

// What the program and the plug-in that shows web pages know of each other. The plug-in links the web engine,
// which costs start time and memory, and is loaded with the first page. It has no library of the program in
// it, so nothing here has signals or code of its own.

/// Hears what happens to a page.
class PageListener
{
public:
    virtual ~PageListener() = default;

    virtual void loadEnded(bool isGood) = 0;
    virtual void titleSaid(const QString& title) = 0;
    virtual void errorLogged(const QString& text) = 0; ///< with the file and the line
    virtual void processEnded() = 0;                   ///< the page is gone
};

/// One page on the screen.
class PageSurface
{
public:
    virtual ~PageSurface() = default;

    /// What shows the page; goes with the surface.
    virtual QWidget* widget() = 0;
    virtual void load(const QUrl& url) = 0;
    virtual void run(const QString& script) = 0;
};

/// The root of the plug-in.
class PageEngine
{
public:
    virtual ~PageEngine() = default;

    /// Why no page can be shown here, in words for a person; empty where it can.
    virtual QString refusal() const = 0;
    /// `listener` outlives the surface.
    virtual std::unique_ptr<PageSurface> create(QWidget* parent, PageListener* listener) = 0;
};

#define PageEngine_iid "org.pellandra.PageEngine/1"
Q_DECLARE_INTERFACE(PageEngine, PageEngine_iid)

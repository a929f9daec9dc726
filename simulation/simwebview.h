#pragma once

#include <QWidget>

class PageView;

/// The place of one animation, a web page that runs by itself. Nothing is loaded before it is first wanted.
class simWebView : public QWidget
{
    Q_OBJECT

public:
    static constexpr int pages = 5;

    /// Page `i` of the menu, 0 to 4.
    explicit simWebView(int i, QWidget* parent = nullptr);

    /// The first call loads the page; later ones do nothing.
    void createPageIfNeeded();
    /// Loads "html/Sim/<htmlFile>.html" and hands it its words.
    void loadHtml(const QString& htmlFile);
    /// The page goes; nothing if there is none.
    void destroyPage();

private:
    const int indexOfPage;
    bool isPageCreated = false;
    PageView* page = nullptr;
};

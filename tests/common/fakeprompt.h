#pragma once

#include <QList>
#include <QStringList>

#include <functional>
#include <utility>

#include "common/userprompt.h"

/// Answers for the boxes and dialogs of a test, which notes what was asked as "title|text".
class FakePrompt : public UserPrompt
{
public:
    Answer answer = Answer::Cancel;
    QList<Answer> answers; ///< to the first questions, before `answer`
    bool confirmed = false;
    std::optional<QString> typed;
    std::optional<unsigned> picked;
    QString file;
    QString filter;  ///< chosen for a file to write
    QString offered; ///< as the file to write
    QStringList asked;
    std::function<void()> meanwhile; ///< happens while the first question stands

    void information(QObject*, const QString& title, const QString& text) override { note(title, text); }
    void warning(QObject*, const QString& title, const QString& text) override { note(title, text); }
    void critical(QObject*, const QString& title, const QString& text) override { note(title, text); }
    Answer question(QObject*, const QString& title, const QString& text, bool) override
    {
        note(title, text);
        if (const auto happens = std::exchange(meanwhile, {}))
            happens();
        return answers.isEmpty() ? answer : answers.takeFirst();
    }
    bool confirm(QObject*, const QString& title, const QString& text) override
    {
        note(title, text);
        return confirmed;
    }
    bool confirmForGood(QObject* parent, const QString& title, const QString& text) override
    {
        return confirm(parent, title, text);
    }
    std::optional<QString> text(QObject*, const QString& title, const QString& label, const QString&) override
    {
        note(title, label);
        return typed;
    }
    std::optional<unsigned> color(QObject*, const QString& title, unsigned) override
    {
        note(title, QString());
        return picked;
    }
    QString openFile(QObject*, const QString& title, const QString&, const QString&) override
    {
        note(title, QString());
        return file;
    }
    QString saveFile(QObject*, const QString& title, const QString& folder, const QString&,
                     QString* selectedFilter) override
    {
        note(title, QString());
        offered = folder;
        if (selectedFilter)
            *selectedFilter = filter;
        return file;
    }

private:
    void note(const QString& title, const QString& text) { asked << title + QLatin1Char('|') + text; }
};

#include "app/report.h"

#include "app/reportfile.h"
#include "app/reportpage.h"
#include "common/settings.h"
#include "common/userprompt.h"
#include "persistence/readwrite.h"
#include "persistence/safefile.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPointer>
#include <QPrinter>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

namespace {

constexpr const char* schoolKey = "report/school"; // string; stands on each page

bool isHtml(const QString& fname)
{
    const QString ending = QFileInfo(fname).suffix().toLower();
    return ending == QLatin1String("html") || ending == QLatin1String("htm");
}

QLineEdit* addField(QFormLayout* form, const QString& label, const char* name, const QString& text)
{
    auto* const field = new QLineEdit(text);
    field->setObjectName(QLatin1String(name));
    field->setMaxLength(200);
    form->addRow(label, field);
    return field;
}

} // namespace

Report::Report(UserPrompt* prompt, const std::function<QString(double)>& rate, QWidget* parent)
    : QObject(parent)
    , prompt(prompt)
    , rate(rate)
    , window(parent)
{
}

Report::~Report() = default;

QPageLayout Report::printerLayout()
{
    return QPrinter(QPrinter::HighResolution).pageLayout();
}

void Report::ask(const QString& title, const std::function<ReportSource()>& taken)
{
    auto* const dialog = new QDialog(window);
    dialog->setObjectName(QStringLiteral("reportDialog"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(tr("Report of the lesson"));
    dialog->setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    auto* const form = new QFormLayout(dialog);
    auto* const words = new QLabel(tr("A page for the class and one for each group: graph, notes, fits and "
                                      "statistics, as they are on the screen."));
    words->setWordWrap(true);
    form->addRow(words);
    const QString known = Settings::mainStore().value(QLatin1String(schoolKey)).toString();
    QLineEdit* const school = addField(form, tr("School"), "school", known);
    QLineEdit* const lesson = addField(form, tr("Title"), "title", title);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Save)->setText(tr("Save..."));
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    connect(dialog, &QDialog::accepted, this, [this, school, lesson, taken] {
        Settings::mainStore().setValue(QLatin1String(schoolKey), school->text());
        choose(school->text(), lesson->text(), taken);
    });
    (known.isEmpty() ? school : lesson)->setFocus();
    dialog->open(); // the loggers' samples go on arriving
}

void Report::choose(const QString& school, const QString& title, const std::function<ReportSource()>& taken)
{
    const QString now = QDateTime::currentDateTime().toString(QStringLiteral("dd.MM.yyyy_hh.mm.ss"));
    QString filter;
    QString name = prompt->saveFile(
        window, tr("Save report"), ReadWrite::getDataPath(now + QStringLiteral(".pdf")),
        tr("PDF, to print (*.pdf)") + QStringLiteral(";;") + tr("Web page, one file (*.html)"), &filter);
    if (name.isEmpty())
        return;
    ReadWrite::setDefaultDataPath(name);
    if (QFileInfo(name).suffix().toLower() != QLatin1String("pdf") && !isHtml(name))
        name += filter.contains(QLatin1String("*.html")) ? QStringLiteral(".html") : QStringLiteral(".pdf");
    make(name, school, title, taken(), printerLayout());
}

void Report::make(const QString& name, const QString& school, const QString& title, const ReportSource& taken,
                  const QPageLayout& paper)
{
    if (isBusy())
        return;
    if (taken.graphs.isEmpty()) { // a run has begun since it was asked for
        Q_EMIT told(tr("There is nothing to report yet."));
        Q_EMIT done(false);
        return;
    }
    source = taken;
    fname = name;
    QStringList head;
    for (const QString& word : {school.simplified(), title.simplified()}) {
        if (!word.isEmpty())
            head << word;
    }
    const QDateTime when = taken.begun.isValid() ? taken.begun : QDateTime::currentDateTime();
    head << QLocale().toString(when, QLocale::ShortFormat);
    const QString line = head.join(QStringLiteral(" · "));
    const QString called = title.isEmpty() ? tr("Report of the lesson") : title;
    file = isHtml(name) ? ReportFile::html(called, line) : ReportFile::pdf(called, line, paper);
    fits.clear(); // the class tells of those of all groups, and stands before them
    for (const GraphCopy& graph : qAsConst(source.graphs)) {
        if (graph.index >= 0)
            fits += ReportPage::fitsOf(graph, graph.title);
    }
    next = 0;
    QTimer::singleShot(0, this, &Report::drawNext);
}

void Report::drawNext()
{
    if (next >= source.graphs.size()) {
        write();
        return;
    }
    const GraphCopy& graph = source.graphs.at(next);
    Q_EMIT told(tr("The report is being made: %1").arg(graph.title));
    ExpData set;
    const std::unique_ptr<Plot> plot = graph.made(&set, file->graphSize());
    const bool isClass = graph.index < 0;
    ReportPage page = ReportPage::of(*plot, set, isClass ? QString() : graph.title, rate(graph.content.dt));
    if (isClass) {
        page.addGroups(fits);
        if (!source.note.isEmpty())
            page.facts << source.note;
    }
    ++next;
    if (file->add(page, plot.get()))
        QTimer::singleShot(0, this, &Report::drawNext);
    else
        end(tr("The report can't be drawn."));
}

void Report::write()
{
    const QByteArray bytes = file->end();
    if (bytes.isEmpty()) {
        end(tr("The report can't be drawn."));
        return;
    }
    SafeFile out(fname);
    out.write(bytes);
    end(out.commit() ? QString() : out.reason());
}

void Report::end(const QString& failure)
{
    file.reset();
    source = ReportSource();
    Q_EMIT told(failure.isEmpty() ? tr("%1 was saved.").arg(QFileInfo(fname).fileName()) : QString());
    if (!failure.isEmpty())
        prompt->warning(window, tr("Report not saved"), failure);
    Q_EMIT done(failure.isEmpty());
}

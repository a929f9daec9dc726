#include "online/globallab.h"

#include "common/settings.h"

#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

globalLab::globalLab(const QString& user, const QString& pass, QWidget* parent)
    : QDialog(parent)
    , usernameLineEdit(new QLineEdit(user))
    , passwordLineEdit(new QLineEdit(pass))
    , labelStatus(new QLabel)
    , doGlobalLab(new QPushButton(tr("Send")))
{
    setObjectName(QStringLiteral("globalLab"));
    setWindowTitle(tr("Send to GlobalLab"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    usernameLineEdit->setObjectName(QStringLiteral("usernameLineEdit"));
    passwordLineEdit->setObjectName(QStringLiteral("passwordLineEdit"));
    passwordLineEdit->setEchoMode(QLineEdit::Password);
    labelStatus->setObjectName(QStringLiteral("labelStatus"));
    labelStatus->setTextFormat(Qt::PlainText);
    labelStatus->setWordWrap(true);
    labelStatus->setMinimumHeight(3 * labelStatus->fontMetrics().lineSpacing());
    doGlobalLab->setObjectName(QStringLiteral("doGlobalLab"));
    doGlobalLab->setDefault(true);
    auto* const buttonBox = new QDialogButtonBox(QDialogButtonBox::Close);
    buttonBox->setObjectName(QStringLiteral("buttonBox"));
    buttonBox->addButton(doGlobalLab, QDialogButtonBox::ActionRole);
    auto* const form = new QFormLayout;
    form->addRow(tr("User name"), usernameLineEdit);
    form->addRow(tr("Password"), passwordLineEdit);
    auto* const column = new QVBoxLayout(this);
    column->addLayout(form);
    column->addWidget(labelStatus);
    column->addWidget(buttonBox);
    resize(420, sizeHint().height());
    (user.isEmpty() ? usernameLineEdit : passwordLineEdit)->setFocus();
    connect(doGlobalLab, &QPushButton::clicked, this, &globalLab::send);
    connect(buttonBox, &QDialogButtonBox::rejected, this, [this] { done(-1); });
}

void globalLab::send()
{
    username = usernameLineEdit->text();
    password = passwordLineEdit->text();
    Q_EMIT globalLabAction(GLOBALLAB_SEND);
}

void globalLab::showMessage(const QString& msg)
{
    labelStatus->setText(msg);
    doGlobalLab->setEnabled(true);
}

void globalLab::showSending()
{
    labelStatus->setText(tr("Sending…"));
    doGlobalLab->setEnabled(false);
}

void globalLab::delayedClose(int ms)
{
    labelStatus->setText(tr("Successful transmission"));
    doGlobalLab->setEnabled(false);
    if (launchBrowser) {
        QUrl page(Settings::mainStore().value(QStringLiteral("GlobalLab/url")).toString());
        page.setPath(QStringLiteral("/probes/graph"));
        page.setQuery(QString());
        QDesktopServices::openUrl(page);
        launchBrowser = false;
    }
    QTimer::singleShot(ms, this, [this] { done(0); });
}

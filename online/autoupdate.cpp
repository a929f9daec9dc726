#include "online/autoupdate.h"

#include "common/settings.h"
#include "online/safeaddress.h"

#include <QDate>
#include <QLoggingCategory>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>

namespace {

Q_LOGGING_CATEGORY(lcUpdate, "pellandra.update", QtInfoMsg)

constexpr int daysBetween = 7;
constexpr int msForListing = 20000;
constexpr qint64 longestListing = 1024 * 1024;

QString listingAddress()
{
    return Settings::mainStore().value(QStringLiteral("update/url")).toString();
}

} // namespace

autoUpdate::autoUpdate(const QString& runningVersion, QObject* parent)
    : QObject(parent)
{
    const QStringList parts = runningVersion.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    currentName = parts.value(0);
    currentHash = highestHash = hash(parts.value(1));
}

autoUpdate::~autoUpdate() = default;

float autoUpdate::hash(const QString& version)
{
    const QStringList fields = version.split(QLatin1Char('.'), Qt::SkipEmptyParts);
    if (fields.size() < 3)
        return -1;
    static const QRegularExpression third(QStringLiteral("^([0-9]+)([a-g]?)$"));
    const QRegularExpressionMatch match = third.match(fields[2]);
    bool isFirst = false;
    bool isSecond = false;
    const auto n1 = float(fields[0].toUInt(&isFirst));
    const auto n2 = float(fields[1].toUInt(&isSecond));
    if (!isFirst || !isSecond || !match.hasMatch())
        return -1;
    const QString letter = match.captured(2);
    const int place = letter.isEmpty() ? 0 : letter[0].unicode() - 'a' + 1;
    return (n1 * 100 + n2) * 100 + match.captured(1).toFloat() + 0.1F * float(place);
}

void autoUpdate::updateLatestVersion(const QString& version)
{
    if (!version.contains(QLatin1String(".exe"), Qt::CaseInsensitive))
        return;
    const QString number = version.split(QLatin1Char('-'), Qt::SkipEmptyParts).value(2);
    const float value = hash(number);
    if (value <= highestHash)
        return;
    highestHash = value;
    static const QRegularExpression suffix(QStringLiteral("\\.exe.*$"),
                                           QRegularExpression::CaseInsensitiveOption);
    highestVersionName = QString(number).remove(suffix);
}

void autoUpdate::checkLastVersion()
{
    const QUrl url(listingAddress());
    if (url.isEmpty())
        return;
    QSettings store = Settings::mainStore();
    const QDate today = QDate::currentDate();
    if (store.value(QStringLiteral("update/date"), today.addDays(-1)).toDate() > today)
        return;
    if (!isSafeAddress(url)) {
        qCInfo(lcUpdate, "%s is not asked: it is no address over HTTPS", qPrintable(url.toString()));
        Q_EMIT checked();
        return;
    }
    store.setValue(QStringLiteral("update/date"), today.addDays(daysBetween));
    network = new QNetworkAccessManager(this);
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setTransferTimeout(msForListing);
    QNetworkReply* const reply = network->get(request);
    connect(reply, &QNetworkReply::downloadProgress, reply, [reply](qint64 received) {
        if (received > longestListing)
            reply->abort();
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply] { readListing(reply); });
}

void autoUpdate::readListing(QNetworkReply* reply)
{
    reply->deleteLater();
    if (reply->error() != QNetworkReply::NoError) {
        qCInfo(lcUpdate, "no listing: %s", qPrintable(reply->errorString()));
        Q_EMIT checked();
        return;
    }
    static const QRegularExpression between(QStringLiteral("[\\s\"'<>/=]+"));
    for (const QString& name : QString::fromUtf8(reply->readAll()).split(between, Qt::SkipEmptyParts))
        updateLatestVersion(name);
    qCInfo(lcUpdate, "%s: %s", qPrintable(currentName),
           highestVersionName.isEmpty() ? "nothing newer" : qPrintable(highestVersionName));
    if (!highestVersionName.isEmpty())
        Q_EMIT newerFound(highestVersionName, reply->url().toString());
    Q_EMIT checked();
}

#include "online/globallabupload.h"

#include "data/expdata.h"
#include "online/safeaddress.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>

#include <cmath>

namespace {

constexpr int msForAnswer = 30000;
constexpr int longestReason = 300; // characters of a server's own words
constexpr int redirections = 300;  // HTTP status

QJsonValue numberOf(double value)
{
    return std::isfinite(value) ? QJsonValue(value) : QJsonValue();
}

/// What the server says of it, else what the line did.
QString reasonOf(QNetworkReply* reply)
{
    const QJsonObject answer = QJsonDocument::fromJson(reply->readAll()).object();
    const QString said = answer.value(QLatin1String("error")).toString().left(longestReason);
    if (!said.isEmpty())
        return said;
    if (reply->error() == QNetworkReply::AuthenticationRequiredError)
        return GlobalLabUpload::tr("The server does not know this name and password.");
    if (reply->error() == QNetworkReply::OperationCanceledError)
        return GlobalLabUpload::tr("The server did not answer in time.");
    if (reply->error() != QNetworkReply::NoError)
        return reply->errorString();
    return GlobalLabUpload::tr("The server did not take the experiment.");
}

} // namespace

GlobalLabUpload::GlobalLabUpload(QObject* parent)
    : QObject(parent)
{
}

QJsonObject GlobalLabUpload::experimentOf(const ExpData& set, const QString& title)
{
    QJsonArray times;
    for (const double time : set.getX())
        times.append(numberOf(time));
    QJsonArray channels;
    for (int i = 0; i < set.getNSens(); ++i) {
        const SensorPtr& sensor = set.getSens(i);
        if (!sensor)
            continue;
        QJsonArray values;
        for (int row = 0; row < set.getXSize(); ++row)
            values.append(row < set.getYSize(i) ? numberOf(set.getYAt(i, row)) : QJsonValue());
        channels.append(QJsonObject{{QStringLiteral("name"), sensor->name},
                                    {QStringLiteral("unit"), sensor->unitName},
                                    {QStringLiteral("sensor"), sensor->ID},
                                    {QStringLiteral("values"), values}});
    }
    return {{QStringLiteral("format"), QStringLiteral("pellandra-experiment")},
            {QStringLiteral("version"), 1},
            {QStringLiteral("title"), title},
            {QStringLiteral("group"), set.getGroupName()},
            {QStringLiteral("dt"), set.dt},
            {QStringLiteral("times"), times},
            {QStringLiteral("channels"), channels}};
}

void GlobalLabUpload::send(const QUrl& url, const QString& user, const QString& password,
                           const QJsonObject& experiment)
{
    if (isSending)
        return;
    if (!isSafeAddress(url)) {
        Q_EMIT failed(tr("The address in the settings is none over HTTPS."));
        return;
    }
    if (!network)
        network = new QNetworkAccessManager(this);
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    request.setRawHeader("Authorization",
                         "Basic " + QStringLiteral("%1:%2").arg(user, password).toUtf8().toBase64());
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setTransferTimeout(msForAnswer);
    isSending = true;
    QNetworkReply* const reply =
        network->post(request, QJsonDocument(experiment).toJson(QJsonDocument::Compact));
    connect(reply, &QNetworkReply::finished, this, [this, reply] {
        reply->deleteLater();
        isSending = false;
        const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        if (reply->error() == QNetworkReply::NoError && status < redirections)
            Q_EMIT succeeded();
        else
            Q_EMIT failed(reasonOf(reply));
    });
}

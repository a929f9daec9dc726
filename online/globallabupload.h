#pragma once

#include <QJsonObject>
#include <QObject>
#include <QUrl>

class ExpData;
class QNetworkAccessManager;

/// Sends an experiment to a GlobalLab server: an HTTPS POST of JSON (docs/globallab.schema.json) with the
/// name and the password as HTTP Basic authentication. A redirection is not followed, since both would go
/// along.
class GlobalLabUpload : public QObject
{
    Q_OBJECT

public:
    explicit GlobalLabUpload(QObject* parent = nullptr);

    /// The samples of a set in the units on display; a gap is null. `title` is that of the graph.
    static QJsonObject experimentOf(const ExpData& set, const QString& title);

    /// One is on its way.
    bool isBusy() const { return isSending; }
    /// Sends in the background; one of the two signals follows. A second one while one is on its way is
    /// ignored.
    void send(const QUrl& url, const QString& user, const QString& password, const QJsonObject& experiment);

Q_SIGNALS:
    void succeeded();
    void failed(const QString& reason);

private:
    QNetworkAccessManager* network = nullptr;
    bool isSending = false;
};

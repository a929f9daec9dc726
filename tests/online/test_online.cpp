#include <QDate>
#include <QDesktopServices>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include "common/settings.h"
#include "data/expdata.h"
#include "online/autoupdate.h"
#include "online/globallab.h"
#include "online/globallabupload.h"
#include "sensors/sensorids.h"
#include "tests/common/testsupport.h"

namespace {

/// Answers every request with the same, and keeps what it was asked.
class LocalServer : public QTcpServer
{
public:
    LocalServer()
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket* const socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { hear(socket); });
        });
    }
    QUrl url(const QString& path = QStringLiteral("/")) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(serverPort()).arg(path));
    }
    QByteArray body() const { return request.mid(request.indexOf("\r\n\r\n") + 4); }

    QByteArray status = "200 OK";
    QByteArray answer;
    QByteArray extra;
    QByteArray request;
    int requests = 0;

private:
    void hear(QTcpSocket* socket)
    {
        pending += socket->readAll();
        const int head = pending.indexOf("\r\n\r\n");
        const int at = pending.indexOf("Content-Length: ");
        const int length = at < 0 ? 0 : pending.mid(at + 16, pending.indexOf("\r\n", at) - at - 16).toInt();
        if (head < 0 || pending.size() < head + 4 + length)
            return;
        request = pending;
        pending.clear();
        ++requests;
        if (status.isEmpty()) { // hangs up
            socket->abort();
            return;
        }
        socket->write("HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(answer.size()) +
                      "\r\n" + extra + "\r\n" + answer);
        socket->disconnectFromHost();
    }
    QByteArray pending;
};

} // namespace

class TestOnline : public GuardedTest
{
    Q_OBJECT

    void begin() override
    {
        for (const char* group : {"update", "GlobalLab"})
            Settings::mainStore().remove(QLatin1String(group));
    }
    static void set(const char* key, const QVariant& value)
    {
        Settings::mainStore().setValue(QLatin1String(key), value);
    }
    static QDate nextCheck() { return Settings::mainStore().value(QStringLiteral("update/date")).toDate(); }

private Q_SLOTS:
    void versionsAreOrdered()
    {
        const QStringList order = {QStringLiteral("no version"), QStringLiteral("1.0.3"),
                                   QStringLiteral("4.12.2g"),    QStringLiteral("4.12.3"),
                                   QStringLiteral("4.12.3a"),    QStringLiteral("4.12.10"),
                                   QStringLiteral("5.0.0")};
        for (int i = 1; i < order.size(); ++i)
            QVERIFY2(autoUpdate::hash(order[i - 1]) < autoUpdate::hash(order[i]), qPrintable(order[i]));
        QCOMPARE(autoUpdate::hash(QStringLiteral("4.12.3b")), 41203.2F);
        for (const char* wrong : {"4.12", "4..12", "", "a.b.c", "4.12.3h", "4.12.3ab"})
            QCOMPARE(autoUpdate::hash(QLatin1String(wrong)), -1.0F);
    }

    void aNewerVersionIsToldOnceAWeek()
    {
        LocalServer server;
        server.answer = "<a href=\"Pellandra-setup-1.0.2.exe\">x</a> Pellandra-setup-1.0.10.EXE\n"
                        "Pellandra-source-9.9.9.tar.gz Pellandra-setup-1.0.4b.exe -.exe";
        autoUpdate off(QStringLiteral("Pellandra 1.0.3a"));
        off.checkLastVersion(); // no address: nobody is asked
        set("update/url", server.url());
        set("update/date", QDate::currentDate().addDays(1));
        off.checkLastVersion();
        set("update/date", QDate::currentDate());
        autoUpdate update(QStringLiteral("Pellandra 1.0.3a"));
        QSignalSpy newer(&update, &autoUpdate::newerFound);
        update.checkLastVersion();
        QTRY_COMPARE(newer.count(), 1);
        QCOMPARE(newer[0][0].toString(), QStringLiteral("1.0.10"));
        QCOMPARE(server.requests, 1);
        QCOMPARE(nextCheck(), QDate::currentDate().addDays(7));
    }

    void whatGoesWrongIsSilent_data()
    {
        columns<QByteArray, QByteArray>({"status", "answer"});
        row("an error", QByteArray("500 Broken"), QByteArray("Pellandra-setup-9.0.0.exe"));
        row("a cut line", QByteArray(), QByteArray());
        row("an older version", QByteArray("200 OK"), QByteArray("Pellandra-setup-1.0.3.exe"));
        row("noise", QByteArray("200 OK"), QByteArray("\xff\x00--.exe-..exe-----", 20));
    }
    void whatGoesWrongIsSilent()
    {
        const auto [status, answer] = fetched<QByteArray, QByteArray>({"status", "answer"});
        LocalServer server;
        server.status = status;
        server.answer = answer;
        set("update/url", server.url());
        autoUpdate update(QStringLiteral("Pellandra 1.0.3a"));
        QSignalSpy newer(&update, &autoUpdate::newerFound);
        QSignalSpy checked(&update, &autoUpdate::checked);
        update.checkLastVersion();
        QTRY_COMPARE(checked.count(), 1);
        QCOMPARE(newer.count(), 0);
    }

    void onlyHttpsIsAsked()
    {
        set("update/url", QStringLiteral("http://example.invalid/list"));
        autoUpdate update(QStringLiteral("Pellandra 1.0.3a"));
        QSignalSpy checked(&update, &autoUpdate::checked);
        update.checkLastVersion();
        QCOMPARE(checked.count(), 1);
        GlobalLabUpload upload;
        QSignalSpy failed(&upload, &GlobalLabUpload::failed);
        upload.send(QUrl(QStringLiteral("http://example.invalid/")), QString(), QString(), {});
        QCOMPARE(failed.count(), 1);
    }

    void anExperimentArrivesWhole()
    {
        LocalServer server;
        ExpData data;
        Units units;
        units.fahrenheit = true;
        data.takeExperiment(
            {SensorPtr::create(SENSOR_AMB_TEMP, units), SensorPtr::create(SENSOR_LIGHT, units)}, 0.5,
            {{0, qQNaN(), 100}, {7, 8}});
        GlobalLabUpload upload;
        QSignalSpy succeeded(&upload, &GlobalLabUpload::succeeded);
        upload.send(server.url(QStringLiteral("/api")), QStringLiteral("Ada ü"), QStringLiteral("pa:ss"),
                    GlobalLabUpload::experimentOf(data, QStringLiteral("Ice \"1\"")));
        QTRY_COMPARE(succeeded.count(), 1);
        QVERIFY(server.request.startsWith("POST /api "));
        QVERIFY(server.request.contains("Authorization: Basic " +
                                        QStringLiteral("Ada ü:pa:ss").toUtf8().toBase64()));
        const QJsonObject sent = QJsonDocument::fromJson(server.body()).object();
        QCOMPARE(sent[QLatin1String("title")].toString(), QStringLiteral("Ice \"1\""));
        QCOMPARE(sent[QLatin1String("times")].toArray(), (QJsonArray{0, 0.5, 1}));
        const QJsonArray channels = sent[QLatin1String("channels")].toArray();
        QCOMPARE(channels[0].toObject()[QLatin1String("values")].toArray(),
                 (QJsonArray{32, QJsonValue(), 212}));
        QCOMPARE(channels[1].toObject()[QLatin1String("values")].toArray(), (QJsonArray{7, 8, QJsonValue()}));
    }

    void aFailureIsInWords_data()
    {
        columns<QByteArray, QByteArray, QByteArray, QString>({"status", "extra", "answer", "part"});
        row("its own words", QByteArray("422 No"), QByteArray(), QByteArray("{\"error\":\"too long <b>\"}"),
            QStringLiteral("too long <b>"));
        row("wrong password", QByteArray("401 No"), QByteArray("WWW-Authenticate: Basic realm=\"x\"\r\n"),
            QByteArray(), QStringLiteral("password"));
        row("sent elsewhere", QByteArray("302 Found"), QByteArray("Location: http://127.0.0.1:1/\r\n"),
            QByteArray(), QStringLiteral("did not take"));
    }
    void aFailureIsInWords()
    {
        const auto [status, extra, answer, part] =
            fetched<QByteArray, QByteArray, QByteArray, QString>({"status", "extra", "answer", "part"});
        LocalServer server;
        server.status = status;
        server.extra = extra;
        server.answer = answer;
        GlobalLabUpload upload;
        QSignalSpy failed(&upload, &GlobalLabUpload::failed);
        upload.send(server.url(), QStringLiteral("a"), QStringLiteral("b"), {});
        QTRY_COMPARE(failed.count(), 1);
        QVERIFY2(failed[0][0].toString().contains(part), qPrintable(failed[0][0].toString()));
        QCOMPARE(server.requests, 1);
    }

    void theDialogSendsAndClosesByItself()
    {
        set("GlobalLab/url", QStringLiteral("https://lab.example/api?x"));
        globalLab dialog(QStringLiteral("Ada"), QString());
        QSignalSpy sent(&dialog, &globalLab::globalLabAction);
        QSignalSpy ended(&dialog, &QDialog::finished);
        dialog.launchBrowser = false;
        dialog.show();
        dialog.findChild<QLineEdit*>(QStringLiteral("passwordLineEdit"))->setText(QStringLiteral("secret"));
        auto* const button = dialog.findChild<QPushButton*>(QStringLiteral("doGlobalLab"));
        button->click();
        QCOMPARE(sent.count(), 1);
        QCOMPARE(dialog.username + dialog.password, QStringLiteral("Adasecret"));
        dialog.showSending();
        QVERIFY(!button->isEnabled());
        dialog.showMessage(QStringLiteral("no <b>"));
        QVERIFY(button->isEnabled() && dialog.isVisible());
        dialog.delayedClose(1);
        QCOMPARE(dialog.findChild<QLabel*>(QStringLiteral("labelStatus"))->text(),
                 QStringLiteral("Successful transmission"));
        QTRY_COMPARE(ended.count(), 1);
        QCOMPARE(ended[0][0].toInt(), 0);
        QVERIFY(Settings::mainStore().value(QStringLiteral("GlobalLab/pass")).isNull());
    }
};

QTEST_MAIN(TestOnline)
#include "test_online.moc"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include "tests/common/testsupport.h"
#include "virtual/models.h"
#include "virtual/socketport.h"
#include "virtual/terminalport.h"
#include "virtual/virtualclass.h"
#include "virtual/virtualcommands.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

/// The program's end of a line, be it a terminal or a socket.
class Partner
{
public:
    explicit Partner(const QString& place)
        : fd(::open(qPrintable(place), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
        if (fd >= 0)
            return;
        fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, qPrintable(place), sizeof address.sun_path);
        if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            qWarning("no partner at %s", address.sun_path);
    }
    ~Partner() { ::close(fd); }
    Partner(const Partner&) = delete;
    Partner& operator=(const Partner&) = delete;

    void write(const char* hex)
    {
        const QByteArray bytes = QByteArray::fromHex(hex);
        QCOMPARE(::write(fd, bytes.constData(), size_t(bytes.size())), ssize_t(bytes.size()));
    }
    const QByteArray& read()
    {
        char buffer[4096];
        ssize_t count = 0;
        while ((count = ::read(fd, buffer, sizeof buffer)) > 0)
            bytes.append(buffer, int(count));
        return bytes;
    }
    void forget() { bytes.clear(); }

private:
    int fd;
    QByteArray bytes;
};

LoggerIdentity identityOf(const char* model, const char* name)
{
    LoggerIdentity identity;
    identity.model = LoggerModels::find(QString::fromLatin1(model));
    identity.mask = identity.model->lessonMask();
    identity.rate = 5;
    identity.name = QString::fromLatin1(name);
    return identity;
}

constexpr auto askIds = "4714AAFB";

} // namespace

class TestVirtualPort : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    void bytesPassUnchangedAndNothingIsEchoed_data()
    {
        columns<bool>({"isSocket"});
        row("terminal", false);
        row("socket", true);
    }

    void bytesPassUnchangedAndNothingIsEchoed()
    {
        const auto [isSocket] = fetched<bool>({"isSocket"});
        QTemporaryDir folder;
        TerminalPort terminal(folder.filePath("A"));
        SocketPort socket(folder.filePath("B"));
        VirtualPort& port = isSocket ? static_cast<VirtualPort&>(socket) : terminal;
        QString error;
        QVERIFY2(port.open(&error), qPrintable(error));
        QVERIFY(!port.write("lost"));
        QByteArray all;
        for (int byte = 0; byte < 256; ++byte)
            all += char(byte);
        QByteArray received;
        connect(&port, &VirtualPort::received, this,
                [&received](const QByteArray& bytes) { received += bytes; });
        for (int time = 0; time < 2; ++time) {
            QTRY_VERIFY(!port.hasPartner());
            received.clear();
            Partner partner(port.place());
            QTRY_VERIFY(port.hasPartner());
            partner.write(all.toHex());
            QTRY_COMPARE(received, all);
            QVERIFY(port.write(all));
            QTRY_COMPARE(partner.read(), all);
            const QByteArray much(250000, 'x');
            QVERIFY(port.write(much)); // more than the system takes at once
            partner.forget();
            QTRY_COMPARE(partner.read().size(), much.size());
        }
        port.close();
        QVERIFY(!port.hasPartner() && !QFile::exists(port.place()) && !port.write("lost"));
    }

    void commandsAreCarriedOutOrExplained_data()
    {
        // answer: part of it
        columns<QString, QString, QByteArray>({"command", "answer", "sent"});
        const auto row = [](const char* command, const char* answer, const char* sent) {
            QTest::newRow(command) << QString::fromLatin1(command) << QString::fromLatin1(answer)
                                   << QByteArray::fromHex(sent);
        };
        row("plug 1 2 112", "", "2e698500707400");
        row("unplug all 1", "", "2e6985000000");
        row("press-start 1", "", "2e698322");
        row("rate 1 1/Sec", "", "2e698300");
        row("samples 1 100", "", "2e698300");
        row("fault 1 late=5 cut=1", "", "");
        row("fault all loader=1 badpage=3 badbyte=4096", "", "");
        row("fault all off", "", "");
        row("dump 1 /no/such/folder", "error: /no/such/folder can't be written", "");
        row("status 1", "Tembrin Heath (type 136)", "");
        row("help", "press-start N", "");
        row("plug 1 3 112", "error: sockets", "");
        row("plug 1", "error: usage: plug N SOCKET ID", "");
        row("battery 1 low", "error: battery takes empty or good", "");
        row("fault 1 slow=1", "error: no fault", "");
        row("rate 1 7/Sec", "error: no rate", "");
        row("samples 1 11", "error: no run", "");
        row("dance 1", "error: no command", "");
    }

    void commandsAreCarriedOutOrExplained()
    {
        const auto [command, answer, sent] =
            fetched<QString, QString, QByteArray>({"command", "answer", "sent"});
        QTemporaryDir folder;
        VirtualClass loggers({identityOf("HEATH_INT", "A")}, folder.path());
        VirtualCommands commands(loggers);
        QString error;
        QVERIFY2(loggers.open(&error), qPrintable(error));
        Partner partner(loggers.port(0).place());
        QTRY_VERIFY(loggers.port(0).hasPartner());
        const QString said = commands.execute(command);
        QVERIFY2(answer.isEmpty() ? said.isEmpty() : said.contains(answer), qPrintable(said));
        QTRY_VERIFY(partner.read().startsWith(sent.left(5)));
    }

    void theProgramCleansUp()
    {
        QTemporaryDir folder;
        QVERIFY(QFile::link("/dev/pts/99999", folder.filePath("Old")));
        QProcess program;
        program.start(VIRTUAL_LOGGERS, {"--directory", folder.path(), "--count", "2", "--names", "A,B",
                                        "--log", folder.filePath("log"), "--at", "0:press-start 1"});
        QByteArray output;
        QTRY_VERIFY((output += program.readAllStandardOutput()).contains("ready\n"));
        QCOMPARE(QDir(folder.path()).entryList(QDir::System), (QStringList{"A", "B"}));
        {
            Partner partner(folder.filePath("B"));
            partner.write(askIds);
            QTRY_COMPARE(partner.read().size(), 21);
        }
        QProcess second;
        second.start(VIRTUAL_LOGGERS, {"--directory", folder.path()});
        QVERIFY(second.waitForFinished());
        QCOMPARE(second.exitCode(), 1);
        program.terminate();
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
        QCOMPARE(QDir(folder.path()).entryList(QDir::System), QStringList());
        QFile log(folder.filePath("log"));
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QByteArray text = log.readAll();
        QVERIFY(text.contains("2 B <- 47 14 AA FB | get sensor IDs\n"));
        QVERIFY(text.contains("| status: run started, not sent: nobody listens\n"));
    }
};

QTEST_GUILESS_MAIN(TestVirtualPort)

#include "test_virtualport.moc"

#include <QStatusBar>

#include <numeric>

#include "graph/plot.h"
#include "instruments/statusline.h"
#include "tests/e2e/virtualclassbench.h"

/// What loggers keep in their memories comes into the program. The log of the frames says what they sent.
class TestStoredExperiments : public VirtualClassBench
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void theNewestOfEachArrivesThroughLossAndDamage()
    {
        startWithLog(3, {QStringLiteral("--model"), QStringLiteral("Birch,Dune,Grove")});
        tell("fault all lose=5 badsum=2");
        download();
        QCOMPARE(window->findChild<StatusLine*>()->text(), QString());
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(data(i)->getXSize(), 1000);
            QVERIFY(data(i)->isNeedSave());
        }
        checkClass({0, 1, 2});
        checkValues({0, 1, 2});
    }

    void aFastRunIsFetchedByItself()
    {
        startWithLog(2, {QStringLiteral("--rate"), QStringLiteral("1000/Sec"), QStringLiteral("--firmware"),
                         QStringLiteral("4.02")});
        action("runAct")->trigger();
        waitForDownload();
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(data(i)->getXSize(), 1000);
            QCOMPARE(data(i)->getXAt(999), 999 * 0.001024);
        }
        checkClass({0, 1});
        checkValues({0, 1});
    }

    void aPulledLoggerIsPassedOver()
    {
        startWithLog(3, {QStringLiteral("--names"), QStringLiteral("first,second,third")});
        tell("fault all late=30");
        download();
        checkClass({0, 1, 2});
        bool isPulled = false;
        connect(manager->tembrinDataAt(1), &TembrinData::donePacket, this, [&](int packet) {
            if (packet == 3 && !isPulled)
                tell("pull 2");
            isPulled = isPulled || packet == 3;
        });
        download();
        QCOMPARE(window->findChild<StatusLine*>()->outcome(),
                 QStringLiteral("No experiment could be fetched from Group 2 (connection lost)."));
        // What the download before left with it is still its own, and no longer the class's.
        QCOMPARE(data(1)->getXSize(), 1000);
        checkClass({0, 2});
        checkValues({0, 2});
    }

private:
    void startWithLog(int count, const QStringList& options)
    {
        logFile = folder->filePath(QStringLiteral("log"));
        start(count, QStringList{QStringLiteral("--stored"), QStringLiteral("2"), QStringLiteral("--log"),
                                 logFile, QStringLiteral("--seed"), QStringLiteral("5")} +
                         options);
        connectAll(count);
    }

    void download()
    {
        action("downloadAct")->trigger();
        waitForDownload();
    }

    void waitForDownload()
    {
        const QAction* button = action("downloadAct");
        QTRY_VERIFY(!button->isEnabled());
        QTRY_VERIFY_WITH_TIMEOUT(button->isEnabled(), 60000);
    }

    /// The class shows the selected channel of these loggers and their average, and nothing of the others.
    void checkClass(const QVector<int>& members)
    {
        const ExpData* set = classData();
        QVERIFY(set->isNeedSave());
        double sum = 0;
        for (int i = 0; i < manager->nDefTembrins(); ++i) {
            const QVector<double> expected =
                members.contains(i) ? data(i)->getYNoConv(data(i)->getSelectedSensor()) : QVector<double>();
            QCOMPARE(set->getYNoConv(i), expected);
            sum += expected.value(500);
        }
        QCOMPARE(set->getYNoConvAt(manager->nDefTembrins(), 500), sum / members.size());
        QCOMPARE(set->dt, data(members.first())->dt);
    }

    void checkValues(const QVector<int>& members)
    {
        tell("quit");
        QVERIFY(loggers.waitForFinished());
        for (int i : members)
            QCOMPARE(data(i)->getData(), sent(i));
    }

    /// The channels that a logger's stored packets hold, read sensor by sensor.
    QVector<QVector<double>> sent(int i) const
    {
        QMap<int, QByteArray> packets;
        QFile file(logFile);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        for (const QByteArray& line : file.readAll().split('\n')) {
            const QList<QByteArray> words = line.split(' ');
            const QByteArray bytes =
                QByteArray::fromHex(line.left(line.indexOf(" | ")).mid(line.indexOf("-> ") + 3));
            const bool isStored = bytes.startsWith(".iD") || bytes.startsWith(".iT");
            if (words.value(1).toInt() == i + 1 && words.value(3) == "->" && isStored && sumOf(bytes) == 0)
                packets[number(bytes, 4)] = bytes;
        }
        const QByteArray first = packets.value(0);
        QByteArray samples = first.mid(first.startsWith(".iT") ? 19 : 17).chopped(1);
        for (int n = 1; packets.contains(n); ++n)
            samples += packets[n].mid(6).chopped(1);

        QVector<QVector<double>> channels(data(i)->getNSens());
        int at = 0;
        for (int n = 0; n < number(first, 9); ++n) {
            const QVector<double> row = values(i, number(first, 6), samples, &at);
            for (int channel = 0; channel < row.size(); ++channel)
                channels[channel].append(row[channel]);
        }
        return channels;
    }

    static int number(const QByteArray& bytes, int at)
    {
        return bytes.size() > at + 1 ? quint8(bytes[at]) << 8 | quint8(bytes[at + 1]) : 0;
    }

    static int sumOf(const QByteArray& bytes) { return std::accumulate(bytes.begin(), bytes.end(), 0) % 256; }

    QString logFile;
};

int main(int argc, char** argv)
{
    return VirtualClassBench::exec<TestStoredExperiments>(argc, argv);
}

#include "test_storedexperiments.moc"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

#include "persistence/journalfolder.h"
#include "persistence/journalwriter.h"
#include "tests/common/testsupport.h"

#include <csignal>
#include <sys/resource.h>

namespace {

JournalGroup group(int slot, const QString& name, double period = 0.1024)
{
    JournalGroup group;
    group.slot = slot;
    group.loggerType = 0x32;
    group.group = name;
    group.logger = QStringLiteral("Tembrin_0421");
    group.period = period;
    group.cardWidth = 0.03;
    group.channels = {{7, 2, -1}, {31, 5, 1}};
    return group;
}

/// Values whose last bits count, and a gap.
JournalRows rows(int slot, int from, int count)
{
    JournalRows rows{slot, 2, {}};
    for (int i = from; i < from + count; ++i)
        rows.values << i * 0.1024 << 1.0 / (i + 3) << (i % 7 == 3 ? qQNaN() : -i * 1e-9);
    return rows;
}

/// Texts, so that a gap equals a gap.
QStringList texts(const QVector<double>& values)
{
    QStringList texts;
    for (const double value : values)
        texts << QString::number(value, 'g', 17);
    return texts;
}

QStringList told(const JournalRun& run)
{
    QStringList told{run.begun.toString(Qt::ISODateWithMs)};
    for (const JournalExperiment& experiment : run.experiments) {
        const JournalGroup& head = experiment.head;
        told << QStringLiteral("%1 %2 %3").arg(head.slot).arg(head.group, head.logger);
        told << texts({double(head.loggerType), head.period, head.cardWidth}) << texts(experiment.times);
        for (const JournalChannel& channel : head.channels)
            told << texts(
                {double(channel.sensorID), double(channel.inLoggerIndex), double(channel.virtualIndex)});
        for (const QVector<double>& column : experiment.columns)
            told << texts(column);
    }
    return told;
}

QStringList told(const QByteArray& bytes, bool* isJournal = nullptr)
{
    JournalRun run;
    const bool isRead = JournalReader::read(reinterpret_cast<const uchar*>(bytes.constData()), bytes.size(),
                                            JournalReader::What::Samples, &run);
    if (isJournal)
        *isJournal = isRead;
    return told(run);
}

QString write(const QString& name, const QVector<JournalRows>& some)
{
    QString path = QDir(JournalFolder::path()).filePath(name);
    JournalWriter writer;
    writer.begin(path, QDateTime(QDate(2026, 11, 23), QTime(10, 42)));
    writer.add(group(3, QStringLiteral("Ångström")));
    writer.add(some);
    writer.end();
    writer.finish();
    return path;
}

QStringList names(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files);
}

} // namespace

class TestJournal : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    void whatIsWrittenIsReadToTheLastBit()
    {
        const QDateTime begun(QDate(2026, 11, 23), QTime(10, 42, 7, 123));
        const QString path = JournalFolder::nameFor(begun);
        JournalWriter writer;
        writer.begin(path, begun);
        writer.add(group(5, QStringLiteral("void")));
        writer.add({rows(5, 0, 4)});
        writer.add(group(0, QStringLiteral("Ada")));
        writer.add(group(5, QStringLiteral("Ångström"))); // it began anew
        writer.add({rows(0, 0, 20), rows(5, 10, 3)});
        writer.add({rows(0, 25, 5)}); // behind a gap
        writer.end();
        writer.finish();

        JournalRun run;
        QString reason;
        QVERIFY2(JournalReader::read(path, JournalReader::What::Samples, &run, &reason), qPrintable(reason));
        QVERIFY(run.isWhole);
        QStringList wanted{begun.toString(Qt::ISODateWithMs)};
        const auto want = [&wanted](const JournalGroup& head, const QVector<JournalRows>& parts) {
            QVector<double> columns[3];
            for (const JournalRows& part : parts) {
                for (int i = 0; i < part.values.size(); ++i)
                    columns[i % 3] << part.values[i];
            }
            wanted << QStringLiteral("%1 %2 %3").arg(head.slot).arg(head.group, head.logger)
                   << texts({0x32, 0.1024, 0.03}) << texts(columns[0]) << texts({7, 2, -1})
                   << texts({31, 5, 1}) << texts(columns[1]) << texts(columns[2]);
        };
        want(group(0, QStringLiteral("Ada")), {rows(0, 0, 20), rows(0, 25, 5)});
        want(group(5, QStringLiteral("Ångström")), {rows(5, 10, 3)});
        QCOMPARE(told(run), wanted);
    }

    void aJournalCutOrDamagedInItsLastBlockGivesTheBlocksBefore()
    {
        const QByteArray before = JournalFormat::head(QDateTime::currentDateTime()) +
                                  JournalFormat::block(group(1, QStringLiteral("B"))) +
                                  JournalFormat::block(rows(1, 0, 9));
        const QByteArray whole = before + JournalFormat::block(rows(1, 9, 6));
        const QStringList wanted = told(before);
        QVERIFY(told(whole) != wanted);
        for (int size = before.size(); size < whole.size(); ++size)
            QCOMPARE(told(whole.left(size)), wanted);
        for (int at = before.size(); at < whole.size(); ++at) {
            QByteArray damaged = whole;
            damaged[at] = char(damaged[at] ^ 0x10);
            QCOMPARE(told(damaged), wanted);
        }
        bool isJournal = true;
        told(whole.mid(1), &isJournal);
        QVERIFY(!isJournal);
    }

    void whatCannotBeTrueEndsTheReading_data()
    {
        columns<QByteArray>({"block"});
        JournalRows backwards = rows(1, 20, 2);
        backwards.values[3] = 0.5;
        JournalRows endless = rows(1, 20, 1);
        endless.values[0] = 1.7e308;
        JournalRows wide = rows(1, 20, 2);
        wide.channels = 5;
        JournalGroup odd = group(1, QString());
        odd.period = qInf();
        row("times go back", JournalFormat::block(backwards));
        row("a time without end", JournalFormat::block(endless));
        row("other channels", JournalFormat::block(wide));
        row("nobody's rows", JournalFormat::block(rows(2, 20, 1)));
        row("a slot too many", JournalFormat::block(rows(8, 20, 1)));
        row("a group too many", JournalFormat::block(group(200, QString())));
        row("no rate", JournalFormat::block(odd));
    }

    void whatCannotBeTrueEndsTheReading()
    {
        QFETCH(QByteArray, block);
        const QByteArray before = JournalFormat::head(QDateTime::currentDateTime()) +
                                  JournalFormat::block(group(1, QStringLiteral("B"))) +
                                  JournalFormat::block(rows(1, 0, 9));
        QCOMPARE(told(before + block + JournalFormat::block(rows(1, 30, 1))), told(before));
    }

    void aFailingDiskEndsTheJournalWithOneWord_data()
    {
        columns<bool, bool>({"isFull", "hasBegun"});
        row("full", true, true);
        row("read-only", false, false);
    }

    void aFailingDiskEndsTheJournalWithOneWord()
    {
        const auto [isFull, hasBegun] = fetched<bool, bool>({"isFull", "hasBegun"});
        rlimit limit{};
        getrlimit(RLIMIT_FSIZE, &limit);
        if (isFull) {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit small{6000, limit.rlim_max};
            setrlimit(RLIMIT_FSIZE, &small);
        } else {
            QFile inTheWay(JournalFolder::path());
            QVERIFY(inTheWay.open(QIODevice::WriteOnly));
        }
        JournalWriter writer;
        QSignalSpy failures(&writer, &JournalWriter::failed);
        const QString path = QDir(JournalFolder::path()).filePath(QStringLiteral("a.journal"));
        writer.begin(path, QDateTime::currentDateTime());
        writer.add(group(0, QStringLiteral("Ada")));
        for (int from = 0; from < 300; from += 100) // the last is cut
            writer.add({rows(0, from, 100)});
        writer.end();
        writer.finish();
        if (isFull) { // to the last byte, and its program is no more: what there is can be had all the same
            QFile lock(path + QStringLiteral(".lock"));
            const QByteArray deadProcess = "999999999\nx\n" + QSysInfo::machineHostName().toUtf8() + "\n";
            QVERIFY(lock.open(QIODevice::WriteOnly) && lock.write(deadProcess) > 0);
            lock.close();
            const rlimit nothing{0, limit.rlim_max};
            setrlimit(RLIMIT_FSIZE, &nothing);
            QCOMPARE(JournalFolder::find().size(), 1);
        }
        setrlimit(RLIMIT_FSIZE, &limit);
        QTRY_COMPARE(failures.size(), 1);
        QVERIFY(!failures[0][0].toString().isEmpty());
        JournalRun run;
        QString reason;
        QCOMPARE(JournalReader::read(path, JournalReader::What::Extent, &run, &reason), hasBegun);
        if (hasBegun)
            QCOMPARE(run.experiments.value(0).rows, 200);
        QTest::qWait(0);
        QCOMPARE(failures.size(), 1);
    }

    void onlyWhatNobodyHoldsIsFound()
    {
        const QString older = write(QStringLiteral("run-1.journal"), {rows(3, 0, 12)});
        const QString newer = write(QStringLiteral("run-2.journal"), {rows(3, 0, 1)});
        write(QStringLiteral("run-3.journal"), {}); // without a sample
        JournalWriter other;
        other.begin(QDir(JournalFolder::path()).filePath(QStringLiteral("run-4.journal")),
                    QDateTime::currentDateTime());
        other.add(group(3, QStringLiteral("B")));
        other.add({rows(3, 0, 5)});
        QTRY_VERIFY(QFile::exists(JournalFolder::path() + QStringLiteral("/run-4.journal.lock")));
        {
            const QVector<FoundJournal> found = JournalFolder::find();
            QCOMPARE(found.size(), 2);
            QCOMPARE(found[0].path, newer);
            QCOMPARE(found[1].path, older);
            QCOMPARE(found[1].extent.experiments.value(0).rows, 12);
            QCOMPARE(found[1].extent.seconds(), 12 * 0.1024);
            QVERIFY(!QFile::exists(JournalFolder::path() + QStringLiteral("/run-3.journal")));
            QVERIFY(JournalFolder::find().isEmpty()); // they are being offered
        }
        other.end();
        other.finish();
        QCOMPARE(JournalFolder::find().size(), 3);
    }

    void ofTheRefusedTheNewestFiveStayForAWeek()
    {
        const QDateTime now = QDateTime::currentDateTime();
        for (int day = 1; day <= 7; ++day) {
            const QString path = write(QStringLiteral("run-%1.journal").arg(day), {rows(3, 0, 1)});
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadWrite));
            QVERIFY(file.setFileTime(now.addDays(-day), QFileDevice::FileModificationTime));
            file.close();
            QVERIFY(JournalFolder::refuse(path));
        }
        QCOMPARE(names(JournalFolder::refusedPath()),
                 QStringList({QStringLiteral("run-1.journal"), QStringLiteral("run-2.journal"),
                              QStringLiteral("run-3.journal"), QStringLiteral("run-4.journal"),
                              QStringLiteral("run-5.journal")}));
        JournalFolder::prune(now.addDays(4));
        QCOMPARE(names(JournalFolder::refusedPath()),
                 QStringList({QStringLiteral("run-1.journal"), QStringLiteral("run-2.journal")}));
        QVERIFY(JournalFolder::find().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestJournal)
#include "test_journal.moc"

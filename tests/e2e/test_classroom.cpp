#include "classroom/commandqueue.h"
#include "tests/e2e/virtualclassbench.h"

class TestClassroom : public VirtualClassBench
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void everySampleSentIsStored()
    {
        start(4, {QStringLiteral("--model"), QStringLiteral("Birch,Dune,Grove,Ember")});
        connectAll(4);
        run(4, 120);
        stop(4);
        readRecord();
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(wrongRows(i), QStringList());
            QCOMPARE(data(i)->getXSize(), samplesSent(i));
        }
        QCOMPARE(classData()->getNSens(), 5);
        for (int i = 0; i < 4; ++i)
            QCOMPARE(classData()->getYNoConv(i), data(i)->getYNoConv(0));
    }

    void groupsOfAnotherRateStayOutOfTheClass()
    {
        start(4, {QStringLiteral("--model"), QStringLiteral("Birch")});
        tell("rate 2 25/Sec");
        tell("battery 4 empty");
        connectAll(4);
        run(3, 10);
        QTRY_VERIFY(data(1)->getXSize() >= 25);
        stop(3);
        auto* line = window->findChild<QLabel*>(QStringLiteral("leftOutLine"));
        QVERIFY(line->text().endsWith(QStringLiteral("Group 2")));
        QVERIFY2(prompt.asked.isEmpty(), "a box would have covered Stop");
        readRecord();
        for (int i : {0, 2}) {
            for (int k = 0; k < samplesSent(i); ++k)
                QCOMPARE(classData()->getYNoConvAt(i, k), values(i, record[i].value(k)).constFirst());
        }
        const QVector<double> average = classData()->getYNoConv(4);
        QCOMPARE(average.size(), qMax(samplesSent(0), samplesSent(2)));
        for (int k = 0; k < qMin(samplesSent(0), samplesSent(2)); ++k)
            QCOMPARE(average[k], (classData()->getYNoConvAt(0, k) + classData()->getYNoConvAt(2, k)) / 2);
        for (int i : {1, 3}) {
            for (const double value : classData()->getYNoConv(i))
                QVERIFY(qIsNaN(value));
        }
    }

    void aFaultStaysWithItsLogger()
    {
        start(4, {QStringLiteral("--fault"), QStringLiteral("1:garbage=10"), QStringLiteral("--fault"),
                  QStringLiteral("1:cut=10"), QStringLiteral("--fault"), QStringLiteral("2:burst=150"),
                  QStringLiteral("--seed"), QStringLiteral("7")});
        connectAll(4);
        run(4, 40);

        tell("pull 3");
        QTRY_VERIFY(!manager->isTembrinConnect(2));
        QVERIFY(manager->isTembrinConnect(3));
        tell("put 3");
        auto* icon = window->findChild<QLabel*>(QStringLiteral("loggerIcon3"));
        QTRY_VERIFY(QFile::exists(port(2)));
        QTest::mouseClick(icon, Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(manager->tembrinDataAt(2)->isLoggerRecognized(), 5000);

        const int before = data(0)->getXSize();
        QTRY_VERIFY_WITH_TIMEOUT(data(0)->getXSize() > before + 100, 5000);
        stop(4);
        QTRY_VERIFY_WITH_TIMEOUT(manager->queue().isIdle(), 8000);
        readRecord();
        for (int i = 0; i < 4; ++i)
            QCOMPARE(wrongRows(i), QStringList());
        for (int i : {0, 1, 3})
            QCOMPARE(data(i)->getXSize(), samplesSent(i));
        QVERIFY(data(2)->getXSize() > samplesSent(2)); // none is missing
        QCOMPARE(qRound(data(2)->getX().constLast() / data(2)->dt), data(2)->getXSize() - 1);
    }
};

int main(int argc, char** argv)
{
    return VirtualClassBench::exec<TestClassroom>(argc, argv);
}

#include "test_classroom.moc"

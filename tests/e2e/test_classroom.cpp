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

    void theAverageGoesAsFarAsTheSlowestThatSends()
    {
        start(4, {QStringLiteral("--model"), QStringLiteral("Birch")});
        tell("rate 2 25/Sec");
        tell("rate 3 10/Sec");
        tell("battery 4 empty");
        connectAll(4);
        run(3, 10);
        checkAverage(); // on the way
        QTRY_VERIFY(data(2)->getXSize() >= 25);
        stop(3);
        checkAverage();
        QVERIFY(classData()->getYSize(0) > 3 * classData()->getYSize(1));
        QVERIFY(classData()->getYSize(1) > 2 * classData()->getYSize(2));
        QCOMPARE(classData()->getYSize(3), 0);
        readRecord();
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(classData()->getYSize(i), samplesSent(i));
            for (int k = 0; k < samplesSent(i); ++k)
                QCOMPARE(classData()->getYNoConvAt(i, k), values(i, record[i].value(k)).constFirst());
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
        readRecord();
        for (int i = 0; i < 4; ++i)
            QCOMPARE(wrongRows(i), QStringList());
        for (int i : {0, 1, 3})
            QCOMPARE(data(i)->getXSize(), samplesSent(i));
    }

private:
    void checkAverage() const
    {
        const QVector<QVector<double>> sending = classData()->getData().mid(0, 3);
        const QVector<double> average = classData()->getYNoConv(4);
        QCOMPARE(average.size(), qMin(sending[0].size(), qMin(sending[1].size(), sending[2].size())));
        for (int k = 0; k < average.size(); ++k)
            QCOMPARE(average[k], (sending[0][k] + sending[1][k] + sending[2][k]) / 3);
    }
};

int main(int argc, char** argv)
{
    return VirtualClassBench::exec<TestClassroom>(argc, argv);
}

#include "test_classroom.moc"

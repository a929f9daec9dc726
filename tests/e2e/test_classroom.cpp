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

    void theAverageIsOverThoseThatSend()
    {
        start(4, {QStringLiteral("--model"), QStringLiteral("Birch")});
        tell("battery 4 empty");
        connectAll(4);
        run(3, 10);
        checkAverage(); // on the way
        QTRY_VERIFY(data(2)->getXSize() >= 25);
        stop(3);
        checkAverage();
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
        const QVector<double> average = classData()->getYNoConv(4);
        QCOMPARE(average.size(), classData()->getXSize());
        for (int k = 0; k < average.size(); ++k) {
            double sum = 0;
            for (int i = 0; i < 3; ++i)
                sum += k < classData()->getYSize(i) ? classData()->getYNoConvAt(i, k) : 0.0;
            QCOMPARE(average[k], sum / classData()->valuesAt(k));
        }
    }
};

int main(int argc, char** argv)
{
    return VirtualClassBench::exec<TestClassroom>(argc, argv);
}

#include "test_classroom.moc"

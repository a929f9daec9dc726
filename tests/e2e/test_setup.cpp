#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>

#include "graph/plot.h"
#include "tests/e2e/virtualclassbench.h"

#include <qwt_plot_canvas.h>

/// The setup dialogs of the real window on three models of loggers, which log what reaches them.
class TestSetup : public VirtualClassBench
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void oneExperimentForThreeModels()
    {
        startClass();
        inDialog("basicSetupAct", [this](QWidget* dialog) {
            for (QCheckBox* box : dialog->findChildren<QCheckBox*>()) {
                if (box->isVisible() && box->isChecked() != box->text().startsWith(QLatin1String("pH")))
                    box->click();
            }
            dialog->findChild<QComboBox*>(QStringLiteral("comboRate"))
                ->setCurrentText(QStringLiteral("25/Sec"));
            dialog->findChild<QComboBox*>(QStringLiteral("comboSamples"))->setCurrentIndex(1);
            QTRY_VERIFY(received(0, "47 14 11").contains(frames[0]));
            QVERIFY(received(1, "47 14 11").isEmpty() && received(2, "47 14 11").isEmpty());
        });
        for (int i = 1; i < 3; ++i)
            QTRY_COMPARE(received(i, "47 14 11").join(QString()), frames[i]);

        window->findChild<QAction*>(QStringLiteral("runAct"))->trigger();
        for (int i = 0; i < 3; ++i) {
            QTRY_VERIFY_WITH_TIMEOUT(data(i)->finalData && data(i)->getXSize() == 100, 15000);
            QCOMPARE(data(i)->dt, 0.04096);
            QCOMPARE(data(i)->getNSens(), 1);
            QCOMPARE(data(i)->getSens(0)->ID, int(SENSOR_PH));
        }
    }

    void theConfigurationOfTheClassAndItsLook()
    {
        startClass();
        inDialog("advancedSetupAct", [this](QWidget* dialog) {
            auto* sound = dialog->findChild<QCheckBox*>(QStringLiteral("boxSound"));
            const bool before = sound->isChecked();
            sound->click();
            QTRY_COMPARE(received(0, "47 14 DD").size(), 1);
            QVERIFY(received(1, "47 14 DD").isEmpty());
            QTRY_COMPARE(manager->tembrinDataAt(0)->reported().sound, !before);
            prompt.picked = 0xff204060;
            dialog->findChild<QPushButton*>(QStringLiteral("backgroundButton"))->click();
            dialog->findChild<QPushButton*>(QStringLiteral("appBackButton"))->click();
        });
        QTRY_COMPARE(received(2, "47 14 DD").size(), 1);
        QCOMPARE(received(0, "47 14 DD").size(), 2);
        for (Plot* plot : {manager->plotAt(0), manager->plotAt(7), manager->plotC()})
            QCOMPARE(plot->canvasBackground().color(), QColor(0x20, 0x40, 0x60));
        QVERIFY(window->styleSheet().contains(QLatin1String("QMainWindow { background: rgb(32,64,96)")));
    }

private:
    void startClass()
    {
        logFile = folder->filePath(QStringLiteral("log"));
        start(3, QStringLiteral("--model Birch,Fjord,Dune --seed 3 --log").split(' ') << logFile);
        connectAll(3);
        for (int i = 0; i < 3; ++i)
            QTRY_COMPARE(received(i, "47 14 CC").size(), 1); // the clock is the last of a session's opening
    }

    /// The frames with this beginning that have reached a logger, from its log.
    QStringList received(int logger, const char* beginning)
    {
        QFile file(logFile);
        QStringList found;
        if (!file.open(QIODevice::ReadOnly))
            return found;
        const QString start = QStringLiteral(" <- ") + QLatin1String(beginning);
        for (const QString& line : QString::fromUtf8(file.readAll()).split('\n')) {
            if (line.section(' ', 1, 1).toInt() == logger + 1 && line.contains(start))
                found << line.section(QStringLiteral(" <- "), 1).section(QStringLiteral(" |"), 0, 0);
        }
        return found;
    }

    // The pH sensor alone, at its place in each model's list, code 4, 100 samples; two models have a socket.
    const QString frames[3] = {
        QStringLiteral("47 14 11 00 02 04 01 00 07 00 19 00 00 FF 00 00 6E"),
        QStringLiteral("47 14 11 00 04 04 01 00 07 00 19 26 00 FF 00 00 46"),
        QStringLiteral("47 14 11 00 40 04 01 00 07 00 19 26 00 FF 00 00 0A"),
    };
    QString logFile;
};

int main(int argc, char** argv)
{
    return VirtualClassBench::exec<TestSetup>(argc, argv);
}

#include "test_setup.moc"

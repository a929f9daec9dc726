#include <QCheckBox>
#include <QPushButton>

#include "graph/plot.h"
#include "tests/e2e/virtualclassbench.h"

#include <qwt_plot_canvas.h>

/// The advanced setup in the real window: what is chosen there reaches loggers, graphs and the window.
class TestSetup : public VirtualClassBench
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void theConfigurationOfTheClassAndItsLook()
    {
        start(2, QStringLiteral("--model Birch,Fjord").split(' '));
        connectAll(2);
        const auto sound = [this](int i) { return manager->tembrinDataAt(i)->reported().sound; };
        const bool before = sound(0);
        inDialog("advancedSetupAct", [&](QWidget* dialog) {
            dialog->findChild<QCheckBox*>(QStringLiteral("boxSound"))->click();
            QTRY_COMPARE(sound(0), !before);
            prompt.picked = 0xff204060;
            dialog->findChild<QPushButton*>(QStringLiteral("backgroundButton"))->click();
            dialog->findChild<QPushButton*>(QStringLiteral("appBackButton"))->click();
        });
        QTRY_COMPARE(sound(1), !before);
        for (Plot* plot : {manager->plotAt(0), manager->plotAt(7), manager->plotC()})
            QCOMPARE(plot->canvasBackground().color(), QColor(0x20, 0x40, 0x60));
        QVERIFY(window->styleSheet().contains(QLatin1String("QMainWindow { background: rgb(32,64,96)")));
    }
};

int main(int argc, char** argv)
{
    return VirtualClassBench::exec<TestSetup>(argc, argv);
}

#include "test_setup.moc"

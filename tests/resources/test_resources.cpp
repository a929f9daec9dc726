#include <QApplication>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QTest>
#include <QWidget>

#include "resources/resources.h"
#include "sensors/sensor.h"
#include "sensors/sensorsmaster.h"
#include "tests/common/testsupport.h"

namespace {
/// Empty if the picture loads, is square, has the wanted width and shows something; else what is wrong.
QString faultOf(const QString& path, int leastWidth)
{
    const QImage picture(path);
    if (picture.isNull())
        return path + QLatin1String(" does not load");
    if (picture.width() != picture.height() || picture.width() < leastWidth)
        return QStringLiteral("%1 has %2 x %3 pixels").arg(path).arg(picture.width()).arg(picture.height());
    const QImage canvas = picture.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < canvas.height(); ++y)
        for (int x = 0; x < canvas.width(); ++x)
            if (qAlpha(canvas.pixel(x, y)) > 128)
                return {};
    return path + QLatin1String(" is empty");
}

} // namespace

class TestResources : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { initPellandraResources(); }

    void everySensorHasItsThreePictures()
    {
        QStringList faults;
        for (const SensorRow* row = sensorsMaster(); row->ID != SENSOR_LAST; ++row) {
            if (!*row->iconNameGray)
                continue;
            const Sensor sensor(row->ID);
            faults << faultOf(sensor.iconNameGray, 64) << faultOf(sensor.iconNameColor, 128)
                   << faultOf(sensor.iconNameColorActive, 128);
            if (QImage(sensor.iconNameColor) == QImage(sensor.iconNameColorActive))
                faults << sensor.iconNameColorActive + QLatin1String(" does not stand out");
        }
        faults.removeAll(QString());
        QCOMPARE(faults.join(QLatin1Char('\n')), QString());
    }

    void everyOtherPictureLoads()
    {
        QStringList faults;
        int pictures = 0;
        for (const char* root : {":/icons", ":/dialog", ":/logger", ":/sim", ":/sensor"}) {
            for (QDirIterator file(root, {"*.png", "*.ico"}, QDir::Files, QDirIterator::Subdirectories);
                 file.hasNext(); ++pictures)
                faults << faultOf(file.next(), 5);
        }
        faults.removeAll(QString());
        QCOMPARE(faults.join(QLatin1Char('\n')), QString());
        QVERIFY2(pictures > 120, qPrintable(QString::number(pictures)));
    }

    void styleSheetIsUnderstood()
    {
        QFile file(QStringLiteral(":/Kormelin.css"));
        QVERIFY(file.open(QFile::ReadOnly));
        const QString sheet = QString::fromUtf8(file.readAll());
        qApp->setStyleSheet(sheet); // a mistake in it is a warning, and that fails the test
        QWidget().ensurePolished();
        qApp->setStyleSheet({});
        auto picture = QRegularExpression(QStringLiteral("url\\(([^)]*)\\)")).globalMatch(sheet);
        while (picture.hasNext())
            QCOMPARE(faultOf(picture.next().captured(1), 1), QString());
    }
};

QTEST_MAIN(TestResources)
#include "test_resources.moc"

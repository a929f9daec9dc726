#include <QApplication>
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

/// What the logger strip shows at its usual size to somebody who sees no colours.
QImage strip(const QString& name)
{
    QImage canvas(24, 24, QImage::Format_Grayscale8);
    const QImage picture = QImage(QStringLiteral(":/icons/%1.ico").arg(name))
                               .scaled(24, 24, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    for (int y = 0; y < 24; ++y)
        for (int x = 0; x < 24; ++x) {
            const QRgb dot = picture.pixel(x, y);
            const int gray = (qGray(dot) * qAlpha(dot) + 240 * (255 - qAlpha(dot))) / 255;
            canvas.setPixel(x, y, qRgb(gray, gray, gray));
        }
    return canvas;
}
} // namespace

class TestResources : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { initPellandraResources(); }
    void init() { guard.reset(new WarningGuard); }
    void cleanup() { VERIFY_NO_WARNINGS(*guard); }

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
        static constexpr struct
        {
            const char* folder;
            const char* names;
            int width;
        } groups[] = {
            {":/icons/2018P2/%1.png",
             "Open Save Print Zoom Marker Annotate Crop ColabConnect Setup Run Stop Download Pref Exit Excel "
             "Exporting Slope LinReg QuadReg Smooth Derivative Integral ViewGraph ViewBar ViewColabMulti "
             "ViewColabClass ViewColabCombo Simulation",
             144},
            {":/icons/%1.png", "1meters 2meters 4meters 6meters GlobalLab/Upload Annotate ColabPair", 144},
            {":/icons/%1.ico", "BTon BToff BTempty BTcomm", 48},
            {":/icons/resources/%1.png", "down-arrow down-arrow-2x", 16},
            {":/%1.png",
             "dialog/icons/Dialog/Width_icon logger/icons/logger/tembrinOn logger/icons/logger/tembrinOff "
             "sim/icons/Simulations/ball-6x6 sim/icons/Simulations/Pendulum icons/pellandra",
             128},
        };
        QStringList faults;
        for (const auto& group : groups)
            for (const QString& name : QString::fromLatin1(group.names).split(QLatin1Char(' ')))
                faults << faultOf(QString::fromLatin1(group.folder).arg(name), group.width);
        faults.removeAll(QString());
        QCOMPARE(faults.join(QLatin1Char('\n')), QString());
    }

    void statesOfALoggerDifferWithoutColour()
    {
        const QStringList names{QStringLiteral("BTon"), QStringLiteral("BToff"), QStringLiteral("BTcomm"),
                                QStringLiteral("BTempty")};
        for (const QString& a : names)
            for (const QString& b : names) {
                if (a >= b)
                    continue;
                const QImage one = strip(a);
                const QImage other = strip(b);
                int dots = 0;
                for (int i = 0; i < 24 * 24; ++i)
                    dots += qAbs(qGray(one.pixel(i % 24, i / 24)) - qGray(other.pixel(i % 24, i / 24))) > 60;
                QVERIFY2(dots > 24 * 24 / 8, qPrintable(QStringLiteral("%1 %2 %3").arg(a, b).arg(dots)));
            }
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

private:
    QScopedPointer<WarningGuard> guard;
};

QTEST_MAIN(TestResources)
#include "test_resources.moc"

#pragma once

#include <QDialog>

class QSlider;

/// Slides an experiment that was just appended in time against the one it joined. The graph follows at once;
/// there is no way back but the slider itself.
class SyncData : public QDialog
{
    Q_OBJECT

public:
    /// `dt` is the time between two samples in seconds, 0 or less for samples taken by hand.
    explicit SyncData(float dt, QWidget* parent = nullptr);

Q_SIGNALS:
    /// The appended experiment lies so many samples later, earlier below 0.
    void changeSyncValue(int dSamps);

private:
    void createLayout(int label, const QString& unit);

    QSlider* horizontalSlider;
};

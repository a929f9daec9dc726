#pragma once

#include <QWidget>

#include "classroom/classplan.h"

class QCheckBox;
class QComboBox;
class QFormLayout;
class QGroupBox;
class QSpinBox;
class UnitGroups;

/// What changes seldom: the loggers' sound, position and language, the units, and the smoothing.
class ConfigPage : public QWidget
{
    Q_OBJECT

public:
    explicit ConfigPage(QWidget* parent = nullptr);

    /// `isBasic` loggers have neither sound nor position.
    /// `kernel` is the width of smoothing and `window` that of a derivative, in samples.
    void show(const ClassPlan& plan, bool isBasic, int kernel, int window);
    /// What the controls say; a list without a choice leaves the language.
    LoggerSettings shown(LoggerSettings before) const;

Q_SIGNALS:
    void chosen(ClassPlan::Field field);
    /// A unit was stored for the next start; `isOfLoggers` where the loggers show it too.
    void unitChosen(bool isOfLoggers);
    /// An odd number of samples.
    void kernelChosen(int size);
    void windowChosen(int size);

private:
    QGroupBox* createLoggerGroup();
    QWidget* createSmoothing();
    QSpinBox* addOdd(QFormLayout* form, const QString& label, const char* name, int most,
                     void (ConfigPage::*told)(int));

    QCheckBox* boxSound = nullptr;
    QCheckBox* boxGPS = nullptr;
    QComboBox* comboLanguage = nullptr;
    UnitGroups* units = nullptr;
    QSpinBox* smootSpinBox = nullptr;
    QSpinBox* derivSpinBox = nullptr;
    bool isFilling = false; ///< a change is the dialog's own
};

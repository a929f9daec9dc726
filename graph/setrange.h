#pragma once

#include <QDialog>

class QDialogButtonBox;
class QDoubleSpinBox;
class QFormLayout;
class QLabel;

/// Asks for the range of a scale. A reversed range is allowed and gives a scale upside down.
class SetRange : public QDialog
{
    Q_OBJECT

public:
    explicit SetRange(QWidget* parent = nullptr);

    /// The title inside the dialog.
    void sensName(const QString& text);
    /// Shows a range and keeps writing the edited one to `setmin`, `setmax`, starting with what it shows.
    /// They outlive the dialog; rejecting does not take them back.
    void Params(double curmin, double curmax, double defmin, double defmax, double* setmin, double* setmax);
    /// Adds the button that gives the range back to the program and closes the dialog as accepted.
    void offerAutomatic();
    /// It was pressed: the range is not one fixed by hand any more.
    bool isAutomatic() const { return automaticChosen; }

private:
    QDoubleSpinBox* addField(QFormLayout* form, const QString& label, const QString& name, double top);
    void showRange(double min, double max);
    void takeEdited(const QDoubleSpinBox* field, double& shown, double* result);
    void reverse();

    QLabel* title;
    QDialogButtonBox* buttons;
    QDoubleSpinBox* minval;
    QDoubleSpinBox* maxval;
    double shownMin = 0; ///< the fields as last read or set
    double shownMax = 0;
    double defaultMin = 0;
    double defaultMax = 0;
    double* resultMin = nullptr;
    double* resultMax = nullptr;
    bool automaticChosen = false;
};

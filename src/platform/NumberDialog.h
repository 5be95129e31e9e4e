#pragma once

#include <QDialog>

class QSpinBox;

namespace lanmira {

// A dialog of one whole number with an up-down control, OK and Cancel, localised by name.
// OK takes what stands in the field, typed or not, and refuses a value outside min..max with
// the range message; the arrows may reach lower than min (spinMin) where a dialog wants that.
class NumberDialog : public QDialog {
    Q_OBJECT
public:
    struct Fields {
        const char* dialogName;
        int labelId;
        int editId;
        int spinMin;
        int min;
        int max;
    };

    NumberDialog(const Fields& fields, int value, QWidget* parent);

    void accept() override;

protected:
    // The field's value, within the spin box's range.
    int number() const;
    QSpinBox* edit() const { return m_edit; }

private:
    Fields m_fields;
    QSpinBox* m_edit;
};

} // namespace lanmira

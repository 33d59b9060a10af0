#pragma once

#include "settings/variable_table.h"

#include <QWidget>

#include <functional>

class QHBoxLayout;

namespace tessaril {

class ElidedLabel;

/// The row of one variable: its name and the control that fits its type. What the user does to the
/// control goes into the table at once; showing writes nothing.
class VariableTableCell : public QWidget {
public:
    /// The name's column is given by `setNameWidth`. `table` must live longer.
    VariableTableCell(VariableTable& table, std::size_t row, QWidget* parent);

    void setNameWidth(int width);

    /// Shows the variable as it stands.
    void reload();

    /// What takes the value; none for a type that is unheard of.
    QWidget* control() const { return valueControl; }

private:
    void addControl(const variableRow& shown);
    void addField();
    void addColorWell();
    void addCheckbox(const variableRow& shown);
    void addDropdown(const variableRow& shown);
    void addSlider(const variableRow& shown);
    void addStepper(const variableRow& shown);
    ElidedLabel* addValueLabel();
    void place(QWidget* control, const char* name, int stretch);

    VariableTable& table;
    std::size_t row;
    QHBoxLayout* parts;
    ElidedLabel* displayName;
    QWidget* valueControl = nullptr;
    std::function<void(const variableRow&)> showValue; ///< the value in the control
};

} // namespace tessaril

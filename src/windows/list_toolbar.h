#pragma once

#include "store/style_list_commands.h"

#include <QToolBar>

#include <vector>

namespace tessaril {

class FilterField;
class ToggleAllControl;

/// The main window's toolbar: commands, the control for all styles, the filter field. It takes less
/// room in a narrow window.
class ListToolbar : public QToolBar {
public:
    /// `listCommands` and the actions must live longer.
    ListToolbar(const std::vector<QAction*>& actions, StyleListCommands& listCommands,
                QWidget* parent);

    FilterField& filterField() { return *filter; }

    /// Whether there are styles that its controls are for.
    void setHasStyles(bool hasStyles);

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    enum class shape { full, oneToggle, iconsOnly };

    void take(shape wanted);
    void measure();
    void fit();

    FilterField* filter;
    ToggleAllControl* toggleAll;
    shape current = shape::full;
    // The width that a shape needs.
    int full = 0;
    int oneToggle = 0;
};

} // namespace tessaril

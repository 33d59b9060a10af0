#pragma once

#include "store/style_list_commands.h"

#include <QWidget>

class QToolButton;

namespace tessaril {

/// Enables or disables all styles: a control of two segments, or where there is no room for it one
/// button that does what most styles need.
class ToggleAllControl : public QWidget {
public:
    /// `commands` must live longer.
    explicit ToggleAllControl(StyleListCommands& commands);

    void setNarrow(bool isNarrow);

private:
    QToolButton* enableAll;
    QToolButton* disableAll;
    QToolButton* toggleAll;
};

} // namespace tessaril

#pragma once

#include <QWidget>

class QAction;

namespace tessaril {

/// What the main window shows in place of an empty list: how to begin, and the button to do it.
class EmptyListPage : public QWidget {
public:
    /// The button does what `import` does, under the action's own text.
    explicit EmptyListPage(QAction& import);
};

} // namespace tessaril

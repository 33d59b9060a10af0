#pragma once

#include "windows/bound_controls.h"

#include <QWidget>

#include <functional>

namespace tessaril {

class EditorPane : public QWidget {
public:
    /// - makePreview: makes the code editor that shows the settings; none: there is no preview
    EditorPane(PreferenceControls& controls,
               const std::function<QWidget*(QWidget* parent)>& makePreview);

    void reload() { bound.reload(); }

private:
    BoundControls bound;
};

} // namespace tessaril

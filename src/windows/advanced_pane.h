#pragma once

#include "windows/bound_controls.h"

#include <QWidget>

namespace tessaril {

class AdvancedPane : public QWidget {
public:
    explicit AdvancedPane(PreferenceControls& controls);

    void reload() { bound.reload(); }

private:
    BoundControls bound;
};

} // namespace tessaril

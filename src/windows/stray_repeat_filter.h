#pragma once

#include <QObject>

#include <set>

namespace tessaril {

/// Keeps the repeats of a key from a widget that did not get its press: a key that is held down
/// since it opened or closed something must not go on typing into what has the focus now.
class StrayRepeatFilter : public QObject {
public:
    /// Becomes a child of `widget`.
    explicit StrayRepeatFilter(QObject* widget);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    std::set<int> pressed;
};

} // namespace tessaril

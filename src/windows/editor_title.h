#pragma once

#include <QWidget>

#include <string>

namespace tessaril {

class ElidedLabel;

/// The name of the style in a Style Editor's window, in the middle of its place, and whether it is
/// read-only. Takes the room that is left, and is cut where that is too little.
class EditorTitle : public QWidget {
public:
    explicit EditorTitle(bool isReadOnly);

    /// - name: UTF-8
    void showName(const std::string& name);

    /// Whether the name is shown; the remark stays.
    void setShowsName(bool shows);

    QSize sizeHint() const override;

private:
    ElidedLabel* nameLabel;
};

} // namespace tessaril

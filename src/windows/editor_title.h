#pragma once

#include <QWidget>

#include <string>

class QLabel;

namespace tessaril {

class ElidedLabel;

/// The name of the style in a Style Editor's window, in the middle of its place, and whether it is
/// read-only. Takes the room that is left, and is cut where that is too little.
class EditorTitle : public QWidget {
public:
    explicit EditorTitle(bool isReadOnly);

    /// - name: UTF-8
    void showName(const std::string& name);

    /// What of it is shown; its place stays.
    void setShows(bool name, bool remark);

    QSize sizeHint() const override;

private:
    ElidedLabel* nameLabel;
    QLabel* remarkLabel;
    const bool isReadOnly;
};

} // namespace tessaril

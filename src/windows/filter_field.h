#pragma once

#include <QLineEdit>

namespace tessaril {

/// Where the user types what the list is to show. The Escape key empties it.
class FilterField : public QLineEdit {
    Q_OBJECT

public:
    explicit FilterField(QWidget* parent = nullptr);

signals:
    /// The user is done here and wants to go on in the list.
    void left();

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace tessaril

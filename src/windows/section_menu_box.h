#pragma once

#include <QComboBox>

#include <functional>
#include <string>
#include <vector>

namespace tessaril {

/// The menu of a style's sections. Long titles are cut and whole in the tool tips.
class SectionMenuBox : public QComboBox {
public:
    struct handlers {
        std::function<void(std::size_t)> select; ///< the user has picked the section
        std::function<void()>
            leave; ///< is done with the menu; not after each key in the closed one
    };

    explicit SectionMenuBox(handlers use);

    void showSections(const std::vector<std::string>& titles, std::size_t current);

    void showPopup() override;
    void hidePopup() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    handlers user;
    bool isOpen = false; ///< or has closed this moment
};

} // namespace tessaril

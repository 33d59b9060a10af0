#include "windows/form_fields.h"

#include "windows/shown_text.h"

#include <QComboBox>
#include <QLineEdit>

#include <limits>

namespace tessaril {

QComboBox* menuOf(const char* name, std::span<const std::string_view> titles) {
    auto* menu = new QComboBox;
    menu->setObjectName(name);
    for (const std::string_view title : titles)
        menu->addItem(qtText(title));
    return menu;
}

QLineEdit* fieldOf(const char* name) {
    auto* field = new QLineEdit;
    field->setObjectName(name);
    field->setMaxLength(std::numeric_limits<int>::max());
    return field;
}

} // namespace tessaril

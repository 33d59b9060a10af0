#pragma once

#include <QString>

#include <span>
#include <string_view>

class QComboBox;
class QLineEdit;

namespace tessaril {

/// A menu of the titles, UTF-8, with the object name.
QComboBox* menuOf(const char* name, std::span<const std::string_view> titles);

/// A field with the object name, which takes texts of any length: what is pasted is never cut in
/// silence.
QLineEdit* fieldOf(const char* name);

} // namespace tessaril

#pragma once

#include <string>

namespace tessaril {

/// A fresh random UUID (RFC 9562, version 4) in its usual form.
std::string randomUUID();

} // namespace tessaril

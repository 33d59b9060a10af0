#include "records/random_uuid.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace tessaril {

std::string randomUUID() {
    std::array<unsigned char, 16> bytes{};
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        throw std::system_error(errno, std::generic_category(), "getrandom");
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += {digits[bytes[i] >> 4], digits[bytes[i] & 15]};
    }
    return text;
}

} // namespace tessaril

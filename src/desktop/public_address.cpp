#include "desktop/public_address.h"

#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>

namespace tessaril {

namespace {

struct range {
    std::uint32_t first;
    int bits; ///< of the prefix
};

constexpr range reservedRanges[] = {
    {0x00000000, 8},  // this network
    {0x0A000000, 8},  // private
    {0x64400000, 10}, // shared by a carrier's customers
    {0x7F000000, 8},  // loopback
    {0xA9FE0000, 16}, // link-local
    {0xAC100000, 12}, // private
    {0xC0000000, 24}, // protocol assignments
    {0xC0000200, 24}, // documentation
    {0xC0586300, 24}, // relays to IPv6
    {0xC0A80000, 16}, // private
    {0xC6120000, 15}, // benchmarks
    {0xC6336400, 24}, // documentation
    {0xCB007100, 24}, // documentation
    {0xE0000000, 3},  // multicast, reserved, broadcast
};

bool isPublic(std::uint32_t address) {
    return std::ranges::none_of(reservedRanges, [address](const range& reserved) {
        return (address ^ reserved.first) >> (32 - reserved.bits) == 0;
    });
}

std::uint32_t numberAt(std::span<const std::uint8_t, 16> bytes, std::size_t place) {
    return std::uint32_t{bytes[place]} << 24 | std::uint32_t{bytes[place + 1]} << 16 |
           std::uint32_t{bytes[place + 2]} << 8 | bytes[place + 3];
}

bool isPublic(std::span<const std::uint8_t, 16> bytes) {
    constexpr std::array<std::uint8_t, 12> mapped{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
    constexpr std::array<std::uint8_t, 12> translated{0, 0x64, 0xFF, 0x9B};
    const auto prefix = bytes.first<12>();
    if (std::ranges::equal(prefix, mapped) || std::ranges::equal(prefix, translated))
        return isPublic(numberAt(bytes, 12));
    const std::uint32_t start = numberAt(bytes, 0);
    if (start >> 16 == 0x2002) return isPublic(numberAt(bytes, 2)); // 6to4
    if (start >> 9 == 0x20010000 >> 9) return false; // protocol assignments, Teredo among them
    if (start == 0x20010DB8) return false;           // documentation
    return start >> 29 == 1;                         // 2000::/3, all global unicast there is
}

} // namespace

bool isPublicAddress(const sockaddr& address) {
    if (address.sa_family == AF_INET) {
        sockaddr_in ipv4{};
        std::memcpy(&ipv4, &address, sizeof ipv4);
        return isPublic(ntohl(ipv4.sin_addr.s_addr));
    }
    if (address.sa_family == AF_INET6) {
        sockaddr_in6 ipv6{};
        std::memcpy(&ipv6, &address, sizeof ipv6);
        return isPublic(std::span<const std::uint8_t, 16>(ipv6.sin6_addr.s6_addr));
    }
    return false;
}

} // namespace tessaril

#pragma once

#include <sys/socket.h>

namespace tessaril {

/// Whether the address is a host's on the public internet: IPv4 or IPv6, not of this machine, a
/// private network, a link, a group or a reserved range (the IANA special-purpose registries). An
/// IPv6 address that stands for an IPv4 one is judged by that.
bool isPublicAddress(const sockaddr& address);

} // namespace tessaril

#pragma once

#include "platform/file_system.h"

#include <span>
#include <string_view>

namespace tessaril {

/// The one-way channel to the browser extension. Each identifier holds the last message sent.
class MessageChannel {
public:
    virtual ~MessageChannel() = default;

    /// Sends the concatenated `pieces`. Gives whether the message is out.
    virtual bool send(std::string_view identifier, std::span<const std::string_view> pieces) = 0;

    /// Sends the content of a staged file, without writing it again where the channel can.
    virtual bool send(std::string_view identifier, StagedFile& payload) = 0;
};

} // namespace tessaril

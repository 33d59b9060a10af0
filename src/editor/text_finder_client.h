#pragma once

#include "editor/text_range.h"

#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

/// The text that a find bar searches. All ranges are in UTF-16 units of `string`.
class TextFinderClient {
public:
    virtual ~TextFinderClient() = default;

    /// The whole text, UTF-8.
    virtual const std::string& string() const = 0;

    /// Whether replacing is allowed.
    virtual bool isEditable() const = 0;

    /// Makes sure that `string` is what the user sees, with what was typed a moment ago, and then
    /// calls the finder's `textDidSettle`.
    virtual void settle() = 0;

    /// The range that was last selected through the find bar.
    virtual textRange firstSelectedRange() const = 0;

    virtual const std::vector<textRange>& selectedRanges() const = 0;
    virtual void setSelectedRanges(std::vector<textRange> ranges) = 0;

    /// Selects the range and brings it into view.
    virtual void scrollRangeToVisible(const textRange& range) = 0;

    /// Replaces that range, as one change that can be undone under the name.
    virtual void replaceCharacters(const textRange& range, std::string_view replacement,
                                   std::string_view undoName) = 0;
};

} // namespace tessaril

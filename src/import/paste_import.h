#pragma once

#include "import/imported_style.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tessaril {

/// Makes a style of a text that the user pasted or typed. Main thread only.
class PasteImport {
public:
    explicit PasteImport(importSurroundings surroundings);

    /// Whether an import may begin: not while the list is locked for sync, which beeps, and not of
    /// a blank text, which would make a style that does nothing.
    bool canImport(std::string_view text);

    /// Whoever has started an import keeps this; without it the import adds nothing, tells nobody
    /// and calls nobody any more.
    using Ticket = std::shared_ptr<const void>;

    /// Reads `text`, UTF-8, in the background: UserCSS and `@-moz-document` blocks by their
    /// markers, anything else as plain CSS. Then, on the main thread, appends the style to the
    /// database, or says that there is none in the text, and calls `done` with whether it was
    /// imported. What was locked for sync meanwhile is not imported.
    [[nodiscard]] Ticket importText(std::string text, std::function<void(bool imported)> done);

    /// Asks whether `text` may be lost; a blank one may without a question.
    bool mayDiscard(std::string_view text);

private:
    struct outcome;

    outcome read(std::string text) const;
    void finish(outcome result, const std::function<void(bool imported)>& done);

    importSurroundings machine;
};

} // namespace tessaril

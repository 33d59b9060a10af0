#pragma once

#include "platform/browser_extension.h"
#include "platform/file_system.h"

#include <filesystem>

namespace tessaril {

/// The extension's state as the browser side leaves it in the file `extension-state` of the shared
/// container: its first line is `enabled` or another word.
class ExtensionState : public BrowserExtension {
public:
    /// `page` is the local page that explains how to enable the extension in the browser. `files`
    /// must live longer.
    ExtensionState(const FileSystem& files, const std::filesystem::path& container,
                   std::filesystem::path page);

    /// Nothing while the browser side has not written the file.
    std::optional<bool> isEnabled() const override;

    /// Opens the page. Main thread only.
    void showPreferences() override;

private:
    const FileSystem& files;
    std::filesystem::path stateFile;
    std::filesystem::path page;
};

} // namespace tessaril

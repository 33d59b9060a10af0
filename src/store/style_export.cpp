#include "store/style_export.h"

#include "model/text.h"
#include "store/exported_file.h"

#include <utility>

namespace tessaril {

namespace {

constexpr std::string_view saveErrorTitle = "Error Saving File";
constexpr std::string_view saveErrorText = "An error occurred while saving.";

constexpr std::string_view unnamedStyle = "Style";

/// Bytes of a file name that also an encrypted home takes; most others take 255.
constexpr std::size_t longestFileName = 143;

/// What a file name can't hold, or a panel would not take as part of one name.
char safeCharacter(char c) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) return ' ';
    if (c == '/') return '-';
    return c == '"' ? '\'' : c;
}

/// `name` without what hides a file at its start or stands for a home folder there.
std::string_view withVisibleStart(std::string_view name) {
    for (name = trimmed(name); name.starts_with('.') || name.starts_with('~'); name = trimmed(name))
        name.remove_prefix(1);
    return name;
}

} // namespace

std::string proposedExportName(std::string_view name, std::span<const std::string_view> types) {
    const std::string ending = "." + std::string(types.front());
    std::string safe(name);
    for (char& c : safe)
        c = safeCharacter(c);
    std::string_view cut = withVisibleStart(safe);
    const std::size_t most = longestFileName - ending.size();
    while (cut.size() > most)
        cut = dropLast(cut);
    cut = trimmed(cut);
    return std::string(cut.empty() ? unnamedStyle : cut) + ending;
}

StyleExport::StyleExport(FileSystem& fileSystem, Alerts& alertPresenter, Dispatcher& tasks)
    : files(fileSystem), alerts(alertPresenter), dispatcher(tasks) {}

void StyleExport::write(const std::filesystem::path& chosen, std::string text,
                        std::span<const std::string_view> types) {
    const auto file = exportedFile(chosen, types, files, alerts);
    if (!file) return;
    // The sheet, and what holds this, may be gone when a slow disk is done.
    dispatcher.inBackground(taskPriority::utility, [&target = files, &presenter = alerts,
                                                    file = *file, text = std::move(text)] {
        if (!target.overwrite(file, text)) presenter.showAlert(saveErrorTitle, saveErrorText);
    });
}

} // namespace tessaril

#include "store/backup_contents.h"

#include <utility>

namespace tessaril {

namespace {

/// The style without what a compiler makes of it and when it was last changed.
styleContainer asWritten(const styleContainer& style) {
    styleContainer written = style;
    written.dateModified.reset();
    written.styleData.compSections.reset();
    for (styleSection& section : written.styleData.sections)
        section.compiledcode.reset();
    return written;
}

bool differ(const styleContainer& a, const styleContainer& b) {
    return a != b && asWritten(a) != asWritten(b);
}

std::string counted(std::size_t count, const char* one, const char* several) {
    return std::to_string(count) + (count == 1 ? one : several);
}

} // namespace

BackupComparison::BackupComparison(liveDatabase::styleList stylesOfToday)
    : today(std::move(stylesOfToday)), installed(today) {
    for (const auto& style : today)
        byID.try_emplace(style->uniqueID, style.get());
}

backupContents BackupComparison::compare(const liveDatabase::styleList& backup) const {
    backupContents contents;
    contents.styles.reserve(backup.size());
    for (const auto& style : backup) {
        const bool isAdded = !installed.isInstalled(*style);
        const auto same = byID.find(style->uniqueID);
        auto state = backupStyleState::present;
        if (isAdded && same == byID.end()) {
            state = backupStyleState::missing;
            ++contents.missing;
        } else if (same != byID.end() && (isAdded || differ(*style, *same->second))) {
            state = backupStyleState::changed;
            ++(isAdded ? contents.changedAdded : contents.changedKept);
        }
        contents.styles.push_back({style->styleData.name, state});
    }
    return contents;
}

bool addsStyles(const backupContents& contents) {
    return contents.missing > 0 || contents.changedAdded > 0;
}

std::string restoreSummary(const backupContents& contents) {
    if (contents.styles.empty()) return "This backup holds no styles.";
    std::string text;
    if (!addsStyles(contents))
        text = "Your list has every style of this backup, so there is nothing to restore.";
    if (contents.missing > 0)
        text = "Restore brings back " + counted(contents.missing, " style that is missing today.",
                                                " styles that are missing today.");
    if (contents.changedAdded > 0)
        text += (text.empty() ? "Restore adds " : " It adds ") +
                counted(contents.changedAdded,
                        " style that has changed since as it was then, beside today's.",
                        " styles that have changed since as they were then, beside today's.");
    if (contents.changedKept > 0)
        text += " " + counted(contents.changedKept, " style that has changed since stays as it is.",
                              " styles that have changed since stay as they are.");
    return text;
}

} // namespace tessaril

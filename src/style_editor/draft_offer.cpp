#include "style_editor/draft_offer.h"

#include "events/notification_names.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace tessaril {

namespace {

constexpr std::size_t mostNames = 3;

/// “A”, “B”, “C” and 2 more
std::string namesOf(const std::vector<styleContainer>& drafts) {
    std::string names;
    const std::size_t shown = std::min(drafts.size(), mostNames);
    for (std::size_t i = 0; i < shown; ++i)
        names.append(i == 0                  ? "“"
                     : i + 1 < drafts.size() ? ", “"
                                             : " and “")
            .append(drafts[i].styleData.name)
            .append("”");
    if (drafts.size() > shown)
        names.append(" and ").append(std::to_string(drafts.size() - shown)).append(" more");
    return names;
}

alertQuestion questionAbout(const std::vector<styleContainer>& drafts) {
    return {.title = "Would you like to restore unsaved changes?",
            .text = "Tessaril ended before the changes to " + namesOf(drafts) +
                    " were saved. They open in the Style Editor if you restore them, where you can "
                    "save them. If you discard them, they will be lost.",
            .buttons = {"Restore", "Discard"},
            .destructiveButton = 1};
}

/// The style without what the compiler makes of it.
styleContainer uncompiled(styleContainer style) {
    style.styleData.compSections.reset();
    for (styleSection& section : style.styleData.sections)
        section.compiledcode.reset();
    return style;
}

} // namespace

DraftOffer::DraftOffer(draftOfferSurroundings surroundings) : machine(surroundings) {}

void DraftOffer::offer() {
    const StyleDrafts::Version version = machine.drafts.next(); // what is edited from now on stays
    std::vector<styleContainer> unsaved;
    for (styleContainer& draft : machine.drafts.all()) {
        if (isUnsaved(draft))
            unsaved.push_back(std::move(draft));
        else
            drop(draft, version);
    }
    if (unsaved.empty()) return;
    const bool wanted = machine.alerts.ask(questionAbout(unsaved)).button == 0;
    for (const styleContainer& draft : unsaved)
        wanted ? restore(draft, version) : drop(draft, version);
}

bool DraftOffer::isUnsaved(const styleContainer& draft) const {
    const auto stored = machine.store.findStyle(draft.uniqueID);
    if (!stored) return true;
    styleContainer changed = *stored;
    takeEditorChanges(changed, draft);
    changed.styleData.name = stored->styleData.name;
    return uncompiled(std::move(changed)) != uncompiled(*stored);
}

void DraftOffer::drop(const styleContainer& draft, StyleDrafts::Version version) {
    machine.dispatcher.inBackground(
        taskPriority::utility,
        [&drafts = machine.drafts, id = draft.uniqueID, version] { drafts.drop(id, version); });
}

void DraftOffer::restore(const styleContainer& draft, StyleDrafts::Version version) {
    const auto stored = machine.store.findStyle(draft.uniqueID);
    if (stored && stored->source == sourceCustom && !machine.openStyles.contains(draft.uniqueID)) {
        styleContainer style = *stored;
        takeEditorChanges(style, draft);
        style.styleData.name = stored->styleData.name; // it may have been renamed in the list
        openInEditor(style, true);
        return;
    }
    // Deleted, or not to be changed any more: nothing written is lost as a style of its own.
    styleContainer style = draft;
    style.source = sourceCustom;
    style.uniqueID = machine.store.appendStyle(style);
    machine.store.saveDatabase();
    machine.center.post(notifications::addLatestStyle);
    machine.saves.save(style); // compiles it
    drop(draft, version);
    openInEditor(style, false);
}

void DraftOffer::openInEditor(const styleContainer& style, bool isUnsaved) {
    machine.center.post(notifications::addToOpenStyles, style.uniqueID);
    if (!open || !open(style, isUnsaved))
        machine.center.post(notifications::removeFromOpenStyles, style.uniqueID);
}

} // namespace tessaril

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

enum offerAnswer { restoreAnswer, discardAnswer };

/// - unanswered: the button that leaves everything as it is
alertQuestion questionAbout(const std::vector<styleContainer>& drafts, bool haveAllAPlace,
                            const char* unanswered) {
    return {.title = "Would you like to restore unsaved changes?",
            .text = "Changes to " + namesOf(drafts) +
                    " were not saved. They open in the Style Editor if you restore them, where you "
                    "can save them." +
                    (haveAllAPlace ? ""
                                   : " Those to styles that were deleted or are read-only become "
                                     "new styles, switched off.") +
                    " If you discard them, they will be lost.",
            .buttons = {"Restore", "Discard", unanswered},
            .destructiveButton = discardAnswer};
}

/// The style without what the compiler makes of it.
styleContainer uncompiled(styleContainer style) {
    style.styleData.compSections.reset();
    for (styleSection& section : style.styleData.sections)
        section.compiledcode.reset();
    return style;
}

/// What was written of a style, in the style as it is now; it may have been renamed in the list.
styleContainer withDraft(styleContainer style, const styleContainer& draft) {
    std::string name = std::move(style.styleData.name);
    takeEditorChanges(style, draft);
    style.styleData.name = std::move(name);
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
            drop(draft.uniqueID, version);
    }
    if (unsaved.empty()) return;
    const bool haveAllAPlace =
        std::ranges::all_of(unsaved, [this](const auto& draft) { return hasPlace(draft); });
    const int answer = machine.alerts.ask(questionAbout(unsaved, haveAllAPlace, "Not Now")).button;
    for (const styleContainer& draft : unsaved) {
        if (answer == restoreAnswer) restore(draft, version);
        if (answer == discardAnswer) drop(draft.uniqueID, version);
    }
}

std::optional<styleToEdit> DraftOffer::styleForEditing(std::int64_t id) {
    const auto style = machine.saves.styleForEditing(id);
    if (!style) return std::nullopt;
    const StyleDrafts::Version version = machine.drafts.next();
    // A save that is under way has a draft too.
    const auto draft = machine.saves.isSaving(id) ? std::nullopt : machine.drafts.find(id);
    if (!draft || !hasPlace(*draft) || !isUnsaved(*draft)) return styleToEdit{*style};
    const int answer = machine.alerts.ask(questionAbout({*draft}, true, "Cancel")).button;
    if (answer == restoreAnswer) return styleToEdit{withDraft(*style, *draft), true};
    if (answer != discardAnswer) return std::nullopt;
    drop(id, version);
    return styleToEdit{*style};
}

bool DraftOffer::isUnsaved(const styleContainer& draft) const {
    const auto stored = machine.store.findStyle(draft.uniqueID);
    return !stored || uncompiled(withDraft(*stored, draft)) != uncompiled(*stored);
}

bool DraftOffer::hasPlace(const styleContainer& draft) const {
    const auto stored = machine.store.findStyle(draft.uniqueID);
    return stored && stored->source == sourceCustom;
}

void DraftOffer::drop(std::int64_t id, StyleDrafts::Version version) {
    machine.dispatcher.inBackground(taskPriority::utility, [&drafts = machine.drafts, id, version] {
        drafts.drop(id, version);
    });
}

void DraftOffer::restore(const styleContainer& draft, StyleDrafts::Version version) {
    // One that has been opened meanwhile shows another text.
    if (!hasPlace(draft) || machine.openStyles.contains(draft.uniqueID))
        return restoreAsNew(draft, version);
    openInEditor({withDraft(*machine.store.findStyle(draft.uniqueID), draft), true});
}

void DraftOffer::restoreAsNew(const styleContainer& draft, StyleDrafts::Version version) {
    styleContainer style = draft;
    style.source = sourceCustom;
    style.isEnabled = false; // nobody has asked for it in pages
    style.uniqueID = machine.store.appendStyle(style);
    machine.store.saveDatabase();
    machine.center.post(notifications::addLatestStyle);
    machine.saves.save(style); // compiles it, with a draft of its own until it is stored
    if (style.uniqueID != draft.uniqueID)
        machine.dispatcher.inBackground(
            taskPriority::utility,
            [&store = machine.store, &drafts = machine.drafts, id = draft.uniqueID, version] {
                if (store.waitForSaves()) drafts.drop(id, version);
            });
    openInEditor({style});
}

void DraftOffer::openInEditor(const styleToEdit& opened) {
    openRegistered(machine.center, opened.style.uniqueID, [&] { return open && open(opened); });
}

} // namespace tessaril

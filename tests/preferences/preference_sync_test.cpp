#include "events/notification_names.h"
#include "preferences/change_announcement.h"
#include "preferences/preference_menus.h"
#include "preferences/preference_sync.h"
#include "support/captured_log.h"
#include "support/memory_files.h"
#include "support/stepped_dispatcher.h"
#include "support/test.h"

namespace tessaril {
namespace {

struct PreferenceSyncTest : ::testing::Test {
    PreferenceSyncTest() { registerPreferenceDefaults(standard, shared, 7, false); }

    NotificationCenter center;
    SteppedDispatcher dispatcher;
    MemoryPreferences standardStore, sharedStore;
    ChangeAnnouncement changes{center, dispatcher};
    Preferences standard{standardStore, [this] { changes.announce(); }};
    Preferences shared{sharedStore};
    PreferenceSync sync{standard, &shared, center, dispatcher};
};

TEST_F(PreferenceSyncTest, CollectsWhatTravelsDefaultsIncludedAndNothingElse) {
    standard.set("ACEWordWrap", false);
    standard.set("DefaultAuthor", "");
    standard.set("ACEShowGutter", false);
    const preferencesRecord standardFields = {
        {"ACEWordWrap", 0},     {"ACEFontSize", 12},         {"UpdateOnLaunch", 0},
        {"ACEShowErrors", 0},   {"DefaultAuthor", ""},       {"DefaultNamespace", "tessaril7"},
        {"Awesomeness", 0},     {"ACEAutocomplete", 1},      {"WarnIfDisabled", 1},
        {"WarnReadOnly", 1},    {"ACEFont", "ui-monospace"}, {"ACETheme", "light"},
        {"showEditorTitle", 1}, {"editorStyle", "unified"}};
    preferencesRecord record;
    PreferenceSync(standard, nullptr, center, dispatcher).collectPreferences(record);
    EXPECT_EQ(record, standardFields);
    sync.collectPreferences(record);
    EXPECT_EQ(record.at("toggleShortcut"), preferencesRecord::mapped_type(1));
    EXPECT_EQ(record.size(), 15U);
}

TEST_F(PreferenceSyncTest, AppliesWhatIsThereOnTheMainThreadThenAnnounces) {
    std::vector<std::string> themes;
    const auto subscription =
        center.observe(notifications::prefsChangedRemotely, [&](const notification&) {
            themes.push_back(standard.string("ACETheme"));
            EXPECT_FALSE(shared.boolean("toggleShortcut"));
        });
    CapturedLog log;
    sync.applyPreferences({{"WarnReadOnly", 0},
                           {"ACEFontSize", "12pt"},
                           {"DefaultNamespace", 5},
                           {"ACETheme", "nord"},
                           {"ACEShowGutter", 0},
                           {"unknown", 1},
                           {"toggleShortcut", 0}});
    EXPECT_EQ(log.take(), "Invalid type of a preference in the cloud: ACEFontSize\n"
                          "Invalid type of a preference in the cloud: DefaultNamespace\n");
    EXPECT_TRUE(standardStore.values.empty()) << "not before the main thread's turn";
    EXPECT_EQ(dispatcher.mainTasks.size(), 4U);
    dispatcher.runAll();
    EXPECT_EQ(standardStore.values,
              (decltype(standardStore.values){{"WarnReadOnly", false}, {"ACETheme", "nord"}}));
    EXPECT_EQ(themes, std::vector<std::string>{"nord"});

    PreferenceSync withoutShared(standard, nullptr, center, dispatcher);
    withoutShared.applyPreferences({{"toggleShortcut", 1}});
    dispatcher.runAll();
    EXPECT_EQ(sharedStore.values.at("toggleShortcut"), preferenceValue(false));
}

TEST_F(PreferenceSyncTest, SettingsInARowAreAnnouncedOnceAndLaterOnesAgain) {
    int announced = 0;
    const auto subscription =
        center.observe(notifications::preferencesDidChange, [&](const notification&) {
            // What an observer sets itself is announced anew.
            if (++announced == 1) standard.set("ACEFontSize", std::int64_t{13});
        });
    standard.set("ACETheme", "nord");
    standard.set("ACETheme", "blue");
    shared.set("InjectIframes", true);
    EXPECT_EQ(announced, 0);
    dispatcher.runAll();
    EXPECT_EQ(announced, 2);
}

TEST(PreferenceMenus, EveryPositionHasItsValueAndEveryValueAPositionThatCanBeChosen) {
    const char* themes[] = {"light",  "light", "blue", "tomorrow", "solarlight", "iplastic",
                            "chrome", "dark",  "dark", "dark",     "black",      "monokai",
                            "solar",  "green", "nord", "light"};
    for (int position = 0; position < 16; ++position)
        EXPECT_EQ(valueAt(themeMenu, position), themes[position]) << position;
    EXPECT_EQ(valueAt(themeMenu, -1), "light");
    EXPECT_EQ(valueAt(fontMenu, 4), "Cascadia Code");
    EXPECT_EQ(valueAt(fontMenu, 6), "Menlo");
    for (const valueMenu* menu : {&themeMenu, &fontMenu, &toolbarMenu}) {
        for (const menuEntry& entry : menu->entries) {
            const int position = positionOf(*menu, entry.value);
            EXPECT_EQ(valueAt(*menu, position), entry.value);
            EXPECT_FALSE(menu->entries[position].isSeparator()) << entry.value;
        }
        EXPECT_EQ(valueAt(*menu, positionOf(*menu, "unknown")), menu->otherValue);
    }
}

} // namespace
} // namespace tessaril

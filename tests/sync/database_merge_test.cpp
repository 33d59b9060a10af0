#include "support/sample_styles.h"
#include "support/test.h"
#include "sync/counterparts.h"
#include "sync/database_merge.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>

namespace tessaril {
namespace {

liveDatabase databaseOf(std::vector<styleContainer> styles, std::optional<date> modified) {
    return liveDatabaseFrom({.styles = std::move(styles), .dateModified = modified});
}

styleContainer styleOf(std::int64_t id, std::optional<date> modified, const std::string& name) {
    styleContainer style = namedStyle(name, id);
    style.source = sourceCustom;
    style.dateModified = modified;
    return style;
}

std::string namesOf(const liveDatabase::styleList& styles) {
    std::string names;
    for (const auto& style : styles)
        names += style->styleData.name + std::to_string(style->uniqueID) + " ";
    return names;
}

struct MergeTest : ::testing::Test {
    databaseMerge first(const liveDatabase& cloud, const liveDatabase& local) {
        return mergeFirstFetch(cloud, local, history).value();
    }
    syncHistory history{.lastSync = 100};
};

TEST_F(MergeTest, AtFirstTheLaterOfTwoCopiesStays) {
    const auto pair = [](std::optional<date> inCloud, std::optional<date> here) {
        styleContainer mine = styleOf(1, here, "a");
        styleContainer theirs = styleOf(1, inCloud, "a");
        mine.author = "here";
        theirs.author = "cloud";
        return std::pair(theirs, mine);
    };
    const auto kept = [&](std::optional<date> inCloud, std::optional<date> here,
                          std::optional<date> cloudDate, std::optional<date> localDate) {
        const auto [theirs, mine] = pair(inCloud, here);
        const auto merge = first(databaseOf({theirs}, cloudDate), databaseOf({mine}, localDate));
        EXPECT_THAT(merge.merged.styles, SizeIs(1));
        return merge.merged.styles[0]->author;
    };
    EXPECT_EQ(kept(2, 1, 1, 2), "cloud");
    EXPECT_EQ(kept(1, 2, 2, 1), "here");
    EXPECT_EQ(kept(1, 1, 1, 2), "cloud");
    EXPECT_EQ(kept({}, 1, 1, 2), "here") << "the databases decide";
    EXPECT_EQ(kept(1, {}, 2, 1), "cloud");
    EXPECT_EQ(kept({}, {}, 1, 1), "cloud");
    EXPECT_EQ(kept({}, {}, {}, 1), "cloud");
    EXPECT_EQ(kept({}, {}, 1, {}), "cloud");
}

TEST_F(MergeTest, WhatTheCloudLacksIsNewOrWasDeleted) {
    const auto fate = [&](std::optional<date> style, std::optional<date> cloudDate,
                          std::optional<date> localDate) {
        const auto merge = first(databaseOf({styleOf(1, 1, "c")}, cloudDate),
                                 databaseOf({styleOf(2, style, "x")}, localDate));
        return merge.merged.styles.size() == 2 ? "added"
               : merge.recovered.size() == 1   ? "recovered"
               : merge.dropped.size() == 1     ? "dropped"
                                               : "lost";
    };
    EXPECT_STREQ(fate(101, 3, 2), "added");
    EXPECT_STREQ(fate(100, {}, {}), "added");
    EXPECT_STREQ(fate(100, {}, 2), "recovered");
    EXPECT_STREQ(fate({}, 1, 2), "added");
    EXPECT_STREQ(fate(100, 2, 1), "dropped");
    EXPECT_STREQ(fate(100, 2, 2), "dropped");
    history.isFirst = true;
    EXPECT_STREQ(fate(100, 2, 1), "added");
    history = {};
    EXPECT_STREQ(fate(1, 2, 1), "added") << "never synced";
}

TEST_F(MergeTest, KnowsAStyleByItsOriginItsNumberItsDataOrItsName) {
    styleContainer download = styleOf(1, 1, "a");
    download.source = sourceUserCSS;
    download.downloadedFrom = "https://a.example/a.user.css";
    styleContainer updated = styleOf(2, 1, "b");
    updated.source = sourceUserCSS;
    updated.updateURL = "https://b.example/";
    styleContainer numbered = styleOf(3, 1, "c");
    numbered.userstyleID = 7;
    styleContainer written = styleOf(4, 1, "d");
    written.styleData.sections = {{.code = "d"}};
    styleContainer named = styleOf(5, 1, "e");
    const auto cloud = databaseOf({download, updated, numbered, written, named}, 1);
    for (styleContainer* style : {&download, &updated, &numbered}) {
        style->uniqueID += 10;
        style->styleData.name = "changed";
    }
    written.uniqueID += 10;
    for (styleContainer* style : {&download, &updated, &numbered, &written, &named})
        style->dateModified = 2;
    named.styleData.sections = {{.code = "changed"}};
    const auto local = databaseOf({named, written, numbered, updated, download}, 1);
    EXPECT_EQ(namesOf(first(cloud, local).merged.styles), "changed11 changed12 changed13 d14 e5 ");
    EXPECT_FALSE(mergeFirstFetch(cloud, cloud, history));

    // Files are from no address; that makes no two of them one.
    styleContainer file = styleOf(1, 1, "f");
    file.source = sourceUserCSS;
    file.updateURL = " ";
    styleContainer other = file;
    other.uniqueID = 2;
    other.styleData.name = "g";
    history.isFirst = true;
    EXPECT_EQ(namesOf(first(databaseOf({file}, 1), databaseOf({other}, 1)).merged.styles),
              "f1 g2 ");
}

TEST_F(MergeTest, CopiesOfOneStyleStayCopies) {
    styleContainer a = styleOf(1, 1, "a"), copy = styleOf(2, 5, "a");
    a.exclURL = {"only here"};
    const auto cloud = databaseOf({a, copy}, 1);
    styleContainer edited = a;
    edited.dateModified = 9;
    for (const auto& local : {databaseOf({edited, copy}, 1), databaseOf({copy, edited}, 1)}) {
        const auto merge = first(cloud, local);
        EXPECT_EQ(namesOf(merge.merged.styles), "a1 a2 ");
        EXPECT_EQ(merge.merged.styles[0]->dateModified, 9);
    }
    // An identifier that another style has is not given twice.
    history.isFirst = true;
    const auto merge =
        first(databaseOf({styleOf(1, 1, "x")}, 1), databaseOf({styleOf(1, 1, "y")}, 1));
    ASSERT_EQ(merge.merged.styles.size(), 2U);
    EXPECT_NE(merge.merged.styles[1]->uniqueID, 1);
    EXPECT_EQ(merge.merged.styles[1]->styleData.name, "y");
}

TEST_F(MergeTest, ARemoteChangeGoesByIdentifiersAlone) {
    const auto cloud = databaseOf({styleOf(1, 1, "new"), styleOf(2, 2, "theirs"),
                                   styleOf(3, 2, "older"), styleOf(4, {}, "undated"),
                                   styleOf(5, 2, "same date"), styleOf(6, 2, "no date here")},
                                  50);
    const auto local =
        databaseOf({styleOf(7, 9, "gone"), styleOf(6, {}, "x"), styleOf(5, 2, "x"),
                    styleOf(4, 1, "mine"), styleOf(3, 3, "mine"), styleOf(2, 1, "x")},
                   60);
    const databaseMerge merge = mergeRemoteChange(cloud, local);
    EXPECT_EQ(namesOf(merge.merged.styles), "new1 theirs2 mine3 mine4 same date5 no date here6 ");
    EXPECT_EQ(merge.merged.dateModified, 50);
    EXPECT_EQ(namesOf(merge.recovered), "gone7 ");
    EXPECT_THAT(merge.changed, ElementsAre(2, 7));
    EXPECT_EQ(merge.merged.styles[2], local.styles[4]) << "the same object, not encoded anew";
}

/// Databases of few names, identifiers and dates, so that styles meet in every way.
struct RandomDatabases {
    int draw(int below) { return std::uniform_int_distribution(0, below - 1)(numbers); }
    std::optional<date> drawDate() {
        return draw(4) == 0 ? std::nullopt : std::optional<date>(draw(6));
    }
    liveDatabase database() {
        std::vector<styleContainer> styles;
        for (int count = draw(7); count > 0; --count) {
            styleContainer style =
                styleOf(draw(6), drawDate(), std::string(1, char('a' + draw(3))));
            style.styleData.sections = {{.code = std::string(1, char('0' + draw(2)))}};
            if (draw(3) == 0) style.userstyleID = draw(2);
            if (draw(2) == 0) {
                style.source = sourceUserCSS;
                style.downloadedFrom = draw(2) == 0 ? "" : "x";
                if (draw(2) == 0) style.updateURL = draw(2) == 0 ? " " : "u";
            }
            styles.push_back(std::move(style));
        }
        return databaseOf(std::move(styles), drawDate());
    }

    std::mt19937 numbers{1};
};

std::map<std::int64_t, int> idsOf(const liveDatabase& database) {
    std::map<std::int64_t, int> counts;
    for (const auto& style : database.styles)
        ++counts[style->uniqueID];
    return counts;
}

TEST(MergePropertiesTest, HoldForAnyTwoDatabases) {
    RandomDatabases random;
    for (int round = 0; round < 3000; ++round) {
        SCOPED_TRACE(round);
        const liveDatabase cloud = random.database(), local = random.database();
        const syncHistory history{.lastSync = random.drawDate(), .isFirst = random.draw(2) == 0};
        const auto inCloud = idsOf(cloud), here = idsOf(local);

        if (const auto merge = mergeFirstFetch(cloud, local, history)) {
            const liveDatabase::styleList& styles = merge->merged.styles;
            ASSERT_GE(styles.size(), cloud.styles.size());
            for (std::size_t i = 0; i < cloud.styles.size(); ++i) {
                const bool isReplaced = *styles[i] != *cloud.styles[i];
                EXPECT_TRUE(!isReplaced ||
                            cloud.styles[i]->dateModified < styles[i]->dateModified ||
                            cloud.dateModified < local.dateModified);
            }
            // Each of this machine's had a counterpart, is at the end of the list, or was removed.
            const auto counterparts = findCloudCounterparts(cloud.styles, local.styles);
            const auto met = std::ranges::count_if(
                counterparts, [](const auto& position) { return position.has_value(); });
            EXPECT_EQ(styles.size() + merge->recovered.size() + merge->dropped.size() +
                          static_cast<std::size_t>(met),
                      cloud.styles.size() + local.styles.size());
            EXPECT_TRUE(!history.isFirst || (merge->recovered.empty() && merge->dropped.empty()));
            for (const auto& [id, count] : idsOf(merge->merged)) {
                const auto before = inCloud.find(id);
                EXPECT_LE(count, std::max(1, before == inCloud.end() ? 0 : before->second));
            }
            // Where each has an identifier of its own, the same styles in another order are the
            // same.
            liveDatabase turned = merge->merged;
            std::ranges::reverse(turned.styles);
            const auto again = mergeFirstFetch(merge->merged, turned, history);
            const bool areUnique = idsOf(turned).size() == styles.size();
            EXPECT_TRUE(!again || !areUnique || holdSameStyles(again->merged, merge->merged));
        }

        const databaseMerge remote = mergeRemoteChange(cloud, local);
        EXPECT_EQ(idsOf(remote.merged), inCloud);
        // Of several with one identifier, as many as the cloud has found their places.
        int gone = 0;
        for (const auto& [id, count] : here)
            gone += std::max(0, count - (inCloud.contains(id) ? inCloud.at(id) : 0));
        EXPECT_THAT(remote.recovered, SizeIs(gone));
        const databaseMerge again = mergeRemoteChange(remote.merged, remote.merged);
        EXPECT_TRUE(again.changed.empty() && again.recovered.empty());
        EXPECT_EQ(namesOf(again.merged.styles), namesOf(remote.merged.styles));
    }
}

} // namespace
} // namespace tessaril

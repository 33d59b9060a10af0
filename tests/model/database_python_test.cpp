#include "model/database_json.h"
#include "support/sample_styles.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>

namespace tessaril {
namespace {

/// Text of all kinds of characters, the awkward ones often.
std::string randomText(std::mt19937_64& random) {
    constexpr const char* pieces[] = {"a",      "\"",     "\\",         "/",      "\n", "\r\n",
                                      "\t",     "\x01",   "\x1f",       "\x7f",   "\b", "\f",
                                      "\u00e9", "\u2028", "\U0001F600", "\uffff", "<>", "\\u0041"};
    std::string text;
    for (auto size = random() % (random() % 20 ? 40 : 4000); size > 0; --size)
        text += pieces[random() % std::size(pieces)];
    return text;
}

} // namespace

// Another maker's strict reader sees the values that were written.
TEST(DatabaseJSON, meansTheSameToPython) {
    const testing::TemporaryFolder folder;
    std::mt19937_64 random(3);
    styleDatabase database;
    std::string expected;
    for (int i = 0; i < 500; ++i) {
        styleContainer style = testing::fullStyle(static_cast<std::int64_t>(random()));
        std::uint64_t bits = random();
        while (!std::isfinite(std::bit_cast<double>(bits)))
            bits = random();
        style.dateModified = std::bit_cast<double>(bits);
        const std::string name = style.styleData.name = randomText(random);
        const std::string code = style.styleData.sections[0].code = randomText(random);
        for (const std::string& text :
             {std::to_string(style.uniqueID), std::to_string(bits), name, code})
            expected.append(text).push_back('\0');
        database.styles.push_back(std::move(style));
    }
    testing::writeFile(folder / "document", *encodeDatabase(database));
    testing::writeFile(folder / "expected", expected);
    const std::string command = "python3 " TESSARIL_TESTS "/model/check_document.py " +
                                (folder / "document").string() + " " +
                                (folder / "expected").string();
    EXPECT_EQ(std::system(command.c_str()), 0);
}

} // namespace tessaril

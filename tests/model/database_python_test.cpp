#include "model/database_json.h"
#include "support/sample_styles.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <random>

namespace tessaril {

namespace {

/// Text of all kinds of characters, the awkward ones often.
std::string randomText(std::mt19937_64& random) {
    constexpr const char* pieces[] = {"a",      "\"",     "\\",         "/",      "\n", "\r\n",
                                      "\t",     "\x01",   "\x1f",       "\x7f",   "\b", "\f",
                                      "\u00e9", "\u2028", "\U0001F600", "\uffff", "<>", "\\u0041"};
    std::string text;
    for (auto size = random() % 40; size > 0; --size)
        text += pieces[random() % std::size(pieces)];
    return text;
}

double randomFinite(std::mt19937_64& random) {
    for (;;)
        if (const auto value = std::bit_cast<double>(random()); std::isfinite(value)) return value;
}

std::string hex(std::string_view bytes) {
    std::string result;
    for (const char c : bytes) {
        constexpr std::string_view digits = "0123456789abcdef";
        result += digits[static_cast<unsigned char>(c) >> 4];
        result += digits[static_cast<unsigned char>(c) & 15];
    }
    return result;
}

} // namespace

// Another maker's strict reader sees the values that were written.
TEST(DatabaseJSON, meansTheSameToPython) {
    const testing::TemporaryFolder folder;
    std::mt19937_64 random(3);
    styleDatabase database;
    std::ofstream expected(folder / "expected");
    for (int i = 0; i < 500; ++i) {
        styleContainer style = testing::fullStyle(static_cast<std::int64_t>(random()));
        style.styleData.name = randomText(random);
        style.styleData.sections[0].code = randomText(random);
        style.dateModified = randomFinite(random);
        expected << style.uniqueID << ' ' << std::bit_cast<std::uint64_t>(*style.dateModified)
                 << " n" << hex(style.styleData.name) << " c"
                 << hex(style.styleData.sections[0].code) << '\n';
        database.styles.push_back(std::move(style));
    }
    expected.close();
    std::ofstream(folder / "document") << *encodeDatabase(database);

    const std::string command = "python3 " TESSARIL_TESTS "/model/check_document.py " +
                                (folder / "document").string() + " " +
                                (folder / "expected").string();
    EXPECT_EQ(std::system(command.c_str()), 0);
}

} // namespace tessaril

#include "store/database_backups.h"

#include "model/log.h"
#include "model/style_container.h"
#include "model/text.h"

#include <algorithm>
#include <ctime>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

namespace tessaril {

namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::sys_seconds;

constexpr std::string_view namePrefix = "styledb-";
constexpr std::string_view nameSuffix = ".sdb";

constexpr std::size_t newestKept = 10;
constexpr std::size_t weeksKept = 26;

constexpr std::string_view failureLine = "Error backing up style database.";

/// The decimal number that `digits` are, at most nine of them; -1 for any other text.
int number(std::string_view digits) {
    if (digits.empty() || digits.size() > 9 ||
        digits.find_first_not_of("0123456789") != std::string_view::npos)
        return -1;
    return static_cast<int>(parseInteger(digits).value_or(-1));
}

/// A moment as `utcTimestamp` writes it.
std::optional<sys_seconds> momentOf(std::string_view text) {
    using namespace std::chrono;
    constexpr std::string_view form = "0000-00-00T000000Z";
    if (text.size() != form.size() || text[4] != '-' || text[7] != '-' || text[10] != 'T' ||
        text[17] != 'Z')
        return std::nullopt;
    const auto part = [text](std::size_t at, std::size_t size) {
        return number(text.substr(at, size));
    };
    const int hour = part(11, 2), minute = part(13, 2), second = part(15, 2);
    const year_month_day date(year(part(0, 4)), month(static_cast<unsigned>(part(5, 2))),
                              day(static_cast<unsigned>(part(8, 2))));
    if (part(0, 4) < 0 || !date.ok() || hour < 0 || hour > 23 || minute < 0 || minute > 59 ||
        second < 0 || second > 59)
        return std::nullopt;
    return sys_days(date) + hours(hour) + minutes(minute) + seconds(second);
}

/// Nothing for a file that does not have one of our names, letter for letter.
std::optional<databaseBackup> backupOf(const fileEntry& entry) {
    constexpr std::size_t momentSize = 18;
    const std::string name = entry.path.filename().string();
    if (name.size() < namePrefix.size() + momentSize) return std::nullopt;
    const auto made = momentOf(std::string_view(name).substr(namePrefix.size(), momentSize));
    if (!made) return std::nullopt;
    const auto rest = std::string_view(name).substr(namePrefix.size() + momentSize);
    int numberOfName = 1;
    if (rest.starts_with('_') && rest.ends_with(nameSuffix))
        numberOfName = number(rest.substr(1, rest.size() - 1 - nameSuffix.size()));
    if (numberOfName < 1 || name != backupName(*made, numberOfName)) return std::nullopt;
    return databaseBackup{entry.path, *made, numberOfName, entry.size};
}

/// The day of the machine's calendar, as if it were one of UTC.
sys_days localDay(sys_seconds moment) {
    using namespace std::chrono;
    const std::time_t time = system_clock::to_time_t(moment);
    std::tm local{};
    localtime_r(&time, &local);
    return year(local.tm_year + 1900) / month(static_cast<unsigned>(local.tm_mon + 1)) /
           day(static_cast<unsigned>(local.tm_mday));
}

/// The Monday of the moment's week, which tells it from every other week.
sys_days weekOf(sys_seconds moment) {
    const auto day = std::chrono::floor<days>(moment);
    return day - (std::chrono::weekday(day) - std::chrono::Monday);
}

void sortNewestFirst(std::vector<databaseBackup>& backups) {
    std::ranges::sort(backups, [](const auto& a, const auto& b) {
        return std::tie(a.made, a.number) > std::tie(b.made, b.number);
    });
}

} // namespace

std::filesystem::path backupFolderOf(const std::filesystem::path& container) {
    return container / "backups";
}

// '_' sorts behind the '.' of the first one of a second.
std::string backupName(std::chrono::sys_seconds made, int number) {
    return std::string(namePrefix) + utcTimestamp(made) +
           (number == 1 ? "" : "_" + std::to_string(number)) + std::string(nameSuffix);
}

std::vector<databaseBackup> backupsToRemove(std::vector<databaseBackup> backups, sys_seconds now) {
    std::erase_if(backups, [now](const databaseBackup& each) { return each.made > now; });
    sortNewestFirst(backups);
    if (backups.size() <= newestKept) return {};
    std::set<sys_days> weeks;
    std::vector<databaseBackup> removed;
    for (auto each = backups.begin() + newestKept; each != backups.end(); ++each)
        if (weeks.size() == weeksKept || !weeks.insert(weekOf(each->made)).second)
            removed.push_back(std::move(*each));
    return removed;
}

DatabaseBackups::DatabaseBackups(FileSystem& fileSystem, std::filesystem::path backupFolder,
                                 std::filesystem::path documentPath, Clock ownClock)
    : files(fileSystem)
    , folder(std::move(backupFolder))
    , document(std::move(documentPath))
    , clock(std::move(ownClock)) {}

std::vector<databaseBackup> DatabaseBackups::list() const {
    std::vector<databaseBackup> found;
    for (const fileEntry& entry : files.list(folder))
        if (auto backup = backupOf(entry)) found.push_back(std::move(*backup));
    sortNewestFirst(found);
    return found;
}

bool DatabaseBackups::keep() {
    const std::lock_guard lock(mutex);
    return keepAt(clock());
}

void DatabaseBackups::keepOnceADay() {
    const std::lock_guard lock(mutex);
    const sys_seconds now = clock();
    const sys_days today = localDay(now);
    if (lastDay == today) return;
    // Any of today, not the newest alone: a clock may have run ahead and been set back.
    const bool isDone = std::ranges::any_of(
        list(), [today](const databaseBackup& each) { return localDay(each.made) == today; });
    // After a failure the next save tries again.
    if (isDone || keepAt(now)) lastDay = today;
}

bool DatabaseBackups::keepAt(sys_seconds now) {
    if (!files.exists(document)) return true;
    const std::vector<databaseBackup> known = list();
    const auto newest =
        std::ranges::find_if(known, [now](const auto& each) { return each.made <= now; });
    if (newest != known.end() && files.haveSameContent(document, newest->file)) return true;

    // Behind those of this second, even where earlier ones of it are gone.
    int number = newest != known.end() && newest->made == now ? newest->number + 1 : 1;
    while (files.exists(folder / backupName(now, number)))
        ++number;
    // A name that is taken meanwhile is not overwritten.
    if (!files.keepCopy(document, folder / backupName(now, number))) {
        logLine(failureLine);
        return false;
    }
    for (const databaseBackup& each : backupsToRemove(list(), now))
        files.remove(each.file);
    return true;
}

std::chrono::sys_seconds systemSeconds() {
    using namespace std::chrono;
    return floor<seconds>(system_clock::now());
}

} // namespace tessaril

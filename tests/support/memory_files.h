#pragma once

#include "platform/file_system.h"
#include "platform/message_channel.h"
#include "platform/preference_store.h"

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace tessaril::testing {

/// Files in memory that fail where the test says so, and a journal of what became visible when.
struct MemoryFiles : FileSystem {
    using moment = std::chrono::system_clock::time_point;

    bool exists(const std::filesystem::path& path) const override {
        const std::lock_guard lock(mutex);
        return contents.contains(path) || unreadable.contains(path);
    }

    std::optional<std::string> read(const std::filesystem::path& path) const override {
        const std::lock_guard lock(mutex);
        if (unreadable.contains(path) || !contents.contains(path)) return std::nullopt;
        return contents.at(path);
    }

    std::unique_ptr<StagedFile> stage(const std::filesystem::path&,
                                      std::span<const std::string_view> pieces) override {
        const std::lock_guard lock(mutex);
        if (full) return nullptr;
        ++filesWritten;
        return std::make_unique<Staged>(*this, joined(pieces));
    }

    bool overwrite(const std::filesystem::path& path, std::string_view bytes) override {
        return !full && publish(path, std::string(bytes));
    }

    bool keep(const std::filesystem::path& path, const std::filesystem::path& keptPath) override {
        const std::lock_guard lock(mutex);
        return !full && contents.try_emplace(keptPath, contents[path]).second;
    }

    bool keepCopy(const std::filesystem::path& path,
                  const std::filesystem::path& copyPath) override {
        const std::lock_guard lock(mutex);
        return !full && !readOnly.contains(copyPath.parent_path()) && contents.contains(path) &&
               contents.try_emplace(copyPath, contents.at(path)).second;
    }

    bool haveSameContent(const std::filesystem::path& a,
                         const std::filesystem::path& b) const override {
        const auto bytes = read(a);
        return bytes && bytes == read(b);
    }

    std::vector<fileEntry> list(const std::filesystem::path& folder) const override {
        const std::lock_guard lock(mutex);
        std::vector<fileEntry> found;
        for (const auto& [path, bytes] : contents) {
            const auto written = times.find(path);
            if (path.parent_path() == folder)
                found.push_back(
                    {path, bytes.size(), written == times.end() ? moment{} : written->second});
        }
        return found;
    }

    void remove(const std::filesystem::path& path) override {
        const std::lock_guard lock(mutex);
        contents.erase(path);
    }

    void touch(const std::filesystem::path& path) override {
        const std::lock_guard lock(mutex);
        if (contents.contains(path)) times[path] = now;
    }

    static std::string joined(std::span<const std::string_view> pieces) {
        std::string bytes;
        for (const std::string_view piece : pieces)
            bytes += piece;
        return bytes;
    }

    bool publish(const std::filesystem::path& path, const std::string& bytes) {
        const std::lock_guard lock(mutex);
        if (readOnly.contains(path)) return false;
        contents[path] = bytes;
        times[path] = now;
        journal.push_back("wrote " + path.filename().string());
        return true;
    }

    std::map<std::filesystem::path, std::string> contents;
    std::set<std::filesystem::path> unreadable; ///< exist, but reading them fails
    std::set<std::filesystem::path> readOnly;   ///< cannot be written, nor what is kept in them
    bool full = false;                          ///< nothing can be written
    int filesWritten = 0;
    moment now; ///< when what is written is written
    std::map<std::filesystem::path, moment> times;
    std::vector<std::string> journal;
    mutable std::mutex mutex;

private:
    struct Staged : StagedFile {
        Staged(MemoryFiles& owner, std::string content) : files(owner), bytes(std::move(content)) {}
        bool publishAs(const std::filesystem::path& path) override {
            return files.publish(path, bytes);
        }
        MemoryFiles& files;
        std::string bytes;
    };
};

/// A channel whose messages are files of a folder, as on the machine.
struct MemoryChannel : MessageChannel {
    explicit MemoryChannel(MemoryFiles& ownFiles) : files(ownFiles) {}

    bool send(std::string_view identifier, std::span<const std::string_view> pieces) override {
        return files.publish(folder / identifier, MemoryFiles::joined(pieces));
    }
    bool send(std::string_view identifier, StagedFile& payload) override {
        return payload.publishAs(folder / identifier);
    }
    MemoryFiles& files;
    const std::filesystem::path folder = "wormhole";
};

/// Stored preferences in memory.
struct MemoryPreferences : PreferenceStore {
    std::optional<preferenceValue> value(std::string_view key,
                                         const preferenceValue& like) const override {
        const auto found = values.find(key);
        if (found == values.end() || found->second.index() != like.index()) return std::nullopt;
        return found->second;
    }
    void setValue(std::string_view key, const preferenceValue& value) override {
        values.insert_or_assign(std::string(key), value);
    }
    void removeValue(std::string_view key) override { values.erase(std::string(key)); }
    std::map<std::string, preferenceValue, std::less<>> values;
};

} // namespace tessaril::testing

#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tessaril {

/// A user has at most one record of a type and a name. Both are ASCII.
struct recordID {
    std::string type;
    std::string name;

    auto operator<=>(const recordID&) const = default;
};

/// By their names. Texts are UTF-8.
using recordFields = std::map<std::string, std::variant<std::int64_t, std::string>, std::less<>>;

/// A record of the user's private database. It travels whole, so what it holds of other programs'
/// fields is kept.
struct cloudRecord {
    recordID id;
    recordFields fields;
    /// The bytes of the one file that a record may carry; null for none.
    std::shared_ptr<const std::string> file;
    /// Which state of the record on the server this is: the one that was fetched or saved last.
    /// Drawn at random by every save, so that no two states share a tag, whichever server they are
    /// on. Empty for a record that has been neither fetched nor saved.
    std::string changeTag;
};

enum class recordErrorCode {
    unreachable = 1, ///< no connection to the server, or it was lost: what was asked for may have
                     ///< been done or not
    timedOut = 2,    ///< the same, after the time that an operation has
    changed = 3,     ///< of a save: the server's record is in another state than the one saved
    failed = 4,      ///< the server refused, or holds what cannot be read
    notAuthenticated = 9,
};

struct recordError {
    recordErrorCode code;
    std::string text; ///< for the log; holds no password
};

enum class accountStatus { available, notAvailable };

struct recordFetch {
    /// Those of the records that the server has; nothing where they could not be asked for, which
    /// is another thing than none.
    std::optional<std::map<recordID, cloudRecord>> records;
    std::optional<recordError> error;
};

struct recordSave {
    std::optional<recordError> error; ///< where it is set, nothing is known to have been saved
    /// The tag that the record has from now on, of each record in the order in which they were
    /// given: what a later save of the caller's copy must carry.
    std::vector<std::string> changeTags;
};

/// The user's records on a server that their machines share.
///
/// Every operation returns at once and answers exactly once, on a thread of the store's own, within
/// ten seconds, by an error if need be; operations of one caller are carried out one after another,
/// but for a subscription, which holds up nothing that is begun after it.
/// Safe to use from any thread. A handler may begin other operations, and must not wait for them.
class RecordStore {
public:
    using AccountHandler = std::function<void(accountStatus)>;
    using FetchHandler = std::function<void(const recordFetch&)>;
    using SaveHandler = std::function<void(const recordSave&)>;
    using DoneHandler = std::function<void(const std::optional<recordError>&)>;

    virtual ~RecordStore() = default;

    /// Whether an account is set up on this machine; asks no server.
    virtual void askAccountStatus(AccountHandler answer) = 0;

    virtual void fetchRecords(std::vector<recordID> ids, FetchHandler answer) = 0;

    /// Saves the records, all or none. A record whose tag is not that of the server's record fails
    /// as `changed`: also one without a tag where there is a record, and one with a tag where there
    /// is none.
    virtual void modifyRecords(std::vector<cloudRecord> records, SaveHandler answer) = 0;

    /// The same for one record.
    virtual void saveRecord(cloudRecord record, SaveHandler answer) = 0;

    /// Has the change handler called, until `finish`, whenever another of the user's machines has
    /// made or changed a record of the type. Several may be saved for one type; the handler is
    /// called once a change all the same. A change that happened while the connection was lost is
    /// told of when it is made again.
    virtual void saveSubscription(std::string_view recordType, DoneHandler answer) = 0;

    /// Set before the first subscription is saved. Runs on a thread of the store's own.
    virtual void setChangeHandler(std::function<void()> handler) = 0;

    /// Lets the operations under way end, a few seconds at most, and answers the others with
    /// `unreachable`. When it returns, no handler runs, and none will; for quitting.
    virtual void finish() = 0;
};

} // namespace tessaril

#include "records/change_listening.h"

namespace tessaril {

recordError listenToPostgres(ChangeListening& listening, const recordAddress& address,
                             const PasswordSource& passwords,
                             std::chrono::milliseconds operationTime) {
    const TimeLimit beginning(TimeLimit::Clock::now() + operationTime, listening.stopSignal());
    const auto opened = PostgresConnection::open(address, passwords, beginning, operationTime);
    if (const auto* error = std::get_if<recordError>(&opened)) return *error;
    PostgresConnection& connection = *std::get<0>(opened);
    if (auto error = connection.listen(beginning)) return *error;
    listening.tellBegun();

    const TimeLimit endless(TimeLimit::Clock::time_point::max(), listening.stopSignal());
    for (;;) {
        const auto received = connection.nextAnnouncement(endless);
        if (const auto* error = std::get_if<recordError>(&received)) return *error;
        const announcement told = parseAnnouncement(std::get<std::string>(received));
        if (told.sender != listening.ownName() && listening.isAskedFor(told.recordType))
            listening.tellNews();
    }
}

} // namespace tessaril

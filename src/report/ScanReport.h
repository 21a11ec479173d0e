#pragma once

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <nlohmann/json.hpp>
#include <stop_token>
#include <string>

namespace salvor {

class ScanState;
struct DeviceInfo;

/// Ends a report that is being written, and tells how many of its rows, conversations among them,
/// are written. Called on the thread that writes.
struct WritingReport {
    std::stop_token stop;
    std::function<void(std::size_t done, std::size_t total)> progress;
};

/// The result of a scan as JSON: when and of what it was made, device, source, what could be read
/// of its databases, counts, live and deleted lists, conversations and status texts. Keys inside a
/// record are the record's own field names, an absent text is null, a carved record has an "origin"
/// object, a deleted one the serial number of the live row that is the same in "alsoLive". Back
/// references are written as the `ChatId` of the conversation (a WhatsApp partner's as its JID),
/// the contact inside a call as its `FullName`.
class ScanReport {
  public:
    /// Grows with every change of shape.
    static constexpr int kFormat = 1;

    /// The fields of a device description.
    static nlohmann::ordered_json device(const DeviceInfo& device);
    /// Writes the whole report, one record a line, ended by a line feed. It passes through a small
    /// buffer, so that a large scan needs no second copy of itself in memory. False when the stream
    /// failed or the writing was stopped.
    static bool write(const ScanState& state, std::ostream& out, const WritingReport& watch = {});
    /// What `write` writes.
    static std::string text(const ScanState& state);
};

}  // namespace salvor

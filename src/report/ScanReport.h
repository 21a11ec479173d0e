#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace salvor {

class ScanState;
struct DeviceInfo;

/// The result of a scan as JSON: device, source, counts, live and deleted lists, conversations and
/// status texts. Keys inside a record are the record's own field names, an absent text is null, a
/// carved record has an "origin" object. Back references are written as the `ChatId` of the
/// conversation (a WhatsApp partner's as its JID), the contact inside a call as its `FullName`.
class ScanReport {
  public:
    /// The fields of a device description.
    static nlohmann::ordered_json device(const DeviceInfo& device);
    /// The whole report as text, one record a line, ended by a line feed. Records are turned into
    /// JSON one at a time, so that a large scan needs no second copy of itself in memory.
    static std::string text(const ScanState& state);
};

}  // namespace salvor

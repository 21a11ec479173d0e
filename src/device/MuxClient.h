#pragma once

#include <cstdint>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "device/AMDStatus.h"
#include "device/AttachedDevice.h"
#include "device/ByteLink.h"
#include "device/DeviceLimits.h"
#include "device/PairRecord.h"
#include "device/RequestList.h"
#include "util/PropertyList.h"

namespace salvor {

/// Speaks to the multiplexer daemon, over a connection of its own for each request. The daemon is
/// not trusted to answer: its answer is bounded in time and size, and read as a hostile property
/// list. The multiplexer's own library is not used, since its calls wait without an end, read
/// whatever length is announced and cannot be interrupted. Beside the named statuses every
/// operation may answer `kAMDNoDaemon`, `kAMDDaemonSilent`, `kAMDDaemonUnreadable` and
/// `kAMDCancelled`.
///
/// A packet is four numbers of four bytes, the lowest byte first (its length, version 1, kind 8 for
/// a property list, a tag that the answer repeats), and an XML property list.
class MuxClient {
  public:
    MuxClient(const DeviceLimits& limits, std::stop_token stop)
        : limits_(limits), stop_(std::move(stop)) {}

    /// What is attached now.
    AMDStatus listDevices(std::vector<AttachedDevice>& devices) const;
    /// The record that the daemon keeps for the device; `kAMDMissingPairRecord` when it keeps none
    /// or a damaged one.
    AMDStatus readPairRecord(const std::string& udid, PairRecord& record) const;
    /// A link to a port of the device; `kAMDNotConnected` when the daemon cannot reach it,
    /// `kAMDTimedOut` when it does not come to know that.
    AMDStatus connect(std::uint32_t handle, std::uint16_t port,
                      std::unique_ptr<ByteLink>& link) const;

    /// Reads the answer to one request, of at most `mostBytes`; `kAMDInvalidAnswer` when it is
    /// none.
    static AMDStatus receiveAnswer(ByteLink& link, std::size_t mostBytes,
                                   ByteLink::Deadline deadline, PropertyList& answer);
    /// The devices that an answer lists, at most `kMostDevices`.
    static std::vector<AttachedDevice> devicesIn(const PropertyList& answer);
    static constexpr std::size_t kMostDevices = 256;

  private:
    AMDStatus ask(RequestValues request, PropertyList& answer,
                  std::unique_ptr<ByteLink>& link) const;

    DeviceLimits limits_;
    std::stop_token stop_;
};

}  // namespace salvor

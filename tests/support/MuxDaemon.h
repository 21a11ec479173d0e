#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/Socket.h"
#include "tests/support/StandInDevice.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/PropertyList.h"
#include "util/PropertyList.h"

namespace salvor {

/// A stand-in for the multiplexer daemon: lists devices, keeps pair records and connects to the
/// devices' lockdown service. As long as it lives, clients find it through the variable
/// USBMUXD_SOCKET_ADDRESS. It runs from the beginning.
class MuxDaemon {
  public:
    MuxDaemon();
    MuxDaemon(const MuxDaemon&) = delete;
    MuxDaemon& operator=(const MuxDaemon&) = delete;
    ~MuxDaemon();

    void start();
    /// Hangs up on everybody and takes the socket away.
    void stop();
    /// Answers whoever connects from now on like this, and listens no more; without any it is
    /// itself.
    void meetWith(std::optional<DeviceFault> fault);

    /// `id` is the daemon's own number for the device, not 0. It has the pair record of one that
    /// trusts this computer.
    void plugIn(std::uint32_t id, const std::shared_ptr<StandInDevice>& device);
    /// Hangs up on whoever speaks to it.
    void pullOut(std::uint32_t id);
    void keepPairRecord(const std::string& udid, const std::string& record);
    /// How many have connected so far.
    int clients() const;

  private:
    void acceptClients();
    void meet(const std::shared_ptr<Socket>& client);
    void serve(const std::shared_ptr<Socket>& client);
    std::string answerTo(std::uint32_t tag, const PropertyList& request);
    std::vector<PropertyListDictionary> deviceList() const;
    std::shared_ptr<StandInDevice> connect(const std::shared_ptr<Socket>& client,
                                           const PropertyList& request);

    TempFolder folder_{"salvor-mux"};
    mutable std::mutex mutex_;
    std::optional<DeviceFault> fault_;
    int clientCount_ = 0;
    std::map<std::uint32_t, std::shared_ptr<StandInDevice>> devices_;
    std::map<std::string, std::string> pairRecords_;
    /// With the device that each speaks to, 0 for none.
    std::map<std::shared_ptr<Socket>, std::uint32_t> clients_;
    std::unique_ptr<Socket> listening_;
    std::thread accepting_;
    std::vector<std::thread> serving_;
};

}  // namespace salvor

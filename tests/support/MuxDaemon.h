#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/Socket.h"
#include "tests/support/StandInDevice.h"
#include "tests/support/TempFolder.h"
#include "tools/sample/PropertyList.h"
#include "util/PropertyList.h"

namespace salvor {

/// How the daemon meets whoever connects.
enum class DaemonManner {
    Honest,
    Garbage,      ///< bytes of no sense, then it hangs up
    HangsUp,      ///< at once
    HugeLength,   ///< a packet of 4 GiB that ends after a few bytes
    SmallLength,  ///< a packet shorter than its own head
    NoList,       ///< a packet whose property list breaks off
};

/// A stand-in for the multiplexer daemon, on a socket of its own that clients find through the
/// variable USBMUXD_SOCKET_ADDRESS: tells of devices plugged in and out, keeps pair records and
/// connects to the devices' lockdown service.
class MuxDaemon {
  public:
    explicit MuxDaemon(DaemonManner manner = DaemonManner::Honest);
    MuxDaemon(const MuxDaemon&) = delete;
    MuxDaemon& operator=(const MuxDaemon&) = delete;
    ~MuxDaemon() { stop(); }

    /// The value for the variable.
    std::string address() const;
    void start();
    /// Hangs up on everybody and takes the socket away.
    void stop();
    void meetWith(DaemonManner manner);

    /// `id` is the daemon's own number for the device.
    void plugIn(std::uint32_t id, std::shared_ptr<StandInDevice> device,
                const std::string& connection = "USB");
    /// Tells so also of a device that was never plugged in.
    void pullOut(std::uint32_t id);
    void keepPairRecord(const std::string& udid, const std::string& record);
    int clients() const;

  private:
    struct Plugged {
        std::shared_ptr<StandInDevice> device;
        std::string connection;
    };
    struct Packet;

    void acceptClients(const Socket& listening);
    void meet(const std::shared_ptr<Socket>& client);
    void serve(const std::shared_ptr<Socket>& client);
    bool answer(const std::shared_ptr<Socket>& client, const Packet& packet);
    bool listen(const std::shared_ptr<Socket>& client, std::uint32_t tag);
    bool readPairRecord(const Socket& client, const Packet& packet);
    bool connect(const Socket& client, const Packet& packet);
    std::string attached(std::uint32_t id, const Plugged& plugged) const;
    PropertyListDictionary attachedList(std::uint32_t id, const Plugged& plugged) const;
    void tell(const std::string& packet);

    TempFolder folder_;
    mutable std::mutex mutex_;
    DaemonManner manner_;
    int clientCount_ = 0;
    std::map<std::uint32_t, Plugged> devices_;
    std::map<std::string, std::string> pairRecords_;
    std::vector<std::weak_ptr<Socket>> clients_;
    std::vector<std::weak_ptr<Socket>> listeners_;
    std::map<const Socket*, std::uint32_t> connectedTo_;
    std::shared_ptr<Socket> listening_;
    std::thread accepting_;
    std::vector<std::thread> serving_;
};

}  // namespace salvor

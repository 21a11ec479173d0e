#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/Socket.h"
#include "tools/sample/PropertyList.h"
#include "util/PropertyList.h"

namespace salvor {

/// A property list as the lockdown service sends it: behind its length.
std::string framed(const std::string& list);

/// How a device or the daemon answers a request wrongly.
struct DeviceFault {
    std::optional<std::string> bytes;      ///< instead of the right answer
    bool hangsUp = false;                  ///< afterwards; otherwise it waits for the next request
    std::chrono::milliseconds before{0};   ///< before the first byte
    std::chrono::milliseconds between{0};  ///< the bytes come singly, with this pause
};

/// Sends the wrong answer, or the right one wrongly; false when the link ends with it.
bool sendWrongly(Socket& link, const DeviceFault& fault, const std::string& right);

/// A device's lockdown service as the tests need it: who it is, sessions in the clear and
/// encrypted, values by domain and key, pairing. Set it up before it is plugged in.
class StandInDevice {
  public:
    StandInDevice(std::string identifier, const std::string& name);

    std::string udid;
    std::string connection = "USB";  ///< to the daemon; "Network" is the other one
    /// By key, or by "domain/key".
    std::map<std::string, std::string> values;
    /// What it tells outside a session.
    std::set<std::string> openValues{"DeviceName", "UniqueDeviceID", "DevicePublicKey"};
    bool encrypted = false;
    bool onlyTls1 = false;
    /// The computer that it trusts, "" for none.
    std::string hostID = "HOST";
    std::string hostCertificate = hostIdentity().certificate;
    /// The errors that it answers with, by request.
    std::map<std::string, std::string> errors;
    /// By request, or by "GetValue key"; "Connect" is the daemon's answer about it.
    std::map<std::string, DeviceFault> faults;

    const DeviceFault* faultAt(const std::string& request) const;

    /// What the trusted computer keeps of it, an XML property list, with its own key or another.
    std::string pairRecord(const std::string& key = hostIdentity().privateKey) const;
    /// Serves a computer until it goes.
    void serve(Socket& link);
    /// What was asked so far: "Request", "GetValue domain/key".
    std::vector<std::string> requests() const;

  private:
    /// One computer's connection to the service.
    struct Talk {
        Socket& link;
        std::string session;
    };
    bool answerOne(Talk& talk);
    PropertyListDictionary answerTo(const PropertyList& request, Talk& talk);
    void getValue(const PropertyList& request, const Talk& talk, PropertyListDictionary& reply);
    void startSession(const PropertyList& request, Talk& talk, PropertyListDictionary& reply);

    mutable std::mutex mutex_;  ///< for what several connections change
    std::vector<std::string> requests_;
    int sessions_ = 0;
};

}  // namespace salvor

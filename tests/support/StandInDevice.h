#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "tests/support/ServiceLink.h"
#include "tools/sample/PropertyList.h"
#include "util/PropertyList.h"

namespace salvor {

/// How a device answers a request wrongly.
enum class DeviceFault {
    HangsUp,           ///< instead of an answer
    HangsUpInLength,   ///< after two bytes of the length
    HangsUpInAnswer,   ///< in its middle
    Garbage,           ///< right length, no property list
    HugeLength,        ///< 4 GiB, and then nothing
    FloodsHugeLength,  ///< 4 GiB, and as much of it as is taken
    Truncated,         ///< a property list that breaks off
    NoDictionary,      ///< a property list of another kind
    OtherRequest,      ///< the answer to nothing that was asked
    DripFed,           ///< a byte now and then
    Late,              ///< right, after `lateness`
    Silent,            ///< never
};

/// A device's lockdown service as the tests need it: who it is, sessions in the clear and
/// encrypted, values by domain and key, pairing. Set it up before it is plugged in.
class StandInDevice {
  public:
    struct Data {
        std::string bytes;
    };
    using Value = std::variant<std::string, bool, Data>;

    StandInDevice(std::string identifier, const std::string& name);

    std::string udid;
    /// By key, or by "domain/key".
    std::map<std::string, Value> values;
    /// What it tells outside a session.
    std::set<std::string> openValues{"DeviceName", "UniqueDeviceID", "DevicePublicKey"};
    bool encrypted = false;
    bool onlyTls1 = false;
    /// The computer that it trusts, "" for none.
    std::string hostID = "HOST";
    std::string hostCertificate = hostIdentity().certificate;
    /// The errors that it answers with, by request.
    std::map<std::string, std::string> errors;
    /// By request, or by "GetValue key".
    std::map<std::string, DeviceFault> faults;
    std::chrono::milliseconds lateness{0};

    /// What the trusted computer keeps of it, an XML property list.
    std::string pairRecord() const;
    /// Serves a computer until it goes.
    void serve(const Socket& socket);
    /// What was asked so far: "Request", "GetValue domain/key".
    std::vector<std::string> requests() const;
    int connections() const;

  private:
    struct Talk;
    bool answerOne(Talk& talk);
    bool answer(Talk& talk, const PropertyList& request, PropertyListDictionary& reply);
    void getValue(const Talk& talk, const PropertyList& request, PropertyListDictionary& reply);
    void startSession(Talk& talk, const PropertyList& request, PropertyListDictionary& reply);
    void pair(const PropertyList& request);

    mutable std::mutex mutex_;  ///< for what several connections change
    std::vector<std::string> requests_;
    int connections_ = 0;
};

}  // namespace salvor

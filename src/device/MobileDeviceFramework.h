#pragma once

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string_view>
#include <vector>

#include "device/AMDStatus.h"
#include "device/AttachedDevice.h"
#include "device/RunLoop.h"
#include "util/PropertyList.h"

namespace salvor {

/// A device as the framework knows it, from its arrival to its removal; 0 is none.
using AMDeviceRef = std::uint64_t;
using AMDeviceNotificationRef = std::uint64_t;

/// What has happened to a device.
enum class AMDeviceMessage : std::uint32_t { Connected = 1, Disconnected = 2, Unsubscribed = 3 };

struct AMDeviceNotificationInfo {
    AMDeviceRef device = 0;
    AMDeviceMessage message = AMDeviceMessage::Connected;
};

using AMDeviceNotificationCallback = void (*)(const AMDeviceNotificationInfo&, void* context);

/// One property-list value of a device, or all values of a domain.
class AMDeviceValue {
  public:
    /// `answer` holds the value under "Value".
    explicit AMDeviceValue(const PropertyList& answer)
        : text_(answer.scalar("Value")),
          truth_(answer.boolean("Value").value_or(false)),
          dictionary_(answer.dictionary("Value")) {}
    /// A value that is known without the device.
    explicit AMDeviceValue(std::string_view text) : text_(text) {}

    /// A text, or a number in decimal digits.
    const Text& text() const { return text_; }
    /// Whether it is true, as far as it is a boolean or can be taken for one.
    bool truth() const { return truth_; }
    const PropertyList& dictionary() const { return dictionary_; }

  private:
    Text text_;
    bool truth_ = false;
    PropertyList dictionary_;
};

inline Text textOf(const std::optional<AMDeviceValue>& value) {
    return value ? value->text() : std::nullopt;
}

/// The operations of the platform's device framework that Salvor needs, under their own names. All
/// are called on one thread, the one that runs `runLoop`; notifications are delivered there. While
/// that thread waits for others, each of these may deal with a device of its own.
class MobileDeviceFramework {
  public:
    MobileDeviceFramework() = default;
    MobileDeviceFramework(const MobileDeviceFramework&) = delete;
    MobileDeviceFramework& operator=(const MobileDeviceFramework&) = delete;
    virtual ~MobileDeviceFramework() = default;

    /// Calls `callback` with `context` for every arrival and removal from now on, as long as the
    /// framework lives; devices that are there already arrive first. The two zeros belong to the
    /// framework's form.
    virtual AMDStatus AMDeviceNotificationSubscribe(AMDeviceNotificationCallback callback,
                                                    std::uint32_t zero, std::uint32_t otherZero,
                                                    void* context,
                                                    AMDeviceNotificationRef* notification) = 0;
    virtual AMDStatus AMDeviceConnect(AMDeviceRef device) = 0;
    virtual AMDStatus AMDeviceDisconnect(AMDeviceRef device) = 0;
    virtual AMDStatus AMDeviceStartSession(AMDeviceRef device) = 0;
    virtual AMDStatus AMDeviceStopSession(AMDeviceRef device) = 0;
    /// A value of the default domain when `domain` is null; all values when `key` is null. Nothing
    /// when the device has none or does not answer.
    virtual std::optional<AMDeviceValue> AMDeviceCopyValue(AMDeviceRef device, const char* domain,
                                                           const char* key) = 0;

    /// What the platform says is attached now, over the network too.
    virtual AMDStatus listDevices(std::vector<AttachedDevice>& devices) = 0;
    /// How the platform lists the device; empty for one that is not known.
    virtual AttachedDevice attachedAs(AMDeviceRef device) = 0;

    /// Operations that wait for a device end soon after `stop` is asked for.
    virtual void endWith(std::stop_token stop) = 0;

    RunLoop& runLoop() { return runLoop_; }

  private:
    RunLoop runLoop_;
};

}  // namespace salvor

#include "device/Pairing.h"

#include <libimobiledevice/libimobiledevice.h>
#include <libimobiledevice/lockdown.h>

namespace salvor {
namespace {

AMDStatus statusOf(lockdownd_error_t error) {
    if (error == LOCKDOWN_E_SUCCESS) return kAMDSuccess;
    if (error == LOCKDOWN_E_UNKNOWN_ERROR) return kAMDUnknownError;
    return error == LOCKDOWN_E_MUX_ERROR ? kAMDHungUp : static_cast<AMDStatus>(-error);
}

}  // namespace

AMDStatus pairWithDevice(const std::string& udid) {
    idevice_t device = nullptr;
    if (idevice_new(&device, udid.c_str()) != IDEVICE_E_SUCCESS) return kAMDNoDevice;
    lockdownd_client_t client = nullptr;
    lockdownd_error_t result = lockdownd_client_new(device, &client, "salvor");
    if (result == LOCKDOWN_E_SUCCESS) {
        result = lockdownd_pair(client, nullptr);
        lockdownd_client_free(client);
    }
    idevice_free(device);
    return statusOf(result);
}

}  // namespace salvor

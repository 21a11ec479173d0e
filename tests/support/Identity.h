#pragma once

#include <string>

namespace salvor {

/// A key and a certificate signed with it, as PEM texts.
struct Identity {
    std::string privateKey;
    std::string publicKey;  ///< in the old form of RSA keys
    std::string certificate;
};

/// Made anew; takes some tenths of a second.
Identity makeIdentity(const std::string& name);
/// Made once per process: the computer of the tests, and its stand-in devices.
const Identity& hostIdentity();
const Identity& deviceIdentity();

}  // namespace salvor

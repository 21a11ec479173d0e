#pragma once

#include <string>

namespace salvor {

/// A key and a certificate signed with it, as PEM texts.
struct Identity {
    std::string privateKey;
    std::string publicKey;  ///< in the old form of RSA keys
    std::string certificate;
};

/// The computer of the tests, and its stand-in devices. Made once per process, in some tenths of a
/// second.
const Identity& hostIdentity();
const Identity& deviceIdentity();

}  // namespace salvor

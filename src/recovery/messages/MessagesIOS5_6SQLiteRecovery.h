#pragma once

#include <stop_token>

#include "recovery/messages/MessageLiveCheckCarver.h"

namespace salvor {

/// Carves deleted messages of iOS 5 and 6 databases. Its counts go to messages, iMessages and
/// FaceTime calls alike. Kept: one-count-for-three.
class MessagesIOS5_6SQLiteRecovery : public MessageLiveCheckCarver {
  public:
    static const SignatureUse<Message> kSignature;

    explicit MessagesIOS5_6SQLiteRecovery(ScanState& state, std::stop_token cancelled = {});

  protected:
    std::int32_t setRecoveryCount(std::int32_t count) override;
    std::int32_t incrementRecoveryCount() override;
};

}  // namespace salvor

#pragma once

#include <stop_token>

#include "recovery/messages/MessageLiveCheckCarver.h"

namespace salvor {

/// Carves deleted messages of iOS 4 databases.
class MessagesIOS4SQLiteRecovery : public MessageLiveCheckCarver {
  public:
    static const SignatureUse<Message> kSignature;

    explicit MessagesIOS4SQLiteRecovery(ScanState& state, std::stop_token cancelled = {});

  protected:
    std::int32_t setRecoveryCount(std::int32_t count) override;
    std::int32_t incrementRecoveryCount() override;
};

}  // namespace salvor

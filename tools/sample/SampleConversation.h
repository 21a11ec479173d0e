#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/sample/SampleRandom.h"

namespace salvor {

/// A chat of the sample's owner with one person or several.
struct SampleChat {
    std::vector<std::string> members;  ///< numbers or mail addresses
    std::string service;               ///< "SMS" or "iMessage"
    std::string roomName;              ///< groups only

    bool isGroup() const { return members.size() > 1; }
};

/// One message before it is stored. Times are Unix seconds; 0 is unset.
struct SampleMessage {
    std::int64_t rowId = 0;
    std::size_t chat = 0;
    std::string handle;  ///< the other side; empty when sent to a group
    std::string guid;
    std::optional<std::string> text;
    std::optional<std::string> subject;
    std::int64_t time = 0;
    std::int64_t timeRead = 0;
    std::int64_t timeDelivered = 0;
    bool fromMe = false;
    bool failed = false;
    bool groupEvent = false;
    bool hasLinks = false;
};

/// Invents chats and messages that look like a person's: short and long texts, emoji, groups,
/// failures, read and delivered times. Times grow strictly from message to message.
class SampleConversation {
  public:
    SampleConversation(SampleRandom& random, std::uint32_t pageSize, std::int64_t start);

    const std::vector<SampleChat>& chats() const { return chats_; }
    /// The chat that the deletions take away whole; rare among the messages.
    std::size_t doomedChat() const { return chats_.size() - 1; }
    SampleMessage next();
    /// A message whose text is far smaller than most.
    SampleMessage nextShort();

  private:
    SampleMessage inChat(std::size_t chat);
    std::string sentence(std::size_t words);
    std::optional<std::string> text();

    SampleRandom& random_;
    std::uint32_t pageSize_;
    std::int64_t now_;
    std::vector<SampleChat> chats_;
};

}  // namespace salvor

#include "tools/sample/SampleConversation.h"

#include <array>
#include <string_view>

namespace salvor {
namespace {

using namespace std::string_view_literals;

constexpr std::array kWords{
    "the"sv,    "train"sv,   "leaves"sv,  "at"sv,        "noon"sv,   "please"sv, "call"sv,
    "me"sv,     "back"sv,    "when"sv,    "you"sv,       "are"sv,    "home"sv,   "tomorrow"sv,
    "we"sv,     "meet"sv,    "under"sv,   "bridge"sv,    "bring"sv,  "keys"sv,   "nobody"sv,
    "knows"sv,  "about"sv,   "this"sv,    "délicieux"sv, "grüße"sv,  "dinner"sv, "was"sv,
    "great"sv,  "see"sv,     "photo"sv,   "from"sv,      "last"sv,   "night"sv,  "it's"sv,
    "fine"sv,   "really"sv,  "don't"sv,   "forget"sv,    "milk"sv,   "and"sv,    "bread"sv,
    "доброе"sv, "утро"sv,    "yes;"sv,    "no..."sv,     "maybe?"sv, "ok!"sv,    "running"sv,
    "late"sv,   "because"sv, "traffic"sv, "is"sv,        "bad"sv,    "again"sv,  "love"sv,
    "it"sv,     "thanks"sv,  "for"sv,     "help"sv,      "with"sv,   "moving"sv, "boxes"sv,
};
constexpr std::array kEmoji{"😀"sv,  "👍🏽"sv,           "❤️"sv, "🎉"sv, "😂😂"sv,
                            "🇮🇹"sv, "👨‍👩‍👧"sv, "🙈"sv};

constexpr std::size_t kPeople = 9;

std::string numberOf(SampleRandom& random, std::size_t person) {
    if (person == 3) return "short.letters@example.com";
    if (person == 6) return "48151";
    std::string number = "+1555";
    number += random.digits(7, "0123456789");
    return number;
}

std::string roomOf(SampleRandom& random) {
    std::string room = "chat";
    room += random.digits(15, "123456789");
    return room;
}

}  // namespace

SampleConversation::SampleConversation(SampleRandom& random, std::uint32_t pageSize,
                                       std::int64_t start)
    : random_(random), pageSize_(pageSize), now_(start) {
    std::vector<std::string> people;
    for (std::size_t i = 0; i < kPeople; ++i) people.push_back(numberOf(random, i));
    for (std::size_t i = 0; i + 1 < kPeople; ++i) {
        const bool mail = people[i].find('@') != std::string::npos;
        chats_.push_back({{people[i]}, mail || i % 3 == 0 ? "iMessage" : "SMS", {}});
    }
    chats_.push_back({{people[0], people[3], people[4]}, "iMessage", roomOf(random)});
    chats_.push_back({{people[1], people[2]}, "SMS", roomOf(random)});
    chats_.push_back({{people[kPeople - 1]}, "SMS", {}});
}

std::string SampleConversation::sentence(std::size_t words) {
    std::string text;
    for (std::size_t i = 0; i < words; ++i) {
        if (i > 0) text += ' ';
        text += random_.pick(kWords);
    }
    return text;
}

std::optional<std::string> SampleConversation::text() {
    // One text in two hundred is long enough for an overflow page or two.
    const bool overflows = random_.below(200) == 0;
    const auto kind = random_.below(100);
    if (kind < 2) return std::nullopt;
    if (overflows) {
        std::string text = sentence(20);
        const auto length = pageSize_ + random_.below(pageSize_);
        while (text.size() < length) text.append(1, ' ').append(sentence(20));
        return text;
    }
    std::string text = sentence(
        static_cast<std::size_t>(kind < 60 ? random_.between(1, 8) : random_.between(8, 30)));
    if (kind % 8 == 0) text.append(1, ' ').append(random_.pick(kEmoji));
    if (kind % 10 == 0) text += "\nhttps://example.com/" + random_.digits(6);
    return text;
}

SampleMessage SampleConversation::inChat(std::size_t chat) {
    const auto& room = chats_[chat];
    SampleMessage message;
    message.chat = chat;
    message.guid = random_.uuid();
    message.time = now_ += random_.between(20, 9000);
    message.fromMe = random_.chance(45);
    message.handle = message.fromMe && room.isGroup() ? "" : random_.pick(room.members);
    message.text = text();
    if (random_.chance(2)) message.subject = sentence(2);
    message.failed = message.fromMe && random_.chance(3);
    message.hasLinks = message.text && message.text->find("https") != std::string::npos;
    message.groupEvent = room.isGroup() && !message.text;
    if (!message.fromMe && random_.chance(80)) message.timeRead = now_ + random_.between(1, 600);
    if (message.fromMe && room.service == "iMessage" && !message.failed) {
        message.timeDelivered = now_ + random_.between(1, 5);
        if (random_.chance(50)) message.timeRead = now_ + random_.between(6, 900);
    }
    return message;
}

SampleMessage SampleConversation::next() {
    const bool doomed = random_.chance(6);
    return inChat(doomed ? doomedChat()
                         : static_cast<std::size_t>(random_.below(chats_.size() - 1)));
}

SampleMessage SampleConversation::nextShort() {
    auto message = inChat(static_cast<std::size_t>(random_.below(chats_.size() - 1)));
    message.text = sentence(2);
    message.subject.reset();
    message.groupEvent = false;
    return message;
}

}  // namespace salvor

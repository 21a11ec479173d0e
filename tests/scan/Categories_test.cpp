#include "scan/Categories.h"

#include <fmt/ranges.h>
#include <gtest/gtest.h>

namespace salvor {
namespace {

/// What is told of each, with blanks between.
template <class List, class Tell>
std::string joined(const List& list, Tell tell) {
    std::vector<std::string> words;
    for (const auto& one : list) words.push_back(tell(one));
    return fmt::format("{}", fmt::join(words, " "));
}

TEST(Categories, KeepTheirNumbersAndWords) {
    EXPECT_EQ(joined(categories(),
                     [](const CategoryFacts& facts) {
                         return fmt::format("{}-{}-{}", codeOf(facts.category),
                                            static_cast<int>(facts.service), facts.word);
                     }),
              "1-0-messages 2-1-photos 3-2-contacts 4-3-calls 5-7-whatsapp 6-5-notes 7-6-internet "
              "8-4-calendar");
    const std::pair<const char*, std::optional<std::int32_t>> codes[] = {
        {"all", 0}, {"0", 0},      {"calls", 4}, {"8", 8},        {"", {}},         {"9", {}},
        {"04", {}}, {"Calls", {}}, {"-1", {}},   {"internet", 7}, {"internet ", {}}};
    for (const auto& [word, code] : codes) EXPECT_EQ(categoryCode(word), code) << word;
    for (const std::int32_t none : {-1, 0, 9}) EXPECT_FALSE(categoryOf(none)) << none;
}

// Whoever reads a report or watches a scan sees these orders; they differ deliberately.
TEST(Categories, AreGoneThroughInTheirOrders) {
    const std::pair<int Places::*, const char*> orders[] = {
        {&Places::reading, "messages contacts calls whatsapp notes calendar"},
        {&Places::worker, "photos contacts notes calls whatsapp calendar messages internet"},
        {&Places::wait, "whatsapp calls notes contacts calendar messages photos internet"},
        {&Places::making, "whatsapp calls calendar notes messages contacts photos internet"},
        {&Places::module, "messages contacts notes calendar calls whatsapp"},
        {&Places::liveKey, "messages contacts calls whatsapp notes calendar internet photos"},
        {&Places::deletedKey, "messages contacts calls whatsapp notes calendar photos internet"}};
    for (const auto& [place, words] : orders) {
        EXPECT_EQ(joined(categoriesBy(place), [](const auto* facts) { return facts->word; }),
                  words);
    }
    EXPECT_EQ(joined(databaseNames(), [](const auto& database) { return database.name; }),
              "SMS_DATABASE ADDRESSBOOK_DATABASE CALENDAR_DATABASE NOTES_DATABASE "
              "CALLHISTORY_DATABASE MAPHISTORY_DATABASE DYNAMICDIT_DATABASE ACCOUNT_DATABASE "
              "KEYCHAIN_DATABASE INTERNET_HISTROY_DATABASE APPLICATIONS_DATABASE WHATSAPP_DATABASE "
              "CONSOLIDATE_DATABASE");
}

TEST(Categories, HaveWorkersThatSetTheirFlagsInTheirOwnWay) {
    EXPECT_EQ(joined(categories(),
                     [](const CategoryFacts& facts) {
                         constexpr const char* kPresets[] = {"unmade", "unstarted", "started"};
                         const auto& worker = facts.worker;
                         return fmt::format("{}-{}{}{}", facts.word,
                                            kPresets[static_cast<int>(worker.preset)],
                                            worker.presetTwice == Category::Calls ? "-twice" : "",
                                            worker.clearsFlagAfterWait ? "-late" : "");
                     }),
              "messages-unmade photos-started contacts-started calls-started-late "
              "whatsapp-started notes-unstarted-twice internet-started calendar-started");
}

TEST(Categories, CountAndEmptyTheirLists) {
    ScanState state;
    state.SMSContent.resize(2);
    state.iMessageContent.resize(1);  // stands among the messages, too
    state.DeletedSMS.resize(3);
    state.Photos.resize(4);
    state.Videos.resize(5);
    state.DeletedVideos.resize(6);
    const auto pictures = countRecords(state, codeOf(Category::Photos));
    ASSERT_EQ(pictures.size(), 1U);
    EXPECT_EQ(pictures[0].live, 9U);
    EXPECT_EQ(pictures[0].deleted, 6U);
    EXPECT_EQ(countRecords(state, kEverything)[0].live, 2U);

    state.AllSMSContent.resize(1);
    state.Conversations.resize(1);
    clearLists(factsOf(Category::Messages), state);
    EXPECT_TRUE(state.SMSContent.empty() && state.iMessageContent.empty() &&
                state.DeletedSMS.empty() && state.AllSMSContent.empty() &&
                state.Conversations.empty());
    EXPECT_EQ(state.Photos.size(), 4U);
}

}  // namespace
}  // namespace salvor

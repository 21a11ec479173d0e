#include "recovery/WhatsAppMessagesSQLiteRecovery.h"
#include "tests/recovery/CarverProbe.h"

namespace salvor {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

using WhatsAppProbe = CarverProbe<WhatsAppMessagesSQLiteRecovery, WhatsAppMessage>;

class WhatsAppCarver : public CategoryCarverTest {
  protected:
    static std::shared_ptr<WhatsApp> row(const Text& date, const Text& from, const Text& to,
                                         const Text& text) {
        auto one = std::make_shared<WhatsApp>();
        one->MessageDate = date;
        one->FromMsgID = from;
        one->ToMsgID = to;
        one->zText = text;
        return one;
    }

    WhatsAppProbe carver{state};
};

TEST_F(WhatsAppCarver, FillsAMessageByName) {
    EXPECT_EQ(told(carver.filled({{"ZISFROMME", std::int64_t{1}},
                                  {"ZMessageDate", 60.5},
                                  {"ZFromJid", "1@x"},
                                  {"ZToJid", "2@x"},
                                  {"ZPushName", "Ann"},
                                  {"ZStandZAid", "0123456789-1"},
                                  {"ZText", "hello"}})),
              "Recovered=true|IsFromMe=true|ZText=hello|ZFromJid=1@x|ZPushName=Ann|ZToJid=2@x|"
              "ZStandZAid=0123456789-1|Date=2001-01-01 00:01:00|OriginalDate=60.5");
    EXPECT_EQ(carver.verifyData("ZStandZAid"), -1);
    EXPECT_EQ(carver.verifyData("ZText"), 0);
}

TEST_F(WhatsAppCarver, ShiftsTheDataByOneAtMost) {
    const auto dashAt = [](std::size_t index) { return std::string(index, 'x') + "-yz"; };
    const std::tuple<const char*, std::string, int> cases[] = {
        {"ZStandZAid", dashAt(9), -1},   {"ZStandZAid", dashAt(10), 0},
        {"ZStandZAid", dashAt(11), 1},   {"ZStandZAid", dashAt(12), -100},
        {"ZStandZAid", dashAt(8), -100}, {"ZStandZAid", "none", -100},
        {"ZText", dashAt(10), -100}};
    for (const auto& [name, text, shift] : cases)
        EXPECT_EQ(carver.position(name, text), shift) << name << " " << text;
}

TEST_F(WhatsAppCarver, ContentTellsWhatIsKnown) {
    state.AllWhatsAppContent = {row("d", "1@x", {}, "hello")};
    state.AllDeletedWhatsApp = {row("d", "1@x", {}, "bye")};
    const std::pair<std::shared_ptr<WhatsApp>, bool> cases[] = {
        {row("d", "1@x", "", "hello"), true},  // absent is empty here
        {row("d", "1@x", {}, "bye"), true},
        {row("e", "1@x", {}, "hello"), false},
        {row("d", {}, "1@x", "hello"), false},
        {row("d", "1@x", {}, {}), false}};
    for (const auto& [one, known] : cases) EXPECT_EQ(carver.alreadyInDB(*one), known) << told(*one);
}

TEST_F(WhatsAppCarver, CarvesWhatIsNeitherLiveNorFoundAlready) {
    signature("ChatStorage.sqlite", "ZWAMESSAGE", "[1];[1];[0];[8,9];[4];[-12];[-12]",
              {{"ZISFROMME", 3}, {"ZMessageDate", 4}, {"ZFromJid", 5}, {"ZText", 6}},
              "net.whatsapp.WhatsApp");
    sql("", {{"(Z_PK INTEGER PRIMARY KEY, a, b, c, d)",
              "(1, 0, 10000000, '1@x', 'still there'), (2, 0, 10000000, '1@x', 'deleted'), "
              "(3, 0, 10000000, '1@x', 'deleted'), (4, 1, 10000000, '', 'my own')"},
             // A row id that was used before: the content decides.
             {"(Z_PK INTEGER PRIMARY KEY, a, b, c, d)", "(4, 0, 10000000, '1@x', 'reused')"}});
    state.AllWhatsAppContent = {row("2001-04-26 17:46:40", "1@x", {}, "still there")};
    carver.DoRecoveryPath(database);
    EXPECT_THAT(textsOf(state.DeletedWhatsApp, &WhatsApp::zText),
                UnorderedElementsAre("deleted", "my own", "reused"));
    EXPECT_EQ(state.DeletedWhatsApp, state.AllDeletedWhatsApp);
    EXPECT_EQ(state.DeletedWhatsAppCount, 3);
    EXPECT_EQ(carver.RecoveredFiltered.size(), 3U);

    state.recoverySignatures = std::make_shared<SqLiteTableSignatures>();
    state.AllDeletedWhatsApp.clear();
    WhatsAppProbe without(state);
    without.DoRecoveryPath(database);
    EXPECT_TRUE(without.RecoveredFiltered.empty());
}

TEST_F(WhatsAppCarver, SortsForDisplayByDateAndKeepsEqualOnes) {
    state.DeletedWhatsApp = {row("2002", {}, {}, "c"), row("2001", {}, {}, "a"),
                             row("2001", {}, {}, "b")};
    carver.filterMessages();
    EXPECT_THAT(textsOf(state.DeletedWhatsApp, &WhatsApp::zText), ElementsAre("a", "b", "c"));
}

}  // namespace
}  // namespace salvor

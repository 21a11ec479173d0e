#include "carving/WhatsAppMessagesSQLiteRecovery.h"
#include "tests/recovery/carvers/CarverProbe.h"

namespace salvor {
namespace {

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
    WhatsAppMessage& message = carver.filled("ZISFROMME", std::int64_t{1});
    carver.fill("ZMessageDate", 60.5);
    carver.fill("ZFromJid", "1@x");
    carver.fill("ZToJid", "2@x");
    carver.fill("ZPushName", "Ann");
    carver.fill("ZStandZAid", "0123456789-1");
    carver.fill("ZText", "hello");
    EXPECT_TRUE(message.IsFromMe);
    EXPECT_EQ(message.OriginalDate, 60.5);
    EXPECT_EQ(message.Date, "2001-01-01 00:01:00");
    EXPECT_EQ(message.ZFromJid, "1@x");
    EXPECT_EQ(message.ZToJid, "2@x");
    EXPECT_EQ(message.ZPushName, "Ann");
    EXPECT_EQ(message.ZText, "hello");
    EXPECT_EQ(carver.verifyData("ZStandZAid"), -1);
    EXPECT_EQ(carver.verifyData("ZText"), 0);
}

TEST_F(WhatsAppCarver, ShiftsTheDataByOneAtMost) {
    const auto dashAt = [](std::size_t index) { return std::string(index, 'x') + "-yz"; };
    EXPECT_EQ(carver.position("ZStandZAid", dashAt(9)), -1);
    EXPECT_EQ(carver.position("ZStandZAid", dashAt(10)), 0);
    EXPECT_EQ(carver.position("ZStandZAid", dashAt(11)), 1);
    EXPECT_EQ(carver.position("ZStandZAid", dashAt(12)), -100);
    EXPECT_EQ(carver.position("ZStandZAid", dashAt(8)), -100);
    EXPECT_EQ(carver.position("ZStandZAid", "none"), -100);
    EXPECT_EQ(carver.position("ZText", dashAt(10)), -100);
}

TEST_F(WhatsAppCarver, ContentTellsWhatIsKnown) {
    state.AllWhatsAppContent = {row("d", "1@x", {}, "hello")};
    state.AllDeletedWhatsApp = {row("d", "1@x", {}, "bye")};
    EXPECT_TRUE(carver.alreadyInDB(*row("d", "1@x", "", "hello"))) << "absent is empty here";
    EXPECT_TRUE(carver.alreadyInDB(*row("d", "1@x", {}, "bye")));
    EXPECT_FALSE(carver.alreadyInDB(*row("e", "1@x", {}, "hello")));
    EXPECT_FALSE(carver.alreadyInDB(*row("d", {}, "1@x", "hello")));
    EXPECT_FALSE(carver.alreadyInDB(*row("d", "1@x", {}, {})));
}

TEST_F(WhatsAppCarver, CarvesWhatIsNeitherLiveNorFoundAlready) {
    addSignature(state, "ChatStorage.sqlite", "ZWAMESSAGE", "[1];[1];[0];[8,9];[4];[-12];[-12]",
                 {{"ZISFROMME", 3}, {"ZMessageDate", 4}, {"ZFromJid", 5}, {"ZText", 6}});
    sql("CREATE TABLE gone (Z_PK INTEGER PRIMARY KEY, a, b, c, d); INSERT INTO gone VALUES "
        "(1, 0, 10000000, '1@x', 'still there'), (2, 0, 10000000, '1@x', 'deleted'), "
        "(3, 0, 10000000, '1@x', 'deleted'), (4, 1, 10000000, '', 'my own');"
        // A row id that was used before: the content decides.
        "CREATE TABLE later (Z_PK INTEGER PRIMARY KEY, a, b, c, d); INSERT INTO later VALUES "
        "(4, 0, 10000000, '1@x', 'reused')");
    sql("DROP TABLE gone; DROP TABLE later");
    state.AllWhatsAppContent = {row("2001-04-26 17:46:40", "1@x", {}, "still there")};
    carver.DoRecoveryPath(database);
    EXPECT_THAT(texts(state.DeletedWhatsApp, &WhatsApp::zText),
                testing::UnorderedElementsAre("deleted", "my own", "reused"));
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
    EXPECT_EQ(texts(state.DeletedWhatsApp, &WhatsApp::zText), (Texts{"a", "b", "c"}));
}

}  // namespace
}  // namespace salvor

#include "app/DeviceSearch.h"

#include <fmt/format.h>

#include "app/DeviceChoice.h"
#include "tests/device/UsbFixture.h"

namespace salvor {
namespace {

using testing::HasSubstr;
using namespace std::chrono_literals;

class DeviceSearches : public UsbFixture {
  protected:
    /// "name (identifier) version status" of each.
    Strings described() {
        Strings texts;
        for (const auto& one : describeDevices(*access, searchDevices(*access)))
            texts.push_back(fmt::format("{} ({}) {} {:x}", one.DeviceName.value_or("-"),
                                        one.UniqueDeviceID.value_or("-"),
                                        one.ProductVersion.value_or("-"), one.session));
        return texts;
    }
};

TEST_F(DeviceSearches, AskAllSideBySideAndNameThoseThatDoNotAnswer) {
    const std::pair<const char*, const char*> cases[] = {
        {"QueryType", "- (1-UDID) - 105"},    {"Connect", "- (2-UDID) - 105"},
        {"StartSession", "3 (3-UDID) - 105"}, {"StartSession", "4 (4-UDID) - 105"},
        {"StartSession", "5 (5-UDID) - 105"}, {"GetValue DeviceName", "- (6-UDID) 9.3.5 0"}};
    Strings expected;
    std::uint32_t id = 0;
    for (const auto& [request, text] : cases) {
        const auto silent = phone(std::to_string(++id));
        silent->faults[request] = {""};
        daemon.plugIn(id, silent);
        expected.emplace_back(text);
    }
    const auto slow = phone("Slow");
    for (const char* request : {"QueryType", "GetValue DeviceName", "StartSession"})
        slow->faults[request] = {std::nullopt, false, 500ms};
    daemon.plugIn(++id, slow);
    daemon.plugIn(++id, phone());
    start(1s);
    const auto begin = std::chrono::steady_clock::now();
    expected.insert(expected.end(), {"Slow (Slow-UDID) 9.3.5 0", "Ada (Ada-UDID) 9.3.5 0"});
    EXPECT_EQ(described(), expected);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 4s) << "one after the other it takes 9";
}

TEST_F(DeviceSearches, ChooseOneWithoutWaitingForOthers) {
    const auto silent = phone("Silent");
    silent->faults["QueryType"] = {""};
    daemon.plugIn(1, silent);
    daemon.plugIn(2, phone());
    start(4s);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(chooseForBackup(*access, "ada-udid").text, "");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 3s);
    const auto choice = chooseForBackup(*access, "silent-udid");
    EXPECT_EQ(choice.obstacle, BackupObstacle::Unreachable);
    EXPECT_EQ(choice.text, "silent-udid: the device did not answer in time");
    daemon.pullOut(1);
    EXPECT_EQ(chooseForBackup(*access, "other").obstacle, BackupObstacle::NotConnected);
    access.reset();
    daemon.plugIn(1, silent);
    start(20s);
    const std::jthread goes([this] {
        std::this_thread::sleep_for(200ms);
        daemon.stop();
    });
    EXPECT_EQ(searchDevices(*access).daemon, kAMDNoDaemon) << "which ends the wait";
}

TEST_F(DeviceSearches, TellHowToMendAPairing) {
    const auto ada = phone();
    ada->errors["StartSession"] = "InvalidHostID";
    ada->errors["Pair"] = "InvalidHostID";
    daemon.plugIn(1, ada);
    start();
    EXPECT_THAT(
        chooseForBackup(*access, "Ada-UDID").text,
        HasSubstr("does not know this computer any more; unlock it, confirm there that this "
                  "computer is trusted, and try again; if it does not ask, \"idevicepair "
                  "--udid Ada-UDID unpair\" forgets the old pairing"));
}

}  // namespace
}  // namespace salvor

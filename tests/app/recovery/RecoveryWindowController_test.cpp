#include "app/recovery/RecoveryWindowController.h"

#include <algorithm>
#include <functional>
#include <gmock/gmock.h>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

namespace salvor {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;

constexpr int kContactsService = static_cast<int>(ServiceIndex::Contacts);

std::vector<int> serviceNumbers() {
    std::vector<int> numbers;
    for (const CategoryFacts& facts : categories())
        numbers.push_back(static_cast<int>(facts.service));
    return numbers;
}

/// Services that note what happens to them and do what a test tells them to.
class FakeServices : public ServiceRunner {
  public:
    std::function<void(int, const std::stop_token&)> work = [](int, const std::stop_token&) {};

    void setDevice(const DeviceInfo& device) override {
        note("device " + std::to_string(device.iOSMajorVersion));
    }
    void StartRecoveryofService(int serviceCode, std::stop_token cancelled) override {
        note("begin " + std::to_string(serviceCode));
        work(serviceCode, cancelled);
        note("end " + std::to_string(serviceCode));
    }

    std::vector<std::string> events() const {
        const std::lock_guard lock(mutex_);
        return events_;
    }
    std::vector<int> servicesRun() const {
        std::vector<int> run;
        for (const auto& event : events()) {
            if (event.starts_with("begin ")) run.push_back(std::stoi(event.substr(6)));
        }
        return run;
    }
    std::ptrdiff_t position(const std::string& event) const {
        const auto all = events();
        return std::find(all.begin(), all.end(), event) - all.begin();
    }

  private:
    void note(std::string event) {
        const std::lock_guard lock(mutex_);
        events_.push_back(std::move(event));
    }
    mutable std::mutex mutex_;
    std::vector<std::string> events_;
};

class RecoveryDriver : public testing::Test, public ScanObserver {
  protected:
    RecoveryDriver() {
        state.observer = this;
        state.signatureLoaded = true;
        state.isDoingRecovery = true;
        state.deviceInfo.iOSMajorVersion = 7;
    }
    void onWarning(const std::string& text) override {
        const std::lock_guard lock(mutex);
        warnings.push_back(text);
    }
    void onCategoryRead(Category category) override { tell("read", category); }
    void onCategoryRecovered(Category category) override { tell("recovered", category); }
    void tell(const char* what, Category category) {
        const std::lock_guard lock(mutex);
        told[category].push_back(what);
        tellers[category] = std::this_thread::get_id();
        if (controller.finished(category).isSet()) told[category].push_back("too late");
    }
    bool allFinished() {
        return std::all_of(categories().begin(), categories().end(), [this](const auto& facts) {
            return controller.finished(facts.category).isSet();
        });
    }

    std::mutex mutex;
    std::vector<std::string> warnings;
    std::map<Category, std::vector<std::string>> told;
    std::map<Category, std::thread::id> tellers;
    ScanState state;
    FakeServices services;
    RecoveryWindowController controller;
};

TEST_F(RecoveryDriver, EverythingRunsEachServiceOnceAndWaitsForAll) {
    controller.RecoverDeletedData(0, state, services);
    EXPECT_THAT(services.servicesRun(), UnorderedElementsAreArray(serviceNumbers()));
    EXPECT_EQ(services.events().size(), 1 + 2 * kCategoryCount);
    EXPECT_EQ(services.events().front(), "device 7");
    EXPECT_TRUE(allFinished());
    EXPECT_FALSE(state.isDoingRecovery);
    EXPECT_THAT(state.statusHistory(),
                UnorderedElementsAre(
                    std::pair(StatusCode::Result, std::string("Recovering Photos & Videos...")),
                    std::pair(StatusCode::Result, std::string("Recovering Internet History"))));
}

// Also by a service that fails or is cancelled: its lists hold what it found.
TEST_F(RecoveryDriver, EachWorkerTellsThatItsListsAreCompleteBeforeItsFlagIsSet) {
    std::map<int, Category> ofService;
    for (const auto& facts : categories())
        ofService[static_cast<int>(facts.service)] = facts.category;
    for (const bool cancelled : {false, true}) {
        std::map<Category, std::thread::id> workers;
        services.work = [&](int service, const std::stop_token&) {
            const std::lock_guard lock(mutex);
            EXPECT_FALSE(told.contains(ofService.at(service))) << "lists are still being filled";
            workers[ofService.at(service)] = std::this_thread::get_id();
            if (service == 5) throw std::runtime_error("broken");
        };
        told.clear();
        std::stop_source stop;
        if (cancelled) stop.request_stop();
        controller.RecoverDeletedData(0, state, services, stop.get_token());
        EXPECT_EQ(told.size(), kCategoryCount);
        for (const auto& [category, events] : told) {
            const bool ownLiveRows = category == Category::Photos || category == Category::Internet;
            EXPECT_EQ(events, ownLiveRows ? (std::vector<std::string>{"read", "recovered"})
                                          : (std::vector<std::string>{"recovered"}))
                << codeOf(category);
            EXPECT_EQ(tellers[category], workers[category]) << codeOf(category);
        }
    }
}

// The second scan must not be woken by the finished flags of the first one.
TEST_F(RecoveryDriver, CallsAndMessagesWaitForTheContactsInEveryScan) {
    for (int scan = 0; scan < 2; ++scan) {
        FakeServices fresh;
        fresh.work = [](int service, const std::stop_token&) {
            if (service == kContactsService)
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
        };
        controller.RecoverDeletedData(0, state, fresh);
        EXPECT_GT(fresh.position("begin 0"), fresh.position("end 2")) << "scan " << scan;
        EXPECT_GT(fresh.position("begin 3"), fresh.position("end 2")) << "scan " << scan;
    }
}

TEST_F(RecoveryDriver, OneCategoryRunsItsServiceOnlyAndEndsAfterIt) {
    // Twice with one controller: the second run starts from set flags.
    for (int scan = 0; scan < 2; ++scan) {
        for (const CategoryFacts& facts : categories()) {
            FakeServices fresh;
            fresh.work = [](int, const std::stop_token&) {
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            };
            controller.RecoverDeletedData(codeOf(facts.category), state, fresh);
            const auto number = std::to_string(static_cast<int>(facts.service));
            EXPECT_THAT(fresh.events(),
                        ElementsAre("device 7", "begin " + number, "end " + number));
            EXPECT_TRUE(allFinished());
        }
    }
}

// A service may be done before the driver presets the other flags.
TEST_F(RecoveryDriver, QuickServicesNeverLoseTheirFlag) {
    for (std::size_t i = 0; i < 200; ++i) {
        const auto category = categories()[i % kCategoryCount].category;
        controller.RecoverDeletedData(codeOf(category), state, services);
    }
    EXPECT_EQ(services.servicesRun().size(), 200u);
}

TEST_F(RecoveryDriver, AnUnknownCodeStartsNothingAndReturnsOnceAllFlagsAreSet) {
    controller.RecoverDeletedData(0, state, services);
    FakeServices idle;
    controller.RecoverDeletedData(codeOf(kLastCategory) + 1, state, idle);
    EXPECT_THAT(idle.events(), ElementsAre("device 7"));
}

TEST_F(RecoveryDriver, NothingStartsBeforeTheSignaturesAreLoaded) {
    state.signatureLoaded = false;
    std::atomic<bool> loaded{false};
    services.work = [&](int, const std::stop_token&) { EXPECT_TRUE(loaded); };
    std::jthread loader([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        loaded = true;
        state.signatureLoaded = true;
        state.signatureLoaded.notify_all();
    });
    controller.RecoverDeletedData(3, state, services);
    EXPECT_EQ(services.events().size(), 3U);
}

/// Runs until it is told to stop.
void untilCancelled(int, const std::stop_token& cancelled) {
    std::atomic<bool> stopped{false};
    const std::stop_callback onStop(cancelled, [&] {
        stopped = true;
        stopped.notify_all();
    });
    stopped.wait(false);
}

TEST_F(RecoveryDriver, CancelStopsEveryWorkerAndTheScanEndsThroughTheFlags) {
    services.work = untilCancelled;
    std::stop_source stop;
    std::jthread person([&] {
        while (services.servicesRun().size() < 3) std::this_thread::yield();
        stop.request_stop();
    });
    controller.RecoverDeletedData(0, state, services, stop.get_token());
    EXPECT_EQ(services.servicesRun().size(), kCategoryCount);
    EXPECT_TRUE(allFinished());

    FakeServices next;
    next.work = [](int, const std::stop_token& cancelled) {
        EXPECT_FALSE(cancelled.stop_requested()) << "a cancel must not reach the next scan";
    };
    controller.RecoverDeletedData(0, state, next);
}

TEST_F(RecoveryDriver, ACancelThatCameFirstReachesWorkersThatStartLater) {
    services.work = untilCancelled;
    std::stop_source stop;
    stop.request_stop();
    controller.RecoverDeletedData(0, state, services, stop.get_token());
    EXPECT_EQ(services.servicesRun().size(), kCategoryCount);
}

TEST_F(RecoveryDriver, AFailingServiceCostsNoOtherOne) {
    services.work = [](int service, const std::stop_token&) {
        if (service == kContactsService) throw std::runtime_error("broken book");
    };
    controller.RecoverDeletedData(0, state, services);
    EXPECT_EQ(services.servicesRun().size(), kCategoryCount);
    EXPECT_THAT(warnings, ElementsAre(testing::HasSubstr("broken book")));
}

}  // namespace
}  // namespace salvor

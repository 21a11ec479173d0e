#include "app/recovery/RecoveryWindowController.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <pthread.h>

#include "scan/Categories.h"

namespace salvor {

using Controller = RecoveryWindowController;

namespace {

/// For debuggers and profilers, which show no more than 15 characters.
void nameThread(const char* name) {
    ::pthread_setname_np(::pthread_self(), std::string(name, ::strnlen(name, 15)).c_str());
}

}  // namespace

void Controller::RecoverDeletedData(int dataType, ScanState& state, ServiceRunner& services,
                                    std::stop_token cancelled) {
    DataType_ = dataType;
    state_ = &state;
    services_ = &services;
    {
        const std::lock_guard lock(threadsMutex_);
        cancelRequested_ = false;
    }
    const std::stop_callback onCancel(std::move(cancelled), [this] { cancelScan(); });
    state.signatureLoaded.wait(false);
    try {
        RecoverDeletedDataSignatures();
        checkForRecovery();
    } catch (...) {
        // No thread left in the system: those that run must not outlive the scan.
        cancelScan();
        joinWorkers();
        throw;
    }
    joinWorkers();
    state.isDoingRecovery = false;
}

void Controller::RecoverDeletedDataSignatures() {
    services_->setDevice(state_->deviceInfo);
    // Waits wake at once, so no worker may see the flags of an earlier scan.
    if (DataType_ == kEverything) {
        for (FinishedFlag& flag : finished_) flag.clear();
    }
    for (const CategoryFacts* facts : categoriesBy(&Places::worker)) {
        if (DataType_ == kEverything || DataType_ == codeOf(facts->category)) startWorker(*facts);
    }
}

void Controller::startWorker(const CategoryFacts& facts) {
    const FlagPreset preset = facts.worker.preset;
    const bool alone = DataType_ != kEverything;
    // A worker alone has its own flag cleared here rather than with the presets: a quick one may
    // be done before presets that follow its start.
    if (alone) finished(facts.category).clear();
    if (alone && preset == FlagPreset::BeforeCreation) presetFlags(facts.category);
    statusTold_.clear();
    const auto body = [this, &facts](std::stop_token cancelled) {
        work(facts, std::move(cancelled));
    };
    if (alone && preset == FlagPreset::BeforeStart) presetFlags(facts.category);
    {
        const std::lock_guard lock(threadsMutex_);
        auto& thread = threads_.at(indexOf(facts.category));
        thread = std::jthread(body);
        if (cancelRequested_) thread.request_stop();
    }
    if (alone && preset == FlagPreset::AfterStart) presetFlags(facts.category);
    // So that two workers tell their statuses in the same order in every scan.
    if (facts.worker.status != nullptr) statusTold_.wait();
}

void Controller::presetFlags(Category running) {
    for (const CategoryFacts& facts : categories()) {
        if (facts.category != running) finished(facts.category).set();
    }
    if (const auto twice = factsOf(running).worker.presetTwice) finished(*twice).set();
}

void Controller::checkForRecovery() const {
    const auto order = categoriesBy(&Places::wait);
    const auto flagOf = [this](const CategoryFacts* facts) -> const FinishedFlag& {
        return finished_.at(indexOf(facts->category));
    };
    const auto allSet = [&] {
        return std::all_of(order.begin(), order.end(),
                           [&](const auto* facts) { return flagOf(facts).isSet(); });
    };
    while (!allSet()) {
        for (const auto* facts : order) flagOf(facts).wait();
    }
}

void Controller::joinWorkers() {
    for (auto& thread : threads_) {
        if (thread.joinable()) thread.join();
    }
}

void Controller::cancelScan() {
    const std::lock_guard lock(threadsMutex_);
    cancelRequested_ = true;
    for (auto& thread : threads_) thread.request_stop();
}

void Controller::runService(const CategoryFacts& facts, std::stop_token cancelled) {
    const int code = static_cast<int>(facts.service);
    try {
        services_->StartRecoveryofService(code, std::move(cancelled));
    } catch (const std::exception& failure) {
        // The scan ends through the finished flags whatever happens to a service.
        state_->categoryFailed(facts.category,
                               std::string("the recovery ended early: ") + failure.what());
    }
    // What no statement of the extraction reads is completed by the service.
    if (facts.places.reading == 0) state_->categoryRead(facts.category);
    state_->categoryRecovered(facts.category);
}

void Controller::work(const CategoryFacts& facts, std::stop_token cancelled) {
    const RecoveryWorker& worker = facts.worker;
    nameThread(worker.name);
    FinishedFlag& own = finished(facts.category);
    if (!worker.clearsFlagAfterWait) own.clear();
    if (worker.waitsFor) finished(*worker.waitsFor).wait();
    if (worker.clearsFlagAfterWait) own.clear();
    if (worker.status != nullptr) {
        state_->updateStatus(StatusCode::Result, worker.status);
        statusTold_.set();
    }
    runService(facts, std::move(cancelled));
    if (worker.redrawsView) state_->UpdateMainView(View::Lists);
    if (worker.refreshesTabs) state_->refreshTabButtons();
    own.set();
}

}  // namespace salvor

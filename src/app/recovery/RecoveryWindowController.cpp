#include "app/recovery/RecoveryWindowController.h"

#include <algorithm>
#include <exception>

namespace salvor {

using Controller = RecoveryWindowController;

// The moments of the presets differ deliberately: notes presets before its thread starts, messages
// before its thread is made, all others after the start.
const std::array<Controller::Worker, Controller::kWorkers> Controller::kWorkersInOrder{{
    {2, &Controller::dcmiStart, &Controller::dcmiFinished, Preset::AfterStart},
    {3, &Controller::contactsStart, &Controller::contactsFinished, Preset::AfterStart},
    {6, &Controller::notesStart, &Controller::notesFinished, Preset::BeforeStart},
    {4, &Controller::callHistoryStart, &Controller::callHistoryFinished, Preset::AfterStart},
    {5, &Controller::whatsAppStart, &Controller::whatsAppFinished, Preset::AfterStart},
    {8, &Controller::calendarStart, &Controller::calendarFinished, Preset::AfterStart},
    {1, &Controller::messagesStart, &Controller::messagesFinished, Preset::BeforeCreation},
    {7, &Controller::internetHistoryStart, &Controller::internetFinished, Preset::AfterStart},
}};

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
    if (DataType_ == 0) {
        for (const Worker& worker : kWorkersInOrder) (this->*worker.finished).clear();
    }
    for (std::size_t i = 0; i < kWorkersInOrder.size(); ++i) {
        if (DataType_ == 0 || DataType_ == kWorkersInOrder[i].dataType) startWorker(i);
    }
}

void Controller::startWorker(std::size_t index) {
    const Worker& worker = kWorkersInOrder[index];
    const bool alone = DataType_ != 0;
    // A worker alone has its own flag cleared here rather than with the presets: a quick one may
    // be done before presets that follow its start.
    if (alone) (this->*worker.finished).clear();
    if (alone && worker.preset == Preset::BeforeCreation) presetFlags(worker);
    const auto body = [this, &worker](std::stop_token cancelled) {
        (this->*worker.body)(std::move(cancelled));
    };
    if (alone && worker.preset == Preset::BeforeStart) presetFlags(worker);
    {
        const std::lock_guard lock(threadsMutex_);
        threads_[index] = std::jthread(body);
        if (cancelRequested_) threads_[index].request_stop();
    }
    if (alone && worker.preset == Preset::AfterStart) presetFlags(worker);
}

void Controller::presetFlags(const Worker& worker) {
    for (const Worker& other : kWorkersInOrder) {
        if (&other != &worker) (this->*other.finished).set();
    }
    // Deliberate: notes alone sets the call-history flag twice.
    if (worker.finished == &Controller::notesFinished) callHistoryFinished.set();
}

void Controller::checkForRecovery() const {
    static constexpr std::array kOrder{
        &Controller::whatsAppFinished, &Controller::callHistoryFinished,
        &Controller::notesFinished,    &Controller::contactsFinished,
        &Controller::calendarFinished, &Controller::messagesFinished,
        &Controller::dcmiFinished,     &Controller::internetFinished};
    const auto allSet = [this] {
        return std::all_of(kOrder.begin(), kOrder.end(),
                           [this](auto flag) { return (this->*flag).isSet(); });
    };
    while (!allSet()) {
        for (const auto flag : kOrder) (this->*flag).wait();
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

void Controller::runService(ServiceIndex index, std::stop_token cancelled) {
    const int code = static_cast<int>(index);
    try {
        services_->StartRecoveryofService(code, std::move(cancelled));
    } catch (const std::exception& failure) {
        // The scan ends through the finished flags whatever happens to a service.
        state_->warn("recovery service " + std::to_string(code) +
                     " ended early: " + failure.what());
    }
}

void Controller::contactsStart(std::stop_token cancelled) {
    contactsFinished.clear();
    runService(ServiceIndex::Contacts, std::move(cancelled));
    contactsFinished.set();
}

void Controller::notesStart(std::stop_token cancelled) {
    notesFinished.clear();
    runService(ServiceIndex::Notes, std::move(cancelled));
    notesFinished.set();
}

void Controller::whatsAppStart(std::stop_token cancelled) {
    whatsAppFinished.clear();
    runService(ServiceIndex::WhatsApp, std::move(cancelled));
    whatsAppFinished.set();
}

void Controller::calendarStart(std::stop_token cancelled) {
    calendarFinished.clear();
    runService(ServiceIndex::Calendars, std::move(cancelled));
    calendarFinished.set();
}

// Recovered calls are named from the contacts. Deliberate: the own flag is cleared after the wait
// here and before it in `messagesStart`.
void Controller::callHistoryStart(std::stop_token cancelled) {
    contactsFinished.wait();
    callHistoryFinished.clear();
    runService(ServiceIndex::CallHistory, std::move(cancelled));
    callHistoryFinished.set();
}

void Controller::messagesStart(std::stop_token cancelled) {
    messagesFinished.clear();
    contactsFinished.wait();
    runService(ServiceIndex::Messages, std::move(cancelled));
    messagesFinished.set();
}

void Controller::dcmiStart(std::stop_token cancelled) {
    dcmiFinished.clear();
    state_->updateStatus(3, "Recovering Photos & Videos...");
    runService(ServiceIndex::CameraRoll, std::move(cancelled));
    state_->UpdateMainView(1);
    dcmiFinished.set();
}

void Controller::internetHistoryStart(std::stop_token cancelled) {
    internetFinished.clear();
    state_->updateStatus(3, "Recovering Internet History");
    runService(ServiceIndex::InternetHistory, std::move(cancelled));
    state_->UpdateMainView(1);
    state_->refreshTabButtons();
    internetFinished.set();
}

}  // namespace salvor

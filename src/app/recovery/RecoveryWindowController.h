#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <stop_token>
#include <thread>

#include "app/recovery/FinishedFlag.h"
#include "app/recovery/ServiceRunner.h"
#include "scan/Categories.h"

namespace salvor {

/// The recovery driver: one worker thread per data category, each of which runs its category's
/// service. It carves nothing itself. One controller serves many scans, one at a time; the data
/// type codes are those of a scan (0 everything, 1 messages, ... 8 calendar).
class RecoveryWindowController {
    std::array<FinishedFlag, kCategoryCount> finished_;  // first, for the names below refer to it

  public:
    RecoveryWindowController() = default;
    RecoveryWindowController(const RecoveryWindowController&) = delete;
    RecoveryWindowController& operator=(const RecoveryWindowController&) = delete;

    /// Waits for the signatures, runs the workers of `dataType` and returns when every finished
    /// flag is set. A stop request on `cancelled` is a `cancelScan`. An unknown code starts and
    /// presets nothing. Kept: unknown-code-waits.
    void RecoverDeletedData(int dataType, ScanState& state, ServiceRunner& services,
                            std::stop_token cancelled = {});

    /// Cancels the workers that run; the scan still ends through their finished flags. May be
    /// called from any thread.
    void cancelScan();

    FinishedFlag& finished(Category category) { return finished_.at(indexOf(category)); }
    // Those that have a name.
    FinishedFlag& dcmiFinished = finished(Category::Photos);
    FinishedFlag& contactsFinished = finished(Category::Contacts);
    FinishedFlag& notesFinished = finished(Category::Notes);
    FinishedFlag& callHistoryFinished = finished(Category::Calls);
    FinishedFlag& whatsAppFinished = finished(Category::WhatsApp);
    FinishedFlag& calendarFinished = finished(Category::Calendar);
    FinishedFlag& messagesFinished = finished(Category::Messages);
    FinishedFlag& internetFinished = finished(Category::Internet);

  private:
    void RecoverDeletedDataSignatures();
    void checkForRecovery() const;
    void startWorker(const CategoryFacts& facts);
    void presetFlags(Category running);
    void joinWorkers();
    /// What the thread of a category does, its waiting included.
    void work(const CategoryFacts& facts, std::stop_token cancelled);
    /// Everything that a service fills is complete when this returns.
    void runService(const CategoryFacts& facts, std::stop_token cancelled);

    std::int32_t DataType_ = 0;
    ScanState* state_ = nullptr;         ///< of the scan that runs
    ServiceRunner* services_ = nullptr;  ///< of the scan that runs
    FinishedFlag statusTold_;            ///< by the worker started last, if it has one to tell
    std::mutex threadsMutex_;            ///< guards the two below
    bool cancelRequested_ = false;
    std::array<std::jthread, kCategoryCount> threads_;
};

}  // namespace salvor

#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <stop_token>
#include <thread>

#include "app/recovery/FinishedFlag.h"
#include "app/recovery/ServiceRunner.h"
#include "scan/ScanState.h"
#include "services/ServiceMakers.h"

namespace salvor {

/// The recovery driver: one worker thread per data category, each of which runs its category's
/// service. It carves nothing itself. One controller serves many scans, one at a time; the data
/// type codes are those of a scan (0 everything, 1 messages, ... 8 calendar).
class RecoveryWindowController {
  public:
    RecoveryWindowController() = default;
    RecoveryWindowController(const RecoveryWindowController&) = delete;
    RecoveryWindowController& operator=(const RecoveryWindowController&) = delete;

    /// Waits for the signatures, runs the workers of `dataType` and returns when every finished
    /// flag is set. A stop request on `cancelled` is a `cancelScan`. Deliberate: an unknown code
    /// starts and presets nothing, and returns only if all flags are set already.
    void RecoverDeletedData(int dataType, ScanState& state, ServiceRunner& services,
                            std::stop_token cancelled = {});

    /// Cancels the workers that run; the scan still ends through their finished flags. May be
    /// called from any thread.
    void cancelScan();

    FinishedFlag dcmiFinished, contactsFinished, notesFinished, callHistoryFinished,
        whatsAppFinished, calendarFinished, messagesFinished, internetFinished;

  private:
    using Body = void (RecoveryWindowController::*)(std::stop_token);
    using Flag = FinishedFlag RecoveryWindowController::*;
    /// When a scan of one category presets the flags of the others.
    enum class Preset { BeforeCreation, BeforeStart, AfterStart };
    struct Worker {
        std::int32_t dataType;
        Body body;
        Flag finished;
        Preset preset;
    };
    static constexpr std::size_t kWorkers = 8;
    static const std::array<Worker, kWorkers> kWorkersInOrder;

    void RecoverDeletedDataSignatures();
    void checkForRecovery() const;
    void startWorker(std::size_t index);
    void presetFlags(const Worker& worker);
    void joinWorkers();

    void dcmiStart(std::stop_token cancelled);
    void contactsStart(std::stop_token cancelled);
    void notesStart(std::stop_token cancelled);
    void callHistoryStart(std::stop_token cancelled);
    void whatsAppStart(std::stop_token cancelled);
    void calendarStart(std::stop_token cancelled);
    void messagesStart(std::stop_token cancelled);
    void internetHistoryStart(std::stop_token cancelled);
    void runService(ServiceIndex index, std::stop_token cancelled);

    std::int32_t DataType_ = 0;
    ScanState* state_ = nullptr;         ///< of the scan that runs
    ServiceRunner* services_ = nullptr;  ///< of the scan that runs
    std::mutex threadsMutex_;            ///< guards the two below
    bool cancelRequested_ = false;
    std::array<std::jthread, kWorkers> threads_;  ///< in the order of `kWorkersInOrder`
};

}  // namespace salvor

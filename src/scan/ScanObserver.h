#pragma once

#include <string>

#include "scan/Category.h"

namespace salvor {

/// What a status text is; the numbers stand in the JSON's list of statuses.
enum class StatusCode : int {
    Running = 0,  ///< names the category that is being read
    Clear = 2,    ///< there is nothing to show any more
    Result = 3,   ///< a result, or a step that takes long
};

enum class Screen : int { Progress = 2, Main = 3 };

enum class View : int {
    Lists = 1,  ///< the lists of the categories, pictures among them
};

/// How a scan came to its end.
enum class ScanEnd {
    Done,
    Cancelled,     ///< the lists hold what was found until then
    NoWorkFolder,  ///< the pictures could not be given a place; nothing was read
    Failed,        ///< an exception; the lists hold what was found until then
};

/// What a front end learns of a running scan. Every method may be called from any thread of the
/// scan and must return quickly; without an observer a scan runs as well.
class ScanObserver {
  public:
    virtual ~ScanObserver() = default;
    virtual void onStatus(StatusCode code, const std::string& text) {
        (void)code;
        (void)text;
    }
    /// The live list of a category is complete and changes no more; called on the thread that
    /// filled it. Messages, contacts, calls, WhatsApp, notes and calendar: the scan's thread, once
    /// their rows are read and before any worker starts. Photos and internet history: their
    /// worker, just before `onCategoryRecovered`, for the photo library adds to what the sweep
    /// found and the history is read by its service alone. A cancelled scan calls it for the
    /// category that the cancel interrupts (with what was read until then) and none after it.
    virtual void onCategoryRead(Category category) { (void)category; }
    /// All lists of a category are complete; called on the thread of its worker, before its
    /// finished flag is set, so that they can be copied safely here. Each worker that was started
    /// calls it once, cancelled or failed ones too; a scan that is cancelled before recovery
    /// begins starts none.
    virtual void onCategoryRecovered(Category category) { (void)category; }
    /// New deleted records stand in the lists.
    virtual void onRecoveredData() {}
    /// A view has to be drawn anew.
    virtual void onMainView(View view) { (void)view; }
    virtual void onTabButtons() {}
    /// The category of the scan that begins; photos for a scan of everything. In a scan of one
    /// category whose live rows SQL reads, once more when they are read.
    virtual void onTabSelected(Category category) { (void)category; }
    /// The category of a scan of one has its live rows: its tab can be used now.
    virtual void onTabEnabled(Category category) { (void)category; }
    virtual void onScreen(Screen screen) { (void)screen; }
    /// Every scan that began ends with this call, after the one for the main screen. `reason` says
    /// in one line why it was cut short and is "" for `Done`.
    virtual void onScanEnded(ScanEnd end, const std::string& reason) {
        (void)end;
        (void)reason;
    }
    /// A device with a name has come, or gone.
    virtual void onDeviceConnected(bool connected) { (void)connected; }
    /// How far the fresh backup of a device is; `percent` is -1 when its helper does not tell.
    virtual void onBackupProgress(int percent, const std::string& line) {
        (void)percent;
        (void)line;
    }
    virtual void onBackupComplete() {}
    /// Anything a person should know that is no status: a file that could not be read, a limit.
    virtual void onWarning(const std::string& text) { (void)text; }
    /// What a person must know even where warnings are unwanted: the scan cannot do its work.
    virtual void onError(const std::string& text) { onWarning(text); }
    /// Several lines, each ended by a line feed, for whoever looks for a fault of the program.
    virtual void onReport(const std::string& lines) { onWarning(lines); }
};

}  // namespace salvor

#pragma once

#include <string>

namespace salvor {

/// What a front end learns of a running scan. Every method may be called from any thread of the
/// scan and must return quickly; without an observer a scan runs as well.
class ScanObserver {
  public:
    virtual ~ScanObserver() = default;
    /// `code` is 0 while a category runs, 2 to clear, 3 for a result or a long-running step.
    virtual void onStatus(int code, const std::string& text) {
        (void)code;
        (void)text;
    }
    /// New deleted records stand in the lists.
    virtual void onRecoveredData() {}
    /// A view has to be drawn anew.
    virtual void onMainView(int view) { (void)view; }
    virtual void onTabButtons() {}
    /// The category of the scan that begins, by its data-type code: 1, 3 to 8, or 2 (photos) for
    /// everything else.
    virtual void onTabSelected(int dataType) { (void)dataType; }
    /// 2 is the progress screen, 3 the main screen.
    virtual void onScreen(int screen) { (void)screen; }
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
};

}  // namespace salvor

#pragma once

#include "app/ScanJob.h"
#include "cli/Console.h"
#include "cli/ExitStatus.h"
#include "cli/ScanDisplay.h"
#include "cli/ScanOptions.h"

namespace salvor::cli {

/// A display for a run with these options; its log lines stand above the progress line.
class RunDisplay : public ScanDisplay {
  public:
    RunDisplay(Console& console, const ScanOptions& options);
};

/// Runs the scan of a job and writes what it found, as the options want it. Throws `Failure` for a
/// scan that never began. `Interrupts` must be alive.
ExitStatus runAndShow(ScanJob& job, RunDisplay& display, const ScanOptions& options,
                      Console& console);

}  // namespace salvor::cli

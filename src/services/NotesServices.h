#pragma once

#include <cstdint>
#include <memory>

#include "recovery/carvers/NoteBodiesSQLiteRecovery.h"
#include "recovery/carvers/NotesSQLiteRecovery.h"
#include "services/abstractServices.h"

namespace salvor {

/// The notes category: carves note bodies, then note headers, and joins each deleted header to its
/// body. On iOS 9 and later the carvers run over the newer note store.
class NotesServices : public abstractServices {
  public:
    explicit NotesServices(ScanState& state);

    void RecoverFromIOSBackup(const DeviceInfo& device) override;
    /// Reads the live notes of the older store into `model`.
    void getWhatisExisting(const DeviceInfo& device);
    /// Attaches to every deleted note without a body the first carved one that it owns.
    void matchNotebodiesToNotes();
    std::shared_ptr<NoteBody> FindNoteBodyFromOwner(std::int64_t owner) const;
    /// Drops carved bodies that equal an attached one and attaches the others to their notes.
    void AdditionalFiltering();

  private:
    std::unique_ptr<NotesSQLiteRecovery> recoveryNotes_;
    std::unique_ptr<NoteBodiesSQLiteRecovery> recoveryNoteBodies_;
};

}  // namespace salvor

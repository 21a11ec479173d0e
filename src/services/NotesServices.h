#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>

#include "recovery/NoteBodiesSQLiteRecovery.h"
#include "recovery/NotesSQLiteRecovery.h"
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
    /// Attaches to every deleted note without a body the first carved one that it owns. Kept:
    /// first-body-wins.
    void matchNotebodiesToNotes();
    /// The first carved body with this owner; null without one.
    std::shared_ptr<NoteBody> FindNoteBodyFromOwner(std::int64_t owner) const;
    /// Drops carved bodies whose text is attached already and attaches the others, in their order,
    /// to their notes. No step of a scan calls it.
    void AdditionalFiltering();

    /// The carved bodies, as far as they were not dropped.
    List<baseRecoveryObject> carvedBodies() const;

  private:
    void indexBodies();

    std::unique_ptr<NotesSQLiteRecovery> recoveryNotes_;
    std::unique_ptr<NoteBodiesSQLiteRecovery> recoveryNoteBodies_;
    std::unordered_map<std::int64_t, std::shared_ptr<NoteBody>> firstBodyOfOwner_;
};

}  // namespace salvor

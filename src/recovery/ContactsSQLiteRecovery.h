#pragma once

#include "records/Contact.h"
#include "recovery/CategoryCarver.h"

namespace salvor {

/// Carves the person table of the address book. Its run selects no patterns. Kept:
/// contacts-from-search-table.
class ContactsSQLiteRecovery : public CategoryCarver<Contact> {
  public:
    static const SignatureUse<Contact> kSignature;

    explicit ContactsSQLiteRecovery(ScanState& state, std::stop_token cancelled = {});

    void DoRecoveryPath(const std::filesystem::path& path) override;
    /// Selects the patterns when the live table has rows; no part of a run.
    void setSignature(const std::filesystem::path& path);
    /// The live-row test, for callers that want it. Records without a first and a last name are
    /// passed over.
    void filterMessages();

  protected:
    std::string_view liveRowsStatement() const override { return "SELECT * FROM ABPerson"; }
    void recordCarved(const std::shared_ptr<Contact>& contact) override;
    std::int32_t setRecoveryCount(std::int32_t count) override;
    std::int32_t incrementRecoveryCount() override;
};

}  // namespace salvor

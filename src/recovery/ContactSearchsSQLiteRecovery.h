#pragma once

#include "records/Contact.h"
#include "recovery/CategoryCarver.h"

namespace salvor {

/// Carves the address book's full-text-search table, whose rows keep names, numbers and addresses
/// of a person as plain text even after the person row is gone. The deleted contacts of a scan
/// come from here. Kept: contacts-from-search-table.
class ContactSearchsSQLiteRecovery : public CategoryCarver<Contact> {
  public:
    static const SignatureUse<Contact> kSignature;

    explicit ContactSearchsSQLiteRecovery(ScanState& state, std::stop_token cancelled = {});

    /// The live-row test, for callers that want it.
    void filterMessages();
    /// The correction for the text of "c15Phone"; no opinion on any other field.
    std::int32_t verifyDataPosition(Bytes text) override;

  protected:
    std::string_view liveRowsStatement() const override {
        return "SELECT * FROM ABPersonFullTextSearch_content";
    }
    void recordCarved(const std::shared_ptr<Contact>& contact) override;
    std::int32_t setRecoveryCount(std::int32_t count) override;
    std::int32_t incrementRecoveryCount() override;
};

}  // namespace salvor

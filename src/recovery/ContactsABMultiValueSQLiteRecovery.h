#pragma once

#include "records/ContactABMultiValue.h"
#include "recovery/CategoryCarver.h"

namespace salvor {

/// Carves the multi-value table of the address book (numbers, addresses of persons). No scan runs
/// it.
class ContactsABMultiValueSQLiteRecovery : public CategoryCarver<ContactABMultiValue> {
  public:
    static const SignatureUse<ContactABMultiValue> kSignature;

    explicit ContactsABMultiValueSQLiteRecovery(ScanState& state, std::stop_token cancelled = {});

    /// Compares `RecoveredData` with the live rows.
    void filterMessages();

  protected:
    void recordCarved(const std::shared_ptr<ContactABMultiValue>& value) override;
    void afterRecovery() override { filterMessages(); }
};

}  // namespace salvor

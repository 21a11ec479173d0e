#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "services/abstractServices.h"

namespace salvor {

/// The contacts category: reads the persons of the address book and carves deleted ones out of its
/// search table. Other services look up callers here.
class contactServices : public abstractServices {
  public:
    explicit contactServices(ScanState& state);

    void RecoverFromIOSBackup(const DeviceInfo& device) override;
    /// Reads the live address book, then runs the search carver and the person carver.
    void checkForExisitngData(const DeviceInfo& device);
    /// The address-book pictures, when that file exists and is not empty.
    std::optional<BackupFile> ImagesConnectionString(const DeviceInfo& device) const;

    const List<Contact>& ContactsAll() const { return contactsAll_; }
    /// The first contact one of whose numbers equals `number` exactly; null without one.
    std::shared_ptr<Contact> FindContactByPhoneNumber(const Text& number) const;
    std::shared_ptr<Contact> FindContactByContactRowId(std::int64_t rowId) const;

    // Counters for the views.
    std::int32_t DisplayedRecoveredMessages = 0;
    std::int32_t DisplayedRecoveredCallHistory = 0;
    std::int32_t DisplayedRetrievedMessages = 0;
    std::int32_t DisplayedRetrievedCallHistory = 0;

  private:
    void initaliseForRecovery();
    void readPersons(const BackupFile& file);

    List<Contact> contactsAll_;
    std::unordered_map<Text, std::shared_ptr<Contact>> byNumber_;
    std::unordered_map<std::int64_t, std::shared_ptr<Contact>> byRowId_;
};

}  // namespace salvor

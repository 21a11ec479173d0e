#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "records/Contact.h"
#include "records/RecordContext.h"
#include "services/PhoneIndex.h"
#include "util/Text.h"

namespace salvor {

/// Finds the contact behind a number or address: live contacts in list order first, then carved
/// ones; null without a hit. Takes the lists as they stand when it is made, so it is made once the
/// contacts of a scan are complete.
class ContactLookup {
  public:
    ContactLookup() = default;
    explicit ContactLookup(const RecordContext& context);

    std::shared_ptr<Contact> FindContactFromContactsListByPhoneNumber(const Text& number) const;
    /// Exact equality with one of the three e-mail slots.
    std::shared_ptr<Contact> FindContactFromContactsListByEmailAddress(const Text& address) const;
    std::shared_ptr<Contact> findBySlNo(std::int64_t number) const;

    /// By phone number when `address` is one, by e-mail when it is one, else null.
    std::shared_ptr<Contact> find(const Text& address) const;

  private:
    void add(const std::shared_ptr<Contact>& contact);

    List<Contact> contacts_;
    PhoneIndex phones_;
    std::unordered_map<Text, std::size_t> emails_;
    std::unordered_map<std::int64_t, std::size_t> serialNumbers_;
};

/// One "@" between a name and a domain with an inner dot, without white space or control
/// characters.
bool IsEmailAddress(const Text& text);

}  // namespace salvor

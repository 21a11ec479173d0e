#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>

#include "records/RecordContext.h"
#include "util/Text.h"

namespace salvor {

/// `CallHistory::getContactNamefromNumber` for many numbers, with the same answers: every contact
/// is looked at once. Contacts that join the lists later are taken in by the next `find`; those
/// known already are taken not to change. Not thread-safe.
class ContactNames {
  public:
    explicit ContactNames(const RecordContext& context) : context_(context) {}

    /// "" for an absent number and without a hit.
    Text find(const Text& number);

  private:
    /// The first contact of a list by each of its searched numbers.
    struct Numbers {
        std::unordered_map<Text, std::size_t> positions;
        std::size_t indexed = 0;

        void takeIn(const List<Contact>& contacts);
        /// The position of the first contact with the number, or the end of the list.
        std::size_t first(const Text& number) const;
    };

    const RecordContext& context_;
    Numbers live_;
    Numbers deleted_;
};

}  // namespace salvor

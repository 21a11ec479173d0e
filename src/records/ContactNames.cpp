#include "records/ContactNames.h"

#include <algorithm>

#include "records/CallHistory.h"

namespace salvor {

void ContactNames::Numbers::takeIn(const List<Contact>& contacts) {
    for (; indexed < contacts.size(); ++indexed) {
        for (const auto slot : CallHistory::searchedNumbers) {
            const Text& number = (*contacts[indexed]).*slot;
            if (number) positions.try_emplace(number, indexed);
        }
    }
}

std::size_t ContactNames::Numbers::first(const Text& number) const {
    const auto found = positions.find(number);
    return found == positions.end() ? indexed : found->second;
}

Text ContactNames::find(const Text& number) {
    if (!number) return "";
    const Text variant = CallHistory::splittedTelNumber(*number);
    const auto nameIn = [&](Numbers& numbers, const List<Contact>& contacts) -> Text {
        numbers.takeIn(contacts);
        const auto position = std::min(numbers.first(number), numbers.first(variant));
        if (position == numbers.indexed) return std::nullopt;
        return CallHistory::getContactName(*contacts[position]);
    };
    if (auto name = nameIn(live_, context_.liveContacts())) return name;
    return nameIn(deleted_, context_.deletedContacts()).value_or("");
}

}  // namespace salvor

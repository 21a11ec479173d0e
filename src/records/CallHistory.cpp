#include "records/CallHistory.h"

#include <fmt/format.h>

#include "records/RecordContext.h"
#include "util/StringUtils.h"
#include "util/Utf8.h"

namespace salvor {
namespace {

bool hasNumber(const Contact& contact, const Text& number, const Text& variant) {
    for (const auto slot : CallHistory::searchedNumbers) {
        const Text& stored = contact.*slot;
        if (StringUtils::sameText(stored, number) || StringUtils::sameText(stored, variant)) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::shared_ptr<CallLog> CallHistory::generateCallLogObject(const RecordContext& context) const {
    return generateCallLogObject(context, getContactNamefromNumber(Address, context));
}

std::shared_ptr<CallLog> CallHistory::generateCallLogObject(const RecordContext& context,
                                                            const salvor::Text& contactName) const {
    auto row = std::make_shared<CallLog>();
    row->SlNo = static_cast<std::int32_t>(context.deletedCallLogCount() + 1);
    row->Address = Address;
    row->PhoneNumber = Address;
    row->LocalTime = Date;
    row->CallType = convertCallTypeFlagtoCallTypeString();
    row->ContactName = contactName;
    row->CallDuration = static_cast<std::int32_t>(Duration);
    row->CallMode = convertCallTypeFlagtoCallModeString();
    row->Origin = Origin;
    return row;
}

std::string CallHistory::convertCallTypeFlagtoCallTypeString() const {
    switch (Flags) {
        case 0:
        case 4:
            return Duration != 0 ? "Incoming - Answered" : "Incoming - Missed call";
        case 1:
        case 5:
            return Duration != 0 ? "Outgoing - Answered" : "Outgoing - Not answered";
        case 8:
            // Kept: blocked-call.
            return ZOriginated ? "Outgoing - FaceTime" : "Blocked call";
        case 16:
            return "FaceTime";
        case 20:
            return "Incoming - FaceTime";
        case 21:
            return "Outgoing - FaceTime";
        default:
            return fmt::format("Dropped (Flag {})", Flags);
    }
}

std::string CallHistory::convertCallTypeFlagtoCallModeString() const {
    const bool faceTime = (Flags == 8 && ZOriginated) || Flags == 16 || Flags == 20 || Flags == 21;
    return faceTime ? "FaceTime" : "Call";
}

Text CallHistory::Fullname() const {
    return contact != nullptr ? contact->FullName : "";
}

Text CallHistory::getContactNamefromNumber(const salvor::Text& number,
                                           const RecordContext& context) {
    if (!number) return "";
    const salvor::Text variant = splittedTelNumber(*number);
    for (const auto* contacts : {&context.liveContacts(), &context.deletedContacts()}) {
        for (const auto& contact : *contacts) {
            if (hasNumber(*contact, number, variant)) return getContactName(*contact);
        }
    }
    return "";
}

Text CallHistory::getContactName(const Contact& contact) {
    for (const auto* name : {&contact.NickName, &contact.FirstName, &contact.LastName}) {
        if (*name) return *name;
    }
    return "";
}

std::string CallHistory::splittedTelNumber(std::string_view number) {
    constexpr std::size_t splitAt = 5;
    if (utf16Length(number) <= splitAt) return std::string(number);
    std::string split(number);
    return split.insert(utf16Offset(number, splitAt), "\u00A0");
}

bool CallHistory::IsEqual(const CallHistory& other) const {
    return StringUtils::sameText(Address, other.Address) && StringUtils::sameText(Date, other.Date);
}

}  // namespace salvor

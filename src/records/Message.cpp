#include "records/Message.h"

#include <fmt/format.h>

#include "records/RecordContext.h"
#include "records/SMS.h"
#include "util/StringUtils.h"

namespace salvor {
namespace {

Text addressOfHandle(std::int64_t handleId, RecordContext& context) {
    const auto lookups = context.lookups();
    if (lookups == nullptr) return std::nullopt;
    const auto handle = static_cast<std::int32_t>(handleId);
    // The second look-up answers with the first one's result when it finds nothing.
    return lookups->GetPhoneNumberForID(handle, lookups->GetPhoneNumberForHID(handle, {}));
}

}  // namespace

std::shared_ptr<SMS> Message::generateSMSObject(RecordContext& context) const {
    auto row = std::make_shared<SMS>();
    row->RowID = -1;
    row->handleID = static_cast<std::int32_t>(HandleId);
    row->Address = Address ? Address : addressOfHandle(HandleId, context);
    if (!Address && StringUtils::IsNullOrEmpty(row->Address)) {
        row->Address = fmt::format("unknown{}", context.nextUnknownNumber());
    }
    row->LocalTime = Date;
    row->Message = Text;
    row->Type = IsFromMe ? "Sent to" : "Received from";
    row->service = Service;
    row->GUID = Guid;
    row->isRecovered = true;
    row->Origin = Origin;
    return row;
}

bool SMS::isRoughlyEqual(const SMS& other) const {
    return StringUtils::sameText(GUID, other.GUID);
}

}  // namespace salvor

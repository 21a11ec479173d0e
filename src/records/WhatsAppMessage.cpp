#include "records/WhatsAppMessage.h"

#include <array>

#include "records/RecordContext.h"
#include "util/StringUtils.h"

namespace salvor {
namespace {

constexpr auto compared = std::array{&WhatsAppMessage::ZText,      &WhatsAppMessage::_zmesssageDate,
                                     &WhatsAppMessage::ZFromJid,   &WhatsAppMessage::ZToJid,
                                     &WhatsAppMessage::ZStandZAid, &WhatsAppMessage::ZPushName};

constexpr auto roughlyCompared =
    std::array{&WhatsApp::MessageDate, &WhatsApp::FromMsgID, &WhatsApp::ToMsgID, &WhatsApp::zText};

}  // namespace

std::shared_ptr<WhatsApp> WhatsAppMessage::generateWhatsAppObject(RecordContext& context) const {
    auto row = std::make_shared<WhatsApp>();
    row->MessageDate = Date;
    row->FromMsgID = ZFromJid;
    row->ToMsgID = ZToJid;
    row->zText = ZText;
    // Kept: empty-sender-is-sent.
    row->isSent = row->FromMsgID == "" || !ZPushName;
    if (const auto lookups = context.lookups()) {
        row->ContactName =
            lookups->GetWhatsAppContactName(row->FromMsgID ? row->FromMsgID : row->ToMsgID);
    }
    if (!row->ContactName) row->ContactName = " ";
    row->ishavingName = !row->ContactName->empty();  // Kept: blank-is-a-name.
    row->Origin = Origin;
    return row;
}

Text WhatsAppMessage::ContactFullName() const {
    const auto partner = whatsAppContact.lock();
    return partner != nullptr ? partner->ZPartnerName : "";
}

Text WhatsAppMessage::ContactPhone() const {
    const auto partner = whatsAppContact.lock();
    return partner != nullptr ? partner->Phone : "";
}

std::string WhatsAppMessage::Type() const {
    return IsFromMe ? "Sent" : "Received";
}

std::string WhatsAppMessage::GetZMessageNumberOrEmpty() const {
    const std::string jid = StringUtils::NullToEmpty(IsFromMe ? ZFromJid : ZToJid);
    const std::size_t at = jid.rfind('@');
    return at == std::string::npos ? "" : jid.substr(0, at);
}

bool WhatsAppMessage::IsEqual(const WhatsAppMessage& other) const {
    for (const auto member : compared) {
        if (!StringUtils::sameText(this->*member, other.*member)) return false;
    }
    return true;
}

bool WhatsApp::isRoughlyEqual(const WhatsApp& other) const {
    for (const auto member : roughlyCompared) {
        if ((this->*member).view() != (other.*member).view()) return false;
    }
    return true;
}

}  // namespace salvor

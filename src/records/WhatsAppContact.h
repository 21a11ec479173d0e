#pragma once

#include "records/Field.h"
#include "records/List.h"
#include "util/Text.h"

namespace salvor {

struct WhatsAppMessage;

/// A WhatsApp chat partner and the messages exchanged with it.
struct WhatsAppContact {
    bool Recovered = false;
    bool ContainsDeletedMessage = false;
    bool isChecked = false;
    salvor::Text ZContactJID;
    salvor::Text Phone;
    salvor::Text ZPartnerName;
    salvor::Text ZContactProfileBitmapImage;
    List<WhatsAppMessage> ObservableCollection;

    static constexpr auto fields() {
        return std::make_tuple(
            field("Recovered", &WhatsAppContact::Recovered),
            field("ContainsDeletedMessage", &WhatsAppContact::ContainsDeletedMessage),
            field("isChecked", &WhatsAppContact::isChecked),
            field("ZContactJID", &WhatsAppContact::ZContactJID),
            field("Phone", &WhatsAppContact::Phone),
            field("ZPartnerName", &WhatsAppContact::ZPartnerName),
            field("ZContactProfileBitmapImage", &WhatsAppContact::ZContactProfileBitmapImage),
            field("ObservableCollection", &WhatsAppContact::ObservableCollection));
    }
};

}  // namespace salvor

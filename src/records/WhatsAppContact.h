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

    template <class Self = WhatsAppContact>
    static constexpr auto fields() {
        return std::make_tuple(
            field("Recovered", &Self::Recovered),
            field("ContainsDeletedMessage", &Self::ContainsDeletedMessage),
            field("isChecked", &Self::isChecked), field("ZContactJID", &Self::ZContactJID),
            field("Phone", &Self::Phone), field("ZPartnerName", &Self::ZPartnerName),
            field("ZContactProfileBitmapImage", &Self::ZContactProfileBitmapImage),
            field("ObservableCollection", &Self::ObservableCollection));
    }
};

}  // namespace salvor

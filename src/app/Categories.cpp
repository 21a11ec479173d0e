#include "app/Categories.h"

#include <array>
#include <string>

namespace salvor {
namespace {

struct CategoryLists {
    Category category;
    CategoryCounts (*count)(const ScanState&);
};

template <auto Live, auto Deleted>
CategoryCounts sizesOf(const ScanState& state) {
    return {{}, (state.*Live).size(), (state.*Deleted).size()};
}

CategoryCounts pictures(const ScanState& state) {
    return {{},
            state.Photos.size() + state.Videos.size(),
            state.DeletedPhotos.size() + state.DeletedVideos.size()};
}

using S = ScanState;
constexpr std::array kCategories = {
    CategoryLists{{1, "messages", "Messages"}, sizesOf<&S::SMSContent, &S::DeletedSMS>},
    CategoryLists{{2, "photos", "Photos and videos"}, pictures},
    CategoryLists{{3, "contacts", "Contacts"}, sizesOf<&S::ContactContent, &S::DeletedContact>},
    CategoryLists{{4, "calls", "Calls"}, sizesOf<&S::CallLogContent, &S::DeletedCallLog>},
    CategoryLists{{5, "whatsapp", "WhatsApp"}, sizesOf<&S::WhatsAppContent, &S::DeletedWhatsApp>},
    CategoryLists{{6, "notes", "Notes"}, sizesOf<&S::NotesContent, &S::DeletedNotes>},
    CategoryLists{{7, "internet", "Internet history"},
                  sizesOf<&S::InternetContent, &S::DeletedInternet>},
    CategoryLists{{8, "calendar", "Calendar"}, sizesOf<&S::CalendarContent, &S::DeletedCalendar>},
};

}  // namespace

std::span<const Category> categories() {
    static const auto all = [] {
        std::array<Category, kCategories.size()> list{};
        for (std::size_t i = 0; i < list.size(); ++i) list[i] = kCategories[i].category;
        return list;
    }();
    return all;
}

std::optional<std::int32_t> categoryCode(std::string_view wordOrCode) {
    if (wordOrCode == "all" || wordOrCode == "0") return 0;
    for (const auto& category : categories())
        if (wordOrCode == category.word || wordOrCode == std::to_string(category.code))
            return category.code;
    return std::nullopt;
}

std::vector<CategoryCounts> countRecords(const ScanState& state, std::int32_t code) {
    std::vector<CategoryCounts> counts;
    for (const auto& [category, count] : kCategories) {
        if (code != 0 && code != category.code) continue;
        counts.push_back(count(state));
        counts.back().category = category;
    }
    return counts;
}

}  // namespace salvor

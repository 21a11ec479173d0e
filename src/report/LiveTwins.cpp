#include "report/LiveTwins.h"

#include <algorithm>
#include <fmt/format.h>
#include <functional>
#include <initializer_list>
#include <unordered_map>

#include "util/DateUtils.h"

namespace salvor {
namespace {

/// The parts one behind the other; empty when one of them is.
std::string joined(std::initializer_list<std::string_view> parts) {
    std::string content;
    for (const auto part : parts) {
        if (part.empty()) return {};
        content.append(part).push_back('\0');
    }
    return content;
}

void add(Contents& contents, std::string content) {
    if (!content.empty()) contents.push_back(std::move(content));
}

/// The time as a row shows it. Of carved rows whose times were Unix seconds, which are shown 31
/// years late, also the time that was meant.
std::vector<std::string> timesOf(const Text& shown, RowSide side) {
    constexpr double kLate = 978307200;
    std::vector<std::string> times{std::string(shown.view())};
    if (side == RowSide::Live) return times;
    if (const auto date = DateUtils::StringToDateTime(shown.view()))
        times.push_back(DateUtils::DateTimeToString({date->secondsSinceReference - kLate}));
    return times;
}

std::string withoutLineFeeds(const Text& text) {
    std::string kept(text.view());
    std::erase(kept, '\n');
    return kept;
}

}  // namespace

Contents contentsOf(const SMS& row, RowSide side) {
    Contents contents;
    add(contents, joined({"GUID", row.GUID.view()}));
    const std::string text = withoutLineFeeds(row.Message);
    if (contents.empty() || side == RowSide::Live)
        for (const auto& time : timesOf(row.LocalTime, side)) add(contents, joined({text, time}));
    return contents;
}

Contents contentsOf(const Contact& row, RowSide) {
    Contents contents;
    const std::string name = fmt::format("{}\n{}", row.FirstName.view(), row.LastName.view());
    for (const auto& number : row.ContactNumbers)
        add(contents, joined({name, number->Number.view()}));
    for (const auto& mail : row.ContactEmailAddresses)
        add(contents, joined({name, mail->Email.view()}));
    return contents;
}

Contents contentsOf(const CallLog& row, RowSide side) {
    Contents contents;
    for (const auto& time : timesOf(row.LocalTime, side))
        add(contents, joined({row.Address.view(), time, std::to_string(row.CallDuration)}));
    return contents;
}

Contents contentsOf(const WhatsApp& row, RowSide) {
    Contents contents;
    add(contents, joined({row.zText.view(), row.MessageDate.view()}));
    return contents;
}

Contents contentsOf(const Note& row, RowSide) {
    Contents contents;
    if (row.OriginalCreationDate != 0)
        add(contents, joined({row.Title.view(), fmt::format("{}", row.OriginalCreationDate)}));
    return contents;
}

Contents contentsOf(const Calendar& row, RowSide side) {
    Contents contents;
    add(contents, joined({"identifier", row.UniqueIdentifier.view()}));
    if (contents.empty() || side == RowSide::Live)
        add(contents, joined({row.Summary.view(), row.StartDate.view(), row.EndDate.view()}));
    return contents;
}

Contents contentsOf(const Photo& row, RowSide) {
    Contents contents;
    add(contents, joined({row.Location.view()}));
    return contents;
}

Contents contentsOf(const Video& row, RowSide) {
    Contents contents;
    add(contents, joined({row.Location.view()}));
    return contents;
}

Contents contentsOf(const InternetHistory& row, RowSide) {
    Contents contents;
    add(contents, joined({row.Url.view(), row.LastVisitedDate.view()}));
    return contents;
}

template <class Row>
std::vector<std::int32_t> liveTwins(const List<Row>& live, const List<Row>& deleted) {
    std::vector<std::int32_t> twins(deleted.size(), 0);
    // Contents are told apart by their hashes: two of a million would share one in a scan out of a
    // million.
    const std::hash<std::string> hash;
    std::unordered_multimap<std::size_t, std::size_t> waiting;
    for (std::size_t index = 0; index < deleted.size(); ++index) {
        if (deleted[index] == nullptr) continue;
        for (const auto& content : contentsOf(*deleted[index], RowSide::Deleted))
            waiting.emplace(hash(content), index);
    }
    for (std::size_t place = 0; place < live.size() && !waiting.empty(); ++place) {
        if (live[place] == nullptr) continue;
        auto number = static_cast<std::int32_t>(place + 1);
        if constexpr (requires { live[place]->SlNo; }) number = live[place]->SlNo;
        for (const auto& content : contentsOf(*live[place], RowSide::Live)) {
            const auto [first, last] = waiting.equal_range(hash(content));
            for (auto found = first; found != last; ++found)
                if (twins[found->second] == 0) twins[found->second] = number;
            waiting.erase(first, last);
        }
    }
    return twins;
}

template std::vector<std::int32_t> liveTwins(const List<SMS>&, const List<SMS>&);
template std::vector<std::int32_t> liveTwins(const List<Contact>&, const List<Contact>&);
template std::vector<std::int32_t> liveTwins(const List<CallLog>&, const List<CallLog>&);
template std::vector<std::int32_t> liveTwins(const List<WhatsApp>&, const List<WhatsApp>&);
template std::vector<std::int32_t> liveTwins(const List<Note>&, const List<Note>&);
template std::vector<std::int32_t> liveTwins(const List<Calendar>&, const List<Calendar>&);
template std::vector<std::int32_t> liveTwins(const List<Photo>&, const List<Photo>&);
template std::vector<std::int32_t> liveTwins(const List<Video>&, const List<Video>&);
template std::vector<std::int32_t> liveTwins(const List<InternetHistory>&,
                                             const List<InternetHistory>&);

}  // namespace salvor

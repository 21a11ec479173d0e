#include "tools/sample/SampleBackup.h"

#include <array>
#include <stdexcept>

#include "tools/sample/Digest.h"
#include "tools/sample/SampleFolder.h"

namespace salvor {
namespace {

constexpr std::array kDevices{
    SampleDevice{4, "4.3.5", "8L1", "iPhone3,1", 1300000000, AutoVacuum::None, false, false},
    SampleDevice{5, "5.1.1", "9B206", "iPhone4,1", 1330000000, AutoVacuum::Full, true, false},
    SampleDevice{6, "6.1.6", "10B500", "iPhone5,1", 1358000000, AutoVacuum::Full, true, false},
    SampleDevice{7, "7.1.2", "11D257", "iPhone6,1", 1390000000, AutoVacuum::Incremental, true,
                 false},
    SampleDevice{8, "8.4.1", "12H321", "iPhone7,2", 1420000000, AutoVacuum::Incremental, true,
                 false},
    SampleDevice{9, "9.3.5", "13G36", "iPhone8,1", 1455000000, AutoVacuum::Incremental, true, true},
    SampleDevice{10, "10.3.4", "14G61", "iPhone9,3", 1480000000, AutoVacuum::Incremental, true,
                 true},
    SampleDevice{11, "11.4.1", "15G77", "iPhone10,1", 1510000000, AutoVacuum::Incremental, true,
                 true},
    SampleDevice{12, "12.5.7", "16H81", "iPhone11,8", 1540000000, AutoVacuum::Incremental, true,
                 true},
    SampleDevice{13, "13.7", "17H35", "iPhone12,1", 1570000000, AutoVacuum::Incremental, true,
                 true},
    SampleDevice{14, "14.8.1", "18H107", "iPhone13,2", 1605000000, AutoVacuum::Incremental, true,
                 true},
    SampleDevice{15, "15.8.3", "19H386", "iPhone14,5", 1635000000, AutoVacuum::Incremental, true,
                 true},
    SampleDevice{16, "16.7.10", "20H350", "iPhone15,2", 1665000000, AutoVacuum::Incremental, true,
                 true},
    SampleDevice{17, "17.7.2", "21H221", "iPhone15,4", 1697000000, AutoVacuum::Incremental, true,
                 true},
    SampleDevice{18, "18.6", "22G86", "iPhone17,3", 1728000000, AutoVacuum::Incremental, true,
                 true},
    SampleDevice{26, "26.1", "23B85", "iPhone18,3", 1758000000, AutoVacuum::Incremental, true,
                 true},
};

// A further category is one more row and one more file.
constexpr std::array<SampleCategory, 10> kCategories{
    &writeSampleMessages, &writeSampleContacts, &writeSampleCalls,    &writeSampleCalendar,
    &writeSampleNotes,    &writeSampleWhatsApp, &writeSamplePictures, &writeSampleInternet,
    &writeSampleLists,    &writeSampleNoteStore};

const SampleDevice& deviceOf(int ios) {
    for (const auto& device : kDevices) {
        if (device.ios == ios) return device;
    }
    throw std::runtime_error("samples exist for iOS 4 to 18 and 26, not for " +
                             std::to_string(ios));
}

void check(const SampleOptions& options) {
    const auto size = options.pageSize;
    if (size < 512 || size > 65536 || (size & (size - 1)) != 0) {
        throw std::runtime_error("a page size is a power of two from 512 to 65536, not " +
                                 std::to_string(size));
    }
    if (options.messages > 10'000'000) throw std::runtime_error("too many messages");
}

}  // namespace

SampleBackup SampleBackup::write(const std::filesystem::path& folder,
                                 const SampleOptions& options) {
    const auto& device = deviceOf(options.ios);
    check(options);
    std::filesystem::create_directories(folder);
    SampleFolder writer(folder, options, device);
    for (const auto category : kCategories) category(writer);
    writer.finish();
    writer.truth().writeJson(truthFile(folder));
    return {folder, std::move(writer.truth())};
}

std::filesystem::path SampleBackup::truthFile(const std::filesystem::path& folder) {
    auto plain = folder.lexically_normal();
    if (!plain.has_filename()) plain = plain.parent_path();
    return plain.string() + ".truth.json";
}

std::filesystem::path SampleBackup::file(const std::string& domain, const std::string& path) const {
    const auto name = sampleStoredName(domain, path);
    const auto flat = folder / name;
    return std::filesystem::exists(flat) ? flat : folder / name.substr(0, 2) / name;
}

}  // namespace salvor

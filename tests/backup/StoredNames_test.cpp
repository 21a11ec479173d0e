#include "scan/StoredNames.h"

#include <gmock/gmock.h>
#include <set>

#include "tools/sample/Digest.h"

namespace salvor {
namespace {

TEST(StoredNames, AreTheDigestsOfTheirPlaces) {
    std::set<std::string> names;
    std::vector<std::string> withoutPlace;
    for (const auto& [file, name, domain, path, what] : kStoredFiles) {
        EXPECT_TRUE(names.insert(name).second) << what;
        if (domain != nullptr)
            EXPECT_EQ(name, sampleStoredName(domain, path)) << what;
        else
            withoutPlace.emplace_back(what);
    }
    EXPECT_THAT(withoutPlace, testing::ElementsAre("installed applications", "Skype"));
}

}  // namespace
}  // namespace salvor

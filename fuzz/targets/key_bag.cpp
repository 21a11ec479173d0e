// The key bag of an encrypted backup.
#include "backup/keys/KeyBag.h"
#include "fuzz/Target.h"

using namespace salvor;

SALVOR_FUZZ_TARGET(key_bag) {
    const auto bag = KeyBag::parse(input);
    if (!bag) return;
    fuzz::expect(bag->iterations > 0 && !bag->salt.empty(), "a bag without a derivation");
    fuzz::expect(bag->rounds() >= bag->iterations, "rounds are added up");
    std::size_t bytes = bag->salt.size() + bag->firstSalt.size();
    bool opens = false;
    for (const auto& one : bag->classes) {
        bytes += one.key.size();
        opens = opens || (one.byPassword() && !one.key.empty());
    }
    fuzz::expect(opens, "a bag without a key");
    fuzz::expect(bytes <= input.size() && bag->classes.size() * 8 <= input.size(),
                 "keys come from the data");
}

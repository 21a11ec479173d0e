#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "tools/sample/SampleRandom.h"

namespace salvor {

/// One way in which a database file of a backup can be broken. `apply` changes the file; the same
/// random state gives the same damage.
struct Damage {
    const char* name;
    void (*apply)(const std::filesystem::path& file, SampleRandom& random);
};

/// Missing, empty, cut and overwritten files; foreign and incomplete schemas, wrong types, dates
/// out of range; declared lengths that are too large; b-trees and free lists that are cyclic.
std::span<const Damage> databaseDamages();

/// Small damage at a few random places of any file: flipped bits, overwritten runs, swapped
/// stretches, a cut end.
void mutateFile(const std::filesystem::path& file, SampleRandom& random);

}  // namespace salvor

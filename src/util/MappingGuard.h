#pragma once

#include <cstddef>

namespace salvor {

/// Lets a read of a mapped file survive bytes that are gone: a file that shrinks, a medium that
/// fails or is pulled out. The page in question then reads as zeros, where the system would end
/// the program (SIGBUS). Mappings beyond the first kMaxGuardedMappings at a time are not guarded.
namespace MappingGuard {

constexpr std::size_t kMaxGuardedMappings = 256;

void add(const void* address, std::size_t size);
/// To be called before the mapping goes.
void remove(const void* address);

}  // namespace MappingGuard

}  // namespace salvor

#include "util/MappingGuard.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>

namespace salvor::MappingGuard {
namespace {

/// A slot is free while `begin` is 0. The handler reads slots without a lock; a mapping that it
/// faults in stays in its slot meanwhile, for its reader is the thread that faulted.
struct Slot {
    std::atomic<std::uintptr_t> begin{0};
    std::atomic<std::uintptr_t> end{0};
};

std::array<Slot, kMaxGuardedMappings> slots;
std::atomic<std::uintptr_t> pageBytes{0};
struct sigaction before {};

static_assert(std::atomic<std::uintptr_t>::is_always_lock_free);  // as a handler needs

bool isGuarded(std::uintptr_t address) {
    for (const Slot& slot : slots) {
        const auto begin = slot.begin.load(std::memory_order_acquire);
        if (begin != 0 && address >= begin && address < slot.end.load(std::memory_order_acquire))
            return true;
    }
    return false;
}

void onBusError(int, siginfo_t* info, void*) {
    const int error = errno;
    const std::uintptr_t page = pageBytes;
    const auto address = reinterpret_cast<std::uintptr_t>(info->si_addr);
    void* const start = static_cast<char*>(info->si_addr) - address % page;
    const bool filled =
        isGuarded(address) && ::mmap(start, page, PROT_READ,
                                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) != MAP_FAILED;
    // Not ours: the read is repeated under the handler that stood before.
    if (!filled) ::sigaction(SIGBUS, &before, nullptr);
    errno = error;
}

void install() {
    pageBytes = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    struct sigaction action {};
    action.sa_sigaction = onBusError;
    action.sa_flags = SA_SIGINFO;
    ::sigaction(SIGBUS, &action, &before);
}

}  // namespace

void add(const void* address, std::size_t size) {
    [[maybe_unused]] static const bool installed = (install(), true);
    const auto begin = reinterpret_cast<std::uintptr_t>(address);
    for (Slot& slot : slots) {
        std::uintptr_t unused = 0;
        // Taken with an end of 0, so that nothing matches until both are known.
        if (!slot.begin.compare_exchange_strong(unused, begin)) continue;
        slot.end.store(begin + size, std::memory_order_release);
        return;
    }
}

void remove(const void* address) {
    const auto begin = reinterpret_cast<std::uintptr_t>(address);
    for (Slot& slot : slots) {
        if (slot.begin.load() != begin) continue;
        slot.end.store(0);
        slot.begin.store(0);
        return;
    }
}

}  // namespace salvor::MappingGuard

#include "sql/SqliteMemory.h"

#include <sqlite3.h>

namespace salvor {
namespace {

thread_local SqliteMemory* charged = nullptr;

sqlite3_mem_methods ordinary{};

bool allows(int bytes) {
    if (charged == nullptr || bytes <= charged->most - charged->held) return true;
    charged->refused = true;
    return false;
}

void charge(std::int64_t bytes) {
    if (charged != nullptr) charged->held += bytes;
}

void* allocate(int bytes) {
    if (!allows(bytes)) return nullptr;
    void* memory = ordinary.xMalloc(bytes);
    if (memory != nullptr) charge(ordinary.xSize(memory));
    return memory;
}

void release(void* memory) {
    charge(-std::int64_t{ordinary.xSize(memory)});
    ordinary.xFree(memory);
}

void* resize(void* memory, int bytes) {
    const int before = ordinary.xSize(memory);
    if (bytes > before && !allows(bytes - before)) return nullptr;
    void* resized = ordinary.xRealloc(memory, bytes);
    if (resized != nullptr) charge(std::int64_t{ordinary.xSize(resized)} - before);
    return resized;
}

bool countAllocations() noexcept {
    if (sqlite3_config(SQLITE_CONFIG_GETMALLOC, &ordinary) != SQLITE_OK) return false;
    sqlite3_mem_methods counting = ordinary;
    counting.xMalloc = allocate;
    counting.xFree = release;
    counting.xRealloc = resize;
    return sqlite3_config(SQLITE_CONFIG_MALLOC, &counting) == SQLITE_OK;
}

// SQLite takes them only before it is used for the first time in a process.
[[maybe_unused]] const bool kCounted = countAllocations();

}  // namespace

MemoryCharge::MemoryCharge(SqliteMemory& memory) : before_(charged) {
    charged = &memory;
}

MemoryCharge::~MemoryCharge() {
    charged = before_;
}

}  // namespace salvor

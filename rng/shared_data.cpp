// shared_data: read-only blocks used by chunks of several streams, counted, under one spin lock.
// SPDX-License-Identifier: MIT
//
// Table     used entries first, no holes: a removed entry is replaced by the last one. 128 entries; chunks fill 127.
// Lock      each function takes it once, for a look-up together with the change that follows from it, so that a key
//           never has two entries. Nothing is allocated under it; a block whose last reference goes is released under
//           it.
#include "rng/shared_data.h"

#include <x86intrin.h>

#include <cstddef>

#include "service/late_binding.h"
#include "service/spin_lock.h"

namespace orin::rng {
namespace {

static_assert(sizeof(void*) != 4 ||
              (sizeof(JunGlobRODataEntry) == 24 && offsetof(JunGlobRODataEntry, references) == 16 &&
               offsetof(JunGlobRODataEntry, data) == 20));

constexpr uint32_t table_entries = 128;
constexpr uint32_t chunk_entries = table_entries - 1;  // the last one is kept for entries created directly

service::SpinLock lock;
JunGlobRODataEntry table[table_entries];
int32_t sizes[table_entries];  // bytes of the entries' data
uint32_t used_entries = 0;

constexpr int32_t unknown_size = INT32_MAX;  // of an entry created directly: its creator vouches for it

// The functions of this block run under the lock.

JunGlobRODataEntry* find(const uint64_t* key) noexcept {
  for (uint32_t i = 0; i < used_entries; ++i) {
    if (table[i].key[0] == key[0] && table[i].key[1] == key[1]) return &table[i];
  }
  return nullptr;
}

JunGlobRODataEntry* append(const uint64_t* key, void* data, int32_t size) noexcept {
  table[used_entries] = {{key[0], key[1]}, 1, data};
  sizes[used_entries] = size;
  return &table[used_entries++];
}

// The chunk's data to the table, if it may and there is room; else the chunk's own.
void own_or_append(JunStreamChunk& chunk, bool may_append) noexcept {
  if (may_append && used_entries < chunk_entries) {
    append(chunk.key, chunk.data, chunk.size);
  } else {
    chunk.key[0] = chunk.key[1] = 0;
  }
}

void drop_reference(JunGlobRODataEntry& entry) noexcept {
  if (--entry.references != 0) return;
  service::deallocate(entry.data);
  sizes[&entry - table] = sizes[--used_entries];
  entry = table[used_entries];
}

}  // namespace

bool is_shared(const uint64_t* key) noexcept {
  if (is_zero_key(key)) return false;
  service::SpinGuard guard(lock);
  return find(key) != nullptr;
}

bool join_shared(JunStreamChunk& chunk, int32_t least) noexcept {
  service::SpinGuard guard(lock);
  JunGlobRODataEntry* entry = find(chunk.key);
  if (entry == nullptr || sizes[entry - table] < least) {
    own_or_append(chunk, entry == nullptr);
    return true;
  }
  ++entry->references;
  const bool same_block = chunk.data == entry->data;
  chunk.data = entry->data;
  return same_block;
}

bool enter_shared(JunStreamChunk& chunk) noexcept {
  service::SpinGuard guard(lock);
  if (find(chunk.key) != nullptr) return false;
  own_or_append(chunk, true);
  return true;
}

bool leave_shared(const uint64_t* key) noexcept {
  if (is_zero_key(key)) return false;
  service::SpinGuard guard(lock);
  JunGlobRODataEntry* entry = find(key);
  if (entry != nullptr) drop_reference(*entry);
  return entry != nullptr;
}

}  // namespace orin::rng

using namespace orin::rng;

ORIN_BEGIN_DECLS

ORIN_API int32_t ORIN_CALL __junFindGlobRODataTableEntry(JunGlobRODataEntry** entry, const uint64_t* key) {
  if (entry == nullptr) return JUN_RNG_NULL_POINTER;
  *entry = nullptr;
  if (is_zero_key(key)) return JUN_RNG_NO_ENTRY;
  orin::service::SpinGuard guard(lock);
  *entry = find(key);
  return *entry != nullptr ? JUN_RNG_OK : JUN_RNG_NO_ENTRY;
}

ORIN_API int32_t ORIN_CALL __junCreateGlobRODataTableEntry(JunGlobRODataEntry** entry, const uint64_t* key,
                                                           void* data) {
  if (entry == nullptr) return JUN_RNG_NULL_POINTER;
  *entry = nullptr;
  if (is_zero_key(key)) return JUN_RNG_NO_ENTRY;
  orin::service::SpinGuard guard(lock);
  *entry = find(key);
  if (*entry != nullptr) {
    ++(*entry)->references;
  } else if (used_entries < table_entries) {
    *entry = append(key, data, unknown_size);
  } else {
    return JUN_RNG_TABLE_FULL;
  }
  return JUN_RNG_OK;
}

ORIN_API void ORIN_CALL __junRegisterGlobRODataReference(JunStreamChunk* chunk, const uint64_t* key) {
  if (chunk == nullptr || is_zero_key(key)) return;
  orin::service::SpinGuard guard(lock);
  if (JunGlobRODataEntry* entry = find(key)) {
    ++entry->references;
    chunk->data = entry->data;
  }
}

ORIN_API void ORIN_CALL __junUnregisterGlobRODataReference(const uint64_t* key) { leave_shared(key); }

ORIN_API int32_t ORIN_CALL __junGenerateNewGlobalRODataTableEntryId(uint64_t* key, int32_t tag) {
  if (key == nullptr) return JUN_RNG_NULL_POINTER;
  key[1] = static_cast<uint64_t>(int64_t{tag});
  do {
    key[0] = __rdtsc();
  } while (is_shared(key));
  return JUN_RNG_OK;
}

ORIN_END_DECLS

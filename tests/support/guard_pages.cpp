// guard_pages: arrays that end or begin at an inaccessible page.
// SPDX-License-Identifier: MIT
#include "tests/support/guard_pages.h"

#include <cstdlib>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <sys/mman.h>
#endif

namespace guard_pages {
namespace {

constexpr std::size_t page = 4096;

void* map_with_guards(std::size_t bytes) {
#if defined(_WIN32)
  auto* base = static_cast<unsigned char*>(VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
  DWORD previous;
  if (base == nullptr || !VirtualProtect(base, page, PAGE_NOACCESS, &previous) ||
      !VirtualProtect(base + bytes - page, page, PAGE_NOACCESS, &previous)) {
    std::abort();
  }
#else
  void* mapping = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  auto* base = static_cast<unsigned char*>(mapping);
  if (mapping == MAP_FAILED || mprotect(base, page, PROT_NONE) != 0 ||
      mprotect(base + bytes - page, page, PROT_NONE) != 0) {
    std::abort();
  }
#endif
  return base;
}

}  // namespace

Region::Region(std::size_t bytes) {
  const std::size_t usable = (bytes + page - 1) / page * page;
  mapping_bytes_ = usable + 2 * page;
  mapping_ = map_with_guards(mapping_bytes_);
  begin_ = static_cast<unsigned char*>(mapping_) + page;
  end_ = begin_ + usable;
}

Region::~Region() {
#if defined(_WIN32)
  VirtualFree(mapping_, 0, MEM_RELEASE);
#else
  munmap(mapping_, mapping_bytes_);
#endif
}

}  // namespace guard_pages

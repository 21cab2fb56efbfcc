// load_stream_fuzz: damaged images of saved streams against the file loader and what is done with a loaded stream.
// SPDX-License-Identifier: MIT
//
// Input     first byte odd: the rest is the file. Even: the file gets a header that the loader accepts (family by the
//           byte, version and chunk count by the next one), a state that repeats the following 64 bytes, then the rest.
// Checks    a refused file leaves a null pointer; an accepted stream saves and loads to the same image; it can be
//           copied, partitioned and generated from. Bounds and leaks are the sanitizers' part: every block is one of
//           theirs.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "orin/rng.h"
#include "service/late_binding.h"

// The allocator that the loader binds to.
namespace orin::service {
namespace {

void* ORIN_CALL allocate_exactly(std::uint32_t bytes, std::uint32_t alignment) {
  void* block = nullptr;
  return posix_memalign(&block, alignment, bytes) == 0 ? block : nullptr;
}
void ORIN_CALL release(void* block) { std::free(block); }

}  // namespace

platform::Symbol resolve(Sibling, const char* name) noexcept {
  return std::strcmp(name, "orin_serv_allocate") == 0 ? reinterpret_cast<platform::Symbol>(allocate_exactly)
                                                      : reinterpret_cast<platform::Symbol>(release);
}
constinit LateBound<void*(std::uint32_t, std::uint32_t)> orin_serv_allocate{Sibling::core, "orin_serv_allocate"};
constinit LateBound<void(void*)> orin_serv_deallocate{Sibling::core, "orin_serv_deallocate"};

}  // namespace orin::service

namespace {

using Bytes = std::vector<std::uint8_t>;

void require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "failed: %s\n", what);
  std::abort();
}

void append(Bytes& image, const void* item, std::size_t bytes) {
  const auto* p = static_cast<const std::uint8_t*>(item);
  image.insert(image.end(), p, p + bytes);
}

// A file whose header, family and sizes fit together.
Bytes well_headed(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t pattern_bytes = 64;
  if (size < 2 + pattern_bytes) return {};
  const int32_t family = data[0] / 2 % 14, counts = data[1];
  const int32_t brng = (family + 1) * 0x100000 + (family == 8 ? data[2] : 0);
  JunBrngProperties row = {};
  require(__junGetBrngProperties(brng, &row) == JUN_RNG_OK, "built-in family");
  const auto state_size = static_cast<std::uint16_t>(row.StateBytes - 16);
  const std::uint16_t sizes[4] = {20, state_size, static_cast<std::uint16_t>(counts / 2), 0};
  Bytes image = {static_cast<std::uint8_t>(counts % 2), 0, 0, 0, 'R', 'N', 'G', 0};
  append(image, sizes, sizeof sizes);
  append(image, &brng, sizeof brng);
  for (std::size_t i = 0; i < state_size; ++i) image.push_back(data[2 + i % pattern_bytes]);
  append(image, data + 2 + pattern_bytes, size - 2 - pattern_bytes);
  return image;
}

Bytes image_of(const void* stream) {
  Bytes image(static_cast<std::size_t>(__junGetStreamSize(stream)));
  require(__junSaveStreamM(stream, image.data()) == JUN_RNG_OK, "save");
  return image;
}

// Abstract streams hold addresses that their creator keeps valid; the hardware's gives nothing.
bool has_numbers(int32_t brng) {
  return brng != JUN_BRNG_IABSTRACT && brng != JUN_BRNG_DABSTRACT && brng != JUN_BRNG_SABSTRACT &&
         brng != JUN_BRNG_TRNG;
}

// Whatever its bytes say, a stream can be used.
void use(void* stream) {
  constexpr int32_t n = 700;
  static double d[n];
  static float s[n];
  static std::uint32_t words[4 * n];
  if (!has_numbers(__junGetStreamStateBrng(stream))) return;
  JunBrngProperties row = {};
  require(__junGetBrngProperties(__junGetStreamStateBrng(stream), &row) == JUN_RNG_OK, "identifier of a loaded stream");
  _jundRngUniform(0, stream, n, d, 0.0, 1.0);
  __junSkipAheadStream(stream, 0x123456789);
  _junsRngUniform(JUN_RNG_CLAMP, stream, n, s, 1.0f, 2.0f);
  __junLeapfrogStream(stream, 1, 3);
  row.iBRng(stream, n, words);
  __junLeapfrogStream(stream, 1, JUN_RNG_SELECT_COORDINATE);
  __junSkipAheadStream(stream, ~std::uint64_t{0});
  _jundRngUniform(0, stream, 7, d, 0.0, 1.0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const int file = memfd_create("image", 0);
  static const std::string name = "/proc/self/fd/" + std::to_string(file);
  if (size == 0) return 0;
  const Bytes image = data[0] % 2 == 0 ? well_headed(data, size) : Bytes(data + 1, data + size);
  require(ftruncate(file, 0) == 0 && pwrite(file, image.data(), image.size(), 0) == static_cast<ssize_t>(image.size()),
          "write the input");

  void* stream = &stream;
  const int32_t status = __junLoadStreamF(&stream, name.c_str(), static_cast<int32_t>(name.size()));
  require((status == JUN_RNG_OK) == (stream != nullptr), "pointer fits status");
  if (status != JUN_RNG_OK) return 0;

  void *again = nullptr, *thrice = nullptr, *copy = nullptr;
  const Bytes saved = image_of(stream);
  require(__junLoadStreamM(&again, saved.data()) == JUN_RNG_OK, "load what was saved");
  require(__junLoadStreamM(&thrice, image_of(again).data()) == JUN_RNG_OK, "load it once more");
  require(image_of(thrice) == saved, "two reversals give the same image");
  require(__junCopyStream(&copy, stream) == JUN_RNG_OK && image_of(copy) == image_of(again), "copy");
  use(stream);
  for (void** place : {&stream, &again, &thrice, &copy}) __junDeleteStream(place);
  return 0;
}

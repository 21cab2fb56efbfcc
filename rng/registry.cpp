// registry: the generator families, their rows, and the two identifier schemes that lead to them.
// SPDX-License-Identifier: MIT
//
// Current   identifier = ((row + 1) << 20) + sub-stream, from 0x100000 on
// Legacy    identifiers below that are rows of a table of their own; 4..276 all mean WH, sub-stream identifier - 4
// Threads   queries read only; registration writes a row, then the count, and must run alone
#include "rng/registry.h"

#include <cstddef>

#include "rng/generators/generators.h"

#define ORIN_RNG_ROW(family, state_bytes, seed_words, may_return_zero, word_bytes, value_bits)       \
  {                                                                                                  \
    state_bytes, seed_words, may_return_zero, word_bytes, value_bits, __junBRng##family##InitStream, \
        __junsBRng##family, __jundBRng##family, __juniBRng##family                                   \
  }

#define ORIN_RNG_MCG31M1 ORIN_RNG_ROW(MCG31M1, 24, 1, 0, 4, 31)
#define ORIN_RNG_R250 ORIN_RNG_ROW(R250, 1024, 252, 1, 4, 32)
#define ORIN_RNG_MRG32K3A ORIN_RNG_ROW(MRG32K3A, 40, 6, 1, 4, 32)
#define ORIN_RNG_MCG59 ORIN_RNG_ROW(MCG59, 32, 1, 0, 8, 59)
#define ORIN_RNG_WH ORIN_RNG_ROW(WH, 48, 4, 1, 16, 24)
#define ORIN_RNG_SOBOL ORIN_RNG_ROW(Sobol, 11648, 2604, 0, 4, 32)
#define ORIN_RNG_NIEDERR ORIN_RNG_ROW(Niederr, 43280, 10498, 0, 4, 32)

// Slots of rows that cannot generate: one function under three types.
#define ORIN_RNG_SLOT(type, function) reinterpret_cast<type>(reinterpret_cast<void (*)()>(&function))

ORIN_BEGIN_DECLS

ORIN_API JunBrngProperties __RegBrngsNew[JUN_RNG_TABLE_ROWS] = {
    ORIN_RNG_MCG31M1,
    ORIN_RNG_R250,
    ORIN_RNG_MRG32K3A,
    ORIN_RNG_MCG59,
    ORIN_RNG_WH,
    ORIN_RNG_SOBOL,
    ORIN_RNG_NIEDERR,
    ORIN_RNG_ROW(MT19937, 2520, 625, 1, 4, 32),
    ORIN_RNG_ROW(MT2203, 312, 70, 1, 4, 32),
    {40, 0, 1, 4, 32, __junBRngiAbstractInitStream, ORIN_RNG_SLOT(JunUniformS, __junBRngAbstractNotSupported),
     ORIN_RNG_SLOT(JunUniformD, __junBRngAbstractNotSupported), __juniBRngiAbstract},
    {56, 0, 1, 4, 32, __junBRngdAbstractInitStream, ORIN_RNG_SLOT(JunUniformS, __junBRngAbstractNotSupported),
     __jundBRngdAbstract, ORIN_RNG_SLOT(JunRawWords, __junBRngAbstractNotSupported)},
    {48, 0, 1, 4, 32, __junBRngsAbstractInitStream, __junsBRngsAbstract,
     ORIN_RNG_SLOT(JunUniformD, __junBRngAbstractNotSupported),
     ORIN_RNG_SLOT(JunRawWords, __junBRngAbstractNotSupported)},
    ORIN_RNG_ROW(SFMT19937, 2536, 625, 1, 16, 128),
    {24, 1, 0, 4, 32, __junBRngTRNGInitStream, ORIN_RNG_SLOT(JunUniformS, __junBRngTRNGNotSupported),
     ORIN_RNG_SLOT(JunUniformD, __junBRngTRNGNotSupported), ORIN_RNG_SLOT(JunRawWords, __junBRngTRNGNotSupported)},
};

#define ORIN_RNG_FOUR_TIMES(...) __VA_ARGS__, __VA_ARGS__, __VA_ARGS__, __VA_ARGS__

// 273 rows of WH: 4^4 + 4^2 + 1.
ORIN_API JunBrngProperties __RegBrngs[JUN_RNG_TABLE_ROWS] = {
    ORIN_RNG_MCG31M1,
    ORIN_RNG_R250,
    ORIN_RNG_MRG32K3A,
    ORIN_RNG_MCG59,
    ORIN_RNG_FOUR_TIMES(ORIN_RNG_FOUR_TIMES(ORIN_RNG_FOUR_TIMES(ORIN_RNG_FOUR_TIMES(ORIN_RNG_WH)))),
    ORIN_RNG_FOUR_TIMES(ORIN_RNG_FOUR_TIMES(ORIN_RNG_WH)),
    ORIN_RNG_WH,
    ORIN_RNG_SOBOL,
    ORIN_RNG_NIEDERR,
};

ORIN_END_DECLS

namespace orin::rng {
namespace {

static_assert(sizeof(void*) != 4 || sizeof(JunBrngProperties) == 36);
static_assert(offsetof(JunBrngProperties, ValueBits) == 16);
static_assert(sizeof(void*) != 4 ||
              (offsetof(JunBrngProperties, InitStream) == 20 && offsetof(JunBrngProperties, iBRng) == 32));

constexpr int sub_stream_bits = 20;
constexpr int32_t first_current = 1 << sub_stream_bits;
constexpr int32_t first_legacy_wh = 4, last_legacy_wh = 276;
constexpr int32_t legacy_rows = 279;

int32_t registered_families = 14;
int32_t sub_streams[JUN_RNG_TABLE_ROWS] = {1, 1, 1, 1, 273, 1, 1, 1, 6024, 1, 1, 1, 1, 1};

// Identifiers below zero land on negative rows of the legacy table.
bool has_row(const JunBrngProperties* table, int32_t row) noexcept {
  if (row < 0) return false;
  return table == __RegBrngs ? row < legacy_rows : table == __RegBrngsNew && row < registered_families;
}

int32_t check_registration(const JunBrngProperties& family) noexcept {
  if (family.StateBytes < 0) return JUN_RNG_BAD_STATE_BYTES;
  if (family.WordBytes != 4 && family.WordBytes != 8 && family.WordBytes != 16) return JUN_RNG_BAD_WORD_BYTES;
  if (family.SeedWords <= 0) return JUN_RNG_BAD_SEED_WORDS;
  if (family.ValueBits <= 0) return JUN_RNG_BAD_VALUE_BITS;
  if (!family.dBRng || !family.sBRng || !family.iBRng || !family.InitStream) return JUN_RNG_NULL_POINTER;
  return JUN_RNG_OK;
}

}  // namespace

const JunBrngProperties* valid_row(int32_t brng) noexcept {
  int32_t row = 0, sub_stream = 0;
  const JunBrngProperties* table = __junGetBrngBaseOffset(brng, &row, &sub_stream);
  return __junIsBrngValid(table, row, sub_stream) == JUN_RNG_OK ? table + row : nullptr;
}

const JunBrngProperties* row_of(const void* stream) noexcept {
  int32_t row = 0, sub_stream = 0;
  const JunBrngProperties* table = __junGetBrngBaseOffset(header_of(stream).brng, &row, &sub_stream);
  return has_row(table, row) ? table + row : nullptr;
}

}  // namespace orin::rng

using namespace orin::rng;

ORIN_BEGIN_DECLS

ORIN_API const JunBrngProperties* ORIN_CALL __junGetBrngBaseOffset(int32_t brng, int32_t* row, int32_t* sub_stream) {
  if (brng >= first_current) {
    *row = (brng >> sub_stream_bits) - 1;
    *sub_stream = brng & (first_current - 1);
    return __RegBrngsNew;
  }
  const bool wh = brng >= first_legacy_wh && brng <= last_legacy_wh;
  *row = wh ? first_legacy_wh : brng;
  *sub_stream = wh ? brng - first_legacy_wh : 0;
  return __RegBrngs;
}

ORIN_API int32_t ORIN_CALL __junIsBrngValid(const JunBrngProperties* table, int32_t row, int32_t sub_stream) {
  if (!has_row(table, row)) return JUN_RNG_BAD_IDENTIFIER;
  return table == __RegBrngs || sub_stream < sub_streams[row] ? JUN_RNG_OK : JUN_RNG_BAD_IDENTIFIER;
}

ORIN_API int32_t ORIN_CALL __junRegisterBrng(const JunBrngProperties* properties) {
  if (properties == nullptr) return JUN_RNG_NULL_POINTER;
  const int32_t status = check_registration(*properties);
  if (status != JUN_RNG_OK) return status;
  if (registered_families == JUN_RNG_TABLE_ROWS) return JUN_RNG_TABLE_FULL;
  __RegBrngsNew[registered_families] = *properties;
  sub_streams[registered_families] = 1;
  return ++registered_families << sub_stream_bits;
}

ORIN_API int32_t ORIN_CALL __junGetBrngProperties(int32_t brng, JunBrngProperties* properties) {
  if (properties == nullptr) return JUN_RNG_NULL_POINTER;
  const JunBrngProperties* row = valid_row(brng);
  if (row == nullptr) return JUN_RNG_BAD_IDENTIFIER;
  *properties = *row;
  return JUN_RNG_OK;
}

ORIN_API int32_t ORIN_CALL __junGetNumRegBrngs(void) { return registered_families; }

ORIN_END_DECLS

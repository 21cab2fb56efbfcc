/* rng.h: random numbers - generators, streams, partitioning, saving, distributions.
 * SPDX-License-Identifier: MIT
 *
 * A stream is one block of memory that holds the whole state of one generator; a program may have as many as it likes.
 *
 *   void *stream;
 *   uint32_t seed = 2024;
 *   double r[1000];
 *   if (__junNewStreamEx(&stream, JUN_BRNG_MT19937, 1, &seed) == JUN_RNG_OK) {
 *     _jundRngUniform(0, stream, 1000, r, 0.0, 1.0);
 *     __junDeleteStream(&stream);
 *   }
 *
 * Status        every function returns JUN_RNG_OK (0) or a negative JUN_RNG_... status unless its text says otherwise.
 *               A null stream, or a null place for a result, is JUN_RNG_NULL_POINTER unless the text says otherwise.
 *               Nothing is printed.
 * Sequence      the numbers of a stream depend on its identifier, its seeds and its partitioning alone: any cut of the
 *               sequence into calls, any thread, either build of the module gives the same bits.
 * Threads       one stream belongs to one thread at a time; different streams, copies included, may be used at once.
 *               __junRegisterBrng must run alone.
 * Memory        comes from the core module's allocator, streams and chunks aligned to 64 bytes.
 */
#ifndef ORIN_RNG_H
#define ORIN_RNG_H

#include "orin/abi.h"

ORIN_BEGIN_DECLS

/* ---- Statuses ---------------------------------------------------------------------------------------------------- */

#define JUN_RNG_OK 0
#define JUN_RNG_BAD_METHOD (-2)          /* InitStream method other than 0, 1, 2 */
#define JUN_RNG_NO_MEMORY (-4)           /* an allocation failed */
#define JUN_RNG_NULL_POINTER (-5)        /* a pointer that is needed is null (abstract streams: or n <= 0) */
#define JUN_RNG_BAD_IDENTIFIER (-1000)   /* no such generator or sub-stream, or not one that can be created here */
#define JUN_RNG_NO_LEAPFROG (-1002)      /* the generator cannot leapfrog, or not with these arguments */
#define JUN_RNG_NO_SKIP_AHEAD (-1003)    /* the generator cannot skip ahead */
#define JUN_RNG_BAD_STATE_BYTES (-1008)  /* registration: StateBytes < 0 */
#define JUN_RNG_BAD_WORD_BYTES (-1009)   /* registration: WordBytes other than 4, 8, 16 */
#define JUN_RNG_BAD_SEED_WORDS (-1010)   /* registration: SeedWords <= 0 */
#define JUN_RNG_BAD_VALUE_BITS (-1011)   /* registration: ValueBits <= 0 */
#define JUN_RNG_BAD_STREAM_COUNT (-1013) /* leapfrog among a negative number of streams */
#define JUN_RNG_FILE_CLOSE (-1100)       /* closing the file failed */
#define JUN_RNG_FILE_OPEN (-1101)        /* opening the file failed */
#define JUN_RNG_FILE_WRITE (-1102)       /* writing the file failed, or the image format cannot hold the stream */
#define JUN_RNG_FILE_READ (-1103)        /* the file ends before the image does */
#define JUN_RNG_FILE_FORMAT (-1110)      /* the file holds no image of a stream known here */
#define JUN_RNG_FILE_VERSION (-1111)     /* the file's image has a version above 1 */
#define JUN_RNG_WRONG_ABSTRACT (-1122)   /* an abstract stream asked for numbers of another type than its own */
#define JUN_RNG_SHORT_REFILL (-1129)     /* an abstract stream's callback gave less than the least it was asked for */
#define JUN_RNG_NO_TRUE_RANDOM (-1130)   /* true random numbers are not available */
#define JUN_RNG_MEMORY_FORMAT (-1200)    /* the memory holds no image of a stream known here */
#define JUN_RNG_NO_ENTRY (-3000)         /* no shared data under this key */
#define JUN_RNG_TABLE_FULL (-3001)       /* the table of shared data, or of generators, has no room left */

/* ---- Generators -------------------------------------------------------------------------------------------------- */

/* Identifiers: ((row + 1) << 20) + sub-stream. Sub-streams are independent parameter sets of one family: 0..272 of WH,
 * 0..6023 of MT2203, 0 elsewhere. Identifiers below 0x100000 are the legacy scheme: 0 MCG31M1, 1 R250, 2 MRG32K3A,
 * 3 MCG59, 4..276 WH, 277 Sobol, 278 Niederr.
 *
 *   MCG31M1    x' = 1132489760 x mod (2^31 - 1), u = x / (2^31 - 1).      L'Ecuyer, Math. Comp. 68 (1999)
 *   R250       x[n] = x[n-103] xor x[n-250], u = x / 2^32.                Kirkpatrick and Stoll, J. Comp. Phys. 40 (1981)
 *   MRG32K3A   two recurrences of order 3 combined, u = z / (2^32 - 209). L'Ecuyer, Operations Research 47 (1999)
 *   MCG59      x' = 13^13 x mod 2^59, u = x / 2^59.
 *   WH         four multiplicative generators added modulo 1; raw output four words, one of each.
 *                                                                         Wichmann and Hill (1982), Maclaren (1989)
 *   Sobol      quasi-random points of 1 to 40 dimensions in base 2.       Bratley and Fox, ACM TOMS 14 (1988)
 *   Niederr    quasi-random points of 1 to 318 dimensions in base 2.      Bratley, Fox, Niederreiter, ACM TOMS 20 (1994)
 *   MT19937    Mersenne twister of period 2^19937 - 1, u = y / 2^32.      Matsumoto and Nishimura, ACM TOMACS 8 (1998)
 *   MT2203     6024 twisters of period 2^2203 - 1, u = y / 2^32.          Matsumoto and Nishimura, dynamic creation (2000)
 *   SFMT19937  128-bit Mersenne twister, raw output four words.           Saito and Matsumoto, MCQMC 2006 (2008)
 *   iAbstract, dAbstract, sAbstract   numbers that a callback of the caller supplies: words, doubles, floats
 *   TRNG       hardware source; it can be created, copied and saved, and generates nothing in this module
 *
 * A quasi-random stream runs through the coordinates of its first point (all one half), then of the next, and so on. */
#define JUN_BRNG_MCG31M1 0x100000
#define JUN_BRNG_R250 0x200000
#define JUN_BRNG_MRG32K3A 0x300000
#define JUN_BRNG_MCG59 0x400000
#define JUN_BRNG_WH 0x500000
#define JUN_BRNG_SOBOL 0x600000
#define JUN_BRNG_NIEDERR 0x700000
#define JUN_BRNG_MT19937 0x800000
#define JUN_BRNG_MT2203 0x900000
#define JUN_BRNG_IABSTRACT 0xA00000
#define JUN_BRNG_DABSTRACT 0xB00000
#define JUN_BRNG_SABSTRACT 0xC00000
#define JUN_BRNG_SFMT19937 0xD00000
#define JUN_BRNG_TRNG 0xE00000

/* The four functions of a family. The registry alone calls them.
 *
 * InitStream   method JUN_RNG_SEED: params are n seed words; any n is defined. JUN_RNG_LEAPFROG: n streams, params[0] the
 *              index of the one to keep. JUN_RNG_SKIP_AHEAD: n = 2, params the count of outputs to skip, low word first.
 *              Others: JUN_RNG_BAD_METHOD.
 * sBRng dBRng  n uniforms a + (b - a) u on [a, b), u rounded once to the type; floats of MRG32K3A and WH are rounded from
 *              a double, which in WH is off by less than 2^-49. A value that would round to b becomes the one below it,
 *              except in MCG31M1 doubles, which are a + (b - a)/(2^31 - 1) x to the bit.
 * iBRng        n raw outputs of WordBytes bytes each, as 32-bit words, low word first.
 * n <= 0 writes nothing and returns 0. */
#define JUN_RNG_SEED 0
#define JUN_RNG_LEAPFROG 1
#define JUN_RNG_SKIP_AHEAD 2

typedef int32_t(ORIN_CALL* JunInitStream)(int32_t method, void* stream, int32_t n, const uint32_t* params);
typedef int32_t(ORIN_CALL* JunUniformS)(void* stream, int32_t n, float* r, float a, float b);
typedef int32_t(ORIN_CALL* JunUniformD)(void* stream, int32_t n, double* r, double a, double b);
typedef int32_t(ORIN_CALL* JunRawWords)(void* stream, int32_t n, uint32_t* r);

/* One row of the registry; 36 bytes on 32-bit builds. */
typedef struct JunBrngProperties {
  int32_t StateBytes;    /* bytes of a stream, its 16-byte header included */
  int32_t SeedWords;     /* 32-bit words that fully define an initial state */
  int32_t MayReturnZero; /* 1 if a raw output can be zero */
  int32_t WordBytes;     /* bytes of one raw output: 4, 8 or 16 */
  int32_t ValueBits;     /* random bits in one raw output */
  JunInitStream InitStream;
  JunUniformS sBRng;
  JunUniformD dBRng;
  JunRawWords iBRng;
} JunBrngProperties;

/* The registry itself: 14 built-in rows of the current scheme, then the registered ones; 279 rows of the legacy scheme. */
#define JUN_RNG_TABLE_ROWS 512
ORIN_DATA JunBrngProperties __RegBrngsNew[JUN_RNG_TABLE_ROWS];
ORIN_DATA JunBrngProperties __RegBrngs[JUN_RNG_TABLE_ROWS];

/* Splits an identifier: returns the table that it refers to and writes row and sub-stream. Never fails; the row of an
 * identifier that names nothing fails __junIsBrngValid. */
ORIN_API const JunBrngProperties* ORIN_CALL __junGetBrngBaseOffset(int32_t brng, int32_t* row, int32_t* sub_stream);

/* 0 if the table (__RegBrngsNew or __RegBrngs) has the row and the row the sub-stream, else JUN_RNG_BAD_IDENTIFIER. Legacy
 * rows have no sub-stream to check. */
ORIN_API int32_t ORIN_CALL __junIsBrngValid(const JunBrngProperties* table, int32_t row, int32_t sub_stream);

/* Adds a generator family of the caller's own; returns its identifier (0xF00000 for the first) or a status. Checked in
 * this order: StateBytes, WordBytes, SeedWords, ValueBits, then dBRng, sBRng, iBRng, InitStream for null
 * (JUN_RNG_NULL_POINTER). Streams of a family whose StateBytes are below 16 cannot be created. A registered family stays
 * for the life of the module. JUN_RNG_TABLE_FULL after 498 registrations. */
ORIN_API int32_t ORIN_CALL __junRegisterBrng(const JunBrngProperties* properties);

/* Copies the row of an identifier; JUN_RNG_BAD_IDENTIFIER leaves the record untouched. */
ORIN_API int32_t ORIN_CALL __junGetBrngProperties(int32_t brng, JunBrngProperties* properties);

/* Count of families: 14 and the registered ones. Not a status. */
ORIN_API int32_t ORIN_CALL __junGetNumRegBrngs(void);

/* 1 if the processor has the RDRAND instruction, else 0. Not a status. */
ORIN_API int32_t ORIN_CALL __junCPUisRDRAND(void);

/* ---- Streams ----------------------------------------------------------------------------------------------------- */

/* Creates a stream and seeds it with n words. Seeding is complete for any n, 0 included: missing and unusable words are
 * replaced by rules of the family (1 for the congruential ones). Sobol and Niederr take their dimension from seeds[0].
 * Refused: identifiers that name nothing, abstract families, families with StateBytes below 16 (JUN_RNG_BAD_IDENTIFIER);
 * null seeds with n > 0 (JUN_RNG_NULL_POINTER); JUN_RNG_NO_MEMORY. On these *stream is null. A status of the family's
 * InitStream is passed on with the stream kept. */
ORIN_API int32_t ORIN_CALL __junNewStreamEx(void** stream, int32_t brng, int32_t n, const uint32_t* seeds);

/* Creates a stream for an identifier already split by __junGetBrngBaseOffset; its state is all zero, not seeded. */
ORIN_API int32_t ORIN_CALL __junAllocateStream(void** stream, int32_t brng, const JunBrngProperties* table, int32_t row,
                                               int32_t sub_stream);

/* Creates a stream that continues exactly where source stands, with copies of its chunks (in reverse order). If a chunk
 * cannot be copied the status is JUN_RNG_NO_MEMORY and *stream holds the stream with the chunks copied so far. */
ORIN_API int32_t ORIN_CALL __junCopyStream(void** stream, const void* source);

/* Copies the state of source over that of stream: WordBytes * SeedWords bytes of it, as far as both state areas reach,
 * and the chunks, which replace the stream's own. The identifier stays. Both streams should be of one family. The
 * multipliers that leapfrogging changes in MCG31M1 and MCG59 are not part of what is copied. */
ORIN_API int32_t ORIN_CALL __junCopyStreamState(void* stream, const void* source);

/* Releases the stream with its chunks and sets *stream to null. Always 0, for a null stream too. */
ORIN_API int32_t ORIN_CALL __junDeleteStream(void** stream);

/* Identifier in the stream's header. Not a status. */
ORIN_API int32_t ORIN_CALL __junGetStreamStateBrng(const void* stream);

/* ---- Partitioning ------------------------------------------------------------------------------------------------ */

/* Turns the stream into the one that yields outputs k, k + s, k + 2s, ... of its sequence. MCG31M1, MCG59, WH: any k and
 * s >= 0. Sobol, Niederr: only s = JUN_RNG_SELECT_COORDINATE, which keeps coordinate k of the points, from the next point
 * on; k outside the dimension is JUN_RNG_NO_LEAPFROG. JUN_RNG_BAD_STREAM_COUNT for s < 0 whatever the family, then
 * JUN_RNG_NO_LEAPFROG for all others. */
#define JUN_RNG_SELECT_COORDINATE 0x7FFFFFFF
ORIN_API int32_t ORIN_CALL __junLeapfrogStream(void* stream, int32_t k, int32_t s);

/* Moves the stream on by nskip outputs of its (leapfrogged) sequence without producing them. MCG31M1, MCG59, WH,
 * MRG32K3A, Sobol, Niederr; others JUN_RNG_NO_SKIP_AHEAD. The time grows with the logarithm of nskip at most. */
ORIN_API int32_t ORIN_CALL __junSkipAheadStream(void* stream, uint64_t nskip);

/* a^e mod m; 1 for e = 0. Not a status. A modulus of 0 gives 0. */
ORIN_API uint32_t ORIN_CALL __juniPowMod(uint32_t a, uint64_t e, uint32_t m);
/* a^e mod (2^31 - 1), in 0..2^31 - 2; 1 for e = 0. Not a status. */
ORIN_API uint32_t ORIN_CALL __juniPowMod2P31M1(uint32_t a, uint64_t e);
/* a^e mod 2^59; 1 for e = 0. Not a status. */
ORIN_API uint64_t ORIN_CALL __juniPowMod2P59(uint64_t a, uint64_t e);
/* Moves the recurrence x[n] = row[0] x[n-1] + row[1] x[n-2] + row[2] x[n-3] mod m on by e steps: v holds its last three
 * values, latest first, and is replaced. e = 0 or m = 0 leave v as it is. */
ORIN_API void ORIN_CALL __juniVect3PowMod(uint32_t v[3], const uint32_t row[3], uint32_t m, uint64_t e);

/* ---- Chunks: data blocks attached to a stream -------------------------------------------------------------------- */

/* A chunk with a zero key owns its data, a block of the core module's allocator. A key (low half first) names data that
 * streams share: one process-wide table holds it once and counts its users, 128 entries at most. Shared data is read
 * only. Functions on the table may be called from any thread. */
typedef struct JunStreamChunk {
  int32_t id;   /* what the chunk holds, chosen by its user */
  int32_t size; /* bytes of data */
  void* data;
  struct JunStreamChunk* next;
  uint64_t key[2];
} JunStreamChunk;

typedef struct JunGlobRODataEntry {
  uint64_t key[2];
  uint32_t references; /* chunks that use the data */
  void* data;
} JunGlobRODataEntry;

/* Attaches data at the head of the stream's list. With a key that the table holds, the chunk uses the table's data and
 * the caller keeps the block passed; with a new key the table takes the block over; without key, or with 127 entries in
 * use, the chunk does, under a zero key. JUN_RNG_NO_MEMORY changes nothing. */
ORIN_API int32_t ORIN_CALL __junAddChunk(void* stream, int32_t id, const uint64_t* key, void* data, int32_t size);

/* Data of the first chunk with this identifier, the latest added; null if there is none. */
ORIN_API void* ORIN_CALL __junSearchChunk(const void* stream, int32_t id);

/* Count of the stream's chunks. Not a status. */
ORIN_API int32_t ORIN_CALL __junGetNumChunks(const void* stream);

/* Releases all chunks of the stream; the list is empty then. */
ORIN_API void ORIN_CALL __junDeleteChunks(void* stream);

/* Attaches copies of the source's chunks: shared data is shared once more, private data is copied. The list order is
 * reversed. JUN_RNG_NO_MEMORY leaves the copies made so far attached. */
ORIN_API int32_t ORIN_CALL __junCopyChunks(void* stream, const void* source);

/* Finds an entry. A null or all-zero key, or one without entry, is JUN_RNG_NO_ENTRY, with *entry null. The address is good
 * until the next removal from the table. */
ORIN_API int32_t ORIN_CALL __junFindGlobRODataTableEntry(JunGlobRODataEntry** entry, const uint64_t* key);

/* Enters data under a key, with one reference. If the key has an entry already, that one gains the reference, and data
 * stays the caller's (entry->data differs from it). JUN_RNG_TABLE_FULL, JUN_RNG_NO_ENTRY for a null or all-zero key, with
 * *entry null. */
ORIN_API int32_t ORIN_CALL __junCreateGlobRODataTableEntry(JunGlobRODataEntry** entry, const uint64_t* key, void* data);

/* Adds one reference to the entry with this key and points the chunk's data at it; nothing if there is none. */
ORIN_API void ORIN_CALL __junRegisterGlobRODataReference(JunStreamChunk* chunk, const uint64_t* key);

/* Drops one reference; with the last one the data block is released and the entry removed. */
ORIN_API void ORIN_CALL __junUnregisterGlobRODataReference(const uint64_t* key);

/* Makes a key that no entry has: the processor's time stamp, and the tag in the high half. Always 0. */
ORIN_API int32_t ORIN_CALL __junGenerateNewGlobalRODataTableEntryId(uint64_t* key, int32_t tag);

/* ---- Saving and loading ------------------------------------------------------------------------------------------ */

/* Image, little-endian, the same in files and in memory:
 *   byte 0 version 1; 4..6 "RNG"; 8..9 header size 20; 10..11 state size; 12..13 chunk count; 16..19 identifier; others 0
 *   the state
 *   for each chunk: identifier 4 bytes, key 16 bytes (not in version 0), data size 4 bytes, data
 * A loaded stream continues the saved one exactly; its chunk list is in reverse order. The image of an abstract stream holds
 * addresses of the process that saved it and must be loaded in that process only. */

/* Bytes of the image: 20, the state, and size + 24 for each chunk; a chunk without data is saved as zeros. Not a status. 0
 * for a stream whose image the format cannot hold: a state above 65535 bytes, more than 65535 chunks, 2^31 bytes or more in
 * all. */
ORIN_API int32_t ORIN_CALL __junGetStreamSize(const void* stream);

/* Writes the image to a file. name_length < 0: name ends with a zero byte; else it is name_length bytes long.
 * JUN_RNG_FILE_OPEN, JUN_RNG_FILE_WRITE, JUN_RNG_FILE_CLOSE, JUN_RNG_NO_MEMORY (copy of the name). */
ORIN_API int32_t ORIN_CALL __junSaveStreamF(const void* stream, const char* name, int32_t name_length);

/* Creates a stream from a file. JUN_RNG_FILE_OPEN, JUN_RNG_FILE_READ (file too short for what it announces), JUN_RNG_FILE_FORMAT,
 * JUN_RNG_FILE_VERSION, JUN_RNG_FILE_CLOSE, JUN_RNG_NO_MEMORY, JUN_RNG_NO_TRUE_RANDOM (TRNG where the processor has no RDRAND);
 * on each *stream is null and nothing stays allocated. A chunk whose key the table holds uses the table's data; one that
 * claims more bytes than are known to be there keeps its own, under a zero key. */
ORIN_API int32_t ORIN_CALL __junLoadStreamF(void** stream, const char* name, int32_t name_length);

/* Writes the image to memory, __junGetStreamSize bytes; nothing if that is 0. */
ORIN_API int32_t ORIN_CALL __junSaveStreamM(const void* stream, void* image);

/* Creates a stream from an image in memory, which must be complete. JUN_RNG_MEMORY_FORMAT, JUN_RNG_NO_MEMORY,
 * JUN_RNG_NO_TRUE_RANDOM; on each *stream is null and nothing stays allocated. */
ORIN_API int32_t ORIN_CALL __junLoadStreamM(void** stream, const void* image);

/* ---- Abstract streams: numbers that the caller supplies ---------------------------------------------------------- */

/* Refills the circular buffer of n values: writes at least nmin and at most nmax values to buffer[idx], buffer[idx + 1], ...
 * (indices modulo n) and returns how many. Less than nmin ends the generating call with JUN_RNG_SHORT_REFILL; the values
 * brought are the next call's. It is called when no value is left, with idx the place after the last one. */
typedef int32_t(ORIN_CALL* JunRefillI)(void* stream, int32_t n, uint32_t* buffer, int32_t nmin, int32_t nmax,
                                       int32_t idx);
typedef int32_t(ORIN_CALL* JunRefillD)(void* stream, int32_t n, double* buffer, int32_t nmin, int32_t nmax,
                                       int32_t idx);
typedef int32_t(ORIN_CALL* JunRefillS)(void* stream, int32_t n, float* buffer, int32_t nmin, int32_t nmax, int32_t idx);

/* Create a stream over the caller's buffer, which counts as full and must outlive the stream; the stream only reads it. The
 * values of the floating-point ones are uniform on [a, b) and are mapped to the interval that a generating call asks for.
 * n <= 0 and null pointers: JUN_RNG_NULL_POINTER; JUN_RNG_NO_MEMORY; on each *stream is null. A copy of the stream shares
 * its buffer. */
ORIN_API int32_t ORIN_CALL __juniNewAbstractStream(void** stream, int32_t n, uint32_t* buffer, JunRefillI refill);
ORIN_API int32_t ORIN_CALL __jundNewAbstractStream(void** stream, int32_t n, double* buffer, double a, double b,
                                                   JunRefillD refill);
ORIN_API int32_t ORIN_CALL __junsNewAbstractStream(void** stream, int32_t n, float* buffer, float a, float b,
                                                   JunRefillS refill);

/* ---- Distributions ----------------------------------------------------------------------------------------------- */

/* n uniform numbers on [a, b). JUN_RNG_CLAMP in the method word clamps every result to the closed interval [a, b]; other
 * bits are not looked at. The status is that of the stream's generator. */
#define JUN_RNG_CLAMP 0x40000000
ORIN_API int32_t ORIN_CALL _jundRngUniform(int32_t method, void* stream, int32_t n, double* r, double a, double b);
ORIN_API int32_t ORIN_CALL _junsRngUniform(int32_t method, void* stream, int32_t n, float* r, float a, float b);

/* ---- Functions of the built-in families -------------------------------------------------------------------------- */

/* Named here for the registry's sake; reach them through a stream or a row. */
#define JUN_RNG_DECLARE_INIT(family)                                                                \
  ORIN_API int32_t ORIN_CALL __junBRng##family##InitStream(int32_t method, void* stream, int32_t n, \
                                                           const uint32_t* params)
#define JUN_RNG_DECLARE_S(family) \
  ORIN_API int32_t ORIN_CALL __junsBRng##family(void* stream, int32_t n, float* r, float a, float b)
#define JUN_RNG_DECLARE_D(family) \
  ORIN_API int32_t ORIN_CALL __jundBRng##family(void* stream, int32_t n, double* r, double a, double b)
#define JUN_RNG_DECLARE_I(family) ORIN_API int32_t ORIN_CALL __juniBRng##family(void* stream, int32_t n, uint32_t* r)
#define JUN_RNG_DECLARE(family) \
  JUN_RNG_DECLARE_INIT(family); \
  JUN_RNG_DECLARE_S(family);    \
  JUN_RNG_DECLARE_D(family);    \
  JUN_RNG_DECLARE_I(family)

JUN_RNG_DECLARE(MCG31M1);
JUN_RNG_DECLARE(R250);
JUN_RNG_DECLARE(MRG32K3A);
JUN_RNG_DECLARE(MCG59);
JUN_RNG_DECLARE(WH);
JUN_RNG_DECLARE(Sobol);
JUN_RNG_DECLARE(Niederr);
JUN_RNG_DECLARE(MT19937);
JUN_RNG_DECLARE(MT2203);
JUN_RNG_DECLARE(SFMT19937);
JUN_RNG_DECLARE_INIT(iAbstract);
JUN_RNG_DECLARE_I(iAbstract);
JUN_RNG_DECLARE_INIT(dAbstract);
JUN_RNG_DECLARE_D(dAbstract);
JUN_RNG_DECLARE_INIT(sAbstract);
JUN_RNG_DECLARE_S(sAbstract);
JUN_RNG_DECLARE_INIT(TRNG);

#undef JUN_RNG_DECLARE
#undef JUN_RNG_DECLARE_I
#undef JUN_RNG_DECLARE_D
#undef JUN_RNG_DECLARE_S
#undef JUN_RNG_DECLARE_INIT

ORIN_END_DECLS

#endif

// elementwise.h: the loop that every elementwise kernel runs in.
// SPDX-License-Identifier: MIT
//
// A function is a record F with
//   Element, name          float, double or, with simd/complex.h, a complex type; the name in reports
//   Result                 what a result is, where that is another type: the real one of a complex, or the other way
//   inputs, outputs        1 or 2 each (from OneToOne, TwoToOne, OneToTwo)
//   fast(v...)             the value(s) of a register of ordinary arguments: V, or Two<V> for two outputs
//   special_lanes(w...)    mask of the arguments that fast must not see, from the high words of four arguments
//   special(x...)          the Outcome of one such argument: value(s) and status
//   ordinary               an argument that fast takes silently; it stands in for absent and special lanes
// A function without special arguments leaves the last three out. Scalar parameters are members of F. Where arguments
// alone do not tell, F has also
//   marks_results          fast gives a negative NaN where special must decide; no other result of it has the sign bit
//   special_results(w)     or: mask of the results where special must decide, from the high words of four
//   nan_is_special         or: those that are NaN
// Where results alone tell that fast was not good enough, F has also
//   doubtful_results(w)    mask of the results that fast may have got wrong, from the high words of four; those for special
//                          among them
//   careful(v...)          the value(s) of a register of any arguments but special ones; where fast is beyond doubt, its
//                          bits. Groups with a doubtful result go through careful as a whole, while such groups come.
// Where a longer vector path takes over beyond the usual arguments, F has also
//   beyond_fast(w...)      mask of the arguments that fast must not see: those that only wide can take, and special ones
//   wide(v...)             the value(s) of a register of any arguments but special ones, for those that fast may see too:
//                          the same bits. A group with one argument beyond fast goes through wide as a whole.
// and, for one input, where many of those arguments come together and are worth a path without choices,
//   beyond_medium(w)       mask of the arguments that medium must not see, those for fast and special ones among them
//   medium(v)              the value(s) of a register of the others: the bits of wide
//
// Where fast is a long chain, F (of one result) has also
//   Half                   what the second half of fast needs
//   first_half(v...), second_half(half)    fast(v...) = second_half(first_half(v...)). A block of groups goes through the
//                          first half, then through the second: each is short enough for several groups to be under way
//                          at once.
// and, for wide where every lane of a register is beyond fast,
//   FarHalf, far_first_half(v...), far_second_half(half)    the same, with the bits of wide
//
// The loop guarantees: nothing outside the vectors is touched; they need only the alignment of a float; a result vector
// may be an argument vector; an element's bits depend on its own arguments alone, since a tail and a group with a
// special lane go through the same fast code on a padded copy; fast never raises a floating-point exception for a lane
// it has no business with.
#ifndef ORIN_VECTOR_MATH_SIMD_ELEMENTWISE_H
#define ORIN_VECTOR_MATH_SIMD_ELEMENTWISE_H

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "vector_math/errors.h"
#include "vector_math/grade.h"
#include "vector_math/mode.h"
#include "vector_math/simd/fp_frame.h"
#include "vector_math/simd/registers.h"

namespace orin::vector_math::simd {

// One or two of a kind: the vectors of a call, the registers of a group.
template <class T, int count>
struct Few;  // no arrays, which compilers would keep in memory

template <class T>
struct Few<T, 1> {
  T first;

  ORIN_INLINE T& operator[](int) { return first; }
  ORIN_INLINE const T& operator[](int) const { return first; }
};
template <class T>
struct Few<T, 2> {
  T first, second;

  ORIN_INLINE T& operator[](int k) { return k == 0 ? first : second; }
  ORIN_INLINE const T& operator[](int k) const { return k == 0 ? first : second; }
};

template <class V>
struct Two {
  V first, second;
};

// What the special path makes of one element.
template <class T, int outputs = 1>
struct Outcome {
  T value[outputs];
  std::int32_t status;
};

template <class T, int inputs_, int outputs_, class R = T>
struct Shape {
  using Element = T;
  using Result = R;
  static constexpr int inputs = inputs_;
  static constexpr int outputs = outputs_;
  static constexpr int groups_per_step = 2;  // 1 where fast is long: then the group test weighs little
};
template <class T>
using OneToOne = Shape<T, 1, 1>;
template <class T>
using TwoToOne = Shape<T, 2, 1>;
template <class T>
using OneToTwo = Shape<T, 1, 2>;
template <class T, class R>
using OneToOther = Shape<T, 1, 1, R>;

// Keeps the compiler from exchanging what is stored before and after: stores that leave the first cache come out at half
// the speed where neighbours descend.
ORIN_INLINE void stores_ascend() { asm volatile("" : : : "memory"); }

// Four consecutive elements: the unit of the loop.
template <class T>
struct Group;

template <>
struct Group<double> {
  static constexpr int registers = 2;
  Vec2d low, high;

  // The first `count` elements at `from`, more than three of them meaning four, then paddings.
  static ORIN_INLINE Group load(const double* from, std::int32_t count, double padding) {
    if (count >= 4) [[likely]]
      return {Vec2d::load(from), Vec2d::load(from + 2)};
    if (count == 3) return {Vec2d::load(from), _mm_loadl_pd(Vec2d(padding).raw, from + 2)};
    if (count == 2) return {Vec2d::load(from), padding};
    return {_mm_loadl_pd(Vec2d(padding).raw, from), padding};
  }
  ORIN_INLINE void store(double* to, std::int32_t count) const {
    if (count == 1) return _mm_storel_pd(to, low.raw);
    low.store(to);
    stores_ascend();
    if (count >= 4) [[likely]]
      high.store(to + 2);
    else if (count == 3)
      _mm_storel_pd(to + 2, high.raw);
  }
  ORIN_INLINE Vec4i words() const { return high_words(low, high); }
};

template <>
struct Group<float> {
  static constexpr int registers = 1;
  Vec4f low;

  static ORIN_INLINE Group load(const float* from, std::int32_t count, float padding) {
    if (count >= 4) [[likely]]
      return {Vec4f::load(from)};
    const __m128 paddings = Vec4f(padding).raw;
    if (count == 1) return {_mm_move_ss(paddings, _mm_load_ss(from))};
    const __m128 two = _mm_loadl_pi(paddings, reinterpret_cast<const __m64*>(from));
    if (count == 2) return {two};
    return {_mm_movelh_ps(two, _mm_unpacklo_ps(_mm_load_ss(from + 2), paddings))};
  }
  ORIN_INLINE void store(float* to, std::int32_t count) const {
    if (count >= 4) [[likely]]
      return low.store(to);
    if (count == 1) return _mm_store_ss(to, low.raw);
    _mm_storel_pi(reinterpret_cast<__m64*>(to), low.raw);
    if (count == 3) _mm_store_ss(to + 2, _mm_movehl_ps(low.raw, low.raw));
  }
  ORIN_INLINE Vec4i words() const { return bits(low); }
};

// The same for functions that need not have the parts of complex elements apart (simd/complex.h).
template <class T>
struct Together;
// The same for functions of single precision that compute in double.
template <class T>
struct Widened;

template <class F>
class Elementwise {
 public:
  using T = typename F::Element;
  using R = typename F::Result;
  using Arguments = Few<const T*, F::inputs>;
  using Results = Few<R*, F::outputs>;

  static void run(F f, std::int32_t n, Arguments a, Results r) noexcept {
    if (!accepts(n, a, r)) [[unlikely]]
      return;
    const FpFrame frame(orin_kor_kernel_GetMode());
    // Nothing made from the parameters may be computed before the frame stands.
    if constexpr (!std::is_empty_v<F>) asm volatile("" : "+m"(f));
    if constexpr (sizeof(R) > sizeof(T))
      if (same(a[0], r[0])) return backwards(f, n, a, r);
    std::int32_t left = n;
    if constexpr (has_halves)
      while (left >= 4) left -= 4 * block(f, n - left, left / 4, a, r);
    if constexpr (F::groups_per_step == 2) {
      while (left >= 8) left = two_groups(f, n - left, left, a, r);
      while (left > 0) left = group<false>(f, n - left, left, a, r);
    } else {
      while (left >= 4) left = group<true>(f, n - left, left, a, r);
      if (left > 0) last_group(f, n - left, left, a, r);
    }
  }

 private:
  enum class Way { fast, medium, wide, careful };
  template <class E>
  static auto group_of() {
    if constexpr (requires { F::together; })
      return Together<E>{};
    else if constexpr (requires { requires F::computes_in_double; })
      return Widened<E>{};
    else
      return Group<E>{};
  }
  template <class E>
  using GroupOf = decltype(group_of<E>());
  using In = Few<GroupOf<T>, F::inputs>;
  using Out = Few<GroupOf<R>, F::outputs>;
  static constexpr bool has_special = requires { F::ordinary; };
  static constexpr bool tests_results = requires(F f, GroupOf<R> y) { f.special_results(y.words()); };
  static constexpr bool nan_is_special = requires { F::nan_is_special; };
  static constexpr bool marks_results = tests_results || nan_is_special || requires { F::marks_results; };
  static constexpr bool has_careful = requires(F f, GroupOf<R> y) { f.doubtful_results(y.words()); };
  static constexpr bool has_wide = requires { &F::beyond_fast; };
  static constexpr bool has_halves = requires { typename F::Half; };
  static constexpr bool has_far_halves = requires { typename F::FarHalf; };
  static constexpr bool has_medium = requires(F f, GroupOf<T> x) { f.beyond_medium(x.words()); };
  static_assert(!(marks_results || has_careful) || F::groups_per_step == 1);
  static_assert(!has_careful || !(has_halves || has_wide));
  // Of any arguments but special ones.
  static constexpr Way any_way = has_wide ? Way::wide : has_careful ? Way::careful : Way::fast;

  static bool same(const void* vector, const void* result) { return vector == result; }

  // In place, where a result is wider than an argument: from the end, so that no argument is overwritten before its time.
  static void backwards(const F& f, std::int32_t n, Arguments a, Results r) {
    const std::int32_t tail = n % 4;
    if (tail != 0) group<false>(f, n - tail, tail, a, r);
    for (std::int32_t i = n - tail - 4; i >= 0; i -= 4) group<true>(f, i, 4, a, r);
  }

  // The next groups from i on, of which `left` elements are left: how many are left then. One test decides for two.
  static ORIN_INLINE std::int32_t two_groups(const F& f, std::int32_t i, std::int32_t left, Arguments a, Results r) {
    if constexpr (!has_special) {
      // No test, so that one group after the other takes the registers.
      store(evaluate<Way::fast>(f, load(a, i, 4)), r, i, 4);
      stores_ascend();
      store(evaluate<Way::fast>(f, load(a, i + 4, 4)), r, i + 4, 4);
      return left - 8;
    }
    const In x = load(a, i, 4), next = load(a, i + 4, 4);
    if (lane_bits(odd_lanes(f, x) | odd_lanes(f, next)) != 0) [[unlikely]] {
      if constexpr (has_wide) return wide_groups(f, i, left, a, r);
      special_group(f, i, 4, a, r);
      special_group(f, i + 4, 4, a, r);
    } else {
      evaluate_and_store(f, x, next, i, r);
    }
    return left - 8;
  }
  template <int registers, class Half>
  struct HalvesOf {
    Half low, high;
  };
  template <class Half>
  struct HalvesOf<1, Half> {
    Half low;
  };
  template <bool far, class V>
  static ORIN_INLINE auto first_half(const F& f, V a, [[maybe_unused]] V b) {
    const auto call = [&](auto... x) __attribute__((always_inline)) {
      if constexpr (far)
        return f.far_first_half(x...);
      else
        return f.first_half(x...);
    };
    if constexpr (F::inputs == 1)
      return call(a);
    else
      return call(a, b);
  }
  template <bool far, class Half>
  static ORIN_INLINE auto second_half(const F& f, const Half& half) {
    if constexpr (far)
      return f.far_second_half(half);
    else
      return f.second_half(half);
  }
  template <bool far>
  static ORIN_INLINE bool takes_halves(const F& f, const In& x) {
    const unsigned odd = lane_bits(odd_lanes(f, x));
    if constexpr (far) return odd == 15 && lane_bits(special_lanes(f, x)) == 0;
    return odd == 0;
  }
  // Some of the `groups` next groups from i on, as long as halves take them: the first half for all of them, then the
  // second. Returns how many.
  template <bool far>
  static std::int32_t halves(const F& f, std::int32_t i, std::int32_t groups, Arguments a, Results r) {
    constexpr std::int32_t capacity = 16;
    constexpr int registers = GroupOf<T>::registers;
    using V = decltype(GroupOf<T>::low);
    using Half = decltype(first_half<far>(f, V{}, V{}));
    HalvesOf<registers, Half> halves[capacity];
    const std::int32_t most = groups < capacity ? groups : capacity;
    std::int32_t count = 0;
    for (; count < most; ++count) {
      const In x = load(a, i + 4 * count, 4);
      if (!takes_halves<far>(f, x)) [[unlikely]]
        break;
      halves[count].low = first_half<far>(f, x[0].low, x[F::inputs - 1].low);
      if constexpr (registers == 2) halves[count].high = first_half<far>(f, x[0].high, x[F::inputs - 1].high);
    }
    for (std::int32_t k = 0; k < count; ++k) {
      Out y;
      y[0].low = second_half<far>(f, halves[k].low);
      if constexpr (registers == 2) y[0].high = second_half<far>(f, halves[k].high);
      store_or_decide(f, y, i + 4 * k, 4, a, r);
    }
    return count;
  }
  // Some of the `groups` next groups from i on, at least one. Returns how many.
  static std::int32_t block(const F& f, std::int32_t i, std::int32_t groups, Arguments a, Results r) {
    std::int32_t count = halves<false>(f, i, groups, a, r);
    if (count > 0) [[likely]]
      return count;
    if constexpr (has_far_halves) {
      count = halves<true>(f, i, groups, a, r);
      if (count > 0) return count;
    }
    group<true>(f, i, 4, a, r);
    return 1;
  }

  // By value, so that the second group is in registers before the first one's lookups go through memory.
  static ORIN_INLINE void evaluate_and_store(const F& f, In x, In next, std::int32_t i, Results r) {
    store(evaluate<Way::fast>(f, x), r, i, 4);
    store(evaluate<Way::fast>(f, next), r, i + 4, 4);
  }

  // One group, full or padded.
  template <bool full>
  static ORIN_INLINE std::int32_t group(const F& f, std::int32_t i, std::int32_t left, Arguments a, Results r) {
    const std::int32_t count = full ? 4 : left;
    const In x = load(a, i, count);
    if (lane_bits(odd_lanes(f, x)) != 0) [[unlikely]] {
      if constexpr (has_wide) return wide_groups(f, i, left, a, r);
      special_group(f, i, count < 4 ? count : 4, a, r);
    } else if constexpr (has_careful) {
      const Out y = evaluate<Way::fast>(f, x);
      const unsigned present = full ? 15u : (1u << count) - 1;  // a padding may well be doubtful
      if ((doubtful_lanes(f, y) & present) != 0) [[unlikely]]
        return careful_groups(f, i, left, a, r);
      store(y, r, i, count);
    } else {
      evaluate_or_decide<Way::fast>(f, x, i, count, a, r);
    }
    return left - 4;
  }
  // Out of the loop, that stores there need not ask how many.
  [[gnu::noinline]] static void last_group(F f, std::int32_t i, std::int32_t left, Arguments a, Results r) noexcept {
    group<false>(f, i, left, a, r);
  }
  template <Way way>
  static ORIN_INLINE void evaluate_or_decide(const F& f, const In& x, std::int32_t i, std::int32_t count, Arguments a,
                                             Results r) {
    store_or_decide(f, evaluate<way>(f, x), i, count, a, r);
  }
  static ORIN_INLINE void store_or_decide(const F& f, const Out& y, std::int32_t i, std::int32_t count, Arguments a,
                                          Results r) {
    if constexpr (marks_results)
      if (has_special_result(f, y)) [[unlikely]]
        return special_group(f, i, count < 4 ? count : 4, a, r);
    store(y, r, i, count);
  }

  // Groups from i on while there are arguments beyond fast in them, the first one in any case; how many elements are left.
  [[gnu::noinline, gnu::hot]] static std::int32_t wide_groups(F f, std::int32_t i, std::int32_t left, Arguments a,
                                                              Results r) noexcept {
    for (bool first = true; left > 0; left -= 4, i += 4, first = false) {
      if constexpr (has_medium) {
        for (; left >= 4; left -= 4, i += 4, first = false) {
          const In x = load(a, i, 4);
          if (lane_bits(f.beyond_medium(x[0].words())) != 0) break;
          store(evaluate<Way::medium>(f, x), r, i, 4);
        }
        if (left <= 0) break;
      }
      const In x = load(a, i, left);
      if (!first && lane_bits(odd_lanes(f, x)) == 0) break;
      if (lane_bits(special_lanes(f, x)) != 0) [[unlikely]]
        special_group(f, i, left < 4 ? left : 4, a, r);
      else
        evaluate_or_decide<Way::wide>(f, x, i, left, a, r);
    }
    return left;
  }

  static ORIN_INLINE unsigned doubtful_lanes(const F& f, const Out& y) {
    return lane_bits(f.doubtful_results(y[0].words()));
  }
  // Groups from i on while they have a doubtful result, the first one in any case; how many elements are left.
  [[gnu::noinline, gnu::hot]] static std::int32_t careful_groups(F f, std::int32_t i, std::int32_t left, Arguments a,
                                                                 Results r) noexcept {
    for (unsigned doubtful = 1; doubtful != 0 && left > 0; left -= 4, i += 4) {
      const In x = load(a, i, left);
      if (lane_bits(special_lanes(f, x)) != 0) break;
      const Out y = evaluate<Way::careful>(f, x);
      store_or_decide(f, y, i, left, a, r);
      doubtful = doubtful_lanes(f, y);
    }
    return left;
  }

  static bool accepts(std::int32_t n, Arguments a, Results r) noexcept {
    std::int32_t status = n <= 0 ? KOR_STATUS_BADSIZE : KOR_STATUS_OK;
    if (status == KOR_STATUS_OK) {
      for (int k = 0; k < F::inputs; ++k)
        if (a[k] == nullptr) status = KOR_STATUS_BADMEM;
      for (int k = 0; k < F::outputs; ++k)
        if (r[k] == nullptr) status = KOR_STATUS_BADMEM;
    }
    if (status == KOR_STATUS_OK) return true;
    report_error(status, status == KOR_STATUS_BADSIZE ? n : 0, a[0], a[F::inputs - 1], r[0], r[F::outputs - 1],
                 F::name);
    return false;
  }

  static ORIN_INLINE In load(Arguments a, std::int32_t i, std::int32_t count) {
    if constexpr (F::inputs == 1)
      return {{GroupOf<T>::load(a[0] + i, count, padding())}};
    else
      return {GroupOf<T>::load(a[0] + i, count, padding()), GroupOf<T>::load(a[1] + i, count, padding())};
  }
  static ORIN_INLINE void store(const Out& y, Results r, std::int32_t i, std::int32_t count) {
    y[0].store(r[0] + i, count);
    if constexpr (F::outputs == 2) y[1].store(r[1] + i, count);
  }

  static ORIN_INLINE Vec4i special_lanes(const F& f, const In& x) {
    const auto words = [](const auto& group) __attribute__((always_inline)) {
      if constexpr (requires { requires F::tests_singles; })
        return group.singles;
      else
        return group.words();
    };
    if constexpr (!has_special)
      return 0;
    else if constexpr (F::inputs == 1)
      return f.special_lanes(words(x[0]));
    else
      return f.special_lanes(words(x[0]), words(x[1]));
  }

  // The lanes that fast must not see.
  static ORIN_INLINE Vec4i odd_lanes(const F& f, const In& x) {
    if constexpr (!has_wide)
      return special_lanes(f, x);
    else if constexpr (F::inputs == 1)
      return f.beyond_fast(x[0].words());
    else
      return f.beyond_fast(x[0].words(), x[1].words());
  }

  static ORIN_INLINE Vec4i special_results([[maybe_unused]] const F& f, const Out& y) {
    if constexpr (tests_results)
      return f.special_results(y[0].words());
    else if constexpr (nan_is_special)
      return y[0].nan_lanes();
    else
      return y[0].words();
  }

  static ORIN_INLINE bool has_special_result(const F& f, const Out& y) {
    if constexpr (nan_is_special && requires { y[0].has_nan(); })
      return y[0].has_nan();
    else
      return lane_bits(special_results(f, y)) != 0;
  }

  template <Way way>
  static ORIN_INLINE Out evaluate(const F& f, const In& x) {
    Out y;
    const auto low = value<way>(f, x[0].low, x[F::inputs - 1].low);
    if constexpr (F::outputs == 1) {
      y[0].low = low;
    } else {
      y[0].low = low.first;
      y[1].low = low.second;
    }
    if constexpr (GroupOf<T>::registers == 2) {
      const auto high = value<way>(f, x[0].high, x[F::inputs - 1].high);
      if constexpr (F::outputs == 1) {
        y[0].high = high;
      } else {
        y[0].high = high.first;
        y[1].high = high.second;
      }
    }
    return y;
  }
  // f of one register of each argument; one argument comes twice.
  template <Way way, class V>
  static ORIN_INLINE auto value(const F& f, V a, [[maybe_unused]] V b) {
    const auto call = [&](auto... x) __attribute__((always_inline)) {
      if constexpr (way == Way::fast)
        return f.fast(x...);
      else if constexpr (way == Way::wide)
        return f.wide(x...);
      else if constexpr (way == Way::careful)
        return f.careful(x...);
      else
        return f.medium(x...);
    };
    if constexpr (F::inputs == 1)
      return call(a);
    else
      return call(a, b);
  }

  // The `count` elements from i on, at least one of them special: the others are computed beside a padding.
  [[gnu::noinline, gnu::cold]] static void special_group(F f, std::int32_t i, std::int32_t count, Arguments a,
                                                         Results r) noexcept {
    T x[F::inputs][4];
    for (int k = 0; k < F::inputs; ++k)
      for (int lane = 0; lane < 4; ++lane) x[k][lane] = lane < count ? load_element(a[k] + i + lane) : padding();
    unsigned special = lane_bits(special_lanes(f, load(rows(x), 0, 4)));
    T safe[F::inputs][4];
    for (int k = 0; k < F::inputs; ++k)
      for (int lane = 0; lane < 4; ++lane) safe[k][lane] = (special >> lane & 1) != 0 ? padding() : x[k][lane];
    const Out values = evaluate<any_way>(f, load(rows(safe), 0, 4));
    if constexpr (marks_results) special |= lane_bits(special_results(f, values));
    R y[F::outputs][4];
    for (int k = 0; k < F::outputs; ++k) values[k].store(y[k], 4);

    // Reports read the arguments again, so these are not to be overwritten before their time.
    const bool descending = sizeof(R) > sizeof(T) && same(a[0], r[0]);
    for (int k = 0; k < count; ++k) {
      const int lane = descending ? count - 1 - k : k;
      if ((special >> lane & 1) != 0) {
        special_element(f, i + lane, std::make_index_sequence<F::inputs>{}, x, lane, a, r);
      } else {
        for (int out = 0; out < F::outputs; ++out) store_element(r[out] + i + lane, y[out][lane]);
      }
    }
  }

  template <std::size_t... k>
  static void special_element(const F& f, std::int32_t i, std::index_sequence<k...>, const T (&x)[F::inputs][4],
                              int lane, Arguments a, Results r) noexcept {
    if constexpr (has_special) {
      auto outcome = f.special(x[k][lane]...);
      if (outcome.status == KOR_STATUS_OK) {
        for (int out = 0; out < F::outputs; ++out) store_element(r[out] + i, outcome.value[out]);
        return;
      }
      // The report reads element i of the argument vectors. In place that element is the result's too: the result then
      // waits in the outcome, passed as the vector whose element i it is, until the report is done.
      Results seen;
      for (int out = 0; out < F::outputs; ++out) {
        bool in_place = false;
        for (int in = 0; in < F::inputs; ++in) in_place |= same(a[in], r[out]);
        seen[out] = in_place ? vector_with_element(i, &outcome.value[out]) : r[out];
        if (!in_place) store_element(r[out] + i, outcome.value[out]);
      }
      report_error(outcome.status, i, a[0], a[F::inputs - 1], seen[0], seen[F::outputs - 1], F::name);
      for (int out = 0; out < F::outputs; ++out)
        if (seen[out] != r[out]) store_element(r[out] + i, outcome.value[out]);
    }
  }

  static R* vector_with_element(std::int32_t i, R* element) {
    return reinterpret_cast<R*>(reinterpret_cast<std::uintptr_t>(element) - static_cast<std::uintptr_t>(i) * sizeof(R));
  }

  static constexpr T padding() {
    if constexpr (has_special)
      return F::ordinary;
    else
      return T{};
  }

  static ORIN_INLINE Arguments rows(const T (&x)[F::inputs][4]) {
    Arguments pointers;
    for (int k = 0; k < F::inputs; ++k) pointers[k] = x[k];
    return pointers;
  }
};

// The kernel of F: as an exported entry calls it.
template <class F>
void elementwise(F f, std::int32_t n, typename Elementwise<F>::Arguments a,
                 typename Elementwise<F>::Results r) noexcept {
  Elementwise<F>::run(f, n, a, r);
}

}  // namespace orin::vector_math::simd

#endif

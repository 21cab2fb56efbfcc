// placer: the pieces of a uniform partition's sites, in groups.
// SPDX-License-Identifier: MIT
//
// Method    place = (s - origin) * multiplier; its integer part is the piece, or a neighbour of it
// Bounds    confirmed by the points: places never fall as sites grow, since each rounded operation is monotone; with every
//           point's place in [i, i + 1) those of the sites in piece i lie in [i, i + 2), so that a coordinate
//           s - x[piece] that is not negative proves the piece. Else it must not exceed `certain` either
// Special   a group with a site outside the partition, NaN or without proof is left to the caller
// Cost      pieces go through memory to the addresses of points: cheaper than from the lanes of a vector
#ifndef ORIN_DATA_FITTING_PLACER_H
#define ORIN_DATA_FITTING_PLACER_H

#include <limits>

#include "data_fitting/vectors.h"

namespace orin::data_fitting {

template <class T>
class Placer {
 public:
  static constexpr Index group = 16;

  Placer(const T* x, Index points, T origin, T multiplier)
      : x_(x), points_(points), origin_(origin), multiplier_(multiplier) {}

  // Whether integers in vectors can number the points.
  static bool fits(Index points) { return points <= std::numeric_limits<int32_t>::max(); }

  bool confirmed() const {
    if (points_ < 4) return false;
    __m128i different = _mm_setzero_si128();
    const auto compare = [&](Index i) {
      const __m128i numbers = _mm_add_epi32(_mm_set1_epi32(static_cast<int32_t>(i)), _mm_set_epi32(3, 2, 1, 0));
      different = _mm_or_si128(different, _mm_xor_si128(four_places(x_ + i), numbers));
    };
    for (Index i = 0; i + 4 <= points_; i += 4) compare(i);
    compare(points_ - 4);
    return _mm_movemask_epi8(_mm_cmpeq_epi32(different, _mm_setzero_si128())) == 0xFFFF;
  }

  // False if the group is left to the caller.
  template <bool is_confirmed>
  bool place(const T* site, T certain, Index* piece, T* local) const {
    const __m128i highest = _mm_set1_epi32(static_cast<int32_t>(points_ - 2));
    __m128i outside = _mm_setzero_si128();
    fetch_ahead<group>(site);
    for (Index k = 0; k < group; k += 4) {
      const __m128i places = four_places(site + k);
      outside = _mm_or_si128(outside, _mm_or_si128(places, _mm_sub_epi32(highest, places)));
      store_cells(places, piece + k);
    }
    if (_mm_movemask_ps(_mm_castsi128_ps(outside)) != 0) return false;
    V unproven = T(0);
    for (Index k = 0; k < group; k += V::lanes) {
      const V u = V::load(site + k) - gather(x_, piece + k);
      unproven = unproven | u;
      if constexpr (!is_confirmed) unproven = unproven | (V(certain) - u);
      u.store(local + k);
    }
    return lane_bits(unproven) == 0;
  }

 private:
  using V = Vec<T>;

  V place_of(const T* site) const { return (V::load(site) - origin_) * multiplier_; }

  __m128i four_places(const T* site) const {
    if constexpr (V::lanes == 4) {
      return _mm_cvttps_epi32(place_of(site).raw);
    } else {
      return _mm_unpacklo_epi64(_mm_cvttpd_epi32(place_of(site).raw), _mm_cvttpd_epi32(place_of(site + 2).raw));
    }
  }

  const T* x_;
  Index points_;
  V origin_, multiplier_;
};

}  // namespace orin::data_fitting

#endif

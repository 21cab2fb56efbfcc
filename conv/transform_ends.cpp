// transform_ends.cpp: the first pass, from the caller's sequence, and the last one, back to it.
// SPDX-License-Identifier: MIT
#include <algorithm>

#include "conv/butterflies.h"
#include "conv/transform.h"

namespace orin::conv {

namespace {

// Constants of the first pass: theta = 1/4.
template <class T>
struct FirstFactors {
  static constexpr Root r1 = root_of_unity(1, 16), r2 = root_of_unity(2, 16), r3 = root_of_unity(3, 16);

  static Lanes<T> factor(Root r, T scale) {
    return {Simd<T>::splat(static_cast<T>(r.re) * scale), Simd<T>::splat(static_cast<T>(r.im) * scale)};
  }

  explicit FirstFactors(T scale) : w1(factor(r1, scale)), w2(factor(r2, scale)), w3(factor(r3, scale)) {}
  Lanes<T> w1, w2, w3;
};

// A sequence of `count` scalars cut into streams of `length`: what stands in the same place of all streams enters one
// butterfly. Real data: the quarters of the real parts, then those of the imaginary parts. Complex: four quarters.
// Streams that hold the place `at`.
inline std::size_t streams_at(std::size_t count, std::size_t length, std::size_t at) {
  return count > at ? (count - at - 1) / length + 1 : 0;
}

// Scalars at, at + 1 ... of a sequence, zeros beyond its end.
template <class T>
typename Simd<T>::Vector load_clipped(const T* data, std::size_t count, std::size_t at) {
  alignas(16) T edge[Simd<T>::lanes] = {};
  for (std::size_t i = 0; i < Simd<T>::lanes && at + i < count; ++i) edge[i] = data[at + i];
  return Simd<T>::load(edge);
}

// Stores what lies below `count`, the part below `added` on top of what is there.
template <class T>
void store_clipped(T* data, std::size_t count, std::size_t added, std::size_t at, typename Simd<T>::Vector v) {
  alignas(16) T edge[Simd<T>::lanes];
  Simd<T>::store(edge, v);
  for (std::size_t i = 0; i < Simd<T>::lanes && at + i < count; ++i)
    data[at + i] = edge[i] + (at + i < added ? data[at + i] : T(0));
}

// Walks over the places of a stream in steps of one vector of coefficients: whole(at) where all of its elements lie on
// one side of every edge, across(at) at an edge. The last edge is the length of the stream.
template <std::size_t Step, std::size_t Edges, class Whole, class Across>
[[gnu::always_inline]] inline void walk(const std::size_t (&edges)[Edges], Whole&& whole, Across&& across) {
  std::size_t at = 0;
  for (const std::size_t edge : edges) {
    if (at + Step <= edge) at = whole(at, edge - (edge - at) % Step);
    if (at < edge) across(at), at += Step;
  }
}

// Turns blocks in rows, consecutive coefficients in lanes, into groups with the blocks in lanes, and back.
void transpose(Lanes<float>& a, Lanes<float>& b, Lanes<float>& c, Lanes<float>& d) {
  _MM_TRANSPOSE4_PS(a.re, b.re, c.re, d.re);
  _MM_TRANSPOSE4_PS(a.im, b.im, c.im, d.im);
}
void transpose(Lanes<double>& a, Lanes<double>& b) {
  Simd<double>::interleave(a.re, b.re);
  Simd<double>::interleave(a.im, b.im);
}

void store_in_lanes(float* p, std::size_t, Quarters<float> q) {
  transpose(q.a0, q.a1, q.a2, q.a3);
  store(p, q.a0);
  store(p + 8, q.a1);
  store(p + 16, q.a2);
  store(p + 24, q.a3);
}
void store_in_lanes(double* p, std::size_t quarter, Quarters<double> q) {
  transpose(q.a0, q.a1);
  store(p, q.a0);
  store(p + 4, q.a1);
  p += 4 * quarter;
  transpose(q.a2, q.a3);
  store(p, q.a2);
  store(p + 4, q.a3);
}

Quarters<float> load_from_lanes(const float* p, std::size_t) {
  Quarters<float> q{load(p), load(p + 8), load(p + 16), load(p + 24)};
  transpose(q.a0, q.a1, q.a2, q.a3);
  return q;
}
Quarters<double> load_from_lanes(const double* p, std::size_t quarter) {
  const double* next = p + 4 * quarter;
  Quarters<double> q{load(p), load(p + 4), load(next), load(next + 4)};
  transpose(q.a0, q.a1);
  transpose(q.a2, q.a3);
  return q;
}

// The first pass at one place of the streams: `stream(i, offset)` is the vector at that place of stream i. Real only:
// the imaginary streams are empty.
template <class T, int Parts, bool RealOnly, class Stream>
[[gnu::always_inline]] inline Quarters<T> first_split(const FirstFactors<T>& f, Stream&& stream) {
  using Vector = typename Simd<T>::Vector;
  if constexpr (RealOnly) {
    const Vector a1 = stream(1, 0), a2 = stream(2, 0), a3 = stream(3, 0);
    return split<T>({stream(0, 0), Simd<T>::zero()}, {a1 * f.w1.re, a1 * f.w1.im}, {a2 * f.w2.re, a2 * f.w2.im},
                    {a3 * f.w3.re, a3 * f.w3.im});
  } else {
    const auto quarter = [&](std::size_t i) __attribute__((always_inline))->Lanes<T> {
      if constexpr (Parts == 1) return {stream(i, 0), stream(i + 4, 0)};
      Vector even = stream(i, 0), odd = stream(i, Simd<T>::lanes);
      Simd<T>::deinterleave(even, odd);
      return {even, odd};
    };
    return split(quarter(0), quarter(1) * f.w1, quarter(2) * f.w2, quarter(3) * f.w3);
  }
}

}  // namespace

template <class T>
template <int Parts>
void Transform<T>::load(const Input<T, Parts>& input, T* work) const {
  constexpr std::size_t step = Parts * Simd<T>::lanes;
  const std::size_t quarter = points_ / 4, length = Parts * quarter, count = Parts * input.count;
  const FirstFactors<T> f(T(1));
  const T* const data = input.data;
  const auto put = [&](std::size_t at, const Quarters<T>& b) __attribute__((always_inline)) {
    store_in_lanes(work + at / Parts * group<T>, quarter, b);
  };
  const auto whole = [&](std::size_t at, std::size_t end) {
    const std::size_t live = streams_at(count, length, at);
    const auto stream_at = [&](std::size_t place) __attribute__((always_inline)) {
      return [=](std::size_t i, std::size_t offset) __attribute__((always_inline)) {
        return i < live ? Simd<T>::load_any(data + (i * length + place + offset)) : Simd<T>::zero();
      };
    };
    if (Parts == 1 && live <= 4) {
      for (; at < end; at += step) put(at, first_split<T, Parts, Parts == 1>(f, stream_at(at)));
    } else {
      for (; at < end; at += step) put(at, first_split<T, Parts, false>(f, stream_at(at)));
    }
    return at;
  };
  const auto across = [&](std::size_t at) {
    put(at, first_split<T, Parts, false>(f, [&](std::size_t i, std::size_t offset) {
          return load_clipped(data, count, i * length + at + offset);
        }));
  };
  walk<step>({count % length, length}, whole, across);
}

template <class T>
template <int Parts>
void Transform<T>::unload(const T* work, const Output<T, Parts>& output) const {
  using Vector = typename Simd<T>::Vector;
  constexpr std::size_t step = Parts * Simd<T>::lanes;
  const std::size_t quarter = points_ / 4, length = Parts * quarter;
  const std::size_t count = Parts * output.count, added = Parts * output.added;
  const T scale = static_cast<T>(last_length_) / static_cast<T>(points_);
  const FirstFactors<T> f(scale);
  const Vector scaling = Simd<T>::splat(scale);
  T* const data = output.data;
  const auto join_at = [&](std::size_t at, auto&& stream) __attribute__((always_inline)) {
    const Quarters<T> b = load_from_lanes(work + at / Parts * group<T>, quarter);
    const Quarters<T> a = join(b.a0, b.a1, b.a2, b.a3);
    const auto put = [&](std::size_t i, Lanes<T> v) __attribute__((always_inline)) {
      if constexpr (Parts == 1) {
        stream(i, 0, v.re);
        stream(i + 4, 0, v.im);
      } else {
        Simd<T>::interleave(v.re, v.im);
        stream(i, 0, v.re);
        stream(i, Simd<T>::lanes, v.im);
      }
    };
    put(0, {a.a0.re * scaling, a.a0.im * scaling});
    put(1, times_conjugate(a.a1, f.w1));
    put(2, times_conjugate(a.a2, f.w2));
    put(3, times_conjugate(a.a3, f.w3));
  };
  const auto whole = [&](std::size_t at, std::size_t end) {
    const std::size_t live = streams_at(count, length, at), adding = streams_at(added, length, at);
    for (; at < end; at += step)
      join_at(
          at, [&](std::size_t i, std::size_t offset, Vector v) __attribute__((always_inline)) {
            T* const to = data + (i * length + at + offset);
            if (i < live) Simd<T>::store_any(to, i < adding ? Simd<T>::load_any(to) + v : v);
          });
    return at;
  };
  const auto across = [&](std::size_t at) {
    join_at(at, [&](std::size_t i, std::size_t offset, Vector v) {
      store_clipped(data, count, added, i * length + at + offset, v);
    });
  };
  const std::size_t first = count % length, second = added % length;
  walk<step>({std::min(first, second), std::max(first, second), length}, whole, across);
}

template void Transform<float>::load(const Input<float, 1>&, float*) const;
template void Transform<float>::load(const Input<float, 2>&, float*) const;
template void Transform<float>::unload(const float*, const Output<float, 1>&) const;
template void Transform<float>::unload(const float*, const Output<float, 2>&) const;
template void Transform<double>::load(const Input<double, 1>&, double*) const;
template void Transform<double>::load(const Input<double, 2>&, double*) const;
template void Transform<double>::unload(const double*, const Output<double, 1>&) const;
template void Transform<double>::unload(const double*, const Output<double, 2>&) const;

}  // namespace orin::conv

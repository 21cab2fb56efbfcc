// transform.cpp: splitting, product and joining, see transform.h.
// SPDX-License-Identifier: MIT
#include "conv/transform.h"

#include <algorithm>
#include <array>
#include <type_traits>

namespace orin::conv {

namespace {

// A vector of complex numbers, parts apart.
template <class T>
struct Lanes {
  using Vector = typename Simd<T>::Vector;
  Vector re, im;

  friend Lanes operator+(Lanes a, Lanes b) { return {a.re + b.re, a.im + b.im}; }
  friend Lanes operator-(Lanes a, Lanes b) { return {a.re - b.re, a.im - b.im}; }
  friend Lanes operator*(Lanes a, Lanes b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
};

// a conj(w)
template <class T>
Lanes<T> times_conjugate(Lanes<T> a, Lanes<T> w) {
  return {a.re * w.re + a.im * w.im, a.im * w.re - a.re * w.im};
}

// a + i b, a - i b
template <class T>
Lanes<T> plus_i(Lanes<T> a, Lanes<T> b) {
  return {a.re - b.im, a.im + b.re};
}
template <class T>
Lanes<T> minus_i(Lanes<T> a, Lanes<T> b) {
  return {a.re + b.im, a.im - b.re};
}

// Scalars of a group: its vector of real and its vector of imaginary parts.
template <class T>
constexpr std::size_t group = 2 * Simd<T>::lanes;

template <class T>
Lanes<T> load(const T* p) {
  return {Simd<T>::load(p), Simd<T>::load(p + Simd<T>::lanes)};
}

template <class T>
void store(T* p, Lanes<T> a) {
  Simd<T>::store(p, a.re);
  Simd<T>::store(p + Simd<T>::lanes, a.im);
}

template <class T>
Lanes<T> factor(const typename TwiddleBlock<T>::Factor& f) {
  return {Simd<T>::load(f.re), Simd<T>::load(f.im)};
}

template <class T>
struct Quarters {
  Lanes<T> a0, a1, a2, a3;
};

// The splitting of the head: w a1, w^2 a2 and w^3 a3 in, the four blocks out.
template <class T>
Quarters<T> split(Lanes<T> a0, Lanes<T> a1, Lanes<T> a2, Lanes<T> a3) {
  const Lanes<T> s0 = a0 + a2, d0 = a0 - a2, s1 = a1 + a3, d1 = a1 - a3;
  return {s0 + s1, s0 - s1, plus_i(d0, d1), minus_i(d0, d1)};
}

// Its inverse but for a factor 4: the four blocks in; a0, w a1, w^2 a2 and w^3 a3 out.
template <class T>
Quarters<T> join(Lanes<T> b0, Lanes<T> b1, Lanes<T> b2, Lanes<T> b3) {
  const Lanes<T> s0 = b0 + b1, d0 = b0 - b1, s1 = b2 + b3, d1 = b2 - b3;
  return {s0 + s1, minus_i(d0, d1), s0 - s1, plus_i(d0, d1)};
}

// `blocks` neighbouring blocks of `length` groups split in place.
template <class T>
void split_pass(T* p, std::size_t blocks, std::size_t length, const TwiddleBlock<T>* twiddle) {
  const std::size_t quarter = length / 4 * group<T>;
  for (const TwiddleBlock<T>* end = twiddle + blocks; twiddle != end; ++twiddle, p += 3 * quarter) {
    const Lanes<T> w1 = factor<T>(twiddle->power[0]), w2 = factor<T>(twiddle->power[1]),
                   w3 = factor<T>(twiddle->power[2]);
    for (const T* stop = p + quarter; p != stop; p += group<T>) {
      const Quarters<T> b =
          split(load(p), load(p + quarter) * w1, load(p + 2 * quarter) * w2, load(p + 3 * quarter) * w3);
      store(p, b.a0);
      store(p + quarter, b.a1);
      store(p + 2 * quarter, b.a2);
      store(p + 3 * quarter, b.a3);
    }
  }
}

// Undoes split_pass but for a factor 4.
template <class T>
void join_pass(T* p, std::size_t blocks, std::size_t length, const TwiddleBlock<T>* twiddle) {
  const std::size_t quarter = length / 4 * group<T>;
  for (const TwiddleBlock<T>* end = twiddle + blocks; twiddle != end; ++twiddle, p += 3 * quarter) {
    const Lanes<T> w1 = factor<T>(twiddle->power[0]), w2 = factor<T>(twiddle->power[1]),
                   w3 = factor<T>(twiddle->power[2]);
    for (const T* stop = p + quarter; p != stop; p += group<T>) {
      const Quarters<T> a = join(load(p), load(p + quarter), load(p + 2 * quarter), load(p + 3 * quarter));
      store(p, a.a0);
      store(p + quarter, times_conjugate(a.a1, w1));
      store(p + 2 * quarter, times_conjugate(a.a2, w2));
      store(p + 3 * quarter, times_conjugate(a.a3, w3));
    }
  }
}

// a := a b modulo t^Length - omega.
template <std::size_t Length, class T>
[[gnu::always_inline]] inline void multiply_polynomials(T* a, const T* b, Lanes<T> omega) {
  std::array<Lanes<T>, Length> x, y, wrapped;  // wrapped: omega b, for the products beyond t^Length
  unrolled<Length>([&](auto i) __attribute__((always_inline)) {
    x[i] = load(a + i * group<T>);
    y[i] = load(b + i * group<T>);
    if constexpr (i > 0) wrapped[i] = omega * y[i];
  });
  unrolled<Length>([&](auto k) __attribute__((always_inline)) {
    Lanes<T> sum = x[0] * y[k];
    unrolled<Length - 1>([&](auto j) __attribute__((always_inline)) {
      constexpr std::size_t i = j + 1;
      if constexpr (i <= k)
        sum = sum + x[i] * y[k - i];
      else
        sum = sum + x[i] * wrapped[k + Length - i];
    });
    store(a + k * group<T>, sum);
  });
}

// The last blocks below `parents` blocks of the level above them.
template <std::size_t Length, class T>
void multiply_polynomials_below(T* a, const T* b, std::size_t parents, const TwiddleBlock<T>* twiddle) {
  for (const TwiddleBlock<T>* end = twiddle + parents; twiddle != end; ++twiddle) {
    const Lanes<T> w = factor<T>(twiddle->power[0]);
    const Lanes<T> zero{Simd<T>::zero(), Simd<T>::zero()};
    for (const Lanes<T> omega : {w, zero - w, plus_i(zero, w), minus_i(zero, w)}) {
      multiply_polynomials<Length>(a, b, omega);
      a += Length * group<T>;
      b += Length * group<T>;
    }
  }
}

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

// Groups of a block that, with its counterpart and its factors, is worked on in the first-level cache.
constexpr std::size_t cached_length = 256;

}  // namespace

template <class T>
Transform<T>::Transform(std::size_t points) : points_(points), last_length_(points / 4), levels_(0) {
  while (last_length_ > 4) {
    last_length_ /= 4;
    ++levels_;
  }
}

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

template <class T>
void Transform<T>::forward_block(unsigned level, std::size_t block, std::size_t length, T* work) const {
  if (length <= cached_length) {
    for (std::size_t blocks = 1; length > last_length_; ++level, block *= 4, blocks *= 4, length /= 4)
      split_pass(work, blocks, length, twiddles_.level(level) + block);
    return;
  }
  split_pass(work, 1, length, twiddles_.level(level) + block);
  for (std::size_t i = 0; i < 4; ++i)
    forward_block(level + 1, 4 * block + i, length / 4, work + i * (length / 4) * group<T>);
}

template <class T>
void Transform<T>::forward(T* work) const {
  const std::size_t length = points_ / 4;
  for (std::size_t v = 0; v < Twiddles<T>::first_vectors; ++v)
    forward_block(1, v, length, work + v * length * group<T>);
}

template <class T>
template <class Other>
void Transform<T>::multiply_last(std::size_t block, std::size_t length, T* work, Other* other) const {
  // `block` is the first of the blocks of the last level, whose quarters are the last blocks.
  const TwiddleBlock<T>* twiddle = twiddles_.level(levels_) + block;
  const std::size_t parents = length / (4 * last_length_);
  if (last_length_ == 4)
    multiply_polynomials_below<4>(work, other, parents, twiddle);
  else
    multiply_polynomials_below<2>(work, other, parents, twiddle);
}

template <class T>
template <class Other>
void Transform<T>::multiply_block(unsigned level, std::size_t block, std::size_t length, T* work, Other* other) const {
  constexpr bool kept = std::is_const_v<Other>;
  if (length <= cached_length) {
    std::size_t blocks = 1, size = length;
    for (; level <= levels_; ++level, block *= 4, blocks *= 4, size /= 4) {
      split_pass(work, blocks, size, twiddles_.level(level) + block);
      if constexpr (!kept) split_pass(other, blocks, size, twiddles_.level(level) + block);
    }
    multiply_last(block / 4, length, work, other);
    while (size < length) {
      --level, block /= 4, blocks /= 4, size *= 4;
      join_pass(work, blocks, size, twiddles_.level(level) + block);
    }
    return;
  }
  const TwiddleBlock<T>* twiddle = twiddles_.level(level) + block;
  split_pass(work, 1, length, twiddle);
  if constexpr (!kept) split_pass(other, 1, length, twiddle);
  for (std::size_t i = 0; i < 4; ++i) {
    const std::size_t offset = i * (length / 4) * group<T>;
    multiply_block(level + 1, 4 * block + i, length / 4, work + offset, other + offset);
  }
  join_pass(work, 1, length, twiddle);
}

template <class T>
template <class Other>
void Transform<T>::multiply(T* work, Other* other) const {
  const std::size_t length = points_ / 4;
  for (std::size_t v = 0; v < Twiddles<T>::first_vectors; ++v)
    multiply_block(1, v, length, work + v * length * group<T>, other + v * length * group<T>);
}

template <class T>
void Transform<T>::multiply_loaded(T* work, T* other) const {
  multiply(work, other);
}

template <class T>
void Transform<T>::multiply_kept(T* work, const T* other) const {
  multiply(work, other);
}

template class Transform<float>;
template class Transform<double>;
template void Transform<float>::load(const Input<float, 1>&, float*) const;
template void Transform<float>::load(const Input<float, 2>&, float*) const;
template void Transform<float>::unload(const float*, const Output<float, 1>&) const;
template void Transform<float>::unload(const float*, const Output<float, 2>&) const;
template void Transform<double>::load(const Input<double, 1>&, double*) const;
template void Transform<double>::load(const Input<double, 2>&, double*) const;
template void Transform<double>::unload(const double*, const Output<double, 1>&) const;
template void Transform<double>::unload(const double*, const Output<double, 2>&) const;

}  // namespace orin::conv

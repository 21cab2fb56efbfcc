// twiddles.cpp: constant levels, anchors and the generation of the later levels.
// SPDX-License-Identifier: MIT
#include "conv/twiddles.h"

#include <cstdint>

namespace orin::conv {

namespace {

constexpr std::uint32_t reverse_bits(std::uint32_t value, unsigned bits) {
  std::uint32_t reversed = 0;
  for (unsigned i = 0; i < bits; ++i) reversed |= ((value >> i) & 1U) << (bits - 1 - i);
  return reversed;
}

// The lanes of a block in a constant level: one denominator holds every term of theta / 4 exactly.
template <class T>
constexpr TwiddleBlock<T> constant_block(unsigned l, std::uint32_t vector, std::uint32_t rest) {
  constexpr std::size_t lanes = Simd<T>::lanes;
  const std::uint32_t scale = 1U << (2 * l);     // 4^l
  const std::uint32_t denominator = 16 * scale;  // of theta / 4
  TwiddleBlock<T> block{};
  for (std::uint32_t lane = 0; lane < lanes; ++lane) {
    const std::uint32_t digit = vector * static_cast<std::uint32_t>(lanes) + lane;
    const std::uint32_t numerator = 1 + 4 * reverse_bits(digit, 2) + 16 * reverse_bits(rest, 2 * (l - 1));
    for (std::uint32_t k = 0; k < 3; ++k) {
      const Root root = root_of_unity((k + 1) * numerator, denominator);
      block.power[k].re[lane] = static_cast<T>(root.re);
      block.power[k].im[lane] = static_cast<T>(root.im);
    }
  }
  return block;
}

template <class T, std::size_t Count>
constexpr std::array<TwiddleBlock<T>, Count> constant_blocks(unsigned levels) {
  std::array<TwiddleBlock<T>, Count> blocks{};
  std::size_t at = 0;
  for (unsigned l = 1; l <= levels; ++l)
    for (std::uint32_t vector = 0; vector < Twiddles<T>::first_vectors; ++vector)
      for (std::uint32_t rest = 0; rest < 1U << (2 * (l - 1)); ++rest)
        blocks[at++] = constant_block<T>(l, vector, rest);
  return blocks;
}

template <class T, std::size_t Count>
constexpr std::array<TwiddleBlock<T>, Count> anchor_blocks() {
  std::array<TwiddleBlock<T>, Count> blocks{};
  for (std::uint32_t c = 0; c < Count; ++c)
    for (std::uint32_t k = 0; k < 3; ++k) {
      const Root root = root_of_unity((k + 1) * reverse_bits(c, 6), 4 * Count);
      for (std::size_t lane = 0; lane < Simd<T>::lanes; ++lane) {
        blocks[c].power[k].re[lane] = static_cast<T>(root.re);
        blocks[c].power[k].im[lane] = static_cast<T>(root.im);
      }
    }
  return blocks;
}

template <class T>
struct SmallRotation {
  typename Simd<T>::Vector re, im;  // cos x - 1, sin x
};

// x = 2 pi turns, |x| < 0.14: the terms left out are below 2^-64.
template <class T>
SmallRotation<T> small_rotation(typename Simd<T>::Vector turns) {
  const auto constant = [](double value) { return Simd<T>::splat(static_cast<T>(value)); };
  const auto x = turns * constant(6.283185307179586);
  const auto y = x * x;
  const auto cosine = constant(-1.0 / 2) +
                      y * (constant(1.0 / 24) +
                           y * (constant(-1.0 / 720) + y * (constant(1.0 / 40320) + y * constant(-1.0 / 3628800))));
  const auto sine =
      constant(-1.0 / 6) + y * (constant(1.0 / 120) + y * (constant(-1.0 / 5040) + y * constant(1.0 / 362880)));
  return {y * cosine, x + x * y * sine};
}

}  // namespace

template <class T>
constexpr typename Twiddles<T>::Constants Twiddles<T>::constants =
    constant_blocks<T, std::tuple_size_v<Constants>>(constant_levels);

template <class T>
constexpr typename Twiddles<T>::Anchors Twiddles<T>::anchors = anchor_blocks<T, anchor_count>();

template <class T>
void Twiddles<T>::generate(Block* memory, unsigned levels) {
  using Lanes = Simd<T>;
  constexpr T reversed_digit[4] = {0, T(0.5), T(0.25), T(0.75)};
  generated_ = memory;
  T first_term = T(1) / 1024, lane_scale = T(1) / 64;  // 4^-l / 4 and 4^-(l-1) of level 4
  for (unsigned l = constant_levels + 1; l <= levels; ++l, first_term /= 4, lane_scale /= 4) {
    const unsigned group_bits = 2 * (l - constant_levels - 1);  // blocks beyond an anchor's six bits
    for (std::size_t vector = 0; vector < first_vectors; ++vector) {
      alignas(16) T lane_turns[Lanes::lanes];
      for (std::size_t lane = 0; lane < Lanes::lanes; ++lane)
        lane_turns[lane] = first_term + lane_scale * reversed_digit[vector * Lanes::lanes + lane];
      for (std::uint32_t group = 0; group < 1U << group_bits; ++group, memory += anchor_count) {
        const T reversed = static_cast<T>(reverse_bits(group, group_bits)) / static_cast<T>(1U << group_bits);
        const auto theta = Lanes::load(lane_turns) + Lanes::splat(reversed / anchor_count);
        for (std::size_t k = 0; k < 3; ++k) {
          const SmallRotation<T> e = small_rotation<T>(theta * Lanes::splat(static_cast<T>(k + 1) / 4));
          for (std::size_t c = 0; c < anchor_count; ++c) {
            const auto re = Lanes::load(anchors[c].power[k].re);
            const auto im = Lanes::load(anchors[c].power[k].im);
            Lanes::store(memory[c].power[k].re, re + (re * e.re - im * e.im));
            Lanes::store(memory[c].power[k].im, im + (re * e.im + im * e.re));
          }
        }
      }
    }
  }
}

template class Twiddles<float>;
template class Twiddles<double>;

}  // namespace orin::conv

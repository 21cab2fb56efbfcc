// quantile_summary: absorption, insertion, compression, queries. The method is told in the header.
// SPDX-License-Identifier: MIT
#include "summary_stats/quantile_summary.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <utility>

#include "summary_stats/quantile_rule.h"
#include "summary_stats/selection.h"

namespace orin::summary_stats {
namespace {

constexpr std::ptrdiff_t group = 4;  // searches in flight

// Numbers collected before they enter: enough to pay for a pass over the tuples.
std::size_t pending_size(double eps) noexcept {
  return static_cast<std::size_t>(std::clamp(0.5 / eps, 256.0, 65536.0));
}

// The band of a tuple that was born under the cap `born`, under the cap c: band 0 is born = c, band b >= 1 holds
//   2^(b-1) + (c mod 2^(b-1)) <= c - born < 2^b + (c mod 2^b).
int band_of(std::uint32_t born, std::uint32_t cap) noexcept {
  const std::uint32_t age = cap - born;
  if (age == 0) return 0;
  const int b = static_cast<int>(std::bit_width(age));
  const std::uint32_t half = std::uint32_t{1} << (b - 1);
  return age < half + (cap & (half - 1)) ? b - 1 : b;
}

// place_k = the number of values smaller than x[k], for a group at a time and without a branch on the data. NaN: 0.
void find_places(const double* values, std::size_t count, const double (&x)[group],
                 std::size_t (&places)[group]) noexcept {
  const double *a = values, *b = values, *c = values, *d = values;
  std::size_t length = count;
  while (length > 1) {
    const std::size_t half = length / 2;
    a += half & -std::size_t{a[half - 1] < x[0]};
    b += half & -std::size_t{b[half - 1] < x[1]};
    c += half & -std::size_t{c[half - 1] < x[2]};
    d += half & -std::size_t{d[half - 1] < x[3]};
    length -= half;
  }
  const double* const last[group] = {a, b, c, d};
  for (int e = 0; e < group; ++e) places[e] = static_cast<std::size_t>(last[e] - values) + (*last[e] < x[e] ? 1 : 0);
}

// Makes room for `size` elements and keeps the first `used` ones; false, and nothing is lost, when there is no memory.
template <class T>
[[nodiscard]] bool grow(Work<T>& array, std::size_t used, std::size_t size) noexcept {
  Work<T> larger;
  if (!larger.allocate(size)) return false;
  std::copy(array.data(), array.data() + used, larger.data());
  array = std::move(larger);
  return true;
}

}  // namespace

bool QuantileSummary::start(double eps) noexcept {
  if (pending_.size() != 0) return true;
  eps_ = eps;
  const std::size_t size = pending_size(eps);
  return pending_.allocate(size + group) && reserve(size);
}

// floor(2 eps n), held to what a tuple can count: a lower cap remembers more than it has to.
std::uint32_t QuantileSummary::cap() const noexcept {
  return static_cast<std::uint32_t>(std::min(2 * eps_ * static_cast<double>(n_), 4294967295.0));
}

bool QuantileSummary::reserve(std::size_t count) noexcept {
  if (count <= values_.size()) return true;
  const auto common = values_.size() == 0 ? 0 : static_cast<std::size_t>(std::min(2.7 / eps_, 1e8));
  const std::size_t size = std::max(count + count / 8, common);
  return grow(values_, count_, size) && grow(weights_, count_, size);
}

// Counts x with the tuple of its value or else in its right neighbour. Place 0 is at or below the smallest value, count_
// above the largest: no neighbour takes a number there.
bool QuantileSummary::absorb(double x, std::size_t place, std::uint32_t room_below) noexcept {
  if (place == count_) return false;
  if (values_[place] == x) {
    ++weights_[place].equals;
    return true;
  }
  if (place == 0 || weights_[place].sum() >= room_below) return false;
  ++weights_[place].g;
  complete_ = false;
  return true;
}

template <class T>
bool QuantileSummary::take(const T* x, std::ptrdiff_t count) noexcept {
  std::uint32_t room_below = cap();
  for (std::ptrdiff_t i = 0; i < count; i += group) {
    const std::ptrdiff_t used = std::min(group, count - i);
    double numbers[group] = {};
    for (std::ptrdiff_t e = 0; e < used; ++e) numbers[e] = read(x + i + e);
    std::size_t places[group] = {};
    if (count_ > 0) find_places(values_.data(), count_, numbers, places);
    for (std::ptrdiff_t e = 0; e < used; ++e) {
      if (absorb(numbers[e], places[e], room_below)) {
        ++n_;
      } else if (numbers[e] == numbers[e]) {
        pending_[pending_count_++] = numbers[e];
      } else {
        ++nan_count_;
      }
    }
    if (pending_count_ + group > pending_.size()) {
      if (!flush()) return false;
      room_below = cap();
    }
  }
  return true;
}

template bool QuantileSummary::take<float>(const float*, std::ptrdiff_t) noexcept;
template bool QuantileSummary::take<double>(const double*, std::ptrdiff_t) noexcept;

bool QuantileSummary::flush() noexcept {
  if (pending_count_ == 0) return true;
  if (!reserve(count_ + pending_count_)) return false;
  sort_ascending(pending_.data(), static_cast<std::ptrdiff_t>(pending_count_));
  n_ += static_cast<std::int64_t>(pending_count_);
  insert_pending();
  compress();
  return true;
}

// Merges the sorted numbers into the tuples, from the far end of the memory so that no tuple is overwritten before it
// is read. A number's rank is uncertain by what its right neighbour's was before, less one. None equals an old tuple, or
// it would have been counted there.
void QuantileSummary::insert_pending() noexcept {
  double* const values = values_.data();
  Weight* const weights = weights_.data();
  const std::size_t before = count_, end = count_ + pending_count_;
  const std::uint32_t newest = std::max<std::uint32_t>(cap(), 1) - 1;
  std::size_t out = end, left = count_;
  std::uint32_t uncertain = 1;  // g + delta of the old tuple on the right; nothing is uncertain beyond the last
  while (pending_count_ > 0) {
    const double x = pending_[pending_count_ - 1];
    if (left > 0 && values[left - 1] > x) {
      values[--out] = values[--left];
      weights[out] = weights[left];
      uncertain = weights[left].sum();
      continue;
    }
    --pending_count_;
    if (out < end && values[out] == x) {
      ++weights[out].equals;
      continue;
    }
    const bool extreme = left == 0 || left == before;
    values[--out] = x;
    weights[out] = {1, uncertain - 1, extreme ? 0 : newest, 0};
  }
  std::copy(values + out, values + end, values + left);
  std::copy(weights + out, weights + end, weights + left);
  count_ = left + (end - out);
}

// Lets tuples leave, from the right, each with its descendants; the first and the last one stay.
void QuantileSummary::compress() noexcept {
  if (count_ < 3) return;
  double* const values = values_.data();
  Weight* const weights = weights_.data();
  const std::uint32_t c = cap();
  std::size_t kept = count_ - 1;  // the tuple that the next one may join
  int kept_band = band_of(weights[kept].born, c);
  for (std::size_t i = count_ - 2; i > 0;) {
    const int band = band_of(weights[i].born, c);
    if (band <= kept_band && weights[kept].sum() < c) {
      const std::uint32_t room = c - weights[kept].sum();
      std::uint64_t g = weights[i].g + weights[i].equals;
      std::size_t before = i - 1;
      for (; before > 0 && g <= room && band_of(weights[before].born, c) < band; --before)
        g += weights[before].g + weights[before].equals;
      if (g <= room) {
        weights[kept].g += static_cast<std::uint32_t>(g);
        complete_ = false;
        i = before;
        continue;
      }
    }
    --kept;
    values[kept] = values[i];
    weights[kept] = weights[i--];
    kept_band = band;
  }
  std::copy(values + kept, values + count_, values + 1);
  std::copy(weights + kept, weights + count_, weights + 1);
  count_ -= kept - 1;
}

double QuantileSummary::quantile(double order) const noexcept {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  const QuantilePlace place(order, n_ + nan_count_);
  if (complete_) {
    const auto value = [&](std::int64_t rank) {
      for (std::size_t i = 0; i < count_; ++i)
        if ((rank -= 1 + static_cast<std::int64_t>(weights_[i].equals)) < 0) return values_[i];
      return nan;
    };
    const auto all = static_cast<double>(n_ + nan_count_);
    if (eps_ * all >= 0.5) return value(place.fraction > 0.5 ? place.upper : place.lower);
    return place.blend(value(place.lower), value(place.upper));
  }
  if (place.h > static_cast<double>(n_ - 1)) return nan;
  // The tuple whose possible ranks, counted from 0 and with its equals, stray least from h.
  double best = std::numeric_limits<double>::infinity(), result = nan;
  std::int64_t rank = -1;
  for (std::size_t i = 0; i < count_; ++i) {
    const Weight& w = weights_[i];
    rank += w.g;
    const double high = static_cast<double>(rank) + w.delta;
    rank += static_cast<std::int64_t>(w.equals);
    const double stray = std::max({place.h - static_cast<double>(rank), high - place.h, 0.0});
    if (stray < best) {
      best = stray;
      result = values_[i];
    }
  }
  return result;
}

}  // namespace orin::summary_stats

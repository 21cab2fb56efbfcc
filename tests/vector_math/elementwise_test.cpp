// elementwise_test: what every elementwise function must satisfy, over the whole catalog.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <algorithm>
#include <random>

#include "tests/support/guard_pages.h"
#include "tests/vector_math/reference_cases.h"
#include "vector_math/catalog.h"
#include "vector_math/digest.h"

namespace {

using namespace orin::vector_math;

std::vector<KorErrorContext> reports;
int32_t ORIN_CALL note(KorErrorContext* context) {
  reports.push_back(*context);
  return 0;
}
int32_t ORIN_CALL note_as_handled(KorErrorContext* context) {
  reports.push_back(*context);
  context->r1 = 5.0;
  return 1;
}
int32_t ORIN_CALL replace_by_five(KorErrorContext* context) {
  reports.push_back(*context);
  context->r1 = 5.0;
  return 0;
}

template <class T>
class Elementwise : public testing::Test {
 protected:
  void SetUp() override {
    _korSetErrorCallBack(nullptr);
    _korSetMode(KOR_HA | KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF);
    _korClearErrStatus();
    reports.clear();
  }
  void TearDown() override {
    _korSetErrorCallBack(nullptr);
    _korSetInterfInputVectorPointer(nullptr);
    _korSetMode(KOR_MODE_DEFAULT | KOR_FTZDAZ_OFF);
  }

  using Function = RealFunction<T>;
  static bool has_scalar(const Function& function) { return function.shape == Function::Shape::scalar; }

  // body(function, grade) for every row and grade.
  template <class Body>
  void for_each_kernel(const Body& body) {
    const auto functions = real_functions<T>();
    ASSERT_FALSE(functions.empty());
    for (const auto& function : functions) {
      for (int grade = 0; grade < grades; ++grade) {
        SCOPED_TRACE(function.label() + " " + grade_names[grade]);
        body(function, grade);
      }
    }
  }

  // Argument vectors of every kind of element: specials, the case files', ordinary ones. A scalar is one of the latter.
  struct Mixture {
    std::vector<T> a, b;
    std::vector<BitsOf<T>> expected;  // the results, each computed alone

    // Without the elements whose operation raises an exception that no status tells of, as the sum of two infinities of
    // unlike sign.
    void keep_silent_ones(const Function& function) {
      if (!function.promise->reports_nothing) return;
      std::size_t kept = 0;
      for (std::size_t i = 0; i < a.size(); ++i) {
        const bool finite = std::isfinite(a[i]) && std::isfinite(b[i]), number = !std::isnan(a[i]) && !std::isnan(b[i]);
        const T result = std::bit_cast<T>(expected[i]);
        if ((number && std::isnan(result)) || (finite && !std::isfinite(result))) continue;
        a[kept] = a[i];
        b[kept] = b[i];
        expected[kept++] = expected[i];
      }
      ASSERT_GT(kept, a.size() / 2);
      a.resize(kept);
      b.resize(kept);
      expected.resize(kept);
    }
  };
  static Mixture mixture(const Function& function, int grade) {
    using Limits = std::numeric_limits<T>;
    std::mt19937 random(20240817);
    const auto within = [&](double low, double high) {
      return static_cast<T>(low + (high - low) * static_cast<double>(random()) * 0x1p-32);
    };
    const auto second = [&] { return within(function.promise->second_low, function.promise->second_high); };
    std::vector<std::pair<T, T>> points;
    for (T x : {T(0), -T(0), Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(), Limits::denorm_min(),
                -Limits::min(), Limits::max(), Limits::lowest()})
      points.emplace_back(x, second());
    const auto cases = read_cases(function);
    for (std::size_t k = 0; k < cases.size(); k += 7) points.emplace_back(cases[k].a, cases[k].b);
    for (int k = 0; k < 400; ++k) {
      const T a = within(static_cast<double>(function.low()), static_cast<double>(function.high()));
      points.emplace_back(a, second());
    }
    std::shuffle(points.begin(), points.end(), random);
    const T scalar = second();
    Mixture out;
    for (auto [a, b] : points) {
      out.a.push_back(a);
      out.b.push_back(has_scalar(function) ? scalar : b);
      out.expected.push_back(bits_of(function.call(grade, a, out.b.back())));
    }
    return out;
  }
};

using Elements = testing::Types<float, double>;
TYPED_TEST_SUITE(Elementwise, Elements);

TYPED_TEST(Elementwise, CasesStayWithinTheBound) {
  using T = TypeParam;
  this->for_each_kernel([&](const RealFunction<T>& function, int grade) {
    const auto cases = read_cases(function);
    ASSERT_GT(cases.size(), 500u) << "case file missing or short";
    double worst = 0;
    for (const auto& line : cases) {
      _korClearErrStatus();
      const T result = function.call(grade, line.a, line.b);
      EXPECT_EQ(_korGetErrStatus(), line.status) << std::hexfloat << line.a << ", " << line.b;
      const double bound = bound_in_ulp(function, Grade(grade), line);
      const double error = line.error(result);
      worst = std::max(worst, error);
      EXPECT_LE(error, bound) << std::hexfloat << line.a << ", " << line.b << " -> " << result << ", exact "
                              << line.rounded;
    }
    this->RecordProperty(function.label() + grade_names[grade], std::to_string(worst));
  });
}

// An element's bits depend on its arguments alone; nothing outside the vectors is touched; either argument vector may
// be the result.
TYPED_TEST(Elementwise, LanesDoNotTalk) {
  using T = TypeParam;
  this->for_each_kernel([&](const RealFunction<T>& function, int grade) {
    const auto values = this->mixture(function, grade);
    std::size_t next = 0;
    for (int n = 0; n <= 40; ++n) {
      const auto count = static_cast<std::size_t>(n);
      for (auto side : {GuardedArray<T>::at_end, GuardedArray<T>::at_start}) {
        for (std::size_t offset = 0; offset < 16; offset += 4) {
          next = (next + 13) % (values.a.size() - 40);
          GuardedArray<T> a(count, side, offset), b(count, side, (offset + 8) % 16),
              r(count, side, (offset * 3 + 4) % 16);
          const auto fill = [&] {
            std::memcpy(a.data(), values.a.data() + next, count * sizeof(T));
            std::memcpy(b.data(), values.b.data() + next, count * sizeof(T));
          };
          const auto as_expected = [&](const T* results) {
            return std::memcmp(results, values.expected.data() + next, count * sizeof(T)) == 0;
          };
          // A call without elements reads no scalar either: any one will do.
          const T* second = n > 0 ? b.data() : values.b.data();
          fill();
          function.call(grade, n, a.data(), second, r.data());
          EXPECT_TRUE(as_expected(r.data())) << n;
          EXPECT_EQ(std::memcmp(a.data(), values.a.data() + next, count * sizeof(T)), 0) << "argument changed";
          EXPECT_EQ(std::memcmp(b.data(), values.b.data() + next, count * sizeof(T)), 0) << "argument changed";
          function.call(grade, n, a.data(), second, a.data());
          EXPECT_TRUE(as_expected(a.data())) << n << ", in place";
          if (function.shape == RealFunction<T>::Shape::binary) {
            fill();
            function.call(grade, n, a.data(), second, b.data());
            EXPECT_TRUE(as_expected(b.data())) << n << ", in the second argument's place";
          }
          EXPECT_TRUE(a.surroundings_intact() && b.surroundings_intact() && r.surroundings_intact());
        }
      }
    }
  });
}

// Any rounding mode, flushing, unmasked exceptions: same bits, no trap, and the control word is as before.
TYPED_TEST(Elementwise, TheCallersFloatingPointStateIsItsOwn) {
  using T = TypeParam;
  constexpr unsigned round_up = 0x4000, round_down = 0x2000, flush = 0x8040, control = 0xFFC0;
  constexpr unsigned all_masked = 0x1F80, inexact_denormal_and_underflow_masked = 0x1900;
  this->for_each_kernel([&](const RealFunction<T>& function, int grade) {
    auto values = this->mixture(function, grade);
    values.keep_silent_ones(function);
    std::vector<T> got(values.a.size());
    for (unsigned state : {all_masked, all_masked | round_up, all_masked | round_down, all_masked | flush,
                           inexact_denormal_and_underflow_masked, all_masked | 0x6000 | flush}) {
      const unsigned saved = _mm_getcsr();
      _mm_setcsr(state);
      function.call(grade, static_cast<int32_t>(got.size()), values.a.data(), values.b.data(), got.data());
      const unsigned after = _mm_getcsr();
      _mm_setcsr(saved);
      EXPECT_EQ(after & control, state & control);
      EXPECT_EQ(std::memcmp(got.data(), values.expected.data(), got.size() * sizeof(T)), 0) << std::hex << state;
    }
  });
}

TYPED_TEST(Elementwise, FlushToZeroIsTheModesAlone) {
  using T = TypeParam;
  this->for_each_kernel([&](const RealFunction<T>& function, int grade) {
    for (const auto& line : read_cases(function)) {
      if (line.rounded == 0 || !(std::fabs(line.rounded) < std::numeric_limits<T>::min())) continue;
      if (std::fabs(line.rounded) == std::numeric_limits<T>::denorm_min()) continue;  // coarse grades may give 0
      const T kept = function.call(grade, line.a, line.b);
      EXPECT_NE(kept, T(0)) << line.a;
      if (std::fabs(kept) >= std::numeric_limits<T>::min()) continue;  // and a normal number next to the least
      _korSetMode(KOR_FTZDAZ_ON);
      const T flushed = function.call(grade, line.a, line.b);
      // A subnormal argument is a zero too: what is left may be a normal number.
      const bool of_normals = std::fpclassify(line.a) != FP_SUBNORMAL && std::fpclassify(line.b) != FP_SUBNORMAL;
      EXPECT_TRUE(flushed == 0 || (!of_normals && std::isnormal(flushed))) << line.a << ", " << line.b;
      _korSetMode(KOR_FTZDAZ_OFF);
    }
  });
}

// In the flushing mode a subnormal argument is a zero of its sign: same bits, same status.
TYPED_TEST(Elementwise, SubnormalArgumentsCountAsZero) {
  using T = TypeParam;
  const T subnormal = std::numeric_limits<T>::min() / 3;
  _korSetMode(KOR_HA | KOR_ERRMODE_IGNORE | KOR_FTZDAZ_ON);
  this->for_each_kernel([&](const auto& function, int grade) {
    const auto expect_same = [&](T x, T y, T flushed_x, T flushed_y) {
      _korClearErrStatus();
      const T result = function.call(grade, x, y);
      const std::int32_t status = _korGetErrStatus();
      _korClearErrStatus();
      EXPECT_EQ(bits_of(result), bits_of(function.call(grade, flushed_x, flushed_y))) << x << ' ' << y;
      EXPECT_EQ(status, _korGetErrStatus()) << x << ' ' << y;
    };
    for (const T sign : {T(1), T(-1)}) {
      for (const T other : {sign * subnormal, sign * T(0), T(2), T(-3)}) {
        const T flushed = std::fabs(other) < 1 ? sign * T(0) : other;
        expect_same(sign * subnormal, other, sign * T(0), flushed);
        if (!this->has_scalar(function)) expect_same(other, sign * subnormal, flushed, sign * T(0));
      }
    }
  });
}

// The report names element, argument and result, in place too, and the callback's answer decides about the result.
TYPED_TEST(Elementwise, ReportsTellWhatHappened) {
  using T = TypeParam;
  this->for_each_kernel([&](const RealFunction<T>& function, int grade) {
    const ReferenceCase<T>* special = nullptr;
    const auto cases = read_cases(function);
    for (const auto& line : cases)
      if (line.status != 0 && !std::isnan(line.rounded)) special = &line;
    if (special == nullptr) return;
    const T ordinary = (function.low() + function.high()) / 3;
    for (bool in_place : {false, true}) {
      for (int n : {3, 9, 16}) {
        for (auto* callback : {&note, &note_as_handled, &replace_by_five}) {
          const auto count = static_cast<std::size_t>(n);
          std::vector<T> a(count + 2, ordinary), b(count, special->b), other(count);
          T* vector = a.data() + 2;
          T* result = in_place ? vector : other.data();
          const int odd = n - 2;
          vector[odd] = special->a;
          const T plain = function.call(grade, special->a, special->b);
          reports.clear();
          _korSetMode(KOR_ERRMODE_CALLBACK);
          _korSetErrorCallBack(callback);
          _korSetInterfInputVectorPointer(a.data());
          function.call(grade, n, vector, b.data(), result);
          _korSetInterfInputVectorPointer(nullptr);
          _korSetErrorCallBack(nullptr);
          const auto report =
              std::find_if(reports.begin(), reports.end(), [&](const auto& each) { return each.index == odd + 2; });
          ASSERT_NE(report, reports.end()) << "the index counts from the whole vector's start";
          EXPECT_EQ(report->status, special->status);
          EXPECT_EQ(report->a1, special->a) << "in place: " << in_place;
          EXPECT_EQ(report->a2, function.shape == RealFunction<T>::Shape::binary ? special->b : special->a);
          if (function.promise->result == 1) {
            EXPECT_EQ(report->r1, plain);
            if (function.shape != RealFunction<T>::Shape::two_results) {
              EXPECT_EQ(report->r2, report->r1);
            }
            EXPECT_EQ(result[odd], callback == &replace_by_five ? T(5) : plain);
          }
          EXPECT_STREQ(report->funcName, function.name);
        }
      }
    }
  });
}

TYPED_TEST(Elementwise, BadCallsAreReportedAndTouchNothing) {
  using T = TypeParam;
  this->for_each_kernel([&](const RealFunction<T>& function, int grade) {
    const T whole[3] = {0, 1, 1};
    const T* const a = whole + 1;
    T r[2] = {7, 7};
    struct Call {
      int32_t n;
      const T *a, *b;
      T* r;
      int status, index;
    };
    std::vector<Call> calls = {{0, a, a, r, -1, 0},
                               {-3, a, a, r, -1, -3},
                               {-3, nullptr, a, nullptr, -1, -3},
                               {2, nullptr, a, r, -2, 0},
                               {2, a, a, nullptr, -2, 0},
                               {INT32_MIN, a, a, r, -1, INT32_MIN},
                               {INT32_MAX, a, a, nullptr, -2, 0}};
    if (function.shape == RealFunction<T>::Shape::binary) calls.push_back({2, a, nullptr, r, -2, 0});
    for (const auto& call : calls) {
      reports.clear();
      _korSetMode(KOR_ERRMODE_CALLBACK);
      _korSetErrorCallBack(&note);
      _korSetInterfInputVectorPointer(whole);
      function.call(grade, call.n, call.a, call.b, call.r);
      _korSetInterfInputVectorPointer(nullptr);
      _korSetErrorCallBack(nullptr);
      ASSERT_EQ(reports.size(), 1u);
      EXPECT_EQ(reports[0].status, call.status);
      EXPECT_EQ(reports[0].index, call.index);
      EXPECT_STREQ(reports[0].funcName, function.name);
      EXPECT_EQ(_korGetErrStatus(), call.status);
    }
    EXPECT_TRUE(r[0] == 7 && r[1] == 7);
  });
}

// One digest per function and grade, the same on every target and compiler.
TYPED_TEST(Elementwise, BitsAreTheStoredOnes) {
  using T = TypeParam;
  const auto stored = read_digests(ORIN_TEST_DATA "/vector_math/digests.txt");
  this->for_each_kernel([&](const RealFunction<T>& function, int grade) {
    const auto line = stored.find(function.label() + " " + grade_names[grade]);
    ASSERT_NE(line, stored.end()) << "no digest stored";
    EXPECT_EQ(digest(function, grade), line->second);
  });
}

}  // namespace

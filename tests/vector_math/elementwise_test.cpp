// elementwise_test: what every elementwise function must satisfy, over the whole catalog.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <algorithm>
#include <map>
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

  // body(function, grade) for every row and grade.
  template <class Body>
  void for_each_kernel(const Body& body) {
    const auto functions = unary_functions<T>();
    ASSERT_FALSE(functions.empty());
    for (const auto& function : functions) {
      for (int grade = 0; grade < grades; ++grade) {
        SCOPED_TRACE(std::string(function.name) + " " + grade_names[grade]);
        body(function, grade);
      }
    }
  }

  static T alone(const UnaryFunction<T>& function, int grade, T x) {
    T y;
    function.kernels[grade](1, &x, &y);
    return y;
  }

  // Arguments of every kind: specials, the case files', ordinary ones.
  static std::vector<T> mixture(const UnaryFunction<T>& function) {
    using Limits = std::numeric_limits<T>;
    std::vector<T> values = {T(0),
                             -T(0),
                             Limits::infinity(),
                             -Limits::infinity(),
                             Limits::quiet_NaN(),
                             Limits::denorm_min(),
                             -Limits::min(),
                             Limits::max(),
                             Limits::lowest()};
    const auto cases = read_cases<T>(function.name);
    for (std::size_t k = 0; k < cases.size(); k += 7) values.push_back(cases[k].argument);
    std::mt19937 random(20240817);
    for (int k = 0; k < 400; ++k)
      values.push_back(function.low() +
                       static_cast<T>(static_cast<double>(random()) * 0x1p-32) * (function.high() - function.low()));
    std::shuffle(values.begin(), values.end(), random);
    return values;
  }
};

// LA and EP promise a relative error: in ulp that is up to 2^52 (2^23) times the significand, and one spacing more on
// subnormal results. Infinities and NaN have no error.
template <class T>
double bound_in_ulp(const UnaryFunction<T>& function, Grade grade, const ReferenceCase<T>& line) {
  if (!std::isfinite(line.rounded)) return 0;
  if (grade == Grade::ha) return function.ha_ulp();
  const double relative = function.relative_bound(grade);
  const double magnitude = std::fabs(static_cast<double>(line.rounded));
  if (magnitude < static_cast<double>(std::numeric_limits<T>::min()))
    return 1 + relative * static_cast<double>(ordinal(static_cast<T>(magnitude)));
  return relative * std::ldexp(magnitude, std::numeric_limits<T>::digits - 1 - std::ilogb(magnitude));
}

using Elements = testing::Types<float, double>;
TYPED_TEST_SUITE(Elementwise, Elements);

TYPED_TEST(Elementwise, CasesStayWithinTheBound) {
  using T = TypeParam;
  std::map<std::string, std::vector<ReferenceCase<T>>> files;
  this->for_each_kernel([&](const UnaryFunction<T>& function, int grade) {
    auto& cases = files[function.name];
    if (cases.empty()) cases = read_cases<T>(function.name);
    ASSERT_GT(cases.size(), 500u) << "case file missing or short";
    double worst = 0;
    for (const auto& line : cases) {
      _korClearErrStatus();
      const T result = this->alone(function, grade, line.argument);
      EXPECT_EQ(_korGetErrStatus(), line.status) << std::hexfloat << line.argument;
      const double bound = bound_in_ulp(function, Grade(grade), line);
      const double error = line.error(result);
      worst = std::max(worst, error);
      EXPECT_LE(error, bound) << std::hexfloat << "argument " << line.argument << " result " << result << " exact "
                              << line.rounded;
    }
    this->RecordProperty(std::string(function.name) + grade_names[grade], std::to_string(worst));
  });
}

// An element's bits depend on its argument alone; nothing outside the vectors is touched.
TYPED_TEST(Elementwise, LanesDoNotTalk) {
  using T = TypeParam;
  this->for_each_kernel([&](const UnaryFunction<T>& function, int grade) {
    const std::vector<T> values = this->mixture(function);
    std::vector<BitsOf<T>> expected;
    for (T x : values) expected.push_back(bits_of(this->alone(function, grade, x)));
    std::size_t next = 0;
    for (int n = 0; n <= 40; ++n) {
      const auto count = static_cast<std::size_t>(n);
      for (auto side : {GuardedArray<T>::at_end, GuardedArray<T>::at_start}) {
        for (std::size_t offset = 0; offset < 16; offset += 4) {
          next = (next + 13) % (values.size() - 40);
          GuardedArray<T> a(count, side, offset), r(count, side, (offset * 3 + 4) % 16);
          std::copy_n(values.begin() + static_cast<std::ptrdiff_t>(next), n, a.data());
          const auto matches = [&](const T* results) {
            for (std::size_t i = 0; i < count; ++i) {
              BitsOf<T> got;
              std::memcpy(&got, results + i, sizeof got);
              if (got != expected[next + i]) return testing::AssertionFailure() << "element " << i << " of " << n;
            }
            return testing::AssertionSuccess();
          };
          function.kernels[grade](n, a.data(), r.data());
          EXPECT_TRUE(matches(r.data()));
          EXPECT_EQ(std::memcmp(a.data(), values.data() + next, count * sizeof(T)), 0) << "argument changed";
          function.kernels[grade](n, a.data(), a.data());
          EXPECT_TRUE(matches(a.data())) << "in place";
          EXPECT_TRUE(a.surroundings_intact() && r.surroundings_intact());
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
  this->for_each_kernel([&](const UnaryFunction<T>& function, int grade) {
    const std::vector<T> values = this->mixture(function);
    const auto n = static_cast<int32_t>(values.size());
    std::vector<T> expected(values.size()), got(values.size());
    function.kernels[grade](n, values.data(), expected.data());
    for (unsigned state : {all_masked, all_masked | round_up, all_masked | round_down, all_masked | flush,
                           inexact_denormal_and_underflow_masked, all_masked | 0x6000 | flush}) {
      const unsigned saved = _mm_getcsr();
      _mm_setcsr(state);
      function.kernels[grade](n, values.data(), got.data());
      const unsigned after = _mm_getcsr();
      _mm_setcsr(saved);
      EXPECT_EQ(after & control, state & control);
      EXPECT_EQ(std::memcmp(got.data(), expected.data(), expected.size() * sizeof(T)), 0) << std::hex << state;
    }
  });
}

TYPED_TEST(Elementwise, FlushToZeroIsTheModesAlone) {
  using T = TypeParam;
  this->for_each_kernel([&](const UnaryFunction<T>& function, int grade) {
    for (const auto& line : read_cases<T>(function.name)) {
      if (line.rounded == 0 || !(std::fabs(line.rounded) < std::numeric_limits<T>::min())) continue;
      EXPECT_NE(this->alone(function, grade, line.argument), T(0)) << line.argument;
      _korSetMode(KOR_FTZDAZ_ON);
      EXPECT_EQ(this->alone(function, grade, line.argument), T(0)) << line.argument;
      _korSetMode(KOR_FTZDAZ_OFF);
    }
  });
}

// The report names element, argument and result, in place too, and the callback's answer decides about the result.
TYPED_TEST(Elementwise, ReportsTellWhatHappened) {
  using T = TypeParam;
  this->for_each_kernel([&](const UnaryFunction<T>& function, int grade) {
    const ReferenceCase<T>* special = nullptr;
    const auto cases = read_cases<T>(function.name);
    for (const auto& line : cases)
      if (line.status != 0) special = &line;
    if (special == nullptr) return;
    for (bool in_place : {false, true}) {
      for (int n : {3, 9, 16}) {
        for (auto* callback : {&note, &note_as_handled, &replace_by_five}) {
          std::vector<T> a(static_cast<std::size_t>(n) + 2, function.low() / 2), other(a.size());
          T* vector = a.data() + 2;
          T* result = in_place ? vector : other.data();
          const int odd = n - 2;
          vector[odd] = special->argument;
          const T plain = this->alone(function, grade, special->argument);
          reports.clear();
          _korSetMode(KOR_ERRMODE_CALLBACK);
          _korSetErrorCallBack(callback);
          _korSetInterfInputVectorPointer(a.data());
          function.kernels[grade](n, vector, result);
          _korSetInterfInputVectorPointer(nullptr);
          _korSetErrorCallBack(nullptr);
          ASSERT_EQ(reports.size(), 1u);
          const KorErrorContext& report = reports[0];
          EXPECT_EQ(report.status, special->status);
          EXPECT_EQ(report.index, odd + 2) << "the index counts from the whole vector's start";
          EXPECT_EQ(report.a1, special->argument) << "in place: " << in_place;
          EXPECT_EQ(report.a2, report.a1);
          EXPECT_EQ(report.r1, plain);
          EXPECT_EQ(report.r2, report.r1);
          EXPECT_STREQ(report.funcName, function.name);
          EXPECT_EQ(result[odd], callback == &replace_by_five ? T(5) : plain);
          EXPECT_EQ(bits_of(result[odd - 1]), bits_of(this->alone(function, grade, function.low() / 2)));
        }
      }
    }
  });
}

TYPED_TEST(Elementwise, BadCallsAreReportedAndTouchNothing) {
  using T = TypeParam;
  this->for_each_kernel([&](const UnaryFunction<T>& function, int grade) {
    const T whole[3] = {0, 1, 1};
    const T* const a = whole + 1;
    T r[2] = {7, 7};
    struct {
      int32_t n;
      const T* a;
      T* r;
      int status, index;
    } const calls[] = {{0, a, r, -1, 0},
                       {-3, a, r, -1, -3},
                       {-3, nullptr, nullptr, -1, -3},
                       {2, nullptr, r, -2, 0},
                       {2, a, nullptr, -2, 0},
                       {INT32_MIN, a, r, -1, INT32_MIN},
                       {INT32_MAX, a, nullptr, -2, 0}};
    for (const auto& call : calls) {
      reports.clear();
      _korSetMode(KOR_ERRMODE_CALLBACK);
      _korSetErrorCallBack(&note);
      _korSetInterfInputVectorPointer(whole);
      function.kernels[grade](call.n, call.a, call.r);
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
  this->for_each_kernel([&](const UnaryFunction<T>& function, int grade) {
    const auto line = stored.find(std::string(function.name) + " " + grade_names[grade]);
    ASSERT_NE(line, stored.end()) << "no digest stored";
    EXPECT_EQ(digest(function.kernels[grade]), line->second);
  });
}

}  // namespace

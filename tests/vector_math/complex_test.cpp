// complex_test: what every complex function must satisfy, over the whole catalog; reference cases as complex_scan writes
// them.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <random>

#include "tests/support/guard_pages.h"
#include "tests/vector_math/reference_cases.h"
#include "vector_math/complex_catalog.h"
#include "vector_math/digest.h"

namespace {

using namespace orin::vector_math;

std::vector<KorErrorContext> reports;
int32_t ORIN_CALL note(KorErrorContext* context) {
  reports.push_back(*context);
  return 0;
}
int32_t ORIN_CALL replace_by_five_and_six(KorErrorContext* context) {
  reports.push_back(*context);
  context->r1 = 5;
  context->r1Im = 6;
  return 0;
}

template <class Z>
struct ComplexCase {
  using T = decltype(Z::re);
  Z a, b;
  ReferenceCase<T> re, im;  // of these only result, excess and spacing

  int status() const { return re.status; }
  bool is_finite() const { return std::isfinite(re.rounded) && std::isfinite(im.rounded); }
  // |result - exact| in ulp of |exact|.
  double error(Z result) const {
    // In ulp of a tiny part the distance may exceed every number.
    const auto distance = [](const auto& part, T got) -> long double {
      if (!std::isfinite(got) || !std::isfinite(part.rounded)) return part.error(got);
      return static_cast<long double>(got) - part.rounded - static_cast<long double>(part.excess) * part.spacing();
    };
    const long double d_re = distance(re, result.re), d_im = distance(im, result.im);
    const long double modulus = std::hypot(static_cast<long double>(re.rounded), static_cast<long double>(im.rounded));
    const int exponent = modulus == 0 ? std::numeric_limits<T>::min_exponent - 1 : std::ilogb(modulus);
    const int least = std::numeric_limits<T>::min_exponent - 1;
    const long double spacing = std::ldexp(1.0L, std::max(exponent, least) + 1 - std::numeric_limits<T>::digits);
    return static_cast<double>(std::hypot(d_re, d_im) / spacing);
  }
};

template <class T, class Z>
void read_complex_cases(const ComplexFunction<T>& function, const char* kind, std::vector<ComplexCase<Z>>& cases) {
  const std::string path = std::string(ORIN_TEST_DATA) + "/vector_math/" + function.name + kind;
  std::FILE* file = std::fopen(path.c_str(), "r");
  if (file == nullptr) return;
  char line[300];
  while (std::fgets(line, sizeof line, file) != nullptr) {
    if (line[0] == '#') continue;
    const char* at = line;
    int used = 0;
    bool complete = true;
    const auto part = [&]() -> T {
      std::uint64_t bits = 0;
      complete &= std::sscanf(at, "%" SCNx64 "%n", &bits, &used) == 1;
      at += used;
      return std::bit_cast<T>(static_cast<BitsOf<T>>(bits));
    };
    const auto number = [&]() -> Z {
      const T re = part();
      return {re, part()};
    };
    const auto excess = [&] {
      char sign = '+';
      unsigned magnitude = 0;
      complete &= std::sscanf(at, " %c%x%n", &sign, &magnitude, &used) == 2;
      at += used;
      return (sign == '-' ? -1 : 1) * (magnitude / 4096.0);
    };
    const Z a = number(), b = function.has_second() ? number() : Z{0, 0}, rounded = number();
    const double excess_re = excess(), excess_im = excess();
    const int status = std::atoi(at);
    if (complete) cases.push_back({a, b, {0, 0, rounded.re, excess_re, status}, {0, 0, rounded.im, excess_im, status}});
  }
  std::fclose(file);
}
// The lines of <name>.cases, and of <name>.hard where that exists.
template <class T>
auto read_complex_cases(const ComplexFunction<T>& function) {
  std::vector<ComplexCase<typename ComplexFunction<T>::Z>> cases;
  for (const char* kind : {".cases", ".hard"}) read_complex_cases(function, kind, cases);
  return cases;
}

template <class T>
class ComplexElementwise : public testing::Test {
 protected:
  using Function = ComplexFunction<T>;
  using Z = typename Function::Z;

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

  template <class Body>
  void for_each_kernel(const Body& body) {
    const auto functions = complex_functions<T>();
    ASSERT_FALSE(functions.empty());
    for (const auto& function : functions) {
      for (int grade = 0; grade < grades; ++grade) {
        SCOPED_TRACE(function.label() + " " + grade_names[grade]);
        body(function, grade);
      }
    }
  }

  // Argument vectors as they lie in memory, of every kind of element, and the results, each computed alone.
  struct Mixture {
    std::vector<unsigned char> a, b, expected;
    std::size_t count = 0;

    const unsigned char* element_of_a(const Function& function, std::size_t i) const {
      return a.data() + i * function.argument_size();
    }
  };
  static Mixture mixture(const Function& function, int grade, bool with_silent_exceptions = true) {
    using Limits = std::numeric_limits<T>;
    std::mt19937 random(20240817);
    const auto usual = [&] {
      return static_cast<T>(function.promise->usual * (static_cast<double>(random()) * 0x1p-31 - 1));
    };
    std::vector<std::pair<Z, Z>> points;
    const T odd[] = {T(0), -T(0),          Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),
                     T(1), -Limits::min(), Limits::max(),      Limits::lowest(),    Limits::denorm_min()};
    const Z scalar{usual(), usual()};
    const auto second = [&](Z b) { return function.shape == Function::Shape::scalar ? scalar : b; };
    for (T re : odd)
      for (T im : odd) points.push_back({{re, im}, second({odd[random() % 10], odd[random() % 10]})});
    const auto cases = read_complex_cases(function);
    for (std::size_t k = 0; k < cases.size(); k += 7) points.push_back({cases[k].a, second(cases[k].b)});
    for (int k = 0; k < 400; ++k) points.push_back({{usual(), usual()}, second({usual(), usual()})});
    std::shuffle(points.begin(), points.end(), random);
    Mixture out;
    const auto append = [](std::vector<unsigned char>& to, const void* from, std::size_t bytes) {
      const auto* first = static_cast<const unsigned char*>(from);
      to.insert(to.end(), first, first + bytes);
    };
    for (const auto& [a, b] : points) {
      _korClearErrStatus();
      const Z r = function.call(grade, a, b);
      const bool odd_result = !std::isfinite(r.re) || !std::isfinite(r.im);
      if (!with_silent_exceptions && odd_result && _korGetErrStatus() == KOR_STATUS_OK) continue;
      append(out.a, &a, function.argument_size());
      append(out.b, &b, sizeof b);
      append(out.expected, &r, function.result_size());
      ++out.count;
    }
    return out;
  }
};

using Parts = testing::Types<float, double>;
TYPED_TEST_SUITE(ComplexElementwise, Parts);

TYPED_TEST(ComplexElementwise, CasesStayWithinTheBound) {
  this->for_each_kernel([&](const auto& function, int grade) {
    const auto cases = read_complex_cases(function);
    ASSERT_GT(cases.size(), 300u) << "case file missing or short";
    const double bound = function.bound(Grade(grade));
    const bool by_part = Grade(grade) == Grade::ha && function.promise->measure == Measure::by_part;
    for (const auto& line : cases) {
      _korClearErrStatus();
      const auto result = function.call(grade, line.a, line.b);
      EXPECT_EQ(_korGetErrStatus(), line.status()) << std::hexfloat << line.a.re << ' ' << line.a.im;
      if (line.is_finite()) {
        EXPECT_LE(line.error(result), bound) << std::hexfloat << line.a.re << ' ' << line.a.im << ", " << line.b.re
                                             << ' ' << line.b.im << " -> " << result.re << ' ' << result.im;
      }
      if (by_part) {
        EXPECT_LE(line.re.error(result.re), bound) << std::hexfloat << line.a.re << ' ' << line.a.im;
        EXPECT_LE(line.im.error(result.im), bound) << std::hexfloat << line.a.re << ' ' << line.a.im;
      }
    }
  });
}

// An element's bits depend on its arguments alone; nothing outside the vectors is touched; any argument vector may be
// the result, also where one of the two is real.
TYPED_TEST(ComplexElementwise, LanesDoNotTalk) {
  using Array = GuardedArray<unsigned char>;
  this->for_each_kernel([&](const auto& function, int grade) {
    using Row = std::remove_cvref_t<decltype(function)>;
    const auto values = this->mixture(function, grade);
    const std::size_t in = function.argument_size(), out = function.result_size();
    std::size_t next = 0;
    for (int n = 0; n <= 40; ++n) {
      const auto count = static_cast<std::size_t>(n);
      for (auto side : {Array::at_end, Array::at_start}) {
        for (std::size_t offset = 0; offset < 16; offset += 4) {
          next = (next + 13) % (values.count - 40);
          const unsigned char* const expected = values.expected.data() + next * out;
          Array a(count * in, side, offset), b(count * sizeof(typename Row::Z), side, (offset + 8) % 16),
              r(count * out, side, (offset * 3 + 4) % 16), wide(count * std::max(in, out), side, offset);
          std::memcpy(a.data(), values.element_of_a(function, next), a.size());
          std::memcpy(b.data(), values.b.data() + next * sizeof(typename Row::Z), b.size());
          std::memcpy(wide.data(), a.data(), a.size());
          const void* second = n > 0 ? b.data() : values.b.data();
          function.call(grade, n, a.data(), second, r.data());
          EXPECT_EQ(std::memcmp(r.data(), expected, r.size()), 0) << n;
          EXPECT_EQ(std::memcmp(a.data(), values.element_of_a(function, next), a.size()), 0) << "argument changed";
          function.call(grade, n, wide.data(), second, wide.data());
          EXPECT_EQ(std::memcmp(wide.data(), expected, r.size()), 0) << n << ", in place";
          if (function.shape == Row::Shape::binary) {
            function.call(grade, n, a.data(), second, b.data());
            EXPECT_EQ(std::memcmp(b.data(), expected, r.size()), 0) << n << ", in the second argument's place";
          }
          EXPECT_TRUE(a.surroundings_intact() && b.surroundings_intact() && r.surroundings_intact() &&
                      wide.surroundings_intact());
        }
      }
    }
  });
}

// Any rounding mode, flushing, unmasked exceptions: same bits, no trap, and the control word is as before.
TYPED_TEST(ComplexElementwise, TheCallersFloatingPointStateIsItsOwn) {
  constexpr unsigned flush = 0x8040, control = 0xFFC0, all_masked = 0x1F80, invalid_zero_overflow_unmasked = 0x1900;
  this->for_each_kernel([&](const auto& function, int grade) {
    for (unsigned state : {all_masked, all_masked | 0x4000, all_masked | 0x2000 | flush, invalid_zero_overflow_unmasked,
                           all_masked | 0x6000 | flush}) {
      const auto values = this->mixture(function, grade, state != invalid_zero_overflow_unmasked);
      ASSERT_GT(values.count, 300u);
      std::vector<unsigned char> got(values.expected.size());
      const unsigned saved = _mm_getcsr();
      _mm_setcsr(state);
      function.call(grade, static_cast<int32_t>(values.count), values.a.data(), values.b.data(), got.data());
      const unsigned after = _mm_getcsr();
      _mm_setcsr(saved);
      EXPECT_EQ(after & control, state & control);
      EXPECT_EQ(got, values.expected) << std::hex << state;
    }
  });
}

// In the flushing mode a subnormal part is a zero of its sign: same bits, same status.
TYPED_TEST(ComplexElementwise, SubnormalPartsCountAsZero) {
  using T = TypeParam;
  using Element = typename TestFixture::Z;
  const T subnormal = std::numeric_limits<T>::min() / 3;
  const T parts[] = {subnormal, -subnormal, 0, -T(0), 2, -3};
  const auto flushed = [](T x) { return std::fabs(x) < 1 ? std::copysign(T(0), x) : x; };
  _korSetMode(KOR_HA | KOR_ERRMODE_IGNORE | KOR_FTZDAZ_ON);
  this->for_each_kernel([&](const auto& function, int grade) {
    for (T re : parts) {
      for (T im : parts) {
        for (const auto& [a, b] :
             {std::pair<Element, Element>{{re, im}, {2, -3}}, {{2, -3}, {re, im}}, {{re, im}, {im, re}}}) {
          const Element other_a{flushed(a.re), flushed(a.im)}, other_b{flushed(b.re), flushed(b.im)};
          _korClearErrStatus();
          const Element result = function.call(grade, a, b);
          const std::int32_t status = _korGetErrStatus();
          _korClearErrStatus();
          const Element expected = function.call(grade, other_a, other_b);
          EXPECT_EQ(std::memcmp(&result, &expected, function.result_size()), 0)
              << a.re << ' ' << a.im << ", " << b.re << ' ' << b.im << " -> " << result.re << ' ' << result.im;
          EXPECT_EQ(status, _korGetErrStatus()) << a.re << ' ' << a.im << ", " << b.re << ' ' << b.im;
        }
      }
    }
  });
}

// A report names element, argument and result with both parts, and what the callback changes becomes the result.
TYPED_TEST(ComplexElementwise, ReportsTellWhatHappened) {
  this->for_each_kernel([&](const auto& function, int grade) {
    using Row = std::remove_cvref_t<decltype(function)>;
    if (function.result_size() < sizeof(typename Row::Z)) return;
    const auto values = this->mixture(function, grade);
    std::vector<unsigned char> results(values.expected.size());
    _korSetMode(KOR_ERRMODE_CALLBACK);
    _korSetErrorCallBack(&replace_by_five_and_six);
    reports.clear();
    function.call(grade, static_cast<int32_t>(values.count), values.a.data(), values.b.data(), results.data());
    _korSetErrorCallBack(nullptr);
    EXPECT_EQ(reports.empty(), function.promise->is_silent);
    for (const auto& report : reports) {
      const auto i = static_cast<std::size_t>(report.index);
      ASSERT_LT(i, values.count);
      const auto same = [](double x, TypeParam y) { return x == y || (std::isnan(x) && std::isnan(y)); };
      TypeParam a[2] = {0, 0}, r[2], expected[2];
      std::memcpy(a, values.element_of_a(function, i), function.argument_size());
      std::memcpy(expected, values.expected.data() + i * sizeof expected, sizeof expected);
      std::memcpy(r, results.data() + i * sizeof r, sizeof r);
      EXPECT_TRUE(same(report.a1, a[0]) && same(report.a1Im, a[1]));
      EXPECT_TRUE(r[0] == 5 && r[1] == 6) << i;
      EXPECT_STREQ(report.funcName, function.name);
    }
  });
}

TYPED_TEST(ComplexElementwise, BadCallsAreReportedAndTouchNothing) {
  this->for_each_kernel([&](const auto& function, int grade) {
    using Row = std::remove_cvref_t<decltype(function)>;
    const typename Row::Z a[2] = {{1, 1}, {1, 1}};
    typename Row::Z r[2] = {{7, 7}, {7, 7}};
    struct Call {
      int32_t n;
      const void *a, *b;
      void* r;
      int status, index;
    };
    std::vector<Call> calls = {{0, a, a, r, -1, 0},
                               {-3, nullptr, a, nullptr, -1, -3},
                               {2, nullptr, a, r, -2, 0},
                               {INT32_MAX, a, a, nullptr, -2, 0}};
    if (function.shape == Row::Shape::binary) calls.push_back({2, a, nullptr, r, -2, 0});
    for (const auto& call : calls) {
      reports.clear();
      _korSetMode(KOR_ERRMODE_CALLBACK);
      _korSetErrorCallBack(&note);
      function.call(grade, call.n, call.a, call.b, call.r);
      _korSetErrorCallBack(nullptr);
      ASSERT_EQ(reports.size(), 1u);
      EXPECT_EQ(reports[0].status, call.status);
      EXPECT_EQ(reports[0].index, call.index);
      EXPECT_STREQ(reports[0].funcName, function.name);
    }
    EXPECT_TRUE(r[0].re == 7 && r[0].im == 7 && r[1].re == 7 && r[1].im == 7);
  });
}

TYPED_TEST(ComplexElementwise, BitsAreTheStoredOnes) {
  const auto stored = read_digests(ORIN_TEST_DATA "/vector_math/digests.txt");
  this->for_each_kernel([&](const auto& function, int grade) {
    const auto line = stored.find(function.label() + " " + grade_names[grade]);
    ASSERT_NE(line, stored.end()) << "no digest stored";
    EXPECT_EQ(digest(function, grade), line->second);
  });
}

}  // namespace

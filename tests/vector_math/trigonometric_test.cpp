// trigonometric_test: special arguments of sine, cosine and tangent by eye, symmetry over all exponents, and SinCos
// beside Sin and Cos.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "tests/vector_math/reference_cases.h"
#include "vector_math/catalog.h"

namespace {

using namespace orin::vector_math;

template <class T>
class TrigonometricTest : public testing::Test {
 protected:
  void SetUp() override { _korSetMode(KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF); }
  void TearDown() override {
    _korSetErrorCallBack(nullptr);
    _korSetMode(KOR_MODE_DEFAULT);
  }

  using Function = RealFunction<T>;
  // One result of a function: "vdSin", "vdSinCos2".
  static const Function& find(const std::string& label) {
    static const auto functions = real_functions<T>();
    for (const auto& function : functions)
      if (function.label() == (sizeof(T) == 8 ? "vd" : "vs") + label) return function;
    std::abort();
  }
  // Arguments over all exponents and, as many, over the usual range.
  static std::vector<T> arguments(std::size_t count) {
    std::mt19937_64 random(7);
    std::vector<T> x;
    while (x.size() < count) {
      const T any = std::bit_cast<T>(static_cast<BitsOf<T>>(random()));
      if (!std::isfinite(any)) continue;
      x.push_back(any);
      x.push_back(static_cast<T>(std::ldexp(static_cast<double>(random() >> 11), -46)));
    }
    return x;
  }
  static std::vector<T> values(const Function& function, int grade, const std::vector<T>& x) {
    std::vector<T> y(x.size());
    function.call(grade, static_cast<int32_t>(x.size()), x.data(), x.data(), y.data());
    return y;
  }
};
using Elements = testing::Types<float, double>;
TYPED_TEST_SUITE(TrigonometricTest, Elements);

TYPED_TEST(TrigonometricTest, SpecialArguments) {
  using T = TypeParam;
  using Limits = std::numeric_limits<T>;
  const T inf = Limits::infinity(), nan = Limits::quiet_NaN();
  const T least = Limits::denorm_min(), subnormal = Limits::min() - 3 * least;
  for (const char* label : {"Sin", "Cos", "Tan", "SinCos1", "SinCos2"}) {
    const bool odd = std::strcmp(label, "Cos") != 0 && std::strcmp(label, "SinCos2") != 0;
    const auto& function = this->find(label);
    for (int grade = 0; grade < grades; ++grade) {
      SCOPED_TRACE(function.label() + " " + grade_names[grade]);
      const auto expect = [&](T x, T y, int status) {
        _korClearErrStatus();
        const T result = function.call(grade, x, x);
        EXPECT_EQ(bits_of(result), bits_of(y)) << x << " -> " << result;
        EXPECT_EQ(_korGetErrStatus(), status) << x;
      };
      expect(inf, nan, KOR_STATUS_ERRDOM);
      expect(-inf, nan, KOR_STATUS_ERRDOM);
      expect(nan, nan, KOR_STATUS_OK);
      const T payload = std::bit_cast<T>(static_cast<BitsOf<T>>(bits_of(nan) + 0x123));
      expect(payload, payload, KOR_STATUS_OK);
      for (T x : {T(0), least, subnormal, Limits::min()}) {
        if (odd) {
          expect(x, x, KOR_STATUS_OK);
          expect(-x, -x, KOR_STATUS_OK);
        } else {
          expect(x, 1, KOR_STATUS_OK);
          expect(-x, 1, KOR_STATUS_OK);
        }
      }
      _korClearErrStatus();
      EXPECT_LE(std::fabs(function.call(grade, Limits::max(), T(0))), T(100));
      EXPECT_EQ(_korGetErrStatus(), KOR_STATUS_OK);
    }
  }
}

// Sine and tangent are odd to the bit, so no way through a kernel leans to one side.
TYPED_TEST(TrigonometricTest, Symmetry) {
  using T = TypeParam;
  const std::vector<T> x = this->arguments(1 << 16);
  std::vector<T> opposite = x;
  for (T& each : opposite) each = -each;
  for (const char* label : {"Sin", "Tan", "SinCos1"}) {
    for (int grade = 0; grade < grades; ++grade) {
      const std::vector<T> y = this->values(this->find(label), grade, x);
      const std::vector<T> z = this->values(this->find(label), grade, opposite);
      for (std::size_t i = 0; i < x.size(); ++i)
        ASSERT_EQ(bits_of(z[i]), bits_of(-y[i])) << label << ' ' << grade_names[grade] << ' ' << x[i];
    }
  }
}

// Arguments of each size come in runs and mixed with the others: an element alone has the same bits.
TYPED_TEST(TrigonometricTest, SameBitsInEveryCompany) {
  using T = TypeParam;
  std::mt19937 random(11);
  constexpr double sizes[] = {1, 200, 1000, 1530, 2048, 3000, 1e5, 1048000, 1.1e6, 1e9, 1e30};
  std::vector<T> x;
  const auto add = [&](double size) {
    const double part = 0.5 + static_cast<double>(random()) * 0x1p-33;
    x.push_back(static_cast<T>((random() & 1) != 0 ? part * size : -part * size));
  };
  for (double size : sizes)
    for (int k = 0; k < 23; ++k) add(size);
  for (int k = 0; k < 2000; ++k) add(sizes[random() % std::size(sizes)]);
  for (const char* label : {"Sin", "Cos", "Tan", "SinCos1", "SinCos2"}) {
    const auto& function = this->find(label);
    for (int grade = 0; grade < grades; ++grade) {
      const std::vector<T> y = this->values(function, grade, x);
      for (std::size_t i = 0; i < x.size(); ++i)
        ASSERT_EQ(bits_of(y[i]), bits_of(function.call(grade, x[i], x[i])))
            << label << ' ' << grade_names[grade] << ' ' << x[i] << " at " << i;
    }
  }
}

// Where they share their method, SinCos has the bits of Sin and Cos; and always sin^2 + cos^2 = 1.
TYPED_TEST(TrigonometricTest, SineAndCosineTogether) {
  using T = TypeParam;
  const std::vector<T> x = this->arguments(1 << 16);
  for (int grade = 0; grade < grades; ++grade) {
    const std::vector<T> s = this->values(this->find("SinCos1"), grade, x);
    const std::vector<T> c = this->values(this->find("SinCos2"), grade, x);
    if (sizeof(T) == 8 && Grade(grade) != Grade::ep) {
      EXPECT_EQ(s, this->values(this->find("Sin"), grade, x)) << grade_names[grade];
      EXPECT_EQ(c, this->values(this->find("Cos"), grade, x)) << grade_names[grade];
    }
    const double bound = 2 * RealFunction<T>::relative_bound(Grade(grade));
    for (std::size_t i = 0; i < x.size(); ++i)
      ASSERT_NEAR(
          static_cast<double>(s[i]) * static_cast<double>(s[i]) + static_cast<double>(c[i]) * static_cast<double>(c[i]),
          1, bound)
          << grade_names[grade] << ' ' << x[i];
  }
}

// tan x = sin x/cos x, within the errors of the three.
TYPED_TEST(TrigonometricTest, TangentIsTheQuotient) {
  using T = TypeParam;
  const std::vector<T> x = this->arguments(1 << 16);
  for (int grade = 0; grade < grades; ++grade) {
    const std::vector<T> t = this->values(this->find("Tan"), grade, x);
    const std::vector<T> s = this->values(this->find("Sin"), static_cast<int>(Grade::ha), x);
    const std::vector<T> c = this->values(this->find("Cos"), static_cast<int>(Grade::ha), x);
    const T bound = static_cast<T>(RealFunction<T>::relative_bound(Grade(grade))) + std::numeric_limits<T>::epsilon();
    for (std::size_t i = 0; i < x.size(); ++i) {
      const T quotient = s[i] / c[i];
      ASSERT_LE(std::fabs(t[i] - quotient), bound * std::fabs(quotient) + std::numeric_limits<T>::denorm_min())
          << grade_names[grade] << ' ' << x[i];
    }
  }
}

// Both results of SinCos are told, and both can be replaced, wherever they stand.
TYPED_TEST(TrigonometricTest, ReportsOfTwoResults) {
  using T = TypeParam;
  static std::vector<KorErrorContext> reports;
  const auto& entry = [](int32_t n, const T* a, T* r1, T* r2) {
    if constexpr (sizeof(T) == 8)
      _kordSinCos(n, a, r1, r2);
    else
      _korsSinCos(n, a, r1, r2);
  };
  _korSetMode(KOR_ERRMODE_CALLBACK);
  _korSetErrorCallBack([](KorErrorContext* context) -> int32_t {
    reports.push_back(*context);
    context->r1 = 3;
    context->r2 = 4;
    return 0;
  });
  for (int place = 0; place < 3; ++place) {
    reports.clear();
    T a[5] = {0, T(0.5), std::numeric_limits<T>::infinity(), T(1e30), -1}, r1[5], r2[5];
    T* first = place == 1 ? a : r1;
    T* second = place == 2 ? a : r2;
    entry(5, a, first, second);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].status, KOR_STATUS_ERRDOM);
    EXPECT_EQ(reports[0].index, 2);
    EXPECT_EQ(reports[0].a1, std::numeric_limits<double>::infinity());
    EXPECT_EQ(reports[0].a2, std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(reports[0].r1) && std::isnan(reports[0].r2));
    EXPECT_STREQ(reports[0].funcName, sizeof(T) == 8 ? "vdSinCos" : "vsSinCos");
    EXPECT_EQ(first[2], 3);
    EXPECT_EQ(second[2], 4);
    EXPECT_EQ(first[0], 0);
    EXPECT_EQ(second[0], 1);
    EXPECT_EQ(bits_of(first[3]), bits_of(this->find("Sin").call(static_cast<int>(Grade::ha), T(1e30), 0)));
  }
}

}  // namespace

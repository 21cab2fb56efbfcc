// complex_arithmetic_test: special arguments of complex arithmetic by eye: C Annex G, and the statuses.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <random>

#include "tests/vector_math/reference_cases.h"
#include "vector_math/complex_catalog.h"

namespace {

using namespace orin::vector_math;

template <class T>
struct Value {
  using Limits = std::numeric_limits<T>;
  static constexpr T infinity = Limits::infinity(), nan = Limits::quiet_NaN(), largest = Limits::max(),
                     least = Limits::denorm_min();
  static constexpr T any = T(0.1234375);  // stands for a part that Annex G leaves open
};

template <class T>
class ComplexArithmetic : public testing::Test {
 protected:
  using Z = typename ComplexFunction<T>::Z;
  struct Line {
    Z a, b, result;
    int status;
  };
  static void expect_part(T got, T expected, const char* which, const Line& line, const std::string& name) {
    if (expected == Value<T>::any) return;
    EXPECT_TRUE(std::isnan(expected) ? std::isnan(got) : bits_of(got) == bits_of(expected))
        << name << " (" << line.a.re << ", " << line.a.im << ") (" << line.b.re << ", " << line.b.im << "): " << which
        << " part " << got << ", expected " << expected;
  }
  template <std::size_t count>
  static void expect(const char* function_name, const Line (&lines)[count]) {
    _korSetMode(KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF);
    bool found = false;
    for (const auto& function : complex_functions<T>()) {
      if (std::strcmp(function.function, function_name) != 0) continue;
      found = true;
      for (int grade = 0; grade < grades; ++grade) {
        for (const Line& line : lines) {
          _korClearErrStatus();
          const Z got = function.call(grade, line.a, line.b);
          const std::string name = function.label() + " " + grade_names[grade];
          EXPECT_EQ(_korGetErrStatus(), line.status)
              << name << " (" << line.a.re << ", " << line.a.im << ") (" << line.b.re << ", " << line.b.im << ")";
          expect_part(got.re, line.result.re, "real", line, name);
          expect_part(got.im, line.result.im, "imaginary", line, name);
        }
      }
    }
    EXPECT_TRUE(found) << function_name;
    _korSetMode(KOR_MODE_DEFAULT);
  }
};
using Parts = testing::Types<float, double>;
TYPED_TEST_SUITE(ComplexArithmetic, Parts);

TYPED_TEST(ComplexArithmetic, Product) {
  using T = TypeParam;
  constexpr T I = Value<T>::infinity, N = Value<T>::nan, M = Value<T>::largest, any = Value<T>::any;
  TestFixture::expect("Mul", {
                                 {{1, 2}, {3, 4}, {-5, 10}, 0},
                                 {{0, 0}, {5, 7}, {0, 0}, 0},
                                 {{I, 0}, {1, 0}, {I, any}, 0},
                                 {{I, I}, {1, 0}, {any, I}, 0},
                                 {{I, N}, {2, 3}, {I, any}, 0},
                                 {{2, 3}, {N, -I}, {I, any}, 0},
                                 {{I, 0}, {0, 0}, {N, N}, 0},
                                 {{N, 1}, {1, 1}, {N, N}, 0},
                                 {{M, 0}, {2, 0}, {I, 0}, 0},
                                 {{M, M}, {M, -M}, {I, 0}, 0},
                                 {{M, M}, {2, 2}, {0, I}, 0},
                                 {{M, M}, {T(0.5), -T(0.5)}, {M, 0}, 0},
                             });
}

TYPED_TEST(ComplexArithmetic, ProductByConjugate) {
  using T = TypeParam;
  constexpr T I = Value<T>::infinity, N = Value<T>::nan, M = Value<T>::largest, any = Value<T>::any;
  TestFixture::expect("MulByConj", {
                                       {{1, 2}, {3, 4}, {11, 2}, 0},
                                       {{I, N}, {2, 3}, {I, any}, 0},
                                       {{M, M}, {2, -2}, {0, I}, 0},
                                       {{I, 0}, {0, 0}, {N, N}, 0},
                                   });
}

TYPED_TEST(ComplexArithmetic, Quotient) {
  using T = TypeParam;
  constexpr T I = Value<T>::infinity, N = Value<T>::nan, M = Value<T>::largest, L = Value<T>::least,
              any = Value<T>::any;
  TestFixture::expect(
      "Div", {
                 {{-5, 10}, {3, 4}, {1, 2}, 0},    {{1, 0}, {0, 0}, {I, N}, 2},     {{-1, 2}, {-T(0), 0}, {I, -I}, 2},
                 {{0, 0}, {0, 0}, {N, N}, 1},      {{I, 1}, {0, 0}, {I, I}, 0},     {{N, 1}, {0, 0}, {N, I}, 0},
                 {{I, 0}, {1, 1}, {I, -I}, 0},     {{I, N}, {2, 0}, {I, any}, 0},   {{-I, 2}, {M, M}, {-I, I}, 0},
                 {{1, 1}, {I, 0}, {0, 0}, 0},      {{1, 1}, {I, N}, {any, any}, 0}, {{1, -1}, {-I, 0}, {-T(0), 0}, 0},
                 {{I, 1}, {I, 1}, {N, N}, 1},      {{I, 1}, {N, 1}, {N, N}, 0},     {{1, N}, {2, 2}, {N, N}, 0},
                 {{M, 0}, {T(0.5), 0}, {I, 0}, 3}, {{M, M}, {M, M}, {1, 0}, 0},     {{L, L}, {L, L}, {1, 0}, 0},
                 {{1, 1}, {L, L}, {I, 0}, 3},      {{M, L}, {L, L}, {I, -I}, 3},    {{0, 0}, {2, 2}, {0, 0}, 0},
                 {{L, 0}, {M, 0}, {0, 0}, 0},      {{M, 0}, {1, 0}, {M, 0}, 0},     {{M, -M}, {1, 0}, {M, -M}, 0},
             });
}

TYPED_TEST(ComplexArithmetic, SquareRoot) {
  using T = TypeParam;
  constexpr T I = Value<T>::infinity, N = Value<T>::nan, M = Value<T>::largest, L = Value<T>::least,
              any = Value<T>::any;
  TestFixture::expect("Sqrt", {
                                  {{4, 0}, {}, {2, 0}, 0},
                                  {{-4, 0}, {}, {0, 2}, 0},
                                  {{-4, -T(0)}, {}, {0, -2}, 0},
                                  {{0, 0}, {}, {0, 0}, 0},
                                  {{-T(0), -T(0)}, {}, {0, -T(0)}, 0},
                                  {{3, -4}, {}, {2, -1}, 0},
                                  {{-3, 4}, {}, {1, 2}, 0},
                                  {{-T(0), 8}, {}, {2, 2}, 0},
                                  {{M, 0}, {}, {std::sqrt(M), 0}, 0},
                                  {{-4 * L, 0}, {}, {0, 2 * std::sqrt(L)}, 0},
                                  {{1, I}, {}, {I, I}, 0},
                                  {{N, -I}, {}, {I, -I}, 0},
                                  {{-I, 3}, {}, {0, I}, 0},
                                  {{-I, -3}, {}, {0, -I}, 0},
                                  {{I, -3}, {}, {I, -T(0)}, 0},
                                  {{I, N}, {}, {I, N}, 0},
                                  {{-I, N}, {}, {N, any}, 0},
                                  {{N, 1}, {}, {N, N}, 0},
                                  {{1, N}, {}, {N, N}, 0},
                              });
}

TYPED_TEST(ComplexArithmetic, Modulus) {
  using T = TypeParam;
  constexpr T I = Value<T>::infinity, N = Value<T>::nan, M = Value<T>::largest, L = Value<T>::least;
  TestFixture::expect("Abs", {
                                 {{3, -4}, {}, {5, 0}, 0},
                                 {{I, N}, {}, {I, 0}, 0},
                                 {{N, -I}, {}, {I, 0}, 0},
                                 {{N, 1}, {}, {N, 0}, 0},
                                 {{1, N}, {}, {N, 0}, 0},
                                 {{0, -T(0)}, {}, {0, 0}, 0},
                                 {{M, M}, {}, {I, 0}, 0},
                                 {{3 * L, 4 * L}, {}, {5 * L, 0}, 0},
                                 {{M / 2, 0}, {}, {M / 2, 0}, 0},
                             });
}

TYPED_TEST(ComplexArithmetic, Conjugate) {
  using T = TypeParam;
  constexpr T I = Value<T>::infinity, N = Value<T>::nan;
  TestFixture::expect("Conj", {
                                  {{1, 2}, {}, {1, -2}, 0},
                                  {{0, 0}, {}, {0, -T(0)}, 0},
                                  {{-I, -T(0)}, {}, {-I, 0}, 0},
                                  {{N, 1}, {}, {N, -1}, 0},
                              });
}

// Parts that cancel to 2^-59 and 2^-65 of the products, where the exact part is a double.
TEST(ComplexProducts, KeepPartsThatCancel) {
  struct Line {
    KorComplex16 a, b;
    double re;
  };
  constexpr Line lines[] = {
      {{0x1.285e61652671bp+3, -0x1.c8320d51300abp+2},
       {0x1.19ba1e76e324dp+3, -0x1.6e0caaa7cf27dp+3},
       -0x1.5c33bac19d04p-53},
      {{0x1.e70189f301ca5p+1, 0x1.36365c8476341p+3},
       {-0x1.392df7ff50c6bp+3, -0x1.ebaa0e2bce972p+1},
       -0x1.ba50402c828p-59},
  };
  for (const Line& line : lines) {
    KorComplex16 product, by_conjugate;
    const KorComplex16 conjugate{line.b.re, -line.b.im};
    _korzMul(1, &line.a, &line.b, &product);
    _korzMulByConj(1, &line.a, &conjugate, &by_conjugate);
    EXPECT_EQ(product.re, line.re);
    EXPECT_EQ(by_conjugate.re, line.re);
  }
}

// Real parts that cancel by every power of two down to nothing, beside factors with zeros: each within its bound, and
// with the same bits in every company.
TEST(ComplexProducts, KeepTheirPartsHoweverSmall) {
  struct Function {
    void(ORIN_CALL* call)(int32_t, const KorComplex16*, const KorComplex16*, KorComplex16*);
    bool turned, divided;
    double bound;
  };
  constexpr Function functions[] = {
      {&_korzMul, false, false, 1.45}, {&_korzMulByConj, true, false, 1.45}, {&_korzDiv, true, true, 3.6}};
  std::mt19937_64 random(7);
  const auto part = [&] { return (1 + static_cast<double>(random() >> 11) * 0x1p-53) * (random() % 2 == 0 ? 1 : -1); };
  std::vector<KorComplex16> a, b;
  for (int k = 0; k < 2000; ++k) {
    const KorComplex16 z{part(), part()};
    const double near_one = 1 + std::ldexp(part(), -(k % 70));
    // An exact product of short parts now and then, whose real part is 0.
    const double y = k % 11 == 0 ? 3.5 : z.im * near_one;
    const KorComplex16 w = k % 11 == 0 ? KorComplex16{y, 2} : KorComplex16{y, z.re};
    a.push_back(k % 11 == 0 ? KorComplex16{4, 7} : k % 13 == 0 ? KorComplex16{z.re, 0} : z);
    b.push_back(k % 17 == 0 ? KorComplex16{0, w.im} : w);
  }
  const auto exact = [](double p, double q, double r, double s) -> long double {  // p q + r s
    const double first = p * q, second = r * s;
    return (static_cast<long double>(first) + second) +
           (static_cast<long double>(std::fma(p, q, -first)) + std::fma(r, s, -second));
  };
  const auto error = [](double got, long double truth) {
    const double rounded = static_cast<double>(truth);
    const double spacing = std::nextafter(std::fabs(rounded), HUGE_VAL) - std::fabs(rounded);
    return static_cast<double>(std::fabs(got - truth)) / spacing;
  };
  _korSetMode(KOR_HA | KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF);
  for (const Function& function : functions) {
    std::vector<KorComplex16> second = b, together(a.size());
    if (function.turned)
      for (KorComplex16& w : second) w.im = -w.im;
    function.call(static_cast<int32_t>(a.size()), a.data(), second.data(), together.data());
    for (std::size_t i = 0; i < a.size(); ++i) {
      KorComplex16 alone;
      function.call(1, &a[i], &second[i], &alone);
      EXPECT_TRUE(bits_of(together[i].re) == bits_of(alone.re) && bits_of(together[i].im) == bits_of(alone.im)) << i;
      const auto [x, y] = a[i];
      const auto [u, v] = b[i];
      const long double divisor = function.divided ? exact(u, u, v, v) : 1;
      EXPECT_LE(error(alone.re, exact(x, u, -y, v) / divisor), function.bound) << i;
      EXPECT_LE(error(alone.im, exact(y, u, x, v) / divisor), function.bound) << i;
    }
  }
  _korSetMode(KOR_MODE_DEFAULT);
}

// Quotients of single precision over all exponents, subnormal numbers among them: each part rounded once, overflow reported.
TEST(ComplexQuotients, OfSinglePrecisionKeepTheirPartsOverTheWholeRange) {
  std::mt19937_64 random(8);
  std::vector<KorComplex8> a, b, together(40000);
  const auto number = [&] {
    const int exponent = static_cast<int>(random() % 277) - 149;
    const auto part = [&](int below) {
      const float mantissa = 1 + static_cast<float>(random() >> 41) * 0x1p-23f;
      return std::ldexp(random() % 2 == 0 ? mantissa : -mantissa, exponent - below);
    };
    const bool swapped = random() % 2 == 0;
    const float larger = part(0), smaller = part(static_cast<int>(random() % 30));
    return swapped ? KorComplex8{smaller, larger} : KorComplex8{larger, smaller};
  };
  for (std::size_t i = 0; i < together.size(); ++i) {
    a.push_back(number());
    b.push_back(number());
  }
  _korSetMode(KOR_HA | KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF);
  _korcDiv(static_cast<int32_t>(a.size()), a.data(), b.data(), together.data());
  int overflows = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const long double x = a[i].re, y = a[i].im, u = b[i].re, v = b[i].im, square = u * u + v * v;
    const long double exact[] = {(x * u + y * v) / square, (y * u - x * v) / square};
    KorComplex8 alone;
    _korClearErrStatus();
    _korcDiv(1, &a[i], &b[i], &alone);
    EXPECT_TRUE(bits_of(together[i].re) == bits_of(alone.re) && bits_of(together[i].im) == bits_of(alone.im)) << i;
    bool overflow = false;
    for (int k = 0; k < 2; ++k) {
      const float got = k == 0 ? alone.re : alone.im, rounded = static_cast<float>(exact[k]);
      overflow |= std::isinf(rounded);
      if (std::isinf(rounded)) {
        EXPECT_EQ(got, rounded) << i;
      } else {
        const int exponent = std::max(std::ilogb(std::max(std::fabs(rounded), 0x1p-126f)), -126);
        EXPECT_LE(std::fabs(got - exact[k]), 0.51L * std::ldexp(1.0L, exponent - 23)) << i;
      }
    }
    EXPECT_EQ(_korGetErrStatus(), overflow ? KOR_STATUS_OVERFLOW : KOR_STATUS_OK) << i;
    overflows += overflow;
  }
  EXPECT_GT(overflows, 1000);
  _korSetMode(KOR_MODE_DEFAULT);
}

}  // namespace

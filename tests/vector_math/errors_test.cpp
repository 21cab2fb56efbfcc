// errors_test: what a report does under every error mode.
// SPDX-License-Identifier: MIT
#include "vector_math/errors.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace orin::vector_math;

std::vector<KorErrorContext> seen;
double replacement;

int32_t ORIN_CALL remember(KorErrorContext* context) {
  seen.push_back(*context);
  return 0;
}
int32_t ORIN_CALL handle(KorErrorContext* context) {
  seen.push_back(*context);
  context->r1 = 99.0;
  return 1;
}
int32_t ORIN_CALL replace(KorErrorContext* context) {
  context->r1 = replacement;
  context->r1Im = -replacement;
  context->r2 = replacement + 1;
  context->r2Im = -replacement - 1;
  return 0;
}

// Each test starts from a silent mode: nothing but what it adds itself.
class Errors : public testing::Test {
 protected:
  void SetUp() override {
    orin_kor_kernel_SetErrorCallBack(nullptr);
    orin_kor_kernel_SetMode(KOR_HA | KOR_ERRMODE_CALLBACK);
    orin_kor_kernel_ClearErrStatus();
    seen.clear();
    errno = 0;
    std::feclearexcept(FE_ALL_EXCEPT);
  }
  void TearDown() override {
    orin_kor_kernel_SetErrorCallBack(nullptr);
    orin_kor_kernel_SetInterfInputVectorPointer(nullptr);
    orin_kor_kernel_SetMode(KOR_MODE_DEFAULT);
    std::feclearexcept(FE_ALL_EXCEPT);
  }

  // Reports `status` at index 1 of small vectors and returns what it printed.
  std::string report(int32_t status, double a1 = 2, double a2 = 2, double r1 = 3, double r2 = 3) {
    const double arguments1[] = {-1, a1}, arguments2[] = {-1, a2};
    double results1[] = {-1, r1}, results2[] = {-1, r2};
    testing::internal::CaptureStdout();
    ReportKorError_d(status, status == KOR_STATUS_BADSIZE ? 0 : 1, arguments1, arguments2, results1, results2, "vdExp");
    result1 = results1[1];
    result2 = results2[1];
    return testing::internal::GetCapturedStdout();
  }

  double result1 = 0, result2 = 0;
};

TEST_F(Errors, StatusIsKeptWhateverTheMode) {
  for (uint32_t error_mode : {0x100u, 0x1000u, 0x300u}) {
    orin_kor_kernel_SetMode(error_mode);
    report(2);
    report(1);
    EXPECT_EQ(_korGetErrStatus(), 1);
    EXPECT_EQ(_korSetErrStatus(7), 1);
    EXPECT_EQ(_korClearErrStatus(), 7);
    EXPECT_EQ(orin_kor_kernel_GetErrStatus(), 0);
  }
}

TEST_F(Errors, IgnoreAloneSuppressesEverything) {
  orin_kor_kernel_SetErrorCallBack(&handle);
  orin_kor_kernel_SetMode(KOR_ERRMODE_IGNORE);
  EXPECT_EQ(report(1), "");
  EXPECT_TRUE(seen.empty());
  EXPECT_EQ(errno, 0);
  EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), 0);
  EXPECT_EQ(result1, 3);
}

TEST_F(Errors, IgnoreWithAnotherBitSuppressesNothing) {
  orin_kor_kernel_SetMode(KOR_ERRMODE_IGNORE | KOR_ERRMODE_ERRNO);
  EXPECT_EQ(report(1), "");
  EXPECT_EQ(errno, 33);
}

TEST_F(Errors, ErrnoOfEachStatus) {
  orin_kor_kernel_SetMode(KOR_ERRMODE_ERRNO);
  const int32_t table[][2] = {{0, 0}, {-1, 22}, {-2, 13}, {1, 33}, {2, 34}, {3, 34}, {4, 34}, {5, 14}, {-3, 14}};
  for (const auto& [status, value] : table) {
    errno = 77;
    report(status);
    EXPECT_EQ(errno, value) << status;
  }
}

TEST_F(Errors, ExceptionOfEachStatus) {
  orin_kor_kernel_SetMode(KOR_ERRMODE_EXCEPT);
  const int table[][2] = {{0, 0},           {-1, 0},           {-2, 0}, {1, FE_INVALID}, {2, FE_DIVBYZERO},
                          {3, FE_OVERFLOW}, {4, FE_UNDERFLOW}, {5, 0}};
  for (const auto& [status, exception] : table) {
    std::feclearexcept(FE_ALL_EXCEPT);
    report(status);
    EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW | FE_UNDERFLOW), exception) << status;
  }
}

TEST_F(Errors, PrintsTheReportOnStandardOutput) {
  orin_kor_kernel_SetMode(KOR_ERRMODE_STDERR);
  EXPECT_EQ(report(0), "");
  EXPECT_EQ(report(-1), "Error (KOR_STATUS_BADSIZE) in vdExp: array size 0 is not positive.\n");
  EXPECT_EQ(report(-2), "Error (KOR_STATUS_BADMEM) in vdExp: NULL pointer is passed.\n");
  EXPECT_EQ(report(1), "Error (KOR_STATUS_ERRDOM) in vdExp: argument is out of domain.\na(1)=2\nr(1)=3\n");
  EXPECT_EQ(report(2, 0, 0, -INFINITY, -INFINITY),
            "Error (KOR_STATUS_SING) in vdExp: argument caused singularity.\na(1)=0\nr(1)=-inf\n");
  EXPECT_EQ(report(3, 800, 0, INFINITY, 5),
            "Error (KOR_STATUS_OVERFLOW) in vdExp: argument caused overflow.\na(1)=800\ny(1)=inf\nz(1)=5\n");
  EXPECT_EQ(report(4, 1, 2),
            "Error (KOR_STATUS_UNDERFLOW) in vdExp: argument caused underflow.\n"
            "a(1)=1\nb(1)=2\ny(1)=3\n");
  EXPECT_EQ(report(9, 1, 2, 3, 4), "Unknown error in vdExp.\na(1)=1\nb(1)=2\ny(1)=3\nz(1)=4\n");
}

// A NaN differs from itself, so a second element that is one is taken to exist.
TEST_F(Errors, PrintsANaNTwice) {
  orin_kor_kernel_SetMode(KOR_ERRMODE_STDERR);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(report(1, nan, nan, 1, 0),
            "Error (KOR_STATUS_ERRDOM) in vdExp: argument is out of domain.\n"
            "a(1)=nan\nb(1)=nan\ny(1)=1\n");
}

TEST_F(Errors, CallbackSeesTheRecord) {
  orin_kor_kernel_SetErrorCallBack(&remember);
  report(3, 1, 2, 3, 4);
  ASSERT_EQ(seen.size(), 1u);
  const KorErrorContext& c = seen[0];
  EXPECT_EQ(c.status, 3);
  EXPECT_EQ(c.index, 1);
  EXPECT_EQ(c.a1, 1);
  EXPECT_EQ(c.a2, 2);
  EXPECT_EQ(c.r1, 3);
  EXPECT_EQ(c.r2, 4);
  EXPECT_STREQ(c.funcName, "vdExp");
  EXPECT_EQ(c.funcNameLen, 5);
}

TEST_F(Errors, CallbackThatHandlesEndsTheReport) {
  orin_kor_kernel_SetErrorCallBack(&handle);
  orin_kor_kernel_SetMode(KOR_ERRMODE_CALLBACK | KOR_ERRMODE_ERRNO | KOR_ERRMODE_STDERR | KOR_ERRMODE_EXCEPT);
  EXPECT_EQ(report(1), "");
  EXPECT_EQ(seen.size(), 1u);
  EXPECT_EQ(errno, 0);
  EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), 0);
  EXPECT_EQ(result1, 3);
}

TEST_F(Errors, CallbackReplacesTheResults) {
  orin_kor_kernel_SetErrorCallBack(&replace);
  replacement = 5.0;
  report(1);
  EXPECT_EQ(result1, 5.0);
  EXPECT_EQ(result2, 6.0);

  // One result vector in both places: the first result field stands.
  double both[] = {1, 2};
  ReportKorError_d(1, 0, both, both, both, both, "vdExp");
  EXPECT_EQ(both[0], 5.0);
  EXPECT_EQ(both[1], 2.0);

  // Bad sizes and null vectors touch no vector.
  ReportKorError_d(-1, 0, nullptr, nullptr, nullptr, nullptr, "vdExp");
  ReportKorError_d(-2, 0, nullptr, nullptr, nullptr, nullptr, "vdExp");
}

TEST_F(Errors, EveryTypeReadsAndWritesItsOwnElements) {
  orin_kor_kernel_SetErrorCallBack(&remember);
  float s[] = {0, 1.5f};
  ReportKorError_s(1, 1, s, s, s, s, "vsExp");
  EXPECT_EQ(seen.back().a1, 1.5);
  EXPECT_EQ(seen.back().a1Im, 0);
  KorComplex8 c[] = {{0, 0}, {1, -2}};
  ReportKorError_c(1, 1, c, c, c, c, "vcExp");
  EXPECT_EQ(seen.back().a1, 1);
  EXPECT_EQ(seen.back().r2Im, -2);
  KorComplex16 z[] = {{0, 0}, {0, 0}, {3, 4}}, w[] = {{0, 0}, {0, 0}, {5, 6}};
  ReportKorError_z(1, 2, z, w, w, w, "vzPow");
  EXPECT_EQ(seen.back().a1Im, 4);
  EXPECT_EQ(seen.back().a2, 5);

  orin_kor_kernel_SetErrorCallBack(&replace);
  replacement = 0.1;
  ReportKorError_s(1, 0, s, s, s, s, "vsExp");
  EXPECT_EQ(s[0], 0.1f);
  ReportKorError_c(1, 0, c, c, c, c, "vcExp");
  EXPECT_EQ(c[0].re, 0.1f);
  EXPECT_EQ(c[0].im, -0.1f);
  ReportKorError_z(1, 0, z, z, z, w, "vzExp");
  EXPECT_EQ(z[0].im, -0.1);
  EXPECT_EQ(w[0].re, 1.1);
}

TEST_F(Errors, IndexCountsFromTheInterfaceVector) {
  orin_kor_kernel_SetErrorCallBack(&remember);
  std::vector<double> d(1000);
  EXPECT_EQ(_korSetInterfInputVectorPointer(d.data()), d.data());
  ReportKorError_d(1, 5, d.data() + 600, d.data(), d.data(), d.data(), "vdExp");
  EXPECT_EQ(seen.back().index, 605);
  ReportKorError_d(-1, 0, d.data() + 600, d.data(), d.data(), d.data(), "vdExp");
  EXPECT_EQ(seen.back().index, 0);
  std::vector<KorComplex16> z(100);
  orin_kor_kernel_SetInterfInputVectorPointer(z.data() + 50);
  ReportKorError_z(1, 5, z.data() + 10, z.data(), z.data(), z.data(), "vzExp");
  EXPECT_EQ(seen.back().index, -35);
}

TEST_F(Errors, SettingACallbackSetsTheModeBit) {
  orin_kor_kernel_SetMode(KOR_ERRMODE_ERRNO);
  EXPECT_EQ(_korSetErrorCallBack(&remember), nullptr);
  EXPECT_EQ(_korGetErrorCallBack(), &remember);
  EXPECT_EQ(orin_kor_kernel_GetMode() & KOR_ERRMODE_MASK, 0x1200u);
  EXPECT_EQ(_korClearErrorCallBack(), &remember);
  EXPECT_EQ(orin_kor_kernel_GetErrorCallBack(), nullptr);
  EXPECT_EQ(orin_kor_kernel_GetMode() & KOR_ERRMODE_MASK, 0x200u);

  // Where the bit is the only one of its field it stays.
  orin_kor_kernel_SetErrorCallBack(&remember);
  orin_kor_kernel_SetMode(KOR_ERRMODE_CALLBACK);
  orin_kor_kernel_ClearErrorCallBack();
  EXPECT_EQ(orin_kor_kernel_GetMode() & KOR_ERRMODE_MASK, 0x1000u);
  report(1);
  EXPECT_TRUE(seen.empty());
}

}  // namespace

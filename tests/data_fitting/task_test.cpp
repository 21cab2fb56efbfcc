// task_test: creation, editing and deletion: statuses in their order, tables, memory.
// SPDX-License-Identifier: MIT
#include "tests/data_fitting/api.h"
#include "tests/support/faulty_core.h"

namespace {

template <class T>
class Task : public testing::Test {
 protected:
  ~Task() override { orin_df_kernel_DeleteTask(&task); }

  int32_t make(int64_t nx, const T* points, int64_t xhint, int64_t ny, const T* values, int64_t yhint) {
    orin_df_kernel_DeleteTask(&task);
    return Api<T>::new_task(&task, nx, points, xhint, ny, values, yhint, -9);
  }

  DfTask1D* task = nullptr;
  T x[5] = {0, 1, 2, 3, 4}, y[20] = {}, c[100] = {};
};
TYPED_TEST_SUITE(Task, Precisions);

TYPED_TEST(Task, CreationChecksInOrder) {
  auto& t = *this;
  EXPECT_EQ(t.make(1, nullptr, 3, 0, t.y, 7), ORIN_DF_BAD_NX);
  EXPECT_EQ(t.make(2, nullptr, 3, 0, t.y, 7), ORIN_DF_BAD_X);
  EXPECT_EQ(t.make(2, t.x, 3, 0, t.y, 7), ORIN_DF_BAD_XHINT);
  EXPECT_EQ(t.make(2, t.x, 4, 0, t.y, 7), ORIN_DF_BAD_NY);
  EXPECT_EQ(t.make(2, t.x, 4, 1, nullptr, 7), ORIN_DF_BAD_Y);
  EXPECT_EQ(t.make(2, t.x, 4, 1, t.y, 7), ORIN_DF_BAD_YHINT);
  EXPECT_EQ(t.task, nullptr);
  for (const int64_t xhint : {0, 1, 2, 4}) {
    for (const int64_t yhint : {0, 16, 32, 128}) EXPECT_EQ(t.make(2, t.x, xhint, 1, t.y, yhint), ORIN_DF_OK);
  }
}

TYPED_TEST(Task, CreationFillsTheRecord) {
  auto& t = *this;
  ASSERT_EQ(t.make(5, t.x, 2, 0, nullptr, 16), ORIN_DF_OK);
  const DfTask1D& r = *t.task;
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(t.task) % 128, 0u);
  EXPECT_EQ(r.caller_word, -9);
  EXPECT_EQ(r.kind_tag, 4);
  EXPECT_EQ(r.precision_tag, sizeof(TypeParam) == 8);
  EXPECT_EQ(r.editable, 1);
  EXPECT_EQ(r.nx, 5);
  EXPECT_EQ(r.x, t.x);
  EXPECT_EQ(r.xhint, 2);
  EXPECT_EQ(r.yhint, 16);
  EXPECT_EQ(r.y, nullptr);
  EXPECT_TRUE(r.s_order == 0 && r.s_type == 0 && r.ic_type == 0 && r.bc_type == 0 && r.scoeffhint == 0);
  EXPECT_TRUE(r.ic == nullptr && r.bc == nullptr && r.scoeff == nullptr);
}

TYPED_TEST(Task, ValueTablesFollowTheHint) {
  auto& t = *this;
  for (const int64_t yhint : {0, 16}) {
    ASSERT_EQ(t.make(5, t.x, 0, 3, t.y, yhint), ORIN_DF_OK);
    for (int f = 0; f < 3; ++f) EXPECT_EQ(t.task->y[f], t.y + 5 * f);
  }
  ASSERT_EQ(t.make(5, t.x, 0, 3, t.y, 128), ORIN_DF_OK);
  EXPECT_EQ(t.task->y[0], t.y);
  ASSERT_EQ(Api<TypeParam>::edit_idx_ptr(t.task, 2, 2, t.y + 7), ORIN_DF_OK);
  EXPECT_EQ(t.task->y[2], t.y + 7);
  ASSERT_EQ(t.make(5, t.x, 0, 1000000000, t.y, 32), ORIN_DF_OK) << "one entry, whatever ny";
  EXPECT_EQ(t.task->y[0], t.y);
  ASSERT_EQ(t.make(5, t.x, 0, -3, t.y, 0), ORIN_DF_OK) << "a negative count is not refused here";
  EXPECT_NE(t.task->y, nullptr);

  // A rebuilt table goes by the hint and the count of the moment.
  ASSERT_EQ(orin_df_kernel_iEditVal(t.task, ORIN_DF_NY, 2), ORIN_DF_OK);
  ASSERT_EQ(Api<TypeParam>::edit_ptr(t.task, ORIN_DF_Y, t.y + 1), ORIN_DF_OK);
  EXPECT_EQ(t.task->y[1], t.y + 6);
}

TYPED_TEST(Task, SplineEditKeepsWhatPassed) {
  using A = Api<TypeParam>;
  auto& t = *this;
  EXPECT_EQ(A::edit_spline(nullptr, 4, 0, 0, nullptr, 0, nullptr, nullptr, 0), ORIN_DF_NULL_TASK);
  ASSERT_EQ(t.make(5, t.x, 0, 0, nullptr, 0), ORIN_DF_OK);
  EXPECT_EQ(A::edit_spline(t.task, -1, -1, 12, nullptr, 0, t.y, t.c, 3), ORIN_DF_BAD_ORDER);
  EXPECT_EQ(A::edit_spline(t.task, 3, -1, 12, nullptr, 0, t.y, t.c, 3), ORIN_DF_BAD_TYPE);
  EXPECT_EQ(t.task->s_order, 0);
  EXPECT_EQ(A::edit_spline(t.task, 3, 6, 12, nullptr, 0, t.y, t.c, 3), ORIN_DF_BAD_BC);
  EXPECT_TRUE(t.task->s_order == 3 && t.task->s_type == 6 && t.task->bc_type == 0);
  EXPECT_EQ(A::edit_spline(t.task, 3, 6, -5, t.y, 0, t.y, t.c, 3), ORIN_DF_BAD_IC_TYPE);
  EXPECT_TRUE(t.task->bc_type == -5 && t.task->bc == t.y);
  EXPECT_EQ(A::edit_spline(t.task, 3, 6, 2, nullptr, 77, nullptr, t.c, 3), ORIN_DF_BAD_IC);
  EXPECT_EQ(A::edit_spline(t.task, 3, 6, 2, nullptr, 77, t.y, t.c, 3), ORIN_DF_BAD_NY);
  EXPECT_TRUE(t.task->ic_type == 77 && t.task->ic == t.y && t.task->scoeffhint == 0);
  EXPECT_EQ(A::edit_spline(t.task, 3, 6, 1, nullptr, 0, nullptr, nullptr, 3), ORIN_DF_OK) << "the hint is not checked";
  EXPECT_EQ(t.task->scoeffhint, 3);

  ASSERT_EQ(t.make(5, t.x, 0, 3, t.y, 0), ORIN_DF_OK);
  t.task->editable = 0;
  for (const auto& [type, stride] : {std::pair{1, 15}, std::pair{0, 12}}) {
    ASSERT_EQ(A::edit_spline(t.task, 3, type, 0, nullptr, 0, nullptr, t.c, 0), ORIN_DF_OK) << "editable is not asked";
    for (int f = 0; f < 3; ++f) EXPECT_EQ(t.task->scoeff[f], t.c + stride * f);
  }
  ASSERT_EQ(A::edit_spline(t.task, 3, 0, 0, nullptr, 0, nullptr, nullptr, 128), ORIN_DF_OK);
  EXPECT_EQ(t.task->scoeff[2], t.c + 24) << "no storage given, the earlier table stays";
  ASSERT_EQ(A::edit_spline(t.task, 3, 0, 0, nullptr, 0, nullptr, t.c + 50, 128), ORIN_DF_OK);
  EXPECT_EQ(t.task->scoeff[0], t.c + 50);
  for (const int64_t order : {INT64_MAX, INT64_MAX / 3})
    EXPECT_EQ(A::edit_spline(t.task, order, 1, 0, nullptr, 0, nullptr, t.c, 0), ORIN_DF_OK) << "any order is kept";
  EXPECT_EQ(t.task->scoeff[0], t.c);
}

TYPED_TEST(Task, PointerEditors) {
  using A = Api<TypeParam>;
  auto& t = *this;
  const TypeParam* null = nullptr;
  EXPECT_EQ(A::edit_ptr(nullptr, 1, t.x), ORIN_DF_NULL_TASK);
  EXPECT_EQ(A::edit_idx_ptr(nullptr, 2, 0, t.x), ORIN_DF_NULL_TASK);
  ASSERT_EQ(t.make(5, t.x, 0, 2, t.y, 128), ORIN_DF_OK);
  const int32_t refused[] = {ORIN_DF_BAD_X, ORIN_DF_BAD_Y, ORIN_DF_BAD_IC, ORIN_DF_BAD_BC, ORIN_DF_BAD_SCOEFF};
  for (int id = 1; id <= 5; ++id) {
    EXPECT_EQ(A::edit_ptr(t.task, id, null), refused[id - 1]);
    EXPECT_EQ(A::edit_ptr(t.task, id, t.c), ORIN_DF_OK);
  }
  EXPECT_TRUE(t.task->x == t.c && t.task->ic == t.c && t.task->bc == t.c && t.task->y[0] == t.c &&
              t.task->scoeff[0] == t.c);
  for (const int id : {0, 6, 14}) EXPECT_EQ(A::edit_ptr(t.task, id, null), ORIN_DF_BAD_ATTRIBUTE);
  for (const int id : {1, 3, 4, 6}) EXPECT_EQ(A::edit_idx_ptr(t.task, id, 9, null), ORIN_DF_BAD_ATTRIBUTE);
  EXPECT_EQ(A::edit_idx_ptr(t.task, 2, 2, null), ORIN_DF_BAD_INDEX);
  EXPECT_EQ(A::edit_idx_ptr(t.task, 2, 1, null), ORIN_DF_BAD_Y);
  EXPECT_EQ(A::edit_idx_ptr(t.task, 5, 2, null), ORIN_DF_BAD_INDEX);
  EXPECT_EQ(A::edit_idx_ptr(t.task, 5, 1, null), ORIN_DF_BAD_SCOEFF);
  EXPECT_EQ(A::edit_idx_ptr(t.task, 5, 1, t.c + 3), ORIN_DF_OK);
  EXPECT_EQ(t.task->scoeff[1], t.c + 3);
  t.task->scoeff += 1;
  EXPECT_EQ(A::edit_idx_ptr(t.task, 5, -1, t.c + 4), ORIN_DF_OK) << "a negative index is the caller's affair";
  t.task->scoeff -= 1;
  EXPECT_EQ(t.task->scoeff[0], t.c + 4);

  t.task->ny = 0;
  EXPECT_EQ(A::edit_ptr(t.task, 5, t.c), ORIN_DF_BAD_NY);
  t.task->editable = 2;
  EXPECT_EQ(A::edit_ptr(t.task, 99, null), ORIN_DF_OK);
  EXPECT_EQ(A::edit_idx_ptr(t.task, 99, 9, null), ORIN_DF_OK);
  EXPECT_EQ(orin_df_kernel_iEditVal(t.task, 99, 0), ORIN_DF_OK);
}

TYPED_TEST(Task, IntegerEditor) {
  auto& t = *this;
  EXPECT_EQ(orin_df_kernel_iEditVal(nullptr, 14, 2), ORIN_DF_NULL_TASK);
  ASSERT_EQ(t.make(5, t.x, 0, 2, t.y, 0), ORIN_DF_OK);
  const struct {
    int id;
    int64_t DfTask1D::*field;
    std::vector<int64_t> good, bad;
    int32_t refused;
  } rows[] = {
      {14, &DfTask1D::nx, {2, int64_t{1} << 40}, {1, -5, INT64_MIN}, -1004},
      {15, &DfTask1D::xhint, {0, 1, 2, 4}, {3, 5, -1, int64_t{1} << 32}, -1006},
      {16, &DfTask1D::ny, {1, 70}, {0, -1}, -1007},
      {17, &DfTask1D::yhint, {0, 16, 32, 128}, {1, 64, 48}, -1009},
      {18, &DfTask1D::s_order, {0, 9}, {-1}, -1010},
      {19, &DfTask1D::s_type, {0, 1, 2, 3, 4, 5}, {6, -1}, -1011},
      {20, &DfTask1D::ic_type, {0, 1, 2, 8, 12, -8}, {3, 4, 16, int64_t{8} << 32, -9}, -1012},
      {21, &DfTask1D::bc_type, {0, 999}, {-1}, -1014},
      {22, &DfTask1D::scoeffhint, {0, 16, 32, 128}, {2, 144}, -1017},
  };
  for (const auto& row : rows) {
    for (const int64_t value : row.good) {
      EXPECT_EQ(orin_df_kernel_iEditVal(t.task, row.id, value), ORIN_DF_OK) << row.id << ' ' << value;
      EXPECT_EQ(t.task->*row.field, value);
    }
    for (const int64_t value : row.bad) {
      EXPECT_EQ(orin_df_kernel_iEditVal(t.task, row.id, value), row.refused) << row.id << ' ' << value;
      EXPECT_EQ(t.task->*row.field, row.good.back());
    }
  }
  for (const int id : {13, 23, 1, -14}) EXPECT_EQ(orin_df_kernel_iEditVal(t.task, id, 2), ORIN_DF_BAD_ATTRIBUTE);
  EXPECT_EQ(t.task->y[1], t.y + 5) << "no table is rebuilt";
}

TYPED_TEST(Task, MemoryRunsOut) {
  using A = Api<TypeParam>;
  auto& t = *this;
  const long before = faulty_core::live_blocks();
  faulty_core::fail_at(0);
  EXPECT_EQ(t.make(5, t.x, 0, 2, t.y, 0), ORIN_DF_NO_MEMORY);
  EXPECT_EQ(t.task, nullptr);
  faulty_core::fail_at(1);
  EXPECT_EQ(t.make(5, t.x, 0, 2, t.y, 0), ORIN_DF_NO_MEMORY);
  ASSERT_NE(t.task, nullptr) << "the record stays for the caller to delete";
  faulty_core::fail_at(-1);
  ASSERT_EQ(t.make(5, t.x, 0, 2, t.y, 0), ORIN_DF_OK);
  ASSERT_EQ(A::edit_spline(t.task, 2, 0, 0, nullptr, 0, nullptr, t.c, 0), ORIN_DF_OK);

  faulty_core::fail_at(0);
  EXPECT_EQ(A::edit_spline(t.task, 2, 0, 0, nullptr, 0, nullptr, t.c, 16), ORIN_DF_NO_MEMORY);
  EXPECT_TRUE(t.task->scoeff == nullptr && t.task->scoeffhint == 0);
  faulty_core::fail_at(0);
  EXPECT_EQ(A::edit_ptr(t.task, ORIN_DF_SCOEFF, t.c), ORIN_DF_NO_MEMORY);
  faulty_core::fail_at(0);
  EXPECT_EQ(A::edit_ptr(t.task, ORIN_DF_Y, t.y), ORIN_DF_NO_MEMORY);
  EXPECT_EQ(t.task->y, nullptr);
  faulty_core::fail_at(-1);
  t.task->ny = INT64_MAX / 4;
  EXPECT_EQ(A::edit_ptr(t.task, ORIN_DF_Y, t.y), ORIN_DF_NO_MEMORY) << "more entries than there are addresses";

  EXPECT_EQ(orin_df_kernel_DeleteTask(&t.task), ORIN_DF_OK);
  EXPECT_EQ(t.task, nullptr);
  EXPECT_EQ(orin_df_kernel_DeleteTask(&t.task), ORIN_DF_NULL_TASK);
  EXPECT_EQ(faulty_core::live_blocks(), before);
}

}  // namespace

#include "foundation/doublePool.h"

#include <gtest/gtest.h>

#include "foundation/resultCodes.h"

namespace {

TEST(DoublePool, PrefersTheExactThenTheSmallestLargerBlock) {
  KVN_doublePool pool;
  ASSERT_EQ(pool.Configure(3), 0);
  double* ten = pool.Obtain(10);
  double* eight = pool.Obtain(8);
  double* six = pool.Obtain(6);
  double* surplus = pool.Obtain(5);
  pool.Return(10, ten);
  pool.Return(8, eight);
  pool.Return(6, six);
  pool.Return(5, surplus);  // the pool is full: freed
  EXPECT_EQ(pool.GetCount(), 3);
  EXPECT_EQ(pool.Obtain(8), eight) << "exact";
  EXPECT_EQ(pool.GetFirst(), 0);
  EXPECT_EQ(pool.Obtain(7), ten) << "the smallest that is left above 7";
  EXPECT_EQ(pool.GetFirst(), 1);
  double* fresh = pool.Obtain(7);
  EXPECT_NE(fresh, six) << "too small";
  delete[] fresh;
  delete[] ten;
  delete[] eight;
  EXPECT_EQ(pool.Configure(-1), KVN_REFUSED);
  ASSERT_EQ(pool.Configure(0), 0);  // frees the block of 6
  EXPECT_FALSE(pool.IsConfigured());
}

}  // namespace

#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "foundation/dmatrix.h"
#include "foundation/doubleArray.h"
#include "foundation/idArray.h"
#include "foundation/intArray.h"
#include "foundation/stringArray.h"

/// Arrays and tables in one expression. A builder that cannot do its work fails the running test.

inline KVN_intArray IntsOf(const std::vector<int>& values) {
  KVN_intArray made;
  for (int value : values) EXPECT_EQ(made.Add(value), 0);
  return made;
}

inline KVN_doubleArray DoublesOf(const std::vector<double>& values) {
  KVN_doubleArray made;
  for (double value : values) EXPECT_EQ(made.Add(value), 0);
  return made;
}

inline KVN_stringArray StringsOf(const std::vector<const char*>& values) {
  KVN_stringArray made;
  for (const char* value : values) EXPECT_EQ(made.Add(value), 0);
  return made;
}

/// Takes repeats and illegal texts as they come.
inline KVN_idArray IdsOf(const std::vector<const char*>& values) {
  KVN_idArray made;
  for (const char* value : values) {
    EXPECT_EQ(made.KVN_stringArray::Insert(made.GetNumItems(), value), 0);
  }
  return made;
}

/// Table of these sizes with these cells in flat order.
inline KVN_Dmatrix TableOf(const std::vector<int>& sizes, const std::vector<double>& cells) {
  KVN_Dmatrix made;
  EXPECT_EQ(made.Setup(sizes.data(), static_cast<int>(sizes.size())), 0);
  EXPECT_EQ(made.GetSize(), static_cast<int>(cells.size())) << "cells do not fill the table";
  for (int i = 0; i < made.GetSize() && i < static_cast<int>(cells.size()); i++) made[i] = cells[i];
  return made;
}

/// Used items as a vector, for EXPECT_EQ and matchers.
template <typename T, int kInline>
std::vector<T> ItemsOf(const KVN_valueArray<T, kInline>& array) {
  return std::vector<T>(array.GetItems(), array.GetItems() + UsedCount(array));
}

/// All cells in flat order.
inline std::vector<double> CellsIn(const KVN_Dmatrix& table) {
  return std::vector<double>(table.GetData(), table.GetData() + table.GetSize());
}

/// Used items as text, "(null)" for an unset one.
inline std::vector<std::string> TextsOf(const KVN_stringArray& array) {
  std::vector<std::string> texts;
  texts.reserve(UsedCount(array));
  for (int i = 0; i < UsedCount(array); i++) {
    texts.emplace_back(array[i] == nullptr ? "(null)" : array[i]);
  }
  return texts;
}

/// Same count, and every cell within `tolerance`; NaN equals NaN.
inline testing::AssertionResult CellsNear(const KVN_Dmatrix& table,
                                          const std::vector<double>& cells, double tolerance) {
  if (table.GetSize() != static_cast<int>(cells.size())) {
    return testing::AssertionFailure()
           << "table has " << table.GetSize() << " cells, expected " << cells.size();
  }
  for (int i = 0; i < table.GetSize(); i++) {
    const bool near =
        std::isnan(cells[i]) ? std::isnan(table[i]) : std::fabs(table[i] - cells[i]) <= tolerance;
    if (!near) {
      return testing::AssertionFailure()
             << "cell " << i << " is " << table[i] << ", expected " << cells[i];
    }
  }
  return testing::AssertionSuccess();
}

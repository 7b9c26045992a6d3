#include "bridge/propertyEdits.h"

#include <gtest/gtest.h>

#include <string>

#include "network/userProperties.h"

namespace {

std::string KeysOf(const KVN_userProperties& properties) {
  std::string keys;
  for (int i = 0; i < properties.GetCount(); i++) keys += std::string(properties.GetKey(i)) + " ";
  return keys;
}

TEST(RemoveListedProperties, DropsWhatTheListNames) {
  const struct {
    const char* list;
    const char* left;
  } cases[] = {
      {"b", "a c "},
      {"c,,,b,nobody", "a "},
      {",a,", "b c "},
      {" a,b ", "a b c "},  // blanks belong to the key
      {"user_properties,b", "a c "},
      {"", "a b c "},
      {nullptr, "a b c "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.list != nullptr ? c.list : "null");
    KVN_userProperties properties;
    for (const char* key : {"a", "b"}) ASSERT_EQ(properties.AddProperty(key, "x"), 0);
    ASSERT_EQ(properties.AddProperty("user_properties", c.list), 0);
    ASSERT_EQ(properties.AddProperty("c", "x"), 0);
    RemoveListedProperties(properties);
    EXPECT_EQ(KeysOf(properties), c.left);
  }
}

TEST(RemoveListedProperties, LooksAtNinetyNineKeys) {
  KVN_userProperties properties;
  std::string list;
  for (int i = 0; i < 101; i++) {
    const std::string key = "k" + std::to_string(i);
    ASSERT_EQ(properties.AddProperty(key.c_str(), "x"), 0);
    list += key + ",";
  }
  ASSERT_EQ(properties.AddProperty("user_properties", list.c_str()), 0);
  RemoveListedProperties(properties);
  EXPECT_EQ(KeysOf(properties), "k99 k100 ");
}

}  // namespace

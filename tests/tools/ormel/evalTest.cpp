#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ormel/exitCodes.h"
#include "tests/tools/ormel/toolRun.h"

namespace {

ToolRun Eval(const std::vector<std::string>& arguments) { return RunTool({"eval"}, arguments); }

struct ValueCase {
  std::vector<std::string> arguments;
  const char* printed;
  const char* simplified;
  const char* rest;  // of the table
  const char* warning;
};

const char* const kAnotherValue =
    "ormel: warning: the simplified expression has another value: -3\n";

// clang-format off: the rows are ragged.
const ValueCase kValues[] = {
    {{"(1 + x) + 2", "x=0.5"}, "1+x+2", "x+3", "  x = 0.5\nvalue       3.5\n", ""},
    {{"2*a+b", "b=1"}, "2*a+b", "2*a+b", "  a = -\n  b = 1\nvalue       -\n", ""},
    {{"--", "-x^2", "x=-3"}, "-x^2", "-x^2", "  x = -3\nvalue       9\n", ""},
    {{"-2+1/0"}, "-2+1/0", "inf", "value       inf\n", ""},
    {{"x*2", "x=0"}, "x*2", "2*x", "  x = 0\nvalue       0\n", ""},
    {{"x*0", "x=3"}, "x*0", "-x", "  x = 3\nvalue       0\n", kAnotherValue},
    {{"Uniform(0,32767)"}, "Uniform(0,32767)", "Uniform(0,32767)", "sample      38\n", ""},
    {{"Bernoulli(1)*3", "--seed=5"}, "Bernoulli(1)*3", "3*Bernoulli(1)", "sample      3\n", ""},
};
// clang-format on

TEST(Eval, ShowsFormsAndValue) {
  for (const ValueCase& c : kValues) {
    SCOPED_TRACE(c.printed);
    const ToolRun run = Eval(c.arguments);
    EXPECT_EQ(run.code, kExitDone);
    EXPECT_EQ(run.data, "expression  " + std::string(c.printed) + "\nsimplified  " + c.simplified +
                            "\n" + c.rest);
    EXPECT_EQ(run.messages, c.warning);
  }
}

TEST(Eval, SeedsTheSamples) {
  EXPECT_NE(Eval({"Uniform(0,32767)", "--seed=2531011"}).data.find("  7719\n"), std::string::npos);
}

struct ErrorCase {
  std::vector<std::string> arguments;
  const char* messages;  // after "ormel: error: "
};

// clang-format off: the rows are ragged.
const ErrorCase kErrors[] = {
    {{"1 + * 2"}, "Factor expected (position 5)\n  1 + * 2\n      ^\n"},
    {{""}, "Empty expression (position 0)\n  \n  ^\n"},
    {{"a\tb"}, "Invalid expression (position 3)\n  a\\tb\n     ^\n"},
    {{"foo(1)"}, "Unknown function: foo (position 4)\n  foo(1)\n     ^\n"},
    {{"x", "x"}, "NAME=NUMBER expected, not 'x'\n"},
    {{"x", "x=1a"}, "NAME=NUMBER expected, not 'x=1a'\n"},
    {{"Flow", "flow=1"}, "the expression has no variable 'flow'; did you mean 'Flow'?\n"},
    {{"1", "--from", "kvn"}, "eval reads no network: --from and --to have no meaning here\n"},
};
// clang-format on

TEST(Eval, PointsAtErrors) {
  for (const ErrorCase& c : kErrors) {
    SCOPED_TRACE(c.messages);
    const ToolRun run = Eval(c.arguments);
    EXPECT_EQ(run.code, kExitBadUsage);
    EXPECT_EQ(run.data, "");
    EXPECT_EQ(run.messages, "ormel: error: " + std::string(c.messages));
  }
}

TEST(Eval, AnswersInJson) {
  using Json = nlohmann::json;
  const Json good = Json::parse(Eval({"--output", "json", "x/y+z", "x=1", "y=0"}).data);
  EXPECT_EQ(good["simplified"], "x/y+z");
  EXPECT_EQ(good["variables"], (Json{{"x", 1.0}, {"y", 0.0}, {"z", nullptr}}));
  EXPECT_TRUE(good["value"].is_null());
  const Json infinite = Json::parse(Eval({"--output", "json", "0-1/y", "y=0"}).data);
  EXPECT_EQ(infinite["value"], "-inf");
  EXPECT_EQ(infinite["simplifiedValue"], "-inf");
}

TEST(Eval, TellsErrorsInJsonToo) {
  const ToolRun run = Eval({"--output", "json", "(1"});
  const auto answer = nlohmann::json::parse(run.data);
  EXPECT_EQ(answer["error"]["message"], "')' expected");
  EXPECT_EQ(answer["error"]["position"], 2);
  EXPECT_NE(run.messages.find("')' expected"), std::string::npos);
}

}  // namespace

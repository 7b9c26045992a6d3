#include "formats/xml/xmlWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "formats/xml/xmlReader.h"
#include "foundation/numberText.h"
#include "foundation/stringArray.h"
#include "tests/support/scratchFolder.h"

namespace {

const char kDeclaration[] = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n";

/// The file that the calls make, without its first line.
template <typename Calls>
std::string Written(Calls calls) {
  const ScratchFolder folder;
  XmlWriter writer;
  EXPECT_TRUE(writer.Open(folder.Path("f.xml").c_str()));
  calls(writer);
  EXPECT_TRUE(writer.Close());
  std::string text = folder.Read("f.xml");
  EXPECT_EQ(text.substr(0, sizeof kDeclaration - 1), kDeclaration);
  return text.substr(std::min(text.size(), sizeof kDeclaration - 1));
}

TEST(XmlWriter, LaysElementsOut) {
  const std::string text = Written([](XmlWriter& writer) {
    writer.AddAttribute("s", "x y");
    writer.AddAttribute("i", -3);
    writer.AddAttribute("d", 0.1);
    writer.AddAttribute("t", true);
    writer.AddAttribute("f", false);
    writer.AddAttribute("none", static_cast<const char*>(nullptr));
    writer.OpenElement("a");
    writer.OpenElement("b");
    writer.AddAttribute("d", 1.0);
    writer.WriteElement("empty", nullptr, false);
    writer.WriteElement("x", "", false);
    writer.CloseElement("b");
    const double numbers[] = {0.5, KVN_NOT_AVAILABLE_VALUE, 1.0 / 3.0};
    writer.WriteDoubleList("cost", numbers, 3, "n/a", KVN_NOT_AVAILABLE_VALUE);
    writer.WriteDoubleList("plain", numbers, 2);
    writer.WriteDoubleList("none", numbers, 0);
    KVN_stringArray names;
    for (const char* name : {"p", "<q>", static_cast<const char*>(nullptr)}) {
      EXPECT_EQ(names.Add(name), 0);
    }
    writer.WriteStringList("names", names);
    const int ints[] = {2, 0, -1};
    writer.WriteIntList("ints", ints, 3);
    // Nothing without a name goes out, nor what was queued for it.
    writer.AddAttribute(nullptr, 1.0);
    writer.AddAttribute("lost", 1);
    writer.OpenElement(nullptr);
    writer.AddAttribute("lost", 1);
    writer.WriteElement(nullptr, "text", false);
    writer.WriteDoubleList(nullptr, numbers, 3);
    writer.CloseElement(nullptr);
    writer.CloseElement("a");
  });
  EXPECT_EQ(text,
            "<a s=\"x y\" i=\"-3\" d=\"0.1\" t=\"true\" f=\"false\">\n"
            "\t<b>\n"
            "\t\t<empty d=\"1\" />\n"
            "\t\t<x></x>\n"
            "\t</b>\n"
            "\t<cost>0.5 n/a 0.3333333333333333</cost>\n"
            "\t<plain>0.5 8.900295434028806e-308</plain>\n"
            "\t<none></none>\n"
            "\t<names>p &lt;q&gt; (null)</names>\n"
            "\t<ints>2 0 -1</ints>\n"
            "</a>\n");
}

/// Escaped text keeps its line breaks through a load; a carriage return is dropped on purpose.
/// Attributes and plain text only keep markup apart.
TEST(XmlWriter, EscapesText) {
  const char text[] = "a<>&\"'\t\n\r\\n\xE9";
  const std::string written = Written([&](XmlWriter& writer) {
    writer.AddAttribute("a", text);
    writer.WriteElement("e", text, true);
    writer.WriteElement("p", text, false);
  });
  const std::string markup = "a&lt;&gt;&amp;&quot;&apos;";
  EXPECT_EQ(written, "<e a=\"" + markup + "\t\n\r\\n\xE9\">" + markup + "\\t\\n\\\\n\xE9</e>\n<p>" +
                         markup + "\t\n\r\\n\xE9</p>\n");
}

TEST(XmlWriter, TellsOfFailuresAtOpenAndClose) {
  const ScratchFolder folder;
  XmlWriter writer;
  EXPECT_FALSE(writer.Open(folder.Path("no/such/folder.xml").c_str()));
  EXPECT_FALSE(writer.Open(nullptr));
  // A file that is never closed is not half of a file.
  const std::string path = folder.Write("f.xml", "old");
  for (const char* next : {"f.xml", "g.xml"}) {
    XmlWriter abandoned;
    ASSERT_TRUE(abandoned.Open(path.c_str()));
    abandoned.OpenElement("e");
    EXPECT_TRUE(abandoned.Open(folder.Path(next).c_str()));
  }
  EXPECT_EQ(folder.Read("f.xml"), "old");
  EXPECT_EQ(folder.CountEntries(), 1);
  ASSERT_TRUE(writer.Open("/dev/full"));
  writer.WriteElement("e", std::string(1 << 20, 'x').c_str(), false);
  EXPECT_FALSE(writer.Close());
}

}  // namespace

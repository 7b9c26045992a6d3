#include "formats/xml/xmlReader.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "formats/xml/xmlErrorHandler.h"
#include "formats/xml/xmlHandler.h"
#include "formats/xml/xmlText.h"
#include "tests/support/logWatch.h"
#include "tests/support/scratchFolder.h"

namespace {

using Strings = std::vector<std::string>;

/// A loader of `r`, with children `list` (words, once at most), `text` (any number, with a child
/// `leaf` that is required) and `loop` (itself below itself). It writes down what it hears.
class Probe : public XmlReader, public XmlErrorHandler {
 public:
  explicit Probe(int rootOptions) : root("r", rootOptions, *this, &Probe::StartRoot) {
    root.AddAttribute("version", /*required=*/true);
    root.AddAttribute("i", false);
    root.AddAttribute("d", false);
    root.AddAttribute("b", false);
    root.AddChild(list, KVN_XML_ONCE);
    root.AddChild(text, KVN_XML_MANY);
    root.AddChild(loop, KVN_XML_ONE_OR_MORE);
    text.AddAttribute("id", false);
    text.AddChild(leaf, KVN_XML_REQUIRED);
    loop.AddChild(loop, KVN_XML_MANY);
  }

  bool Load(const std::string& path) {
    SetFileName("F");
    const bool parsed = Parse(path.c_str(), root, this);
    if (parsed) ReportUnknownContent();
    return parsed;
  }

  /// What a message costs in memory may be too much.
  void OnError(const char* message, int line, int column) override {
    if (std::string(message).find("'heavy'") != std::string::npos) throw std::bad_alloc();
    XmlErrorHandler::OnError(message, line, column);
  }

  Strings events;

 private:
  void StartRoot() {
    std::string version;
    GetAttribute("version", version);
    int i = 0;
    double d = 0.0;
    bool b = false;
    if (CheckVersion(version, "1.0") && GetAttribute("i", i, 7) && GetAttribute("d", d, 0.5) &&
        GetAttribute("b", b, true)) {
      events.push_back(FormatText("r %d %g %s", i, d, b ? "yes" : "no"));
    }
  }
  void StartList() { events.emplace_back("list"); }
  void EndList() { events.emplace_back("/list"); }
  void Word() {
    if (std::string(GetText()) == "stop") {
      AbortWith("Stopped");
      AbortWith("Stopped again");  // which nobody is to hear of
    }
    if (std::string(GetText()) == "heavy") throw std::bad_alloc();
    events.emplace_back(GetText());
  }
  void StartText() {
    std::string id;
    events.emplace_back(GetAttribute("id", id) ? "text " + id : "text");
  }
  void EndText() {
    std::string plain;
    GetUnescapedText(plain);
    std::string id = "gone";
    EXPECT_FALSE(GetAttribute("id", id)) << "attributes are there at the start only";
    events.push_back("/text " + plain);
  }

  using Handler = XmlHandler<Probe>;
  Handler root;
  Handler list{"list", KVN_XML_INHERIT, *this, &Probe::StartList, &Probe::EndList, &Probe::Word};
  Handler text{"text", KVN_XML_INHERIT, *this, &Probe::StartText, &Probe::EndText};
  Handler leaf{"leaf", KVN_XML_STRICT, *this};
  Handler loop{"loop", KVN_XML_INHERIT, *this};
};

/// Reads a document and compares what the loader heard and what the log was told.
void ExpectLoad(const std::string& document, int options, bool loads, const Strings& events,
                const Strings& messages) {
  SCOPED_TRACE(document.substr(0, 200));
  const ScratchFolder folder;
  const LogWatch log;
  Probe probe(options);
  EXPECT_EQ(probe.Load(folder.Write("f.xml", document)), loads);
  EXPECT_EQ(probe.events, events);
  EXPECT_EQ(log.Texts(), messages);
}

std::string Error(int line, int column, const std::string& text) {
  return FormatText("Error at %d, %d while loading F: %s", line, column, text.c_str());
}

const char kAdvice[] =
    "Please download most recent version of ORMEL/VUSTA from:\nhttps://ormel.example/download";

TEST(XmlReader, DeliversElementsWordsAndText) {
  ExpectLoad(
      "<r version='1.0' i='12' d='2.5' b='false'><list> 0.1\n 0.2\t3 </list>"
      "<text id='x'>a\\tb\\n\\\\\\q&lt;<leaf/> c\\</text><loop/><text><leaf/></text></r>",
      KVN_XML_INHERIT, true,
      {"r 12 2.5 no", "list", "0.1", "0.2", "3", "/list", "text x", "/text a\tb\n\\q< c", "text",
       "/text "},
      {});
}

struct ErrorCase {
  const char* document;
  int line, column;
  const char* message;
};

/// What ends a load. The column counts from 0 and is that of the tag's first character, or of what
/// follows an empty element or the text of an entity.
TEST(XmlReader, RefusesWithLineAndColumn) {
  const ErrorCase cases[] = {
      {"<s/>", 1, 0, "Unknown root element 's', expected 'r'"},
      {"<r/>", 1, 0, "Required attribute 'version' not found in element 'r'"},
      {"<r version='1' q='1'/>", 1, 0, "Unknown attribute 'q' in element 'r'"},
      {"<r version='1'>\n <q/></r>", 2, 1, "Unknown element 'q' in 'r'"},
      {"<r version='1'><loop/></r >x", 1, 27, "junk after document element"},
      {"<r version='1'><list/><list/></r>", 1, 22,
       "Multiple occurences of 'list' not allowed in 'r'"},
      {"<r version='1'>\n</r>", 2, 0, "Required element 'loop' not present in element 'r'"},
      {"<r version='1'><text/></r>", 1, 22,
       "Required element 'leaf' not present in element 'text'"},
      {"<r version='1' i='abc'/>", 1, 0, "Integer value expected for attribute 'i'"},
      {"<r version='1' i='0abc'/>", 1, 0, "Integer value expected for attribute 'i'"},
      {"<r version='1' d='.x'/>", 1, 0, "Floating point value expected for attribute 'd'"},
      {"<r version='1' b='True'/>", 1, 0,
       "'true' or 'false' expected as value of boolean attribute 'b'"},
      {"<r version='1'><list>1 2\n 3 stop 4</list>", 2, 0, "Stopped"},
      {"<r version='1'><list>1 heavy 2 stop</list>", 1, 35, "out of memory"},
      {"<!DOCTYPE r [<!ATTLIST r heavy CDATA 'x'>]><r version='1'/>", 1, 37, "out of memory"},
      {"<!DOCTYPE r [<!ENTITY heavy SYSTEM 'x'>]><r version='1'/>", 1, 38, "out of memory"},
      {"<!DOCTYPE r SYSTEM 'x'><r version='1'>&heavy;</r>", 1, 45, "out of memory"},
      {"<r version='1' version='1'/>", 1, 15, "duplicate attribute"},
      {"<r version='1'><loop></r>", 1, 23, "mismatched tag"},
      {"", 1, 0, "no element found"},
      {"<r version='1'><text>\xC3(</text></r>", 1, 21, "not well-formed (invalid token)"},
      {"<?xml version='1.0' encoding='no-such'?><r/>", 1, 30, "unknown encoding"},
      {"<r version='1'>&x;</r>", 1, 15, "undefined entity"},
      {"<!DOCTYPE r SYSTEM 'http://x.invalid/d'><r version='1'>&x;</r>", 1, 55,
       "Undefined entity 'x'"},
      {"<!DOCTYPE r [<!ENTITY x SYSTEM '/etc/passwd'>]><r version='1'>&x;</r>", 1, 44,
       "Entity 'x' must not refer to files or other entities"},
      {"<!DOCTYPE r [<!ENTITY a 'x'><!ENTITY b '&a;&a;'>]><r version='1'>&b;</r>", 1, 39,
       "Entity 'b' must not refer to files or other entities"},
  };
  for (const ErrorCase& c : cases) {
    SCOPED_TRACE(c.document);
    const ScratchFolder folder;
    const LogWatch log;
    Probe probe(KVN_XML_INHERIT);
    EXPECT_FALSE(probe.Load(folder.Write("f.xml", c.document)));
    EXPECT_EQ(log.Texts(), Strings({Error(c.line, c.column, c.message)}));
    EXPECT_EQ(log.Codes(), std::vector<int>({-103}));
  }
}

TEST(XmlReader, NamesAFileThatCannotBeRead) {
  const ScratchFolder folder;
  const std::string missing = folder.Path("none.xml");
  const LogWatch log;
  Probe probe(KVN_XML_STRICT);
  EXPECT_FALSE(probe.Load(missing));
  EXPECT_FALSE(Probe(KVN_XML_STRICT).Load(folder.Path("")));
  EXPECT_EQ(log.Texts(), Strings({Error(0, 0, "Can't open file " + missing),
                                  Error(1, 0, "Can't read file " + folder.Path(""))}));
}

/// Only the first message stands: what follows in the same block is neither delivered nor judged.
TEST(XmlReader, StopsAtTheFirstError) {
  ExpectLoad("<r version='1'><list>stop x</list><text>a</list></r>", KVN_XML_STRICT, false,
             {"r 7 0.5 yes", "list", "stop"}, {Error(1, 21, "Stopped")});
}

TEST(XmlReader, SkipsUnknownContentWithOneWarningEach) {
  ExpectLoad(
      "<r version='1.0' q='1'>\n<new><list>1</list><newer/>words</new><list>1</list>\n"
      "<loop/></r>",
      KVN_XML_TOLERANT, true, {"r 7 0.5 yes", "list", "1", "/list"},
      {"Warning: Ignored unknown attribute 'q' in 'r' at 1, 0 while loading F",
       "Warning: Ignored unknown element 'new' at 2, 0 while loading F",
       std::string("File contains unknown elements and/or attributes. ") + kAdvice});
}

/// A child's own options count before those of the element around it.
TEST(XmlReader, OptionsAreInheritedUnlessSet) {
  ExpectLoad("<r version='1'><text><leaf q='1'/></text></r>", KVN_XML_TOLERANT, false,
             {"r 7 0.5 yes", "text"}, {Error(1, 21, "Unknown attribute 'q' in element 'leaf'")});
  ExpectLoad("<r version='1'><loop><q/></loop></r>", KVN_XML_STRICT_ATTRIBUTES, true,
             {"r 7 0.5 yes"},
             {"Warning: Ignored unknown element 'q' at 1, 21 while loading F",
              std::string("File contains unknown elements and/or attributes. ") + kAdvice});
}

TEST(XmlReader, RefusesNewerVersionsOnly) {
  for (const char* version : {"1.0", "0.9", "1", "", "new"}) {
    ExpectLoad(FormatText("<r version='%s'><loop/></r>", version), KVN_XML_STRICT, true,
               {"r 7 0.5 yes"}, {});
  }
  ExpectLoad("<r version='1.1'><loop/></r>", KVN_XML_STRICT, false, {},
             {Error(1, 0, std::string("Invalid version number '1.1', expected 1.0\n") + kAdvice)});
}

/// Numbers in attributes are read as far as they go, unless that gives zero.
TEST(XmlReader, NumbersInAttributesAreReadLoosely) {
  const struct {
    const char *attributes, *event;
  } cases[] = {
      {"i='12abc' d='1.5x'", "r 12 1.5 yes"},
      {"i='' d=''", "r 0 0 yes"},
      {"i=' 3' d='-2e1'", "r 3 -20 yes"},
      {"i='99999999999' d='0.0'", "r 2147483647 0 yes"},
      {"i='-99999999999' d='inf'", "r -2147483648 inf yes"},
  };
  for (const auto& c : cases) {
    ExpectLoad(FormatText("<r version='1' %s><loop/></r>", c.attributes), KVN_XML_STRICT, true,
               {c.event}, {});
  }
}

/// The reader's blocks have 4,096 bytes: a word or a character that is cut by their seam comes in
/// one piece.
TEST(XmlReader, WordsCrossTheSeamOfBlocks) {
  const std::string head = "<r version='1'><list>";
  for (int shift = 0; shift < 12; shift++) {
    const std::string blanks(4096 - head.size() - static_cast<std::size_t>(shift), ' ');
    ExpectLoad(head + blanks + "0.125 \xC3\xA9t\xC3\xA9 7</list><loop/></r>", KVN_XML_STRICT, true,
               {"r 7 0.5 yes", "list", "0.125", "\xE9t\xE9", "7", "/list"}, {});
  }
}

TEST(XmlReader, TextIsKeptInEightBits) {
  const struct {
    const char *utf8, *text;
  } cases[] = {
      {"plain \x7F", "plain \x7F"},
      {"\xC3\xA9", "\xE9"},
      {"\xE2\x82\xAC", "?"},  // the euro sign
      {"\xF0\x9F\x98\x80!", "?!"},
      {"a\xC3z", "az"},  // broken off by the z, which stays
      {"a\xE2\x82\xC3\xA9", "a\xE9"},
      {"\x80\xBFz", "z"},  // continuation bytes without a lead
      {"\xC3", ""},
      {"\xC1\xA1\xE0\x83\xA9", "a\xE9"},  // longer than need be: by value
      {"\xF8\x80\x80\x81\x81", "A"},
      {"\xFC\x80\x80\x80\x83\xA9", "\xE9"},
  };
  for (const auto& c : cases) {
    std::string text = c.utf8;
    TranscodeUtf8(text);
    EXPECT_STREQ(text.c_str(), c.text) << testing::PrintToString(c.utf8);
  }
  // Attributes take the same way, and the declared encoding is heeded.
  ExpectLoad(
      "<?xml version='1.0' encoding='ISO-8859-1'?><r version='1'><text id='\xE9&#8364;'>"
      "\xE9<leaf/></text><loop/></r>",
      KVN_XML_STRICT, true, {"r 7 0.5 yes", "text \xE9?", "/text \xE9"}, {});
}

/// A binding from CreateBinding, with the callbacks of an object that isn't the reader.
class Listener {
 public:
  void Start(IXmlReader& reader) {
    reader.GetAttribute("a", value, -1);
    reader.GetAttribute(nullptr, absent, -1);
  }
  void Text(IXmlReader& reader) { words.emplace_back(reader.GetText()); }
  int value = 0, absent = 0;
  Strings words;
};

TEST(XmlReader, DelegatesToAnotherObject) {
  Listener listener;
  XmlDelegator<Listener> delegator(listener, &Listener::Start, nullptr, &Listener::Text);
  XmlReader reader;
  IXmlReader& interface = reader;
  IXmlBinding* root = interface.CreateBinding("root", KVN_XML_STRICT, &delegator);
  root->AddAttribute("a", true);
  const ScratchFolder folder;
  const std::string path = folder.Write("f.xml", "<root a='3'>one two</root>");
  EXPECT_TRUE(interface.Parse(path.c_str(), *root, nullptr));
  EXPECT_EQ(listener.value, 3);
  EXPECT_EQ(listener.absent, -1);
  EXPECT_EQ(listener.words, Strings({"one", "two"}));
  // Without an error handler a failure is just false.
  const std::string other = folder.Write("g.xml", "<other/>");
  EXPECT_FALSE(interface.Parse(other.c_str(), *root, nullptr));
  root->Release();
}

/// Nesting costs neither stack nor a message a level, known or not.
TEST(XmlReader, TakesDeepNesting) {
  std::string nested = "<r version='1'>";
  for (const std::string name : {"x", "loop"}) {
    for (int i = 0; i < 50000; i++) nested += "<" + name + ">";
    for (int i = 0; i < 50000; i++) nested += "</" + name + ">";
  }
  const ScratchFolder folder;
  const LogWatch log;
  Probe probe(KVN_XML_TOLERANT);
  EXPECT_TRUE(probe.Load(folder.Write("f.xml", nested + "</r>")));
  EXPECT_EQ(log.Texts().size(), 2u);
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "network/fileSpeaker.h"
#include "network/header.h"
#include "network/node.h"
#include "network/nodeInfo.h"
#include "tests/formats/text/foreignFiles.h"

namespace {

using std::string_literals::operator""s;
using testing::ElementsAre;
using testing::IsEmpty;

const char* NameOf(KVN_network& network, const char* id) {
  return network.GetNode(network.FindNode(id))->Info().Header().GetName();
}

// What the programs of others put into such files, in one of them: a prolog with an address, a
// quote and letters that are no tokens, a name space, properties in odd places, names that are no
// identifiers, a "<" in a text, an entity, blanks where they please.
const char* const kDiagram =
    "\xef\xbb\xbf  <?xml version='1.0' encoding=\"US-ASCII\"?>\n"
    R"(<!-- made by "someone, see http://a.example/ "\xe9t\xe9 <BIF VERSION="0.2"> -->
<!DOCTYPE BIF [ <!ELEMENT BIF ( NETWORK )*> <!ATTLIST BIF VERSION CDATA #REQUIRED> ]>
<BIF VERSION='0.3' xmlns="http://www.a.example/ns" xsi:schemaLocation="a b">
<NETWORK><PROPERTY></PROPERTY><PROPERTY/>
  <NAME>Fire </NAME>
  <VARIABLE TYPE="nature"> <NAME>light-on</NAME>
    <OUTCOME><9</OUTCOME> <OUTCOME>&lt;10 &amp; more</OUTCOME>
    <PROPERTY>position = (73.5, 50.8)</PROPERTY> <OUTCOME>0</OUTCOME>
  </VARIABLE>
  <VARIABLE> <NAME>OR:f(c,s)|p, q</NAME> <OUTCOME>on</OUTCOME> <OUTCOME>off</OUTCOME> </VARIABLE>
  <VARIABLE TYPE="decision"><NAME>Leave</NAME><OUTCOME>go</OUTCOME><OUTCOME>stay</OUTCOME></VARIABLE>
  <VARIABLE TYPE="utility"><NAME>Gain</NAME></VARIABLE>
  <DEFINITION> <PROPERTY>x</PROPERTY> <FOR>light-on</FOR> <TABLE> 1.0E-1	.5
     4e-1 </TABLE> </DEFINITION>
  <DEFINITION>
    <TABLE> 1 0
      0.25 0.75 0.5 0.5 </TABLE>
    <GIVEN> light-on </GIVEN> <FOR>OR:f(c,s)|p, q</FOR> <FOR>OR:f(c,s)|p, q</FOR>
  </DEFINITION>
  <DEFINITION> <FOR>Leave</FOR> <GIVEN>light_on</GIVEN> </DEFINITION>
  <DEFINITION> <FOR>Gain</FOR> <GIVEN>light-on</GIVEN> <GIVEN>Leave</GIVEN>
    <TABLE>-1 2 -3 4.5 5 6</TABLE> </DEFINITION>
</NETWORK> </BIF>)";

TEST(XmlSpeaker, ReadsAnInfluenceDiagram) {
  KVN_network network;
  EXPECT_THAT(ReadText(network, "xml03", kDiagram), IsEmpty());

  EXPECT_STREQ(network.Header().GetName(), "Fire");
  EXPECT_STREQ(network.Header().GetId(), "Fire");
  EXPECT_EQ(network.GetNumberOfNodes(), 4);
  EXPECT_STREQ(NameOf(network, "light_on"), "light-on");
  EXPECT_STREQ(NameOf(network, "OR_f_c_s__p__q"), "OR:f(c,s)|p, q");
  EXPECT_THAT(StatesOf(network, "light_on"), ElementsAre("x_9", "x_10___more", "x0"));
  EXPECT_THAT(StatesOf(network, "Leave"), ElementsAre("go", "stay"));
  EXPECT_EQ(network.TypeOf(network.FindNode("Leave")), KVN_TYPE_LIST);
  EXPECT_EQ(network.TypeOf(network.FindNode("Gain")), KVN_TYPE_TABLE);
  EXPECT_EQ(network.GetNumberOfParents(network.FindNode("Leave")), 1);
  EXPECT_THAT(CellsOf(network, "light_on"), ElementsAre(0.1, 0.5, 0.4));
  EXPECT_THAT(CellsOf(network, "OR_f_c_s__p__q"), ElementsAre(1, 0, 0.25, 0.75, 0.5, 0.5));
  EXPECT_THAT(CellsOf(network, "Gain"), ElementsAre(-1, 2, -3, 4.5, 5, 6));
}

// How a text is laid out is no part of it, and a network may be called anything behind an "@".
TEST(XmlSpeaker, ReadsBackTheNamesOfNetworks) {
  const struct {
    const char* text;
    const char* id;
  } cases[] = {
      {"\n  plain\t", "plain"},
      {"@two\n\t lines  of it\r\n", "@two lines of it"},
      {"@a<;/b &lt;/NAME> &amp;lt; &quot;", "@a<;/b </NAME> &lt; \""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    KVN_network network;
    const std::string text =
        std::string("<BIF VERSION=\"0.3\"><NETWORK><NAME>") + c.text + "</NAME></NETWORK></BIF>";
    EXPECT_THAT(ReadText(network, "xml03", text), IsEmpty());
    EXPECT_STREQ(network.Header().GetId(), c.id);
    KVN_network copy;
    EXPECT_THAT(ReadText(copy, "xml03", WrittenText(network, "xml03")), IsEmpty());
    EXPECT_STREQ(copy.Header().GetId(), c.id);
  }
}

const std::string kHead = "<BIF VERSION=\"0.3\"><NETWORK><NAME>n</NAME>\n";
const std::string kTail = "</NETWORK></BIF>\n";
// A has two states, B three.
const std::string kTwoNodes =
    kHead +
    "<VARIABLE><NAME>A</NAME><OUTCOME>a</OUTCOME><OUTCOME>b</OUTCOME></VARIABLE>"
    "<VARIABLE><NAME>B</NAME><OUTCOME>a</OUTCOME><OUTCOME>b</OUTCOME><OUTCOME>c</OUTCOME>"
    "</VARIABLE>\n";

// Files of other dialects, and of no dialect, end at once.
TEST(XmlSpeaker, RefusesOtherVersionsAndFilesWithoutTheStartTag) {
  const std::string body = "<NETWORK><VARIABLE><NAME>A</NAME></VARIABLE></NETWORK></BIF>";
  for (const char* tag : {"<BIF>", "<BIF VERSION=\"0.2\">", "<BIF VERSION='0.30'>"}) {
    ExpectMessages("xml03", "<?XML VERSION=\"1.0\"?>\n" + (tag + body), 0,
                   {"2 Incorrect BIF Version"}, KVN_REFUSED);
  }
  for (const char* tag : {"", "<BIFF VERSION=\"0.3\">", "<mstns:BIF VERSION=\"0\">",
                          "<xbifns:XMLBIF version=\"0.5\">", "<!-- <BIF VERSION=\"0.3\">"}) {
    ExpectMessages("xml03", tag + body, 0, {"1 End of File : Expecting 'BIF'"}, KVN_SYNTAX_ERROR);
  }
  ExpectMessages("xml03", "<BIF VERSION=0.3>", 0, {"1 '0.3' : String expected"}, KVN_SYNTAX_ERROR);
  ExpectMessages("xml03", "<BIF VERSION=\"0.3\"", 0, {"1 End of File : Expecting '>'"},
                 KVN_SYNTAX_ERROR);
}

/// What is told of these elements of a network.
void ExpectTold(const std::string& elements, int nodes, const std::vector<std::string>& messages) {
  ExpectMessages("xml03", kHead + elements + kTail, nodes, messages);
}

TEST(XmlSpeaker, TellsWhatIsWrongWithTheNetwork) {
  // A comment costs a message each.
  ExpectTold("<!-- a \"b -->\n<!- c ->\n<VARIABLE/>", 1,
             {"2 '!' : Misplaced statement", "3 '!' : Misplaced statement"});
  ExpectTold("<TABLE>1</TABLE>\n<FOO>a</FOO>", 0,
             {"2 'TABLE' : Misplaced statement", "3 'FOO' : Unknown Net Field"});
  ExpectTold("abc <PROPERTY>a</PROPERTY>\n<VARIABLE/>", 1, {"2 'abc' : '<' expected"});
  ExpectTold("<FOR/><FOO/>\n<VARIABLE><BAR/><NAME>A</NAME></VARIABLE>", 1,
             {"2 'FOR' : Misplaced statement", "2 'FOO' : Unknown Net Field",
              "3 'BAR' : Unknown Node Field"});
  ExpectTold("<VARIABLE><NAME>n</NAME></VARIABLE>", 1, {"2 [n] Duplicated Identifier"});
  ExpectTold("<VARIABLE><NAME>A</NAME>\n<VARIABLE><NAME>B</NAME>\n", 2,
             {"3 'VARIABLE' : Misplaced statement", "4 'NETWORK' : Misplaced statement"});
  ExpectTold("</FOO>\n<VARIABLE/>", 1, {"2 'FOO' : Misplaced statement"});
  ExpectMessages("xml03", kTwoNodes, 2, {"2 End of File : Expecting '<'"});
  ExpectMessages("xml03", "<BIF VERSION=\"0.3\">\n<NAME>x</NAME></BIF>", 0,
                 {"2 'NAME' : Misplaced statement"});
  const std::string start = "<BIF VERSION=\"0.3\"><NETWORK>\n<NAME>";
  const std::string end = "</NAME>" + kTail;
  ExpectMessages("xml03", start + "a-b" + end, 0, {"2 'a-b' : Illegal identifier"});
  ExpectMessages("xml03", start + " " + end, 0, {"2 '' : Illegal identifier"});
  ExpectMessages("xml03", start + "a \0b"s + end, 0, {"2 'a ' : Text with a null character"});
}

TEST(XmlSpeaker, TellsWhatIsWrongWithAVariable) {
  ExpectTold("<VARIABLE TYPE=\"discrete\"><NAME>A</NAME>\n</VARIABLE>\n<VARIABLE/>", 1,
             {"2 discrete : Unknown node type"});
  ExpectTold(
      "<VARIABLE><NAME>A</NAME></VARIABLE>\n<VARIABLE><NAME>A</NAME></VARIABLE>\n"
      "<VARIABLE><NAME> </NAME></VARIABLE>",
      3, {"3 [A] Duplicated Identifier", "4 '' : Illegal identifier"});
  ExpectTold("<VARIABLE><OUTCOME>a</OUTCOME>\n<OUTCOME></OUTCOME></VARIABLE>", 1,
             {"3  : Invalid outcome name", "3 Node (\"Node0\") : Two states needed, one added"});
  ExpectTold("<VARIABLE TYPE=\"utility\"><OUTCOME>0</OUTCOME>\n</VARIABLE>", 1,
             {"3 Invalid Outcomes"});
  ExpectTold("<VARIABLE><TYPE>discrete</TYPE>\n<VALUE>a</VALUE></VARIABLE>", 1,
             {"2 'TYPE' : Unknown Node Field", "3 'VALUE' : Unknown Node Field"});
  ExpectTold("<VARIABLE><NAME>A</OUTCOME>\n</VARIABLE>", 1, {"2 'OUTCOME' : 'NAME' expected"});
}

TEST(XmlSpeaker, TellsWhatIsWrongWithADefinition) {
  const auto told = [](const std::string& content, const std::vector<std::string>& messages) {
    ExpectMessages("xml03", kTwoNodes + "<DEFINITION>" + content + "</DEFINITION>" + kTail, 2,
                   messages);
  };
  told("<FOR>X</FOR>\n<GIVEN>Y</GIVEN>", {"3 X : Node not found", "4 Y : Invalid parent"});
  told("<FOR>A</FOR>\n<FOR>B</FOR><TABLE>0 1</TABLE>", {"4 B : Extra [FOR] entry. Ignored."});
  told("<TABLE>0 1</TABLE>\n", {"4 [FOR] entry missing. Ignored."});
  told("<FOR>A</FOR><GIVEN>A</GIVEN>\n<GIVEN>B</GIVEN><GIVEN>B</GIVEN>",
       {"4 Couldn't add arc from node [A] to node [A]",
        "4 Couldn't add arc from node [B] to node [A]"});
  told("<FOR>A</FOR><TABLE>1</TABLE>\n", {"4 Node [A] was expecting 2 numbers but 1 were read"});
  told("<FOR>B</FOR><TABLE>\n1 0 0 0</TABLE>",
       {"4 Node [B] was expecting 3 numbers but 4 were read"});
  told("<FOR>B</FOR><TABLE></TABLE>", {"3 Node [B] was expecting 3 numbers but 0 were read"});
  told("<FOR>B</FOR><TABLE>1 0 nan</TABLE>\n", {"3 'nan' : Real Number expected"});
  told("<FOR>B</FOR><TABLE>1. 0 0</TABLE>", {"3 '1.' : Real Number expected"});
  told("<FOR>B</FOR><TABLE>1 <!-- a, \"b --> 0\n<!-- 3 --> 0</TABLE>",
       {"3 '!' : Misplaced statement", "4 '!' : Misplaced statement"});
  told("<FOR>B</FOR><TABLE>1 <B>0</B> 0</TABLE>",
       {"3 'B' : Unknown Definition Field", "3 '0' : '<' expected"});
  told("<FOR>B</FOR>\n<VALUES>1 0 0</VALUES>", {"4 'VALUES' : Unknown Definition Field"});
  told("<FOR>A</FOR><GIVEN>B</GIVEN><TABLE>0.9 0.2 0.25 0.1 0.8 0.75</TABLE>",
       {"3 Node [A] : No row of the table sums to 1 but every column does. It may have the states "
        "of the node slowest"});
  ExpectTold(
      "<VARIABLE TYPE='decision'><NAME>D</NAME></VARIABLE>"
      "<DEFINITION><FOR>D</FOR><TABLE>1 0</TABLE></DEFINITION>",
      1, {"2 Node [D] was expecting 0 numbers but 2 were read"});
}

// Without its end tag a table must not swallow the one of its definition: the elements of the next
// definition would go to the wrong node.
TEST(XmlSpeaker, EndsADefinitionWhoseTableHasNoEnd) {
  for (const char* end : {"</DEFINITION>", ""}) {
    SCOPED_TRACE(end);
    KVN_network network;
    const std::vector<std::string> messages = ReadText(
        network, "xml03",
        kTwoNodes + "<DEFINITION><FOR>A</FOR><TABLE>1 0\n" + end +
            "<DEFINITION><FOR>B</FOR><GIVEN>A</GIVEN><TABLE>1 0 0 0 0 1</TABLE></DEFINITION>" +
            kTail);
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(ShortMessage(messages[0]), "4 'DEFINITION' : 'TABLE' expected");
    EXPECT_THAT(ParentsOf(network, "A"), IsEmpty());
    EXPECT_THAT(CellsOf(network, "A"), ElementsAre(0.5, 0.5));
    EXPECT_THAT(ParentsOf(network, "B"), ElementsAre("A"));
    EXPECT_THAT(CellsOf(network, "B"), ElementsAre(1, 0, 0, 0, 0, 1));
  }
}

// The first definition of a node has given it its arcs; the last one has the numbers.
TEST(XmlSpeaker, TakesTheNumbersOfTheLastDefinition) {
  KVN_network network;
  EXPECT_THAT(ReadText(network, "xml03",
                       kTwoNodes + "<DEFINITION><FOR>A</FOR><TABLE>1 0</TABLE></DEFINITION>" +
                           "<DEFINITION><FOR>A</FOR><TABLE>0.25 0.75</TABLE></DEFINITION>" + kTail),
              IsEmpty());
  EXPECT_THAT(CellsOf(network, "A"), ElementsAre(0.25, 0.75));
}

TEST(XmlSpeaker, WritesItsDocument) {
  KVN_network network;
  ASSERT_EQ(network.Header().SetId("Net"), 0);
  const int a = AddCpt(network, "A", 2, {}, {0.25, 0.75});
  const int d = AddNodeBelow(network, KVN_TYPE_LIST, "D", 2, {a});
  WriteCells(network, AddNodeBelow(network, KVN_TYPE_TABLE, "U", 0, {a, d}), {1, -2, 1e-9, 40000});
  const std::string text = WrittenText(network, "xml03");
  EXPECT_EQ(text, R"(<?XML VERSION="1.0"?>
<!--
	Bayesian network in XMLBIF v0.3 (BayesNet Interchange Format)
	Produced by ORMEL/VUSTA (http://ormel.example/)
-->

<!-- DTD for the XMLBIF 0.3 format -->
<!DOCTYPE BIF [
	<!ELEMENT BIF ( NETWORK )*>
	      <!ATTLIST BIF VERSION CDATA #REQUIRED>
	<!ELEMENT NETWORK ( NAME, ( PROPERTY | VARIABLE | DEFINITION )* )>
	<!ELEMENT NAME (#PCDATA)>
	<!ELEMENT VARIABLE ( NAME, ( OUTCOME |  PROPERTY )* ) >
	      <!ATTLIST VARIABLE TYPE (chance|decision|utility) chance>
	<!ELEMENT OUTCOME (#PCDATA)>
	<!ELEMENT DEFINITION ( FOR | GIVEN | TABLE | PROPERTY )* >
	<!ELEMENT FOR (#PCDATA)>
	<!ELEMENT GIVEN (#PCDATA)>
	<!ELEMENT TABLE (#PCDATA)>
	<!ELEMENT PROPERTY (#PCDATA)>
]>

<BIF VERSION="0.3">
<NETWORK>
 <NAME>Net</NAME>
 <VARIABLE TYPE="chance">
  <NAME>A</NAME>
  <OUTCOME>State0</OUTCOME>
  <OUTCOME>State1</OUTCOME>
 </VARIABLE>
 <VARIABLE TYPE="decision">
  <NAME>D</NAME>
  <OUTCOME>Choice0</OUTCOME>
  <OUTCOME>Choice1</OUTCOME>
 </VARIABLE>
 <VARIABLE TYPE="utility">
  <NAME>U</NAME>
 </VARIABLE>
 <DEFINITION>
  <FOR>A</FOR>
  <TABLE>
   0.25000000 0.75000000 
  </TABLE>
 </DEFINITION>
 <DEFINITION>
  <FOR>D</FOR>
  <GIVEN>A</GIVEN>
 </DEFINITION>
 <DEFINITION>
  <FOR>U</FOR>
  <GIVEN>A</GIVEN>
  <GIVEN>D</GIVEN>
  <TABLE>
   1.00000000 -2.00000000 0.00000000 40000.00000000 
  </TABLE>
 </DEFINITION>
</NETWORK>
</BIF>
)");
}

TEST(XmlSpeaker, TellsOfANodeThatItHasNoWordFor) {
  KVN_network network;
  ASSERT_GE(network.AddNode(KVN_TYPE_EQUATION, "E"), 0);
  const LogWatch log;
  EXPECT_THAT(WrittenText(network, "xml03"),
              testing::HasSubstr("<VARIABLE TYPE=\"Unknown\">\n  <NAME>E</NAME>"));
  EXPECT_THAT(log.Texts(), ElementsAre("ERROR: Unsupported node type"));
}

TEST(XmlSpeaker, ReadsBackWhatItWrites) {
  std::vector<int> kinds = RandomNetworkOptions().kinds;
  std::erase(kinds, KVN_TYPE_MAU);
  ExpectReadsBack("xml03", kinds,
                  {.tolerance = kHalfOfTheEighthDecimal,
                   .byTable = true,
                   .ignored = {"node.kind", "text.name", "text.comment", "text.properties"}});
}

// A gate makes its table while it is written.
TEST(XmlSpeaker, WritesAllOrNothing) {
  ExpectWritesAllOrNothing("xml03", [](KVN_network& network) {
    AddWideTable(network);
    AddNodeBelow(network, KVN_TYPE_NOISY_MAX, "Gate", 3, {network.FindNode("Child")});
  });
}

TEST(XmlSpeaker, ReadsAllOrTells) { ExpectReadsAllOrTells("xml03", kDiagram); }

TEST(XmlSpeaker, SurvivesDamage) {
  ExpectSurvivesDamage("xml03", kDiagram, {0, KVN_REFUSED, KVN_SYNTAX_ERROR});
}

// The file has the extension of another format, so the format must be named.
TEST(XmlSpeaker, ReadsTheSharedNetworks) {
  SKIP_WITHOUT_SHARED_NETWORKS();
  const NetworkSize sizes[] = {{"alarm", 37, 46, 509}, {"asia", 8, 8, 18}, {"cow", 5, 4, 9}};
  for (const NetworkSize& size : sizes) {
    const std::string folder = KVN_SOURCE_DIR "/../shared/networks/xmlbif/";
    ExpectLoads(folder + size.name + ".xml", KVN_FORMAT_XMLBIF, size);
  }
}

}  // namespace

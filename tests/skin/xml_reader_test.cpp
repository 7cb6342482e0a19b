#include "skin/xml_reader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "support/test_environment.h"

namespace {

using skin::XmlReader;

bool Parses(const std::string& text) {
  XmlReader reader;
  return reader.ParseBytes(text);
}

TEST(XmlReaderTest, ReadsWhatSkinAuthorsWrite) {
  XmlReader reader;
  ASSERT_TRUE(
      reader.ParseBytes("<skin>\r\n\t<Button x = \"12px\" id=\"PLAY\" ID=\"second\" note=\"a &amp; b\"/>\n"
                        "  <text orientation=\"-90\" />\n  <a><b></B></A>\n</SKIN>"));
  ASSERT_EQ(reader.ChildCount(), 1);
  EXPECT_EQ(reader.Name(), "");
  const skin::XmlNode* skinNode = reader.FindChild("SKIN");
  ASSERT_NE(skinNode, nullptr);
  ASSERT_EQ(skinNode->ChildCount(), 3) << "self-closing with a blank, or after an attribute";
  const skin::XmlNode* button = skinNode->FindChild("button");
  ASSERT_NE(button, nullptr);
  EXPECT_EQ(button->Name(), "Button");
  EXPECT_EQ(button->AttributeInt("X"), 12);
  EXPECT_STREQ(button->FindAttribute("id"), "PLAY") << "the first of twins";
  EXPECT_EQ(button->AttributeCount(), 4);
  EXPECT_STREQ(button->FindAttribute("note"), "a &amp; b") << "nothing is unescaped";
  EXPECT_EQ(button->AttributeInt("missing"), 0);
  EXPECT_EQ(button->FindAttribute("missing"), nullptr);
  EXPECT_EQ(skinNode->Child(1)->AttributeInt("orientation"), -90);
  EXPECT_EQ(skinNode->Child(3), nullptr);
  EXPECT_EQ(skinNode->Child(2)->Child(0)->Name(), "b");

  EXPECT_TRUE(reader.ParseBytes("")) << "an empty file";
  EXPECT_EQ(reader.ChildCount(), 0) << "the old tree went";
  EXPECT_TRUE(Parses("<a><b>")) << "open elements at the end are no error";
  EXPECT_TRUE(Parses("<A></a>"));
  EXPECT_TRUE(Parses("<a><a><a></a></a></a>"));
}

TEST(XmlReaderTest, NamesAndValuesHaveFixedRoom) {
  const std::string name63(63, 'n');
  const std::string value127(127, 'v');
  XmlReader reader;
  ASSERT_TRUE(reader.ParseBytes("<" + name63 + " " + name63 + "=\"" + value127 + "\" />"));
  EXPECT_EQ(reader.Child(0)->Name(), name63);
  EXPECT_EQ(reader.Child(0)->FindAttribute(name63), value127);
  EXPECT_FALSE(Parses("<a x=\"" + value127 + "v\" />")) << "128 characters";
  EXPECT_FALSE(Parses("<a " + name63 + "n=\"1\" />")) << "an attribute name of 64";
  EXPECT_FALSE(Parses("<a x=\"\" />")) << "an empty value";
}

// What an XML parser takes and this reader doesn't, as skins must know.
TEST(XmlReaderTest, RefusesWhatAnXmlParserWouldTake) {
  EXPECT_FALSE(Parses("<?xml version=\"1.0\"?><skin></skin>")) << "a declaration";
  EXPECT_FALSE(Parses("<skin><!-- note --></skin>")) << "a comment";
  EXPECT_FALSE(Parses("<a x='1' />")) << "single quotes delimit nothing";
  EXPECT_FALSE(Parses("<a>some text</a>")) << "text between tags";
  EXPECT_FALSE(Parses("<a><b></a>")) << "the end tag meets the open b";
  EXPECT_FALSE(Parses("</x>")) << "the root's name is empty";
  EXPECT_FALSE(Parses("<a-b></a-b>")) << "\"-\" ends a name";
  EXPECT_FALSE(Parses("<a x=\"1 /><b />")) << "an unterminated value";

  // "<a/>" isn't self-closing: "/" stops the name and the element stays open.
  XmlReader reader;
  ASSERT_TRUE(reader.ParseBytes("<a/><b />"));
  ASSERT_EQ(reader.ChildCount(), 1);
  EXPECT_EQ(reader.Child(0)->Child(0)->Name(), "b");
  // A value runs to the next quote wherever the name's stopper was.
  ASSERT_TRUE(reader.ParseBytes("<a x 5 y=\"6\" />"));
  EXPECT_STREQ(reader.Child(0)->FindAttribute("x"), "6");
}

TEST(XmlReaderTest, AnyInputEndsInBoundedTimeAndMemory) {
  EXPECT_TRUE(Parses(std::string("<a x=\"1\" />\0<b", 15))) << "a byte 0 ends the input";
  EXPECT_FALSE(Parses("<a x=\"1")) << "an attribute cut off";
  EXPECT_TRUE(Parses("<a")) << "a tag cut off: an open element";
  EXPECT_FALSE(Parses("<a></a")) << "an end tag cut off re-reads its last byte";

  std::string deep;
  for (int i = 0; i < skin::kMaxDepth; ++i) deep += "<a>";
  EXPECT_TRUE(Parses(deep));
  EXPECT_FALSE(Parses(deep + "<a>")) << "nesting past the reader's bound";
  std::string endless;
  for (int i = 0; i < 200000; ++i) endless += "<a>";
  EXPECT_FALSE(Parses(endless));
  EXPECT_FALSE(Parses(std::string(skin::kMaxLayoutBytes + 1, ' '))) << "past the size bound";
}

TEST(XmlReaderFileTest, ReadsOnlyRegularFilesAndReadsThemAgainFromTheStart) {
  const testing_support::TemporaryDirectory root;
  XmlReader reader;
  EXPECT_FALSE(reader.Parse()) << "no open file";
  EXPECT_FALSE(reader.Open(root.File("missing.xml")));
  EXPECT_FALSE(reader.Open(root.Path())) << "a folder";
  const std::string fifo = root.File("fifo.xml");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_FALSE(reader.Open(fifo)) << "a FIFO would block the start";

  const std::string path = root.File("layout.xml");
  testing_support::WriteFile(path, "<skin><layout /></skin>");
  ASSERT_TRUE(reader.Open(path));
  ASSERT_TRUE(reader.Parse());
  ASSERT_TRUE(reader.Parse());
  reader.Close();
  ASSERT_NE(reader.FindChild("skin"), nullptr) << "the tree stays after Close";
  EXPECT_NE(reader.FindChild("skin")->FindChild("layout"), nullptr);
}

}  // namespace

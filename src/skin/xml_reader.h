// The reader of skin layout files.
//
// This is not an XML parser. It knows elements and double-quoted attributes
// and nothing else, and skin authors depend on exactly what it does:
//
// - The file is a stream of bytes, each byte one character (codes 1 to 255,
//   no code page, no UTF-8 decoding, no byte-order mark). End of file and a
//   byte 0 both end the input. One byte can be pushed back.
// - A name is a run of ASCII letters, digits and "_"; the character that stops
//   it is consumed. It fails when it is empty, when the input ends, or when it
//   reaches 64 characters (63 fit).
// - An attribute is a name, whose stopper (normally "=") is swallowed, then
//   everything up to the next double quote is skipped, then the value runs to
//   the next double quote. It fails when the input ends, when the value is
//   empty, or when it reaches 128 characters (127 fit). Nothing is escaped:
//   "&amp;" stays as it is, and a value can't hold a double quote. Single
//   quotes delimit nothing.
// - The body of an element (the root's at first) repeats: end of input
//   completes it (an open element at the end is no error); blanks, tabs and
//   line ends are skipped; "/" ends it, successfully when no end tag was read
//   and ">" follows; "<" opens a child (its name's result isn't looked at)
//   unless "/" follows, in which case the end tag's name, its stopper pushed
//   back, must equal this element's name in any case; ">" after an end tag
//   completes the element and is skipped otherwise; anything else after an end
//   tag fails, and before one is read as an attribute.
//
// What follows for a skin author: `<a/>` is not self-closing (the "/" stops
// the name), `<a />` and `<a x="1"/>` are; an XML declaration, a comment or
// text between tags fails the file unless it happens to have an attribute's
// shape; "-" and ":" end names; names compare in any case.
//
// Bounds of this program's own, so that no file can exhaust the machine: a
// layout file larger than kMaxLayoutBytes and elements nested deeper than
// kMaxDepth fail. Real layouts are a few kilobytes, four levels deep.
//
// Threads: one thread at a time per reader.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace skin {

inline constexpr std::size_t kXmlNameSize = 64;    // characters, terminator included
inline constexpr std::size_t kXmlValueSize = 128;  // characters, terminator included
inline constexpr std::size_t kMaxLayoutBytes = 1 << 20;
inline constexpr int kMaxDepth = 256;

struct XmlAttribute {
  std::array<char, kXmlNameSize> name{};
  std::array<char, kXmlValueSize> value{};
};

// One element: its name, its attributes and its children, in file order.
class XmlNode {
 public:
  // The index-th child, or null.
  const XmlNode* Child(int index) const;
  int ChildCount() const { return static_cast<int>(children.size()); }
  std::string_view Name() const { return name.data(); }
  // The first child of that name, in any case, or null.
  const XmlNode* FindChild(std::string_view childName) const;
  // The value of the first attribute of that name, in any case, or null.
  const char* FindAttribute(std::string_view attributeName) const;
  // The attribute's value read as the C runtime's atol does (leading blanks,
  // a sign, digits up to the first other character, clamped to 32 bits);
  // 0 when the attribute is missing.
  std::int32_t AttributeInt(std::string_view attributeName) const;

  int AttributeCount() const { return static_cast<int>(attributes.size()); }
  const XmlAttribute& Attribute(int index) const { return attributes[static_cast<std::size_t>(index)]; }

 protected:
  void Clear();

 private:
  friend class XmlTreeBuilder;

  std::array<char, kXmlNameSize> name{};
  std::vector<XmlNode> children;
  std::vector<XmlAttribute> attributes;
};

// The root: an element with an empty name, plus the file it reads.
class XmlReader : public XmlNode {
 public:
  XmlReader() = default;
  ~XmlReader();
  XmlReader(const XmlReader&) = delete;
  XmlReader& operator=(const XmlReader&) = delete;

  // Opens the file for reading; false when it can't be opened or isn't a
  // regular file.
  bool Open(const std::string& path);
  // Frees any old tree and parses the whole open file, from its start, into
  // the root. False on any failure (the tree built so far stays), and without
  // an open file.
  bool Parse();
  // The same for bytes in memory (the fuzz target's way in).
  bool ParseBytes(std::string_view bytes);
  // Closes the file; the tree stays.
  void Close();

 private:
  int fileDescriptor = -1;
};

}  // namespace skin

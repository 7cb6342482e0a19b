// Layout files are files the user can change: any bytes must parse or fail
// within the reader's bounds, and the tree must keep to its fixed room.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "skin/xml_reader.h"

namespace {

void Walk(const skin::XmlNode& node, int depth) {
  if (depth > skin::kMaxDepth || node.Name().size() >= skin::kXmlNameSize) __builtin_trap();
  for (int i = 0; i < node.AttributeCount(); ++i) {
    const skin::XmlAttribute& attribute = node.Attribute(i);
    if (std::strlen(attribute.value.data()) == 0 ||
        std::strlen(attribute.value.data()) >= skin::kXmlValueSize)
      __builtin_trap();
    (void)node.AttributeInt(attribute.name.data());
  }
  for (int i = 0; i < node.ChildCount(); ++i) Walk(*node.Child(i), depth + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  skin::XmlReader reader;
  reader.ParseBytes(std::string_view(reinterpret_cast<const char*>(data), size));
  Walk(reader, 0);
  return 0;
}

#include "skin/xml_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstring>

#include "platform/text.h"

namespace skin {
namespace {

constexpr int kEnd = -1;

bool IsNameCharacter(int c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
}

}  // namespace

// The parse of one file's bytes into a tree; see xml_reader.h for the rules.
// `position` is the file pointer of the byte-by-byte reader: a read at the
// end doesn't move it, a byte 0 is read and ends the input, and a push-back
// steps it back one byte wherever it is.
class XmlTreeBuilder {
 public:
  explicit XmlTreeBuilder(std::string_view bytes) : input(bytes) {}

  bool ParseBody(XmlNode& node, int depth) {
    bool closing = false;
    for (;;) {
      const int c = Get();
      if (c == kEnd) return true;
      if (c == '\t' || c == '\n' || c == '\r' || c == ' ') continue;
      if (c == '/') return !closing && Get() == '>';
      if (c == '<') {
        if (Get() != '/') {
          PushBack();
          ReadName(elementName);
          if (depth >= kMaxDepth) return false;
          if (!ParseBody(AddChild(node), depth + 1)) return false;
        } else {
          ReadName(elementName);
          PushBack();
          if (!platform::EqualsIgnoreCase(elementName.data(), node.Name())) return false;
          closing = true;
        }
        continue;
      }
      if (c == '>') {
        if (closing) return true;
        continue;
      }
      if (closing) return false;
      PushBack();
      if (!ReadAttribute()) return false;
      node.attributes.push_back(attribute);
    }
  }

 private:
  int Get() {
    if (position >= input.size()) return kEnd;
    const auto c = static_cast<unsigned char>(input[position++]);
    return c == 0 ? kEnd : c;
  }
  void PushBack() {
    if (position > 0) --position;
  }

  // The parent's array grows only between two children, so the reference
  // stays valid while the child's body is parsed.
  XmlNode& AddChild(XmlNode& parent) {
    XmlNode& child = parent.children.emplace_back();
    child.name = elementName;
    return child;
  }

  template <std::size_t N>
  bool ReadName(std::array<char, N>& buffer) {
    std::size_t length = 0;
    bool ok = false;
    for (;;) {
      const int c = Get();
      if (c == kEnd) break;
      if (!IsNameCharacter(c)) {
        ok = length > 0;
        break;
      }
      if (length == N - 1) break;
      buffer[length++] = static_cast<char>(c);
    }
    buffer[length] = '\0';
    return ok;
  }

  bool ReadAttribute() {
    if (!ReadName(attribute.name)) return false;
    int c;
    do {
      c = Get();
      if (c == kEnd) return false;
    } while (c != '"');
    std::size_t length = 0;
    for (;;) {
      c = Get();
      if (c == kEnd) return false;
      if (c == '"') break;
      if (length == kXmlValueSize - 1) return false;
      attribute.value[length++] = static_cast<char>(c);
    }
    attribute.value[length] = '\0';
    return length > 0;
  }

  std::string_view input;
  std::size_t position = 0;
  // The work buffers of the reader.
  std::array<char, kXmlNameSize> elementName{};
  XmlAttribute attribute;
};

const XmlNode* XmlNode::Child(int index) const {
  if (index < 0 || index >= ChildCount()) return nullptr;
  return &children[static_cast<std::size_t>(index)];
}

const XmlNode* XmlNode::FindChild(std::string_view childName) const {
  for (const XmlNode& child : children) {
    if (platform::EqualsIgnoreCase(child.Name(), childName)) return &child;
  }
  return nullptr;
}

const char* XmlNode::FindAttribute(std::string_view attributeName) const {
  for (const XmlAttribute& attribute : attributes) {
    if (platform::EqualsIgnoreCase(attribute.name.data(), attributeName)) return attribute.value.data();
  }
  return nullptr;
}

std::int32_t XmlNode::AttributeInt(std::string_view attributeName) const {
  const char* text = FindAttribute(attributeName);
  if (text == nullptr) return 0;
  while (*text == ' ' || (*text >= '\t' && *text <= '\r')) ++text;
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  std::int64_t value = 0;
  for (; *text >= '0' && *text <= '9'; ++text) {
    value = value * 10 + (*text - '0');
    if (value > INT32_MAX) return negative ? INT32_MIN : INT32_MAX;
  }
  return static_cast<std::int32_t>(negative ? -value : value);
}

void XmlNode::Clear() {
  children.clear();
  attributes.clear();
}

XmlReader::~XmlReader() {
  Close();
}

bool XmlReader::Open(const std::string& path) {
  Close();
  // Non-blocking, so that a FIFO in the skin's place can't stall the start.
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return false;
  struct stat status {};
  if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    ::close(descriptor);
    return false;
  }
  fileDescriptor = descriptor;
  return true;
}

bool XmlReader::Parse() {
  Clear();
  if (fileDescriptor < 0) return false;
  struct stat status {};
  if (::fstat(fileDescriptor, &status) != 0 || status.st_size < 0 ||
      static_cast<std::uint64_t>(status.st_size) > kMaxLayoutBytes)
    return false;
  std::string bytes;
  char block[4096];
  off_t offset = 0;
  for (;;) {
    const ssize_t got = ::pread(fileDescriptor, block, sizeof block, offset);
    if (got < 0) return false;
    if (got == 0) break;
    bytes.append(block, static_cast<std::size_t>(got));
    offset += got;
    if (bytes.size() > kMaxLayoutBytes) return false;  // it grew while being read
  }
  return ParseBytes(bytes);
}

bool XmlReader::ParseBytes(std::string_view bytes) {
  Clear();
  if (bytes.size() > kMaxLayoutBytes) return false;
  XmlTreeBuilder builder(bytes);
  return builder.ParseBody(*this, 0);
}

void XmlReader::Close() {
  if (fileDescriptor >= 0) ::close(fileDescriptor);
  fileDescriptor = -1;
}

}  // namespace skin

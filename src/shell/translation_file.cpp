#include "shell/translation_file.h"

#include "platform/text.h"

namespace shell {
namespace {

constexpr unsigned char kMagic[16] = {0x3C, 0xB8, 0x64, 0x18, 0xCA, 0xEF, 0x9C, 0x95,
                                      0xCD, 0x21, 0x1C, 0xBF, 0x60, 0xA1, 0xBD, 0xDD};
constexpr unsigned char kMessagesBlock = 0x69;
constexpr std::uint32_t kNoText = 0xFFFFFFFF;

enum FieldTag : unsigned char {
  kEnd = 1,
  kTranslation = 3,
  kFourBytes = 5,
  kSourceText = 6,
  kContext = 7,
  kComment = 8,
};

// Reads forward through bytes, refusing to step past the end.
class Cursor {
 public:
  explicit Cursor(std::string_view bytes) : data(bytes) {}
  bool AtEnd() const { return position >= data.size(); }
  std::size_t Left() const { return data.size() - position; }

  bool Byte(unsigned char& value) {
    if (Left() < 1) return false;
    value = static_cast<unsigned char>(data[position++]);
    return true;
  }
  bool Word(std::uint32_t& value) {
    if (Left() < 4) return false;
    value = 0;
    for (int k = 0; k < 4; ++k) value = value << 8 | static_cast<unsigned char>(data[position++]);
    return true;
  }
  bool Take(std::size_t count, std::string_view& taken) {
    if (Left() < count) return false;
    taken = data.substr(position, count);
    position += count;
    return true;
  }

 private:
  std::string_view data;
  std::size_t position = 0;
};

struct Message {
  bool hasTranslation = false;
  std::string_view translation;
  std::string_view source;
  std::string_view context;
};

// One message up to its end tag; false when it is damaged.
bool ReadMessage(Cursor& cursor, Message& message) {
  for (;;) {
    unsigned char tag = 0;
    if (!cursor.Byte(tag)) return false;
    if (tag == kEnd) return true;
    if (tag == kFourBytes) {
      std::string_view skipped;
      if (!cursor.Take(4, skipped)) return false;
      continue;
    }
    std::uint32_t length = 0;
    if (!cursor.Word(length)) return false;
    std::string_view field;
    if (tag == kTranslation && length == kNoText) continue;
    if (!cursor.Take(length, field)) return false;
    switch (tag) {
      case kTranslation:
        if (length % 2 != 0) return false;
        if (!message.hasTranslation) message.translation = field;  // plural forms follow the first
        message.hasTranslation = true;
        break;
      case kSourceText:
        message.source = field;
        break;
      case kContext:
        message.context = field;
        break;
      case kComment:
        break;
      default:
        return false;
    }
  }
}

void ReadMessages(std::string_view block, TranslationTexts& texts) {
  Cursor cursor(block);
  while (!cursor.AtEnd()) {
    Message message;
    if (!ReadMessage(cursor, message)) return;
    if (!message.hasTranslation || message.translation.empty() || message.source.empty() ||
        !message.context.empty())
      continue;
    texts.insert_or_assign(std::string(message.source),
                           platform::Utf16BytesToUtf8(message.translation, true));
  }
}

}  // namespace

std::optional<TranslationTexts> ReadTranslationFile(std::string_view bytes) {
  if (bytes.size() < sizeof kMagic ||
      bytes.substr(0, sizeof kMagic) !=
          std::string_view(reinterpret_cast<const char*>(kMagic), sizeof kMagic))
    return std::nullopt;
  Cursor cursor(bytes.substr(sizeof kMagic));
  TranslationTexts texts;
  bool sawMessages = false;
  while (cursor.Left() >= 5) {
    unsigned char tag = 0;
    std::uint32_t length = 0;
    std::string_view block;
    cursor.Byte(tag);
    cursor.Word(length);
    if (tag == 0 || length == 0 || !cursor.Take(length, block)) break;
    if (tag == kMessagesBlock && !sawMessages) {
      sawMessages = true;
      ReadMessages(block, texts);
    }
  }
  if (!sawMessages) return std::nullopt;
  return texts;
}

}  // namespace shell

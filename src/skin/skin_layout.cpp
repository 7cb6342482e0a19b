#include "skin/skin_layout.h"

#include <string_view>

#include "platform/text.h"
#include "skin/skin_action_table.h"
#include "skin/skin_element_reader.h"
#include "skin/skin_slider.h"
#include "skin/skin_text.h"
#include "skin/xml_reader.h"

namespace skin {
namespace {

constexpr std::size_t kColorDigits = 8;

std::string Bounded(const char* value) {
  if (value == nullptr) return {};
  return std::string(std::string_view(value).substr(0, kAliasSize - 1));
}

}  // namespace

bool SkinLayout::LoadLayout(const std::string& path) {
  if (path.empty()) return false;
  XmlReader reader;
  if (!reader.Open(path)) return false;
  const bool parsed = reader.Parse();
  reader.Close();
  if (!parsed) return false;

  const XmlNode* skinNode = reader.FindChild("skin");
  const XmlNode* preload = skinNode != nullptr ? skinNode->FindChild("preload") : nullptr;
  if (preload == nullptr || preload->ChildCount() == 0) return false;
  preloadTable.clear();
  for (int i = 0; i < preload->ChildCount(); ++i) {
    const XmlNode& child = *preload->Child(i);
    if (!platform::EqualsIgnoreCase(child.Name(), "bitmap")) continue;
    preloadTable.push_back({Bounded(child.FindAttribute("alias")), Bounded(child.FindAttribute("file"))});
  }
  bitmapCount = static_cast<int>(preloadTable.size());

  const XmlNode* layout = skinNode->FindChild("layout");
  if (layout == nullptr || layout->ChildCount() == 0) return false;
  for (int i = 0; i < layout->ChildCount(); ++i) {
    if (!AddElement(*layout->Child(i))) return false;
  }
  return true;
}

// Makes the element of one node of <layout>; unknown names are passed over.
// A layout of more elements than the table holds is refused.
bool SkinLayout::AddElement(const XmlNode& node) {
  const std::string_view name = node.Name();
  if (platform::EqualsIgnoreCase(name, "background")) {
    backgroundIndex = FindBitmap(node.FindAttribute("src"));
    return backgroundIndex >= 0;
  }
  std::unique_ptr<SkinElement> element;
  if (platform::EqualsIgnoreCase(name, "button")) {
    element = ReadButton(node, *this);
  } else if (platform::EqualsIgnoreCase(name, "checkbutton")) {
    element = ReadCheckButton(node, *this);
  } else if (platform::EqualsIgnoreCase(name, "slider")) {
    element = ReadSlider(node, *this);
  } else if (platform::EqualsIgnoreCase(name, "text")) {
    element = ReadText(node);
  } else if (platform::EqualsIgnoreCase(name, "timer")) {
    element = ReadTimer(node);
  } else if (platform::EqualsIgnoreCase(name, "titlebar")) {
    element = ReadTitleBar(node);
  } else if (platform::EqualsIgnoreCase(name, "iconstatus")) {
    element = ReadIconStatus(node, *this);
  } else {
    return true;
  }
  if (!element || elements.size() >= static_cast<std::size_t>(kMaxElements)) return false;
  if (element->GetType() == kTypeTitleBar) titleBar = static_cast<SkinTitleBar*>(element.get());
  elements.push_back(std::move(element));
  return true;
}

bool SkinLayout::LoadBitmaps(SkinBitmapLoader& loader) {
  bool loaded = true;
  for (int row = 0; row < bitmapCount && loaded; ++row)
    loaded = loader.LoadFile(skinDirectory + preloadTable[static_cast<std::size_t>(row)].file);
  preloadTable.clear();
  preloadTable.shrink_to_fit();
  return loaded;
}

void SkinLayout::BindWindow(SkinSurface* surface) {
  for (const std::unique_ptr<SkinElement>& element : elements) {
    element->SetWindow(surface);
    element->SetBackgroundIndex(backgroundIndex);
    if (element->GetType() == kTypeSlider) static_cast<SkinSlider&>(*element).BuildImageLists();
  }
}

int SkinLayout::FindBitmap(const char* alias) const {
  if (alias == nullptr) return -1;
  for (std::size_t row = 0; row < preloadTable.size(); ++row) {
    if (platform::EqualsIgnoreCase(preloadTable[row].alias, alias)) return static_cast<int>(row);
  }
  return -1;
}

int SkinLayout::FindAction(const char* id) {
  if (id == nullptr) return -1;
  return FindActionRow(id);
}

SkinColor SkinLayout::ParseColor(const char* text) {
  if (text == nullptr) return 0;
  const std::string_view digits(text);
  const std::size_t count = digits.size() < kColorDigits ? digits.size() : kColorDigits;
  std::uint32_t value = 0;
  std::uint32_t place = 1;
  for (std::size_t i = 0; i < count; ++i) {
    const auto c = static_cast<unsigned char>(digits[digits.size() - 1 - i]);
    const int upper = c >= 'a' && c <= 'z' ? c - ('a' - 'A') : c;
    const int digit = c < 'A' ? c - '0' : upper - 55;
    value += static_cast<std::uint32_t>(digit) * place;
    place <<= 4;
  }
  return value & 0xFFFFFF;
}

}  // namespace skin

#include "skin/skin_element_reader.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "platform/text.h"
#include "skin/skin_button.h"
#include "skin/skin_layout.h"
#include "skin/skin_slider.h"
#include "skin/skin_text.h"
#include "skin/xml_reader.h"

namespace skin {
namespace {

constexpr int kScreenPixelsPerInch = 96;
constexpr int kMaxFontPixels = 400;

SkinRect ReadRect(const XmlNode& node) {
  return {node.AttributeInt("x"), node.AttributeInt("y"), node.AttributeInt("w"), node.AttributeInt("h")};
}

// A child's picture: its alias must be known.
std::optional<ImageSource> ReadImage(const XmlNode* child, const SkinLayout& layout) {
  if (child == nullptr) return std::nullopt;
  const int bitmap = layout.FindBitmap(child->FindAttribute("src"));
  if (bitmap < 0) return std::nullopt;
  return ImageSource{bitmap, child->AttributeInt("x"), child->AttributeInt("y")};
}

std::optional<ThumbSource> ReadThumb(const XmlNode* child, const SkinLayout& layout) {
  std::optional<ImageSource> image = ReadImage(child, layout);
  if (!image) return std::nullopt;
  return ThumbSource{image->bitmap,
                     image->x,
                     image->y,
                     child->AttributeInt("w"),
                     child->AttributeInt("h"),
                     SkinLayout::ParseColor(child->FindAttribute("mask_color"))};
}

TextStyle ReadTextStyle(const XmlNode& node) {
  TextStyle style;
  if (const char* face = node.FindAttribute("font"))
    style.font.face = platform::NarrowToUtf8(std::string_view(face).substr(0, kAliasSize - 1));
  style.font.pixelHeight = FontPixelHeight(node.AttributeInt("point"));
  style.orientation = node.AttributeInt("orientation");
  style.font.orientation = style.orientation;
  style.color = SkinLayout::ParseColor(node.FindAttribute("color"));
  style.weight = node.AttributeInt("weight");
  return style;
}

template <typename Element>
std::unique_ptr<SkinElement> Placed(std::unique_ptr<Element> element, const XmlNode& node) {
  element->Place(ReadRect(node));
  return element;
}

}  // namespace

int FontPixelHeight(int point) {
  const double pixels = static_cast<double>(point) * kScreenPixelsPerInch / 72.0 + 0.5;
  return static_cast<int>(std::clamp(pixels, 0.0, static_cast<double>(kMaxFontPixels - 1)));
}

std::unique_ptr<SkinElement> ReadButton(const XmlNode& node, const SkinLayout& layout) {
  const int id = SkinLayout::FindAction(node.FindAttribute("id"));
  const std::optional<ImageSource> released = ReadImage(node.FindChild("released"), layout);
  const std::optional<ImageSource> pressed = ReadImage(node.FindChild("pressed"), layout);
  if (id < 0 || !released || !pressed) return nullptr;
  return Placed(std::make_unique<SkinButton>(id, *released, *pressed), node);
}

std::unique_ptr<SkinElement> ReadCheckButton(const XmlNode& node, const SkinLayout& layout) {
  const int id = SkinLayout::FindAction(node.FindAttribute("id"));
  if (id < 0) return nullptr;
  std::array<ImageSource, 4> images;
  std::size_t next = 0;
  for (const char* state : {"state1", "state2"}) {
    const XmlNode* stateNode = node.FindChild(state);
    if (stateNode == nullptr) return nullptr;
    for (const char* look : {"released", "pressed"}) {
      const std::optional<ImageSource> image = ReadImage(stateNode->FindChild(look), layout);
      if (!image) return nullptr;
      images[next++] = *image;
    }
  }
  return Placed(std::make_unique<SkinCheckButton>(id, images), node);
}

std::unique_ptr<SkinElement> ReadSlider(const XmlNode& node, const SkinLayout& layout) {
  const int id = SkinLayout::FindAction(node.FindAttribute("id"));
  const std::optional<ThumbSource> released = ReadThumb(node.FindChild("released"), layout);
  const std::optional<ThumbSource> pressed = ReadThumb(node.FindChild("pressed"), layout);
  if (id < 0 || !released || !pressed) return nullptr;
  return Placed(std::make_unique<SkinSlider>(id, node.AttributeInt("orientation"), *released, *pressed),
                node);
}

std::unique_ptr<SkinElement> ReadIconStatus(const XmlNode& node, const SkinLayout& layout) {
  std::array<ImageSource, 3> images;
  std::size_t next = 0;
  for (const char* state : {"stop", "play", "pause"}) {
    const std::optional<ImageSource> image = ReadImage(node.FindChild(state), layout);
    if (!image) return nullptr;
    images[next++] = *image;
  }
  return Placed(std::make_unique<SkinIconStatus>(images), node);
}

std::unique_ptr<SkinElement> ReadText(const XmlNode& node) {
  return Placed(
      std::make_unique<SkinText>(SkinLayout::FindAction(node.FindAttribute("id")), ReadTextStyle(node)),
      node);
}

std::unique_ptr<SkinElement> ReadTimer(const XmlNode& node) {
  return Placed(
      std::make_unique<SkinTimer>(SkinLayout::FindAction(node.FindAttribute("id")), ReadTextStyle(node)),
      node);
}

std::unique_ptr<SkinElement> ReadTitleBar(const XmlNode& node) {
  return Placed(
      std::make_unique<SkinTitleBar>(SkinLayout::FindAction(node.FindAttribute("id")), ReadTextStyle(node)),
      node);
}

}  // namespace skin

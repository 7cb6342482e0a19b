// Making each kind of element from its node of the layout file; see
// skin_layout.h for what each reads and what fails it.
#pragma once

#include <memory>

#include "skin/skin_element.h"

namespace skin {

class SkinLayout;
class XmlNode;

// Null when the element can't be made (an unknown id or alias, a missing
// child).
std::unique_ptr<SkinElement> ReadButton(const XmlNode& node, const SkinLayout& layout);
std::unique_ptr<SkinElement> ReadCheckButton(const XmlNode& node, const SkinLayout& layout);
std::unique_ptr<SkinElement> ReadSlider(const XmlNode& node, const SkinLayout& layout);
std::unique_ptr<SkinElement> ReadIconStatus(const XmlNode& node, const SkinLayout& layout);
// These can always be made.
std::unique_ptr<SkinElement> ReadText(const XmlNode& node);
std::unique_ptr<SkinElement> ReadTimer(const XmlNode& node);
std::unique_ptr<SkinElement> ReadTitleBar(const XmlNode& node);

// The character height in skin pixels of a font of `point` points on the
// skin's screen (96 pixels per inch), rounded; 0 leaves it to the platform.
// Kept below 400 pixels, which is more than twice the skin's height.
int FontPixelHeight(int point);

}  // namespace skin

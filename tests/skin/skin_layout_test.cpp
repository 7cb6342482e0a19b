#include "skin/skin_layout.h"

#include <gtest/gtest.h>

#include <string>

#include "skin/skin_action_table.h"
#include "skin/skin_button.h"
#include "skin/skin_slider.h"
#include "skin/skin_text.h"
#include "skin_fakes.h"
#include "support/test_environment.h"

namespace {

using skin::SkinLayout;
using testing_support::RecordingBitmapLoader;

const std::string kTestSkin = std::string(TS_TEST_DATA_DIR) + "/skin/";

std::string TestLayout() {
  return testing_support::ReadFile(kTestSkin + "layout.xml");
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  if (at == std::string::npos)
    ADD_FAILURE() << "no " << from;
  else
    text.replace(at, from.size(), to);
  return text;
}

class SkinLayoutTest : public ::testing::Test {
 protected:
  bool Load(const std::string& layoutText) {
    testing_support::WriteFile(folder.File("layout.xml"), layoutText);
    return layout.LoadLayout(folder.File("layout.xml"));
  }
  template <typename Element>
  const Element& At(int index) {
    return static_cast<const Element&>(*layout.Element(index));
  }

  testing_support::TemporaryDirectory folder;
  SkinLayout layout;
};

TEST_F(SkinLayoutTest, ReadsEveryKindOfElementWithItsAttributes) {
  layout.SetSkinDirectory(kTestSkin);
  ASSERT_TRUE(layout.LoadLayout(kTestSkin + "layout.xml"));
  EXPECT_EQ(layout.BitmapCount(), 4) << "the unknown child between bitmaps takes no row";
  EXPECT_EQ(layout.BackgroundIndex(), 0);
  EXPECT_EQ(layout.FindBitmap("SHEET"), 1) << "aliases in any case";
  EXPECT_EQ(layout.FindBitmap("nothing"), -1);
  EXPECT_EQ(layout.FindBitmap(nullptr), -1);
  ASSERT_EQ(layout.ElementCount(), 12) << "the unknown element is passed over";

  std::vector<int> types;
  for (int i = 0; i < layout.ElementCount(); ++i) types.push_back(layout.Element(i)->GetType());
  EXPECT_EQ(types, (std::vector<int>{1, 1, 5, 5, 2, 2, 3, 4, 7, 7, 7, 6}));

  EXPECT_EQ(At<skin::SkinButton>(0).GetId(), skin::kRowNext);
  EXPECT_EQ(At<skin::SkinButton>(1).GetId(), skin::kRowStop) << "upper-case names and a lower-case id";
  EXPECT_EQ(At<skin::SkinButton>(1).Rect().x, 20);
  EXPECT_EQ(At<skin::SkinButton>(1).Rect().h, 10);
  EXPECT_EQ(At<skin::SkinCheckButton>(3).GetId(), skin::kRowMute);

  const auto& seek = At<skin::SkinSlider>(4);
  EXPECT_EQ(seek.GetId(), skin::kRowSeekBar);
  EXPECT_EQ(seek.ReleasedMask(), 0xF800F8u) << "the low three bits of each byte go";
  const auto& volume = At<skin::SkinSlider>(5);
  EXPECT_EQ(volume.ReleasedMask(), 0xF800F8u) << "FC04F9 matches magenta on a 16-bit screen";
  EXPECT_EQ(volume.Rect().h, 60);

  EXPECT_EQ(At<skin::SkinTimer>(6).GetId(), -1);
  const auto& title = At<skin::SkinTitleBar>(7);
  EXPECT_EQ(layout.TitleBar(), &title);
  EXPECT_EQ(title.Style().font.face, "DejaVu Sans");
  EXPECT_EQ(title.Style().font.pixelHeight, 11) << "8 points at 96 pixels per inch";
  EXPECT_EQ(title.Style().font.weight, 700);
  EXPECT_EQ(title.Style().color, 0xFFFFFFu);

  const auto& bitRate = At<skin::SkinText>(8);
  EXPECT_EQ(bitRate.GetId(), skin::kRowBitRate);
  EXPECT_EQ(bitRate.Style().color, 0xFF30F0u) << "a \"#\" gives a wrong colour, no error";
  EXPECT_EQ(bitRate.Style().font.pixelHeight, 0) << "no point size: the platform's";
  const auto& sampleRate = At<skin::SkinText>(9);
  EXPECT_EQ(sampleRate.Style().color, 0xFFFF00u);
  EXPECT_EQ(sampleRate.Style().orientation, 90);
  EXPECT_EQ(sampleRate.Style().weight, 900) << "kept";
  EXPECT_EQ(sampleRate.Style().font.weight, 400) << "but without effect";
  EXPECT_EQ(At<skin::SkinText>(10).GetId(), -1) << "an unknown id on a text loads";
}

TEST_F(SkinLayoutTest, BitmapsLoadInOrderFromTheSkinFolderUntilOneFails) {
  layout.SetSkinDirectory("/skins/base/");
  ASSERT_TRUE(Load(TestLayout()));
  RecordingBitmapLoader loader;
  loader.loadable = 2;
  EXPECT_FALSE(layout.LoadBitmaps(loader));
  EXPECT_EQ(loader.paths, (std::vector<std::string>{"/skins/base/background.bmp", "/skins/base/sheet.png",
                                                    "/skins/base/icons.gif"}));
}

TEST_F(SkinLayoutTest, BrokenLayoutsFailTheLoad) {
  const std::string good = TestLayout();
  const std::pair<std::string, std::string> damages[] = {
      {"id=\"NEXT\"", "id=\"NOSUCH\""},                                     // a button's unknown action
      {"<play src=\"ICONS\"", "<play src=\"none\""},                        // an unknown alias
      {"<pressed src=\"sheet\" x=\"60\" y=\"10\" w=\"8\" h=\"8\" />", ""},  // a slider's missing child
      {"<state2>", "<state3>"},                                             // a check button's missing state
      {"<background src=\"back\" />", "<background src=\"front\" />"},
      {"<preload>", "<preloaded>"},
      {"<layout>", "<layer>"},
      {"<SKIN>", "<?xml version=\"1.0\"?><SKIN>"},
  };
  for (const auto& [from, to] : damages) {
    SkinLayout fresh;
    testing_support::WriteFile(folder.File("layout.xml"), Replaced(good, from, to));
    EXPECT_FALSE(fresh.LoadLayout(folder.File("layout.xml"))) << from << " -> " << to;
  }
  EXPECT_FALSE(layout.LoadLayout(folder.File("missing.xml")));
  EXPECT_FALSE(layout.LoadLayout(""));
  EXPECT_FALSE(Load("")) << "an empty file parses, but has no skin";
  EXPECT_FALSE(Load("<skin><preload></preload><layout><text /></layout></skin>")) << "an empty preload";
}

TEST_F(SkinLayoutTest, APreloadOfUnknownChildrenLeavesEveryAliasUnknown) {
  EXPECT_FALSE(
      Load("<skin><preload><image alias=\"a\" file=\"a.png\" /></preload>"
           "<layout><text /><button id=\"PLAY\"><released src=\"a\" /><pressed src=\"a\" /></button>"
           "</layout></skin>"));
  EXPECT_EQ(layout.BitmapCount(), 0);
  EXPECT_EQ(layout.ElementCount(), 1) << "the text before the failure stays";
}

TEST_F(SkinLayoutTest, AHundredElementsAtMost) {
  std::string texts;
  for (int i = 0; i < skin::kMaxElements; ++i) texts += "<text />";
  const std::string head = "<skin><preload><bitmap alias=\"a\" file=\"a.png\" /></preload><layout>";
  EXPECT_TRUE(Load(head + "<background src=\"a\" />" + texts + "</layout></skin>"));
  SkinLayout fresh;
  testing_support::WriteFile(folder.File("more.xml"), head + texts + "<timer /></layout></skin>");
  EXPECT_FALSE(fresh.LoadLayout(folder.File("more.xml")));
}

TEST(SkinActionsTest, ColoursAndIdsReadAsSkinsWriteThem) {
  EXPECT_EQ(SkinLayout::ParseColor("FF00FF"), 0xFF00FFu);
  EXPECT_EQ(SkinLayout::ParseColor("1a2B3c"), 0x1A2B3Cu) << "letters in any case";
  EXPECT_EQ(SkinLayout::ParseColor("12345678ABCDEF"), 0xABCDEFu) << "the last eight characters";
  EXPECT_EQ(SkinLayout::ParseColor("#FFFFFF"), 0xFFFFFFu) << "the \"#\" lands above the low three bytes";
  EXPECT_EQ(SkinLayout::ParseColor("#FFFFF"), 0x3FFFFFu) << "...unless it falls inside them";
  EXPECT_EQ(SkinLayout::ParseColor(""), 0u);
  EXPECT_EQ(SkinLayout::ParseColor(nullptr), 0u);

  EXPECT_EQ(SkinLayout::FindAction("playpause"), skin::kRowPlayPause);
  EXPECT_EQ(SkinLayout::FindAction("SetBookmark"), skin::kRowSetBookmark);
  EXPECT_EQ(SkinLayout::FindAction(""), -1) << "the empty rows never match";
  EXPECT_EQ(SkinLayout::FindAction(nullptr), -1);
}

}  // namespace

#include "playback/track_info.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>

#include "platform/text.h"
#include "platform/texts.h"

namespace {

using playback::TrackInfo;

// BuildInfoText's result as UTF-8, freed as its contract says.
std::string InfoText(TrackInfo& info) {
  char16_t* text = nullptr;
  EXPECT_EQ(info.BuildInfoText(&text), 1);
  std::string result = text != nullptr ? platform::Utf16ToUtf8(text) : "<null>";
  std::free(text);
  return result;
}

std::string Line(const std::string& label, const std::string& value) {
  return "<b>" + label + "</b> " + value + "<br>";
}

const std::string kFileLine = Line("<hr>File Information", "");

std::string Title(TrackInfo& info) {
  char16_t buffer[playback::kTrackTextUnits];
  if (info.GetTitle(buffer) == 0) return "<absent>";
  return platform::Utf16ToUtf8(buffer);
}

TEST(TrackInfoTest, AnEmptyRecordShowsOnlyTheFileLineAndStereoNo) {
  TrackInfo info;
  EXPECT_EQ(InfoText(info), kFileLine + Line("Stereo:", "No"));
  EXPECT_EQ(info.BuildInfoText(nullptr), 0);
}

TEST(TrackInfoTest, EveryLineStandsInItsOrderWithItsForm) {
  TrackInfo info;
  info.SetTitleA("Song");
  info.SetArtistA("Band");
  info.SetAlbumA("Record");
  info.SetDescriptionA("Live");
  info.SetGenreA("Rock");
  info.SetYear(1999);
  info.SetTrackNumber(7);
  info.SetCodecA("PCM");
  info.SetSampleRate(44100);
  info.SetBitRate(1411200);
  info.SetStereo(1);
  info.SetDuration(3723999);
  EXPECT_EQ(InfoText(info), Line("Title:", "Song") + Line("Artist:", "Band") + Line("Album:", "Record") +
                                Line("Description:", "Live") + Line("Genre:", "Rock") +
                                Line("Year:", "1999") + Line("Track Number:", "7") + kFileLine +
                                Line("Codec:", "PCM") + Line("Sample Rate:", "44 kHz") +
                                Line("Bitrate:", "1411 kbps") + Line("Stereo:", "Yes") +
                                Line("Duration:", "1:02:03"));
}

TEST(TrackInfoTest, YearsShowOnlyStrictlyBetween1600And3000) {
  for (const auto& [year, shown] : std::map<std::uint32_t, bool>{
           {0, false}, {1600, false}, {1601, true}, {2999, true}, {3000, false}, {4000000000u, false}}) {
    TrackInfo info;
    info.SetYear(year);
    const bool hasLine = InfoText(info).find("Year:") != std::string::npos;
    EXPECT_EQ(hasLine, shown) << year;
  }
}

TEST(TrackInfoTest, TrackNumberZeroIsShownAndTheUnknownMarkIsNot) {
  TrackInfo zero;
  zero.SetTrackNumber(0);
  EXPECT_NE(InfoText(zero).find(Line("Track Number:", "0")), std::string::npos);
  TrackInfo unknown;
  unknown.SetTrackNumber(playback::kNoTrackNumber);
  EXPECT_EQ(InfoText(unknown).find("Track Number:"), std::string::npos);
}

TEST(TrackInfoTest, DurationsTakeTheHourFormOnlyFromOneHourOn) {
  const std::map<std::uint32_t, std::string> forms = {{999, "00:00"},       {59999, "00:59"},
                                                      {61000, "01:01"},     {3599999, "59:59"},
                                                      {3600000, "1:00:00"}, {36000000 + 61000, "10:01:01"}};
  for (const auto& [milliseconds, form] : forms) {
    TrackInfo info;
    info.SetDuration(milliseconds);
    EXPECT_NE(InfoText(info).find(Line("Duration:", form)), std::string::npos) << milliseconds;
  }
  TrackInfo none;
  EXPECT_EQ(InfoText(none).find("Duration:"), std::string::npos);
}

TEST(TrackInfoTest, LinesAreAppendedToAGivenTextAndLabelsComeFromTheActiveLanguage) {
  class Pack : public platform::TextSource {
   public:
    std::optional<std::string> Find(std::uint32_t id) const override {
      if (id == 6352) return std::string("Titel:");
      return std::nullopt;
    }
  } pack;
  platform::SetTextSource(&pack);
  TrackInfo info;
  info.SetTitleA("Lied");
  auto* text = static_cast<char16_t*>(std::malloc(sizeof(char16_t) * 4));
  text[0] = u'A';
  text[1] = u'B';
  text[2] = u'\0';
  EXPECT_EQ(info.BuildInfoText(&text), 1);
  platform::SetTextSource(nullptr);
  EXPECT_EQ(platform::Utf16ToUtf8(text), "AB" + Line("Titel:", "Lied") + kFileLine + Line("Stereo:", "No"));
  std::free(text);
}

TEST(TrackInfoTest, TextsAreBoundTo255UnitsCutAtWholeCharacters) {
  TrackInfo info;
  const std::u16string longWide(300, u'x');
  EXPECT_EQ(info.SetTitle(longWide.c_str()), 1);
  EXPECT_EQ(Title(info), std::string(255, 'x'));

  EXPECT_EQ(info.SetTitleA(std::string(300, 'y').c_str()), 1);
  EXPECT_EQ(Title(info), std::string(255, 'y'));

  // A pair of surrogates that would straddle the bound is left out whole.
  std::u16string straddling(254, u'a');
  straddling += u"\U0001F3B5";
  EXPECT_EQ(info.SetTitle(straddling.c_str()), 1);
  EXPECT_EQ(Title(info), std::string(254, 'a'));

  std::u16string fits(253, u'a');
  fits += u"\U0001F3B5";
  EXPECT_EQ(info.SetTitle(fits.c_str()), 1);
  EXPECT_EQ(Title(info), std::string(253, 'a') + "\xF0\x9F\x8E\xB5");
}

TEST(TrackInfoTest, EmptyAndNullValuesFollowTheirSetters) {
  TrackInfo info;
  ASSERT_EQ(info.SetArtistA("Someone"), 1);
  EXPECT_EQ(info.SetArtist(u""), 0) << "an empty value clears the slot";
  char16_t buffer[playback::kTrackTextUnits] = {u'z'};
  EXPECT_EQ(info.GetArtist(buffer), 0);
  EXPECT_EQ(buffer[0], u'\0') << "the getter clears the destination first";

  ASSERT_EQ(info.SetAlbumA("Kept"), 1);
  EXPECT_EQ(info.SetAlbumA(nullptr), 0) << "a null narrow value leaves the slot alone";
  EXPECT_EQ(info.TextUtf8(TrackInfo::kAlbum), "Kept");
  EXPECT_EQ(info.SetAlbum(nullptr), 0) << "a null wide value drops the old text first";
  EXPECT_EQ(info.TextUtf8(TrackInfo::kAlbum), "");
  EXPECT_EQ(info.SetGenreA(""), 0);
  EXPECT_EQ(info.GetCodec(nullptr), 0);
}

TEST(TrackInfoTest, NarrowTextIsUtf8WhenValidElseWindows1252) {
  TrackInfo info;
  info.SetTitleA("Caf\xC3\xA9");
  EXPECT_EQ(Title(info), "Caf\xC3\xA9");
  info.SetTitleA("Caf\xE9 \x80");
  EXPECT_EQ(Title(info), "Caf\xC3\xA9 \xE2\x82\xAC");
}

TEST(TrackInfoTest, ClearKeepsTheYearAndMarksTheTrackNumberUnknown) {
  TrackInfo info;
  info.SetYear(1984);
  info.SetTrackNumber(3);
  info.SetSampleRate(8000);
  info.SetCodecA("ADPCM");
  info.Clear();
  EXPECT_EQ(info.GetYear(), 1984u);
  EXPECT_EQ(info.GetTrackNumber(), playback::kNoTrackNumber);
  EXPECT_EQ(info.GetSampleRate(), 0u);
  EXPECT_EQ(info.TextUtf8(TrackInfo::kCodec), "");
}

}  // namespace

// Damaged, hostile and odd ID3v2 input: read as far as it makes sense or
// refused, never outside the bytes given, never without end.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "decoders/id3_builders.h"
#include "decoders/id3v1.h"
#include "decoders/id3v2.h"
#include "decoders/mpeg_test_files.h"
#include "support/test_environment.h"

namespace decoders_test {
namespace {

using decoders::Id3v2Info;

bool Read(const std::string& file, Id3v2Info& info) {
  const decoders::MemoryTagSource source = SourceOf(file);
  return decoders::ReadId3v2(source, info);
}

std::string TitleTag(std::uint8_t major = 3, std::uint8_t flags = 0, std::uint8_t revision = 0) {
  return Id3v2Builder(major, flags, revision).Frame("TIT2", Latin1Text("Title")).Build();
}

TEST(Id3v2Header, RefusesWhatIsNoTagAndClearsTheRecord) {
  Id3v2Info info;
  EXPECT_TRUE(Read(WithAudioBehind(TitleTag(4)), info));
  EXPECT_TRUE(Read(WithAudioBehind(TitleTag(3, 0x20, 254)), info));  // experimental flag, revision 254
  EXPECT_FALSE(Read(WithAudioBehind(TitleTag(5)), info));
  EXPECT_FALSE(info.title);
  EXPECT_FALSE(Read(WithAudioBehind(TitleTag(3, 0, 255)), info));
  for (std::uint8_t flag = 1; flag <= 0x10; flag <<= 1) {
    EXPECT_FALSE(Read(WithAudioBehind(TitleTag(3, flag)), info)) << "flag " << int{flag};
  }
  EXPECT_FALSE(Read(WithAudioBehind("ID4" + TitleTag().substr(3)), info));
  EXPECT_FALSE(Read("ID3\3\0", info));  // truncated header
  // The tag must end before the file does: a size of exactly the file's
  // length less ten is no tag, nor is one that points far beyond.
  EXPECT_FALSE(Read(TitleTag(), info));
  EXPECT_TRUE(Read(TitleTag() + "x", info));
  EXPECT_FALSE(Read(WithAudioBehind(Id3v2Builder(3).Frame("TIT2", Latin1Text("T")).Build(0x0FFFFFFF)), info));
}

TEST(Id3v2Damage, AbsurdUnknownFrameSizeEndsTheWalkKeepingWhatWasRead) {
  Id3v2Builder tag(3);
  tag.Frame("TIT2", Latin1Text("Title")).FrameHeader("APIC", 0xFFFFFFFF).Frame("TPE1", Latin1Text("Artist"));
  Id3v2Info info;
  EXPECT_TRUE(Read(WithAudioBehind(tag.Build()), info));
  EXPECT_EQ(info.title, "Title");
  EXPECT_FALSE(info.artist);
}

TEST(Id3v2Damage, AbsurdTextFrameSizeReadsOnlyWhatIsThere) {
  // The tag says 10 bytes (the frame header); the frame says 2 GB; the file
  // holds 19 bytes of text behind the encoding byte.
  const std::string file = Id3v2Builder(3).FrameHeader("TIT2", 0x7FFFFFFF).Build(10) + Latin1Text("Nineteen characters");
  Id3v2Info info;
  EXPECT_TRUE(Read(file, info));
  EXPECT_EQ(info.title, "Nineteen characters");
}

TEST(Id3v2Damage, TruncatedFrameHeaderEndsTheWalkQuietly) {
  const std::string tag = Id3v2Builder(3).Frame("TIT2", Latin1Text("Title")).Bytes("TPE").Build(100);
  Id3v2Info info;
  EXPECT_TRUE(Read(tag + std::string(100, 'x'), info));  // "TPExxxxxxx" isn't known
  EXPECT_EQ(info.title, "Title");
  // The file ends three bytes into the second frame's header.
  EXPECT_TRUE(Read(Id3v2Builder(3).Frame("TIT2", Latin1Text("Title")).Bytes("TPE").Build(17), info));
  EXPECT_EQ(info.title, "Title");
  EXPECT_FALSE(info.artist);
}

TEST(Id3v2Damage, AMillionFramesAreWalkedToTheEnd) {
  Id3v2Builder tag(3);
  for (int i = 0; i < 1'000'000; ++i) tag.Frame("PRIV", "");
  tag.Frame("TIT2", Latin1Text("Last"));
  Id3v2Info info;
  EXPECT_TRUE(Read(WithAudioBehind(tag.Build()), info));
  EXPECT_EQ(info.title, "Last");
}

class TagFilesTest : public ::testing::Test {
 protected:
  testing_support::TemporaryDirectory folder;
};

TEST_F(TagFilesTest, PathsThatAreNoReadableFileGiveNoTag) {
  const std::string pipe = folder.File("pipe.mp3");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& path : {folder.File("missing.mp3"), folder.Path(), pipe, std::string()}) {
    Id3v2Info info;
    info.title = "old";
    EXPECT_FALSE(decoders::ReadId3v2(path, info)) << path;
    EXPECT_FALSE(info.title);
    decoders::Id3v1Info v1;
    v1.genre = 3;
    EXPECT_FALSE(decoders::ReadId3v1(path, v1)) << path;
    EXPECT_EQ(v1.genre, -1);
  }
}

}  // namespace
}  // namespace decoders_test
